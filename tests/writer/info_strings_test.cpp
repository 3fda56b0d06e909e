// Setters, getters and the buffer protocol of the information strings.
#include <gtest/gtest.h>
#include <sorrelin/frame/pdf.h>

#include <algorithm>
#include <string>

#include "tests/support/document.h"

namespace {

struct Family {
  char const* name;
  DWORD (*set_a)(hPDF, char const*);
  DWORD (*set_w)(hPDF, WCHAR const*);
  DWORD (*get_a)(hPDF, char*, DWORD*);
  DWORD (*get_w)(hPDF, WCHAR*, DWORD*);
};

constexpr Family kFamilies[] = {
    {"Title", pdf_SetTitleA, pdf_SetTitleW, pdf_GetTitleA, pdf_GetTitleW},
    {"Author", pdf_SetAuthorA, pdf_SetAuthorW, pdf_GetAuthorA, pdf_GetAuthorW},
    {"Subject", pdf_SetSubjectA, pdf_SetSubjectW, pdf_GetSubjectA, pdf_GetSubjectW},
    {"Keywords", pdf_SetKeywordsA, pdf_SetKeywordsW, pdf_GetKeywordsA, pdf_GetKeywordsW},
};

class InfoStrings : public testing::TestWithParam<Family> {
 protected:
  InfoStrings() { pdf_Init_PDF(&pdf_); }
  ~InfoStrings() override { pdf_Release_PDF(pdf_); }
  hPDF pdf_ = 0;
  Family const& family_ = GetParam();
};

INSTANTIATE_TEST_SUITE_P(All, InfoStrings, testing::ValuesIn(kFamilies),
                         [](auto const& row) { return std::string(row.param.name); });

TEST_P(InfoStrings, FreshSessionReportsSize1) {
  DWORD size = 99;
  EXPECT_EQ(family_.get_a(pdf_, nullptr, &size), 0u);
  EXPECT_EQ(size, 1u);
  size = 99;
  EXPECT_EQ(family_.get_w(pdf_, nullptr, &size), 0u);
  EXPECT_EQ(size, 1u);
}

TEST_P(InfoStrings, SizeCountsUnitsAndTheTerminator) {
  family_.set_w(pdf_, SORRELIN_TEXT("\u20ACx"));
  DWORD size = 0;
  EXPECT_EQ(family_.get_w(pdf_, nullptr, &size), 0u);
  EXPECT_EQ(size, 3u);
  EXPECT_EQ(family_.get_a(pdf_, nullptr, &size), 0u);
  EXPECT_EQ(size, 5u);  // three bytes of UTF-8, x, the terminator
}

TEST_P(InfoStrings, TextComesBackInBothWidths) {
  EXPECT_EQ(family_.set_a(pdf_, "\xE2\x82\xAC 1"), 0u);
  WCHAR wide[4];
  DWORD size = 4;
  EXPECT_EQ(family_.get_w(pdf_, wide, &size), 0u);
  EXPECT_EQ(sorrelin::WideString(wide), SORRELIN_TEXT("\u20AC 1"));
  char narrow[6];
  size = 6;
  EXPECT_EQ(family_.get_a(pdf_, narrow, &size), 0u);
  EXPECT_STREQ(narrow, "\xE2\x82\xAC 1");
}

TEST_P(InfoStrings, CapacityOneBelowTheNeedIs35AndKeepsTheBuffer) {
  family_.set_a(pdf_, "abc");
  char narrow[4] = {'#', '#', '#', '#'};
  DWORD size = 3;
  EXPECT_EQ(family_.get_a(pdf_, narrow, &size), 35u);
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(std::string(narrow, 4), "####");
  WCHAR wide[4] = {};
  size = 3;
  EXPECT_EQ(family_.get_w(pdf_, wide, &size), 35u);
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(wide[0], 0);
}

TEST_P(InfoStrings, NullPointersAre7AndTheSessionKeepsItsCode) {
  EXPECT_EQ(family_.set_w(pdf_, nullptr), 7u);
  EXPECT_EQ(family_.set_a(pdf_, nullptr), 7u);
  EXPECT_EQ(family_.get_a(pdf_, nullptr, nullptr), 7u);
  EXPECT_EQ(family_.get_w(pdf_, nullptr, nullptr), 7u);
  EXPECT_EQ(pdf_PDF_GetLastError(pdf_), 32u);
}

TEST_P(InfoStrings, BadHandlesAre2) {
  DWORD size = 0;
  for (hPDF const bad : {hPDF{0}, hPDF{-1}}) {
    EXPECT_EQ(family_.set_a(bad, "x"), 2u);
    EXPECT_EQ(family_.set_w(bad, SORRELIN_TEXT("x")), 2u);
    EXPECT_EQ(family_.get_a(bad, nullptr, &size), 2u);
    EXPECT_EQ(family_.get_w(bad, nullptr, &size), 2u);
  }
}

TEST(InfoStringMethods, NullTextIsError7) {
  test::MemoryDocument document;
  EXPECT_EQ(document->SetSubjectW(nullptr), 0);
  EXPECT_EQ(document->PDF_GetLastError(), 7u);
  EXPECT_EQ(document->GetSubjectW(nullptr, nullptr), 0);
  EXPECT_EQ(document->PDF_GetLastError(), 7u);
}

TEST(InfoStringMethods, EmptyKeywordsAfterOthersRemoveTheKey) {
  test::MemoryDocument document;
  document->SetKeywordsW(SORRELIN_TEXT("x"));
  document->SetKeywordsW(SORRELIN_TEXT(""));
  document.Create();
  EXPECT_EQ(document.Text().find("/Keywords"), std::string::npos);
}

TEST(InfoStringMethods, SetterBehindCreateHasNoEffectOnTheDocument) {
  test::MemoryDocument document;
  document.Create();
  document->SetTitleW(SORRELIN_TEXT("late"));
  EXPECT_NE(document.Finish().find("/Title (Converted Document)\n"), std::string::npos);
}

TEST(InfoStringMethods, SuccessLeavesAnOlderCode) {
  test::MemoryDocument document;
  document->PDF_SetLastError(1);
  EXPECT_EQ(document->SetTitleW(SORRELIN_TEXT("x")), 1);
  EXPECT_EQ(document->PDF_GetLastError(), 1u);
}

}  // namespace
