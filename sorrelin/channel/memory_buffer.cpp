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

constexpr uint64_t kLargestAllocation = PTRDIFF_MAX;

}  // namespace

bool MemoryBuffer::Allocate(DWORD capacity) {
  nPos = 0;
  nSize = 0;
  bReadOnly = 0;
  // A block of 0 bytes is valid: a document may start with no capacity.
  pData = static_cast<BYTE*>(std::calloc(std::max<size_t>(capacity, 1), 1));
  nCapacity = nAllocated = pData != nullptr ? capacity : 0;
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
  if ((nPos > nCapacity || nCapacity - nPos < bytes) && !Grow(bytes)) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return 0;
  }
  if (bytes != 0) std::memcpy(pData + nPos, buffer, bytes);
  nPos += bytes;
  nSize = std::max(nSize, nPos);
  return bytes;
}

// The capacity becomes exactly what the write needs; the underlying allocation grows by halves
// where there is memory, so that many small writes stay cheap. A gap before the position is zeroed.
bool MemoryBuffer::Grow(DWORD bytes) {
  if (nPos > kLargestAllocation || bytes > kLargestAllocation - nPos) return false;
  uint64_t const needed = nPos + bytes;
  if (needed > nAllocated && !Reallocate(std::min(needed + needed / 2, kLargestAllocation)) &&
      !Reallocate(needed)) {
    return false;
  }
  if (nPos > nCapacity) std::memset(pData + nCapacity, 0, static_cast<size_t>(nPos - nCapacity));
  nCapacity = needed;
  return true;
}

bool MemoryBuffer::Reallocate(uint64_t bytes) {
  void* const block = std::realloc(pData, static_cast<size_t>(bytes));
  if (block == nullptr) return false;
  pData = static_cast<BYTE*>(block);
  nAllocated = bytes;
  return true;
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
  nCapacity = nAllocated = 0;
  bReadOnly = 1;
  return std::exchange(pData, nullptr);
}

}  // namespace sorrelin
