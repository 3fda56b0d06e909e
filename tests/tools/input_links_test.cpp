// Pipes and links in directories of inputs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/temp_dir.h"
#include "tools/make/input_list.h"

namespace sorrelin::tool {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class InputLinks : public ::testing::Test {
 protected:
  InputLinks() { fs::create_directories(directory_ / "b"); }

  std::vector<std::string> Names(bool recursive = false) const {
    std::vector<std::string> names;
    for (Input const& input : List(recursive)) {
      EXPECT_EQ(input.problem, "");
      names.push_back(fs::path(input.name).lexically_relative(directory_.path()).string());
    }
    return names;
  }
  std::vector<Input> List(bool recursive = false) const {
    return ListInputs({directory_.path().string()}, Sort::kNone, recursive);
  }

  test::TempDir directory_;
};

TEST_F(InputLinks, PipesAreLeftOutAndLinksToFilesAreNot) {
  ASSERT_EQ(mkfifo((directory_ / "pipe.png").c_str(), 0600), 0);
  test::WriteAll(directory_ / "a.png", {});
  fs::create_symlink("a.png", directory_ / "link.png");
  EXPECT_THAT(Names(), ElementsAre("a.png", "link.png"));
}

TEST_F(InputLinks, DanglingLinksAreProblems) {
  fs::create_symlink("nowhere", directory_ / "link");
  auto const inputs = List();
  ASSERT_EQ(inputs.size(), 1u);
  EXPECT_EQ(inputs[0].name, (directory_ / "link").string());
  EXPECT_THAT(inputs[0].problem, HasSubstr("is a link to a file that does not exist"));
}

TEST_F(InputLinks, RecursionFollowsNoLinksToDirectories) {
  test::WriteAll(directory_ / "b/y.png", {});
  fs::create_directory_symlink("..", directory_ / "b/up");
  EXPECT_THAT(Names(true), ElementsAre("b/y.png"));
}

}  // namespace
}  // namespace sorrelin::tool
