// The bytes of the Group 4 encoder against those of libtiff.
#include <gtest/gtest.h>
#include <tests/siblings/group4_support.h>
#include <tests/support/bilevel_pages.h>

using namespace test;

class Group4Encoder : public testing::TestWithParam<int32_t> {};

INSTANTIATE_TEST_SUITE_P(Widths, Group4Encoder, testing::Range(1, 131));

TEST_P(Group4Encoder, BlankAndRegularBitmapsAreThoseOfTheWitness) {
  Bilevel const white(GetParam(), 5);
  for (Bilevel const& bitmap :
       {white, Inverse(white), Checkerboard(GetParam(), 5, 0), Checkerboard(GetParam(), 5, 1)}) {
    EXPECT_EQ(Encode(bitmap), TiffEncode(bitmap));
  }
}

TEST_P(Group4Encoder, NoiseOfEveryDensityIsThatOfTheWitness) {
  for (unsigned const percent : {1U, 10U, 30U, 50U, 70U, 90U, 99U}) {
    Bilevel const bitmap = Noise(GetParam(), 40, percent, percent);
    EXPECT_EQ(Encode(bitmap), TiffEncode(bitmap)) << percent;
  }
}

TEST_P(Group4Encoder, StrokesAreThoseOfTheWitness) {
  for (unsigned const seed : {1U, 2U, 3U}) {
    Bilevel const bitmap = Strokes(GetParam(), 120, seed);
    EXPECT_EQ(Encode(bitmap), TiffEncode(bitmap)) << seed;
  }
}

// A row has 7 white, `length` black and the rest white, and the inverse below it.
TEST(Group4EncoderRuns, EveryLengthUpToTwoLongestMakeUpsIsThatOfTheWitness) {
  constexpr int32_t kWidth = 5400;
  Bilevel bitmap(kWidth, 2 * 5300);
  for (int32_t length = 0; length < 5300; ++length) {
    bitmap.Blacken(7, 7 + length, 2 * length);
    bitmap.Blacken(0, 7, 2 * length + 1);
    bitmap.Blacken(7 + length, kWidth, 2 * length + 1);
  }
  EXPECT_EQ(Encode(bitmap), TiffEncode(bitmap));
}

TEST(Group4EncoderRuns, MultiplesOfTheLongestMakeUpAreThoseOfTheWitness) {
  for (int32_t const multiple : {1, 2, 3, 10, 25}) {
    for (int32_t const rest : {-1, 0, 1, 63, 64, 65}) {
      int32_t const width = multiple * 2560 + rest;
      Bilevel bitmap(width, 4);
      bitmap.Blacken(0, width, 1);
      bitmap.Blacken(width / 2, width, 3);
      EXPECT_EQ(Encode(bitmap), TiffEncode(bitmap)) << width;
    }
  }
}

// More changing elements in a row than the coder's list holds.
TEST(Group4EncoderWide, DenseRowsAreThoseOfTheWitness) {
  for (int32_t const width : {4095, 4096, 4097, 4160, 8200, 20000, 65537}) {
    for (Bilevel const& bitmap : {Checkerboard(width, 4, 0), Noise(width, 6, 50, 1),
                                  Noise(width, 6, 95, 2), Strokes(width, 40, 3)}) {
      EXPECT_EQ(Encode(bitmap), TiffEncode(bitmap)) << width;
    }
  }
}

// Long runs beside dense stretches move the windows of the two rows at different places.
TEST(Group4EncoderWide, DenseStretchesInWhiteAreThoseOfTheWitness) {
  Bilevel bitmap(60000, 12);
  std::mt19937 random(4);
  for (int32_t y = 0; y < bitmap.Height(); ++y) {
    int32_t const begin = static_cast<int32_t>(random() % 40000);
    for (int32_t x = begin; x < begin + 15000; x += 2 + y % 2) bitmap.SetBlack(x, y);
  }
  EXPECT_EQ(Encode(bitmap), TiffEncode(bitmap));
}

TEST(Group4EncoderPages, TextIsThatOfTheWitness) {
  Bilevel const page = TextPage(300);
  EXPECT_EQ(Encode(page), TiffEncode(page));
}

TEST(Group4EncoderPages, ScanIsThatOfTheWitness) {
  Bilevel const page = ScannedPage();
  EXPECT_EQ(Encode(page), TiffEncode(page));
}

TEST(Group4EncoderPages, HalftoneIsThatOfTheWitness) {
  Bilevel const page = HalftonePage();
  EXPECT_EQ(Encode(page), TiffEncode(page));
}

namespace {

class FullSink final : public cadwick::ByteSink {
 public:
  bool Write(std::span<BYTE const>) override {
    ++calls;
    return false;
  }
  int calls = 0;
};

}  // namespace

TEST(Group4EncoderEnds, SinkThatRefusesIsNotCalledAgain) {
  Bilevel noise = Noise(2000, 400, 50, 1);
  FullSink sink;
  EXPECT_EQ(cadwick::EncodeGroup4(SizeOf(noise), {GiveRow, &noise}, sink), Outcome::kSinkFailed);
  EXPECT_EQ(sink.calls, 1);
}

TEST(Group4EncoderEnds, RowsBeforeOneThatIsNotGivenAreInTheData) {
  Bilevel noise = Noise(100, 10, 50, 1);
  auto const give_six = [](BYTE* row, int32_t y, void* user) {
    return y == 6 ? 1 : GiveRow(row, y, user);
  };
  DataSink sink;
  EXPECT_EQ(cadwick::EncodeGroup4(SizeOf(noise), {give_six, &noise}, sink), Outcome::kStopped);
  Decoded const decoded = Decode(sink.data, 100, 6);
  EXPECT_EQ(decoded.outcome, Outcome::kDone);
  EXPECT_TRUE(SameRows(decoded.bitmap, noise, 6));
}
