// Doors of the session: bitmaps as image streams, and what a bitmap says of itself.
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/image/bitmap_facts.h>
#include <sorrelin/image/encoders.h>
#include <sorrelin/platform/wide_string.h>

using sorrelin::DibView;
using sorrelin::Door;
using sorrelin::SessionState;
using sorrelin::Status;
using sorrelin::ToWide;

namespace {

// Work that makes a block from a bitmap.
template <typename Work>
void* CoderDoor(SessionState* session, void* bitmap, Work work) {
  return Door(session, [&](SessionState& state) {
    DibView dib(bitmap);
    return state.TakeBlock(work(dib));
  });
}

}  // namespace

void* CCreatePDF::ConvertDIB2PDFImage(void* hDIB, DWORD& nSize, DWORD nCompression,
                                      char const* szCodecLibrary, int nQuality) {
  return CoderDoor(m_pState, hDIB, [&](DibView& dib) {
    return EncodeImage(dib, {ToWide(szCodecLibrary).c_str(), nCompression, nQuality}, nSize);
  });
}

void* CCreatePDF::ConvertDIB2PDFImageW(void* hDIB, DWORD& nSize, DWORD nCompression,
                                       WCHAR const* szCodecLibrary, int nQuality) {
  return CoderDoor(m_pState, hDIB, [&](DibView& dib) {
    return EncodeImage(dib, {szCodecLibrary, nCompression, nQuality}, nSize);
  });
}

void* CCreatePDF::ConvertDIB2UncompressedPDFImage(void* hDIB, DWORD& nSize) {
  return CoderDoor(m_pState, hDIB, [&](DibView& dib) { return EncodeRaw(dib, nSize); });
}

void* CCreatePDF::ConvertDIB2FlatePDFImage(void* hDIB, DWORD& nSize, DWORD /*nCompression*/,
                                           int nLevel) {
  return CoderDoor(m_pState, hDIB, [&](DibView& dib) { return EncodeFlate(dib, nLevel, nSize); });
}

void* CCreatePDF::ConvertDIB2RLEPDFImage(void* hDIB, DWORD& nSize, DWORD /*nCompression*/) {
  return CoderDoor(m_pState, hDIB, [&](DibView& dib) { return EncodeRunLength(dib, nSize); });
}

void CCreatePDF::RLEEncriptLine(BYTE* pLine, DWORD nLength, BYTE* pOut, DWORD& nOutSize) {
  nOutSize = sorrelin::EncodeRunLengthRow(pLine, nLength, pOut);
}

void* CCreatePDF::ConvertDIB2CcittPDFImage(void* hDIB, DWORD& nSize, char const* szCodecLibrary) {
  return CoderDoor(m_pState, hDIB, [&](DibView& dib) {
    return EncodeCcitt(dib, ToWide(szCodecLibrary).c_str(), nSize);
  });
}

void* CCreatePDF::ConvertDIB2CcittPDFImageW(void* hDIB, DWORD& nSize, WCHAR const* szCodecLibrary) {
  return CoderDoor(m_pState, hDIB,
                   [&](DibView& dib) { return EncodeCcitt(dib, szCodecLibrary, nSize); });
}

void* CCreatePDF::ConvertDIB2CcittPDFImageFileW(void* hDIB, DWORD& nSize,
                                                WCHAR const* szCodecLibrary) {
  return CoderDoor(m_pState, hDIB,
                   [&](DibView& dib) { return EncodeCcittInFile(dib, szCodecLibrary, nSize); });
}

void* CCreatePDF::ConvertDIB2DctJpegPDFImage(void* hDIB, DWORD& nSize, char const* szCodecLibrary,
                                             int nQuality, DWORD /*nCompression*/) {
  return CoderDoor(m_pState, hDIB, [&](DibView& dib) {
    return EncodeJpeg(dib, ToWide(szCodecLibrary).c_str(), nQuality, nSize);
  });
}

void* CCreatePDF::ConvertDIB2DctJpegPDFImageW(void* hDIB, DWORD& nSize, WCHAR const* szCodecLibrary,
                                              int nQuality, DWORD /*nCompression*/) {
  return CoderDoor(m_pState, hDIB,
                   [&](DibView& dib) { return EncodeJpeg(dib, szCodecLibrary, nQuality, nSize); });
}

void* CCreatePDF::ConvertDIB2DctJpegPDFImageFileW(void* hDIB, DWORD& nSize,
                                                  WCHAR const* szCodecLibrary, int nQuality,
                                                  DWORD /*nCompression*/) {
  return CoderDoor(m_pState, hDIB, [&](DibView& dib) {
    return EncodeJpegInFile(dib, szCodecLibrary, nQuality, nSize);
  });
}

int CCreatePDF::GetDIBBitsPerPixel(void* hDIB) { return DibView(hDIB).header().biBitCount; }

POINT CCreatePDF::GetDIBDPI(void* hDIB) { return Resolution(DibView(hDIB)); }

POINT CCreatePDF::GetDIBImageSize(void* hDIB) {
  DibView const dib(hDIB);
  return {dib.header().biWidth, dib.header().biHeight};
}

void* CCreatePDF::ExtractPaletteFromDIB(void* hDIB, DWORD* pSize) {
  return CoderDoor(m_pState, hDIB, [&](DibView& dib) {
    DWORD size = 0;
    auto palette = ExtractPalette(dib, size);
    if (palette.ok()) *pSize = size;
    return palette;
  });
}

int CCreatePDF::CheckDIBPaletteOrder(void* hDIB, int& nOrder) {
  return Door(m_pState, [&](SessionState& state) {
    if (!sorrelin::IsBlock(hDIB)) return state.Report(Status::Failed(PDF_ERROR_INVALID_HANDLE));
    DibView const dib(hDIB);
    if (!dib.IsLocked()) return state.Report(Status::Failed(PDF_ERROR_MEMORY));
    nOrder = FirstColourIsBlack(dib) ? 1 : 0;
    return true;
  });
}
