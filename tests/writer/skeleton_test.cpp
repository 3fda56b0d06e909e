// The templates of the objects around the images.
#include <gtest/gtest.h>

#include <ctime>
#include <utility>

#include "tests/support/document.h"
#include "tests/support/short_file.h"

namespace {

using test::Create;
using test::MemoryDocument;
using test::ObjectInAShortFile;
using test::WithoutDate;

constexpr char kInfoWithoutTitle[] =
    "%PDF-1.7\n%c\xFE\xFE\xFE\xFE\n1 0 obj\n<<\n/CreationDate (D:00000000000000)\n"
    "/Producer (Sorrelin.dll v13, 1, 0, 972, Ferrowell Software LLC.)\n"
    "/Creator (me)\n";

std::string HeaderOf(MemoryDocument& document, char const* title = nullptr) {
  document.OpenBare();
  EXPECT_EQ(document->WritePDFHeader(title, "me"), 1);
  return WithoutDate(document.Text());
}

TEST(Skeleton, HeaderWithoutMetadataHasTheDefaultTitleOnly) {
  MemoryDocument document;
  EXPECT_EQ(HeaderOf(document),
            std::string(kInfoWithoutTitle) + "/Title (Converted Document)\n>>\nendobj\n");
}

TEST(Skeleton, SecondLineIsTheSixByteMarker) {
  MemoryDocument document;
  EXPECT_EQ(HeaderOf(document).substr(9, 7), "\x25\x63\xFE\xFE\xFE\xFE\n");
}

TEST(Skeleton, DateIsLocalTimeWithoutAZone) {
  MemoryDocument document;
  document.OpenBare();
  time_t const before = time(nullptr);
  document->WritePDFHeader(nullptr, "me");
  time_t const after = time(nullptr);
  std::string const text = document.Text();
  size_t const date = text.find("/CreationDate (D:") + 17;
  std::string const digits = text.substr(date, 14);
  EXPECT_EQ(text.substr(date + 14, 2), ")\n");
  char first[15], last[15];
  strftime(first, sizeof first, "%Y%m%d%H%M%S", localtime(&before));
  strftime(last, sizeof last, "%Y%m%d%H%M%S", localtime(&after));
  EXPECT_TRUE(digits == first || digits == last) << digits;
}

TEST(Skeleton, StringsAreHexadecimalUnitsBehindTheMark) {
  MemoryDocument document;
  document->SetTitleW(SORRELIN_TEXT("A"));
  document->SetAuthorW(SORRELIN_TEXT("\u20AC"));
  document->SetSubjectW(SORRELIN_TEXT("\U0001F600"));
  document->SetKeywordsW(SORRELIN_TEXT("a\u00E4"));
  EXPECT_EQ(HeaderOf(document), std::string(kInfoWithoutTitle) +
                                    "/Title <FEFF0041>\n/Author <FEFF20AC>\n"
                                    "/Subject <FEFFD83DDE00>\n/Keywords <FEFF006100E4>\n"
                                    ">>\nendobj\n");
}

TEST(Skeleton, TitleSetBeforeTheCreateCallStandsInTheDocument) {
  MemoryDocument document;
  document->SetTitleW(SORRELIN_TEXT("A"));
  document.Create();
  EXPECT_NE(document.Text().find("\n/Title <FEFF0041>\n>>\n"), std::string::npos);
  EXPECT_EQ(document.Text().find("/Title ("), std::string::npos);
}

TEST(Skeleton, EmptyTitleGivesTheDefaultAgain) {
  MemoryDocument document;
  document->SetTitleW(SORRELIN_TEXT("A"));
  document->SetTitleW(SORRELIN_TEXT(""));
  EXPECT_NE(HeaderOf(document).find("/Title (Converted Document)\n"), std::string::npos);
}

TEST(Skeleton, GivenTitleGoesOutUnescapedInPlaceOfTheSessions) {
  MemoryDocument document;
  document->SetTitleW(SORRELIN_TEXT("A"));
  EXPECT_EQ(HeaderOf(document, "a)b\\"),
            std::string(kInfoWithoutTitle) + "/Title (a)b\\)\n>>\nendobj\n");
}

TEST(Skeleton, NullCreatorReadsAsTheBannersFirstByte) {
  MemoryDocument document;
  document.OpenBare();
  document->WritePDFHeader(nullptr, nullptr);
  std::string expected =
      std::string(kInfoWithoutTitle) + "/Title (Converted Document)\n>>\nendobj\n";
  expected.replace(expected.find("(me)"), 4, "(P)");
  EXPECT_EQ(WithoutDate(document.Text()), expected);
  EXPECT_EQ(sorrelin::WideString(SessionProbe::Creator(document.session())),
            SORRELIN_TEXT("PDF Printer Driver, Sorrelin 13.1"));
}

struct StringLimit {
  int (CCreatePDF::*set)(WCHAR const*);
  size_t units;
};

class SkeletonDeathTest : public testing::TestWithParam<StringLimit> {};

TEST_P(SkeletonDeathTest, LongestStringFitsAndOneUnitMoreEndsTheProcess) {
  StringLimit const& limit = GetParam();
  sorrelin::WideString text(limit.units, WCHAR{'x'});
  MemoryDocument document;
  (document.session().*limit.set)(text.c_str());
  HeaderOf(document);
  text += WCHAR{'x'};
  (document.session().*limit.set)(text.c_str());
  EXPECT_DEATH(document->WritePDFHeader(nullptr, "me"), "1024 bytes");
}

// The line's 1,023 characters less "/Title <FEFF>" and so on, four digits a unit.
INSTANTIATE_TEST_SUITE_P(Strings, SkeletonDeathTest,
                         testing::Values(StringLimit{&CCreatePDF::SetTitleW, 252},
                                         StringLimit{&CCreatePDF::SetAuthorW, 252},
                                         StringLimit{&CCreatePDF::SetSubjectW, 252},
                                         StringLimit{&CCreatePDF::SetKeywordsW, 251}));

TEST(Skeleton, OutlinesHaveTypeAndCount) {
  MemoryDocument document;
  document.OpenBare();
  document->WriteToPDFFile("x", 1);
  EXPECT_EQ(document.Added([](CCreatePDF& s) { EXPECT_EQ(s.CreateOutlinesObject(3), 1u); }),
            "1 0 obj\n<<\n/Type /Outlines\n/Count 3\n>>\nendobj\n");
  EXPECT_EQ(document->GetOutlinesObjectNr(), 1u);
}

TEST(Skeleton, PagesRootListsPagesOnALineEach) {
  MemoryDocument document;
  document.OpenBare();
  document->WriteToPDFFile("x", 1);
  EXPECT_EQ(document->ReservePagesRootObject(), 1u);
  document->CreatePageObject(1, 1, 9, 9, "", {10, 20});
  document->CreatePageObject(1, 1, 9, 9, "", {10, 20});
  EXPECT_EQ(document.Added([](CCreatePDF& s) { EXPECT_EQ(s.CreatePagesRootObject(), 1u); }),
            "1 0 obj\n<<\n/Type /Pages\n/Count 2\n/Kids [ \n2 0 R \n3 0 R \n]\n>>\nendobj\n");
}

TEST(Skeleton, FailedPagesRootLeavesNumber0) {
  MemoryDocument document;
  document.Create();
  EXPECT_EQ(document->CreatePagesRootObject(), 3u);
  EXPECT_EQ(document->CreatePagesRootObject(), 0u);
  EXPECT_EQ(document->PDF_GetLastError(), 11u);
  EXPECT_EQ(document->GetPagesRootObjectNr(), 0u);
}

// An open document whose next number is taken.
MemoryDocument& WithNextNumberTaken(MemoryDocument& document) {
  SessionProbe::Row(document.session(), document->GetNextObject()).nOffset = 99;
  return document;
}

TEST(Skeleton, OutlinesAndCatalogUnderATakenNumberLeaveNumber0) {
  MemoryDocument document;
  document.Create();
  ASSERT_EQ(document->CreateCatalogObject(3, 2), 4u);
  EXPECT_EQ(WithNextNumberTaken(document)->CreateOutlinesObject(0), 0u);
  EXPECT_EQ(document->PDF_GetLastError(), 11u);
  EXPECT_EQ(document->GetOutlinesObjectNr(), 0u);
  EXPECT_EQ(WithNextNumberTaken(document)->CreateCatalogObject(3, 2), 0u);
  EXPECT_EQ(document->GetCatalogObjectNr(), 0u);
}

TEST(Skeleton, PageUnderATakenNumberCountsAllTheSame) {
  MemoryDocument document;
  document.Create();
  EXPECT_EQ(WithNextNumberTaken(document)->CreatePageObject(3, 1, 5, 6, "", {1, 2}), 0u);
  EXPECT_EQ(document->PDF_GetLastError(), 11u);
  EXPECT_EQ(document->GetNumberOfPages(), 1u);
  EXPECT_EQ(document->GetCurrentPageNumber(), 1u);
}

TEST(Skeleton, PageNamesItsResourcesAndTheNextObject) {
  MemoryDocument document;
  document.OpenBare();
  document->SetCurrentObject(13);
  document->WriteToPDFFile("x", 1);
  EXPECT_EQ(document.Added([](CCreatePDF& s) {
    EXPECT_EQ(s.CreatePageObject(3, 2, 12, 11, "Im12", {612, 792}), 14u);
  }),
            "14 0 obj\n<<\n/Type /Page\n/Parent 3 0 R\n/MediaBox [0 0 612 792]\n/Resources <<\n"
            "/XObject << /Im12 12 0 R >> \n/ProcSet 11 0 R\n>>\n/Contents 15 0 R\n>>\nendobj\n");
  EXPECT_EQ(document->GetPageObjectNumber(1), 14u);
  EXPECT_EQ(document->GetNumberOfPages(), 1u);
  EXPECT_EQ(document->GetCurrentPageNumber(), 1u);
}

TEST(Skeleton, FontPageHasAFontLine) {
  MemoryDocument document;
  document.OpenBare();
  EXPECT_EQ(document->CreatePageObject(3, 1, 5, 6, nullptr, {1, 2}), 1u);
  EXPECT_EQ(document.Text(),
            "1 0 obj\n<<\n/Type /Page\n/Parent 3 0 R\n/MediaBox [0 0 1 2]\n/Resources <<\n"
            "/Font << /F1 5 0 R >> \n/ProcSet 6 0 R\n>>\n/Contents 2 0 R\n>>\nendobj\n");
}

TEST(Skeleton, UnknownResourceTypeIsError13AndLeavesThePageOpen) {
  MemoryDocument document;
  document.OpenBare();
  EXPECT_EQ(document->CreatePageObject(3, 3, 5, 6, "Im5", {1, 2}), 0u);
  EXPECT_EQ(document->PDF_GetLastError(), 13u);
  EXPECT_EQ(document.Text(),
            "1 0 obj\n<<\n/Type /Page\n/Parent 3 0 R\n/MediaBox [0 0 1 2]\n/Resources <<\n");
  EXPECT_EQ(document->GetNumberOfPages(), 1u);
}

TEST(Skeleton, PageAfter30000IsError12) {
  MemoryDocument document;
  document.OpenBare();
  document->WriteToPDFFile("x", 1);
  for (DWORD page = 1; page <= SessionProbe::kPageSlots; ++page) {
    ASSERT_NE(document->CreatePageObject(3, 1, 1, 1, "", {1, 1}), 0u) << page;
  }
  EXPECT_EQ(document->CreatePageObject(3, 1, 1, 1, "", {1, 1}), 0u);
  EXPECT_EQ(document->PDF_GetLastError(), 12u);
}

TEST(Skeleton, ProcSetIsOneLineOfItsOwn) {
  struct Row {
    int type;
    int text;
    char const* line;
  };
  for (Row const& row : {Row{0, 0, "[/PDF /ImageB ] \n"}, Row{1, 0, "[/PDF /ImageC ] \n"},
                         Row{2, 0, "[/PDF /ImageI] \n"}, Row{5, 0, "[/PDF ] \n"},
                         Row{0, 1, "[/PDF /Text /ImageB ] \n"}}) {
    MemoryDocument document;
    document.OpenBare();
    document->CreateProcSetObject(row.type, row.text);
    EXPECT_EQ(document.Text(), std::string("1 0 obj\n") + row.line + "endobj\n");
  }
}

TEST(Skeleton, FontHasItsFiveLines) {
  MemoryDocument document;
  document.OpenBare();
  EXPECT_EQ(document->CreateFontObject(), 1u);
  EXPECT_EQ(document.Text(),
            "1 0 obj\n<<\n/Type /Font\n/Subtype /Type1\n/Name /F1\n/BaseFont /Helvetica\n"
            "/Encoding /MacRomanEncoding\n>>\nendobj\n");
}

TEST(Skeleton, CatalogNamesPagesAndOutlines) {
  MemoryDocument document;
  document.OpenBare();
  SessionProbe::CatalogGeneration(document.session()) = 5;
  EXPECT_EQ(document->CreateCatalogObject(3, 2), 1u);
  EXPECT_EQ(document.Text(),
            "1 0 obj\n<<\n/Type /Catalog\n/Pages 3 0 R\n/Outlines 2 0 R\n>>\nendobj\n");
  EXPECT_EQ(document->GetCatalogObjectNr(), 1u);
  EXPECT_EQ(SessionProbe::CatalogGeneration(document.session()), 0u);
}

constexpr Create kProcSet = [](CCreatePDF& s) { return s.CreateProcSetObject(0, 0); };
constexpr Create kFont = [](CCreatePDF& s) { return s.CreateFontObject(); };

TEST(Skeleton, WriteThatFailsAnywhereFailsTheObject) {
  for (Create const create : std::initializer_list<Create>{
           [](CCreatePDF& s) { return DWORD{s.WritePDFHeader(nullptr, "me") != 0}; },
           [](CCreatePDF& s) { return s.CreateOutlinesObject(0); },
           [](CCreatePDF& s) { return s.CreatePagesRootObject(); },
           [](CCreatePDF& s) {
             return s.CreatePageObject(1, 1, 5, 6, "", {1, 2});
           },
           [](CCreatePDF& s) {
             return s.CreatePageObject(1, 2, 5, 6, "Im5", {1, 2});
           },
           [](CCreatePDF& s) { return s.CreateCatalogObject(3, 2); },
       }) {
    test::ExpectEveryWriteToCount(create);
  }
}

// Kept: only the first line counts, with "<<" for the font; callers get the number all the same.
TEST(Skeleton, ProcSetAndFontDoNotLookAtWritesBehindTheirFirstLine) {
  for (auto const& [create, head] : {std::pair{kProcSet, std::string("2 0 obj\n")},
                                     std::pair{kFont, std::string("2 0 obj\n<<\n")}}) {
    size_t const size = ObjectInAShortFile(create).Size();
    for (size_t bytes = 0; bytes < size; ++bytes) {
      ObjectInAShortFile const cut(create, bytes);
      ASSERT_EQ(cut.result(), bytes < head.size() ? 0u : 2u) << bytes;
      ASSERT_EQ(cut.error(), 1u) << bytes;
    }
  }
}

TEST(Skeleton, NullCreatorLeavesAGivenTitle) {
  MemoryDocument document;
  document.OpenBare();
  document->WritePDFHeader("Given", nullptr);
  EXPECT_TRUE(document.Text().ends_with("\n/Creator (P)\n/Title (Given)\n>>\nendobj\n"));
}

TEST(Skeleton, LoneSurrogateIsWrittenAsItsUnit) {
  MemoryDocument document;
  WCHAR const title[] = {0xD800, 0};
  document->SetTitleW(title);
  EXPECT_EQ(HeaderOf(document), std::string(kInfoWithoutTitle) + "/Title <FEFFD800>\n>>\nendobj\n");
}

}  // namespace
