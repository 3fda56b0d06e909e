// Flate image data become a bitmap.
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>
#include <tests/support/dib_content.h>
#include <tests/support/session_probe.h>
#include <zlib.h>

#include <memory>

namespace test {
namespace {

Bytes Deflated(Bytes const& raw) {
  uLongf size = compressBound(static_cast<uLong>(raw.size()));
  Bytes packed(size);
  EXPECT_EQ(compress(packed.data(), &size, raw.data(), static_cast<uLong>(raw.size())), Z_OK);
  packed.resize(size);
  return packed;
}

// Bytes without a pattern, the same on every run.
Bytes Noise(size_t size) {
  Bytes bytes(size);
  uint32_t state = 12345;
  for (BYTE& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<BYTE>(state >> 24);
  }
  return bytes;
}

class DecodeFlate : public testing::Test {
 protected:
  Block Decode(Bytes const& data, DWORD width, LONG height, DWORD kind, HGLOBAL palette = nullptr) {
    data_ = MakeBlock(data);
    return Block(
        session_->CreateDIBFromFLATEData(data_, width, static_cast<DWORD>(height), kind, palette));
  }

  std::unique_ptr<CCreatePDF> session_ = std::make_unique<CCreatePDF>();
  Block data_;
};

TEST_F(DecodeFlate, FirstRowOfTheStreamIsTheTopOfThePicture) {
  DibContent const dib = ReadDib(Decode(Deflated({1, 2, 3, 4}), 16, 2, 1));
  EXPECT_EQ(dib.header.biSizeImage, 8u);
  EXPECT_EQ(dib.rows[0], (Bytes{1, 2, 0, 0}));
  EXPECT_EQ(dib.rows[1], (Bytes{3, 4, 0, 0}));
  EXPECT_EQ(TakeLocks(data_), 0);
}

TEST_F(DecodeFlate, NegativeHeightKeepsTheOrderOfTheRows) {
  DibContent const dib = ReadDib(Decode(Deflated({1, 2, 3, 4}), 16, -2, 1));
  EXPECT_EQ(dib.header.biHeight, 2);
  EXPECT_EQ(dib.rows[0], (Bytes{3, 4, 0, 0}));
  EXPECT_EQ(dib.rows[1], (Bytes{1, 2, 0, 0}));
}

TEST_F(DecodeFlate, InvertingDecodeArrayGivesEntries255And0) {
  SessionProbe::DecodeNormal(*session_) = 0;
  EXPECT_EQ(ReadDib(Decode(Deflated({0}), 1, 1, 1)).table, (Bytes{255, 255, 255, 255, 0, 0, 0, 0}));
}

TEST_F(DecodeFlate, BlackIs1GivesEntries255And0) {
  SessionProbe::BlackIs1(*session_) = 1;
  EXPECT_EQ(ReadDib(Decode(Deflated({0}), 1, 1, 1)).table, (Bytes{255, 255, 255, 255, 0, 0, 0, 0}));
}

TEST_F(DecodeFlate, IndexedBitmapTakesItsPalette) {
  Bytes const entries(1024, 0x5A);
  Block const palette = MakeBlock(entries);
  DibContent const dib = ReadDib(Decode(Deflated({7, 8, 9}), 3, 1, 2, palette));
  EXPECT_EQ(dib.table, entries);
  EXPECT_EQ(dib.rows[0], (Bytes{7, 8, 9, 0}));
}

TEST_F(DecodeFlate, RgbBecomesBlueGreenRedAndTheInputStays) {
  Bytes const packed = Deflated({1, 2, 3, 4, 5, 6});
  DibContent const dib = ReadDib(Decode(packed, 2, 1, 4));
  EXPECT_EQ(dib.rows[0], (Bytes{3, 2, 1, 6, 5, 4, 0, 0}));
  EXPECT_EQ(data_.Content(), packed);
}

// 400,000 bytes and 301 pixels: pieces of the inflation end inside rows.
TEST_F(DecodeFlate, LargeRgbPictureComesOutPixelByPixel) {
  size_t const width = 301;
  size_t const height = 443;
  Bytes const raw = Noise(width * height * 3);
  DibContent const dib = ReadDib(Decode(Deflated(raw), DWORD{width}, static_cast<LONG>(height), 4));
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      BYTE const* const rgb = &raw[(y * width + x) * 3];
      ASSERT_EQ(dib.Pixel(x, y), static_cast<DWORD>(rgb[0] << 16 | rgb[1] << 8 | rgb[2]));
    }
  }
}

TEST_F(DecodeFlate, LessDataLeaveRowsOfZeroAtTheBottom) {
  DibContent const dib = ReadDib(Decode(Deflated({1, 2, 3}), 16, 3, 1));
  EXPECT_EQ(dib.rows[0], (Bytes{1, 2, 0, 0}));
  EXPECT_EQ(dib.rows[1], (Bytes{3, 0, 0, 0}));
  EXPECT_EQ(dib.rows[2], (Bytes{0, 0, 0, 0}));
}

TEST_F(DecodeFlate, RgbTripleThatIsCutShortSwapsWithZero) {
  EXPECT_EQ(ReadDib(Decode(Deflated({1, 2, 3, 4}), 2, 1, 4)).rows[0],
            (Bytes{3, 2, 1, 0, 0, 4, 0, 0}));
}

// Kept: the room counts the padding of the rows, which the stream does not have.
TEST_F(DecodeFlate, DataUpToHeightTimesStrideAreTakenAndTheRestDropped) {
  DibContent const dib = ReadDib(Decode(Deflated({1, 2, 3, 4, 5, 6, 7, 8}), 8, 2, 1));
  EXPECT_EQ(dib.rows[0], (Bytes{1, 0, 0, 0}));
  EXPECT_EQ(dib.rows[1], (Bytes{2, 0, 0, 0}));
}

TEST_F(DecodeFlate, OneByteMoreThanHeightTimesStrideIsCode27) {
  EXPECT_EQ(Decode(Deflated(Bytes(9)), 8, 2, 1).get(), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 27u);
  EXPECT_EQ(TakeLocks(data_), 0);
}

TEST_F(DecodeFlate, PictureOfWidth0IsCode27WhateverTheData) {
  for (Bytes const& data : {Deflated({1}), Deflated({}), Bytes{'n', 'o', 't', 'z'}}) {
    session_->PDF_SetLastError(0);
    EXPECT_EQ(Decode(data, 0, 5, 1).get(), nullptr);
    EXPECT_EQ(session_->PDF_GetLastError(), 27u);
    EXPECT_EQ(TakeLocks(data_), 0);
  }
}

TEST_F(DecodeFlate, BombStopsAtThePictureSize) {
  EXPECT_EQ(Decode(Deflated(Bytes(50000000)), 100, 100, 4).get(), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 27u);
}

TEST_F(DecodeFlate, DamagedDataGiveWhatTheyHoldBeforeTheDamage) {
  Bytes const raw = Noise(4000);
  Bytes packed = Deflated(raw);  // noise is stored, so that the place of the damage is known
  packed.resize(1000);
  DibContent const dib = ReadDib(Decode(packed, 400, 10, 2, MakeBlock(Bytes(1024))));
  EXPECT_EQ(dib.rows[0], Bytes(raw.begin(), raw.begin() + 400));
  EXPECT_EQ(dib.rows[1], Bytes(raw.begin() + 400, raw.begin() + 800));
  EXPECT_EQ(dib.Row(2, 100), Bytes(raw.begin() + 800, raw.begin() + 900));
  EXPECT_EQ(dib.rows[9], Bytes(400));
}

TEST_F(DecodeFlate, DataThatAreNoFlateDataGiveABlankBitmap) {
  DibContent const dib = ReadDib(Decode({'n', 'o', ' ', 'z', 'l', 'i', 'b'}, 16, 2, 1));
  EXPECT_EQ(dib.rows, (std::vector<Bytes>{Bytes(4), Bytes(4)}));
  EXPECT_EQ(session_->PDF_GetLastError(), 32u);
}

TEST_F(DecodeFlate, WrongChecksumIsAcceptedLikeOtherDamage) {
  Bytes packed = Deflated({1, 2, 3, 4});
  packed.back() = static_cast<BYTE>(packed.back() + 1);
  EXPECT_EQ(ReadDib(Decode(packed, 16, 2, 1)).rows[1], (Bytes{3, 4, 0, 0}));
}

TEST_F(DecodeFlate, ChecksumBehindAFullPictureThatIsCutOffIsCode27) {
  Bytes packed = Deflated({1, 2, 3, 4});
  packed.pop_back();
  EXPECT_EQ(Decode(packed, 32, 1, 1).get(), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 27u);
}

TEST_F(DecodeFlate, HandlesThatCannotBeLockedGiveNullWithoutACode) {
  for (HGLOBAL const handle : {HGLOBAL{nullptr}, INVALID_HANDLE_VALUE}) {
    EXPECT_EQ(session_->CreateDIBFromFLATEData(handle, 1, 1, 1, nullptr), nullptr);
  }
  EXPECT_EQ(Decode({}, 1, 1, 1).get(), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 32u);
}

TEST_F(DecodeFlate, EmptyFixedBlockGivesNullAndStaysLocked) {
  Block const empty(GlobalAlloc(GPTR, 0));
  EXPECT_EQ(session_->CreateDIBFromFLATEData(empty, 1, 1, 1, nullptr), nullptr);
  EXPECT_EQ(TakeLocks(empty), 1);
}

TEST_F(DecodeFlate, IndexedDataWithoutPaletteGiveNullAndStayLocked) {
  EXPECT_EQ(Decode(Deflated({1}), 1, 1, 2).get(), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 32u);
  EXPECT_EQ(TakeLocks(data_), 1);
}

TEST_F(DecodeFlate, PaletteThatCannotBeLockedIsCode28) {
  EXPECT_EQ(Decode(Deflated({1}), 1, 1, 2, INVALID_HANDLE_VALUE).get(), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 28u);
}

TEST_F(DecodeFlate, BitmapPast4GiBIsNullWithCode10) {
  EXPECT_EQ(Decode(Deflated({1}), 0x10000, 0x10000, 4).get(), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 10u);
}

TEST_F(DecodeFlate, OtherKindsGiveNullWithoutACode) {
  for (DWORD const kind : {0u, 3u, 8u, 0xFFFFFFFFu}) {
    EXPECT_EQ(Decode(Deflated({1}), 1, 1, kind).get(), nullptr);
  }
  EXPECT_EQ(session_->PDF_GetLastError(), 32u);
}

}  // namespace
}  // namespace test
