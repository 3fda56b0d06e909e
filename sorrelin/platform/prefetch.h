// A hint to the processor that memory will be read soon.
#ifndef SORRELIN_PLATFORM_PREFETCH_H_
#define SORRELIN_PLATFORM_PREFETCH_H_

#include <sorrelin/platform/types.h>

#include <cstddef>
#include <span>

namespace sorrelin {

inline void Prefetch(std::span<BYTE const> bytes) {
  constexpr size_t kCacheLine = 64;
  for (size_t at = 0; at < bytes.size(); at += kCacheLine) __builtin_prefetch(bytes.data() + at);
}

}  // namespace sorrelin

#endif  // SORRELIN_PLATFORM_PREFETCH_H_
