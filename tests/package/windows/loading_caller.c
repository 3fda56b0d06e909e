/* Loads Sorrelin.dll by its path, finds functions by their names, and makes and reads a document.
 * loading_caller LIBRARY FILE. Prints "passed" last. */
#include <stdio.h>
#include <windows.h>

typedef __int64 Pdf;
typedef DWORD (*Init)(Pdf*);
typedef DWORD (*OfSession)(Pdf);
typedef DWORD (*Create)(Pdf, char const*);
typedef DWORD (*AddPage)(Pdf, void*, char const*, DWORD, int);
typedef DWORD (*CountPages)(char const*);
typedef void* (*LoadPage)(char const*, DWORD);

enum { kSize = 64, kFlate = 4, kJpeg = 7 };

static HGLOBAL MakeGrey(void) {
  BITMAPINFOHEADER const header = {.biSize = sizeof header,
                                   .biWidth = kSize,
                                   .biHeight = kSize,
                                   .biPlanes = 1,
                                   .biBitCount = 24};
  HGLOBAL const block = GlobalAlloc(GHND, sizeof header + 3 * kSize * kSize);
  BYTE* const bytes = GlobalLock(block);
  memcpy(bytes, &header, sizeof header);
  memset(bytes + sizeof header, 0x80, 3 * kSize * kSize);
  GlobalUnlock(block);
  return block;
}

#define FIND(type, name) type const name##_ = (type)(void (*)(void))GetProcAddress(library, #name)

static int Run(HMODULE library, char const* path) {
  FIND(Init, pdf_Init_PDF);
  FIND(OfSession, pdf_Release_PDF);
  FIND(OfSession, pdf_FinishPDF);
  FIND(Create, pdf_CreatePDF);
  FIND(AddPage, pdf_SaveDIBAsColorPDFPage);
  FIND(CountPages, GetNumberOfPagesInPDFFile);
  FIND(LoadPage, pdf_LoadPDFIntoDIB);
  Pdf pdf = 0;
  HGLOBAL const grey = MakeGrey();
  if (pdf_Init_PDF_(&pdf) != 0) return 11;
  if (pdf_CreatePDF_(pdf, path) != 0) return 12;
  if (pdf_SaveDIBAsColorPDFPage_(pdf, grey, "", kFlate, 6) != 0) return 13;
  if (pdf_SaveDIBAsColorPDFPage_(pdf, grey, "Rennick.dll", kJpeg, 90) != 0) return 14;
  if (pdf_FinishPDF_(pdf) != 0) return 15;
  pdf_Release_PDF_(pdf);
  GlobalFree(grey);
  if (GetNumberOfPagesInPDFFile_(path) != 2) return 16;
  HGLOBAL const back = pdf_LoadPDFIntoDIB_(path, 0);
  if (back == NULL) return 17;
  BITMAPINFOHEADER const* const header = GlobalLock(back);
  int const result = header->biWidth == kSize && header->biBitCount == 24 ? 0 : 18;
  GlobalUnlock(back);
  GlobalFree(back);
  return result;
}

int main(int count, char** arguments) {
  if (count != 3) return 2;
  HMODULE const library = LoadLibraryA(arguments[1]);
  if (library == NULL) return 3;
  int const result = Run(library, arguments[2]);
  FreeLibrary(library);
  if (result == 0) printf("passed\n");
  return result;
}
