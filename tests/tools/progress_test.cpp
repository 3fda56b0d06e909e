// The shape of the progress bar.
#include "tools/cli/progress.h"

#include <gtest/gtest.h>

namespace sorrelin::tool {
namespace {

TEST(ProgressBar, FillsTheColumnsByTheShare) {
  EXPECT_EQ(ProgressBar(0, 17), "[..........]   0%");
  EXPECT_EQ(ProgressBar(0.5, 17), "[#####.....]  50%");
  EXPECT_EQ(ProgressBar(1, 17), "[##########] 100%");
}

TEST(ProgressBar, SharesOutsideTheirRangeAreBrought) {
  EXPECT_EQ(ProgressBar(-1, 17), "[..........]   0%");
  EXPECT_EQ(ProgressBar(2, 17), "[##########] 100%");
}

TEST(ProgressBar, WideTerminalsAreNotFilled) { EXPECT_EQ(ProgressBar(0.3, 500).size(), 100u); }

TEST(ProgressBar, NarrowTerminalsGetNone) {
  EXPECT_EQ(ProgressBar(0.3, 7), "");
  EXPECT_EQ(ProgressBar(0.3, 8), "[.]  30%");
}

TEST(ProgressBar, TimeThatIsLeftTakesCellsOfTheBar) {
  using std::chrono::seconds;
  EXPECT_EQ(ProgressBar(0.5, 27, seconds(65)), "[#####.....]  50% 1:05 left");
  EXPECT_EQ(ProgressBar(0.5, 27, seconds(3600)).size(), 27u);
  EXPECT_EQ(ProgressBar(0.5, 17, seconds(5)), "");
}

}  // namespace
}  // namespace sorrelin::tool
