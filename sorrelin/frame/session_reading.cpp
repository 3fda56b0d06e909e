// Doors of the session: documents opened, their objects and their images.
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/session_state.h>

using sorrelin::Door;
using sorrelin::SessionState;

int CCreatePDF::OpenPDFFile(char const* szFileName) {
  return Door(m_pState, [&](SessionState& state) { return state.OpenPDFFile(szFileName); });
}

int CCreatePDF::OpenPDFFileW(WCHAR const* szFileName) {
  return Door(m_pState, [&](SessionState& state) { return state.OpenPDFFileW(szFileName); });
}

int CCreatePDF::OpenPDFFileInMemory(int64_t pData, DWORD nSize) {
  return Door(m_pState,
              [&](SessionState& state) { return state.OpenPDFFileInMemory(pData, nSize); });
}

void* CCreatePDF::LoadObject(DWORD nObject) {
  return Door(m_pState, [&](SessionState& state) { return state.LoadObject(nObject); });
}

DWORD CCreatePDF::GetObjectSize(DWORD nObject) {
  return Door(m_pState, [&](SessionState& state) { return state.GetObjectSize(nObject); });
}

DWORD CCreatePDF::GetObjectType(BYTE* pData, DWORD nSize) {
  return Door(m_pState, [&](SessionState& state) { return state.GetObjectType(pData, nSize); });
}

int CCreatePDF::LoadPageObject(DWORD nObject) {
  return Door(m_pState, [&](SessionState& state) { return state.LoadPageObject(nObject); });
}

void* CCreatePDF::LoadImageFromPDF(DWORD nPage) {
  return Door(m_pState, [&](SessionState& state) { return state.LoadImageFromPDF(nPage); });
}

void* CCreatePDF::LoadImageAndInfoFromPDF(DWORD nPage, DWORD* pnCompression, DWORD* pnKind) {
  return Door(m_pState, [&](SessionState& state) {
    return state.LoadImageAndInfoFromPDF(nPage, pnCompression, pnKind);
  });
}

void* CCreatePDF::LoadPDFIntoDIB(char const* szFileName, DWORD nPage) {
  return Door(m_pState,
              [&](SessionState& state) { return state.LoadPDFIntoDIB(szFileName, nPage); });
}

void* CCreatePDF::LoadPDFIntoDIBW(WCHAR const* szFileName, DWORD nPage) {
  return Door(m_pState,
              [&](SessionState& state) { return state.LoadPDFIntoDIBW(szFileName, nPage); });
}

int CCreatePDF::ParseKids(BYTE* pData, DWORD nSize) {
  return Door(m_pState, [&](SessionState& state) { return state.ParseKids(pData, nSize); });
}

int CCreatePDF::GetProcSetData(BYTE* pData, DWORD nSize) {
  return Door(m_pState, [&](SessionState& state) { return state.GetProcSetData(pData, nSize); });
}
