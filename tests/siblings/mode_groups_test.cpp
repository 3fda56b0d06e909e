// Groups of mode codes, against their definition (T.6, Table 1) and against one code at a time.
#include <gtest/gtest.h>
#include <siblings/cadwick/mode_groups.h>

#include <array>
#include <cstdint>
#include <random>

namespace {

namespace cadwick = sorrelin::cadwick;
using cadwick::Distances;
using cadwick::Mode;
using cadwick::ModeGroup;

constexpr uint32_t kCodes = cadwick::kGroupCodes;

TEST(ModeGroups, CodeThatIsNotWholeIsLeftToTheNext) {
  // V0, VR1, VL1, and three of the six bits of VL2.
  ModeGroup const& group = cadwick::kModeGroups[0b1'011'010'000];
  EXPECT_EQ(group.count, 3);
  EXPECT_EQ(group.mask, 0b111);
  EXPECT_EQ(group.length, 7);
  EXPECT_EQ(group.last, Mode::kVertical);
  EXPECT_EQ(group.distances, (Distances{0, 1, -1}));
  EXPECT_EQ(group.LengthOf(1), 1U);
  EXPECT_EQ(group.LengthOf(2), 4U);
}

TEST(ModeGroups, CodeOfAnotherModeEndsItsGroup) {
  // VR1, horizontal mode, and bits that belong to its run.
  ModeGroup const& horizontal = cadwick::kModeGroups[0b011'001'1111];
  EXPECT_EQ(horizontal.count, 1);
  EXPECT_EQ(horizontal.length, 6);
  EXPECT_EQ(horizontal.last, Mode::kHorizontal);
  // Pass mode alone, V0 after it.
  ModeGroup const& pass = cadwick::kModeGroups[0b0001'111111];
  EXPECT_EQ(pass.count, 0);
  EXPECT_EQ(pass.length, 4);
  EXPECT_EQ(pass.last, Mode::kPass);
}

TEST(ModeGroups, NoMoreThanEightCodesAreInOne) {
  ModeGroup const& group = cadwick::kModeGroups[0b11'1111'1111];
  EXPECT_EQ(group.count, 8);
  EXPECT_EQ(group.length, 8);
  EXPECT_EQ(group.LengthOf(7), 7U);
}

TEST(ModeGroups, BitsThatBeginWithNoCodeAreAnInvalidGroup) {
  ModeGroup const& group = cadwick::kModeGroups[0b0000001'111];
  EXPECT_EQ(group.length, 0);
  EXPECT_EQ(group.last, Mode::kInvalid);
}

// Columns of a row above, with the elements before and after those that a group starts from.
struct Above {
  std::array<uint32_t, kCodes + 2> columns{};
  uint32_t const* B1() const { return columns.data() + 1; }
};

TEST(ModeGroups, ColumnFitsBetweenTheNeighboursOfItsElement) {
  Above const above{{0, 10, 20, 30, 40, 50, 60, 70, 80, 90}};
  std::array<uint32_t, kCodes> placed{};
  EXPECT_EQ(cadwick::PlaceSideBySide(above.B1(), {0, 1, -1, 3, -3, 2, -2, 0}, 5, placed.data()),
            0xFFU);
  EXPECT_EQ(placed, (std::array<uint32_t, kCodes>{10, 21, 29, 43, 47, 62, 68, 80}));
}

TEST(ModeGroups, ColumnBeforeTheLastOneDoesNotFit) {
  Above const above{{0, 10, 12, 30, 40, 50, 60, 70, 80, 90}};
  std::array<uint32_t, kCodes> placed{};
  // 11, then 12 - 3, which lies before it; then a0 itself is after the first column.
  EXPECT_EQ(cadwick::PlaceSideBySide(above.B1(), {1, -3}, 5, placed.data()) & 0b11U, 0b01U);
  EXPECT_EQ(cadwick::PlaceSideBySide(above.B1(), {1, 0}, 12, placed.data()) & 0b11U, 0b10U);
}

TEST(ModeGroups, ColumnAtTheFollowingElementDoesNotFit) {
  Above const above{{0, 10, 12, 30, 40, 50, 60, 70, 80, 90}};
  std::array<uint32_t, kCodes> placed{};
  EXPECT_EQ(cadwick::PlaceSideBySide(above.B1(), {2, 0}, 5, placed.data()) & 0b11U, 0b10U);
}

TEST(ModeGroups, SideBySideIsAsOneByOne) {
  std::mt19937 random(11);
  for (int trial = 0; trial < 20000; ++trial) {
    Above above;
    auto const step = static_cast<uint32_t>(1 + random() % 6);
    auto column = static_cast<uint32_t>(random() % 3 == 0 ? 0 : random() % 0x7FFFFF00U);
    for (uint32_t& element : above.columns)
      element = column += static_cast<uint32_t>(random() % step);
    Distances distances{};
    for (int8_t& distance : distances)
      distance = static_cast<int8_t>(static_cast<int>(random() % 7) - 3);
    auto const a0 = static_cast<uint32_t>(above.columns[0] + random() % 3);
    std::array<uint32_t, kCodes> one{};
    std::array<uint32_t, kCodes> other{};
    ASSERT_EQ(cadwick::PlaceSideBySide(above.B1(), distances, a0, one.data()),
              cadwick::PlaceOneByOne(above.B1(), distances, a0, other.data()));
    ASSERT_EQ(one, other);
  }
}

}  // namespace
