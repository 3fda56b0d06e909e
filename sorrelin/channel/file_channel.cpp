// The operations of a channel, for disk files and memory buffers.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/lasting_block.h>

#include <cstdlib>
#include <new>

namespace sorrelin {

namespace {

// Kept: records are never freed; a closed channel leaves its record allocated. Not inlined, so that
// the leak has a name of its own.
SORRELIN_NOINLINE FileChannel* NewChannelRecord() { return Lasting(new FileChannel{}); }

FileChannel* NewMemoryRecord() {
  FileChannel* const channel = NewChannelRecord();
  channel->bMemory = 1;
  channel->hFile = INVALID_HANDLE_VALUE;
  return channel;
}

FileChannel* OpenedOrInvalid(FileChannel* channel, bool opened) {
  if (opened) return channel;
  delete channel;
  return InvalidChannel();
}

bool RefuseNull(FileChannel const* channel) {
  if (IsUsableChannel(channel)) return false;
  SetLastError(ERROR_INVALID_HANDLE);
  return true;
}

BOOL CloseFile(FileChannel& channel) {
  if (channel.hFile == nullptr) return 0;
  HANDLE const file = channel.hFile;
  channel.hFile = nullptr;
  return CloseHandle(file);
}

DWORD Low(uint64_t value) { return static_cast<DWORD>(value); }
DWORD High(uint64_t value) { return static_cast<DWORD>(value >> 32); }

// Kept: the result is the position before the seek; updates in memory rely on it.
DWORD SeekMemory(MemoryBuffer& buffer, LONG offset, LONG* high, DWORD origin) {
  if (high == nullptr) return Low(buffer.Seek(offset, origin));
  uint64_t const joined = (uint64_t{static_cast<DWORD>(*high)} << 32) | static_cast<DWORD>(offset);
  uint64_t const old = buffer.Seek(static_cast<int64_t>(joined), origin);
  *high = static_cast<LONG>(High(old));
  return Low(old);
}

void Store(int64_t* data, DWORD* size, BYTE* block, uint64_t bytes) {
  if (data != nullptr) *data = reinterpret_cast<int64_t>(block);
  if (size != nullptr) *size = Low(bytes);
}

}  // namespace

FileChannel* ChannelOpenFile(WCHAR const* name, DWORD access, DWORD share, void* security,
                             DWORD disposition, DWORD flags, HANDLE template_file) {
  // First, so that no file is made where there is no memory for its record.
  FileChannel* const channel = NewChannelRecord();
  channel->hFile = CreateFileW(name, access, share, static_cast<LPSECURITY_ATTRIBUTES>(security),
                               disposition, flags, template_file);
  return OpenedOrInvalid(channel, channel->hFile != INVALID_HANDLE_VALUE);
}

FileChannel* ChannelOpenMemory(DWORD capacity) {
  FileChannel* const channel = NewMemoryRecord();
  return OpenedOrInvalid(channel, channel->buffer.Allocate(capacity));
}

FileChannel* ChannelAttachMemory(void const* data, DWORD size, bool read_only) {
  FileChannel* const channel = NewMemoryRecord();
  return OpenedOrInvalid(channel, channel->buffer.Attach(data, size, read_only));
}

BOOL ChannelRead(FileChannel* channel, void* buffer, DWORD bytes, DWORD* count, void* overlapped) {
  if (RefuseNull(channel)) return 0;
  if (channel->bMemory == 0) {
    return ReadFile(channel->hFile, buffer, bytes, count, static_cast<LPOVERLAPPED>(overlapped));
  }
  DWORD const read = channel->buffer.Read(buffer, bytes);
  if (count != nullptr) *count = read;
  return read > 0;
}

std::optional<DWORD> ChannelReadFileAt(FileChannel* channel, DWORD offset, void* buffer,
                                       DWORD bytes) {
  if (static_cast<LONG>(offset) < 0) {
    SetLastError(ERROR_NEGATIVE_SEEK);
    return std::nullopt;
  }
  DWORD count = 0;
  if (ReadFileAt(channel->hFile, offset, buffer, bytes, &count) != FALSE) return count;
  return GetLastError() != ERROR_SEEK_ON_DEVICE ? std::optional<DWORD>(0) : std::nullopt;
}

BOOL ChannelWrite(FileChannel* channel, void const* buffer, DWORD bytes, DWORD* count,
                  void* overlapped) {
  if (RefuseNull(channel)) return 0;
  if (channel->bMemory == 0) {
    return WriteFile(channel->hFile, buffer, bytes, count, static_cast<LPOVERLAPPED>(overlapped));
  }
  DWORD const written = channel->buffer.Write(buffer, bytes);
  if (count != nullptr) *count = written;
  return written > 0;
}

DWORD ChannelSeek(FileChannel* channel, LONG offset, LONG* high, DWORD origin) {
  if (RefuseNull(channel)) return INVALID_SET_FILE_POINTER;
  if (channel->bMemory != 0) return SeekMemory(channel->buffer, offset, high, origin);
  return SetFilePointer(channel->hFile, offset, high, origin);
}

DWORD ChannelGetSize(FileChannel* channel, DWORD* high) {
  if (RefuseNull(channel)) return INVALID_FILE_SIZE;
  if (channel->bMemory == 0) return GetFileSize(channel->hFile, high);
  if (high != nullptr) *high = High(channel->buffer.nSize);
  return Low(channel->buffer.nSize);
}

BOOL ChannelClose(FileChannel* channel) {
  if (RefuseNull(channel)) return 0;
  if (channel->bMemory == 0) return CloseFile(*channel);
  bool const owned = channel->buffer.bReadOnly == 0;
  BYTE* const block = channel->buffer.Take();
  if (owned) std::free(block);
  return 1;
}

BOOL ChannelCloseTake(FileChannel* channel, int64_t* data, DWORD* size) {
  if (RefuseNull(channel)) return 0;
  if (channel->bMemory == 0) {
    Store(data, size, nullptr, 0);
    return CloseFile(*channel);
  }
  bool const owned = channel->buffer.bReadOnly == 0;
  uint64_t const bytes = channel->buffer.nSize;
  BYTE* const block = channel->buffer.Take();
  // Kept: an owned block without a taker is dropped and not freed; pdf_ClosePDFInMemory callers
  // may still hold its address.
  bool const handed_over = owned && data != nullptr;
  Store(data, size, handed_over ? block : nullptr, handed_over ? bytes : 0);
  return 1;
}

}  // namespace sorrelin
