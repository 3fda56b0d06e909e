/* Writes a page through a codec library that the caller names: a path, or a bare name, which is
 * looked for beside the program first.
 * use_codec FILE CODEC_LIBRARY */
#include <sorrelin/frame/pdf.h>
#include <sorrelin/platform/memory.h>
#include <stdio.h>
#include <string.h>

enum { kSize = 256, kPixelsPerMetre = 2835 /* 72 dpi */ };

/* 24 bits: the left half is pure red, the right half pure blue. */
static HDIB MakeHalves(void) {
  size_t const stride = kSize * 3;
  HGLOBAL const bitmap = GlobalAlloc(GHND, sizeof(BITMAPINFOHEADER) + stride * kSize);
  BYTE* const bytes = GlobalLock(bitmap);
  if (bytes == NULL) return NULL;
  BITMAPINFOHEADER header = {.biSize = sizeof header,
                             .biWidth = kSize,
                             .biHeight = kSize,
                             .biPlanes = 1,
                             .biBitCount = 24,
                             .biXPelsPerMeter = kPixelsPerMetre,
                             .biYPelsPerMeter = kPixelsPerMetre};
  memcpy(bytes, &header, sizeof header);
  for (int i = 0; i < kSize * kSize; ++i) {
    bytes[sizeof header + (size_t)i * 3 + (i % kSize < kSize / 2 ? 2 : 0)] = 255;
  }
  GlobalUnlock(bitmap);
  return bitmap;
}

int main(int count, char** arguments) {
  if (count != 3) {
    fprintf(stderr, "usage: use_codec FILE CODEC_LIBRARY\n");
    return 2;
  }
  hPDF pdf = 0;
  HDIB const bitmap = MakeHalves();
  DWORD error = pdf_Init_PDF(&pdf);
  if (error == PDF_ERROR_NONE) error = pdf_CreatePDF(pdf, arguments[1]);
  if (error == PDF_ERROR_NONE) {
    error = pdf_SaveDIBAsColorPDFPage(pdf, bitmap, arguments[2], PDF_COMPRESSION_JPEG, 95);
  }
  if (error == PDF_ERROR_NONE) error = pdf_FinishPDF(pdf);
  if (error == PDF_ERROR_JPEG_LIBRARY) {
    fprintf(stderr, "%s: no codec library of that name\n", arguments[2]);
  } else if (error != PDF_ERROR_NONE) {
    char text[1024];
    pdf_GetLastPDFErrorText(pdf, text);
    fprintf(stderr, "%s: %s\n", arguments[1], text);
  }
  GlobalFree(bitmap);
  pdf_Release_PDF(pdf);
  return error == PDF_ERROR_NONE ? 0 : 1;
}
