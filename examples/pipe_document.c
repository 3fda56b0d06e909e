/* Makes a document of two colour pages in memory and sends it through standard output:
 * pipe_document | read_pages - page
 *
 * It is linked with the static library. The shared one writes a line of its own to standard output
 * when it is loaded, which would come before the document. */
#include <sorrelin/frame/pdf.h>
#include <sorrelin/platform/memory.h>
#include <stdio.h>
#include <string.h>

enum { kWidth = 300, kHeight = 200, kPixelsPerMetre = 2835 /* 72 dpi */ };

/* 24 bits: BITMAPINFOHEADER, then rows from the lowest up: blue, green, red, padded to 4 bytes. */
static HDIB MakeShade(BYTE blue) {
  size_t const stride = (kWidth * 3 + 3) / 4 * 4;
  HGLOBAL const bitmap = GlobalAlloc(GHND, sizeof(BITMAPINFOHEADER) + stride * kHeight);
  BYTE* const bytes = GlobalLock(bitmap);
  if (bytes == NULL) return NULL;
  BITMAPINFOHEADER header = {.biSize = sizeof header,
                             .biWidth = kWidth,
                             .biHeight = kHeight,
                             .biPlanes = 1,
                             .biBitCount = 24,
                             .biXPelsPerMeter = kPixelsPerMetre,
                             .biYPelsPerMeter = kPixelsPerMetre};
  memcpy(bytes, &header, sizeof header);
  for (int y = 0; y < kHeight; ++y) {
    BYTE* const row = bytes + sizeof header + stride * (size_t)(kHeight - 1 - y);
    for (int x = 0; x < kWidth; ++x) {
      BYTE const pixel[3] = {blue, (BYTE)y, (BYTE)(x / 2)};
      memcpy(row + 3 * x, pixel, sizeof pixel);
    }
  }
  GlobalUnlock(bitmap);
  return bitmap;
}

static DWORD MakeDocument(hPDF pdf, void** data, DWORD* size) {
  DWORD error = pdf_CreatePDFInMemory(pdf, NULL, 1 << 20); /* grows if that is too little */
  for (int page = 0; page < 2 && error == PDF_ERROR_NONE; ++page) {
    HDIB const bitmap = MakeShade(page == 0 ? 40 : 240);
    error = pdf_SaveDIBAsColorPDFPage(pdf, bitmap, "", PDF_COMPRESSION_FLATE, 6);
    GlobalFree(bitmap);
  }
  return error == PDF_ERROR_NONE ? pdf_FinishPDFInMemory(pdf, data, size) : error;
}

int main(void) {
  hPDF pdf = 0;
  void* data = NULL;
  DWORD size = 0;
  DWORD error = pdf_Init_PDF(&pdf);
  if (error == PDF_ERROR_NONE) error = MakeDocument(pdf, &data, &size);
  if (error != PDF_ERROR_NONE) {
    char text[1024];
    pdf_GetLastPDFErrorText(pdf, text);
    fprintf(stderr, "pipe_document: %s\n", text);
  }
  pdf_Release_PDF(pdf);
  int const sent =
      error == PDF_ERROR_NONE && fwrite(data, 1, size, stdout) == size && fflush(stdout) == 0;
  pdf_FreePDFInMemory(data);
  return sent ? 0 : 1;
}
