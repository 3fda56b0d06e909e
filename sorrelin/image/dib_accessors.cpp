// The questions that page assembly asks of a bitmap: depth, size, resolution, polarity, palette.
#include <sorrelin/frame/session_state.h>
#include <sorrelin/image/dib_view.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/memory.h>

using sorrelin::DibView;
using sorrelin::OwnedBlock;

namespace {

constexpr double kMetresPerInch = 0.0254;
constexpr LONG kDefaultDpi = 96;
constexpr uint64_t kTripleBytes = 3;

LONG DotsPerInch(LONG pixels_per_metre) {
  return static_cast<LONG>(pixels_per_metre * kMetresPerInch + 0.5);
}

}  // namespace

int sorrelin::SessionState::GetDIBBitsPerPixel(void* hDIB) {
  return DibView(hDIB).header().biBitCount;
}

POINT sorrelin::SessionState::GetDIBImageSize(void* hDIB) {
  DibView const dib(hDIB);
  return {dib.header().biWidth, dib.header().biHeight};
}

POINT sorrelin::SessionState::GetDIBDPI(void* hDIB) {
  DibView const dib(hDIB);
  if (!dib.IsLocked()) return {0, 0};
  POINT dpi{DotsPerInch(dib.header().biXPelsPerMeter), DotsPerInch(dib.header().biYPelsPerMeter)};
  if (dpi.x == 0) dpi.x = dpi.y;
  if (dpi.y == 0) dpi.y = dpi.x;
  return dpi.x != 0 ? dpi : POINT{kDefaultDpi, kDefaultDpi};
}

int sorrelin::SessionState::CheckDIBPaletteOrder(void* hDIB, int& nOrder) {
  if (hDIB == nullptr || hDIB == INVALID_HANDLE_VALUE) {
    return static_cast<int>(Fail(PDF_ERROR_INVALID_HANDLE));
  }
  DibView const dib(hDIB);
  if (!dib.IsLocked()) return static_cast<int>(Fail(PDF_ERROR_MEMORY));
  BYTE first_color[kTripleBytes];
  sorrelin::ReadOrZero(dib.bytes(), sorrelin::kDibHeaderBytes, first_color);
  nOrder = first_color[0] == 0 && first_color[1] == 0 && first_color[2] == 0 ? 1 : 0;
  return 1;
}

void* sorrelin::SessionState::ExtractPaletteFromDIB(void* hDIB, DWORD* pSize) {
  DibView dib(hDIB);
  if (!dib.IsLocked()) return INVALID_HANDLE_VALUE;
  BITMAPINFOHEADER const& header = dib.header();
  uint64_t const entries =
      header.biClrUsed != 0 ? header.biClrUsed : sorrelin::DefaultColors(header.biBitCount);
  OwnedBlock palette(GlobalAlloc(GHND, static_cast<SIZE_T>(entries * kTripleBytes)));
  BYTE* out = entries * kTripleBytes <= UINT32_MAX ? static_cast<BYTE*>(GlobalLock(palette.get()))
                                                   : nullptr;
  if (out == nullptr) {
    // Kept: the bitmap stays locked; so it does after code 10 in the raw and Flate encoders.
    dib.KeepLocked();
    Fail(PDF_ERROR_MEMORY);
    return INVALID_HANDLE_VALUE;
  }
  std::span<BYTE const> const table =
      dib.Part(sorrelin::kDibHeaderBytes, entries * sizeof(RGBQUAD));
  for (size_t at = 0; at < table.size(); at += sizeof(RGBQUAD)) {
    BYTE entry[sizeof(RGBQUAD)];
    sorrelin::ReadOrZero(table, at, entry);
    *out++ = entry[2];
    *out++ = entry[1];
    *out++ = entry[0];
  }
  GlobalUnlock(palette.get());
  *pSize = static_cast<DWORD>(entries * kTripleBytes);
  return palette.Release();
}
