// The four information strings of a session: their setters and getters.
#include <sorrelin/frame/session_state.h>
#include <sorrelin/platform/text.h>
#include <sorrelin/platform/wide_string.h>

#include <algorithm>

using sorrelin::ReaderState;
using sorrelin::ToWide;
using sorrelin::WideString;

int sorrelin::SessionState::SetInfoString(sorrelin::InfoString pString, WCHAR const* szText) {
  if (szText == nullptr) return static_cast<int>(Fail(PDF_ERROR_NULL_POINTER));
  if (m_pReader == nullptr) return static_cast<int>(Fail(PDF_ERROR_INVALID_HANDLE));
  (*m_pReader).*pString = szText;
  return 1;
}

int sorrelin::SessionState::GetInfoStringW(sorrelin::InfoString pString, WCHAR* szBuffer,
                                           DWORD* pnSize) {
  if (m_pReader == nullptr) return static_cast<int>(Fail(PDF_ERROR_INVALID_HANDLE));
  if (pnSize == nullptr) return static_cast<int>(Fail(PDF_ERROR_NULL_POINTER));
  WideString const& text = (*m_pReader).*pString;
  DWORD const capacity = *pnSize;
  *pnSize = static_cast<DWORD>(text.size() + 1);
  if (szBuffer == nullptr) return 1;
  if (*pnSize > capacity) return static_cast<int>(Fail(PDF_ERROR_INSUFFICIENT_BUFFER));
  std::copy_n(text.c_str(), text.size() + 1, szBuffer);
  return 1;
}

int sorrelin::SessionState::GetInfoStringA(sorrelin::InfoString pString, char* szBuffer,
                                           DWORD* pnSize) {
  if (m_pReader == nullptr) return static_cast<int>(Fail(PDF_ERROR_INVALID_HANDLE));
  if (pnSize == nullptr) return static_cast<int>(Fail(PDF_ERROR_NULL_POINTER));
  WCHAR const* const text = ((*m_pReader).*pString).c_str();
  DWORD const capacity = *pnSize;
  *pnSize =
      static_cast<DWORD>(WideCharToMultiByte(CP_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr));
  if (szBuffer == nullptr) return 1;
  if (*pnSize > capacity) return static_cast<int>(Fail(PDF_ERROR_INSUFFICIENT_BUFFER));
  WideCharToMultiByte(CP_ACP, 0, text, -1, szBuffer, static_cast<int>(*pnSize), nullptr, nullptr);
  return 1;
}

int sorrelin::SessionState::SetTitleA(char const* szText) {
  return SetTitleW(ToWide(szText).c_str());
}

int sorrelin::SessionState::SetTitleW(WCHAR const* szText) {
  return SetInfoString(&ReaderState::m_Title, szText);
}

int sorrelin::SessionState::GetTitleA(char* szBuffer, DWORD* pnSize) {
  return GetInfoStringA(&ReaderState::m_Title, szBuffer, pnSize);
}

int sorrelin::SessionState::GetTitleW(WCHAR* szBuffer, DWORD* pnSize) {
  return GetInfoStringW(&ReaderState::m_Title, szBuffer, pnSize);
}

int sorrelin::SessionState::SetAuthorA(char const* szText) {
  return SetAuthorW(ToWide(szText).c_str());
}

int sorrelin::SessionState::SetAuthorW(WCHAR const* szText) {
  return SetInfoString(&ReaderState::m_Author, szText);
}

int sorrelin::SessionState::GetAuthorA(char* szBuffer, DWORD* pnSize) {
  return GetInfoStringA(&ReaderState::m_Author, szBuffer, pnSize);
}

int sorrelin::SessionState::GetAuthorW(WCHAR* szBuffer, DWORD* pnSize) {
  return GetInfoStringW(&ReaderState::m_Author, szBuffer, pnSize);
}

int sorrelin::SessionState::SetSubjectA(char const* szText) {
  return SetSubjectW(ToWide(szText).c_str());
}

int sorrelin::SessionState::SetSubjectW(WCHAR const* szText) {
  return SetInfoString(&ReaderState::m_Subject, szText);
}

int sorrelin::SessionState::GetSubjectA(char* szBuffer, DWORD* pnSize) {
  return GetInfoStringA(&ReaderState::m_Subject, szBuffer, pnSize);
}

int sorrelin::SessionState::GetSubjectW(WCHAR* szBuffer, DWORD* pnSize) {
  return GetInfoStringW(&ReaderState::m_Subject, szBuffer, pnSize);
}

int sorrelin::SessionState::SetKeywordsA(char const* szText) {
  return SetKeywordsW(ToWide(szText).c_str());
}

int sorrelin::SessionState::SetKeywordsW(WCHAR const* szText) {
  return SetInfoString(&ReaderState::m_Keywords, szText);
}

int sorrelin::SessionState::GetKeywordsA(char* szBuffer, DWORD* pnSize) {
  return GetInfoStringA(&ReaderState::m_Keywords, szBuffer, pnSize);
}

int sorrelin::SessionState::GetKeywordsW(WCHAR* szBuffer, DWORD* pnSize) {
  return GetInfoStringW(&ReaderState::m_Keywords, szBuffer, pnSize);
}
