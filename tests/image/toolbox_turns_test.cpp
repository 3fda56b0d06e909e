// Flips, quarter turns and single pixels.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/image/toolbox/dib_toolbox.h>
#include <tests/image/toolbox_pictures.h>

#include <cstring>
#include <functional>
#include <limits>

namespace {

using sorrelin::CopyPixel;
using sorrelin::FlipDIBVertical;
using sorrelin::RotateDIB90;
using test::Block;
using test::Bytes;
using test::PixelRows;
using testing::ElementsAre;

constexpr LONG kMin = std::numeric_limits<LONG>::min();
constexpr LONG kMax = std::numeric_limits<LONG>::max();
constexpr int kDepths[] = {1, 4, 8, 15, 16, 24, 32};

size_t RowsAt(int bits) { return 40 + (bits <= 8 ? size_t{4} << bits : 0); }

Bytes Flip(Bytes const& picture) {
  return Block(FlipDIBVertical(test::MakeBlock(picture))).Content();
}

Bytes Rotate(Bytes const& picture) {
  return Block(RotateDIB90(test::MakeBlock(picture))).Content();
}

using Change = std::function<void(BITMAPINFOHEADER&)>;

// A picture whose header was changed.
Bytes Changed(Bytes picture, Change const& change) {
  BITMAPINFOHEADER header = test::HeaderOf(picture);
  change(header);
  std::memcpy(picture.data(), &header, sizeof header);
  return picture;
}

// Pixels of `turned` that are not where a clockwise quarter turn of `picture` puts them.
int MisplacedPixels(Bytes const& picture, Bytes const& turned) {
  BITMAPINFOHEADER const header = test::HeaderOf(picture);
  int const bits = header.biBitCount;
  PixelRows const from{header.biWidth, bits};
  PixelRows const to{header.biHeight, bits};
  int misplaced = 0;
  for (LONG y = 0; y < header.biHeight; ++y) {
    for (LONG x = 0; x < header.biWidth; ++x) {
      uint32_t const pixel = from.Get(picture.data() + RowsAt(bits), x, y);
      LONG const row = header.biWidth - 1 - x;
      if (to.Get(turned.data() + RowsAt(bits), y, row) != pixel) ++misplaced;
    }
  }
  return misplaced;
}

// The padding of the rows is 0, and so are the four bytes after them.
bool PaddingIsZero(Bytes turned) {
  BITMAPINFOHEADER const header = test::HeaderOf(turned);
  int const bits = header.biBitCount;
  PixelRows const pixels{header.biWidth, bits};
  for (LONG y = 0; y < header.biHeight; ++y) {
    for (LONG x = 0; x < header.biWidth; ++x) pixels.Set(turned.data() + RowsAt(bits), x, y, 0);
  }
  for (size_t i = RowsAt(bits); i < turned.size(); ++i) {
    if (turned[i] != 0) return false;
  }
  return true;
}

TEST(FlipDIBVertical, ReversesTheRowsOfEveryDepth) {
  for (int const bits : kDepths) {
    for (LONG const height : {1, 2, 5}) {
      Bytes const picture = test::ScrambledPicture(11, height, bits);
      size_t const stride = PixelRows{11, bits}.Stride();
      Bytes expected(picture.begin(), picture.begin() + static_cast<ptrdiff_t>(RowsAt(bits)));
      for (size_t y = static_cast<size_t>(height); y-- > 0;) {
        auto const row = picture.begin() + static_cast<ptrdiff_t>(RowsAt(bits) + y * stride);
        expected.insert(expected.end(), row, row + static_cast<ptrdiff_t>(stride));
      }
      expected.insert(expected.end(), 4, BYTE{0});
      EXPECT_EQ(Flip(picture), expected) << bits << " bits, " << height << " rows";
    }
  }
}

TEST(FlipDIBVertical, LeavesItsSourceAlone) {
  Bytes const picture = test::ScrambledPicture(3, 4, 8);
  Block const source = test::MakeBlock(picture);
  Block const flipped(FlipDIBVertical(source));
  EXPECT_EQ(source.Content(), picture);
  EXPECT_EQ(GlobalUnlock(source), FALSE);
}

TEST(FlipDIBVertical, RowOrderDoesNotMatter) {
  Bytes const picture = test::ScrambledPicture(3, 4, 8);
  Change const negate = [](BITMAPINFOHEADER& header) { header.biHeight = -header.biHeight; };
  EXPECT_EQ(Flip(Changed(picture, negate)), Changed(Flip(picture), negate));
}

TEST(FlipDIBVertical, CoreBitmap) {
  Bytes const picture{12, 0, 0, 0, 1, 0, 2, 0, 1, 0, 24, 0, 1, 2, 3, 4, 5, 6, 7, 8};
  EXPECT_THAT(Flip(picture), ElementsAre(12, 0, 0, 0, 1, 0, 2, 0, 1, 0, 24, 0, 5, 6, 7, 8, 1, 2, 3,
                                         4, 0, 0, 0, 0));
}

// The block has rows 0, 1 and half of row 2 of 4: rows 3, 2, 1, 0 are 0, the half, row 1 and row 0,
// of which two rows and the half fit, and then the spare bytes.
TEST(FlipDIBVertical, RowsThatTheBlockLacksAreZero) {
  Bytes picture = test::ScrambledPicture(8, 4, 8);
  Bytes const full = picture;
  size_t const at = RowsAt(8);
  picture.resize(at + 20);
  Bytes const flipped = Flip(picture);
  ASSERT_EQ(flipped.size(), picture.size() + 4);
  Bytes expected(8, BYTE{0});
  expected.insert(expected.end(), full.begin() + static_cast<ptrdiff_t>(at + 16),
                  full.begin() + static_cast<ptrdiff_t>(at + 20));
  expected.insert(expected.end(), 4, BYTE{0});
  expected.insert(expected.end(), full.begin() + static_cast<ptrdiff_t>(at + 8),
                  full.begin() + static_cast<ptrdiff_t>(at + 16));
  EXPECT_EQ(Bytes(flipped.begin() + static_cast<ptrdiff_t>(at), flipped.end()), expected);
}

TEST(FlipDIBVertical, HeadersThatPromiseTooMuch) {
  Bytes const picture = test::ScrambledPicture(8, 2, 8);
  using Header = BITMAPINFOHEADER;
  EXPECT_EQ(Flip(Changed(picture, [](Header& h) { h.biSize = 0xFFFFFFFF; })).size(),
            picture.size() + 4);
  EXPECT_EQ(Flip(Changed(picture, [](Header& h) { h.biClrUsed = 0xFFFFFFFF; })).size(),
            picture.size() + 4);
  EXPECT_EQ(Flip(Changed(picture, [](Header& h) { h.biHeight = 1 << 28; })).size(),
            picture.size() + 4);
  EXPECT_EQ(FlipDIBVertical(test::MakeBlock(Changed(picture, [](Header& h) { h.biWidth = kMax; }))),
            nullptr);
  EXPECT_EQ(
      FlipDIBVertical(test::MakeBlock(Changed(picture, [](Header& h) { h.biHeight = kMin; }))),
      nullptr);
}

TEST(FlipDIBVertical, PictureWithoutRowsIsCopied) {
  Bytes picture = test::ScrambledPicture(8, 2, 8);
  for (LONG const width : {LONG{0}, LONG{-8}, kMin}) {
    picture = Changed(picture, [&](BITMAPINFOHEADER& header) { header.biWidth = width; });
    Bytes expected = picture;
    expected.insert(expected.end(), 4, BYTE{0});
    EXPECT_EQ(Flip(picture), expected) << width;
  }
}

TEST(FlipDIBVertical, RefusesWhatIsNoBlock) {
  EXPECT_EQ(FlipDIBVertical(nullptr), nullptr);
  EXPECT_EQ(FlipDIBVertical(INVALID_HANDLE_VALUE), nullptr);
  EXPECT_EQ(Block(FlipDIBVertical(test::MakeBlock({1}))).Content(), (Bytes{1, 0, 0, 0, 0}));
}

TEST(RotateDIB90, BilevelWidthsToSeventy) {
  for (LONG width = 1; width <= 70; ++width) {
    for (LONG const height : {1, 7, 8, 9, 33}) {
      Bytes const picture = test::ScrambledPicture(width, height, 1);
      Bytes const turned = Rotate(picture);
      ASSERT_EQ(MisplacedPixels(picture, turned), 0) << width << " x " << height;
      ASSERT_TRUE(PaddingIsZero(turned)) << width << " x " << height;
    }
  }
}

TEST(RotateDIB90, OtherDepths) {
  for (int const bits : kDepths) {
    for (LONG width = 1; width <= 9; ++width) {
      for (LONG height = 1; height <= 9; ++height) {
        Bytes const picture = test::ScrambledPicture(width, height, bits);
        Bytes const turned = Rotate(picture);
        ASSERT_EQ(MisplacedPixels(picture, turned), 0) << bits << ": " << width << " x " << height;
        ASSERT_TRUE(PaddingIsZero(turned)) << bits << ": " << width << " x " << height;
      }
    }
  }
}

// Block order counts from the lowest row, so the last row is the top one.
TEST(RotateDIB90, TurnsClockwise) {
  Block const dib = test::MakePicture(3, 2, 8, [](LONG x, LONG y) { return DWORD(10 * y + x); });
  Block const turned(RotateDIB90(dib));
  Bytes const bytes = turned.Content();
  PixelRows const pixels{2, 8};
  Bytes top_down;
  for (LONG row = 3; row-- > 0;) {
    for (LONG x = 0; x < 2; ++x) {
      top_down.push_back(static_cast<BYTE>(pixels.Get(bytes.data() + 1064, x, row)));
    }
  }
  EXPECT_THAT(top_down, ElementsAre(10, 0, 11, 1, 12, 2));
}

TEST(RotateDIB90, HeaderIsTurnedAndTheTableKept) {
  for (int const bits : kDepths) {
    Bytes const picture = test::ScrambledPicture(21, 5, bits);
    Bytes const turned = Rotate(picture);
    size_t const stride = PixelRows{5, bits}.Stride();
    BITMAPINFOHEADER expected = test::HeaderOf(picture);
    expected.biWidth = 5;
    expected.biHeight = 21;
    expected.biXPelsPerMeter = 2000;
    expected.biYPelsPerMeter = 1000;
    expected.biSizeImage = static_cast<DWORD>(21 * stride);
    ASSERT_EQ(turned.size(), RowsAt(bits) + 21 * stride + 4);
    Bytes head = test::HeaderBytes(expected);
    head.insert(head.end(), picture.begin() + 40,
                picture.begin() + static_cast<ptrdiff_t>(RowsAt(bits)));
    EXPECT_EQ(Bytes(turned.begin(), turned.begin() + static_cast<ptrdiff_t>(RowsAt(bits))), head);
  }
}

TEST(RotateDIB90, FourTurnsGiveThePictureBack) {
  for (int const bits : kDepths) {
    Bytes picture = test::ScrambledPicture(13, 6, bits);
    Bytes const turned = Rotate(Rotate(Rotate(Rotate(picture))));
    BITMAPINFOHEADER header = test::HeaderOf(picture);
    header.biSizeImage = static_cast<DWORD>(PixelRows{13, bits}.Stride() * 6);
    std::memcpy(picture.data(), &header, sizeof header);
    picture.resize(picture.size() + 4);
    EXPECT_EQ(turned, picture) << bits;
  }
}

TEST(RotateDIB90, PixelsThatTheBlockLacksAreZero) {
  for (int const bits : kDepths) {
    Bytes full = test::ScrambledPicture(9, 6, bits);
    for (size_t const cut : {1u, 5u, 17u}) {
      Bytes short_picture = full;
      short_picture.resize(full.size() - cut);
      Bytes zeroed = short_picture;
      zeroed.resize(full.size());
      EXPECT_EQ(Rotate(short_picture), Rotate(zeroed)) << bits << " bits less " << cut;
    }
  }
}

TEST(RotateDIB90, BlockWithoutRowsIsABlankPicture) {
  Bytes picture = test::ScrambledPicture(9, 6, 8);
  picture.resize(50);
  Bytes const turned = Rotate(picture);
  ASSERT_EQ(turned.size(), 1064u + 9 * 8 + 4);
  EXPECT_EQ(Bytes(turned.begin() + 40, turned.begin() + 50),
            Bytes(picture.begin() + 40, picture.end()));
  EXPECT_THAT(Bytes(turned.begin() + 50, turned.end()), testing::Each(0));
}

TEST(RotateDIB90, HeadersThatAreNotServedAreRefused) {
  Bytes const picture = test::ScrambledPicture(8, 2, 8);
  using Header = BITMAPINFOHEADER;
  Change const changes[] = {
      [](Header& h) { h.biBitCount = 0; },      [](Header& h) { h.biBitCount = 2; },
      [](Header& h) { h.biBitCount = 48; },     [](Header& h) { h.biWidth = 0; },
      [](Header& h) { h.biWidth = -8; },        [](Header& h) { h.biWidth = kMax; },
      [](Header& h) { h.biHeight = 0; },        [](Header& h) { h.biHeight = -2; },
      [](Header& h) { h.biHeight = kMin; },     [](Header& h) { h.biHeight = kMax; },
      [](Header& h) { h.biSize = 39; },         [](Header& h) { h.biSize = 12; },
      [](Header& h) { h.biSize = 0xFFFFFFFF; }, [](Header& h) { h.biClrUsed = 0xFFFFFFFF; },
  };
  for (Change const& change : changes) {
    EXPECT_EQ(RotateDIB90(test::MakeBlock(Changed(picture, change))), nullptr) << &change - changes;
  }
}

// One column of 2^28 pixels becomes a row; one row becomes 2^28 rows of 4 bytes.
TEST(RotateDIB90, LargePromiseInASmallBlock) {
  Bytes const picture = Changed(test::ScrambledPicture(8, 1, 8),
                                [](BITMAPINFOHEADER& header) { header.biWidth = 1 << 26; });
  Block const turned(RotateDIB90(test::MakeBlock(picture)));
  EXPECT_EQ(GlobalSize(turned), 1064u + (size_t{4} << 26) + 4);
}

TEST(RotateDIB90, RefusesWhatIsNoBlock) {
  EXPECT_EQ(RotateDIB90(nullptr), nullptr);
  EXPECT_EQ(RotateDIB90(INVALID_HANDLE_VALUE), nullptr);
  EXPECT_EQ(RotateDIB90(test::MakeBlock({1})), nullptr);
}

TEST(CopyPixel, OneBitFromAndToEveryPlace) {
  for (int from = 0; from < 8; ++from) {
    for (int to = 0; to < 8; ++to) {
      BYTE const set = static_cast<BYTE>(0x80 >> from);
      BYTE const clear = static_cast<BYTE>(~set);
      BYTE target = 0;
      CopyPixel(&set, from, &target, to, 1);
      EXPECT_EQ(target, 0x80 >> to);
      target = 0xFF;
      CopyPixel(&clear, from, &target, to, 1);
      EXPECT_EQ(target, 0xFF ^ (0x80 >> to));
    }
  }
}

TEST(CopyPixel, FourBitsByNibble) {
  BYTE const source = 0xA5;
  struct {
    int from, to;
    BYTE expected;
  } const kRows[] = {{0, 0, 0xA7}, {0, 4, 0x3A}, {4, 0, 0x57}, {4, 4, 0x35}, {1, 1, 0x35}};
  for (auto const& row : kRows) {
    BYTE target = 0x37;
    CopyPixel(&source, row.from, &target, row.to, 4);
    EXPECT_EQ(target, row.expected) << row.from << " to " << row.to;
  }
}

TEST(CopyPixel, WholeBytes) {
  BYTE const source[] = {1, 2, 3, 4, 5};
  struct {
    int bits;
    Bytes expected;
  } const kRows[] = {{8, {1, 9, 9, 9, 9}},
                     {15, {1, 2, 9, 9, 9}},
                     {16, {1, 2, 9, 9, 9}},
                     {24, {1, 2, 3, 9, 9}},
                     {32, {1, 2, 3, 4, 9}}};
  for (auto const& row : kRows) {
    Bytes target(5, BYTE{9});
    CopyPixel(source, 0, target.data(), 0, row.bits);
    EXPECT_EQ(target, row.expected) << row.bits;
  }
}

TEST(CopyPixel, OtherDepthsCopyNothing) {
  BYTE const source[] = {1, 2, 3, 4};
  for (int const bits : {0, 2, 12, 48, -1}) {
    Bytes target(4, BYTE{9});
    CopyPixel(source, 0, target.data(), 0, bits);
    EXPECT_EQ(target, Bytes(4, BYTE{9})) << bits;
  }
}

}  // namespace
