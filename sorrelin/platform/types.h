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

/* Windows' names for numbers and handles. */
typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef int32_t LONG;
typedef uint32_t UINT;
typedef int BOOL;
typedef size_t SIZE_T;
typedef void* HANDLE;
typedef void* HGLOBAL;
typedef void* HMODULE;

/* One UTF-16 code unit. */
typedef char16_t WCHAR;

/* Always null. */
typedef void* LPSECURITY_ATTRIBUTES;
typedef void* LPOVERLAPPED;

/* A place, or a pair of extents. */
typedef struct tagPOINT {
  LONG x; /* to the right, or the width */
  LONG y; /* the other direction, or the height */
} POINT;

/* One colour table entry. */
typedef struct tagRGBQUAD {
  BYTE rgbBlue;     /* 0 to 255 */
  BYTE rgbGreen;    /* 0 to 255 */
  BYTE rgbRed;      /* 0 to 255 */
  BYTE rgbReserved; /* not looked at */
} RGBQUAD;

/* Head of a packed bitmap, 40 bytes. The colour table and the rows follow, each row padded
 * to 4 bytes. */
typedef struct tagBITMAPINFOHEADER {
  DWORD biSize;         /* 40 */
  LONG biWidth;         /* pixels */
  LONG biHeight;        /* rows, positive: the lowest row of the picture comes first */
  WORD biPlanes;        /* 1 */
  WORD biBitCount;      /* bits a pixel: 1, 8 or 24 */
  DWORD biCompression;  /* 0; not looked at */
  DWORD biSizeImage;    /* bytes of the rows with their padding, or 0; not looked at */
  LONG biXPelsPerMeter; /* pixels per metre; 0: as in y, and without both 96 dots per inch */
  LONG biYPelsPerMeter; /* pixels per metre; 0: as in x */
  DWORD biClrUsed;      /* entries of the colour table; 0: 2 for 1 bit, 256 for 8, none for 24 */
  DWORD biClrImportant; /* not looked at */
} BITMAPINFOHEADER;

/* Windows' constants. */
#define FALSE 0
#define TRUE 1
#define MAX_PATH 260 /* units of a path with its terminator */
#define INVALID_HANDLE_VALUE ((HANDLE)(intptr_t)-1)

#define SORRELIN_TEXT_JOIN(text) u##text

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

/* Keeps a function's frame, so that what it allocates can be distinguished from other allocations.
 */
#if defined(__GNUC__)
#define SORRELIN_NOINLINE __attribute__((noinline))
#else
#define SORRELIN_NOINLINE __declspec(noinline)
#endif

/* A literal of WCHAR. */
#define SORRELIN_TEXT(text) SORRELIN_TEXT_JOIN(text)

/* Handle of a movable global block that holds a packed bitmap; 0 and -1 are never valid. */
typedef void* HDIB;

#endif /* SORRELIN_PLATFORM_TYPES_H_ */
