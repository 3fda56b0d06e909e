// Drawing on 24-bit bitmaps through a DIB section.
#include <sorrelin/image/dib_view.h>
#include <sorrelin/image/toolbox/dib_image.h>
#include <sorrelin/image/toolbox/dib_layout.h>
#include <sorrelin/image/toolbox/dib_toolbox.h>

#include <algorithm>
#include <cstring>

namespace sorrelin {
namespace {

constexpr WORD kDrawnBits = 24;

// Whether the section can be made from the header alone.
bool IsDrawable(BITMAPINFOHEADER const& header) {
  return header.biSize == sizeof header && header.biBitCount == kDrawnBits &&
         header.biCompression == BI_RGB;
}

}  // namespace

HANDLE DibImage::GetDrawingDC() {
  if (hDC != nullptr) return hDC;
  BITMAPINFO info{};
  {
    DibView const view(hDIB);
    info.bmiHeader = view.header();
  }
  if (!IsDrawable(info.bmiHeader)) return nullptr;
  pHeader = static_cast<BITMAPINFOHEADER*>(GlobalLock(hDIB));
  HDC const context = CreateCompatibleDC(nullptr);
  hDC = context;
  hSection = CreateDIBSection(context, &info, DIB_RGB_COLORS, &pSectionBits, nullptr, 0);
  if (pHeader == nullptr || context == nullptr || hSection == nullptr) {
    ReleaseDrawingDC();
    return nullptr;
  }
  hOldObject = SelectObject(context, hSection);
  BitBlt(context, 0, 0, nWidth, nHeight, nullptr, 0, 0, WHITENESS);
  return hDC;
}

void DibImage::ReleaseDrawingDC() {
  HDC const context = static_cast<HDC>(hDC);
  if (hOldObject != nullptr) {
    SelectObject(context, hOldObject);
    GdiFlush();
    std::span<BYTE> const rows = GetDIBBits({reinterpret_cast<BYTE*>(pHeader), GlobalSize(hDIB)});
    BITMAP section{};
    GetObjectW(hSection, sizeof section, &section);
    uint64_t const bytes =
        PackedStride(section.bmWidth, kDrawnBits) * static_cast<uint64_t>(section.bmHeight);
    std::memcpy(rows.data(), pSectionBits,
                static_cast<size_t>(std::min<uint64_t>(bytes, rows.size())));
  }
  if (context != nullptr) DeleteDC(context);
  if (hSection != nullptr) DeleteObject(hSection);
  if (pHeader != nullptr) GlobalUnlock(hDIB);
  hDC = hSection = hOldObject = nullptr;
  pHeader = nullptr;
  pSectionBits = nullptr;
}

}  // namespace sorrelin
