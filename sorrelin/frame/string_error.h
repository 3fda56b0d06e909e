// What the string operations of the reader throw, for callers.
#ifndef SORRELIN_FRAME_STRING_ERROR_H_
#define SORRELIN_FRAME_STRING_ERROR_H_

#include <sorrelin/platform/string_error.h>

#endif  // SORRELIN_FRAME_STRING_ERROR_H_
