// Raw image data, and the encoders' dispatch.
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

class EncodeRaw : public testing::Test {
 protected:
  std::unique_ptr<CCreatePDF> session_ = std::make_unique<CCreatePDF>();
  DWORD size_ = 0;

  Block Encode(HDIB dib) { return Block(session_->ConvertDIB2UncompressedPDFImage(dib, size_)); }
};

TEST_F(EncodeRaw, RowsComeFromTheTopWithoutPaddingRedFirst) {
  Block const dib = MakeDib({.width = 3, .height = 2, .bits = 24}, [](LONG x, LONG y) {
    return static_cast<DWORD>(0x102030 + x * 0x010101 + y * 0x404040);
  });
  EXPECT_EQ(Encode(dib).Content(), (Bytes{0x10, 0x20, 0x30, 0x11, 0x21, 0x31, 0x12, 0x22, 0x32,  //
                                          0x50, 0x60, 0x70, 0x51, 0x61, 0x71, 0x52, 0x62, 0x72}));
  EXPECT_EQ(size_, 18u);
}

TEST_F(EncodeRaw, BilevelRowsAreNotInverted) {
  Block const dib = MakeDib({.width = 9, .height = 1, .bits = 1},
                            [](LONG x, LONG) { return x == 0 || x == 8 ? 1u : 0u; });
  EXPECT_EQ(Encode(dib).Content(), (Bytes{0x80, 0x80}));
}

TEST_F(EncodeRaw, RowsBeginBehindTheColoursInUseOrThoseOfTheDepth) {
  for (DWORD const used : {0u, 2u}) {
    std::vector<RGBQUAD> const palette(used != 0 ? used : 256);
    Block const dib =
        MakeDib({.width = 2, .height = 1, .bits = 8, .palette = palette, .colors_used = used},
                [](LONG x, LONG) { return static_cast<DWORD>(7 + x); });
    EXPECT_EQ(Encode(dib).Content(), (Bytes{7, 8})) << used;
  }
}

TEST_F(EncodeRaw, NullAndBadHandlesGiveMinus1WithoutACode) {
  EXPECT_EQ(session_->ConvertDIB2UncompressedPDFImage(nullptr, size_), INVALID_HANDLE_VALUE);
  EXPECT_EQ(session_->ConvertDIB2UncompressedPDFImage(&size_, size_), INVALID_HANDLE_VALUE);
  EXPECT_EQ(session_->ConvertDIB2FlatePDFImage(&size_, size_, 4, 6), INVALID_HANDLE_VALUE);
  EXPECT_EQ(session_->ConvertDIB2RLEPDFImage(&size_, size_, 5), INVALID_HANDLE_VALUE);
  EXPECT_EQ(session_->PDF_GetLastError(), 32u);
}

TEST_F(EncodeRaw, DepthWithoutARowIs10AndLeavesTheBitmapLocked) {
  Block const dib = MakeDib({.bits = 4}, [](LONG, LONG) { return 0u; });
  EXPECT_EQ(session_->ConvertDIB2UncompressedPDFImage(dib, size_), INVALID_HANDLE_VALUE);
  EXPECT_EQ(session_->PDF_GetLastError(), 10u);
  SetLastError(99);
  EXPECT_EQ(GlobalUnlock(dib), 0);
  EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
}

TEST_F(EncodeRaw, BlockThatEndsWithinAPixelKeepsWhatItHas) {
  // The row's last byte in the block is the second pixel's blue.
  Block const dib =
      MakeDib({.width = 2, .height = 1, .bits = 24}, [](LONG, LONG) { return 0x112233u; });
  GlobalReAlloc(dib, sizeof(BITMAPINFOHEADER) + 4, GMEM_MOVEABLE);
  EXPECT_EQ(Encode(dib).Content(), (Bytes{0x11, 0x22, 0x33, 0, 0, 0x33}));
}

TEST_F(EncodeRaw, NarrowDispatchTakesIdentifiersAndFlagsOnly) {
  Block const dib = MakeDib({.bits = 24}, [](LONG, LONG) { return 0u; });
  Block const raw(session_->ConvertDIB2PDFImage(dib, size_, PDF_COMPRESSION_FLAG_NONE, "", 0));
  EXPECT_EQ(size_, 3u);
  for (DWORD const compression : {1u, 2u, 3u, 8u, 513u, 64u}) {
    session_->PDF_SetLastError(0);
    EXPECT_EQ(session_->ConvertDIB2PDFImage(dib, size_, compression, "", 0), INVALID_HANDLE_VALUE);
    EXPECT_EQ(session_->PDF_GetLastError(), 15u) << compression;
  }
}

// The header alone asks for 2^32 bytes.
TEST_F(EncodeRaw, ImageOf4GiBIs10AndLeavesSizeAndLock) {
  size_ = 77;
  for (bool const flate : {false, true}) {
    Block const dib = MakeDib({.bits = 8}, [](LONG, LONG) { return 0u; });
    auto* const header = static_cast<BITMAPINFOHEADER*>(GlobalLock(dib));
    header->biWidth = 65536;
    header->biHeight = 65536;
    GlobalUnlock(dib);
    session_->PDF_SetLastError(0);
    EXPECT_EQ(flate ? session_->ConvertDIB2FlatePDFImage(dib, size_, 4, 6)
                    : session_->ConvertDIB2UncompressedPDFImage(dib, size_),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(session_->PDF_GetLastError(), 10u);
    EXPECT_EQ(size_, 77u);
    EXPECT_EQ(test::TakeLocks(dib), 1);
  }
}

TEST_F(EncodeRaw, OtherDepthsAre10RawAndWithFlate) {
  for (WORD const bits : std::initializer_list<WORD>{4, 16, 32}) {
    Block const dib = MakeDib({.bits = bits}, [](LONG, LONG) { return 0u; });
    size_ = 77;
    session_->PDF_SetLastError(0);
    EXPECT_EQ(session_->ConvertDIB2UncompressedPDFImage(dib, size_), INVALID_HANDLE_VALUE);
    EXPECT_EQ(session_->PDF_GetLastError(), 10u) << bits;
    session_->PDF_SetLastError(0);
    EXPECT_EQ(session_->ConvertDIB2FlatePDFImage(dib, size_, 4, 6), INVALID_HANDLE_VALUE);
    EXPECT_EQ(session_->PDF_GetLastError(), 10u) << bits;
    EXPECT_EQ(size_, 77u) << bits;
  }
}

TEST_F(EncodeRaw, HandleThatCannotBeReadLeavesTheSize) {
  size_ = 77;
  for (HDIB const bad : {HDIB{nullptr}, HDIB{INVALID_HANDLE_VALUE}}) {
    EXPECT_EQ(session_->ConvertDIB2UncompressedPDFImage(bad, size_), INVALID_HANDLE_VALUE);
    EXPECT_EQ(session_->ConvertDIB2FlatePDFImage(bad, size_, 4, 6), INVALID_HANDLE_VALUE);
    EXPECT_EQ(session_->ConvertDIB2RLEPDFImage(bad, size_, 5), INVALID_HANDLE_VALUE);
    EXPECT_EQ(size_, 77u);
  }
}

}  // namespace
