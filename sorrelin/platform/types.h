// The Windows types of the interface. On Windows they come from the system; elsewhere this header
// declares them with the same names, sizes and field order. Valid C11 and C++.
#ifndef SORRELIN_PLATFORM_TYPES_H_
#define SORRELIN_PLATFORM_TYPES_H_

#if defined(_WIN32)

#include <windows.h>

#define SORRELIN_TEXT_JOIN(text) L##text

#else

#include <stddef.h>
#include <stdint.h>
#ifndef __cplusplus
#include <uchar.h>
#endif

typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef int32_t LONG;
typedef uint32_t UINT;
typedef int BOOL;
typedef size_t SIZE_T;
typedef char16_t WCHAR; /* one UTF-16 code unit */
typedef void* HANDLE;
typedef void* HGLOBAL;
typedef void* HMODULE;
typedef void* LPSECURITY_ATTRIBUTES; /* always null */
typedef void* LPOVERLAPPED;          /* always null */

typedef struct tagPOINT {
  LONG x;
  LONG y;
} POINT;

/* One colour table entry. */
typedef struct tagRGBQUAD {
  BYTE rgbBlue;
  BYTE rgbGreen;
  BYTE rgbRed;
  BYTE rgbReserved;
} RGBQUAD;

/* Head of a packed bitmap, 40 bytes. */
typedef struct tagBITMAPINFOHEADER {
  DWORD biSize;
  LONG biWidth;
  LONG biHeight;
  WORD biPlanes;
  WORD biBitCount;
  DWORD biCompression;
  DWORD biSizeImage;
  LONG biXPelsPerMeter;
  LONG biYPelsPerMeter;
  DWORD biClrUsed;
  DWORD biClrImportant;
} BITMAPINFOHEADER;

#define FALSE 0
#define TRUE 1
#define MAX_PATH 260
#define SORRELIN_TEXT_JOIN(text) u##text
#define INVALID_HANDLE_VALUE ((HANDLE)(intptr_t)-1)

#if defined(__GNUC__)
#define SORRELIN_PLATFORM_EXPORT __attribute__((visibility("default")))
#else
#define SORRELIN_PLATFORM_EXPORT
#endif

#ifdef __cplusplus
#define SORRELIN_PLATFORM_API extern "C" SORRELIN_PLATFORM_EXPORT
#else
#define SORRELIN_PLATFORM_API SORRELIN_PLATFORM_EXPORT
#endif

#endif /* _WIN32 */

/* A literal of WCHAR. */
#define SORRELIN_TEXT(text) SORRELIN_TEXT_JOIN(text)

/* Handle of a movable global block that holds a packed bitmap; 0 and -1 are never valid. */
typedef void* HDIB;

#endif /* SORRELIN_PLATFORM_TYPES_H_ */
