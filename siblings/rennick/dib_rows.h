// Rows of a packed bitmap as the JPEG coder reads them: BITMAPINFOHEADER (biSize bytes), colour
// table, rows bottom first, each padded to 4 bytes.
#ifndef SIBLINGS_RENNICK_DIB_ROWS_H_
#define SIBLINGS_RENNICK_DIB_ROWS_H_

#include <sorrelin/platform/row_stride.h>
#include <sorrelin/platform/types.h>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace sorrelin::rennick {

// Bytes of a row with its padding.
constexpr uint64_t StrideOf(uint32_t width, uint32_t bytes_per_pixel) {
  return RowStride(uint64_t{width} * bytes_per_pixel, 8);
}

class DibRows {
 public:
  // `block` is a locked bitmap and outlives the rows. Nothing for a block without a whole header,
  // a depth other than 8 and 24 bits, and sizes outside 1..65500, the largest that JPEG has.
  static std::optional<DibRows> Of(std::span<BYTE const> block);

  uint32_t width() const { return width_; }
  uint32_t height() const { return height_; }
  uint32_t bytes_per_pixel() const { return bytes_per_pixel_; }

  // Row `y`, 0 being the top one, without a copy if the block has all of it; otherwise with bytes
  // of 0 for those it lacks, good until the next row that needs the same.
  BYTE const* Row(uint32_t y);

 private:
  DibRows(std::span<BYTE const> block, BITMAPINFOHEADER const& header);

  std::span<BYTE const> block_;
  uint32_t width_;
  uint32_t height_;
  uint32_t bytes_per_pixel_;
  uint64_t first_row_;
  std::vector<BYTE> partial_row_;
  std::vector<BYTE> zero_row_;
};

}  // namespace sorrelin::rennick

#endif  // SIBLINGS_RENNICK_DIB_ROWS_H_
