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

}  // namespace
}  // namespace sorrelin::tool
