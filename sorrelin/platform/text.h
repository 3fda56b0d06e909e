/* Conversion between bytes and UTF-16. Code pages 0 (the system's) and 65001 are both UTF-8; they
 * differ on bytes that are not part of valid UTF-8: in code page 0 such a byte becomes its
 * windows-1252 character, in 65001 U+FFFD. So a text has the same length in both. Valid C11 and
 * C++. */
#ifndef SORRELIN_PLATFORM_TEXT_H_
#define SORRELIN_PLATFORM_TEXT_H_

#include <sorrelin/platform/types.h>

#if !defined(_WIN32)

/* Code pages, and a flag that is accepted and means nothing. */
#define CP_ACP 0u
#define CP_UTF8 65001u
#define MB_PRECOMPOSED 1u

/* Converts `length` bytes (-1: through the terminator, which is converted and counted) into at
 * most `capacity` UTF-16 units and returns their number. Capacity 0 only measures. 0 with error 87
 * for a length of 0 or an unknown code page, with error 122 if the units do not fit; the buffer
 * then holds the characters that did. `flags` are accepted and mean nothing. */
SORRELIN_PLATFORM_API int MultiByteToWideChar(UINT code_page, DWORD flags, char const* text,
                                              int length, WCHAR* buffer, int capacity);

/* The other way, in bytes; a lone surrogate becomes U+FFFD. `default_char` and `used_default` must
 * be null. Results and errors as above. */
SORRELIN_PLATFORM_API int WideCharToMultiByte(UINT code_page, DWORD flags, WCHAR const* text,
                                              int length, char* buffer, int capacity,
                                              char const* default_char, BOOL* used_default);

#endif /* !_WIN32 */
#endif /* SORRELIN_PLATFORM_TEXT_H_ */
