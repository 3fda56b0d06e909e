// Flat functions of the session itself.
#include <sorrelin/frame/flat.h>
#include <sorrelin/frame/session_state.h>

#include <new>

using sorrelin::SessionAccess;
using sorrelin::SessionOf;

DWORD pdf_Init_PDF(hPDF* pPDF) {
  if (pPDF == nullptr) return PDF_ERROR_INVALID_HANDLE;
  *pPDF = 0;
  CCreatePDF* const session = new (std::nothrow) CCreatePDF;
  if (session == nullptr || SessionAccess::Of(*session) == nullptr) {
    delete session;
    return PDF_ERROR_MEMORY;
  }
  *pPDF = sorrelin::HandleOf(session);
  return PDF_ERROR_NONE;
}

// Kept: the side record with its strings stays allocated.
DWORD pdf_Release_PDF(hPDF hPdf) {
  CCreatePDF* const session = SessionOf(hPdf);
  if (session == nullptr) return PDF_ERROR_INVALID_HANDLE;
  session->ClosePDFFile();
  SessionAccess::LeaveSideRecord(*session);
  delete session;
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
