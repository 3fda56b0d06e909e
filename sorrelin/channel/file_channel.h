// One set of byte operations over a disk file or a block of memory. Every document byte that the
// library reads or writes passes through here. The operations mirror the Windows file functions in
// arguments and results; where a memory channel differs, callers rely on the difference, and the
// operation says so. May include: platform/.
#ifndef SORRELIN_CHANNEL_FILE_CHANNEL_H_
#define SORRELIN_CHANNEL_FILE_CHANNEL_H_

#include <sorrelin/channel/memory_buffer.h>
#include <sorrelin/platform/types.h>

#include <optional>

namespace sorrelin {

// No operation frees the record itself: after a close it stays allocated, and is forgotten.
struct FileChannel {
  BYTE bMemory;  // 0: a disk file; 1: a memory buffer
  HANDLE hFile;  // -1 for a memory channel; null after close
  MemoryBuffer buffer;
};

// What the open operations return on failure, and what a session holds when no channel is open.
inline FileChannel* InvalidChannel() { return reinterpret_cast<FileChannel*>(intptr_t{-1}); }

// The writer's test: neither null nor -1.
inline bool IsUsableChannel(FileChannel const* channel) {
  return channel != nullptr && channel != InvalidChannel();
}

// Arguments as CreateFileW. -1 when that fails, with its system error.
FileChannel* ChannelOpenFile(WCHAR const* name, DWORD access, DWORD share, void* security,
                             DWORD disposition, DWORD flags, HANDLE template_file);

// Over an owned, zero-filled block of `capacity` bytes; the content is empty. -1 with error 8.
FileChannel* ChannelOpenMemory(DWORD capacity);

// Over `size` bytes at `data`: used in place if `read_only` (they must outlive the channel), else
// copied. -1 with error 1168 for null data, with error 8 when memory is short.
FileChannel* ChannelAttachMemory(void const* data, DWORD size, bool read_only);

// As ReadFile, but a memory read at the end fails with count 0 and no error, and one past the end
// with error 38. `count` may be null.
BOOL ChannelRead(FileChannel* channel, void* buffer, DWORD bytes, DWORD* count, void* overlapped);

// Reads up to `bytes` bytes of a file channel at `offset`, and leaves the position where it is.
// nullopt if the channel cannot be positioned there, which 2 GiB and more cannot; 0 bytes after a
// failed read.
std::optional<DWORD> ChannelReadFileAt(FileChannel* channel, DWORD offset, void* buffer,
                                       DWORD bytes);

// As WriteFile, but a memory write of 0 bytes fails. Error 6009 on a read-only buffer, 8 when it
// cannot grow.
BOOL ChannelWrite(FileChannel* channel, void const* buffer, DWORD bytes, DWORD* count,
                  void* overlapped);

// As SetFilePointer for a file. For memory the result is the position *before* the seek, no bound
// applies, and another origin than 0, 1, 2 leaves the position alone.
DWORD ChannelSeek(FileChannel* channel, LONG offset, LONG* high, DWORD origin);

// Low 32 bits of the content's size in bytes, the high 32 bits in `*high` if given.
DWORD ChannelGetSize(FileChannel* channel, DWORD* high);

// Frees an owned block, closes a file; 0 for a file that was closed before.
BOOL ChannelClose(FileChannel* channel);

// Closes, handing an owned block over: the caller frees it with the process heap's free. With
// `data` null the block is dropped and not freed. Files and read-only buffers store 0 and 0.
BOOL ChannelCloseTake(FileChannel* channel, int64_t* data, DWORD* size);

}  // namespace sorrelin

#endif  // SORRELIN_CHANNEL_FILE_CHANNEL_H_
