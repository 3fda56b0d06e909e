// A growing, or foreign and read-only, block of memory with a position: the memory side of a
// channel.
#ifndef SORRELIN_CHANNEL_MEMORY_BUFFER_H_
#define SORRELIN_CHANNEL_MEMORY_BUFFER_H_

#include <sorrelin/platform/types.h>

#include <cstdint>

namespace sorrelin {

// Each operation sets the system error named there and returns 0 or false on failure.
struct MemoryBuffer {
  BYTE* pData = nullptr;
  uint64_t nCapacity = 0;   // bytes that the content may use; grows to the exact fit of a write
  uint64_t nSize = 0;       // bytes of content
  uint64_t nPos = 0;        // may be past nSize
  BYTE bReadOnly = 1;       // not 0: writes are refused, and the block is someone else's
  uint64_t nAllocated = 0;  // bytes of an owned block, never less than nCapacity

  // An owned, zero-filled block; 0 bytes make a valid empty one. Error 8.
  bool Allocate(DWORD capacity);
  // The caller's block in place, or a copy of it. Errors 1168 for null data, 8.
  bool Attach(void const* data, DWORD size, bool read_only);
  // Bytes read at the position. Error 38 past the content; 0 bytes at its end set no error.
  DWORD Read(void* buffer, DWORD bytes);
  // `bytes`, or 0 with error 6009 or 8. The block grows to exactly what is written.
  DWORD Write(void const* buffer, DWORD bytes);
  // Moves the position and returns the old one.
  uint64_t Seek(int64_t offset, DWORD origin);
  // Gives the block up and returns it; the buffer is then empty and read-only.
  BYTE* Take();

 private:
  bool Grow(DWORD bytes);
  bool Reallocate(uint64_t bytes);
};

}  // namespace sorrelin

#endif  // SORRELIN_CHANNEL_MEMORY_BUFFER_H_
