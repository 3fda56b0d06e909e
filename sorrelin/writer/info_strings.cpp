// The four information strings of a session: their setters and getters.
#include <sorrelin/frame/reader_state.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/platform/text.h>
#include <sorrelin/platform/wide_string.h>

#include <algorithm>

using sorrelin::ReaderState;
using sorrelin::ToWide;
using sorrelin::WideString;

int CCreatePDF::SetInfoString(sorrelin::InfoString pString, WCHAR const* szText) {
  if (szText == nullptr) return static_cast<int>(Fail(PDF_ERROR_NULL_POINTER));
  if (m_pReader == nullptr) return static_cast<int>(Fail(PDF_ERROR_INVALID_HANDLE));
  m_pReader->*pString = szText;
  return 1;
}

int CCreatePDF::GetInfoStringW(sorrelin::InfoString pString, WCHAR* szBuffer, DWORD* pnSize) {
  if (m_pReader == nullptr) return static_cast<int>(Fail(PDF_ERROR_INVALID_HANDLE));
  if (pnSize == nullptr) return static_cast<int>(Fail(PDF_ERROR_NULL_POINTER));
  WideString const& text = m_pReader->*pString;
  DWORD const capacity = *pnSize;
  *pnSize = static_cast<DWORD>(text.size() + 1);
  if (szBuffer == nullptr) return 1;
  if (*pnSize > capacity) return static_cast<int>(Fail(PDF_ERROR_INSUFFICIENT_BUFFER));
  std::copy_n(text.c_str(), text.size() + 1, szBuffer);
  return 1;
}

int CCreatePDF::GetInfoStringA(sorrelin::InfoString pString, char* szBuffer, DWORD* pnSize) {
  if (m_pReader == nullptr) return static_cast<int>(Fail(PDF_ERROR_INVALID_HANDLE));
  if (pnSize == nullptr) return static_cast<int>(Fail(PDF_ERROR_NULL_POINTER));
  WCHAR const* const text = (m_pReader->*pString).c_str();
  DWORD const capacity = *pnSize;
  *pnSize =
      static_cast<DWORD>(WideCharToMultiByte(CP_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr));
  if (szBuffer == nullptr) return 1;
  if (*pnSize > capacity) return static_cast<int>(Fail(PDF_ERROR_INSUFFICIENT_BUFFER));
  WideCharToMultiByte(CP_ACP, 0, text, -1, szBuffer, static_cast<int>(*pnSize), nullptr, nullptr);
  return 1;
}

int CCreatePDF::SetTitleA(char const* szText) { return SetTitleW(ToWide(szText).c_str()); }

int CCreatePDF::SetTitleW(WCHAR const* szText) {
  return SetInfoString(&ReaderState::m_Title, szText);
}

int CCreatePDF::GetTitleA(char* szBuffer, DWORD* pnSize) {
  return GetInfoStringA(&ReaderState::m_Title, szBuffer, pnSize);
}

int CCreatePDF::GetTitleW(WCHAR* szBuffer, DWORD* pnSize) {
  return GetInfoStringW(&ReaderState::m_Title, szBuffer, pnSize);
}

int CCreatePDF::SetAuthorA(char const* szText) { return SetAuthorW(ToWide(szText).c_str()); }

int CCreatePDF::SetAuthorW(WCHAR const* szText) {
  return SetInfoString(&ReaderState::m_Author, szText);
}

int CCreatePDF::GetAuthorA(char* szBuffer, DWORD* pnSize) {
  return GetInfoStringA(&ReaderState::m_Author, szBuffer, pnSize);
}

int CCreatePDF::GetAuthorW(WCHAR* szBuffer, DWORD* pnSize) {
  return GetInfoStringW(&ReaderState::m_Author, szBuffer, pnSize);
}

int CCreatePDF::SetSubjectA(char const* szText) { return SetSubjectW(ToWide(szText).c_str()); }

int CCreatePDF::SetSubjectW(WCHAR const* szText) {
  return SetInfoString(&ReaderState::m_Subject, szText);
}

int CCreatePDF::GetSubjectA(char* szBuffer, DWORD* pnSize) {
  return GetInfoStringA(&ReaderState::m_Subject, szBuffer, pnSize);
}

int CCreatePDF::GetSubjectW(WCHAR* szBuffer, DWORD* pnSize) {
  return GetInfoStringW(&ReaderState::m_Subject, szBuffer, pnSize);
}

int CCreatePDF::SetKeywordsA(char const* szText) { return SetKeywordsW(ToWide(szText).c_str()); }

int CCreatePDF::SetKeywordsW(WCHAR const* szText) {
  return SetInfoString(&ReaderState::m_Keywords, szText);
}

int CCreatePDF::GetKeywordsA(char* szBuffer, DWORD* pnSize) {
  return GetInfoStringA(&ReaderState::m_Keywords, szBuffer, pnSize);
}

int CCreatePDF::GetKeywordsW(WCHAR* szBuffer, DWORD* pnSize) {
  return GetInfoStringW(&ReaderState::m_Keywords, szBuffer, pnSize);
}
