// Doors of the session: image streams as bitmaps.
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/image/decoders.h>

using sorrelin::Door;
using sorrelin::SessionState;
using sorrelin::Status;

void* CCreatePDF::CreateDIBFromUncompressedData(void* hData, DWORD nWidth, DWORD nHeight, int nKind,
                                                void* hPalette) {
  return Door(m_pState, [&](SessionState& state) {
    DWORD const kind = static_cast<DWORD>(nKind);
    return state.TakeBlock(
        DecodeRaw(hData, {nWidth, nHeight, kind, hPalette}, state.ImagePolarity()));
  });
}

void* CCreatePDF::CreateDIBFromFLATEData(void* hData, DWORD nWidth, DWORD nHeight, DWORD nKind,
                                         void* hPalette) {
  return Door(m_pState, [&](SessionState& state) {
    return state.TakeBlock(
        DecodeFlate(hData, {nWidth, nHeight, nKind, hPalette}, state.ImagePolarity()));
  });
}

void* CCreatePDF::CreateDIBFromRLEData(void* hData, DWORD nWidth, DWORD nHeight, DWORD nKind,
                                       void* hPalette) {
  return Door(m_pState, [&](SessionState& state) {
    return state.TakeBlock(sorrelin::DecodeRunLength(hData, {nWidth, nHeight, nKind, hPalette}));
  });
}

int CCreatePDF::DecriptRLEData(BYTE* pData, uint64_t nSize, void* hDIB) {
  return Door(m_pState, [&](SessionState& state) {
    if (pData == nullptr || nSize == 0 || hDIB == nullptr) return false;
    sorrelin::LockedBlock const dib(hDIB);
    if (!dib) return state.Report(Status::Failed(PDF_ERROR_INVALID_HANDLE));
    sorrelin::DecodeRunLengthRows(sorrelin::CallersBytes(pData, nSize), dib.bytes());
    return true;
  });
}

void* CCreatePDF::CreateDIBFromCCITTData(void* hData, DWORD nWidth, DWORD nHeight) {
  return Door(m_pState, [&](SessionState& state) {
    return state.TakeBlock(sorrelin::DecodeCcitt(hData, nWidth, nHeight, state.ImagePolarity()));
  });
}

void* CCreatePDF::CreateDIBFromCCITTDataFile(void* hData, DWORD nWidth, DWORD nHeight) {
  return Door(m_pState, [&](SessionState& state) {
    return state.TakeBlock(
        sorrelin::DecodeCcittInFile(hData, nWidth, nHeight, state.ImagePolarity()));
  });
}

void* CCreatePDF::CreateDIBFromJPEGData(void* hData) {
  return Door(m_pState,
              [&](SessionState& state) { return state.TakeBlock(sorrelin::DecodeJpeg(hData)); });
}

void* CCreatePDF::CreateDIBFromJPEGDataFile(void* hData) {
  return Door(m_pState, [&](SessionState& state) {
    return state.TakeBlock(sorrelin::DecodeJpegInFile(hData));
  });
}
