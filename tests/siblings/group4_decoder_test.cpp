// The rows of the Group 4 decoder against those that libtiff coded, and against libtiff's decoder.
#include <gtest/gtest.h>
#include <tests/siblings/group4_support.h>
#include <tests/support/bilevel_pages.h>

#include <bit>
#include <string>

using namespace test;

namespace {

void ExpectRoundTrip(Bilevel const& bitmap) {
  Decoded const decoded = Decode(TiffEncode(bitmap), bitmap.Width(), bitmap.Height());
  EXPECT_EQ(decoded.outcome, Outcome::kDone);
  EXPECT_EQ(decoded.rows, bitmap.Height());
  EXPECT_TRUE(decoded.bitmap == bitmap) << bitmap.Width();
}

}  // namespace

class Group4Decoder : public testing::TestWithParam<int32_t> {};

INSTANTIATE_TEST_SUITE_P(Widths, Group4Decoder, testing::Range(1, 131));

TEST_P(Group4Decoder, BlankAndRegularBitmapsComeBack) {
  Bilevel const white(GetParam(), 5);
  ExpectRoundTrip(white);
  ExpectRoundTrip(Inverse(white));
  ExpectRoundTrip(Checkerboard(GetParam(), 5, 0));
  ExpectRoundTrip(Checkerboard(GetParam(), 5, 1));
}

TEST_P(Group4Decoder, NoiseOfEveryDensityComesBack) {
  for (unsigned const percent : {1U, 10U, 30U, 50U, 70U, 90U, 99U}) {
    ExpectRoundTrip(Noise(GetParam(), 40, percent, percent));
  }
}

TEST_P(Group4Decoder, StrokesComeBack) {
  for (unsigned const seed : {1U, 2U, 3U}) ExpectRoundTrip(Strokes(GetParam(), 120, seed));
}

TEST(Group4DecoderRuns, EveryLengthUpToTwoLongestMakeUpsComesBack) {
  constexpr int32_t kWidth = 5400;
  Bilevel bitmap(kWidth, 2 * 5300);
  for (int32_t length = 0; length < 5300; ++length) {
    bitmap.Blacken(7, 7 + length, 2 * length);
    bitmap.Blacken(0, 7, 2 * length + 1);
    bitmap.Blacken(7 + length, kWidth, 2 * length + 1);
  }
  ExpectRoundTrip(bitmap);
}

TEST(Group4DecoderWide, DenseRowsComeBack) {
  for (int32_t const width : {4095, 4096, 4097, 4160, 8200, 20000, 65537}) {
    ExpectRoundTrip(Checkerboard(width, 4, 0));
    ExpectRoundTrip(Noise(width, 6, 50, 1));
    ExpectRoundTrip(Noise(width, 6, 95, 2));
    ExpectRoundTrip(Strokes(width, 40, 3));
    ExpectRoundTrip(Inverse(Bilevel(width, 3)));
  }
}

TEST(Group4DecoderWide, DenseStretchesInWhiteComeBack) {
  Bilevel bitmap(60000, 12);
  std::mt19937 random(4);
  for (int32_t y = 0; y < bitmap.Height(); ++y) {
    int32_t const begin = static_cast<int32_t>(random() % 40000);
    for (int32_t x = begin; x < begin + 15000; x += 2 + y % 2) bitmap.SetBlack(x, y);
  }
  ExpectRoundTrip(bitmap);
}

TEST(Group4DecoderPages, TextComesBack) { ExpectRoundTrip(TextPage(300)); }
TEST(Group4DecoderPages, ScanComesBack) { ExpectRoundTrip(ScannedPage()); }
TEST(Group4DecoderPages, HalftoneComesBack) { ExpectRoundTrip(HalftonePage()); }

TEST(Group4DecoderRows, BitsBehindTheWidthAreWhite) {
  Decoded const decoded = Decode(TiffEncode(Inverse(Bilevel(3, 1))), 3, 1);
  EXPECT_EQ(decoded.bitmap.Row(0)[0], 0xE0);
}

TEST(Group4DecoderRows, EndMarkIsNotNeeded) {
  EXPECT_EQ(Decode(Bits("1 1 1 1 1 1 1 1"), 100, 8).outcome, Outcome::kDone);
}

TEST(Group4DecoderRows, DataBehindTheLastRowAreNotLookedAt) {
  EXPECT_EQ(Decode(Bits("1 1 0000001 0"), 100, 2).outcome, Outcome::kDone);
}

TEST(Group4DecoderRows, RefusedRowIsNotCounted) {
  auto const take_three = [](BYTE*, int32_t y, void*) { return y == 3 ? CCITT_ROW_STOP : 0; };
  auto const result = cadwick::DecodeGroup4(Bits("1111 1111"), {9, 8}, {take_three, nullptr});
  EXPECT_EQ(result.outcome, Outcome::kStopped);
  EXPECT_EQ(result.rows, 3U);
}

namespace {

// Decodes white rows of 8 pixels, as many as make the data end at a byte, and what follows them.
void ExpectAfterWhiteRows(std::string bits, Outcome outcome) {
  std::erase(bits, ' ');
  int32_t const white_rows = 8 - static_cast<int32_t>(bits.size() % 8);
  bits.insert(0, static_cast<size_t>(white_rows), '1');
  Decoded const decoded = Decode(Bits(bits), 8, white_rows + 1);
  EXPECT_EQ(decoded.outcome, outcome) << bits;
  EXPECT_EQ(decoded.rows, white_rows) << bits;
}

void ExpectDamage(std::string const& bits) {
  ExpectAfterWhiteRows(bits + "1111 1111 1111 1111", Outcome::kDamaged);
}

void ExpectEnd(std::string const& bits) { ExpectAfterWhiteRows(bits, Outcome::kDataEnded); }

}  // namespace

TEST(Group4DecoderDamage, ExtensionsAreNotTaken) { ExpectDamage("0000001 111"); }
TEST(Group4DecoderDamage, OneEndOfLineIsNoEndMark) { ExpectDamage("000000000001 1"); }
TEST(Group4DecoderDamage, UnknownWhiteCode) { ExpectDamage("001 00000000"); }
// 2 white, then 0000 0000 where a black run should be.
TEST(Group4DecoderDamage, UnknownBlackCode) { ExpectDamage("001 0111 00000000"); }
// a1 at 9, right of the row's end; then at 8 - 3 = 5 after 6 white (1110) and 1 black (010).
TEST(Group4DecoderDamage, VerticalModePastTheEnd) { ExpectDamage("011"); }
TEST(Group4DecoderDamage, VerticalModeBackwards) { ExpectDamage("001 1110 010 0000010"); }
// 9 white (10100); 4 white (1011) and 5 black (0011); 64 white (11011) and so on.
TEST(Group4DecoderDamage, RunPastTheEnd) {
  ExpectDamage("001 10100 11");
  ExpectDamage("001 1011 0011");
  ExpectDamage("001 11011 11011 11011 00110101 11");
}

TEST(Group4DecoderEnd, EndMark) { ExpectEnd("000000000001 000000000001"); }
TEST(Group4DecoderEnd, EndMarkInsideARow) { ExpectEnd("001 0111 11 000000000001 000000000001"); }
TEST(Group4DecoderEnd, EndMarkWithDataBehind) { ExpectEnd("000000000001 000000000001 1111 1111"); }
TEST(Group4DecoderEnd, EndMarkThatIsCut) { ExpectEnd("000000000001 000"); }
TEST(Group4DecoderEnd, ZerosUpToTheEnd) { ExpectEnd(std::string(1000, '0')); }
// Of the codes that begin like these, some with zeros after are others, and some are none.
TEST(Group4DecoderEnd, ModeThatIsCut) {
  for (char const* const bits : {"0", "00", "000", "01", "0000", "00001", "000001"}) {
    ExpectEnd(bits);
  }
}

TEST(Group4DecoderEnd, RunThatIsCut) {
  ExpectEnd("001");
  ExpectEnd("001 0011010");                // 0 white, all but the last digit
  ExpectEnd("001 11011");                  // 64 white without a terminating code
  ExpectEnd("001 0111");                   // 2 white, and no black
  ExpectEnd("001 0111 000011011");         // of 0000110111
  ExpectEnd("001 0111 010 001 00001101");  // the same where black comes first
}

// 5 white, and a black run of 2 (11) or 3 (10), which would make the row complete.
TEST(Group4DecoderEnd, CodeThatZerosWouldCompleteIsCut) { ExpectEnd("001 1100 1"); }

namespace {

// The bits of the rows of coded data: all before the end mark, whose last digit is the last 1.
size_t RowBits(Data const& data) {
  size_t bits = data.size() * 8 - static_cast<size_t>(std::countr_zero(data.back()));
  return bits - 24;
}

// How many bits the first `n` rows take, for every n up to the height.
std::vector<size_t> RowEnds(Bilevel const& bitmap) {
  std::vector<size_t> ends{0};
  for (int32_t rows = 1; rows <= bitmap.Height(); ++rows) {
    Bilevel part(bitmap.Width(), rows);
    for (int32_t y = 0; y < rows; ++y) std::ranges::copy(bitmap.Row(y), part.Row(y).begin());
    ends.push_back(RowBits(TiffEncode(part)));
  }
  return ends;
}

}  // namespace

TEST(Group4DecoderEnd, DataCutAtAnyByteGiveEveryRowThatIsWhole) {
  for (Bilevel const& bitmap : {Noise(150, 30, 30, 1), Strokes(300, 60, 2), Noise(9, 60, 50, 3)}) {
    std::vector<size_t> const ends = RowEnds(bitmap);
    Data const data = TiffEncode(bitmap);
    for (size_t size = 0; size * 8 < ends.back(); ++size) {
      Decoded const cut = Decode(std::span(data).first(size), bitmap.Width(), bitmap.Height());
      auto const whole = std::ranges::upper_bound(ends, size * 8) - ends.begin() - 1;
      ASSERT_EQ(cut.outcome, Outcome::kDataEnded) << size;
      ASSERT_EQ(cut.rows, whole) << size;
      ASSERT_TRUE(SameRows(cut.bitmap, bitmap, cut.rows)) << size;
    }
  }
}

namespace {

// libtiff reads zeros after the data; those are added here. Where it has nothing to complain of,
// the rows are the same, and where it has, the row is not delivered. The exception are passes to
// the end of a row, which no coder makes: how far libtiff goes then is left to what its lists held.
void ExpectRowsOfTheWitness(Data data, int32_t width, int32_t height) {
  TiffDecoded const theirs = TiffDecode(data, width, height);
  data.insert(data.end(), 8, 0);
  Decoded const ours = Decode(data, width, height);
  ASSERT_GE(ours.rows, theirs.clean_rows);
  ASSERT_TRUE(SameRows(ours.bitmap, theirs.bitmap, theirs.clean_rows));
  ASSERT_TRUE(ours.rows == theirs.clean_rows || theirs.complaint == "Line length mismatch");
}

}  // namespace

TEST(Group4DecoderWitness, AgreesOnDataWithOneBitFlipped) {
  for (Bilevel const& bitmap : {Noise(70, 20, 30, 1), Strokes(200, 40, 2)}) {
    Data const data = TiffEncode(bitmap);
    for (size_t bit = 0; bit < data.size() * 8; ++bit) {
      Data flipped = data;
      flipped[bit / 8] ^= static_cast<uint8_t>(0x80 >> bit % 8);
      ExpectRowsOfTheWitness(flipped, bitmap.Width(), bitmap.Height());
      ASSERT_FALSE(testing::Test::HasFatalFailure()) << bit;
    }
  }
}

TEST(Group4DecoderWitness, AgreesOnRandomData) {
  std::mt19937 random(5);
  for (int turn = 0; turn < 3000; ++turn) {
    Data data(1 + random() % 200);
    auto const ones = static_cast<uint8_t>(random() | random());
    for (uint8_t& value : data) value = static_cast<uint8_t>(random() & ones);
    ExpectRowsOfTheWitness(data, 1 + static_cast<int32_t>(random() % 300), 50);
    ASSERT_FALSE(testing::Test::HasFatalFailure()) << turn;
  }
}

// Empty runs, which no coder makes, within the row and above it: white 00110101, black 0000110111.
TEST(Group4DecoderWitness, AgreesOnEmptyRuns) {
  std::string const empty = "001 00110101 0000110111";
  for (std::string const tail :
       {"1 1 1 1 1 1", "0001 1 1 1 1 1", "010 1 1 010 1 1", "011 1 0001 1"}) {
    for (std::string const head : {"001 1011 0000110111", "001 0111 11", ""}) {
      ExpectRowsOfTheWitness(Bits(head + empty + "1 1" + tail + tail + tail), 9, 6);
      ExpectRowsOfTheWitness(Bits(head + empty + empty + "1" + tail + tail + tail), 12, 6);
    }
  }
}
