// Flat functions of the session itself.
#include <sorrelin/frame/flat.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/frame/trace.h>

#include <new>

using sorrelin::SessionOf;
using sorrelin::Trace;

DWORD pdf_Init_PDF(hPDF* pPDF) {
  Trace(SORRELIN_TEXT("pdf_Init_PDF: START"));
  if (pPDF == nullptr) return PDF_ERROR_INVALID_HANDLE;
  *pPDF = reinterpret_cast<hPDF>(new CCreatePDF);
  if (SessionOf(*pPDF) == nullptr) return PDF_ERROR_INVALID_HANDLE;
  Trace(SORRELIN_TEXT("pdf_Init_PDF: OK"));
  Trace(SORRELIN_TEXT("pdf_Init_PDF: hPDF = %x"));
  return PDF_ERROR_NONE;
}

// Kept: the side record with its strings stays allocated.
DWORD pdf_Release_PDF(hPDF hPdf) {
  Trace(SORRELIN_TEXT("pdf_Release_PDF:"));
  CCreatePDF* const session = SessionOf(hPdf);
  if (session == nullptr) {
    Trace(SORRELIN_TEXT("pdf_Release_PDF: Error"));
    return PDF_ERROR_INVALID_HANDLE;
  }
  session->ClosePDFFile();
  sorrelin::SessionAccess::LeaveSideRecord(*session);
  delete session;
  Trace(SORRELIN_TEXT("pdf_Release_PDF: OK"));
  return PDF_ERROR_NONE;
}

DWORD pdf_PDF_GetLastError(hPDF hPdf) {
  CCreatePDF* const session = SessionOf(hPdf);
  return session != nullptr ? session->PDF_GetLastError() : DWORD{PDF_ERROR_INVALID_HANDLE};
}

DWORD pdf_GetLastPDFErrorText(hPDF hPdf, char* szBuffer) {
  CCreatePDF* const session = SessionOf(hPdf);
  if (session == nullptr) return PDF_ERROR_INVALID_HANDLE;
  return static_cast<DWORD>(session->GetLastPDFErrorText(szBuffer));
}
