/* The contract between the library and the sibling libraries that hold the CCITT and the JPEG
 * coder: the entry points, found by name at run time, and the records that cross. Whoever writes a
 * sibling exports these names with C linkage. Valid C11 and C++. */
#ifndef SORRELIN_IMAGE_CODECS_SIBLING_H_
#define SORRELIN_IMAGE_CODECS_SIBLING_H_

#include <sorrelin/platform/types.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- CCITT: Cadwick ---- */

enum {
  CCITT_GROUP4 = 4,          /* the only coding asked for: the TIFF Compression value */
  CCITT_ROW_DONE = 0,        /* a row callback's result: the row was delivered or taken */
  CCITT_ROW_STOP = 1,        /* the decoder's row callback wants no more rows */
  CCITT_ROW_PAST_END = 3,    /* the encoder's row callback: the index is past the last row */
  CCITT_ERROR_DATA_ENDED = 5 /* TiffError: the coded data ended before the last row */
};

/* One row, the top row being index 0, the leftmost pixel in the highest bit of the first byte; a
 * set bit is a black pixel. The encoder's buffer holds a full row padded to 4 bytes, which the
 * callback fills; the decoder's holds (width + 7) / 8 bytes, which the callback takes. */
typedef int (*CcittRowCallback)(BYTE* pRow, int32_t nRow, void* pUser);

/* Codes rows into bare Group 4 data, written to a file handle from CreateFileW (at its position)
 * or to a memory file from mOpen. Sizes are in pixels. Not 0 for success. */
typedef int (*EncodeCcittImageFunction)(void* hFile, int32_t nWidth, int32_t nHeight,
                                        int32_t nCompression, void* pUser, CcittRowCallback pRow);

/* Decodes bare Group 4 data, read from the handle's position. Not 0 for success: every row was
 * delivered. */
typedef int (*DecodeCcittImageFunction)(void* hFile, int32_t nWidth, int32_t nHeight,
                                        int32_t nCompression, void* pUser, CcittRowCallback pRow);

/* Code of the last failure on this thread. */
typedef int (*TiffErrorFunction)(void);

/* A memory file over a global memory block, `nSize` bytes of it, at position 0. On failure null,
 * which ends an encoding call; a decoding call ends at -1 alone, and hands null on to
 * DecodeCcittImage, mSeek and mClose.
 * Writing grows the same block: after mClose its GlobalSize is what was written. The block stays
 * the caller's. */
typedef void* (*mOpenFunction)(HGLOBAL hBlock, DWORD nSize);
/* Ends a memory file; the result is not looked at. */
typedef int (*mCloseFunction)(void* hMemoryFile);
/* Moves the position; called with (0, 0) to rewind. */
typedef int (*mSeekFunction)(void* hMemoryFile, int32_t nOffset, int32_t nOrigin);

/* Optional, beyond the contract: rows that the last decode on this thread delivered. */
typedef int (*CcittRowsDecodedFunction)(void);

/* ---- JPEG: Rennick ---- */

/* The parameter record: bytes without alignment, little-endian numbers, at these offsets. */
enum {
  JPEG_RECORD_WIDTH = 0,      /* 16 bits: low half of the width in pixels */
  JPEG_RECORD_HEIGHT = 2,     /* 16 bits: low half of the height */
  JPEG_RECORD_X_DENSITY = 4,  /* 32 bits: pixels per metre */
  JPEG_RECORD_Y_DENSITY = 8,  /* 32 bits */
  JPEG_RECORD_QUALITY = 12,   /* 16 bits: low half of the quality, signed */
  JPEG_RECORD_CONSTANTS = 14, /* 14 bytes: 03 00 00 00 00 00 02 00 02 00 00 00 00 00 */
  JPEG_RECORD_TAIL = 48,      /* 8 bytes of 0 */
  JPEG_RECORD_BYTES = 56
};

/* Codes a bitmap into a JPEG file in a new block of exactly its size; *pStatus is 0 on success.
 * The block is the caller's (GlobalFree). */
typedef HGLOBAL (*SaveDIBAsJPEGToMemoryExFunction)(HDIB hDib, void const* pRecord, int* pStatus);

/* Codes a bitmap into a JPEG file on disk. 0 for success. */
typedef int (*SaveDIBInJPEGFileExWFunction)(WCHAR const* szPath, HDIB hDib, void const* pRecord);

/* Decode a JPEG file from memory or disk into a new bitmap; 0 on failure. */
typedef HDIB (*LoadJPEGIntoDIBFromMemoryFunction)(void const* pData, DWORD nSize);
typedef HDIB (*LoadJPEGIntoDIBWFunction)(WCHAR const* szPath);

#ifdef __cplusplus
}
#endif

#endif /* SORRELIN_IMAGE_CODECS_SIBLING_H_ */
