// The session's last error.
#include <sorrelin/frame/error_text.h>
#include <sorrelin/frame/session.h>

void CCreatePDF::PDF_SetLastError(DWORD nError) { m_nLastError = nError; }

DWORD CCreatePDF::PDF_GetLastError() { return m_nLastError; }

int CCreatePDF::GetLastPDFErrorText(char* szBuffer) {
  return sorrelin::GetErrorText(m_nLastError, szBuffer);
}
