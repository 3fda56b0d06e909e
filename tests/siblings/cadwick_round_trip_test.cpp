// Group 4 data against a second coder, libtiff on disk, over widths around every unit of bits.
#include <gmock/gmock.h>
#include <tests/siblings/cadwick_support.h>

#include <thread>

using namespace test;

class GroupFourWidth : public testing::TestWithParam<int32_t> {};

INSTANTIATE_TEST_SUITE_P(Widths, GroupFourWidth, testing::Range(1, 71));

TEST_P(GroupFourWidth, DataAreThoseOfTheOtherCoder) {
  TiffOnDisk other;
  for (int32_t const height : {1, 3, 17}) {
    Picture const picture = RandomPicture(GetParam(), height, static_cast<unsigned>(height));
    EXPECT_EQ(Encode(picture), other.Encode(picture)) << height;
  }
}

TEST_P(GroupFourWidth, OtherDecoderReadsTheRows) {
  TiffOnDisk other;
  Picture const picture = RandomPicture(GetParam(), 21, 5);
  EXPECT_EQ(other.Decode(Encode(picture), GetParam(), 21), picture);
}

TEST_P(GroupFourWidth, DataOfTheOtherCoderAreRead) {
  TiffOnDisk other;
  Picture const picture = RandomPicture(GetParam(), 19, 7);
  Decoded const decoded = Decode(other.Encode(picture), GetParam(), 19);
  EXPECT_EQ(decoded.result, 1);
  EXPECT_EQ(decoded.rows_told, 19);
  EXPECT_EQ(decoded.picture, picture);
}

// The library hands over rows whose padding is inverted with the pixels.
TEST_P(GroupFourWidth, PaddingBitsDoNotMatter) {
  Picture const picture = RandomPicture(GetParam(), 9, 11);
  Picture dirty = picture;
  int32_t const used = GetParam() % 8;
  for (Bytes& row : dirty.rows) {
    if (used != 0) row.back() = static_cast<BYTE>(row.back() | (0xFF >> used));
  }
  EXPECT_EQ(Encode(dirty, 0xFF), Encode(picture, 0));
}

TEST(GroupFour, NoiseAndLongRunsComeBack) {
  for (unsigned const longest : {1u, 3u, 70u, 5000u}) {
    Picture const picture = RandomPicture(4999, 301, longest, longest);
    EXPECT_EQ(Decode(Encode(picture), 4999, 301).picture, picture) << longest;
  }
}

TEST(GroupFour, BlankAndBlackPicturesComeBack) {
  for (BYTE const fill : {BYTE{0x00}, BYTE{0xFF}}) {
    Picture picture{100, std::vector<Bytes>(50, Bytes(13, fill))};
    for (Bytes& row : picture.rows) CutRow(row, 100);
    EXPECT_EQ(Decode(Encode(picture), 100, 50).picture, picture);
  }
}

TEST(GroupFour, ThreadsDoNotMeet) {
  std::vector<std::thread> threads;
  std::vector<int> good(4);
  for (unsigned t = 0; t < 4; ++t) {
    threads.emplace_back([t, &good] {
      for (unsigned turn = 0; turn < 20; ++turn) {
        Picture const picture = RandomPicture(200 + static_cast<int32_t>(t), 40, turn * 4 + t);
        Bytes const data = Encode(picture);
        bool const back = Decode(data, picture.width, 40).picture == picture;
        bool const told = t % 2 == 0
                              ? Decode(data, picture.width, 41).error == CADWICK_DATA_ENDED
                              : Decode({0x02}, picture.width, 1).error == CADWICK_DATA_DAMAGED;
        good[t] += back && told ? 1 : 0;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_THAT(good, testing::Each(20));
}
