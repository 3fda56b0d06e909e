// Sizes of things in memory, computed in 64 bits.
#ifndef SORRELIN_PLATFORM_MEMORY_SIZE_H_
#define SORRELIN_PLATFORM_MEMORY_SIZE_H_

#include <cstddef>
#include <cstdint>
#include <new>

namespace sorrelin {

// `bytes` as the size of something in memory. Throws std::bad_alloc where nothing can be that
// large, which in 32 bits begins at 2 GiB.
constexpr size_t MemorySize(uint64_t bytes) {
  if (bytes > PTRDIFF_MAX) throw std::bad_alloc();
  return static_cast<size_t>(bytes);
}

}  // namespace sorrelin

#endif  // SORRELIN_PLATFORM_MEMORY_SIZE_H_
