/* Cadwick's entry points: CCITT Group 4 coding (ITU-T T.6) and files in memory blocks.
 *
 * The library is loaded at run time and its entry points are found by name, so only programs that
 * link the coder itself include this header. Every function may be called on any thread; one file
 * is for one thread at a time. Nothing is written to standard output or standard error. Valid C11
 * and C++. */
#ifndef SIBLINGS_CADWICK_CADWICK_H_
#define SIBLINGS_CADWICK_CADWICK_H_

#include <sorrelin/image/codecs/sibling.h>
#include <sorrelin/platform/types.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Codes returned by TiffError. */
enum {
  CADWICK_OK = 0,           /* nothing has failed on this thread */
  CADWICK_BAD_ARGUMENT = 1, /* no callback, a size below 1 or past the limits, other coding */
  CADWICK_BAD_HANDLE = 2,   /* neither an open memory file nor an open file */
  CADWICK_NO_MEMORY = 3,
  CADWICK_IO_FAILED = 4,    /* the file could not be read or written */
  CADWICK_DATA_ENDED = 5,   /* the data, or an end mark in it, came before the last row */
  CADWICK_DATA_DAMAGED = 6, /* a code that Group 4 does not have, or a row that does not fit */
  CADWICK_STOPPED = 7       /* a row callback did not deliver, or did not want, a row */
};

/* Pictures are at most this wide, in pixels, and their rows of (width + 7) / 8 bytes together at
 * most 4 GiB; others are refused with CADWICK_BAD_ARGUMENT. */
enum { CADWICK_MAX_WIDTH = 1 << 24 };

/* Codes nHeight rows, which pRow supplies from the top row on, and writes the bare coded data with
 * its end mark (EOFB) at the position of hFile, a file from CreateFileW or mOpen. nCompression is
 * 4. The first result of pRow other than 0 ends the work. 1 for success; 0 otherwise, with what was
 * coded so far in the file. */
int EncodeCcittImage(void* hFile, int32_t nWidth, int32_t nHeight, int32_t nCompression,
                     void* pUser, CcittRowCallback pRow);

/* Decodes bare coded data from the position of hFile on and hands nHeight rows to pRow, the top
 * row first; bits after the last pixel of a row are 0. Only a row whose codes are all in the data
 * is delivered.
 * 1 if every row was delivered. 0 otherwise; pRow has then been given the rows before the failure,
 * unless it is CADWICK_DATA_ENDED and the same memory file has failed so before with this width at
 * this position: what it lacks is known then, and no row is delivered. The position of a memory
 * file stays where it was; that of another file is left after what was read. */
int DecodeCcittImage(void* hFile, int32_t nWidth, int32_t nHeight, int32_t nCompression,
                     void* pUser, CcittRowCallback pRow);

/* Code of the last failed coding or decoding on this thread. */
int TiffError(void);

/* Rows that the last DecodeCcittImage on this thread found: all of them after a success, those
 * before the end of the data after CADWICK_DATA_ENDED, those delivered after any other failure. */
int CcittRowsDecoded(void);

/* A memory file at position 0 over the first nSize bytes of a global block, which stays the
 * caller's and must live, unchanged by others, until mClose. Null if hBlock is no block. The result
 * is a number, not an address: a value that is no open memory file is recognised as such. */
void* mOpen(HGLOBAL hBlock, DWORD nSize);

/* Closes a memory file. If anything was written, the block then ends after the last byte written.
 * 0 for success, -1 for a value that is no open memory file or if the block could not be cut. */
int mClose(void* hMemoryFile);

/* Moves the position by nOffset bytes from the start (nOrigin 0), the position (1) or the end (2).
 * 0 for success; -1, without a move, for a position outside the file or a bad handle. */
int mSeek(void* hMemoryFile, int32_t nOffset, int32_t nOrigin);

#ifdef __cplusplus
}
#endif

#endif /* SIBLINGS_CADWICK_CADWICK_H_ */
