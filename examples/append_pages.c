/* Adds COUNT scanned pages to FILE, as a scanning program does: the file is made if it does not
 * exist, and gets its new pages after the old ones if it does.
 * append_pages FILE COUNT */
#include <sorrelin/frame/pdf.h>
#include <sorrelin/platform/memory.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { kWidth = 1000, kHeight = 1400, kPixelsPerMetre = 7874 /* 200 dpi */ };

/* Stands for the scanner: one row from the top, a set bit is black. Sheet n shows n black bars. */
static void ScanRow(int sheet, int y, BYTE* row, size_t row_bytes) {
  int const bar = y / 100;
  memset(row, bar < sheet && y % 100 >= 50 ? 0xFF : 0, row_bytes);
}

/* BITMAPINFOHEADER, white and black as bits 0 and 1 mean it, rows from the lowest up. */
static HDIB ScanSheet(int sheet) {
  size_t const stride = (kWidth + 31) / 32 * 4;
  size_t const rows_at = sizeof(BITMAPINFOHEADER) + 2 * sizeof(RGBQUAD);
  HGLOBAL const bitmap = GlobalAlloc(GHND, rows_at + stride * kHeight);
  BYTE* const bytes = GlobalLock(bitmap);
  if (bytes == NULL) return NULL;
  BITMAPINFOHEADER header = {.biSize = sizeof header,
                             .biWidth = kWidth,
                             .biHeight = kHeight,
                             .biPlanes = 1,
                             .biBitCount = 1,
                             .biXPelsPerMeter = kPixelsPerMetre,
                             .biYPelsPerMeter = kPixelsPerMetre};
  memcpy(bytes, &header, sizeof header);
  RGBQUAD const colours[2] = {{255, 255, 255, 0}, {0, 0, 0, 0}};
  memcpy(bytes + sizeof header, colours, sizeof colours);
  for (int y = 0; y < kHeight; ++y) {
    ScanRow(sheet, y, bytes + rows_at + stride * (size_t)(kHeight - 1 - y), kWidth / 8);
  }
  GlobalUnlock(bitmap);
  return bitmap;
}

/* A page that fails does not lose the pages before it: the document is finished all the same. */
static DWORD AddSheets(hPDF pdf, char const* file, int count) {
  DWORD error = pdf_CreatePDF(pdf, file);
  if (error != PDF_ERROR_NONE) return error;
  for (int sheet = 1; sheet <= count && error == PDF_ERROR_NONE; ++sheet) {
    HDIB const bitmap = ScanSheet(sheet);
    error = pdf_SaveDIBAsPDFPage(pdf, bitmap, "Cadwick.dll");
    GlobalFree(bitmap);
  }
  DWORD const finished = pdf_FinishPDF(pdf);
  return error != PDF_ERROR_NONE ? error : finished;
}

int main(int count, char** arguments) {
  /* At least one sheet: an update that is finished without a page damages the file. */
  int const sheets = count == 3 ? atoi(arguments[2]) : 0;
  if (sheets < 1 || sheets > 14) {
    fprintf(stderr, "usage: append_pages FILE COUNT (1 to 14)\n");
    return 2;
  }
  hPDF pdf = 0;
  DWORD error = pdf_Init_PDF(&pdf);
  if (error == PDF_ERROR_NONE) error = AddSheets(pdf, arguments[1], sheets);
  if (error != PDF_ERROR_NONE) {
    char text[1024];
    pdf_GetLastPDFErrorText(pdf, text);
    fprintf(stderr, "%s: %s (code %u)\n", arguments[1], text, (unsigned)error);
  }
  pdf_Release_PDF(pdf);
  return error == PDF_ERROR_NONE ? 0 : 1;
}
