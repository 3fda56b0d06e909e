// Doors of the session: the information strings, of the session and of a dictionary.
#include <sorrelin/document/info_value.h>
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/syntax/heap_copy.h>

#include <cstdlib>

using sorrelin::Door;
using sorrelin::SessionState;

int CCreatePDF::SetTitleA(char const* szText) {
  return Door(m_pState, [&](SessionState& state) { return state.SetTitleA(szText); });
}

int CCreatePDF::SetTitleW(WCHAR const* szText) {
  return Door(m_pState, [&](SessionState& state) { return state.SetTitleW(szText); });
}

int CCreatePDF::GetTitleA(char* szBuffer, DWORD* pnSize) {
  return Door(m_pState, [&](SessionState& state) { return state.GetTitleA(szBuffer, pnSize); });
}

int CCreatePDF::GetTitleW(WCHAR* szBuffer, DWORD* pnSize) {
  return Door(m_pState, [&](SessionState& state) { return state.GetTitleW(szBuffer, pnSize); });
}

int CCreatePDF::SetAuthorA(char const* szText) {
  return Door(m_pState, [&](SessionState& state) { return state.SetAuthorA(szText); });
}

int CCreatePDF::SetAuthorW(WCHAR const* szText) {
  return Door(m_pState, [&](SessionState& state) { return state.SetAuthorW(szText); });
}

int CCreatePDF::GetAuthorA(char* szBuffer, DWORD* pnSize) {
  return Door(m_pState, [&](SessionState& state) { return state.GetAuthorA(szBuffer, pnSize); });
}

int CCreatePDF::GetAuthorW(WCHAR* szBuffer, DWORD* pnSize) {
  return Door(m_pState, [&](SessionState& state) { return state.GetAuthorW(szBuffer, pnSize); });
}

int CCreatePDF::SetSubjectA(char const* szText) {
  return Door(m_pState, [&](SessionState& state) { return state.SetSubjectA(szText); });
}

int CCreatePDF::SetSubjectW(WCHAR const* szText) {
  return Door(m_pState, [&](SessionState& state) { return state.SetSubjectW(szText); });
}

int CCreatePDF::GetSubjectA(char* szBuffer, DWORD* pnSize) {
  return Door(m_pState, [&](SessionState& state) { return state.GetSubjectA(szBuffer, pnSize); });
}

int CCreatePDF::GetSubjectW(WCHAR* szBuffer, DWORD* pnSize) {
  return Door(m_pState, [&](SessionState& state) { return state.GetSubjectW(szBuffer, pnSize); });
}

int CCreatePDF::SetKeywordsA(char const* szText) {
  return Door(m_pState, [&](SessionState& state) { return state.SetKeywordsA(szText); });
}

int CCreatePDF::SetKeywordsW(WCHAR const* szText) {
  return Door(m_pState, [&](SessionState& state) { return state.SetKeywordsW(szText); });
}

int CCreatePDF::GetKeywordsA(char* szBuffer, DWORD* pnSize) {
  return Door(m_pState, [&](SessionState& state) { return state.GetKeywordsA(szBuffer, pnSize); });
}

int CCreatePDF::GetKeywordsW(WCHAR* szBuffer, DWORD* pnSize) {
  return Door(m_pState, [&](SessionState& state) { return state.GetKeywordsW(szBuffer, pnSize); });
}

int CCreatePDF::GetStringValue2W(BYTE* pData, uint64_t nSize, char const* szKey, WCHAR** ppValue,
                                 uint64_t* pnLength) {
  return Door(m_pState, [&](SessionState& state) {
    if (state.m_pReader == nullptr || pData == nullptr || nSize == 0 || szKey == nullptr ||
        ppValue == nullptr || pnLength == nullptr) {
      return 0;
    }
    auto value = sorrelin::ReadInfoValue(&state.m_pReader->objects, {pData, nSize}, szKey);
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
