// Pictures in memory. Rows go straight into Leptonica's words.
#include "tools/extract/output/picture_builder.h"

#include <utility>

namespace sorrelin::tool {
namespace {

constexpr DWORD kMaxSide = 0x7FFFFFFF;

PixColormap* ColormapOf(PictureForm const& form) {
  PixColormap* const map = pixcmapCreate(form.depth);
  for (RGBQUAD const& colour : form.palette) {
    pixcmapAddColor(map, colour.rgbRed, colour.rgbGreen, colour.rgbBlue);
  }
  return map;
}

}  // namespace

bool PictureBuilder::Begin(PictureForm const& form) {
  row_ = 0;
  depth_ = form.depth;
  if (form.width > kMaxSide || form.height > kMaxSide) return false;
  int const depth = form.depth >= 24 ? 32 : form.depth == 16 ? 8 : form.depth;
  pix_.reset(pixCreate(static_cast<int>(form.width), static_cast<int>(form.height), depth));
  if (pix_ == nullptr) return false;
  pixSetResolution(pix_.get(), form.dpi.x, form.dpi.y);
  if (!form.palette.empty()) pixSetColormap(pix_.get(), ColormapOf(form));
  return true;
}

bool PictureBuilder::Row(std::span<BYTE const> row) {
  if (pix_ == nullptr || row_ == pixGetHeight(pix_.get())) return false;
  l_uint32* const line =
      pixGetData(pix_.get()) + static_cast<ptrdiff_t>(row_++) * pixGetWpl(pix_.get());
  if (depth_ >= 24) {
    StoreColours(row, line);
    return true;
  }
  size_t const step = depth_ == 16 ? 2 : 1;
  for (size_t i = 0; i < row.size(); i += step) SET_DATA_BYTE(line, i / step, row[i]);
  return true;
}

void PictureBuilder::StoreColours(std::span<BYTE const> row, l_uint32* line) const {
  size_t const bytes = depth_ > 32 ? 2 : 1;
  bool const has_opacity = depth_ == 32 || depth_ == 64;
  size_t const pixel_bytes = static_cast<size_t>(depth_) / 8;
  for (size_t x = 0; (x + 1) * pixel_bytes <= row.size(); ++x) {
    BYTE const* const pixel = &row[x * pixel_bytes];
    int const opacity = has_opacity ? pixel[3 * bytes] : 255;
    int channels[3];
    for (size_t c = 0; c < 3; ++c) {
      channels[c] = (pixel[c * bytes] * opacity + 255 * (255 - opacity) + 127) / 255;
    }
    composeRGBPixel(channels[0], channels[1], channels[2], line + x);
  }
}

PixPtr PictureBuilder::Take() {
  if (pix_ != nullptr && row_ != pixGetHeight(pix_.get())) pix_.reset();
  return std::move(pix_);
}

}  // namespace sorrelin::tool
