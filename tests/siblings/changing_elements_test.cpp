// The list of changing elements, from pixels and back to them.
#include <gmock/gmock.h>
#include <siblings/cadwick/changing_elements.h>

#include <vector>

using sorrelin::cadwick::ChangingElements;
using testing::ElementsAre;

namespace {

std::vector<uint32_t> FirstElements(ChangingElements& row, size_t count) {
  return {row.Begin(), row.Begin() + count};
}

void FillRow(ChangingElements& row, uint8_t byte) {
  for (uint8_t& pixels : row.Row()) pixels = byte;
}

}  // namespace

TEST(ChangingElements, WhiteRowHasNoneButItsWidth) {
  ChangingElements row(100);
  EXPECT_THAT(FirstElements(row, 3), ElementsAre(100, 100, 100));
}

TEST(ChangingElements, ColumnsWhereTheColourChangesAreListed) {
  ChangingElements row(100);
  row.Row()[0] = 0x9F;   // 0, 1 and 3..7 to black, and black at the end of the byte
  row.Row()[1] = 0x80;   // 9 white
  row.Row()[12] = 0x70;  // 97, 98, 99
  row.FindElements();
  EXPECT_THAT(FirstElements(row, 6), ElementsAre(0, 1, 3, 9, 97, 100));
}

TEST(ChangingElements, FirstPixelStandsBehindWhite) {
  ChangingElements row(8);
  row.Row()[0] = 0xFF;
  row.FindElements();
  EXPECT_THAT(FirstElements(row, 3), ElementsAre(0, 8, 8));
  EXPECT_EQ(row.Begin()[-1], 0U);
}

TEST(ChangingElements, PixelsBehindTheWidthAreMadeWhite) {
  ChangingElements row(67);
  FillRow(row, 0xFF);
  row.FindElements();
  EXPECT_THAT(FirstElements(row, 2), ElementsAre(0, 67));
  EXPECT_EQ(row.Row()[8], 0xE0);
  EXPECT_EQ(row.Row()[9], 0x00);
}

TEST(ChangingElements, RunsAcrossWordsHaveTwoElements) {
  ChangingElements row(640);
  for (size_t i = 7; i < 50; ++i) row.Row()[i] = 0xFF;
  row.FindElements();
  EXPECT_THAT(FirstElements(row, 3), ElementsAre(56, 400, 640));
}

// Walks along 10,001 elements, which the list cannot hold at once.
TEST(ChangingElements, WindowShowsEveryElementInTurn) {
  ChangingElements row(10001);
  FillRow(row, 0x55);
  row.FindElements();
  uint32_t const* place = row.Begin();
  for (uint32_t column = 1; column < 10001; ++column) {
    ASSERT_EQ(place[0], column);
    ASSERT_EQ((place - row.Begin()) % 2, (column - 1) % 2) << "the place changed its colour";
    ++place;
    if (place > row.Limit()) place = row.Advance(place, column);
  }
  EXPECT_EQ(place[0], 10001U);
}

TEST(ChangingElements, AdvanceStepsOnRightOfTheColumn) {
  ChangingElements row(30000);
  FillRow(row, 0x55);
  row.FindElements();
  uint32_t const* const place = row.Advance(row.Limit() + 1, 20000);
  EXPECT_GT(place[0], 20000U);
  EXPECT_LE(place[-2], 20000U);
}

// Twice its pixels are more than 31 bits count.
TEST(ChangingElements, WidestRowTakesElements) {
  ChangingElements row(0x40000001);
  row.Clear();
  EXPECT_GT(row.WriteLimit() - row.Begin(), 4000);
}

TEST(ChangingElements, RewindShowsTheFirstElementAgain) {
  ChangingElements row(10000);
  FillRow(row, 0x55);
  row.FindElements();
  row.Advance(row.Limit() + 1, 0);
  EXPECT_NE(*row.Begin(), 1U);
  row.Rewind();
  EXPECT_THAT(FirstElements(row, 3), ElementsAre(1, 2, 3));
}

TEST(ChangingElements, WrittenElementsBecomePixels) {
  ChangingElements row(200);
  row.Clear();
  uint32_t* end = row.Begin();
  for (uint32_t const column : {0U, 3U, 60U, 70U, 70U, 70U, 128U, 200U}) *end++ = column;
  row.Finish(end);
  row.Paint();
  std::vector<uint8_t> expected(32);
  expected[0] = 0xE0;
  expected[7] = 0x0F;
  expected[8] = 0xFC;
  for (size_t i = 16; i < 25; ++i) expected[i] = 0xFF;
  EXPECT_THAT(row.Row(), testing::ElementsAreArray(expected));
}

TEST(ChangingElements, MoreElementsThanTheListHoldsBecomePixels) {
  ChangingElements row(20000);
  row.Clear();
  uint32_t* end = row.Begin();
  for (uint32_t column = 1; column < 20000; ++column) {
    *end++ = column;
    if (end > row.WriteLimit()) end = row.MakeRoom(end);
  }
  row.Finish(end);
  row.Paint();
  row.Rewind();
  EXPECT_THAT(FirstElements(row, 3), ElementsAre(1, 2, 3));
  EXPECT_THAT(row.Row().first(2500), testing::Each(0x55));
}

TEST(ChangingElements, RoomIsMadeForTwiceAsManyElementsAsPixels) {
  for (uint32_t const width : {32U, 64U, 3200U, 6400U}) {
    ChangingElements row(width);
    row.Clear();
    uint32_t* end = row.Begin();
    uint32_t written = 0;
    for (; end != nullptr && written < 3 * width; ++written) {
      *end++ = written / 3;
      if (end > row.WriteLimit()) end = row.MakeRoom(end);
    }
    EXPECT_EQ(written, 2 * width + 1) << width;
  }
}
