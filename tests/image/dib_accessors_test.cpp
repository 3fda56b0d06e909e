// Depth, size, resolution, polarity and palette of a bitmap.
#include <gtest/gtest.h>
#include <sorrelin/platform/error.h>

#include <memory>

#include "tests/support/dib.h"
#include "tests/support/dib_content.h"
#include "tests/support/session_probe.h"

namespace {

using test::Block;
using test::Bytes;
using test::MakeDib;

class DibAccessors : public testing::Test {
 protected:
  std::unique_ptr<CCreatePDF> session_ = std::make_unique<CCreatePDF>();

  POINT DpiOf(LONG x, LONG y) {
    return session_->GetDIBDPI(
        MakeDib({.bits = 24, .x_per_metre = x, .y_per_metre = y}, [](LONG, LONG) { return 0u; }));
  }
  int OrderOf(std::vector<RGBQUAD> palette) {
    int order = 99;
    session_->CheckDIBPaletteOrder(
        MakeDib({.bits = 1, .palette = palette}, [](LONG, LONG) { return 0u; }), order);
    return order;
  }
};

TEST_F(DibAccessors, SizeAndDepthComeFromTheHeader) {
  Block const dib = MakeDib({.width = 17, .height = 9, .bits = 8}, [](LONG, LONG) { return 0u; });
  EXPECT_EQ(session_->GetDIBBitsPerPixel(dib), 8);
  EXPECT_EQ(session_->GetDIBImageSize(dib).x, 17);
  EXPECT_EQ(session_->GetDIBImageSize(dib).y, 9);
}

void ExpectZerosOf(HDIB bad) {
  auto const session = std::make_unique<CCreatePDF>();
  EXPECT_EQ(session->GetDIBBitsPerPixel(bad), 0);
  EXPECT_EQ(session->GetDIBImageSize(bad).x, 0);
  EXPECT_EQ(session->GetDIBDPI(bad).x, 0);
  EXPECT_EQ(session->GetDIBDPI(bad).y, 0);
  DWORD size = 0;
  EXPECT_EQ(session->ExtractPaletteFromDIB(bad, &size), INVALID_HANDLE_VALUE);
  EXPECT_EQ(session->PDF_GetLastError(), 32u);
}

TEST_F(DibAccessors, BadHandlesReadAsZeroAndSetNoCode) {
  ExpectZerosOf(nullptr);
  ExpectZerosOf(INVALID_HANDLE_VALUE);
}

TEST_F(DibAccessors, AddressReadsAsZeroAndSetsNoCode) { ExpectZerosOf(session_.get()); }

TEST_F(DibAccessors, ResolutionIsRoundedToDotsPerInch) {
  struct Row {
    LONG x, y, dpi_x, dpi_y;
  };
  for (Row const& row : {Row{0, 0, 96, 96}, Row{0, 11811, 300, 300}, Row{3937, 0, 100, 100},
                         Row{2835, 3937, 72, 100}, Row{1, 1, 96, 96}, Row{20, 19, 1, 1},
                         Row{-3937, 3937, -99, 100}}) {
    POINT const dpi = DpiOf(row.x, row.y);
    EXPECT_EQ(dpi.x, row.dpi_x) << row.x;
    EXPECT_EQ(dpi.y, row.dpi_y) << row.y;
  }
}

TEST_F(DibAccessors, OrderIs1WhenTheFirstColourIsBlack) {
  EXPECT_EQ(OrderOf({test::kWhite, test::kBlack}), 0);
  EXPECT_EQ(OrderOf({test::kBlack, test::kWhite}), 1);
  EXPECT_EQ(OrderOf({{64, 0, 0, 0}, test::kWhite}), 0);
  EXPECT_EQ(OrderOf({{0, 0, 0, 255}, test::kBlack}), 1);
}

TEST_F(DibAccessors, OrderOfABadHandleIs2AndLeavesTheResult) {
  int order = 99;
  EXPECT_EQ(session_->CheckDIBPaletteOrder(nullptr, order), 0);
  EXPECT_EQ(session_->PDF_GetLastError(), 2u);
  EXPECT_EQ(session_->CheckDIBPaletteOrder(INVALID_HANDLE_VALUE, order), 0);
  EXPECT_EQ(session_->PDF_GetLastError(), 2u);
  EXPECT_EQ(order, 99);
}

TEST_F(DibAccessors, OrderOfAnAddressIs10AndLeavesTheResult) {
  int order = 99;
  EXPECT_EQ(session_->CheckDIBPaletteOrder(session_.get(), order), 0);
  EXPECT_EQ(session_->PDF_GetLastError(), 10u);
  EXPECT_EQ(order, 99);
}

TEST_F(DibAccessors, PaletteIsRedGreenBlueTriples) {
  Block const dib = MakeDib({.bits = 8, .palette = {{1, 2, 3, 4}, {5, 6, 7, 8}}, .colors_used = 2},
                            [](LONG, LONG) { return 0u; });
  DWORD size = 0;
  Block const palette(session_->ExtractPaletteFromDIB(dib, &size));
  EXPECT_EQ(size, 6u);
  EXPECT_EQ(palette.Content(), (Bytes{3, 2, 1, 7, 6, 5}));
  EXPECT_EQ(test::TakeLocks(palette), 0);
  EXPECT_EQ(test::TakeLocks(dib), 0);
}

TEST_F(DibAccessors, PaletteHasTheUsedColoursOrThoseOfTheDepth) {
  struct Row {
    WORD bits;
    DWORD used;
    DWORD bytes;
  };
  for (Row const& row : {Row{8, 16, 48}, Row{8, 0, 768}, Row{1, 0, 6}, Row{4, 0, 48}}) {
    Block const dib =
        MakeDib({.bits = row.bits, .colors_used = row.used}, [](LONG, LONG) { return 0u; });
    DWORD size = 0;
    Block const palette(session_->ExtractPaletteFromDIB(dib, &size));
    EXPECT_EQ(size, row.bytes);
    EXPECT_EQ(GlobalSize(palette), row.bytes);
  }
}

TEST_F(DibAccessors, PaletteOfA24BitBitmapIs10AndLeavesItLocked) {
  Block const dib = MakeDib({.bits = 24}, [](LONG, LONG) { return 0u; });
  DWORD size = 0;
  EXPECT_EQ(session_->ExtractPaletteFromDIB(dib, &size), INVALID_HANDLE_VALUE);
  EXPECT_EQ(session_->PDF_GetLastError(), 10u);
  SetLastError(99);
  EXPECT_EQ(GlobalUnlock(dib), 0);
  EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
}

TEST_F(DibAccessors, PaletteThatTheBlockLacksReadsAsZeros) {
  Block const dib = MakeDib({.bits = 8, .palette = {{1, 2, 3, 4}}, .colors_used = 3},
                            [](LONG, LONG) { return 0u; });
  GlobalReAlloc(dib, sizeof(BITMAPINFOHEADER) + 6, GMEM_MOVEABLE);
  DWORD size = 0;
  Block const palette(session_->ExtractPaletteFromDIB(dib, &size));
  EXPECT_EQ(palette.Content(), (Bytes{3, 2, 1, 0, 0, 0, 0, 0, 0}));
}

TEST_F(DibAccessors, PaletteOf4GiBIs10) {
  Block const dib = MakeDib({.bits = 8, .colors_used = 0xFFFFFFFF}, [](LONG, LONG) { return 0u; });
  DWORD size = 77;
  EXPECT_EQ(session_->ExtractPaletteFromDIB(dib, &size), INVALID_HANDLE_VALUE);
  EXPECT_EQ(session_->PDF_GetLastError(), 10u);
  EXPECT_EQ(size, 77u);
}

TEST_F(DibAccessors, PaletteOfADepthWithoutColoursIs10) {
  for (WORD const bits : std::initializer_list<WORD>{16, 32}) {
    session_->PDF_SetLastError(0);
    Block const dib = MakeDib({.bits = bits}, [](LONG, LONG) { return 0u; });
    DWORD size = 77;
    EXPECT_EQ(session_->ExtractPaletteFromDIB(dib, &size), INVALID_HANDLE_VALUE) << bits;
    EXPECT_EQ(session_->PDF_GetLastError(), 10u) << bits;
    EXPECT_EQ(size, 77u) << bits;
  }
}

TEST_F(DibAccessors, FailedPaletteLeavesTheSize) {
  Block const color = MakeDib({.bits = 24}, [](LONG, LONG) { return 0u; });
  DWORD size = 77;
  for (HDIB const dib : {HDIB{nullptr}, HDIB{INVALID_HANDLE_VALUE}, HDIB{color.get()}}) {
    EXPECT_EQ(session_->ExtractPaletteFromDIB(dib, &size), INVALID_HANDLE_VALUE);
    EXPECT_EQ(size, 77u);
  }
}

// 54546084.63 dots and -54546084.66, to each of which half a dot is added before the cut.
TEST_F(DibAccessors, HighestAndLowestResolutionsFit) {
  POINT const dpi = DpiOf(2147483647, -2147483647 - 1);
  EXPECT_EQ(dpi.x, 54546085);
  EXPECT_EQ(dpi.y, -54546084);
}

}  // namespace
