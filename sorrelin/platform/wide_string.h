// Wide text as the library holds it, and the conversion of narrow arguments.
#ifndef SORRELIN_PLATFORM_WIDE_STRING_H_
#define SORRELIN_PLATFORM_WIDE_STRING_H_

#include <sorrelin/platform/text.h>
#include <sorrelin/platform/types.h>

#include <cstring>
#include <limits>
#include <new>
#include <string>

namespace sorrelin {

// UTF-16 text.
using WideString = std::basic_string<WCHAR>;

// The text in the system's code page as UTF-16. `text` must not be null. A text of 2 GiB and more
// is as one for which memory is short.
inline WideString ToWide(char const* text) {
  size_t const bytes = std::strlen(text);
  if (bytes >= std::numeric_limits<int>::max()) throw std::bad_alloc();
  int const length = static_cast<int>(bytes);
  WideString wide(static_cast<size_t>(length) + 1, WCHAR{});
  int const units =
      MultiByteToWideChar(CP_ACP, MB_PRECOMPOSED, text, length, wide.data(), length + 1);
  wide.resize(static_cast<size_t>(units));
  return wide;
}

}  // namespace sorrelin

#endif  // SORRELIN_PLATFORM_WIDE_STRING_H_
