// The extents of objects, in order and out of order.
#include <gtest/gtest.h>
#include <sorrelin/document/extent_map.h>

#include <vector>

namespace sorrelin {
namespace {

TEST(ExtentMap, NewExtentIsZero) {
  ExtentMap extents;
  EXPECT_EQ((extents[{3, 0}].nStart), 0u);
  EXPECT_EQ((extents[{3, 0}].nEnd), 0u);
  EXPECT_EQ(extents.size(), 1u);
}

TEST(ExtentMap, NumberAndGenerationTogetherNameAnExtent) {
  ExtentMap extents;
  extents[{3, 1}] = {10, 20};
  extents[{3, 0}] = {30, 40};
  extents[{2, 9}] = {50, 60};
  EXPECT_EQ(extents.size(), 3u);
  EXPECT_EQ(extents.Find({3, 1})->nStart, 10u);
  EXPECT_EQ(extents.Find({3, 0})->nStart, 30u);
  EXPECT_EQ(extents.Find({2, 9})->nStart, 50u);
  EXPECT_EQ(extents.Find({3, 2}), nullptr);
  EXPECT_EQ(extents.Find({4, 0}), nullptr);
}

// Marks point to extents while further ones come, before and after them.
TEST(ExtentMap, ExtentsStayWhereTheyAre) {
  ExtentMap extents;
  std::vector<ObjectExtent*> places;
  for (DWORD i = 0; i < 2000; ++i) {
    DWORD const number = i % 3 == 0 ? 10000 - i : i;
    ObjectExtent& extent = extents[{number, 0}];
    extent.nStart = number;
    places.push_back(&extent);
  }
  EXPECT_EQ(extents.size(), 2000u);
  for (DWORD i = 0; i < 2000; ++i) {
    DWORD const number = i % 3 == 0 ? 10000 - i : i;
    EXPECT_EQ(extents.Find({number, 0}), places[i]) << i;
    EXPECT_EQ(&(extents[{number, 0}]), places[i]) << i;
    EXPECT_EQ(places[i]->nStart, number);
  }
}

TEST(ExtentMap, ExchangeTakesExtentsOfBothKinds) {
  ExtentMap extents;
  extents[{5, 0}].nStart = 1;
  extents[{4, 0}].nStart = 2;
  ExtentMap other;
  extents.swap(other);
  EXPECT_EQ(extents.size(), 0u);
  EXPECT_EQ(other.Find({5, 0})->nStart, 1u);
  EXPECT_EQ(other.Find({4, 0})->nStart, 2u);
}

}  // namespace
}  // namespace sorrelin
