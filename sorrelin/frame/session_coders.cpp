// Doors of the session: bitmaps as image streams.
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/session_state.h>

using sorrelin::Door;
using sorrelin::SessionState;

void* CCreatePDF::ConvertDIB2PDFImage(void* hDIB, DWORD& nSize, DWORD nCompression,
                                      char const* szCodecLibrary, int nQuality) {
  return Door(m_pState, [&](SessionState& state) {
    return state.ConvertDIB2PDFImage(hDIB, nSize, nCompression, szCodecLibrary, nQuality);
  });
}

void* CCreatePDF::ConvertDIB2PDFImageW(void* hDIB, DWORD& nSize, DWORD nCompression,
                                       WCHAR const* szCodecLibrary, int nQuality) {
  return Door(m_pState, [&](SessionState& state) {
    return state.ConvertDIB2PDFImageW(hDIB, nSize, nCompression, szCodecLibrary, nQuality);
  });
}

void* CCreatePDF::ConvertDIB2UncompressedPDFImage(void* hDIB, DWORD& nSize) {
  return Door(m_pState, [&](SessionState& state) {
    return state.ConvertDIB2UncompressedPDFImage(hDIB, nSize);
  });
}

void* CCreatePDF::ConvertDIB2FlatePDFImage(void* hDIB, DWORD& nSize, DWORD nCompression,
                                           int nLevel) {
  return Door(m_pState, [&](SessionState& state) {
    return state.ConvertDIB2FlatePDFImage(hDIB, nSize, nCompression, nLevel);
  });
}

void* CCreatePDF::ConvertDIB2RLEPDFImage(void* hDIB, DWORD& nSize, DWORD nCompression) {
  return Door(m_pState, [&](SessionState& state) {
    return state.ConvertDIB2RLEPDFImage(hDIB, nSize, nCompression);
  });
}

void CCreatePDF::RLEEncriptLine(BYTE* pLine, DWORD nLength, BYTE* pOut, DWORD& nOutSize) {
  return Door(m_pState, [&](SessionState& state) {
    return state.RLEEncriptLine(pLine, nLength, pOut, nOutSize);
  });
}

void* CCreatePDF::ConvertDIB2CcittPDFImage(void* hDIB, DWORD& nSize, char const* szCodecLibrary) {
  return Door(m_pState, [&](SessionState& state) {
    return state.ConvertDIB2CcittPDFImage(hDIB, nSize, szCodecLibrary);
  });
}

void* CCreatePDF::ConvertDIB2CcittPDFImageW(void* hDIB, DWORD& nSize, WCHAR const* szCodecLibrary) {
  return Door(m_pState, [&](SessionState& state) {
    return state.ConvertDIB2CcittPDFImageW(hDIB, nSize, szCodecLibrary);
  });
}

void* CCreatePDF::ConvertDIB2CcittPDFImageFileW(void* hDIB, DWORD& nSize,
                                                WCHAR const* szCodecLibrary) {
  return Door(m_pState, [&](SessionState& state) {
    return state.ConvertDIB2CcittPDFImageFileW(hDIB, nSize, szCodecLibrary);
  });
}

void* CCreatePDF::ConvertDIB2DctJpegPDFImage(void* hDIB, DWORD& nSize, char const* szCodecLibrary,
                                             int nQuality, DWORD nCompression) {
  return Door(m_pState, [&](SessionState& state) {
    return state.ConvertDIB2DctJpegPDFImage(hDIB, nSize, szCodecLibrary, nQuality, nCompression);
  });
}

void* CCreatePDF::ConvertDIB2DctJpegPDFImageW(void* hDIB, DWORD& nSize, WCHAR const* szCodecLibrary,
                                              int nQuality, DWORD nCompression) {
  return Door(m_pState, [&](SessionState& state) {
    return state.ConvertDIB2DctJpegPDFImageW(hDIB, nSize, szCodecLibrary, nQuality, nCompression);
  });
}

void* CCreatePDF::ConvertDIB2DctJpegPDFImageFileW(void* hDIB, DWORD& nSize,
                                                  WCHAR const* szCodecLibrary, int nQuality,
                                                  DWORD nCompression) {
  return Door(m_pState, [&](SessionState& state) {
    return state.ConvertDIB2DctJpegPDFImageFileW(hDIB, nSize, szCodecLibrary, nQuality,
                                                 nCompression);
  });
}
