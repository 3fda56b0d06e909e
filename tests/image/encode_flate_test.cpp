// Flate image data: the bytes zlib gives, in blocks of the sizes that doubling reaches.
#include <gtest/gtest.h>
#include <zlib.h>

#include <memory>

#include "tests/support/dib.h"
#include "tests/support/dib_content.h"
#include "tests/support/session_probe.h"

namespace {

using test::Block;
using test::Bytes;
using test::MakeDib;

Block Noise(LONG width, LONG height) {
  DWORD state = 1;
  return MakeDib({.width = width, .height = height, .bits = 8}, [&](LONG, LONG) {
    state = state * 1664525u + 1013904223u;
    return state >> 24;
  });
}

Bytes Inflated(Bytes const& data, size_t size) {
  Bytes out(size);
  uLongf length = static_cast<uLongf>(size);
  EXPECT_EQ(uncompress(out.data(), &length, data.data(), static_cast<uLong>(data.size())), Z_OK);
  out.resize(length);
  return out;
}

// What the described retry gives: compress into ever doubled blocks until one is enough.
std::pair<size_t, Bytes> ByDoubling(Bytes const& raw, int level) {
  uLongf capacity = std::max(static_cast<uLongf>(raw.size() / 100), uLongf{1});
  for (;; capacity *= 2) {
    Bytes out(capacity);
    uLongf length = capacity;
    if (compress2(out.data(), &length, raw.data(), static_cast<uLong>(raw.size()), level) !=
        Z_BUF_ERROR) {
      out.resize(length);
      return {capacity, out};
    }
  }
}

class EncodeFlate : public testing::Test {
 protected:
  std::unique_ptr<CCreatePDF> session_ = std::make_unique<CCreatePDF>();
  DWORD size_ = 0;
};

TEST_F(EncodeFlate, BytesAndBlockSizeAreThoseOfDoubling) {
  for (auto const& [width, height] : {std::pair{1, 1}, {9, 11}, {10, 10}, {64, 64}, {300, 200}}) {
    for (int const level : {-1, 0, 1, 6, 9}) {
      Block const dib = Noise(width, height);
      Bytes const raw = Block(session_->ConvertDIB2UncompressedPDFImage(dib, size_)).Content();
      auto const [capacity, data] = ByDoubling(raw, level);
      Block const flate(session_->ConvertDIB2FlatePDFImage(dib, size_, 4, level));
      EXPECT_EQ(GlobalSize(flate), capacity) << width << " " << level;
      EXPECT_EQ(flate.Content(size_), data) << width << " " << level;
    }
  }
}

TEST_F(EncodeFlate, SmallImageStartsAtOneByteAndDoubles) {
  // 99 equal bytes: zlib needs 11 or 12, so the block is 16.
  Block const dib = MakeDib({.width = 99, .height = 1, .bits = 8}, [](LONG, LONG) { return 5u; });
  Block const flate(session_->ConvertDIB2FlatePDFImage(dib, size_, 4, 6));
  EXPECT_LE(size_, 16u);
  EXPECT_EQ(GlobalSize(flate), 16u);
  EXPECT_EQ(Inflated(flate.Content(size_), 200), Bytes(99, 5));
}

TEST_F(EncodeFlate, QualityBecomesTheLevelOrTheDefault) {
  Block const dib = MakeDib({.width = 200, .height = 50, .bits = 8},
                            [](LONG x, LONG y) { return static_cast<DWORD>(x * x + y) & 31; });
  auto const with = [&](int quality) {
    Block const flate(session_->ConvertDIB2PDFImageW(dib, size_, 4, nullptr, quality));
    return flate.Content(size_);
  };
  for (int level = 0; level <= 9; ++level) {
    Block const flate(session_->ConvertDIB2FlatePDFImage(dib, size_, 4, level));
    EXPECT_EQ(with(level), flate.Content(size_)) << level;
  }
  EXPECT_NE(with(9), with(6));
  EXPECT_GT(with(0).size(), 10000u);  // stored
  EXPECT_EQ(with(10), with(6));       // zlib's default level is 6
  EXPECT_EQ(with(-5), with(6));
  EXPECT_NE(with(1), with(9));
}

// The first capacity is a hundredth of the raw image, at least 1.
TEST_F(EncodeFlate, LevelThatZlibRefusesGivesZerosOfTheFirstCapacity) {
  session_->PDF_SetLastError(0);
  for (auto const& [width, capacity] : {std::pair{1, 1u}, {199, 1u}, {200, 2u}, {2550, 25u}}) {
    Block const dib = Noise(width, 1);
    for (int const level : {-2, 10, INT32_MIN, INT32_MAX}) {
      size_ = 77;
      Block const flate(session_->ConvertDIB2FlatePDFImage(dib, size_, 4, level));
      EXPECT_EQ(size_, capacity) << width << " " << level;
      EXPECT_EQ(flate.Content(), Bytes(capacity, 0)) << width << " " << level;
    }
  }
  EXPECT_EQ(session_->PDF_GetLastError(), 0u);
}

TEST_F(EncodeFlate, TailBehindTheDataIsZero) {
  Block const dib = Noise(50, 50);
  Block const flate(session_->ConvertDIB2FlatePDFImage(dib, size_, 4, 6));
  Bytes const all = flate.Content();
  EXPECT_EQ(Bytes(all.begin() + size_, all.end()), Bytes(all.size() - size_, 0));
}

TEST_F(EncodeFlate, NothingToCompressIs10AndLeavesTheBitmapLocked) {
  Block const dib = MakeDib({.bits = 4}, [](LONG, LONG) { return 0u; });
  EXPECT_EQ(session_->ConvertDIB2FlatePDFImage(dib, size_, 4, 6), INVALID_HANDLE_VALUE);
  EXPECT_EQ(session_->PDF_GetLastError(), 10u);
  EXPECT_EQ(test::TakeLocks(dib), 1);
}

TEST_F(EncodeFlate, BitmapAndResultAreUnlocked) {
  Block const dib = Noise(5, 5);
  Block const flate(session_->ConvertDIB2FlatePDFImage(dib, size_, 4, 6));
  EXPECT_EQ(test::TakeLocks(dib), 0);
  EXPECT_EQ(test::TakeLocks(flate), 0);
}

}  // namespace
