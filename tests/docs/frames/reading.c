/* Around a block of C that reads: a session, and a document "scan.pdf" of two pages. */
#include <sorrelin/frame/pdf.h>
#include <sorrelin/platform/memory.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* The two pages are 40 by 30 pixels of 24 bits at 72 dpi. */
static void WriteScan(void) {
  HDIB const block = GlobalAlloc(GHND, sizeof(BITMAPINFOHEADER) + 120 * 30);
  BITMAPINFOHEADER const header = {.biSize = sizeof header, .biWidth = 40, .biHeight = 30,
                                   .biPlanes = 1, .biBitCount = 24,
                                   .biXPelsPerMeter = 2835, .biYPelsPerMeter = 2835};
  memcpy(GlobalLock(block), &header, sizeof header);
  GlobalUnlock(block);
  for (int page = 0; page < 2; ++page) {
    if (pdf_SaveDIBToPDF("scan.pdf", block, "", PDF_COMPRESSION_FLATE, 6) != 0) exit(3);
  }
  GlobalFree(block);
}

/* What the block does with each page. */
static int pages_seen = 0;
static void UsePage(BITMAPINFOHEADER const* header) {
  if (header->biWidth == 40 && header->biHeight == 30 && header->biBitCount == 24) ++pages_seen;
}

int main(void) {
  WriteScan();
  (void)UsePage;
  DWORD error = PDF_ERROR_NONE;
  hPDF pdf = 0;
  if (pdf_Init_PDF(&pdf) != PDF_ERROR_NONE) return 1;
  int pages_wanted = 0;
  /* BLOCK */
  pdf_Release_PDF(pdf);
  if (pages_seen != pages_wanted) return 4;
  return error == PDF_ERROR_NONE ? 0 : 1;
}
