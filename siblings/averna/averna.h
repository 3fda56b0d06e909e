/* Averna's entry points: OCR with hOCR output, on Tesseract and Leptonica.
 *
 * The library is loaded at run time and its entry points are found by name, so only programs that
 * link the engine itself include this header as more than a description. All functions may be
 * called on any thread; recognitions take turns. Nothing is written to standard output or standard
 * error. Valid C11 and C++. */
#ifndef SIBLINGS_AVERNA_AVERNA_H_
#define SIBLINGS_AVERNA_AVERNA_H_

#include <sorrelin/platform/types.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Results of the functions. */
enum {
  AVERNA_OK = 0,
  AVERNA_BAD_ARGUMENT = 1, /* a null pointer, an empty language list or an unknown format */
  AVERNA_BAD_BITMAP = 2,   /* no bitmap of 1, 8 or 24 bits, or its rows are not all in the block */
  AVERNA_NO_LANGUAGE = 3,  /* the data of a language are not installed or could not be loaded */
  AVERNA_FAILED = 4,       /* the recognition failed */
  AVERNA_NO_MEMORY = 5,
  AVERNA_BAD_LANGUAGE = 6, /* the data of a language are there and cannot be loaded */
  AVERNA_STOPPED = 7,      /* the time was up, or the caller cancelled */
  AVERNA_NO_FONT = 8 /* the font of the text layer, pdf.ttf, is not beside the language data */
};

/* Pictures are at most this wide and this high, in pixels. */
enum { AVERNA_MAX_EXTENT = 32767 };

/* Recognises a packed bitmap with a BITMAPINFOHEADER, uncompressed, of either row order, and stores
 * its words as an XHTML document in hOCR, zero-terminated UTF-16, in *ppText, which is null
 * after a failure; free the text with AvernaFreeTextW. nLanguages is the address of a
 * zero-terminated list of languages such as "eng+deu", or 0 for "eng". Words have their boxes in
 * pixels and their font sizes in points, from the bitmap's resolution or, where it has none, an
 * estimate. The last three arguments are not used. An AVERNA_* code. */
int OCRDIBExW(HDIB hDib, WCHAR** ppText, int64_t nLanguages, int32_t nZero, int32_t nOne,
              int32_t nLastZero);

/* Frees a text of OCRDIBExW; null is harmless. Always 0. */
int AvernaFreeTextW(WCHAR* szText);

/* The functions below are optional: a program must expect an engine without them. */

/* An engine with its language data loaded, for any number of pages. One thread at a time. */
typedef struct AVERNA_ENGINE AVERNA_ENGINE;

/* Opens an engine for a list of languages such as "eng+deu"; "osd" serves AvernaFindOrientation
 * alone. After AVERNA_NO_LANGUAGE the first missing language is in `missing`, zero-terminated and
 * cut to `room` bytes. `*engine` is null after a failure. An AVERNA_* code. */
int AvernaOpen(char const* languages, AVERNA_ENGINE** engine, char* missing, uint32_t room);

/* Null is harmless. Always 0. */
int AvernaClose(AVERNA_ENGINE* engine);

/* How a page is recognised. */
typedef struct AVERNA_PAGE {
  int32_t segmentation; /* Tesseract's page segmentation mode, 3 to 13; 3 is the usual one */
  int32_t timeout_ms;   /* 0: none. Checked between words, so a page may take longer */
  int32_t (*cancelled)(void* context); /* not 0 stops the recognition; may be null */
  void* context;
} AVERNA_PAGE;

/* Recognises a bitmap as OCRDIBExW does and keeps the result until the next one. */
int AvernaRecognize(AVERNA_ENGINE* engine, HDIB dib, AVERNA_PAGE const* page);

/* Forms of a result. Those of text are UTF-8 and leave out what comes once a document. */
enum {
  AVERNA_HOCR = 1, /* the div element of the page */
  AVERNA_TSV = 2,  /* lines of 12 columns, without their heading */
  AVERNA_ALTO = 3, /* the Page element */
  AVERNA_TEXT = 4,
  AVERNA_PDF = 5 /* a whole document: a page of invisible text, as large as the bitmap at its dpi */
};

/* A form of the last result in a new block of `*size` bytes and a zero byte; free it with
 * AvernaFreeData. `number` is the page's in its document, from 0. `*data` is null after a
 * failure. An AVERNA_* code. */
int AvernaGetResult(AVERNA_ENGINE* engine, int32_t format, int32_t number, char** data,
                    uint64_t* size);

/* Null is harmless. Always 0. */
int AvernaFreeData(char* data);

/* The clockwise turn, 0, 90, 180 or 270 degrees, that brings the text of a bitmap upright, and the
 * confidence in it (0: too little text; 15 and more are sure). The engine has been opened with
 * "osd". An AVERNA_* code. */
int AvernaFindOrientation(AVERNA_ENGINE* engine, HDIB dib, int32_t* degrees, float* confidence);

#ifdef __cplusplus
}
#endif

#endif /* SIBLINGS_AVERNA_AVERNA_H_ */
