/* The flat interface of the library, valid C11 and C++20.
 *
 * - Results: 0 is success, anything else one of the PDF_ERROR_* codes, unless the function says
 *   otherwise. A session handle of 0 or -1 gives PDF_ERROR_INVALID_HANDLE, and the session's last
 *   error then stays as it was.
 * - Strings: zero-terminated. WCHAR is one UTF-16 code unit; char strings are in the system's code
 *   page (UTF-8 outside Windows). A narrow string must not be null.
 * - Bitmaps: a HDIB is a block from GlobalAlloc that holds a packed bitmap: BITMAPINFOHEADER (40
 *   bytes), RGBQUAD colour table (2 entries for 1 bit, 256 for 8 bits, none for 24), rows from the
 *   lowest up, each padded to 4 bytes, 1, 8 or 24 bits a pixel (blue, green, red). Arguments
 *   stay the caller's and are not changed; results are freed by the caller with GlobalFree.
 * - Pages are counted from 0 where a page index is an argument.
 * - Sizes are in bytes, unless units of 16 bits are named.
 * - Threads: sessions share nothing; one session is for one thread at a time.
 */
#ifndef SORRELIN_FRAME_PDF_H_
#define SORRELIN_FRAME_PDF_H_

#include <sorrelin/platform/codes.h>
#include <sorrelin/platform/export.h>
#include <sorrelin/platform/types.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A session; 0 and -1 are never valid. */
typedef int64_t hPDF;

/* ---- Session ---- */

/* Makes a session and stores its handle. Release it with pdf_Release_PDF. 2 for a null pointer. */
SORRELIN_EXPORT DWORD pdf_Init_PDF(hPDF* pPDF);

/* Closes whatever the session has open and frees it. */
SORRELIN_EXPORT DWORD pdf_Release_PDF(hPDF hPdf);

/* The code of the session's last failure; 32 on a fresh session; 2 for a bad handle. */
SORRELIN_EXPORT DWORD pdf_PDF_GetLastError(hPDF hPdf);

/* Writes the text of the last error with its terminator into `szBuffer`: at most 57 bytes for the
 * library's own texts; the text of code 1 is the system's and may be longer. Returns 1; 0 for a
 * null buffer; 2 for a bad handle, with nothing written. */
SORRELIN_EXPORT DWORD pdf_GetLastPDFErrorText(hPDF hPdf, char* szBuffer);

/* ---- Writing ---- */

/* Starts a document in a new file, or an update of the file if it exists. 1: the file cannot be
 * opened; the reader's codes if an existing file is no usable document. */
SORRELIN_EXPORT DWORD pdf_CreatePDF(hPDF hPdf, char const* szFileName);
SORRELIN_EXPORT DWORD pdf_CreatePDFW(hPDF hPdf, WCHAR const* szFileName);

/* Starts a document in memory. With `pAppendTo` null it is a new one, and `nSize` is the capacity
 * to start with (0 is fine); otherwise an update of a copy of the `nSize` bytes there. */
SORRELIN_EXPORT DWORD pdf_CreatePDFInMemory(hPDF hPdf, void const* pAppendTo, DWORD nSize);

/* Adds a bilevel bitmap as a page coded with CCITT Group 4. `szCodecLibrary` names the sibling
 * library that holds the coder. 2: `hDib` is 0 or -1; 15: the bitmap is not bilevel; 19, 20: the
 * sibling; further codes as for pdf_SaveDIBAsColorPDFPageW. */
SORRELIN_EXPORT DWORD pdf_SaveDIBAsPDFPage(hPDF hPdf, HDIB hDib, char const* szCodecLibrary);
SORRELIN_EXPORT DWORD pdf_SaveDIBAsPDFPageW(hPDF hPdf, HDIB hDib, WCHAR const* szCodecLibrary);

/* Adds a bitmap as a page, coded as `nCompression` says. `nQuality` is zlib's level (0 to 9,
 * anything else its default) or the JPEG quality (1 to 100). 1, 2: target; 4: no pixels; 5: depth;
 * 9: resolution; 10: memory; 12: more than 30,000 pages; 15: depth and compression do not go
 * together; 17 to 21: the sibling; 40: the object table is full. A failed page leaves the session
 * usable and the document finishable. */
SORRELIN_EXPORT DWORD pdf_SaveDIBAsColorPDFPage(hPDF hPdf, HDIB hDib, char const* szCodecLibrary,
                                                DWORD nCompression, int nQuality);
SORRELIN_EXPORT DWORD pdf_SaveDIBAsColorPDFPageW(hPDF hPdf, HDIB hDib, WCHAR const* szCodecLibrary,
                                                 DWORD nCompression, int nQuality);

/* Writes the page tree, the catalog and the cross-reference section, and closes the target. After a
 * failure the target stays open; pdf_ClosePDFFile closes it. */
SORRELIN_EXPORT DWORD pdf_FinishPDF(hPDF hPdf);

/* The same for a document in memory: `*ppData` receives the document and `*pnSize` its size. Free
 * it with pdf_FreePDFInMemory. */
SORRELIN_EXPORT DWORD pdf_FinishPDFInMemory(hPDF hPdf, void** ppData, DWORD* pnSize);

/* Closes what is open, without finishing it; a document in memory is freed. The handle must be
 * valid: it is not checked. */
SORRELIN_EXPORT void pdf_ClosePDFFile(hPDF hPdf);

/* Closes a document in memory and drops its block without freeing it. The handle must be valid: it
 * is not checked. Returns 0. */
SORRELIN_EXPORT DWORD pdf_ClosePDFInMemory(hPDF hPdf);

/* Frees a document that the library made; null is harmless. Returns 0. */
SORRELIN_EXPORT DWORD pdf_FreePDFInMemory(void* pData);

/* One page to a file in one call, on a session of its own: a file that exists gets the page added.
 * 2: `hDib` is null; 7: the name is null or empty; otherwise as the calls above. */
SORRELIN_EXPORT DWORD pdf_SaveDIBToPDF(char const* szFileName, HDIB hDib,
                                       char const* szCodecLibrary, DWORD nCompression,
                                       int nQuality);
SORRELIN_EXPORT DWORD pdf_SaveDIBToPDFW(WCHAR const* szFileName, HDIB hDib,
                                        WCHAR const* szCodecLibrary, DWORD nCompression,
                                        int nQuality);

/* One page to memory in one call. On entry `*ppData` is null (a new document, `*pnSize` being the
 * first capacity) or a document of `*pnSize` bytes to add to, which stays the caller's. On success
 * both receive the new document; free it with pdf_FreePDFInMemory. On failure both are untouched.
 * 2: `hDib` is null; 7: `ppData` or `pnSize` is null. */
SORRELIN_EXPORT DWORD pdf_SaveDIBToPDFInMemory(void** ppData, DWORD* pnSize, HDIB hDib,
                                               WCHAR const* szCodecLibrary, DWORD nCompression,
                                               int nQuality);

/* ---- Information strings ---- */

/* Set a string of the next document; set it before the create call, which writes it. An empty
 * string leaves the key out (the title then has a default). At most 252 units (251 for keywords)
 * may be written. 7: null string. */
SORRELIN_EXPORT DWORD pdf_SetTitleA(hPDF hPdf, char const* szText);
SORRELIN_EXPORT DWORD pdf_SetTitleW(hPDF hPdf, WCHAR const* szText);
SORRELIN_EXPORT DWORD pdf_SetAuthorA(hPDF hPdf, char const* szText);
SORRELIN_EXPORT DWORD pdf_SetAuthorW(hPDF hPdf, WCHAR const* szText);
SORRELIN_EXPORT DWORD pdf_SetSubjectA(hPDF hPdf, char const* szText);
SORRELIN_EXPORT DWORD pdf_SetSubjectW(hPDF hPdf, WCHAR const* szText);
SORRELIN_EXPORT DWORD pdf_SetKeywordsA(hPDF hPdf, char const* szText);
SORRELIN_EXPORT DWORD pdf_SetKeywordsW(hPDF hPdf, WCHAR const* szText);

/* Copy a string of the session, as set or as read from a document. `*pnSize` is the capacity on
 * entry and the size needed with the terminator on return: bytes in the A forms, 16-bit units in
 * the W forms. With `szBuffer` null only the size is stored. 7: `pnSize` is null; 35: the capacity
 * is too small, and the buffer is untouched. */
SORRELIN_EXPORT DWORD pdf_GetTitleA(hPDF hPdf, char* szBuffer, DWORD* pnSize);
SORRELIN_EXPORT DWORD pdf_GetTitleW(hPDF hPdf, WCHAR* szBuffer, DWORD* pnSize);
SORRELIN_EXPORT DWORD pdf_GetAuthorA(hPDF hPdf, char* szBuffer, DWORD* pnSize);
SORRELIN_EXPORT DWORD pdf_GetAuthorW(hPDF hPdf, WCHAR* szBuffer, DWORD* pnSize);
SORRELIN_EXPORT DWORD pdf_GetSubjectA(hPDF hPdf, char* szBuffer, DWORD* pnSize);
SORRELIN_EXPORT DWORD pdf_GetSubjectW(hPDF hPdf, WCHAR* szBuffer, DWORD* pnSize);
SORRELIN_EXPORT DWORD pdf_GetKeywordsA(hPDF hPdf, char* szBuffer, DWORD* pnSize);
SORRELIN_EXPORT DWORD pdf_GetKeywordsW(hPDF hPdf, WCHAR* szBuffer, DWORD* pnSize);

/* ---- Reading ---- */

/* Opens a document for reading; it stays open until pdf_ClosePDFFile. 2: null wide name; 23: the
 * file cannot be opened; 24: it is no PDF; 25: its version is not 1.0 to 1.8; 1, 24: its
 * cross-reference cannot be read. */
SORRELIN_EXPORT DWORD pdf_OpenPDFFile(hPDF hPdf, char const* szFileName);
SORRELIN_EXPORT DWORD pdf_OpenPDFFileW(hPDF hPdf, WCHAR const* szFileName);

/* Opens a document in memory, in place: the block must outlive its use and is not changed. 7: null
 * data; 24: size 0; otherwise as above. */
SORRELIN_EXPORT DWORD pdf_OpenPDFInMemory(hPDF hPdf, void const* pData, DWORD nSize);

/* The number of pages, which is not an error code; 0 for a handle of 0. */
SORRELIN_EXPORT DWORD pdf_GetNumberOfPages(hPDF hPdf);

/* The image of a page as a new bitmap, or 0 with the reason in the session's last error (0 if the
 * page has no image that can be read). */
SORRELIN_EXPORT HDIB pdf_LoadImageFromPDF(hPDF hPdf, DWORD nPage);

/* The image of one page in one call, on a session of its own, or 0. */
SORRELIN_EXPORT HDIB pdf_LoadPDFIntoDIB(char const* szFileName, DWORD nPage);
SORRELIN_EXPORT HDIB pdf_LoadPDFIntoDIBW(WCHAR const* szFileName, DWORD nPage);
SORRELIN_EXPORT HDIB pdf_LoadPDFIntoDIBInMemory(void const* pData, DWORD nSize, DWORD nPage);

/* The number of pages of a document in one call, or 0xFFFFFFFF. */
SORRELIN_EXPORT DWORD GetNumberOfPagesInPDFFile(char const* szFileName);
SORRELIN_EXPORT DWORD GetNumberOfPagesInPDFFileW(WCHAR const* szFileName);
SORRELIN_EXPORT DWORD GetNumberOfPagesInPDFInMemory(void const* pData, DWORD nSize);

/* ---- Fixed parts of the export table ---- */

/* Returns 42. */
SORRELIN_EXPORT int fnCreatePDF(void);

/* 0; the library neither reads nor writes it. */
extern SORRELIN_EXPORT int nCreatePDF;

#ifdef __cplusplus
}
#endif

#endif /* SORRELIN_FRAME_PDF_H_ */
