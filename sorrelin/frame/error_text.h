// The one table from error codes to English texts.
#ifndef SORRELIN_FRAME_ERROR_TEXT_H_
#define SORRELIN_FRAME_ERROR_TEXT_H_

#include <sorrelin/platform/types.h>

namespace sorrelin {

// Room that holds each of the library's own texts with its terminator.
inline constexpr int kLongestErrorText = 57;

// Writes the text of `code` into `buffer` and returns 1; 0 for a null buffer. The text of code 1 is
// the system's, for the thread's last error at this moment, and has no limit.
int GetErrorText(DWORD code, char* buffer);

// The same as UTF-16, at most 512 units; 0 for a null buffer.
int GetErrorTextW(DWORD code, WCHAR* buffer);

}  // namespace sorrelin

#endif  // SORRELIN_FRAME_ERROR_TEXT_H_
