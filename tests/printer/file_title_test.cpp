// Titles of jobs as names of files.
#include "tools/printer/file_title.h"

#include <gtest/gtest.h>

namespace sorrelin::tool {
namespace {

std::string Title(std::string_view title) { return FileTitle(title, "document"); }

TEST(FileTitle, OrdinaryTitlesStay) {
  EXPECT_EQ(Title("Invoice 2024, part 1.final"), "Invoice 2024, part 1.final");
  EXPECT_EQ(Title("Gr\xC3\xBC\xC3\x9F"
                  "e"),
            "Gr\xC3\xBC\xC3\x9F"
            "e");
}

TEST(FileTitle, NothingLeadsOutOfTheFolder) {
  EXPECT_EQ(Title("../x"), "_x");
  EXPECT_EQ(Title("/etc/passwd"), "_etc_passwd");
  EXPECT_EQ(Title("a/../../b"), "a_.._.._b");
}

TEST(FileTitle, TitlesOfNothingHaveAName) {
  for (std::string_view const title : {"", ".", "..", "...", "  ", ". . ."}) {
    EXPECT_EQ(Title(title), "document") << title;
  }
}

TEST(FileTitle, NoNameIsHidden) { EXPECT_EQ(Title(".profile"), "profile"); }

TEST(FileTitle, ControlCharactersBecomeUnderscores) {
  using namespace std::string_view_literals;
  EXPECT_EQ(Title("a\nb\x1B[31m\x7F\0c"sv), "a_b_[31m__c");
  EXPECT_EQ(Title("a\xE2\x80\xAE"
                  "fdp.exe"),
            "a_fdp.exe");  // right to left
}

TEST(FileTitle, BytesThatAreNoUtf8BecomeUnderscores) {
  EXPECT_EQ(Title("a\xFF"
                  "b\xC3"),
            "a_b_");
}

TEST(FileTitle, EndingIsNotRepeated) {
  EXPECT_EQ(Title("report.PDF"), "report");
  EXPECT_EQ(Title(".pdf"), "pdf");
}

TEST(FileTitle, LongTitlesAreCutAtAWholeCharacter) {
  EXPECT_EQ(Title(std::string(300, 'a')), std::string(240, 'a'));
  std::string euros;
  for (int i = 0; i < 100; ++i) euros += "\xE2\x82\xAC";
  EXPECT_EQ(Title("a" + euros), "a" + euros.substr(0, 237));
}

TEST(FileTitle, NumbersAreAddedFromTheSecondOn) {
  EXPECT_EQ(NumberedName("a", 1), "a.pdf");
  EXPECT_EQ(NumberedName("a", 2), "a (2).pdf");
  EXPECT_LE(NumberedName(std::string(240, 'a'), 9999).size(), 255u);
}

}  // namespace
}  // namespace sorrelin::tool
