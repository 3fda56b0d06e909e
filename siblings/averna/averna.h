/* Averna's entry points: OCR with hOCR output, on Tesseract and Leptonica.
 *
 * The library is loaded at run time and its entry points are found by name, so only programs that
 * link the engine itself include this header. Both functions may be called on any thread;
 * recognitions take turns. Nothing is written to standard output or standard error. Valid C11 and
 * C++. */
#ifndef SIBLINGS_AVERNA_AVERNA_H_
#define SIBLINGS_AVERNA_AVERNA_H_

#include <sorrelin/platform/types.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Results of OCRDIBExW. */
enum {
  AVERNA_OK = 0,
  AVERNA_BAD_ARGUMENT = 1, /* a null pointer or an empty language list */
  AVERNA_BAD_BITMAP = 2,   /* no bitmap of 1, 8 or 24 bits, or its rows are not all in the block */
  AVERNA_NO_LANGUAGE = 3,  /* the data of a language could not be loaded */
  AVERNA_FAILED = 4,       /* the recognition failed */
  AVERNA_NO_MEMORY = 5
};

/* Pictures are at most this wide and this high, in pixels. */
enum { AVERNA_MAX_EXTENT = 32767 };

/* Recognises a packed bitmap with a BITMAPINFOHEADER, uncompressed, of either row order, and stores
 * its words as an XHTML document in hOCR, zero-terminated UTF-16, behind ppText, which is null
 * after a failure; free the text with AvernaFreeTextW. nLanguages is the address of a
 * zero-terminated list of languages such as "eng+deu", or 0 for "eng". Words have their boxes in
 * pixels and their font sizes in points, from the bitmap's resolution or, where it has none, an
 * estimate. The last three arguments are not used. An AVERNA_* code. */
int OCRDIBExW(HDIB hDib, WCHAR** ppText, int64_t nLanguages, int32_t nZero, int32_t nOne,
              int32_t nLastZero);

/* Frees a text of OCRDIBExW; null is harmless. Always 0. */
int AvernaFreeTextW(WCHAR* szText);

#ifdef __cplusplus
}
#endif

#endif /* SIBLINGS_AVERNA_AVERNA_H_ */
