// Resolution, polarity and palette of a bitmap.
#include <sorrelin/image/bitmap_facts.h>
#include <sorrelin/image/encoders.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/codes.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/units.h>

namespace sorrelin {

namespace {

constexpr LONG kDefaultDpi = 96;
constexpr uint64_t kTripleBytes = 3;

LONG DotsPerInch(LONG pixels_per_metre) {
  return static_cast<LONG>(pixels_per_metre * kMetresPerInch + 0.5);
}

}  // namespace

POINT Resolution(DibView const& dib) {
  if (!dib.IsLocked()) return {0, 0};
  POINT dpi{DotsPerInch(dib.header().biXPelsPerMeter), DotsPerInch(dib.header().biYPelsPerMeter)};
  if (dpi.x == 0) dpi.x = dpi.y;
  if (dpi.y == 0) dpi.y = dpi.x;
  return dpi.x != 0 ? dpi : POINT{kDefaultDpi, kDefaultDpi};
}

bool FirstColourIsBlack(DibView const& dib) {
  BYTE first_colour[kTripleBytes];
  ReadOrZero(dib.bytes(), kDibHeaderBytes, first_colour);
  return first_colour[0] == 0 && first_colour[1] == 0 && first_colour[2] == 0;
}

Result<OwnedBlock> ExtractPalette(DibView& dib, DWORD& size) {
  if (!dib.IsLocked()) return Refused(Status::Failed());
  BITMAPINFOHEADER const& header = dib.header();
  uint64_t const entries =
      header.biClrUsed != 0 ? header.biClrUsed : DefaultColors(header.biBitCount);
  uint64_t const bytes = entries * kTripleBytes;
  OwnedBlock palette(GlobalAlloc(GHND, static_cast<SIZE_T>(bytes)));
  LockedBlock const locked(bytes <= UINT32_MAX ? palette.get() : nullptr);
  if (!locked) {
    dib.KeepLocked();
    return Refused(PDF_ERROR_MEMORY);
  }
  BYTE* out = locked.bytes().data();
  std::span<BYTE const> const table = dib.Part(kDibHeaderBytes, entries * sizeof(RGBQUAD));
  for (size_t at = 0; at < table.size(); at += sizeof(RGBQUAD)) {
    BYTE entry[sizeof(RGBQUAD)];
    ReadOrZero(table, at, entry);
    *out++ = entry[2];
    *out++ = entry[1];
    *out++ = entry[0];
  }
  size = static_cast<DWORD>(bytes);
  return palette;
}

}  // namespace sorrelin
