// Doors of the session: values after a key in an object's bytes.
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/session_state.h>

using sorrelin::Door;
using sorrelin::SessionState;

DWORD CCreatePDF::IsDelimiter(char c) {
  return Door(m_pState, [&](SessionState& state) { return state.IsDelimiter(c); });
}

DWORD CCreatePDF::IsNumber(char c) {
  return Door(m_pState, [&](SessionState& state) { return state.IsNumber(c); });
}

DWORD CCreatePDF::IsValidChar(char c) {
  return Door(m_pState, [&](SessionState& state) { return state.IsValidChar(c); });
}

BYTE* CCreatePDF::GetKeyBeginning(BYTE* pData, DWORD nSize, char const* szKey) {
  return Door(m_pState,
              [&](SessionState& state) { return state.GetKeyBeginning(pData, nSize, szKey); });
}

DWORD CCreatePDF::GetKeyBeginningByteOffset(BYTE* pData, DWORD nSize, char const* szKey) {
  return Door(m_pState, [&](SessionState& state) {
    return state.GetKeyBeginningByteOffset(pData, nSize, szKey);
  });
}

int CCreatePDF::IsFlagSet(BYTE* pData, DWORD nSize, char const* szKey) {
  return Door(m_pState, [&](SessionState& state) { return state.IsFlagSet(pData, nSize, szKey); });
}

int CCreatePDF::GetValue(BYTE* pData, DWORD nSize, char const* szKey, DWORD* pFirst,
                         DWORD* pSecond) {
  return Door(m_pState, [&](SessionState& state) {
    return state.GetValue(pData, nSize, szKey, pFirst, pSecond);
  });
}

int CCreatePDF::GetValue(BYTE* pData, DWORD nSize, char const* szKey, DWORD* pValue) {
  return Door(m_pState,
              [&](SessionState& state) { return state.GetValue(pData, nSize, szKey, pValue); });
}

int CCreatePDF::GetFirstValue(BYTE* pData, DWORD nSize, DWORD* pFirst, DWORD* pSecond) {
  return Door(m_pState, [&](SessionState& state) {
    return state.GetFirstValue(pData, nSize, pFirst, pSecond);
  });
}

int CCreatePDF::GetValueFromArray(BYTE* pData, DWORD nSize, char const* szKey, DWORD* pFirst,
                                  DWORD* pSecond) {
  return Door(m_pState, [&](SessionState& state) {
    return state.GetValueFromArray(pData, nSize, szKey, pFirst, pSecond);
  });
}

int CCreatePDF::GetValueFromReference(DWORD nObject, DWORD* pValue) {
  return Door(m_pState,
              [&](SessionState& state) { return state.GetValueFromReference(nObject, pValue); });
}

int CCreatePDF::GetStringValue(BYTE* pData, DWORD nSize, char const* szKey, char* szValue,
                               uint64_t* pnSize) {
  return Door(m_pState, [&](SessionState& state) {
    return state.GetStringValue(pData, nSize, szKey, szValue, pnSize);
  });
}

int CCreatePDF::GetKeyWithValue(BYTE* pData, DWORD nSize, char const* szKey, BYTE* pValue,
                                DWORD* pnSize) {
  return Door(m_pState, [&](SessionState& state) {
    return state.GetKeyWithValue(pData, nSize, szKey, pValue, pnSize);
  });
}

int CCreatePDF::IsDictionary(BYTE* pData, DWORD nSize, int& bDictionary, char const* szKey) {
  return Door(m_pState, [&](SessionState& state) {
    return state.IsDictionary(pData, nSize, bDictionary, szKey);
  });
}

int CCreatePDF::IsReference(BYTE* pData, DWORD nSize, char const* szKey) {
  return Door(m_pState,
              [&](SessionState& state) { return state.IsReference(pData, nSize, szKey); });
}
