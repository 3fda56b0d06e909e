// Run-length image data (ISO 32000-1, 7.4.5): control 1 - n modulo 256 repeats a byte n times.
#include <gtest/gtest.h>

#include <memory>
#include <utility>

#include "tests/support/dib.h"
#include "tests/support/dib_content.h"
#include "tests/support/environment.h"
#include "tests/support/session_probe.h"

namespace {

using test::Block;
using test::Bytes;
using test::MakeDib;

class EncodeRunLength : public testing::Test {
 protected:
  std::unique_ptr<CCreatePDF> session_ = std::make_unique<CCreatePDF>();
  DWORD size_ = 0;

  Bytes Line(Bytes row) {
    Bytes out(2 * row.size() + 2);
    session_->RLEEncriptLine(row.data(), static_cast<DWORD>(row.size()), out.data(), size_);
    out.resize(size_);
    return out;
  }
  Bytes Encode(HDIB dib) {
    Block const block(session_->ConvertDIB2RLEPDFImage(dib, size_, 5));
    EXPECT_EQ(GlobalSize(block), size_);
    return block.Content();
  }
};

TEST_F(EncodeRunLength, RowOf300EqualBytesIsThreePairs) {
  EXPECT_EQ(Line(Bytes(300, 0x5A)), (Bytes{129, 0x5A, 129, 0x5A, 213, 0x5A}));
}

TEST_F(EncodeRunLength, RowOf256EqualBytesLeavesNothingPending) {
  EXPECT_EQ(Line(Bytes(256, 7)), (Bytes{129, 7, 129, 7}));
}

TEST_F(EncodeRunLength, SingleBytesAreLiteralRunsOfOne) {
  EXPECT_EQ(Line({1, 2, 2, 3}), (Bytes{0, 1, 255, 2, 0, 3}));
}

TEST_F(EncodeRunLength, ByteBehindAFullRunStartsAnew) {
  Bytes row(128, 9);
  row.push_back(8);
  EXPECT_EQ(Line(row), (Bytes{129, 9, 0, 8}));
}

TEST_F(EncodeRunLength, LengthOf0Or1GivesOnePair) {
  BYTE byte = 4;
  Bytes out(2);
  for (DWORD const length : {0u, 1u}) {
    session_->RLEEncriptLine(&byte, length, out.data(), size_);
    EXPECT_EQ(size_, 2u);
    EXPECT_EQ(out, (Bytes{0, 4}));
  }
}

TEST_F(EncodeRunLength, LastCountedByteIsZeroNotTheEndMarker) {
  Block const dib = MakeDib({.width = 1, .height = 1, .bits = 8}, [](LONG, LONG) { return 7u; });
  EXPECT_EQ(Encode(dib), (Bytes{0, 7, 0}));
  EXPECT_EQ(size_, 3u);
}

TEST_F(EncodeRunLength, RunsDoNotCrossRows) {
  Block const dib = MakeDib({.width = 2, .height = 2, .bits = 8}, [](LONG, LONG) { return 7u; });
  EXPECT_EQ(Encode(dib), (Bytes{255, 7, 255, 7, 0}));
}

TEST_F(EncodeRunLength, RowsAreSoughtBehind256ColoursWhateverIsUsed) {
  std::vector<RGBQUAD> const palette(16);
  Block const dib =
      MakeDib({.width = 4, .height = 1, .bits = 8, .palette = palette, .colors_used = 16},
              [](LONG, LONG) { return 7u; });
  // The block ends before byte 1064, so the row reads as zeros.
  EXPECT_EQ(Encode(dib), (Bytes{253, 0, 0}));
}

TEST_F(EncodeRunLength, OtherDepthsAre5AndLeaveTheBitmapUnlocked) {
  for (WORD const bits : std::initializer_list<WORD>{1, 4, 24}) {
    Block const dib = MakeDib({.bits = bits}, [](LONG, LONG) { return 0u; });
    EXPECT_EQ(session_->ConvertDIB2RLEPDFImage(dib, size_, 5), INVALID_HANDLE_VALUE);
    EXPECT_EQ(session_->PDF_GetLastError(), 5u);
    EXPECT_EQ(test::TakeLocks(dib), 0);
  }
}

TEST_F(EncodeRunLength, BitmapAndResultAreUnlocked) {
  Block const dib = MakeDib({.width = 2, .height = 2, .bits = 8}, [](LONG, LONG) { return 7u; });
  Block const runs(session_->ConvertDIB2RLEPDFImage(dib, size_, 5));
  EXPECT_EQ(test::TakeLocks(dib), 0);
  EXPECT_EQ(test::TakeLocks(runs), 0);
}

// A negative height would be a bitmap with its top row first, which no encoder takes.
TEST_F(EncodeRunLength, NegativeSizesAre10) {
  Block const dib = MakeDib({.width = 2, .height = 2, .bits = 8}, [](LONG, LONG) { return 7u; });
  for (auto const& [width, height] : {std::pair<LONG, LONG>{2, -2}, {-2, 2}}) {
    auto* const header = static_cast<BITMAPINFOHEADER*>(GlobalLock(dib));
    header->biWidth = width;
    header->biHeight = height;
    GlobalUnlock(dib);
    session_->PDF_SetLastError(0);
    EXPECT_EQ(session_->ConvertDIB2RLEPDFImage(dib, size_, 5), INVALID_HANDLE_VALUE);
    EXPECT_EQ(session_->PDF_GetLastError(), 10u) << width << " " << height;
    EXPECT_EQ(test::TakeLocks(dib), 0);
  }
}

// 129 equal pixels take two pairs; so many rows of them take more than a size can count.
TEST_F(EncodeRunLength, SizeOf4GiBIs10AtOnce) {
  Block const dib = MakeDib({.width = 2, .height = 1, .bits = 8}, [](LONG, LONG) { return 7u; });
  auto* const header = static_cast<BITMAPINFOHEADER*>(GlobalLock(dib));
  header->biWidth = 129;
  header->biHeight = 0x7FFFFFFF;
  GlobalUnlock(dib);
  EXPECT_EQ(session_->ConvertDIB2RLEPDFImage(dib, size_, 5), INVALID_HANDLE_VALUE);
  EXPECT_EQ(session_->PDF_GetLastError(), 10u);
}

TEST_F(EncodeRunLength, TopRowComesFirst) {
  Block const dib = MakeDib({.width = 3, .height = 2, .bits = 8}, [](LONG x, LONG y) {
    return y != 0 ? 3u : x == 2 ? 2u : 1u;
  });
  EXPECT_EQ(Encode(dib), (Bytes{255, 1, 0, 2, 254, 3, 0}));
}

TEST_F(EncodeRunLength, FailureLeavesTheSize) {
  auto const black = [](LONG, LONG) { return 0u; };
  Block const other_depth = MakeDib({.bits = 24}, black);
  Block const negative = MakeDib({.bits = 8}, black);
  static_cast<BITMAPINFOHEADER*>(GlobalLock(negative))->biHeight = -1;
  GlobalUnlock(negative);
  Block const huge = MakeDib({.bits = 8}, black);
  auto* const header = static_cast<BITMAPINFOHEADER*>(GlobalLock(huge));
  header->biWidth = 129;
  header->biHeight = 0x7FFFFFFF;
  GlobalUnlock(huge);
  size_ = 77;
  for (HDIB const dib : {other_depth.get(), negative.get(), huge.get()}) {
    EXPECT_EQ(session_->ConvertDIB2RLEPDFImage(dib, size_, 5), INVALID_HANDLE_VALUE);
    EXPECT_EQ(size_, 77u);
  }
}

TEST_F(EncodeRunLength, RowLongerThanTheMemoryIs10) {
  Block const dib = MakeDib({.width = 2, .height = 1, .bits = 8}, [](LONG, LONG) { return 7u; });
  static_cast<BITMAPINFOHEADER*>(GlobalLock(dib))->biWidth = 0x7FFFFFFF;
  GlobalUnlock(dib);
  {
    test::MemoryLimit const limit(size_t{256} << 20);
    EXPECT_EQ(session_->ConvertDIB2RLEPDFImage(dib, size_, 5), INVALID_HANDLE_VALUE);
  }
  EXPECT_EQ(session_->PDF_GetLastError(), 10u);
}

}  // namespace
