// Group 4 data bit by bit: what ends them, what damages them (ITU-T T.6).
#include <gmock/gmock.h>
#include <tests/siblings/cadwick_support.h>

using namespace test;

namespace {

constexpr char kEndMark[] = "000000000001 000000000001";

// A row equal to the one above, the first one to white, is one bit for each of its runs' ends.
Bytes const kWhiteRow{0x00};
// Horizontal mode, 0 white, 8 black: not near the change of the white row above.
constexpr char kBlackUnderWhite[] = "001 00110101 000101";

}  // namespace

TEST(GroupFourData, WhiteRowsAreOneBitEachBeforeTheEndMark) {
  EXPECT_EQ(Encode({8, {kWhiteRow, kWhiteRow}}), Bits("1 1 000000000001 000000000001"));
}

TEST(GroupFourData, SetBitsAreBlack) {
  EXPECT_EQ(Encode({8, {{0xFF}}}), Bits("001 00110101 000101 000000000001 000000000001"));
  EXPECT_EQ(Decode(Bits(kBlackUnderWhite), 8, 1).picture.rows[0], Bytes{0xFF});
}

TEST(GroupFourData, RowsNeedNoEndMark) {
  Decoded const decoded = Decode(Bits("1 1 1"), 8, 3);
  EXPECT_EQ(decoded.result, 1);
  EXPECT_EQ(decoded.picture.height(), 3);
}

TEST(GroupFourData, DataBehindTheLastRowAreNotLookedAt) {
  EXPECT_EQ(Decode(Bits("1 1 0000001 1111"), 8, 2).result, 1);
}

TEST(GroupFourData, EndMarkBeforeTheLastRowIsTheEnd) {
  Decoded const decoded = Decode(Bits(std::string("1 1") + kEndMark + "1 1 1 1"), 8, 3);
  EXPECT_EQ(decoded.result, 0);
  EXPECT_EQ(decoded.error, CADWICK_DATA_ENDED);
  EXPECT_EQ(decoded.rows_told, 2);
  EXPECT_EQ(decoded.picture.rows, (std::vector<Bytes>{kWhiteRow, kWhiteRow}));
}

TEST(GroupFourData, EndMarkInsideARowIsTheEnd) {
  Decoded const decoded = Decode(Bits(std::string("1 001 0111 11") + kEndMark), 8, 2);
  EXPECT_EQ(decoded.error, CADWICK_DATA_ENDED);
  EXPECT_EQ(decoded.rows_told, 1);
}

TEST(GroupFourData, NoDataAtAllIsTheEnd) {
  EXPECT_EQ(Decode({}, 8, 1).error, CADWICK_DATA_ENDED);
  EXPECT_EQ(Decode({}, 8, 1).rows_told, 0);
}

TEST(GroupFourData, ZerosBehindTheRowsAreTheEnd) {
  Bytes data = Bits("1 1 1");
  data.resize(50);
  Decoded const decoded = Decode(data, 8, 9);
  EXPECT_EQ(decoded.error, CADWICK_DATA_ENDED);
  EXPECT_EQ(decoded.rows_told, 3);
}

// 2 white, then a black code of which only zeros are left: no black code is all zeros.
TEST(GroupFourData, CodeCutShortByTheEndIsNotDamage) {
  Decoded const decoded = Decode(Bits("1 001 0111"), 64, 2);
  EXPECT_EQ(decoded.error, CADWICK_DATA_ENDED);
  EXPECT_EQ(decoded.rows_told, 1);
}

// The white code 00110000 exists no more than 00110, but 00110101 (0 pixels) begins so.
TEST(GroupFourData, CutCodeThatZerosMakeUnknownIsNotDamage) {
  EXPECT_EQ(Decode(Bits("001 00110"), 8, 1).error, CADWICK_DATA_ENDED);
}

TEST(GroupFourData, UnknownCodeInsideIsDamage) {
  Decoded const decoded = Decode(Bits("1 001 00110000 1111 1111 1111 1111"), 8, 4);
  EXPECT_EQ(decoded.error, CADWICK_DATA_DAMAGED);
  EXPECT_EQ(decoded.rows_told, 1);
  EXPECT_EQ(decoded.picture.height(), 1);
}

TEST(GroupFourData, UncompressedModeIsDamage) {
  EXPECT_EQ(Decode(Bits("1 0000001 111 1111 1111 1111 1111"), 8, 4).error, CADWICK_DATA_DAMAGED);
}

// 9 white (10100), 0 black (0000110111) in a row of 8 pixels.
TEST(GroupFourData, RunsPastTheRowAreDamage) {
  Decoded const decoded = Decode(Bits("1 001 10100 0000110111 1111 1111"), 8, 3);
  EXPECT_EQ(decoded.error, CADWICK_DATA_DAMAGED);
  EXPECT_EQ(decoded.rows_told, 1);
}

TEST(GroupFourData, RowsBehindDamageAreNotDelivered) {
  Decoded const decoded = Decode(Bits("1 001 10100 0000110111 1 1 1 1 1 1 1 1"), 8, 9);
  EXPECT_EQ(decoded.picture.height(), 1);
}

TEST(GroupFourData, DataMuchLongerThanThePictureAreFine) {
  Bytes data(3 * 1024 * 1024, 0xA5);
  data[0] = 0xC0;
  EXPECT_EQ(Decode(data, 8, 2).result, 1);
}

// Empty runs (0 white 00110101, 0 black 0000110111) make a row of any length in bits; T.6 does not
// forbid them, but each picture has an end to what it can take.
TEST(GroupFourData, EndlessEmptyRunsAreDamage) {
  std::string bits;
  for (int i = 0; i < 100000; ++i) bits += "001 00110101 0000110111";
  EXPECT_EQ(Decode(Bits(bits), 8, 1).error, CADWICK_DATA_DAMAGED);
}
