// Doors of the session: image streams as bitmaps.
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/session_state.h>

using sorrelin::Door;
using sorrelin::SessionState;

void* CCreatePDF::CreateDIBFromUncompressedData(void* hData, DWORD nWidth, DWORD nHeight, int nKind,
                                                void* hPalette) {
  return Door(m_pState, [&](SessionState& state) {
    return state.CreateDIBFromUncompressedData(hData, nWidth, nHeight, nKind, hPalette);
  });
}

void* CCreatePDF::CreateDIBFromFLATEData(void* hData, DWORD nWidth, DWORD nHeight, DWORD nKind,
                                         void* hPalette) {
  return Door(m_pState, [&](SessionState& state) {
    return state.CreateDIBFromFLATEData(hData, nWidth, nHeight, nKind, hPalette);
  });
}

void* CCreatePDF::CreateDIBFromRLEData(void* hData, DWORD nWidth, DWORD nHeight, DWORD nKind,
                                       void* hPalette) {
  return Door(m_pState, [&](SessionState& state) {
    return state.CreateDIBFromRLEData(hData, nWidth, nHeight, nKind, hPalette);
  });
}

int CCreatePDF::DecriptRLEData(BYTE* pData, uint64_t nSize, void* hDIB) {
  return Door(m_pState,
              [&](SessionState& state) { return state.DecriptRLEData(pData, nSize, hDIB); });
}

void* CCreatePDF::CreateDIBFromCCITTData(void* hData, DWORD nWidth, DWORD nHeight) {
  return Door(m_pState, [&](SessionState& state) {
    return state.CreateDIBFromCCITTData(hData, nWidth, nHeight);
  });
}

void* CCreatePDF::CreateDIBFromCCITTDataFile(void* hData, DWORD nWidth, DWORD nHeight) {
  return Door(m_pState, [&](SessionState& state) {
    return state.CreateDIBFromCCITTDataFile(hData, nWidth, nHeight);
  });
}

void* CCreatePDF::CreateDIBFromJPEGData(void* hData) {
  return Door(m_pState, [&](SessionState& state) { return state.CreateDIBFromJPEGData(hData); });
}

void* CCreatePDF::CreateDIBFromJPEGDataFile(void* hData) {
  return Door(m_pState,
              [&](SessionState& state) { return state.CreateDIBFromJPEGDataFile(hData); });
}
