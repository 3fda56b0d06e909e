// Setters, getters and the buffer protocol of the information strings.
#include <gtest/gtest.h>
#include <sorrelin/frame/pdf.h>

#include <string>

#include "tests/support/document.h"
#include "tests/support/pdf_builder.h"

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
    // The handle is looked at first.
    EXPECT_EQ(family_.set_a(bad, nullptr), 2u);
    EXPECT_EQ(family_.set_w(bad, nullptr), 2u);
    EXPECT_EQ(family_.get_a(bad, nullptr, nullptr), 2u);
    EXPECT_EQ(family_.get_w(bad, nullptr, nullptr), 2u);
  }
}

// A document of one page, by the classic route or the stream route.
test::Bytes DocumentWith(std::string const& info, bool stream_route) {
  test::PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  std::string keys = "/Root 1 0 R";
  if (!info.empty()) {
    pdf.Object(4, info);
    keys += " /Info 4 0 R";
  }
  if (stream_route) {
    pdf.XrefStream(5, {.keys = keys});
  } else {
    pdf.Classic({.keys = keys});
  }
  return pdf.Document();
}

void Open(hPDF pdf, test::Bytes const& document) {
  EXPECT_EQ(pdf_OpenPDFInMemory(pdf, document.data(), static_cast<DWORD>(document.size())), 0u);
}

TEST_P(InfoStrings, ComeFromTheDocumentThatIsRead) {
  for (bool const stream_route : {false, true}) {
    for (char const* const value : {"<FEFF00410042>", "(AB)"}) {
      family_.set_a(pdf_, "old");
      test::Bytes const document =
          DocumentWith(std::string("<</") + family_.name + " " + value + " >>", stream_route);
      Open(pdf_, document);
      WCHAR text[8] = {};
      DWORD size = 8;
      EXPECT_EQ(family_.get_w(pdf_, text, &size), 0u);
      EXPECT_EQ(sorrelin::WideString(text), SORRELIN_TEXT("AB")) << value;
      EXPECT_EQ(size, 3u);
      pdf_ClosePDFFile(pdf_);
    }
  }
}

TEST_P(InfoStrings, StayWhereTheDocumentHasNoInfoObject) {
  for (bool const stream_route : {false, true}) {
    family_.set_a(pdf_, "old");
    test::Bytes const document = DocumentWith("", stream_route);
    Open(pdf_, document);
    char text[8] = {};
    DWORD size = 8;
    EXPECT_EQ(family_.get_a(pdf_, text, &size), 0u);
    EXPECT_STREQ(text, "old");
    pdf_ClosePDFFile(pdf_);
  }
}

TEST(InfoStringMethods, NullTextIsError7) {
  test::MemoryDocument document;
  EXPECT_EQ(document->SetSubjectW(nullptr), 0);
  EXPECT_EQ(document->PDF_GetLastError(), 7u);
  EXPECT_EQ(document->GetSubjectW(nullptr, nullptr), 0);
  EXPECT_EQ(document->PDF_GetLastError(), 7u);
}

TEST(InfoStringMethods, WithoutTheSideRecordTheyAreError2) {
  test::MemoryDocument document;
  auto const reader = SessionProbe::ReaderPointer(document.session());
  SessionProbe::ReaderPointer(document.session()) = nullptr;
  DWORD size = 5;
  EXPECT_EQ(document->SetTitleW(SORRELIN_TEXT("x")), 0);
  EXPECT_EQ(document->PDF_GetLastError(), 2u);
  document->PDF_SetLastError(0);
  EXPECT_EQ(document->GetTitleW(nullptr, &size), 0);
  EXPECT_EQ(document->PDF_GetLastError(), 2u);
  document->PDF_SetLastError(0);
  EXPECT_EQ(document->GetTitleA(nullptr, nullptr), 0);
  EXPECT_EQ(document->PDF_GetLastError(), 2u);
  EXPECT_EQ(document->SetTitleW(nullptr), 0);
  EXPECT_EQ(document->PDF_GetLastError(), 7u);
  EXPECT_EQ(size, 5u);
  SessionProbe::ReaderPointer(document.session()) = reader;
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
