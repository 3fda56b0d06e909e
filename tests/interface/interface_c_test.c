/* The flat interface from C11: every function by its name, and a document made with them. */
#include <sorrelin/frame/pdf.h>
#include <stdio.h>
#include <string.h>

typedef void (*Function)(void);

static Function const kFunctions[] = {
    (Function)pdf_Init_PDF,
    (Function)pdf_Release_PDF,
    (Function)pdf_PDF_GetLastError,
    (Function)pdf_GetLastPDFErrorText,
    (Function)pdf_CreatePDF,
    (Function)pdf_CreatePDFW,
    (Function)pdf_CreatePDFInMemory,
    (Function)pdf_SaveDIBAsPDFPage,
    (Function)pdf_SaveDIBAsPDFPageW,
    (Function)pdf_SaveDIBAsColorPDFPage,
    (Function)pdf_SaveDIBAsColorPDFPageW,
    (Function)pdf_FinishPDF,
    (Function)pdf_FinishPDFInMemory,
    (Function)pdf_ClosePDFFile,
    (Function)pdf_ClosePDFInMemory,
    (Function)pdf_FreePDFInMemory,
    (Function)pdf_SaveDIBToPDF,
    (Function)pdf_SaveDIBToPDFW,
    (Function)pdf_SaveDIBToPDFInMemory,
    (Function)pdf_SetTitleA,
    (Function)pdf_SetTitleW,
    (Function)pdf_SetAuthorA,
    (Function)pdf_SetAuthorW,
    (Function)pdf_SetSubjectA,
    (Function)pdf_SetSubjectW,
    (Function)pdf_SetKeywordsA,
    (Function)pdf_SetKeywordsW,
    (Function)pdf_GetTitleA,
    (Function)pdf_GetTitleW,
    (Function)pdf_GetAuthorA,
    (Function)pdf_GetAuthorW,
    (Function)pdf_GetSubjectA,
    (Function)pdf_GetSubjectW,
    (Function)pdf_GetKeywordsA,
    (Function)pdf_GetKeywordsW,
    (Function)pdf_OpenPDFFile,
    (Function)pdf_OpenPDFFileW,
    (Function)pdf_OpenPDFInMemory,
    (Function)pdf_GetNumberOfPages,
    (Function)pdf_LoadImageFromPDF,
    (Function)pdf_LoadPDFIntoDIB,
    (Function)pdf_LoadPDFIntoDIBW,
    (Function)pdf_LoadPDFIntoDIBInMemory,
    (Function)GetNumberOfPagesInPDFFile,
    (Function)GetNumberOfPagesInPDFFileW,
    (Function)GetNumberOfPagesInPDFInMemory,
    (Function)fnCreatePDF,
};

static int Check(int condition, char const* what) {
  if (!condition) fprintf(stderr, "failed: %s\n", what);
  return condition ? 0 : 1;
}

int main(void) {
  int failures = 0;
  for (size_t i = 0; i < sizeof kFunctions / sizeof *kFunctions; ++i) {
    failures += Check(kFunctions[i] != NULL, "every function has an address");
  }
  hPDF pdf = 0;
  failures += Check(pdf_Init_PDF(&pdf) == PDF_ERROR_NONE, "pdf_Init_PDF");
  failures += Check(pdf_CreatePDFInMemory(pdf, NULL, 0) == PDF_ERROR_NONE, "create");
  void* data = NULL;
  DWORD size = 0;
  failures += Check(pdf_FinishPDFInMemory(pdf, &data, &size) == PDF_ERROR_NONE, "finish");
  failures += Check(size > 5 && memcmp(data, "%PDF-", 5) == 0, "the document is there");
  pdf_FreePDFInMemory(data);
  pdf_Release_PDF(pdf);
  failures += Check(fnCreatePDF() == 42 && nCreatePDF == 0, "fixed parts");
  return failures == 0 ? 0 : 1;
}
