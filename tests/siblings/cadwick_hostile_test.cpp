// Data that nobody coded: cut at every byte, changed, or random. Sanitized builds see every access.
#include <gmock/gmock.h>
#include <tests/siblings/cadwick_support.h>

using namespace test;

namespace {

// Runs with standard error caught, which must stay empty.
class CadwickHostile : public testing::Test {
 protected:
  void SetUp() override { testing::internal::CaptureStderr(); }
  void TearDown() override { EXPECT_EQ(testing::internal::GetCapturedStderr(), ""); }
};

// What holds for every decode, whatever the data.
void ExpectConsistent(Decoded const& decoded, int32_t height) {
  EXPECT_LE(decoded.picture.height(), height);
  EXPECT_EQ(decoded.rows_told, decoded.picture.height());
  EXPECT_EQ(decoded.result != 0, decoded.picture.height() == height);
  EXPECT_THAT(decoded.error, testing::AnyOf(CADWICK_OK, CADWICK_DATA_ENDED, CADWICK_DATA_DAMAGED));
}

}  // namespace

TEST_F(CadwickHostile, DataCutAtAnyByteGiveTheRowsBefore) {
  for (unsigned const seed : {1u, 2u, 3u, 4u, 5u, 6u}) {
    Picture const picture = RandomPicture(150, 40, seed, seed * 7);
    Bytes const data = Encode(picture);
    int32_t rows_before = 0;
    for (size_t size = 0; size < data.size() - 4; ++size) {
      Bytes const cut(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(size));
      Decoded const decoded = Decode(cut, 150, 40);
      ExpectConsistent(decoded, 40);
      EXPECT_NE(decoded.error, CADWICK_DATA_DAMAGED) << size;
      EXPECT_GE(decoded.rows_told, rows_before);
      rows_before = decoded.rows_told;
      for (size_t y = 0; y < decoded.picture.rows.size(); ++y) {
        ASSERT_EQ(decoded.picture.rows[y], picture.rows[y]) << size << ' ' << y;
      }
    }
  }
}

TEST_F(CadwickHostile, ChangedBitsNeverBreakTheDecoder) {
  Picture const picture = RandomPicture(90, 20, 9);
  Bytes const data = Encode(picture);
  for (size_t bit = 0; bit < data.size() * 8; ++bit) {
    Bytes changed = data;
    changed[bit / 8] = static_cast<BYTE>(changed[bit / 8] ^ (0x80 >> (bit % 8)));
    ExpectConsistent(Decode(changed, 90, 20), 20);
  }
}

TEST_F(CadwickHostile, RandomBytesNeverBreakTheDecoder) {
  Random random(77);
  for (int turn = 0; turn < 4000; ++turn) {
    Bytes data(random() % 300);
    BYTE const mask = static_cast<BYTE>(random() | random());
    for (BYTE& value : data) value = static_cast<BYTE>(random() & mask);
    int32_t const width = 1 + static_cast<int32_t>(random() % 200);
    int32_t const height = 1 + static_cast<int32_t>(random() % 100);
    ExpectConsistent(Decode(data, width, height), height);
  }
}

TEST_F(CadwickHostile, WrongWidthNeverBreaksTheDecoder) {
  Bytes const data = Encode(RandomPicture(100, 30, 12));
  for (int32_t width = 1; width < 300; ++width) ExpectConsistent(Decode(data, width, 30), 30);
}

// Make-up codes without an end add up to a run beyond 32 bits (2560 pixels for 12 bits each).
TEST_F(CadwickHostile, RunsBeyondThirtyTwoBitsAreDamage) {
  std::string bits = "001";
  for (int i = 0; i < 1700000; ++i) bits += "000000011111";
  Bytes const data = Bits(bits);
  EXPECT_NE(Decode(data, 4000, 2000).result, 1);
}

TEST_F(CadwickHostile, FewBytesForAHugePictureAreReadQuickly) {
  for (int32_t const height : {1000000, INT32_MAX}) {
    EXPECT_EQ(Decode(Bits("1 1"), 16, height).rows_told, 2);
    ExpectConsistent(Decode(Bytes(100, 0xFF), 16, height), height);
  }
}
