// The names by which the siblings are asked for; the loader finds the system's own form of each.
#ifndef SORRELIN_IMAGE_CODECS_SIBLING_NAMES_H_
#define SORRELIN_IMAGE_CODECS_SIBLING_NAMES_H_

#include <sorrelin/platform/types.h>

namespace sorrelin {

inline constexpr WCHAR kCcittLibrary[] = SORRELIN_TEXT("Cadwick.dll");
inline constexpr WCHAR kJpegLibrary[] = SORRELIN_TEXT("Rennick.dll");
inline constexpr WCHAR kOcrLibrary[] = SORRELIN_TEXT("Averna.dll");

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_CODECS_SIBLING_NAMES_H_
