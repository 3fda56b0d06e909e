// The encoders' dispatch, and raw image data.
#include <sorrelin/frame/session_state.h>
#include <sorrelin/image/flate.h>
#include <sorrelin/image/pixel_order.h>
#include <sorrelin/image/raw_image.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/wide_string.h>

#include <algorithm>

using sorrelin::DibView;
using sorrelin::OwnedBlock;

namespace sorrelin {

OwnedBlock BuildRawImage(DibView const& dib, DWORD& size) {
  BITMAPINFOHEADER const& header = dib.header();
  uint64_t const payload = DibPayload(header.biWidth, header.biBitCount);
  uint64_t const stride = DibStride(header.biWidth, header.biBitCount);
  uint64_t const rows = header.biHeight > 0 ? static_cast<uint64_t>(header.biHeight) : 0;
  if (payload == 0 || rows == 0 || rows > UINT32_MAX / payload) return OwnedBlock();
  OwnedBlock block(GlobalAlloc(GHND, static_cast<SIZE_T>(rows * payload)));
  BYTE* out = static_cast<BYTE*>(GlobalLock(block.get()));
  if (out == nullptr) return OwnedBlock();
  uint64_t const first_row = FirstRowOffset(header);
  for (uint64_t row = rows; row-- > 0; out += payload) {
    std::span<BYTE const> const source = dib.Part(first_row + row * stride, payload);
    if (header.biBitCount == 24) {
      CopySwapped(out, source);
    } else {
      std::copy(source.begin(), source.end(), out);
    }
  }
  GlobalUnlock(block.get());
  size = static_cast<DWORD>(rows * payload);
  return block;
}

}  // namespace sorrelin

void* sorrelin::SessionState::ConvertDIB2PDFImage(void* hDIB, DWORD& nSize, DWORD nCompression,
                                                  char const* szCodecLibrary, int nQuality) {
  return ConvertDIB2PDFImageW(hDIB, nSize, nCompression, sorrelin::ToWide(szCodecLibrary).c_str(),
                              nQuality);
}

void* sorrelin::SessionState::ConvertDIB2PDFImageW(void* hDIB, DWORD& nSize, DWORD nCompression,
                                                   WCHAR const* szCodecLibrary, int nQuality) {
  switch (nCompression) {
    case PDF_COMPRESSION_NONE:
    case PDF_COMPRESSION_FLAG_NONE:
      return ConvertDIB2UncompressedPDFImage(hDIB, nSize);
    case PDF_COMPRESSION_FLATE:
    case PDF_COMPRESSION_FLAG_FLATE:
      return ConvertDIB2FlatePDFImage(hDIB, nSize, nCompression, sorrelin::FlateLevel(nQuality));
    case PDF_COMPRESSION_RUN_LENGTH:
    case PDF_COMPRESSION_FLAG_RUN_LENGTH:
      return ConvertDIB2RLEPDFImage(hDIB, nSize, nCompression);
    case PDF_COMPRESSION_CCITT:
    case PDF_COMPRESSION_FLAG_CCITT:
      return ConvertDIB2CcittPDFImageW(hDIB, nSize, szCodecLibrary);
    case PDF_COMPRESSION_JPEG:
    case PDF_COMPRESSION_FLAG_JPEG:
      return ConvertDIB2DctJpegPDFImageW(hDIB, nSize, szCodecLibrary, nQuality, nCompression);
    default:
      Fail(PDF_ERROR_COMPRESSION);
      return INVALID_HANDLE_VALUE;
  }
}

void* sorrelin::SessionState::ConvertDIB2UncompressedPDFImage(void* hDIB, DWORD& nSize) {
  DibView dib(hDIB);
  if (!dib.IsLocked()) return INVALID_HANDLE_VALUE;
  OwnedBlock raw = sorrelin::BuildRawImage(dib, nSize);
  if (raw.IsValid()) return raw.Release();
  // Kept: the bitmap stays locked after code 10.
  dib.KeepLocked();
  Fail(PDF_ERROR_MEMORY);
  return INVALID_HANDLE_VALUE;
}
