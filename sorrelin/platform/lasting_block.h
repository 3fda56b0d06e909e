// Blocks that stay allocated on purpose, as leak detection of sanitized builds sees them.
#ifndef SORRELIN_PLATFORM_LASTING_BLOCK_H_
#define SORRELIN_PLATFORM_LASTING_BLOCK_H_

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define SORRELIN_LEAK_DETECTION 1
#endif
#elif defined(__SANITIZE_ADDRESS__) && !defined(_MSC_VER)
#define SORRELIN_LEAK_DETECTION 1
#endif

#if defined(SORRELIN_LEAK_DETECTION)
#include <sanitizer/lsan_interface.h>
#endif

namespace sorrelin {

// `block` comes from new. Detection would otherwise find it when the process ends, and read all
// debug information to name it, which takes longer than most processes run.
template <typename T>
T* Lasting(T* block) {
#if defined(SORRELIN_LEAK_DETECTION)
  __lsan_ignore_object(block);
#endif
  return block;
}

}  // namespace sorrelin

#endif  // SORRELIN_PLATFORM_LASTING_BLOCK_H_
