/* Writes an empty document to a path with any characters. linked_caller FILE */
#include <sorrelin/frame/pdf.h>
#include <stdio.h>

int main(void) {
  int count = 0;
  WCHAR** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  hPDF pdf = 0;
  if (count != 2 || pdf_Init_PDF(&pdf) != 0) return 2;
  DWORD error = pdf_CreatePDFW(pdf, arguments[1]);
  if (error == 0) error = pdf_FinishPDF(pdf);
  pdf_Release_PDF(pdf);
  if (error != 0) fprintf(stderr, "error %lu\n", error);
  return error == 0 ? 0 : 1;
}
