/* Reads the page images of a document back and writes each as a BMP file, PREFIX1.bmp and on; the
 * document is a file, or with "-" what comes through standard input.
 * read_pages FILE|- PREFIX */
#include <sorrelin/frame/pdf.h>
#include <sorrelin/platform/memory.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* All of standard input in a block from malloc; null when memory is short. */
static BYTE* ReadInput(DWORD* size) {
  size_t capacity = 1 << 16, used = 0, count = 0;
  BYTE* data = malloc(capacity);
  while (data != NULL && (count = fread(data + used, 1, capacity - used, stdin)) > 0) {
    used += count;
    if (used < capacity) continue;
    BYTE* const larger = realloc(data, capacity *= 2);
    if (larger == NULL) free(data);
    data = larger;
  }
  *size = (DWORD)used;
  return data;
}

static DWORD ColoursOf(BITMAPINFOHEADER const* header) {
  if (header->biClrUsed != 0) return header->biClrUsed;
  return header->biBitCount <= 8 ? 1u << header->biBitCount : 0;
}

static void PutNumber(BYTE* at, DWORD number) {
  for (int i = 0; i < 4; ++i) at[i] = (BYTE)(number >> (8 * i));
}

/* A BMP file is a packed bitmap after 14 bytes: "BM", the file's size, 0, where the rows begin. */
static int WriteBmp(char const* path, HDIB bitmap) {
  BYTE const* const bytes = GlobalLock(bitmap);
  FILE* const file = bytes != NULL ? fopen(path, "wb") : NULL;
  if (file == NULL) return 0;
  DWORD const size = (DWORD)GlobalSize(bitmap);
  BITMAPINFOHEADER header;
  memcpy(&header, bytes, sizeof header);
  BYTE head[14] = {'B', 'M'};
  PutNumber(head + 2, (DWORD)sizeof head + size);
  PutNumber(head + 10, (DWORD)(sizeof head + header.biSize + ColoursOf(&header) * sizeof(RGBQUAD)));
  int const written =
      fwrite(head, 1, sizeof head, file) == sizeof head && fwrite(bytes, 1, size, file) == size;
  GlobalUnlock(bitmap);
  return fclose(file) == 0 && written;
}

/* The page's image as a BMP file; a page without one is reported and skipped. */
static int WritePage(hPDF pdf, DWORD page, char const* prefix) {
  HDIB const bitmap = pdf_LoadImageFromPDF(pdf, page);
  if (bitmap == NULL || bitmap == INVALID_HANDLE_VALUE) {
    char text[1024] = "";
    pdf_GetLastPDFErrorText(pdf, text);
    fprintf(stderr, "page %u: no image (%s)\n", (unsigned)page + 1, text);
    return 0;
  }
  char path[4096];
  snprintf(path, sizeof path, "%s%u.bmp", prefix, (unsigned)page + 1);
  int const written = WriteBmp(path, bitmap);
  if (!written) perror(path);
  GlobalFree(bitmap);
  return written;
}

int main(int count, char** arguments) {
  if (count != 3) {
    fprintf(stderr, "usage: read_pages FILE|- PREFIX\n");
    return 2;
  }
  hPDF pdf = 0;
  DWORD size = 0;
  BYTE* input = NULL; /* read in place, so it lives until the document is closed */
  DWORD error = pdf_Init_PDF(&pdf);
  if (error == PDF_ERROR_NONE && strcmp(arguments[1], "-") == 0) {
    input = ReadInput(&size);
    error = pdf_OpenPDFInMemory(pdf, input, size);
  } else if (error == PDF_ERROR_NONE) {
    error = pdf_OpenPDFFile(pdf, arguments[1]);
  }
  int failed = error != PDF_ERROR_NONE;
  if (failed) fprintf(stderr, "%s: cannot be read (code %u)\n", arguments[1], (unsigned)error);
  DWORD const pages = failed ? 0 : pdf_GetNumberOfPages(pdf);
  for (DWORD page = 0; page < pages; ++page) failed |= !WritePage(pdf, page, arguments[2]);
  pdf_Release_PDF(pdf);
  free(input);
  return failed;
}
