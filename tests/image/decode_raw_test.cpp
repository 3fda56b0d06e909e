// Raw image data become a bitmap.
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/image/rebuilt_dib.h>
#include <tests/support/dib_content.h>
#include <tests/support/session_probe.h>

#include <memory>

namespace test {
namespace {

class DecodeRaw : public testing::Test {
 protected:
  Block Decode(Bytes const& data, DWORD width, LONG height, int kind, HGLOBAL palette = nullptr) {
    data_ = MakeBlock(data);
    return Block(session_->CreateDIBFromUncompressedData(data_, width, static_cast<DWORD>(height),
                                                         kind, palette));
  }
  void SetPolarity(DWORD black_is_1, DWORD decode_normal) {
    SessionProbe::BlackIs1(*session_) = black_is_1;
    SessionProbe::DecodeNormal(*session_) = decode_normal;
  }

  std::unique_ptr<CCreatePDF> session_ = std::make_unique<CCreatePDF>();
  Block data_;
};

TEST_F(DecodeRaw, HeaderDescribesTheBitmapAndLeavesTheResolutionOpen) {
  BITMAPINFOHEADER const header = ReadDib(Decode({1, 2, 3, 4, 5, 6}, 9, 3, 1)).header;
  EXPECT_EQ(header.biSize, 40u);
  EXPECT_EQ(header.biWidth, 9);
  EXPECT_EQ(header.biHeight, 3);
  EXPECT_EQ(header.biPlanes, 1);
  EXPECT_EQ(header.biBitCount, 1);
  EXPECT_EQ(header.biCompression, 0u);
  EXPECT_EQ(header.biSizeImage, 12u);  // 3 rows of 4 bytes
  EXPECT_EQ(header.biXPelsPerMeter, 0);
  EXPECT_EQ(header.biYPelsPerMeter, 0);
  EXPECT_EQ(header.biClrUsed, 0u);
  EXPECT_EQ(header.biClrImportant, 0u);
}

TEST_F(DecodeRaw, FirstRowOfTheStreamIsTheTopOfThePicture) {
  DibContent const dib = ReadDib(Decode({1, 2, 3, 4}, 16, 2, 1));
  EXPECT_EQ(dib.rows[0], (Bytes{1, 2, 0, 0}));
  EXPECT_EQ(dib.rows[1], (Bytes{3, 4, 0, 0}));
  EXPECT_EQ(TakeLocks(data_), 0);
}

TEST_F(DecodeRaw, NegativeHeightKeepsTheOrderOfTheRows) {
  DibContent const dib = ReadDib(Decode({1, 2, 3, 4}, 16, -2, 1));
  EXPECT_EQ(dib.header.biHeight, 2);
  EXPECT_EQ(dib.rows[1], (Bytes{1, 2, 0, 0}));
  EXPECT_EQ(dib.rows[0], (Bytes{3, 4, 0, 0}));
}

struct Polarity {
  DWORD black_is_1;
  DWORD decode_normal;
  BYTE first;
  BYTE second;
};

class DecodeRawPolarity : public DecodeRaw, public testing::WithParamInterface<Polarity> {};

TEST_P(DecodeRawPolarity, GivesAllFourBytesOfBothEntries) {
  Polarity const& p = GetParam();
  SetPolarity(p.black_is_1, p.decode_normal);
  EXPECT_EQ(ReadDib(Decode({0}, 1, 1, 1)).table,
            (Bytes{p.first, p.first, p.first, p.first, p.second, p.second, p.second, p.second}));
}

INSTANTIATE_TEST_SUITE_P(Matrix, DecodeRawPolarity,
                         testing::Values(Polarity{0, 1, 0, 255}, Polarity{0, 0, 255, 0},
                                         Polarity{1, 1, 255, 0}, Polarity{1, 0, 0, 255}));

TEST_F(DecodeRaw, IndexedBitmapTakes1024BytesOfPalette) {
  Bytes entries(1100);
  for (size_t i = 0; i < entries.size(); ++i) entries[i] = static_cast<BYTE>(i * 7);
  Block const palette = MakeBlock(entries);
  DibContent const dib = ReadDib(Decode({10, 11, 12, 20, 21, 22}, 3, 2, 2, palette));
  EXPECT_EQ(dib.header.biBitCount, 8);
  EXPECT_EQ(dib.table, Bytes(entries.begin(), entries.begin() + 1024));
  EXPECT_EQ(dib.rows[0], (Bytes{10, 11, 12, 0}));
  EXPECT_EQ(dib.rows[1], (Bytes{20, 21, 22, 0}));
  EXPECT_EQ(TakeLocks(palette), 0);
}

TEST_F(DecodeRaw, PaletteShorterThanTheTableIsFilledUpWithZero) {
  Block const palette = MakeBlock({1, 2, 3, 0, 4, 5, 6, 0});
  Bytes expected(1024);
  std::copy_n(Bytes{1, 2, 3, 0, 4, 5, 6, 0}.begin(), 8, expected.begin());
  EXPECT_EQ(ReadDib(Decode({1}, 1, 1, 2, palette)).table, expected);
}

TEST_F(DecodeRaw, RgbBecomesBlueGreenRed) {
  DibContent const dib = ReadDib(Decode({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, 2, 2, 4));
  EXPECT_EQ(dib.header.biBitCount, 24);
  EXPECT_TRUE(dib.table.empty());
  EXPECT_EQ(dib.rows[0], (Bytes{3, 2, 1, 6, 5, 4, 0, 0}));
  EXPECT_EQ(dib.rows[1], (Bytes{9, 8, 7, 12, 11, 10, 0, 0}));
}

TEST_F(DecodeRaw, RgbLeavesTheCallersBlockWithItsBytesSwapped) {
  Decode({1, 2, 3, 4, 5, 6, 7, 8, 9}, 2, 1, 4);
  EXPECT_EQ(data_.Content(), (Bytes{3, 2, 1, 6, 5, 4, 7, 8, 9}));
}

TEST_F(DecodeRaw, FlippedRgbKeepsTheOrderOfTheRows) {
  DibContent const dib = ReadDib(Decode({1, 2, 3, 4, 5, 6}, 1, -2, 4));
  EXPECT_EQ(dib.rows[1], (Bytes{3, 2, 1, 0}));
  EXPECT_EQ(dib.rows[0], (Bytes{6, 5, 4, 0}));
}

TEST_F(DecodeRaw, BytesThatTheDataLackAreZero) {
  DibContent const dib = ReadDib(Decode({1, 2, 3}, 16, 3, 1));
  EXPECT_EQ(dib.rows[0], (Bytes{1, 2, 0, 0}));
  EXPECT_EQ(dib.rows[1], (Bytes{3, 0, 0, 0}));
  EXPECT_EQ(dib.rows[2], (Bytes{0, 0, 0, 0}));
}

// The exchange takes the third byte from after the data, where all is 0, and puts the first byte
// there, where it is lost. Only what the block then holds goes into the row.
TEST_F(DecodeRaw, TripleCutAfterItsFirstByteLosesIt) {
  DibContent const dib = ReadDib(Decode({1, 2, 3, 0xA1}, 2, 1, 4));
  EXPECT_EQ(data_.Content(), (Bytes{3, 2, 1, 0}));
  EXPECT_EQ(dib.rows[0], (Bytes{3, 2, 1, 0, 0, 0, 0, 0}));
}

TEST_F(DecodeRaw, TripleCutAfterItsSecondByteKeepsThatByteAlone) {
  DibContent const dib = ReadDib(Decode({1, 2, 3, 0xA1, 0xA2}, 2, 1, 4));
  EXPECT_EQ(data_.Content(), (Bytes{3, 2, 1, 0, 0xA2}));
  EXPECT_EQ(dib.rows[0], (Bytes{3, 2, 1, 0, 0xA2, 0, 0, 0}));
}

TEST_F(DecodeRaw, TripleCutInALowerRowLosesItsFirstByteInEitherOrderOfRows) {
  Bytes const data = {1, 2, 3, 4, 5};  // rows of one pixel; the second lacks a byte
  DibContent const dib = ReadDib(Decode(data, 1, 3, 4));
  EXPECT_EQ(dib.rows, (std::vector<Bytes>{{3, 2, 1, 0}, {0, 5, 0, 0}, {0, 0, 0, 0}}));
  DibContent const flipped = ReadDib(Decode(data, 1, -3, 4));
  EXPECT_EQ(flipped.rows, (std::vector<Bytes>{{0, 0, 0, 0}, {0, 5, 0, 0}, {3, 2, 1, 0}}));
  EXPECT_EQ(data_.Content(), (Bytes{3, 2, 1, 0, 5}));
}

TEST_F(DecodeRaw, DataBehindTheLastRowAreIgnored) {
  EXPECT_EQ(ReadDib(Decode({1, 2, 3, 4}, 8, 2, 1)).rows,
            (std::vector<Bytes>{{1, 0, 0, 0}, {2, 0, 0, 0}}));
}

TEST_F(DecodeRaw, HandlesThatCannotBeLockedGiveNullWithoutACode) {
  for (HGLOBAL const handle : {HGLOBAL{nullptr}, INVALID_HANDLE_VALUE}) {
    EXPECT_EQ(session_->CreateDIBFromUncompressedData(handle, 1, 1, 1, nullptr), nullptr);
  }
  EXPECT_EQ(Decode({}, 1, 1, 1).get(), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 32u);
}

TEST_F(DecodeRaw, FixedBlockOfNoBytesGivesNullAndIsUnlocked) {
  Block const empty(GlobalAlloc(GPTR, 0));
  EXPECT_EQ(session_->CreateDIBFromUncompressedData(empty, 1, 1, 1, nullptr), nullptr);
  EXPECT_EQ(TakeLocks(empty), 0);
}

TEST_F(DecodeRaw, IndexedDataWithoutPaletteGiveNullAndAreUnlocked) {
  EXPECT_EQ(Decode({1}, 1, 1, 2).get(), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 32u);
  EXPECT_EQ(TakeLocks(data_), 0);
}

TEST_F(DecodeRaw, PaletteThatCannotBeLockedGivesNullWithoutACode) {
  EXPECT_EQ(Decode({1}, 1, 1, 2, INVALID_HANDLE_VALUE).get(), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 32u);
  EXPECT_EQ(TakeLocks(data_), 0);
}

TEST_F(DecodeRaw, BitmapPast4GiBIsMinusOneWithCode10) {
  Block const data = MakeBlock({1});
  struct {
    DWORD width, height;
  } const sizes[] = {{0x10000, 0x10000}, {0x7FFFFFFF, 0x7FFFFFFF}, {0xFFFFFFFF, 1}};
  for (auto const& size : sizes) {
    session_->PDF_SetLastError(0);
    EXPECT_EQ(session_->CreateDIBFromUncompressedData(data, size.width, size.height, 4, nullptr),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(session_->PDF_GetLastError(), 10u);
  }
  EXPECT_EQ(TakeLocks(data), 0);
}

TEST_F(DecodeRaw, SmallestNegativeHeightIsTooLarge) {
  Block const data = MakeBlock({1});
  EXPECT_EQ(session_->CreateDIBFromUncompressedData(data, 1, 0x80000000, 1, nullptr),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(session_->PDF_GetLastError(), 10u);
}

TEST_F(DecodeRaw, OtherKindsGiveNullWithoutACode) {
  for (int const kind : {0, 3, 5, 8, -1}) EXPECT_EQ(Decode({1}, 1, 1, kind).get(), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 32u);
}

TEST_F(DecodeRaw, PictureWithoutPixelsIsAHeaderWithItsTable) {
  DibContent const dib = ReadDib(Decode({1}, 0, 5, 4));
  EXPECT_EQ(dib.header.biSizeImage, 0u);
  EXPECT_EQ(Decode({1}, 5, 0, 1).Content().size(), 48u);
}

TEST(Colours, CcittTableIsTheRawTableReversed) {
  for (bool const black_is_1 : {false, true}) {
    for (bool const decode_normal : {false, true}) {
      auto const raw = sorrelin::ColoursOfRawData(black_is_1, decode_normal);
      auto const ccitt = sorrelin::ColoursOfCcittData(black_is_1, decode_normal);
      EXPECT_EQ(raw.first, ccitt.second);
      EXPECT_EQ(raw.second, ccitt.first);
      EXPECT_EQ(raw.first + raw.second, 255);
    }
  }
}

}  // namespace
}  // namespace test
