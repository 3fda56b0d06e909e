// The search for content from the edges of a picture.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/image/toolbox/dib_toolbox.h>
#include <tests/image/toolbox_pictures.h>

#include <algorithm>
#include <limits>
#include <set>
#include <utility>
#include <vector>

namespace {

using sorrelin::FindContentBounds;
using test::Block;
using test::Bytes;
using testing::ElementsAre;

constexpr LONG kMin = std::numeric_limits<LONG>::min();
constexpr LONG kMax = std::numeric_limits<LONG>::max();
constexpr LONG kUntouched = 77;
constexpr int kThreshold = 100;

using Point = std::pair<LONG, LONG>;

struct Found {
  int result = 0;
  std::vector<LONG> edges;  // left, right, top, bottom
};

Found Find(HDIB dib, int threshold = kThreshold, bool bright = true) {
  Found found{0, std::vector<LONG>(4, kUntouched)};
  found.result = FindContentBounds(dib, threshold, bright, &found.edges[0], &found.edges[1],
                                   &found.edges[2], &found.edges[3]);
  return found;
}

// A black picture with white points; (0, 0) is the top left.
Block Points(LONG width, LONG height, std::set<Point> const& points) {
  return test::MakePicture(width, height, 24, [&](LONG x, LONG y) {
    return points.contains({x, y}) ? 0xFFFFFFu : 0u;
  });
}

Block WithHeight(Block dib, LONG height) {
  static_cast<BITMAPINFOHEADER*>(GlobalLock(dib))->biHeight = height;
  GlobalUnlock(dib);
  return dib;
}

Block OnePixel(DWORD color) {
  return test::MakePicture(1, 1, 24, [&](LONG, LONG) { return color; });
}

TEST(FindContentBounds, DistancesFromEachEdge) {
  Found const found = Find(Points(10, 8, {{2, 1}, {6, 4}}));
  EXPECT_EQ(found.result, 1);
  EXPECT_THAT(found.edges, ElementsAre(2, 3, 1, 3));
}

TEST(FindContentBounds, NothingFoundIsMinusOne) {
  Found const found = Find(Points(10, 8, {}));
  EXPECT_EQ(found.result, 1);
  EXPECT_THAT(found.edges, ElementsAre(-1, -1, -1, -1));
}

TEST(FindContentBounds, HitAtTheEdgeGivesWayToALaterOne) {
  EXPECT_THAT(Find(Points(10, 8, {{0, 3}, {4, 3}})).edges, ElementsAre(4, 5, 3, 4));
  EXPECT_THAT(Find(Points(10, 8, {{9, 3}, {4, 3}})).edges, ElementsAre(4, 5, 3, 4));
  EXPECT_THAT(Find(Points(10, 8, {{4, 0}, {4, 3}})).edges, ElementsAre(4, 5, 3, 4));
  EXPECT_THAT(Find(Points(10, 8, {{4, 7}, {4, 3}})).edges, ElementsAre(4, 5, 3, 4));
}

TEST(FindContentBounds, OnlyHitAtTheEdgeIsZero) {
  EXPECT_THAT(Find(Points(10, 8, {{0, 0}})).edges, ElementsAre(0, 9, 0, 7));
  EXPECT_THAT(Find(Points(10, 8, {{9, 7}})).edges, ElementsAre(9, 0, 7, 0));
}

// The later hit may even be at the other edge.
TEST(FindContentBounds, HitsAtBothEdgesReplaceEachOther) {
  EXPECT_THAT(Find(Points(10, 8, {{0, 0}, {9, 7}})).edges, ElementsAre(9, 9, 7, 7));
}

TEST(FindContentBounds, SinglePixel) {
  EXPECT_THAT(Find(OnePixel(0xFFFFFF)).edges, ElementsAre(0, 0, 0, 0));
  EXPECT_THAT(Find(OnePixel(0)).edges, ElementsAre(-1, -1, -1, -1));
}

TEST(FindContentBounds, WhitePictureIsHitOnePixelInward) {
  Block const white = test::MakePicture(5, 4, 24, [](LONG, LONG) { return 0xFFFFFFu; });
  EXPECT_THAT(Find(white).edges, ElementsAre(1, 1, 1, 1));
}

TEST(FindContentBounds, BrightHitsAreAboveThreeTimesTheThreshold) {
  EXPECT_EQ(Find(OnePixel(0x646464)).edges[0], -1);  // 300
  EXPECT_EQ(Find(OnePixel(0x656464)).edges[0], 0);   // 301, by each colour
  EXPECT_EQ(Find(OnePixel(0x646564)).edges[0], 0);
  EXPECT_EQ(Find(OnePixel(0x646465)).edges[0], 0);
}

TEST(FindContentBounds, DarkHitsAreNotAboveThreeTimesTheThreshold) {
  EXPECT_EQ(Find(OnePixel(0x646464), kThreshold, false).edges[0], 0);
  EXPECT_EQ(Find(OnePixel(0x656464), kThreshold, false).edges[0], -1);
}

TEST(FindContentBounds, ThresholdsBeyondAllColours) {
  EXPECT_EQ(Find(OnePixel(0xFFFFFF), kMax, true).edges[0], -1);
  EXPECT_EQ(Find(OnePixel(0xFFFFFF), kMax, false).edges[0], 0);
  EXPECT_EQ(Find(OnePixel(0), kMin, true).edges[0], 0);
  EXPECT_EQ(Find(OnePixel(0), kMin, false).edges[0], -1);
}

TEST(FindContentBounds, TopAndBottomFollowTheSignOfTheHeight) {
  EXPECT_THAT(Find(WithHeight(Points(10, 8, {{2, 1}}), -8)).edges, ElementsAre(2, 7, 6, 1));
}

// Every picture of 4 x 3 pixels, against the description taken literally.
TEST(FindContentBounds, AgreesWithTheLiteralSearch) {
  auto const literal = [](LONG count, auto has_hit) {
    LONG result = -1;
    for (LONG i = 0; i < count; ++i) {
      if (has_hit(i)) result = i;
      if (result > 0) break;
    }
    return result;
  };
  for (unsigned picture = 0; picture < 4096; ++picture) {
    auto const set = [&](LONG x, LONG y) { return ((picture >> (4 * y + x)) & 1u) != 0; };
    auto const column = [&](LONG x) { return set(x, 0) || set(x, 1) || set(x, 2); };
    auto const row = [&](LONG y) { return set(0, y) || set(1, y) || set(2, y) || set(3, y); };
    Block const dib =
        test::MakePicture(4, 3, 24, [&](LONG x, LONG y) { return set(x, y) ? 0xFFFFFFu : 0u; });
    ASSERT_THAT(Find(dib).edges,
                ElementsAre(literal(4, column), literal(4, [&](LONG i) { return column(3 - i); }),
                            literal(3, row), literal(3, [&](LONG i) { return row(2 - i); })))
        << picture;
  }
}

TEST(FindContentBounds, OtherDepthsAreRefused) {
  for (WORD const bits : {WORD{1}, WORD{8}}) {
    Found const found = Find(test::MakePicture(2, 2, bits, [](LONG, LONG) { return 1u; }));
    EXPECT_EQ(found.result, 0);
    EXPECT_THAT(found.edges, ElementsAre(kUntouched, kUntouched, kUntouched, kUntouched));
  }
}

TEST(FindContentBounds, RefusesWhatIsNoBitmap) {
  EXPECT_EQ(Find(nullptr).result, 0);
  EXPECT_EQ(Find(INVALID_HANDLE_VALUE).result, 0);
  EXPECT_EQ(Find(test::MakeBlock({1, 2, 3})).result, 0);
  LONG edge = 0;
  EXPECT_EQ(FindContentBounds(OnePixel(0), 1, true, nullptr, &edge, &edge, &edge), 0);
  EXPECT_EQ(FindContentBounds(OnePixel(0), 1, true, &edge, nullptr, &edge, &edge), 0);
  EXPECT_EQ(FindContentBounds(OnePixel(0), 1, true, &edge, &edge, nullptr, &edge), 0);
  EXPECT_EQ(FindContentBounds(OnePixel(0), 1, true, &edge, &edge, &edge, nullptr), 0);
}

TEST(FindContentBounds, PictureWithoutPixelsHasNoHits) {
  for (LONG const height : {0, 3}) {
    Bytes bytes = test::ScrambledPicture(1, 1, 24);
    BITMAPINFOHEADER header = test::HeaderOf(bytes);
    header.biWidth = height == 0 ? 1 : 0;
    header.biHeight = height;
    Found const found = Find(test::MakeBlock(test::HeaderBytes(header)), 100, false);
    EXPECT_EQ(found.result, 1);
    EXPECT_THAT(found.edges, ElementsAre(-1, -1, -1, -1));
  }
}

// A white picture of 4 x 4 pixels in rows of 12 bytes, cut after two rows and two pixels.
TEST(FindContentBounds, PixelsThatTheBlockLacksAreBlack) {
  Bytes bytes = test::MakePicture(4, 4, 24, [](LONG, LONG) { return 0xFFFFFFu; }).Content();
  bytes.resize(40 + 24 + 6);
  EXPECT_THAT(Find(test::MakeBlock(bytes)).edges, ElementsAre(1, 1, 1, 1));
  EXPECT_THAT(Find(test::MakeBlock(bytes), 100, false).edges, ElementsAre(1, 1, 1, 2));
  bytes.resize(40 + 3);
  EXPECT_THAT(Find(test::MakeBlock(bytes)).edges, ElementsAre(0, 3, 3, 0));
  EXPECT_THAT(Find(test::MakeBlock(bytes), 100, false).edges, ElementsAre(1, 1, 1, 1));
}

// A colour whose red the block lacks counts with its blue and green.
TEST(FindContentBounds, PixelThatIsCutCountsWithWhatThereIs) {
  Bytes bytes = OnePixel(0xFFFFFF).Content();
  bytes.resize(42);
  EXPECT_EQ(Find(test::MakeBlock(bytes), 169).edges[0], 0);  // 510 is above 507
  EXPECT_EQ(Find(test::MakeBlock(bytes), 170).edges[0], -1);
}

TEST(FindContentBounds, LargePromiseInASmallBlock) {
  Bytes bytes = OnePixel(0).Content();
  BITMAPINFOHEADER header = test::HeaderOf(bytes);
  header.biWidth = 1;
  header.biHeight = 1 << 29;
  bytes = test::HeaderBytes(header);
  EXPECT_THAT(Find(test::MakeBlock(bytes), 100, false).edges, ElementsAre(0, 0, 1, 1));
  EXPECT_THAT(Find(test::MakeBlock(bytes), 100, true).edges, ElementsAre(-1, -1, -1, -1));
  header.biHeight = kMin;
  EXPECT_EQ(Find(test::MakeBlock(test::HeaderBytes(header))).result, 0);
}

}  // namespace
