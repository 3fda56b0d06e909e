// Doors of the session: the last error.
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/error_text.h>
#include <sorrelin/frame/session.h>

using sorrelin::Door;
using sorrelin::SessionState;

void CCreatePDF::PDF_SetLastError(DWORD nError) {
  if (m_pState != nullptr) m_pState->m_nLastError = nError;
}

DWORD CCreatePDF::PDF_GetLastError() {
  return m_pState != nullptr ? m_pState->m_nLastError : DWORD{PDF_ERROR_MEMORY};
}

int CCreatePDF::GetLastPDFErrorText(char* szBuffer) {
  DWORD const error = PDF_GetLastError();
  return Door(m_pState, [&](SessionState&) { return sorrelin::GetErrorText(error, szBuffer); });
}
