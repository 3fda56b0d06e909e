// The memory side of a channel.
#include <sorrelin/channel/memory_buffer.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace sorrelin {

namespace {

// Kept: a block of 0 bytes is valid; a document may start with no capacity.
size_t AllocationSize(uint64_t bytes) { return std::max<size_t>(static_cast<size_t>(bytes), 1); }

}  // namespace

bool MemoryBuffer::Allocate(DWORD capacity) {
  nPos = 0;
  nSize = 0;
  bReadOnly = 0;
  pData = static_cast<BYTE*>(std::calloc(AllocationSize(capacity), 1));
  nCapacity = pData != nullptr ? capacity : 0;
  if (pData == nullptr) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return pData != nullptr;
}

bool MemoryBuffer::Attach(void const* data, DWORD size, bool read_only) {
  if (data == nullptr) {
    SetLastError(ERROR_NOT_FOUND);
    return false;
  }
  bReadOnly = read_only ? 1 : 0;
  nPos = 0;
  if (read_only) {
    pData = static_cast<BYTE*>(const_cast<void*>(data));
    nSize = nCapacity = size;
    return true;
  }
  // Kept: a copy that fails is not reported; the channel then opens with what it has.
  if (Allocate(size)) Write(data, size);
  Seek(0, FILE_BEGIN);
  return true;
}

DWORD MemoryBuffer::Read(void* buffer, DWORD bytes) {
  if (nPos > nSize) {
    SetLastError(ERROR_HANDLE_EOF);
    return 0;
  }
  DWORD const count = static_cast<DWORD>(std::min<uint64_t>(bytes, nSize - nPos));
  if (count != 0) std::memcpy(buffer, pData + nPos, count);
  nPos += count;
  return count;
}

DWORD MemoryBuffer::Write(void const* buffer, DWORD bytes) {
  if (bReadOnly != 0) {
    SetLastError(ERROR_FILE_READ_ONLY);
    return 0;
  }
  if (nPos > nCapacity || nCapacity - nPos < bytes) {
    uint64_t const needed = nPos + bytes;
    void* const grown = nPos <= PTRDIFF_MAX && needed <= PTRDIFF_MAX
                            ? std::realloc(pData, AllocationSize(needed))
                            : nullptr;
    if (grown == nullptr) {
      SetLastError(ERROR_NOT_ENOUGH_MEMORY);
      return 0;
    }
    pData = static_cast<BYTE*>(grown);
    if (nPos > nCapacity) std::memset(pData + nCapacity, 0, static_cast<size_t>(nPos - nCapacity));
    nCapacity = needed;
  }
  if (bytes != 0) std::memcpy(pData + nPos, buffer, bytes);
  nPos += bytes;
  nSize = std::max(nSize, nPos);
  return bytes;
}

uint64_t MemoryBuffer::Seek(int64_t offset, DWORD origin) {
  uint64_t const old = nPos;
  uint64_t const distance = static_cast<uint64_t>(offset);
  if (origin == FILE_BEGIN) nPos = distance;
  if (origin == FILE_CURRENT) nPos = old + distance;
  if (origin == FILE_END) nPos = nSize + distance;
  return old;
}

BYTE* MemoryBuffer::Take() {
  nSize = 0;
  nPos = 0;
  nCapacity = 0;
  bReadOnly = 1;
  return std::exchange(pData, nullptr);
}

}  // namespace sorrelin
