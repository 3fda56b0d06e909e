// Doors of the session: the information strings, of the session and of a dictionary.
#include <sorrelin/document/info_value.h>
#include <sorrelin/document/reader_state.h>
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/platform/wide_string.h>
#include <sorrelin/syntax/heap_copy.h>
#include <sorrelin/writer/info_strings.h>

#include <cstdlib>

using sorrelin::Door;
using sorrelin::ReaderState;
using sorrelin::SessionState;
using sorrelin::Status;
using sorrelin::ToWide;
using sorrelin::WideString;

namespace {

using InfoString = WideString ReaderState::*;

int SetString(SessionState* session, InfoString string, WCHAR const* text) {
  return sorrelin::Door(session, [&](SessionState& state) {
    if (text == nullptr) return state.Report(Status::Failed(PDF_ERROR_NULL_POINTER)) ? 1 : 0;
    if (state.m_pReader == nullptr) {
      return state.Report(Status::Failed(PDF_ERROR_INVALID_HANDLE)) ? 1 : 0;
    }
    (*state.m_pReader).*string = text;
    return 1;
  });
}

int SetString(SessionState* session, InfoString string, char const* text) {
  return sorrelin::Door(
      session, [&](SessionState&) { return SetString(session, string, ToWide(text).c_str()); });
}

template <typename Char>
int GetString(SessionState* session, InfoString string, Char* buffer, DWORD* size) {
  return sorrelin::Door(session, [&](SessionState& state) {
    return state.Report(state.m_pReader != nullptr
                            ? sorrelin::CopyInfoString((*state.m_pReader).*string, buffer, size)
                            : Status::Failed(PDF_ERROR_INVALID_HANDLE))
               ? 1
               : 0;
  });
}

}  // namespace

int CCreatePDF::SetTitleA(char const* szText) {
  return SetString(m_pState, &ReaderState::m_Title, szText);
}

int CCreatePDF::SetTitleW(WCHAR const* szText) {
  return SetString(m_pState, &ReaderState::m_Title, szText);
}

int CCreatePDF::GetTitleA(char* szBuffer, DWORD* pnSize) {
  return GetString(m_pState, &ReaderState::m_Title, szBuffer, pnSize);
}

int CCreatePDF::GetTitleW(WCHAR* szBuffer, DWORD* pnSize) {
  return GetString(m_pState, &ReaderState::m_Title, szBuffer, pnSize);
}

int CCreatePDF::SetAuthorA(char const* szText) {
  return SetString(m_pState, &ReaderState::m_Author, szText);
}

int CCreatePDF::SetAuthorW(WCHAR const* szText) {
  return SetString(m_pState, &ReaderState::m_Author, szText);
}

int CCreatePDF::GetAuthorA(char* szBuffer, DWORD* pnSize) {
  return GetString(m_pState, &ReaderState::m_Author, szBuffer, pnSize);
}

int CCreatePDF::GetAuthorW(WCHAR* szBuffer, DWORD* pnSize) {
  return GetString(m_pState, &ReaderState::m_Author, szBuffer, pnSize);
}

int CCreatePDF::SetSubjectA(char const* szText) {
  return SetString(m_pState, &ReaderState::m_Subject, szText);
}

int CCreatePDF::SetSubjectW(WCHAR const* szText) {
  return SetString(m_pState, &ReaderState::m_Subject, szText);
}

int CCreatePDF::GetSubjectA(char* szBuffer, DWORD* pnSize) {
  return GetString(m_pState, &ReaderState::m_Subject, szBuffer, pnSize);
}

int CCreatePDF::GetSubjectW(WCHAR* szBuffer, DWORD* pnSize) {
  return GetString(m_pState, &ReaderState::m_Subject, szBuffer, pnSize);
}

int CCreatePDF::SetKeywordsA(char const* szText) {
  return SetString(m_pState, &ReaderState::m_Keywords, szText);
}

int CCreatePDF::SetKeywordsW(WCHAR const* szText) {
  return SetString(m_pState, &ReaderState::m_Keywords, szText);
}

int CCreatePDF::GetKeywordsA(char* szBuffer, DWORD* pnSize) {
  return GetString(m_pState, &ReaderState::m_Keywords, szBuffer, pnSize);
}

int CCreatePDF::GetKeywordsW(WCHAR* szBuffer, DWORD* pnSize) {
  return GetString(m_pState, &ReaderState::m_Keywords, szBuffer, pnSize);
}

int CCreatePDF::GetStringValue2W(BYTE* pData, uint64_t nSize, char const* szKey, WCHAR** ppValue,
                                 uint64_t* pnLength) {
  return Door(m_pState, [&](SessionState& state) {
    if (state.m_pReader == nullptr || pData == nullptr || nSize == 0 || szKey == nullptr ||
        ppValue == nullptr || pnLength == nullptr) {
      return 0;
    }
    auto value = sorrelin::ReadInfoValue(&state.m_pReader->objects,
                                         sorrelin::CallersBytes(pData, nSize), szKey);
    if (value == nullptr) return 0;
    *ppValue = value.release();
    return 1;
  });
}

// Kept: the value is an empty string whatever was read.
int CCreatePDF::GetStringValue2A(BYTE* pData, uint64_t nSize, char const* szKey, char** ppValue,
                                 uint64_t* pnLength) {
  return Door(m_pState, [&](SessionState&) {
    if (ppValue == nullptr) return 0;
    WCHAR* wide = nullptr;
    if (GetStringValue2W(pData, nSize, szKey, &wide, pnLength) == 0) return 0;
    std::free(wide);
    *ppValue = sorrelin::HeapCopy({});
    return 1;
  });
}
