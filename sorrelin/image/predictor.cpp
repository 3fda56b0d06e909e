// The undoing of PNG row filters (ISO 32000-1, 7.4.4.4). Each row of the data has a tag byte in
// front, which names its filter; the rows go to the data's start, one after the other.
#include <sorrelin/image/predictor.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace sorrelin {

namespace {

enum PngTag : BYTE { kNone, kSub, kUp, kAverage, kPaeth };

// Kept: a whole number of bits is rounded to the nearest byte, so that 9 bits make 1; streams are
// written for this size. Beyond 32 bits it is larger than any data.
uint64_t RowBytes(PngRowShape const& shape) {
  float const bytes = static_cast<float>(shape.columns) * static_cast<float>(shape.colours) *
                          static_cast<float>(shape.bits) * 0.125F +
                      0.5F;
  constexpr float kMost = 4294967296.0F;
  return bytes < kMost ? static_cast<uint64_t>(bytes) : std::numeric_limits<uint64_t>::max() / 2;
}

size_t BytesPerPixel(PngRowShape const& shape) {
  float const bytes =
      std::ceil(static_cast<float>(shape.bits) * static_cast<float>(shape.colours) * 0.125F);
  constexpr float kMost = 4294967040.0F;  // below 2^32, and more than any data
  return static_cast<size_t>(std::min(bytes, kMost));
}

// Kept: the differences keep their sign, unlike in the PNG filter of this name; what is written for
// this reader comes out right only so.
int PaethChoice(int a, int b, int c) {
  int const d = a - c;
  int const e = b - c;
  int const f = d + b - c;
  if (e <= d && e <= f) return a;
  return d <= f ? b : c;
}

class PngRows {
 public:
  PngRows(std::span<BYTE> data, size_t row_bytes, size_t pixel_bytes)
      : data_(data), row_bytes_(row_bytes), pixel_bytes_(pixel_bytes) {}

  int Undo() {
    if (data_.empty()) return 1;
    if (data_[0] > kSub) UndoFirst();
    while (in_ < data_.size()) {
      if (data_[in_] > kPaeth || in_ + row_bytes_ >= data_.size()) return 0;
      UndoRow();
    }
    return 1;
  }

 private:
  // The first row has no row above: one of zeros counts.
  void UndoFirst() {
    BYTE const tag = data_[0];
    // Kept: an unknown tag leaves the first row as it is, tag included; documents open with it.
    for (size_t i = 0; tag <= kPaeth && i < row_bytes_; ++i) {
      int value = In(i);
      if (i >= pixel_bytes_ && tag == kAverage) value += Left(i) >> 1;
      if (i >= pixel_bytes_ && tag == kPaeth) value += PaethChoice(Left(i), 0, 0);
      Put(i, value);
    }
    NextRow();
  }

  // The whole row is in the data, and so is where it goes.
  void UndoRow() {
    BYTE const tag = data_[in_];
    if (tag == kUp && out_ >= row_bytes_) return AddRowAbove();
    for (size_t i = 0; i < row_bytes_; ++i) Put(i, In(i) + Prediction(tag, i));
    NextRow();
  }

  // Cross-reference streams consist of such rows, and may be long.
  void AddRowAbove() {
    BYTE const* const in = data_.data() + in_ + 1;
    BYTE* const out = data_.data() + out_;
    BYTE const* const above = out - row_bytes_;
    for (size_t i = 0; i < row_bytes_; ++i) out[i] = static_cast<BYTE>(in[i] + above[i]);
    NextRow();
  }

  int Prediction(BYTE tag, size_t i) const {
    bool const has_left = i >= pixel_bytes_;
    switch (tag) {
      case kSub:
        return has_left ? Left(i) : 0;
      case kUp:
        return Above(i);
      case kAverage:
        return ((has_left ? Left(i) : 0) + Above(i)) >> 1;
      case kPaeth:
        return has_left ? PaethChoice(Left(i), Above(i), Above(i - pixel_bytes_)) : Above(i);
      default:
        return 0;
    }
  }

  int At(size_t index) const { return index < data_.size() ? data_[index] : 0; }
  int In(size_t i) const { return At(in_ + 1 + i); }
  int Left(size_t i) const { return At(out_ + i - pixel_bytes_); }
  int Above(size_t i) const { return out_ >= row_bytes_ ? At(out_ - row_bytes_ + i) : 0; }
  void Put(size_t i, int value) {
    if (out_ + i < data_.size()) data_[out_ + i] = static_cast<BYTE>(value);
  }
  void NextRow() {
    in_ += row_bytes_ + 1;
    out_ += row_bytes_;
  }

  std::span<BYTE> data_;
  size_t row_bytes_;
  size_t pixel_bytes_;
  size_t in_ = 0;   // the tag of the row in hand
  size_t out_ = 0;  // where the row goes
};

}  // namespace

int DecodePngRows(PngRowShape const& shape, std::span<BYTE> data) {
  uint64_t const row_bytes = RowBytes(shape);
  if (row_bytes > data.size()) return 0;
  return PngRows(data, static_cast<size_t>(row_bytes), BytesPerPixel(shape)).Undo();
}

}  // namespace sorrelin
