// Flat functions of the information strings.
#include <sorrelin/frame/flat.h>

namespace {

template <typename Char>
DWORD SetString(hPDF handle, Char const* text, int (CCreatePDF::*set)(Char const*)) {
  CCreatePDF* const session = sorrelin::SessionOf(handle);
  if (session == nullptr) return PDF_ERROR_INVALID_HANDLE;
  if (text == nullptr) return PDF_ERROR_NULL_POINTER;
  return sorrelin::ResultOf(*session, (session->*set)(text));
}

template <typename Char>
DWORD GetString(hPDF handle, Char* buffer, DWORD* size, int (CCreatePDF::*get)(Char*, DWORD*)) {
  CCreatePDF* const session = sorrelin::SessionOf(handle);
  if (session == nullptr) return PDF_ERROR_INVALID_HANDLE;
  if (size == nullptr) return PDF_ERROR_NULL_POINTER;
  return sorrelin::ResultOf(*session, (session->*get)(buffer, size));
}

}  // namespace

DWORD pdf_SetTitleA(hPDF hPdf, char const* szText) {
  return SetString(hPdf, szText, &CCreatePDF::SetTitleA);
}

DWORD pdf_SetTitleW(hPDF hPdf, WCHAR const* szText) {
  return SetString(hPdf, szText, &CCreatePDF::SetTitleW);
}

DWORD pdf_SetAuthorA(hPDF hPdf, char const* szText) {
  return SetString(hPdf, szText, &CCreatePDF::SetAuthorA);
}

DWORD pdf_SetAuthorW(hPDF hPdf, WCHAR const* szText) {
  return SetString(hPdf, szText, &CCreatePDF::SetAuthorW);
}

DWORD pdf_SetSubjectA(hPDF hPdf, char const* szText) {
  return SetString(hPdf, szText, &CCreatePDF::SetSubjectA);
}

DWORD pdf_SetSubjectW(hPDF hPdf, WCHAR const* szText) {
  return SetString(hPdf, szText, &CCreatePDF::SetSubjectW);
}

DWORD pdf_SetKeywordsA(hPDF hPdf, char const* szText) {
  return SetString(hPdf, szText, &CCreatePDF::SetKeywordsA);
}

DWORD pdf_SetKeywordsW(hPDF hPdf, WCHAR const* szText) {
  return SetString(hPdf, szText, &CCreatePDF::SetKeywordsW);
}

DWORD pdf_GetTitleA(hPDF hPdf, char* szBuffer, DWORD* pnSize) {
  return GetString(hPdf, szBuffer, pnSize, &CCreatePDF::GetTitleA);
}

DWORD pdf_GetTitleW(hPDF hPdf, WCHAR* szBuffer, DWORD* pnSize) {
  return GetString(hPdf, szBuffer, pnSize, &CCreatePDF::GetTitleW);
}

DWORD pdf_GetAuthorA(hPDF hPdf, char* szBuffer, DWORD* pnSize) {
  return GetString(hPdf, szBuffer, pnSize, &CCreatePDF::GetAuthorA);
}

DWORD pdf_GetAuthorW(hPDF hPdf, WCHAR* szBuffer, DWORD* pnSize) {
  return GetString(hPdf, szBuffer, pnSize, &CCreatePDF::GetAuthorW);
}

DWORD pdf_GetSubjectA(hPDF hPdf, char* szBuffer, DWORD* pnSize) {
  return GetString(hPdf, szBuffer, pnSize, &CCreatePDF::GetSubjectA);
}

DWORD pdf_GetSubjectW(hPDF hPdf, WCHAR* szBuffer, DWORD* pnSize) {
  return GetString(hPdf, szBuffer, pnSize, &CCreatePDF::GetSubjectW);
}

DWORD pdf_GetKeywordsA(hPDF hPdf, char* szBuffer, DWORD* pnSize) {
  return GetString(hPdf, szBuffer, pnSize, &CCreatePDF::GetKeywordsA);
}

DWORD pdf_GetKeywordsW(hPDF hPdf, WCHAR* szBuffer, DWORD* pnSize) {
  return GetString(hPdf, szBuffer, pnSize, &CCreatePDF::GetKeywordsW);
}
