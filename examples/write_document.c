/* Writes one page: a grey ramp of 256 by 256 pixels at 72 dpi, coded with Flate.
 * write_document FILE */
#include <sorrelin/frame/pdf.h>
#include <sorrelin/platform/memory.h>
#include <stdio.h>
#include <string.h>

enum { kSize = 256, kPixelsPerMetre = 2835 };

/* BITMAPINFOHEADER, 256 colours, then the rows from the lowest up, padded to 4 bytes. */
static HDIB MakeRamp(void) {
  size_t const rows_at = sizeof(BITMAPINFOHEADER) + 256 * sizeof(RGBQUAD);
  HGLOBAL const bitmap = GlobalAlloc(GHND, rows_at + kSize * kSize);
  BYTE* const bytes = GlobalLock(bitmap);
  if (bytes == NULL) return NULL;
  BITMAPINFOHEADER header = {.biSize = sizeof header,
                             .biWidth = kSize,
                             .biHeight = kSize,
                             .biPlanes = 1,
                             .biBitCount = 8,
                             .biXPelsPerMeter = kPixelsPerMetre,
                             .biYPelsPerMeter = kPixelsPerMetre};
  memcpy(bytes, &header, sizeof header);
  for (int i = 0; i < 256; ++i) {
    memset(bytes + sizeof header + sizeof(RGBQUAD) * (size_t)i, i, 3);
  }
  for (int y = 0; y < kSize; ++y) {
    for (int x = 0; x < kSize; ++x) bytes[rows_at + (size_t)(y * kSize + x)] = (BYTE)x;
  }
  GlobalUnlock(bitmap);
  return bitmap;
}

int main(int count, char** arguments) {
  if (count != 2) {
    fprintf(stderr, "usage: write_document FILE\n");
    return 2;
  }
  hPDF pdf = 0;
  HDIB const bitmap = MakeRamp();
  DWORD error = pdf_Init_PDF(&pdf);
  if (error == PDF_ERROR_NONE) error = pdf_CreatePDF(pdf, arguments[1]);
  if (error == PDF_ERROR_NONE) {
    error = pdf_SaveDIBAsColorPDFPage(pdf, bitmap, "", PDF_COMPRESSION_FLATE, 6);
  }
  if (error == PDF_ERROR_NONE) error = pdf_FinishPDF(pdf);
  if (error != PDF_ERROR_NONE) {
    char text[1024];
    pdf_GetLastPDFErrorText(pdf, text);
    fprintf(stderr, "%s: %s\n", arguments[1], text);
  }
  GlobalFree(bitmap);
  pdf_Release_PDF(pdf);
  return error == PDF_ERROR_NONE ? 0 : 1;
}
