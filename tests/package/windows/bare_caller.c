/* A program without a run-time library, for the import library alone: leaves with 0 if a session
 * can be made and released. */
typedef long long Pdf;
__declspec(dllimport) unsigned long pdf_Init_PDF(Pdf*);
__declspec(dllimport) unsigned long pdf_Release_PDF(Pdf);
__declspec(dllimport) void __stdcall ExitProcess(unsigned int);

void Start(void) {
  Pdf pdf = 0;
  int const made = pdf_Init_PDF(&pdf) == 0 && pdf != 0;
  ExitProcess(made && pdf_Release_PDF(pdf) == 0 ? 0 : 1);
}
