// Rows of a packed bitmap, bounded by its block.
#include <siblings/rennick/dib_rows.h>

#include <algorithm>
#include <cstring>

namespace sorrelin::rennick {
namespace {

constexpr LONG kMaxSide = 65500;

bool IsSide(LONG size) { return size >= 1 && size <= kMaxSide; }

uint64_t FirstRowAt(BITMAPINFOHEADER const& header) {
  uint64_t const implied = header.biBitCount == 8 ? 256 : 0;
  uint64_t const entries = header.biClrUsed != 0 ? header.biClrUsed : implied;
  return header.biSize + entries * sizeof(RGBQUAD);
}

}  // namespace

std::optional<DibRows> DibRows::Of(std::span<BYTE const> block) {
  BITMAPINFOHEADER header;
  if (block.size() < sizeof header) return std::nullopt;
  std::memcpy(&header, block.data(), sizeof header);
  if (header.biBitCount != 8 && header.biBitCount != 24) return std::nullopt;
  if (!IsSide(header.biWidth) || !IsSide(header.biHeight)) return std::nullopt;
  return DibRows(block, header);
}

DibRows::DibRows(std::span<BYTE const> block, BITMAPINFOHEADER const& header)
    : block_(block),
      width_(static_cast<uint32_t>(header.biWidth)),
      height_(static_cast<uint32_t>(header.biHeight)),
      bytes_per_pixel_(header.biBitCount / 8u),
      first_row_(FirstRowAt(header)),
      partial_row_(size_t{width_} * bytes_per_pixel_),
      zero_row_(partial_row_.size()) {}

BYTE const* DibRows::Row(uint32_t y) {
  uint64_t const at = first_row_ + (height_ - 1 - y) * StrideOf(width_, bytes_per_pixel_);
  if (at >= block_.size()) return zero_row_.data();
  std::span<BYTE const> const rest = block_.subspan(static_cast<size_t>(at));
  if (rest.size() >= partial_row_.size()) return rest.data();
  std::copy(rest.begin(), rest.end(), partial_row_.begin());
  return partial_row_.data();
}

}  // namespace sorrelin::rennick
