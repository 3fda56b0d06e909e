// Conversion of wide text for callers that want bytes.
#include <sorrelin/image/toolbox/wide_to_utf8.h>
#include <sorrelin/platform/text.h>

#include <cstddef>
#include <cstdlib>

namespace sorrelin {

char* WideToUtf8(WCHAR const* text) {
  if (text == nullptr) return nullptr;
  int const bytes = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (bytes <= 0) return nullptr;
  auto* const utf8 = static_cast<char*>(std::calloc(static_cast<size_t>(bytes) + 1, 1));
  if (utf8 != nullptr) WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8, bytes, nullptr, nullptr);
  return utf8;
}

}  // namespace sorrelin
