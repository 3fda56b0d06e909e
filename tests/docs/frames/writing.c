/* Around a block of C that writes: a session, a bilevel page and a photograph. */
#include <sorrelin/frame/pdf.h>
#include <sorrelin/platform/memory.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static HDIB MakeBitmap(int bits, DWORD colours, RGBQUAD const* table) {
  size_t const stride = (size_t)(200 * bits + 31) / 32 * 4;
  size_t const rows_at = sizeof(BITMAPINFOHEADER) + colours * sizeof(RGBQUAD);
  HDIB const block = GlobalAlloc(GHND, rows_at + stride * 100);
  BITMAPINFOHEADER const header = {.biSize = sizeof header, .biWidth = 200, .biHeight = 100,
                                   .biPlanes = 1, .biBitCount = (WORD)bits,
                                   .biXPelsPerMeter = 2835, .biYPelsPerMeter = 2835};
  BYTE* const bytes = GlobalLock(block);
  memcpy(bytes, &header, sizeof header);
  if (colours != 0) memcpy(bytes + sizeof header, table, colours * sizeof *table);
  GlobalUnlock(block);
  return block;
}

int main(void) {
  RGBQUAD const black_and_white[2] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
  HDIB const bitmap = MakeBitmap(1, 2, black_and_white);
  HDIB const photo = MakeBitmap(24, 0, NULL);
  DWORD error = PDF_ERROR_NONE;
  hPDF pdf = 0;
  if (pdf_Init_PDF(&pdf) != PDF_ERROR_NONE) return 1;
  /* BLOCK */
  pdf_Release_PDF(pdf);
  GlobalFree(bitmap);
  GlobalFree(photo);
  return error == PDF_ERROR_NONE ? 0 : 1;
}
