// The filters of PNG, by hand.
#include "tools/documents/png_predictor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace sorrelin::tool {
namespace {

using ::testing::ElementsAre;

std::vector<BYTE> Undo(BYTE tag, std::vector<BYTE> row, std::vector<BYTE> above,
                       size_t pixel_bytes = 1) {
  EXPECT_TRUE(UndoPngRow(tag, row, above, pixel_bytes));
  return row;
}

TEST(PngPredictor, NoneSubAndUp) {
  EXPECT_THAT(Undo(0, {1, 2, 3}, {9, 9, 9}), ElementsAre(1, 2, 3));
  EXPECT_THAT(Undo(1, {1, 2, 255}, {9, 9, 9}), ElementsAre(1, 3, 2));
  EXPECT_THAT(Undo(2, {1, 2, 250}, {9, 8, 7}), ElementsAre(10, 10, 1));
}

// (0 + 9) / 2 = 4, (5 + 8) / 2 = 6.
TEST(PngPredictor, AverageIsCutToAWholeNumber) {
  EXPECT_THAT(Undo(3, {1, 2}, {9, 8}), ElementsAre(5, 8));
}

// Guesses: 0 + 10 - 0 is nearest to up; 11 + 20 - 10 = 21 to up 20; 21 + 10 - 20 = 11 to up 10.
TEST(PngPredictor, PaethTakesTheNearest) {
  EXPECT_THAT(Undo(4, {1, 1, 1}, {10, 20, 10}), ElementsAre(11, 21, 11));
}

// Guess 5 + 5 - 5: all are equally near.
TEST(PngPredictor, PaethPrefersLeftThenUp) {
  EXPECT_THAT(Undo(4, {5, 1}, {0, 0}), ElementsAre(5, 6));
  EXPECT_THAT(Undo(4, {0, 0}, {5, 5}), ElementsAre(5, 5));
}

TEST(PngPredictor, LeftIsAPixelAway) {
  EXPECT_THAT(Undo(1, {1, 2, 3, 1, 1, 1}, {0, 0, 0, 0, 0, 0}, 3), ElementsAre(1, 2, 3, 2, 3, 4));
}

TEST(PngPredictor, OtherTagsAreRefused) {
  std::vector<BYTE> row = {1};
  std::vector<BYTE> const above = {1};
  EXPECT_FALSE(UndoPngRow(5, row, above, 1));
  EXPECT_EQ(row[0], 1);
}

}  // namespace
}  // namespace sorrelin::tool
