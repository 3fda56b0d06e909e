// Where reading starts, and how the route is chosen.
#include <gtest/gtest.h>
#include <sorrelin/document/start_xref.h>
#include <tests/support/open_document.h>
#include <tests/support/xref_document.h>

namespace {

using test::OpenDocument;
using test::PdfBuilder;
using test::XrefDocument;

// A one-page document whose "startxref" begins `from_end` bytes before its end.
std::string DocumentWithKeywordAt(size_t from_end) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Classic();
  std::string text = pdf.Content();
  size_t const keyword = text.rfind("startxref");
  text.append(from_end - (text.size() - keyword), ' ');
  return text;
}

DWORD OpenError(std::string const& text) {
  OpenDocument document(test::ToBytes(text));
  return document.Build() != 0 ? 0 : document.error();
}

TEST(FirstLook, TakesTheKeywordFiftyBytesBeforeTheEnd) {
  EXPECT_EQ(OpenError(DocumentWithKeywordAt(50)), 0u);
}

TEST(FirstLook, RefusesTheKeywordFurtherBack) {
  EXPECT_EQ(OpenError(DocumentWithKeywordAt(51)), 24u);
}

TEST(FirstLook, RefusesAKeywordWithoutANumber) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Classic();
  std::string text = pdf.Content();
  EXPECT_EQ(OpenError(text.substr(0, text.rfind("startxref")) + "startxref\n%%EOF\n"), 24u);
}

TEST(FirstLook, FailsForADocumentOfFewerThanFiftyBytes) {
  for (auto const target : {test::Target::kMemory, test::Target::kFile}) {
    OpenDocument document(test::Bytes(49, ' '), target);
    EXPECT_EQ(document.Build(), 0u);
    EXPECT_EQ(document.error(), 1u);
  }
}

TEST(FirstLook, ReadsFiftyBytesWithoutKeywordAsNoPdf) {
  EXPECT_EQ(OpenError(std::string(50, ' ')), 24u);
}

TEST(FirstLook, NulBytesDoNotEndTheSearch) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Classic();
  std::string text = pdf.Content();
  text.replace(text.rfind("startxref") - 1, 1, std::string(1, '\0'));
  EXPECT_EQ(OpenError(text), 0u);
}

// The number ends the document, and its last digit is the byte that is cut.
TEST(FirstLook, LastByteOfTheDocumentIsNotSeen) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  size_t const section = pdf.Classic();
  std::string text = pdf.Content();
  text.resize(text.rfind("startxref"));
  EXPECT_EQ(OpenError(text + "startxref\n" + std::to_string(section) + "7"), 0u);
}

TEST(FirstLook, TakesTheFirstOfTwoKeywords) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Classic({.tail = "startxref\n1\n%%EOF"});
  EXPECT_EQ(OpenError(pdf.Content()), 0u);
}

TEST(NumberAfterStartXref, IsTheFirstRunOfDigits) {
  using sorrelin::NumberAfterStartXref;
  EXPECT_EQ(NumberAfterStartXref("startxref\n116\n%%EOF"), 116);
  EXPECT_EQ(NumberAfterStartXref("startxref(a-7)"), 7);
  EXPECT_EQ(NumberAfterStartXref("startxref 99999999999"), 2147483647);
  EXPECT_FALSE(NumberAfterStartXref("startxref").has_value());
  EXPECT_FALSE(NumberAfterStartXref("116 startxre").has_value());
}

// "startxref" and a number, `from_end` bytes before the end of the text.
std::string TailWithKeywordAt(size_t from_end) {
  std::string text(200, '.');
  text.replace(text.size() - from_end, 13, "startxref 123");
  return text;
}

struct SecondLookRow {
  size_t from_end;
  int found;
};

// Windows of 40 bytes that end 0, 20, 40, 60 and 80 bytes before the end.
TEST(SecondLook, SeesFiveWindowsOfFortyBytes) {
  for (auto const& [from_end, found] :
       {SecondLookRow{13, 1}, {40, 1}, {41, 1}, {60, 1}, {61, 1}, {100, 1}, {120, 1}, {121, 0}}) {
    XrefDocument document(TailWithKeywordAt(from_end));
    EXPECT_EQ(document->ReadStartXref(), found) << from_end;
    EXPECT_EQ(document->StartXref(), found ? 123 : 0) << from_end;
  }
}

TEST(SecondLook, LeavesABoundaryAtTheSection) {
  XrefDocument document(TailWithKeywordAt(30));
  document->ReadStartXref();
  auto const& marks = XrefProbe::Marks(*document);
  ASSERT_EQ(marks.size(), 1u);
  EXPECT_EQ(marks[0].nOffset, 123u);
  EXPECT_EQ(marks[0].pExtent, nullptr);
}

TEST(SecondLook, TakesNulAndLineEndsForBlanks) {
  std::string text(60, '.');
  text.replace(30, 15, std::string("startxref\0\r\n123", 15));
  XrefDocument document(text);
  EXPECT_EQ(document->ReadStartXref(), 1);
  EXPECT_EQ(document->StartXref(), 123);
}

TEST(SecondLook, StopsWhereAShortDocumentBegins) {
  XrefDocument document("startxref 12");
  EXPECT_EQ(document->ReadStartXref(), 0);
}

// `at` is the place of "xref" in a document of 1000 bytes.
std::string TextWith(std::string_view keyword, size_t at) {
  std::string text(1000, ' ');
  return text.replace(at, keyword.size(), keyword);
}

struct RouteRow {
  char const* what;
  std::string text;
  DWORD offset;
  int classic;
  int32_t start;  // afterwards
};

class Route : public testing::TestWithParam<RouteRow> {};

TEST_P(Route, IsChosenFromWhatStandsAtTheOffset) {
  RouteRow const& row = GetParam();
  XrefDocument document(row.text);
  XrefProbe::StartXref(*document) = static_cast<int32_t>(row.offset);
  EXPECT_EQ(document->IsClassicTableAt(nullptr), row.classic) << row.what;
  EXPECT_EQ(document->StartXref(), row.start) << row.what;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Route,
    testing::Values(
        RouteRow{"keyword at the offset", TextWith("xref", 500), 500, 1, 500},
        RouteRow{"keyword in the look, offset unchanged", TextWith("xref", 515), 500, 1, 500},
        RouteRow{"end of startxref counts in the look", TextWith("startxref", 500), 500, 1, 500},
        RouteRow{"byte 19 is cut, the search finds it", TextWith("xref", 516), 500, 1, 516},
        RouteRow{"short look is a stream", TextWith("xref", 990), 990, 0, 990},
        RouteRow{"look of exactly 20 bytes", TextWith("xref", 980), 980, 1, 980},
        RouteRow{"nothing near", std::string(1000, ' '), 500, 0, 500},
        RouteRow{"keyword a few bytes back", TextWith("xref", 490), 500, 1, 490},
        RouteRow{"keyword many bytes back", TextWith("xref", 725), 979, 1, 725},
        RouteRow{"farthest back", TextWith("xref", 900 - 575), 900, 1, 900 - 575},
        RouteRow{"one byte too far back", TextWith("xref", 900 - 576), 900, 0, 900},
        RouteRow{"farthest forward", TextWith("xref", 300 + 592), 300, 1, 300 + 592},
        RouteRow{"one byte too far forward", TextWith("xref", 300 + 593), 300, 0, 300},
        RouteRow{"end of startxref does not count in the search", TextWith("startxref", 470), 500,
                 0, 500},
        RouteRow{"offset behind the end, keyword near the end", TextWith("xref", 950), 5000, 1,
                 950},
        RouteRow{"offset behind the end, nothing near", std::string(1000, ' '), 5000, 0, 5000},
        RouteRow{"offset at the end", TextWith("xref", 950), 1000, 1, 950}),
    [](auto const& row) { return "Row" + std::to_string(row.index); });

TEST(Route, StreamKeywordEndsTheSearch) {
  std::string text = TextWith("xref", 300);
  text.replace(480, 5, "/XRef");
  XrefDocument document(text);
  XrefProbe::StartXref(*document) = 500;
  EXPECT_EQ(document->IsClassicTableAt(nullptr), 0);
}

TEST(Route, TakesAGivenOffset) {
  XrefDocument document(TextWith("xref", 500));
  DWORD const offset = 500;
  EXPECT_EQ(document->IsClassicTableAt(&offset), 1);
  DWORD const elsewhere = 40;
  EXPECT_EQ(document->IsClassicTableAt(&elsewhere), 1);
  EXPECT_EQ(document->StartXref(), 500);
}

TEST(Route, LineEndInFrontOfTheKeywordIsABlank) {
  XrefDocument document(TextWith("\nxref", 489));
  DWORD offset = 500;
  EXPECT_EQ(document->SearchXrefKeyword(&offset, true), 1);
  EXPECT_EQ(offset, 490u);
}

TEST(Route, SearchBackEndsAtTheFront) {
  XrefDocument document(std::string(1000, ' '));
  DWORD offset = 100;
  EXPECT_EQ(document->SearchXrefKeyword(&offset, true), 0);
  EXPECT_EQ(offset, 100u);
}

// Kept: the search decides the route only; the table is read from the number in the document.
TEST(Route, ClassicTableIsReadFromTheNumberInTheDocument) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  size_t const section = pdf.Size();
  pdf.Classic({.start_xref = section - 3});
  OpenDocument document(pdf);
  EXPECT_EQ(document.Build(), 0u);
  EXPECT_FALSE(document.reader().objects.IsUsed());
}

}  // namespace
