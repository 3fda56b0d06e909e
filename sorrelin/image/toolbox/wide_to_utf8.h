// Wide text as UTF-8.
#ifndef SORRELIN_IMAGE_TOOLBOX_WIDE_TO_UTF8_H_
#define SORRELIN_IMAGE_TOOLBOX_WIDE_TO_UTF8_H_

#include <sorrelin/platform/types.h>

namespace sorrelin {

// A zero-terminated text as UTF-8 in a new string with a byte to spare after its terminator
// (free()). Null for null, for a text of 2 GiB or more, and when memory is short.
char* WideToUtf8(WCHAR const* text);

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_TOOLBOX_WIDE_TO_UTF8_H_
