/* Makes a document of JPEG files, each a page whose image is the file, byte for byte.
 * jpeg_pages DOCUMENT PICTURE... */
#include <sorrelin/coded/coded_pages.h>
#include <stdio.h>
#include <stdlib.h>

/* The file in a block of its own, to be freed with free(); null if it cannot be read. */
static BYTE* ReadWholeFile(char const* name, DWORD* size) {
  FILE* const file = fopen(name, "rb");
  if (file == NULL) return NULL;
  BYTE* bytes = NULL;
  long const length = fseek(file, 0, SEEK_END) == 0 ? ftell(file) : -1;
  if (length > 0 && length <= INT32_MAX && fseek(file, 0, SEEK_SET) == 0) {
    *size = (DWORD)length;
    bytes = malloc(*size);
  }
  if (bytes != NULL && fread(bytes, 1, *size, file) != *size) {
    free(bytes);
    bytes = NULL;
  }
  fclose(file);
  return bytes;
}

static int Complain(hPDF pdf, char const* name) {
  char text[1024] = "";
  pdf_GetLastPDFErrorText(pdf, text);
  fprintf(stderr, "%s: %s\n", name, text);
  return 1;
}

static int AddPicture(hPDF pdf, char const* name) {
  DWORD size = 0;
  BYTE* const bytes = ReadWholeFile(name, &size);
  if (bytes == NULL) {
    fprintf(stderr, "%s: cannot be read\n", name);
    return 1;
  }
  DWORD const error = pdf_AddJPEGPage(pdf, bytes, size, 0, 0); /* 0: the file's own resolution */
  free(bytes);
  return error == PDF_ERROR_NONE ? 0 : Complain(pdf, name);
}

int main(int count, char** arguments) {
  if (count < 3) {
    fprintf(stderr, "usage: jpeg_pages DOCUMENT PICTURE...\n");
    return 2;
  }
  hPDF pdf = 0;
  if (pdf_Init_PDF(&pdf) != PDF_ERROR_NONE) return 1;
  int failed = pdf_CreatePDF(pdf, arguments[1]) != PDF_ERROR_NONE ? Complain(pdf, arguments[1]) : 0;
  for (int i = 2; i < count && !failed; ++i) failed = AddPicture(pdf, arguments[i]);
  if (!failed && pdf_FinishPDF(pdf) != PDF_ERROR_NONE) failed = Complain(pdf, arguments[1]);
  pdf_Release_PDF(pdf);
  return failed;
}
