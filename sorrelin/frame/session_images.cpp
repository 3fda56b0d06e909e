// Doors of the session: image objects, compression values, and what a bitmap says of itself.
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/session_state.h>

using sorrelin::Door;
using sorrelin::SessionState;

DWORD CCreatePDF::CreateImageXObject(_IMAGE_PARAMETERS Params, BYTE const* pData, DWORD nSize,
                                     _FILTER Filter) {
  return Door(m_pState, [&](SessionState& state) {
    return state.CreateImageXObject(Params, pData, nSize, Filter);
  });
}

int CCreatePDF::SetCCITTFilterParams(_CCITT_FILTER_PARAMS* pParams, int nColumns, int nRows,
                                     _CCITT_ENCODE_TYPE K, int bBlackIs1, int bEndOfLine,
                                     int bEncodedByteAlign, int bEndOfBlock,
                                     int nDamagedRowsBeforeError) {
  return Door(m_pState, [&](SessionState& state) {
    return state.SetCCITTFilterParams(pParams, nColumns, nRows, K, bBlackIs1, bEndOfLine,
                                      bEncodedByteAlign, bEndOfBlock, nDamagedRowsBeforeError);
  });
}

int CCreatePDF::IsCompession_NOT_SPECIFIED(DWORD nCompression) {
  return Door(m_pState,
              [&](SessionState& state) { return state.IsCompession_NOT_SPECIFIED(nCompression); });
}

int CCreatePDF::IsCompession_NO_COMPRESSION(DWORD nCompression) {
  return Door(m_pState,
              [&](SessionState& state) { return state.IsCompession_NO_COMPRESSION(nCompression); });
}

int CCreatePDF::IsCompession_ASCII_HEX_DECODE(DWORD nCompression) {
  return Door(m_pState, [&](SessionState& state) {
    return state.IsCompession_ASCII_HEX_DECODE(nCompression);
  });
}

int CCreatePDF::IsCompession_ASCII_85_DECODE(DWORD nCompression) {
  return Door(m_pState, [&](SessionState& state) {
    return state.IsCompession_ASCII_85_DECODE(nCompression);
  });
}

int CCreatePDF::IsCompession_LZW_DECODE(DWORD nCompression) {
  return Door(m_pState,
              [&](SessionState& state) { return state.IsCompession_LZW_DECODE(nCompression); });
}

int CCreatePDF::IsCompession_FLAT_DECODE(DWORD nCompression) {
  return Door(m_pState,
              [&](SessionState& state) { return state.IsCompession_FLAT_DECODE(nCompression); });
}

int CCreatePDF::IsCompession_RUNLENGTH_DECODE(DWORD nCompression) {
  return Door(m_pState, [&](SessionState& state) {
    return state.IsCompession_RUNLENGTH_DECODE(nCompression);
  });
}

int CCreatePDF::IsCompession_CCITT_FAX_DECODE(DWORD nCompression) {
  return Door(m_pState, [&](SessionState& state) {
    return state.IsCompession_CCITT_FAX_DECODE(nCompression);
  });
}

int CCreatePDF::IsCompession_DCT_JPEG_DECODE(DWORD nCompression) {
  return Door(m_pState, [&](SessionState& state) {
    return state.IsCompession_DCT_JPEG_DECODE(nCompression);
  });
}

int CCreatePDF::GetDIBBitsPerPixel(void* hDIB) {
  return Door(m_pState, [&](SessionState& state) { return state.GetDIBBitsPerPixel(hDIB); });
}

POINT CCreatePDF::GetDIBDPI(void* hDIB) {
  return Door(m_pState, [&](SessionState& state) { return state.GetDIBDPI(hDIB); });
}

POINT CCreatePDF::GetDIBImageSize(void* hDIB) {
  return Door(m_pState, [&](SessionState& state) { return state.GetDIBImageSize(hDIB); });
}

void* CCreatePDF::ExtractPaletteFromDIB(void* hDIB, DWORD* pSize) {
  return Door(m_pState,
              [&](SessionState& state) { return state.ExtractPaletteFromDIB(hDIB, pSize); });
}
