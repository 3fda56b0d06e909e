/* Pages of pictures that are coded already: JPEG files and Group 4 data go into a new document byte
 * for byte. A library of its own, libsorrelin-coded, beside libsorrelin. Valid C11 and C++.
 *
 * The functions return 0 or an error code, and take the sessions of sorrelin/frame/pdf.h on which a
 * new document was created; its other pages may be bitmaps. They do not update documents (error
 * 11). A refused picture leaves the document as it was. A resolution is in dots per inch; 0 takes
 * the picture's own, and 96 where it has none. */
#ifndef SORRELIN_CODED_CODED_PAGES_H_
#define SORRELIN_CODED_CODED_PAGES_H_

#include <sorrelin/frame/pdf.h>

#if defined(_WIN32)
#define SORRELIN_CODED_API
#else
#define SORRELIN_CODED_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Adds a JPEG file of `nSize` bytes with 8 bits a sample, grey or YCbCr colour, baseline or
 * progressive. 2: a bad handle. 7: no data. 27: no such JPEG. 4: less than half a point wide or
 * high. 40: the document is full. */
SORRELIN_CODED_API DWORD pdf_AddJPEGPage(hPDF hPdf, void const* pData, DWORD nSize, DWORD nDpiX,
                                         DWORD nDpiY);

/* Adds Group 4 data (T.6, the highest bit first) of nWidth x nHeight pixels, in which a black run
 * is black, or white if bInvert is not 0. The data are not decoded. 2: a bad handle. 7: no data. 4:
 * no size, or less than half a point. 40: the document is full. */
SORRELIN_CODED_API DWORD pdf_AddGroup4Page(hPDF hPdf, void const* pData, DWORD nSize, LONG nWidth,
                                           LONG nHeight, DWORD nDpiX, DWORD nDpiY, int bInvert);

#ifdef __cplusplus
}
#endif

#endif /* SORRELIN_CODED_CODED_PAGES_H_ */
