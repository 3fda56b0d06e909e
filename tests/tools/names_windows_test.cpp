// Names of files where the system is Windows: patterns, servers, letters of either case.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"
#include "tools/system/names.h"

namespace sorrelin::tool {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

class WindowsPatterns : public ::testing::Test {
 protected:
  WindowsPatterns() {
    for (wchar_t const* const name : {L"b.tif", L"a.TIF", L"c.tiff", L"page1.png", L"page12.png",
                                      L"plain", L"\u00C4\u0416.tif", L".hidden.tif"}) {
      test::WriteAll(directory_.path() / name, {});
    }
  }

  // The names without their folder, which they all must have.
  std::vector<std::string> Found(std::string const& pattern) const {
    std::string const folder = directory_.path().string() + "/";
    std::vector<std::string> names = NamesOf(folder + pattern);
    for (std::string& name : names) {
      EXPECT_TRUE(name.starts_with(folder)) << name;
      name.erase(0, folder.size());
    }
    return names;
  }

  test::TempDir directory_;
};

TEST_F(WindowsPatterns, StarTakesAnyTextAndLettersOfEitherCase) {
  EXPECT_THAT(Found("*.tif"), ElementsAre("a.TIF", "b.tif", "\xC3\x84\xD0\x96.tif"));
  EXPECT_THAT(Found("\xC3\xA4*"), ElementsAre("\xC3\x84\xD0\x96.tif"));
  EXPECT_THAT(Found("*a*1*.p*g"), ElementsAre("page1.png", "page12.png"));
}

TEST_F(WindowsPatterns, QuestionMarkTakesOneCharacter) {
  EXPECT_THAT(Found("page?.png"), ElementsAre("page1.png"));
  EXPECT_THAT(Found("?.tif"), ElementsAre("a.TIF", "b.tif"));
}

TEST_F(WindowsPatterns, StarDotStarIsEveryName) {
  EXPECT_EQ(Found("*.*"), Found("*"));
  EXPECT_THAT(Found("pl*.*"), ElementsAre("pl*.*"));
}

TEST_F(WindowsPatterns, NameThatNothingFitsStaysAsItIs) {
  EXPECT_THAT(Found("*.jpg"), ElementsAre("*.jpg"));
  EXPECT_THAT(Found("none.jpg"), ElementsAre("none.jpg"));
  EXPECT_THAT(NamesOf("-"), ElementsAre("-"));
  EXPECT_THAT(NamesOf("\\\\?\\C:\\a.tif"), ElementsAre("\\\\?\\C:\\a.tif"));
}

TEST_F(WindowsPatterns, HiddenFilesAreLeftOut) {
  SetFileAttributesW((directory_ / "b.tif").c_str(), FILE_ATTRIBUTE_HIDDEN);
  bool const has_attribute =
      (GetFileAttributesW((directory_ / "b.tif").c_str()) & FILE_ATTRIBUTE_HIDDEN) != 0;
  EXPECT_EQ(Found("?.tif").size(), has_attribute ? 1u : 2u);
  EXPECT_THAT(Found(".h*"), ElementsAre(".h*"));
}

TEST(WindowsNames, ServersAndDrivesStayInFullNames) {
  EXPECT_EQ(FullName(L"\\\\server\\share\\a.pdf"), L"\\\\server\\share\\a.pdf");
  EXPECT_EQ(FullName(L"//server/share/a.pdf").native(), L"\\\\server\\share\\a.pdf");
  EXPECT_EQ(FullName(L"\\\\?\\C:\\a\\b.pdf"), L"\\\\?\\C:\\a\\b.pdf");
  EXPECT_EQ(FullName(L"C:/a/../b.pdf").native(), L"C:\\b.pdf");
  EXPECT_EQ(FullName(L"a.pdf"), fs::current_path() / L"a.pdf");
}

TEST(WindowsNames, SpellingsOfOneNameCompareEqual) {
  std::string const name = NameToCompare(L"C:\\Folder\\\u00C4.pdf");
  EXPECT_EQ(NameToCompare(L"c:/folder/./\u00E4.PDF"), name);
  EXPECT_EQ(NameToCompare(L"c:\\folder\\\u00E4.pdf. "), name);
  EXPECT_NE(NameToCompare(L"C:\\Folder\\a.pdf"), name);
}

// What NTFS allows in a name need not be Unicode.
TEST(WindowsNames, HalfASurrogatePairIsReplaced) {
  EXPECT_EQ(NameOf(L"a\xD800"
                   L"b.png"),
            "a\xEF\xBF\xBD"
            "b.png");
  EXPECT_EQ(NameOf(L"\U0001F600.png"), "\xF0\x9F\x98\x80.png");
}

}  // namespace
}  // namespace sorrelin::tool
