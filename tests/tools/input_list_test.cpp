// The order of inputs, and what a directory stands for.
#include "tools/make/input_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"

namespace sorrelin::tool {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::vector<BYTE> BytesOf(std::string const& text) { return {text.begin(), text.end()}; }

TEST(NaturalLess, RunsOfDigitsAreNumbers) {
  EXPECT_TRUE(NaturalLess("page2.tif", "page10.tif"));
  EXPECT_FALSE(NaturalLess("page10.tif", "page2.tif"));
  EXPECT_TRUE(NaturalLess("1-10-2", "1-10-11"));
  EXPECT_TRUE(NaturalLess("99999999999999999999998", "99999999999999999999999"));
}

TEST(NaturalLess, CaseCountsOnlyBetweenNamesThatAreAlikeWithoutIt) {
  EXPECT_TRUE(NaturalLess("Page2", "page10"));
  EXPECT_TRUE(NaturalLess("page2", "Page10"));
  EXPECT_TRUE(NaturalLess("Page", "page"));
  EXPECT_FALSE(NaturalLess("page", "Page"));
}

TEST(NaturalLess, LeadingZerosDecideLast) {
  EXPECT_TRUE(NaturalLess("a007b", "a8"));
  EXPECT_TRUE(NaturalLess("a07", "a7"));
  EXPECT_FALSE(NaturalLess("a7", "a07"));
  EXPECT_TRUE(NaturalLess("a07x1", "a7x2"));
}

TEST(NaturalLess, StartsStandBeforeWholesAndNothingBeforeItself) {
  EXPECT_TRUE(NaturalLess("scan.png", "scan1.png"));
  EXPECT_TRUE(NaturalLess("", "a"));
  EXPECT_TRUE(NaturalLess("a", "a0"));
  EXPECT_FALSE(NaturalLess("a1", "a1"));
}

class ListInputsTest : public ::testing::Test {
 protected:
  std::string Path(std::string const& name) const { return (directory_ / name).string(); }

  // Names below the test's directory.
  std::vector<std::string> List(std::vector<std::string> const& names, Sort sort = Sort::kNone,
                                bool recursive = false) {
    std::vector<std::string> paths;
    for (std::string const& name : names) paths.push_back(Path(name));
    std::vector<std::string> found;
    for (Input const& input : ListInputs(paths, sort, recursive)) {
      EXPECT_EQ(input.problem, "");
      found.push_back(Below(input.name));
    }
    return found;
  }

  std::string Below(std::string const& name) const {
    return fs::path(name).lexically_relative(directory_.path()).generic_string();
  }

  test::TempDir directory_;
};

TEST_F(ListInputsTest, NamesStayAsTheyAreWhetherTheyExistOrNot) {
  EXPECT_THAT(List({"b", "a10", "a2"}), ElementsAre("b", "a10", "a2"));
  auto const inputs = ListInputs({"-"}, Sort::kNone);
  ASSERT_EQ(inputs.size(), 1u);
  EXPECT_EQ(inputs[0].name, "-");
}

TEST_F(ListInputsTest, SortingGoesByBytesOrByNumbers) {
  EXPECT_THAT(List({"b", "a10", "a2"}, Sort::kName), ElementsAre("a10", "a2", "b"));
  EXPECT_THAT(List({"b", "a10", "a2"}, Sort::kNatural), ElementsAre("a2", "a10", "b"));
}

TEST_F(ListInputsTest, DirectoryStandsForItsPicturesByNameInItsPlace) {
  fs::create_directory(directory_ / "d");
  for (char const* const name : {"d/s10.TIF", "d/s2.png", "d/s1.jpeg"}) {
    test::WriteAll(directory_ / name, {});
  }
  EXPECT_THAT(List({"z", "d", "a"}), ElementsAre("z", "d/s1.jpeg", "d/s10.TIF", "d/s2.png", "a"));
  EXPECT_THAT(List({"z", "d", "a"}, Sort::kNatural),
              ElementsAre("a", "d/s1.jpeg", "d/s2.png", "d/s10.TIF", "z"));
}

TEST_F(ListInputsTest, PicturesAreToldByTheirEndingOrTheirFirstBytes) {
  fs::create_directory(directory_ / "d");
  test::WriteAll(directory_ / "d/empty.bmp", {});
  test::WriteAll(directory_ / "d/bare", BytesOf("\x89PNG\r\n\x1A\n and more"));
  test::WriteAll(directory_ / "d/notes.txt", BytesOf("plain words, long enough to be looked at"));
  test::WriteAll(directory_ / "d/letter.pdf", BytesOf("%PDF-1.7 is no picture"));
  test::WriteAll(directory_ / "d/short", BytesOf("BM"));
  EXPECT_THAT(List({"d"}), ElementsAre("d/bare", "d/empty.bmp"));
}

TEST_F(ListInputsTest, HiddenFilesAndDirectoriesAreLeftOut) {
  fs::create_directories(directory_ / "d/below.tif");
  test::WriteAll(directory_ / "d/.hidden.png", {});
  test::WriteAll(directory_ / "d/below.tif/a.png", {});
  test::WriteAll(directory_ / "d/a.png", {});
  EXPECT_THAT(List({"d"}), ElementsAre("d/a.png"));
}

TEST_F(ListInputsTest, PicturesOfFormatsThatAreNotReadAreNotPassedOver) {
  fs::create_directory(directory_ / "d");
  for (char const* const name :
       {"d/a.jxl", "d/b.CR2", "d/c.heic", "d/d.Svg", "d/e.NRW", "d/Thumbs.db", "d/x.txt"}) {
    test::WriteAll(directory_ / name, BytesOf("whatever there is in it"));
  }
  EXPECT_THAT(List({"d"}), ElementsAre("d/a.jxl", "d/b.CR2", "d/c.heic", "d/d.Svg", "d/e.NRW"));
  std::vector<std::string> ignored;
  ListInputs({Path("d")}, Sort::kNone, false, &ignored);
  ASSERT_EQ(ignored.size(), 2u);
  EXPECT_EQ(Below(ignored[0]), "d/Thumbs.db");
  EXPECT_EQ(Below(ignored[1]), "d/x.txt");
}

TEST_F(ListInputsTest, RecursionGoesDown) {
  fs::create_directories(directory_ / "d/b/c");
  for (char const* const name : {"d/z.png", "d/b/y.png", "d/b/c/x.png"}) {
    test::WriteAll(directory_ / name, {});
  }
  EXPECT_THAT(List({"d"}, Sort::kNone, true), ElementsAre("d/b/c/x.png", "d/b/y.png", "d/z.png"));
  EXPECT_THAT(List({"d"}), ElementsAre("d/z.png"));
}

// A separator comes before letters and digits, whichever the system writes.
TEST_F(ListInputsTest, FilesOfADirectoryComeBeforeLongerNames) {
  fs::create_directories(directory_ / "d/Scan");
  for (char const* const name : {"d/Scan/z.png", "d/Scan1.png", "d/Scana.png"}) {
    test::WriteAll(directory_ / name, {});
  }
  for (Sort const sort : {Sort::kNone, Sort::kName, Sort::kNatural}) {
    EXPECT_THAT(List({"d"}, sort, true), ElementsAre("d/Scan/z.png", "d/Scan1.png", "d/Scana.png"));
  }
}

TEST_F(ListInputsTest, DirectoryWithoutPicturesIsAProblem) {
  fs::create_directory(directory_ / "d");
  auto const inputs = ListInputs({Path("d"), Path("x")}, Sort::kNone);
  ASSERT_EQ(inputs.size(), 2u);
  EXPECT_EQ(inputs[0].name, Path("d"));
  EXPECT_THAT(inputs[0].problem, HasSubstr("is a directory without pictures"));
  EXPECT_EQ(inputs[1].problem, "");
}

}  // namespace
}  // namespace sorrelin::tool
