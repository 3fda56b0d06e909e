// Run-length image data back into a bitmap: pairs of a control byte c and a value. ISO 32000-1
// 7.4.5, as far as RLEEncriptLine writes it.
#include <sorrelin/image/decoders.h>
#include <sorrelin/image/dib_view.h>
#include <sorrelin/image/rebuilt_dib.h>
#include <sorrelin/platform/block.h>

#include <algorithm>
#include <cstring>

namespace sorrelin {

namespace {

constexpr BYTE kEndOfData = 128;

// The bytes of a bitmap's block as a target: writes outside are dropped. Knows the offset below
// which every row is still 0, so that zeros need not be written there and an untouched page of a
// large bitmap stays untouched.
class Target {
 public:
  Target(std::span<BYTE> block, bool zeroed)
      : block_(block), clean_below_(zeroed ? block.size() : 0) {}

  size_t size() const { return block_.size(); }
  uint64_t clean_below() const { return clean_below_; }

  void Put(uint64_t offset, BYTE value) {
    if (offset >= block_.size()) return;
    block_[static_cast<size_t>(offset)] = value;
    clean_below_ = std::min(clean_below_, offset);
  }

  void Fill(uint64_t offset, uint64_t count, BYTE value) {
    uint64_t const begin = value == 0 ? std::max(offset, clean_below_) : offset;
    uint64_t const end = std::min<uint64_t>(offset + count, block_.size());
    if (begin >= end) return;
    std::memset(block_.data() + begin, value, static_cast<size_t>(end - begin));
    clean_below_ = std::min(clean_below_, begin);
  }

 private:
  std::span<BYTE> block_;
  uint64_t clean_below_;
};

// The place of the rows of a bitmap in its block.
struct Rows {
  explicit Rows(std::span<BYTE const> block) {
    BITMAPINFOHEADER header{};
    std::memcpy(&header, block.data(), std::min(block.size(), sizeof header));
    width = header.biWidth;
    height = header.biHeight;
    stride = DibStride(std::max<int64_t>(width, 0), header.biBitCount);
    uint64_t const entries = header.biBitCount == 1 ? 2 : header.biBitCount == 8 ? 256 : 0;
    first = uint64_t{header.biSize} + entries * sizeof(RGBQUAD);
  }

  int64_t width = 0;   // pixels, which count as bytes
  int64_t height = 0;  // rows
  uint64_t stride = 0;
  uint64_t first = 0;  // offset of the lowest row
};

class RunLengthDecoder {
 public:
  RunLengthDecoder(BYTE const* data, uint64_t size, Target target, Rows const& rows)
      : data_(data), size_(size), left_(size), target_(target), rows_(rows) {}

  void Decode() {
    if (Input(0) == kEndOfData || rows_.width <= 0) return;
    for (int64_t row = rows_.height - 1; row >= 0 && left_ != 0; --row) {
      if (position_ >= size_) {
        BlankRows(static_cast<uint64_t>(row) + 1);
        return;
      }
      DecodeRow(rows_.first + static_cast<uint64_t>(row) * rows_.stride);
      if (Input(position_) == kEndOfData) return;
    }
  }

 private:
  BYTE Input(uint64_t position) const { return position < size_ ? data_[position] : BYTE{0}; }

  // Kept: 128 repeats 129 times here, and the count of bytes is looked at between rows only; runs
  // pass the row's end. Streams that the encoder writes need neither.
  void DecodeRow(uint64_t out) {
    int64_t wanted = rows_.width;
    while (wanted > 0) {
      if (position_ >= size_) {
        BlankRest(out, static_cast<uint64_t>(wanted));
        return;
      }
      BYTE const control = Input(position_);
      uint64_t const count = control < 128 ? control + 1u : 257u - control;
      if (control < 128) {
        for (uint64_t i = 0; i < count; ++i) target_.Put(out + i, Input(position_ + 1 + i));
      } else {
        target_.Fill(out, count, Input(position_ + 1));
      }
      // Kept: the input moves on by one pair also after a longer literal run, as the encoder
      // writes none; foreign streams with such runs have always come out so.
      position_ += 2;
      left_ -= control < 128 ? control + 2u : 2u;
      out += count;
      wanted -= static_cast<int64_t>(count);
    }
  }

  // After the input each pair reads as (0, 0): one byte of 0 for two bytes of input.
  void BlankRest(uint64_t out, uint64_t count) {
    target_.Fill(out, count, 0);
    position_ += 2 * count;
    left_ -= 2 * count;
  }

  // The lowest `count` rows, all of them after the input. The count of bytes is below 0 here and
  // never meets 0 again, so that all rows take part.
  void BlankRows(uint64_t count) {
    uint64_t const width = static_cast<uint64_t>(rows_.width);
    if (width >= rows_.stride) {
      target_.Fill(rows_.first, (count - 1) * rows_.stride + width, 0);
      return;
    }
    for (uint64_t row = FirstRowNotClean(); row < count; ++row) {
      uint64_t const out = rows_.first + row * rows_.stride;
      if (out >= target_.size()) return;
      target_.Fill(out, width, 0);
    }
  }

  uint64_t FirstRowNotClean() const {
    if (target_.clean_below() <= rows_.first) return 0;
    return (target_.clean_below() - rows_.first) / rows_.stride;
  }

  BYTE const* data_;
  uint64_t size_;
  uint64_t position_ = 0;
  uint64_t left_;  // wraps below 0 where the pairs do not end with the input
  Target target_;
  Rows rows_;
};

void DecodeInto(BYTE const* data, uint64_t size, std::span<BYTE> block, bool zeroed) {
  RunLengthDecoder(data, size, Target(block, zeroed), Rows(block)).Decode();
}

}  // namespace

Result<OwnedBlock> DecodeRunLength(HGLOBAL block, ImageShape const& shape) {
  LockedBlock data(block);
  if (!data || !CanBeRebuilt(data, shape.kind, shape.palette)) return Status::Failed();

  RebuiltDib dib;
  if (!dib.Create(shape.kind, shape.width, shape.height)) return Status::Failed(PDF_ERROR_MEMORY);
  if (shape.kind == kKindBilevel) {
    dib.SetColours({0, 255});
  } else if (shape.kind == kKindIndexed && !dib.CopyPalette(shape.palette)) {
    return Status::Failed(PDF_ERROR_PALETTE);
  }
  DecodeInto(data.bytes().data(), data.bytes().size(), dib.block(), true);
  return dib.Release();
}

void DecodeRunLengthRows(std::span<BYTE const> data, std::span<BYTE> bitmap) {
  DecodeInto(data.data(), data.size(), bitmap, false);
}

}  // namespace sorrelin
