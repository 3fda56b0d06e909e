/* Rennick's entry points: bitmaps to JPEG files and back.
 *
 * The library is loaded at run time and its entry points are found by name, so only programs that
 * link the coder itself include this header. Every function may be called on any thread. Nothing is
 * written to standard output or standard error, and no input ends the process. Valid C11 and C++.
 *
 * Bitmaps that are coded have 24 bits per pixel, which become YCbCr, or 8 bits, whose indices
 * become the one component; their rows, bottom row first, begin after biSize bytes and the colour
 * table of biClrUsed entries (256 for 8 bits when that is 0). What the block lacks of its rows
 * reads as 0.
 *
 * The record's quality is clamped to 100; 0 or less means 75. Chroma is 4:2:0 below 90, 4:4:4 from
 * 90 on. Pixels per metre become the JFIF density, in dots per inch or per centimetre, whichever
 * brings back the nearer values, dots per inch when both do; a direction without a value takes the
 * other's. */
#ifndef SIBLINGS_RENNICK_RENNICK_H_
#define SIBLINGS_RENNICK_RENNICK_H_

#include <sorrelin/image/codecs/sibling.h>
#include <sorrelin/platform/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Results of the functions that save. */
enum {
  RENNICK_OK = 0,
  RENNICK_BAD_ARGUMENT = 1, /* no record or path; the handle is no live block */
  RENNICK_BAD_BITMAP = 2,   /* other depth; width or height outside 1..65500 */
  RENNICK_NO_MEMORY = 3,
  RENNICK_CODER_FAILED = 4,
  RENNICK_FILE_FAILED = 5 /* the file could not be made or written; the system error says why */
};

/* Codes a bitmap into a new movable block of exactly the file's size, which the caller frees. Null
 * on failure. pRecord has JPEG_RECORD_BYTES bytes; its width and height are not looked at, being
 * cut to 16 bits. pStatus may be null. */
HGLOBAL SaveDIBAsJPEGToMemoryEx(HDIB hDib, void const* pRecord, int* pStatus);

/* The same into a file, which is made, or replaced once the bitmap is coded. */
int SaveDIBInJPEGFileExW(WCHAR const* szPath, HDIB hDib, void const* pRecord);

/* Decode a JPEG file into a new bitmap that the caller frees: one component becomes 8 bits with a
 * grey palette, YCbCr and RGB 24 bits, CMYK and YCCK (inverted when the file has an Adobe marker)
 * 24 bits. The JFIF density becomes pixels per metre. Null if the file is no JPEG file, is damaged,
 * ends early (without its end marker too), uses arithmetic coding, has more than 500 scans (down to
 * 64 for large pictures), or if the bitmap or the work on it would pass 4 GiB. */
HDIB LoadJPEGIntoDIBFromMemory(void const* pData, DWORD nSize);
HDIB LoadJPEGIntoDIBW(WCHAR const* szPath);

#ifdef __cplusplus
}
#endif

#endif /* SIBLINGS_RENNICK_RENNICK_H_ */
