// Decodes Group 4 strips by the sibling's decoder, which is quick, and all others by libtiff.
#include "tools/formats/tiff/tiff_bilevel.h"

#include <siblings/cadwick/group4.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "tools/formats/picture/pix_rows.h"
#include "tools/formats/tiff/tiff_fields.h"

namespace sorrelin::tool {
namespace {

// Rows of a strip on their way to the page.
struct Target {
  Pix* pix;
  int first_row;
  size_t row_bytes;

  void Put(BYTE const* row, int y) const {
    ptrdiff_t const at = static_cast<ptrdiff_t>(first_row + y) * pixGetWpl(pix);
    UnpackWords({row, row_bytes}, pixGetData(pix) + at);
  }
};

int32_t TakeRow(BYTE* row, int32_t y, void* user) {
  static_cast<Target const*>(user)->Put(row, y);
  return CCITT_ROW_DONE;
}

bool ReadGroup4Strip(TIFF* tiff, uint32_t strip, int rows, Target const& target) {
  int const width = pixGetWidth(target.pix);
  std::vector<BYTE> const data = RawGroup4(tiff, strip);
  if (data.empty() || !cadwick::ValidPicture(width, rows)) return false;
  cadwick::Picture const size = {static_cast<uint32_t>(width), static_cast<uint32_t>(rows)};
  Target user = target;
  auto const result = cadwick::DecodeGroup4(data, size, {TakeRow, &user});
  return result.outcome == cadwick::Outcome::kDone;
}

bool ReadStrip(TIFF* tiff, uint32_t strip, int rows, Target const& target) {
  std::vector<BYTE> bytes(target.row_bytes * static_cast<size_t>(rows));
  tmsize_t const size = static_cast<tmsize_t>(bytes.size());
  if (TIFFReadEncodedStrip(tiff, strip, bytes.data(), size) != size) return false;
  for (int y = 0; y < rows; ++y) {
    target.Put(bytes.data() + static_cast<size_t>(y) * target.row_bytes, y);
  }
  return true;
}

}  // namespace

bool HasBilevelStrips(TIFF* tiff) {
  uint16_t const photometric = FieldOf<uint16_t>(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE);
  return FieldOf<uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 0) == 1 &&
         FieldOf<uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 0) == 1 && TIFFIsTiled(tiff) == 0 &&
         (photometric == PHOTOMETRIC_MINISWHITE || photometric == PHOTOMETRIC_MINISBLACK);
}

PixPtr ReadBilevelStrips(TIFF* tiff) {
  constexpr uint32_t kMost = std::numeric_limits<int32_t>::max();
  uint32_t const width = FieldOf<uint32_t>(tiff, TIFFTAG_IMAGEWIDTH, 0);
  uint32_t const height = FieldOf<uint32_t>(tiff, TIFFTAG_IMAGELENGTH, 0);
  uint32_t const strip_rows = std::min(FieldOf<uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, 0), height);
  if (width < 1 || width > kMost || height > kMost || strip_rows < 1) return nullptr;
  PixPtr pix(pixCreate(static_cast<int>(width), static_cast<int>(height), 1));
  if (pix == nullptr) return nullptr;
  auto const read = HasPlainGroup4(tiff) ? ReadGroup4Strip : ReadStrip;
  for (uint32_t y = 0, strip = 0; y < height; y += strip_rows, ++strip) {
    int const rows = static_cast<int>(std::min(strip_rows, height - y));
    Target const target = {pix.get(), static_cast<int>(y), (size_t{width} + 7) / 8};
    if (strip >= TIFFNumberOfStrips(tiff) || !read(tiff, strip, rows, target)) return nullptr;
    if (height - y <= strip_rows) break;
  }
  bool const inverted = FieldOf<uint16_t>(tiff, TIFFTAG_PHOTOMETRIC, 0) == PHOTOMETRIC_MINISBLACK;
  if (inverted) pixInvert(pix.get(), pix.get());
  return Upright(std::move(pix), OrientationOf(tiff));
}

}  // namespace sorrelin::tool
