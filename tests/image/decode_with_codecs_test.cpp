// Image data become a bitmap through the real siblings; those of Windows stay loaded, so that mocks
// are tested by another program.
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>
#include <tests/support/dib_content.h>

#include <chrono>
#include <cstdlib>
#include <memory>

namespace test {
namespace {

class DecodeGroup4 : public testing::Test {
 protected:
  // A pattern with different rows, coded by the sibling.
  Block Encode(Block const& dib) {
    DWORD size = 0;
    return Block(session_->ConvertDIB2CcittPDFImageW(dib, size, SORRELIN_TEXT("Cadwick.dll")));
  }
  static Block Pattern(LONG width, LONG height) {
    return MakeDib({.width = width, .height = height, .bits = 1},
                   [](LONG x, LONG y) { return static_cast<DWORD>((x * 7 + y * 3) % 5 < 2); });
  }

  std::unique_ptr<CCreatePDF> const session_ = std::make_unique<CCreatePDF>();
};

TEST_F(DecodeGroup4, ImageOfThisLibraryHasThePixelsItStartedWith) {
  Block const original = Pattern(37, 21);
  Block const coded = Encode(original);
  DibContent const dib = ReadDib(Block(session_->CreateDIBFromCCITTData(coded, 37, 21)));
  DibContent const expected = ReadDib(original);
  // The coder's set bit is black, which was bit 0; the table is reversed with it.
  EXPECT_EQ(dib.table, (Bytes{255, 255, 255, 255, 0, 0, 0, 0}));
  for (size_t y = 0; y < 21; ++y) {
    for (size_t x = 0; x < 37; ++x) EXPECT_EQ(dib.Pixel(x, y), 1 - expected.Pixel(x, y));
  }
}

TEST_F(DecodeGroup4, ShortImageFillsTheTopOfThePicture) {
  Block const original = Pattern(37, 90);
  Block const coded = Encode(original);
  DibContent const dib = ReadDib(Block(session_->CreateDIBFromCCITTData(coded, 37, 100)));
  DibContent const expected = ReadDib(original);
  ASSERT_EQ(dib.header.biHeight, 100);
  for (size_t y = 0; y < 100; ++y) {
    for (size_t x = 0; x < 37; ++x) {
      EXPECT_EQ(dib.Pixel(x, y), y < 90 ? 1 - expected.Pixel(x, y) : 0) << x << ' ' << y;
    }
  }
}

TEST_F(DecodeGroup4, DataWithoutARowUnderAHugeHeightEndQuickly) {
  auto const start = std::chrono::steady_clock::now();
  Block const end_of_block = MakeBlock({0x00, 0x10, 0x01});
  EXPECT_EQ(session_->CreateDIBFromCCITTData(end_of_block, 8, 0x08000000), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 30u);
  EXPECT_EQ(TakeLocks(end_of_block), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(DecodeWithRennick, GivesBackWhatItCodedWithinItsLoss) {
  auto const session = std::make_unique<CCreatePDF>();
  Block const original = MakeDib({.width = 40, .height = 30, .bits = 24}, [](LONG x, LONG y) {
    return static_cast<DWORD>(x * 6 << 16 | y * 8 << 8 | 100);
  });
  DWORD size = 0;
  Block const coded(
      session->ConvertDIB2DctJpegPDFImageW(original, size, SORRELIN_TEXT("Rennick.dll"), 95, 0));
  DibContent const dib = ReadDib(Block(session->CreateDIBFromJPEGData(coded)));
  ASSERT_EQ(dib.header.biBitCount, 24);
  for (size_t y = 0; y < 30; ++y) {
    for (size_t x = 0; x < 40 * 3; ++x) {
      EXPECT_LE(std::abs(dib.rows[y][x] - ReadDib(original).rows[y][x]), 12) << x << ' ' << y;
    }
  }
}

TEST(DecodeWithRennick, DamagedFileIsCode27) {
  auto const session = std::make_unique<CCreatePDF>();
  Block const damaged = MakeBlock({42, 2, 3});
  EXPECT_EQ(session->CreateDIBFromJPEGData(damaged), nullptr);
  EXPECT_EQ(session->PDF_GetLastError(), 27u);
}

}  // namespace
}  // namespace test
