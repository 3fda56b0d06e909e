// Bitmaps of one bit per pixel for tests, benchmarks and fuzz targets.
#ifndef TESTS_SUPPORT_BILEVEL_H_
#define TESTS_SUPPORT_BILEVEL_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace test {

// Rows from the top, each padded to 4 bytes; the leftmost pixel is the highest bit, a set bit is
// black. Starts white.
class Bilevel {
 public:
  Bilevel(int32_t width, int32_t height)
      : width_(width),
        height_(height),
        stride_((static_cast<size_t>(width) + 31) / 32 * 4),
        bytes_(stride_ * static_cast<size_t>(height)) {}

  int32_t Width() const { return width_; }
  int32_t Height() const { return height_; }
  size_t Stride() const { return stride_; }
  // Bytes of a row that hold pixels.
  size_t Payload() const { return (static_cast<size_t>(width_) + 7) / 8; }

  std::span<uint8_t> Row(int32_t y) {
    return std::span(bytes_).subspan(stride_ * static_cast<size_t>(y), stride_);
  }
  std::span<uint8_t const> Row(int32_t y) const {
    return std::span(bytes_).subspan(stride_ * static_cast<size_t>(y), stride_);
  }

  bool Black(int32_t x, int32_t y) const {
    return (Row(y)[static_cast<size_t>(x) / 8] >> (7 - x % 8) & 1) != 0;
  }
  void SetBlack(int32_t x, int32_t y) {
    Row(y)[static_cast<size_t>(x) / 8] |= static_cast<uint8_t>(0x80 >> x % 8);
  }
  void Flip(int32_t x, int32_t y) {
    Row(y)[static_cast<size_t>(x) / 8] ^= static_cast<uint8_t>(0x80 >> x % 8);
  }
  void Blacken(int32_t left, int32_t right, int32_t y) {
    for (int32_t x = left; x < right; ++x) {
      SetBlack(x, y);
    }
  }

  friend bool operator==(Bilevel const&, Bilevel const&) = default;

 private:
  int32_t width_;
  int32_t height_;
  size_t stride_;
  std::vector<uint8_t> bytes_;
};

}  // namespace test

#endif  // TESTS_SUPPORT_BILEVEL_H_
