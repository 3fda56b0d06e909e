// Run-length image data become a bitmap.
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>
#include <tests/support/dib_content.h>
#include <tests/support/session_probe.h>

#include <memory>

namespace test {
namespace {

class DecodeRunLength : public testing::Test {
 protected:
  Block Decode(Bytes const& data, DWORD width, DWORD height, DWORD kind,
               HGLOBAL palette = nullptr) {
    data_ = MakeBlock(data);
    return Block(session_->CreateDIBFromRLEData(data_, width, height, kind, palette));
  }
  DibContent DecodeIndexed(Bytes const& data, DWORD width, DWORD height) {
    Block const palette = MakeBlock(Bytes(1024));
    return ReadDib(Decode(data, width, height, 2, palette));
  }
  // Decodes into a block of the caller's and gives the block's bytes back.
  Bytes DecodeInto(Bytes const& dib, Bytes data) {
    Block const block = MakeBlock(dib);
    EXPECT_EQ(session_->DecriptRLEData(data.data(), data.size(), block), 1);
    EXPECT_EQ(TakeLocks(block), 0);
    return block.Content();
  }

  std::unique_ptr<CCreatePDF> session_ = std::make_unique<CCreatePDF>();
  Block data_;
};

// A bitmap's header, and `behind` bytes of 0xEE.
Bytes TamperedDib(LONG width, LONG height, WORD bits, DWORD size, size_t behind) {
  BITMAPINFOHEADER header{};
  header.biSize = size;
  header.biWidth = width;
  header.biHeight = height;
  header.biBitCount = bits;
  Bytes bytes(sizeof header + behind, 0xEE);
  std::memcpy(bytes.data(), &header, sizeof header);
  return bytes;
}

TEST_F(DecodeRunLength, RunsFillTheRowsFromTheTop) {
  DibContent const dib = DecodeIndexed({255, 7, 0, 8, 254, 9}, 3, 2);
  EXPECT_EQ(dib.rows[0], (Bytes{7, 7, 8, 0}));
  EXPECT_EQ(dib.rows[1], (Bytes{9, 9, 9, 0}));
  EXPECT_EQ(TakeLocks(data_), 0);
}

TEST_F(DecodeRunLength, LongestRunOfTheEncoderIs129WhichRepeats128Times) {
  DibContent const dib = DecodeIndexed({129, 5, 129, 6}, 256, 1);
  EXPECT_EQ(dib.Row(0, 128), Bytes(128, 5));
  EXPECT_EQ(dib.Pixel(128, 0), 6u);
  EXPECT_EQ(dib.Pixel(255, 0), 6u);
}

TEST_F(DecodeRunLength, StreamThatBeginsWithTheEndMarkIsBlankAndASuccess) {
  EXPECT_EQ(DecodeIndexed({128, 0, 1, 0, 2}, 2, 2).rows, (std::vector<Bytes>{Bytes(4), Bytes(4)}));
}

TEST_F(DecodeRunLength, EndMarkBehindARowEndsThePicture) {
  DibContent const dib = DecodeIndexed({255, 7, 128, 255, 8, 255, 9}, 2, 3);
  EXPECT_EQ(dib.rows, (std::vector<Bytes>{{7, 7, 0, 0}, Bytes(4), Bytes(4)}));
}

TEST_F(DecodeRunLength, InsideARow128Repeats129Times) {
  DibContent const dib = DecodeIndexed({0, 1, 128, 2}, 130, 1);
  EXPECT_EQ(dib.Pixel(0, 0), 1u);
  EXPECT_EQ(dib.Pixel(1, 0), 2u);
  EXPECT_EQ(dib.Pixel(129, 0), 2u);
}

// Kept: the input moves on by 2 bytes after a literal run of three, whose other bytes are then
// read once more, as a pair.
TEST_F(DecodeRunLength, LiteralRunOfSeveralBytesIsCopiedButTheInputMovesOnByTwo) {
  DibContent const dib = DecodeIndexed({2, 10, 0, 30, 0, 40}, 5, 1);
  EXPECT_EQ(dib.Row(0, 5), (Bytes{10, 0, 30, 30, 40}));
}

// Each row takes the literal run of two and counts 3 bytes for it; 6 of 8 bytes are then gone.
TEST_F(DecodeRunLength, LiteralRunsTakeMoreOffTheCountThanTheyMoveTheInput) {
  DibContent const dib = DecodeIndexed({1, 5, 1, 6, 255, 7}, 2, 3);
  EXPECT_EQ(dib.rows[0], (Bytes{5, 1, 0, 0}));
  EXPECT_EQ(dib.rows[1], (Bytes{6, 255, 0, 0}));
  EXPECT_EQ(dib.rows[2], Bytes(4));  // 6 bytes less two times 3: no row is begun
}

TEST_F(DecodeRunLength, RunPastARowWritesOnIntoTheRowAboveInThePicture) {
  DibContent const dib = DecodeIndexed({253, 1, 249, 2}, 4, 2);
  EXPECT_EQ(dib.rows[1], Bytes(4, 2));
  EXPECT_EQ(dib.rows[0], Bytes(4, 2));
}

TEST_F(DecodeRunLength, RunPastTheLastByteOfTheBlockIsDropped) {
  EXPECT_EQ(DecodeIndexed({129, 3}, 4, 1).rows[0], Bytes(4, 3));
}

TEST_F(DecodeRunLength, DataThatEndInARowLeaveTheRestZero) {
  DibContent const dib = DecodeIndexed({255, 7}, 4, 2);
  EXPECT_EQ(dib.rows[0], (Bytes{7, 7, 0, 0}));
  EXPECT_EQ(dib.rows[1], Bytes(4));
}

TEST_F(DecodeRunLength, ValueBehindTheLastByteIsZero) {
  EXPECT_EQ(DecodeIndexed({255, 7, 254}, 5, 1).Row(0, 5), (Bytes{7, 7, 0, 0, 0}));
}

TEST_F(DecodeRunLength, LiteralRunBehindTheLastByteIsZero) {
  EXPECT_EQ(DecodeIndexed({4, 7, 8}, 5, 1).Row(0, 5), (Bytes{7, 8, 0, 0, 0}));
}

TEST_F(DecodeRunLength, OneBitBitmapHasColours0And255WhateverThePolarity) {
  for (DWORD const state : {0u, 1u}) {
    SessionProbe::BlackIs1(*session_) = state;
    SessionProbe::DecodeNormal(*session_) = state;
    EXPECT_EQ(ReadDib(Decode({0, 0xAA}, 1, 1, 1)).table, (Bytes{0, 0, 0, 0, 255, 255, 255, 255}));
  }
}

TEST_F(DecodeRunLength, WidthCountsBytesAtEveryDepth) {
  DibContent const bilevel = ReadDib(Decode({0, 1, 0, 2, 0, 3, 0, 4, 0, 5}, 5, 1, 1));
  EXPECT_EQ(bilevel.rows[0], (Bytes{1, 2, 3, 4}));  // the fifth byte is after the block
  DibContent const rgb = ReadDib(Decode({0, 1, 0, 2, 0, 3}, 2, 1, 4));
  EXPECT_EQ(rgb.rows[0], (Bytes{1, 2, 0, 0, 0, 0, 0, 0}));
}

TEST_F(DecodeRunLength, IndexedBitmapTakesItsPalette) {
  Block const palette = MakeBlock({1, 2, 3, 4});
  Bytes expected(1024);
  std::copy_n(Bytes{1, 2, 3, 4}.begin(), 4, expected.begin());
  EXPECT_EQ(ReadDib(Decode({0, 9}, 1, 1, 2, palette)).table, expected);
}

TEST_F(DecodeRunLength, FailuresBeforeTheHeaderLeaveTheDataLocked) {
  EXPECT_EQ(Decode({0, 1}, 1, 1, 2).get(), nullptr);
  EXPECT_EQ(TakeLocks(data_), 1);
  EXPECT_EQ(session_->PDF_GetLastError(), 32u);
}

TEST_F(DecodeRunLength, EmptyFixedBlockGivesNullAndStaysLocked) {
  Block const empty(GlobalAlloc(GPTR, 0));
  EXPECT_EQ(session_->CreateDIBFromRLEData(empty, 1, 1, 1, nullptr), nullptr);
  EXPECT_EQ(TakeLocks(empty), 1);
  EXPECT_EQ(session_->PDF_GetLastError(), 32u);
}

TEST_F(DecodeRunLength, HandlesThatCannotBeLockedGiveNullWithoutACode) {
  for (HGLOBAL const handle : {HGLOBAL{nullptr}, INVALID_HANDLE_VALUE}) {
    EXPECT_EQ(session_->CreateDIBFromRLEData(handle, 1, 1, 1, nullptr), nullptr);
  }
  EXPECT_EQ(session_->PDF_GetLastError(), 32u);
}

TEST_F(DecodeRunLength, BitmapPast4GiBIsCode10AndTheDataAreUnlocked) {
  for (DWORD const height : {0x80000000u, 0xFFFFFFFFu, 0x40000000u}) {
    session_->PDF_SetLastError(0);
    EXPECT_EQ(Decode({0, 1}, 5, height, 4).get(), nullptr);
    EXPECT_EQ(session_->PDF_GetLastError(), 10u);
    EXPECT_EQ(TakeLocks(data_), 0);
  }
}

TEST_F(DecodeRunLength, PaletteThatCannotBeLockedIsCode28) {
  EXPECT_EQ(Decode({0, 1}, 1, 1, 2, INVALID_HANDLE_VALUE).get(), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 28u);
}

TEST_F(DecodeRunLength, HugePictureOfTwoBytesOfDataIsQuickAndBlank) {
  Block const palette = MakeBlock(Bytes(1024));
  Block const dib = Decode({0, 1, 0}, 20000, 20000, 2, palette);
  ASSERT_NE(dib.get(), nullptr);
  BYTE const* const bytes = static_cast<BYTE const*>(GlobalLock(dib));
  EXPECT_EQ(bytes[1064 + size_t{19999} * 20000], 1);
  EXPECT_EQ(bytes[1064], 0);
}

TEST_F(DecodeRunLength, DecriptRefusesMissingArguments) {
  BYTE data[] = {0, 1};
  Block const dib = MakeDib({.width = 1, .height = 1, .bits = 8}, [](LONG, LONG) { return 0; });
  EXPECT_EQ(session_->DecriptRLEData(nullptr, 2, dib), 0);
  EXPECT_EQ(session_->DecriptRLEData(data, 0, dib), 0);
  EXPECT_EQ(session_->DecriptRLEData(data, 2, nullptr), 0);
  EXPECT_EQ(session_->PDF_GetLastError(), 32u);
}

TEST_F(DecodeRunLength, DecriptIntoABlockThatCannotBeLockedIsCode2) {
  BYTE data[] = {0, 1};
  EXPECT_EQ(session_->DecriptRLEData(data, 2, INVALID_HANDLE_VALUE), 0);
  EXPECT_EQ(session_->PDF_GetLastError(), 2u);
}

TEST_F(DecodeRunLength, DecriptPutsZerosOverOldPixelsWhereItReadsBehindTheData) {
  Block const dib = MakeDib({.width = 3, .height = 3, .bits = 8}, [](LONG, LONG) { return 0xEE; });
  Bytes data{0, 1, 0};
  EXPECT_EQ(session_->DecriptRLEData(data.data(), data.size(), dib), 1);
  DibContent const content = ReadDib(dib);
  EXPECT_EQ(content.rows[0], (Bytes{1, 0, 0, 0}));
  EXPECT_EQ(content.rows[1], (Bytes{0, 0, 0, 0}));
  EXPECT_EQ(content.rows[2], (Bytes{0, 0, 0, 0}));
}

TEST_F(DecodeRunLength, DecriptLeavesRowsAloneWhenTheDataEndWithARow) {
  Block const dib = MakeDib({.width = 3, .height = 2, .bits = 8}, [](LONG, LONG) { return 0xEE; });
  Bytes data{254, 1};
  EXPECT_EQ(session_->DecriptRLEData(data.data(), data.size(), dib), 1);
  EXPECT_EQ(ReadDib(dib).rows[1], (Bytes{0xEE, 0xEE, 0xEE, 0}));
}

TEST_F(DecodeRunLength, DecriptFindsTheRowsBehindTheHeaderSizeAndTheTable) {
  Bytes const dib = TamperedDib(2, 1, 8, 44, 4 + 1024 + 4);
  Bytes expected = dib;
  expected[44 + 1024] = expected[44 + 1025] = 9;
  EXPECT_EQ(DecodeInto(dib, {255, 9}), expected);
}

TEST_F(DecodeRunLength, DecriptTakesOtherDepthsForRowsWithoutSizeOrTable) {
  Bytes const dib = TamperedDib(2, 2, 16, 40, 4);
  Bytes expected = dib;
  expected[40] = expected[41] = 8;  // both rows are at the same place
  EXPECT_EQ(DecodeInto(dib, {255, 9, 255, 8}), expected);
}

TEST_F(DecodeRunLength, DecriptIntoATamperedHeaderStaysInTheBlock) {
  struct {
    LONG width, height;
    WORD bits;
    DWORD size;
  } const headers[] = {{100000, 100000, 8, 40},
                       {0x7FFFFFFF, 0x7FFFFFFF, 24, 40},
                       {0x7FFFFFFF, 0x7FFFFFFF, 1, 0},
                       {4, 4, 8, 0xFFFFFFFF},
                       {-5, 100, 8, 40},
                       {5, -100, 8, 40},
                       {0, 0x7FFFFFFF, 8, 40},
                       {0x7FFFFFFF, 0x7FFFFFFF, 16, 0}};
  for (auto const& h : headers) {
    Bytes const dib = TamperedDib(h.width, h.height, h.bits, h.size, 64);
    EXPECT_EQ(DecodeInto(dib, {255, 9, 200, 8, 127, 1, 2}).size(), dib.size());
  }
}

TEST_F(DecodeRunLength, DecriptIntoABlockShorterThanAHeaderChangesNothing) {
  EXPECT_EQ(DecodeInto({40, 0, 0, 0, 2}, {255, 9}), (Bytes{40, 0, 0, 0, 2}));
}

}  // namespace
}  // namespace test
