// The work that opening a document may do, and what it costs.
#include <gtest/gtest.h>
#include <sorrelin/frame/pdf.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/platform/wide_string.h>
#include <tests/support/open_document.h>

#include <string>

namespace {

using test::OpenDocument;
using test::PdfBuilder;
using test::Target;

constexpr size_t kMiB = 1024 * 1024;

sorrelin::WideString Title(CCreatePDF& session) {
  WCHAR title[64] = {};
  DWORD size = 64;
  EXPECT_NE(session.GetTitleW(title, &size), 0);
  return title;
}

class OpeningWork : public testing::TestWithParam<Target> {};

INSTANTIATE_TEST_SUITE_P(Channels, OpeningWork, testing::Values(Target::kMemory, Target::kFile),
                         [](auto const& row) {
                           return std::string(row.param == Target::kMemory ? "Memory" : "File");
                         });

// Page 4 of a tree, whose row points past the end of the file, and after it the pages and the title
// that the opening must still have work for. `mark` is a further row, which gives page 4 an extent.
PdfBuilder WithAPagePastTheFile(size_t offset, size_t mark) {
  PdfBuilder pdf("%PDF-1.5");
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Type/Pages /Count 2 /Kids[4 0 R 5 0 R ]>>");
  pdf.Object(3, "<</Title (Hello)>>");
  pdf.Object(5, "<</Type/Pages /Kids[6 0 R ]>>");
  pdf.Object(6, "<</Type/Page /Parent 5 0 R >>");
  pdf.Row(4, {1, offset, 0});
  if (mark != 0) pdf.Row(7, {1, mark, 0});
  pdf.XrefStream(9, {.keys = "/Root 1 0 R /Info 3 0 R"});
  return pdf;
}

TEST_P(OpeningWork, RowPastTheEndOfTheFileCostsNothing) {
  for (size_t const mark : {size_t{0}, 2 * kMiB, 1000 * kMiB}) {
    OpenDocument document(WithAPagePastTheFile(kMiB, mark), GetParam());
    ASSERT_NE(document.Build(), 0u) << mark;
    EXPECT_EQ(document->GetPageObjectNumber(0), 4u);
    EXPECT_EQ(document->GetPageObjectNumber(1), 6u);
    EXPECT_EQ(Title(*document), SORRELIN_TEXT("Hello")) << mark;
  }
}

// The page comes last in the file, and its extent reaches far past its end.
PdfBuilder WithALongPage(size_t bytes) {
  size_t at = 0;
  for (;;) {
    PdfBuilder pdf("%PDF-1.5");
    pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
    pdf.Object(2, "<</Type/Pages /Count 1 /Kids[3 0 R ]>>");
    pdf.Row(3, {1, at, 0}).Row(4, {1, at + bytes, 0});
    size_t const section = pdf.XrefStream(9, {.stream = {.filter = ""}});
    if (at == pdf.Size()) {
      pdf.Object(3, "<</Type/Page >>");
      pdf.Text("startxref\n" + std::to_string(section) + "\n%%EOF\n");
      return pdf;
    }
    at = pdf.Size();
  }
}

// 128 MiB and 64 times the document's size. What else the opening handles here is far below 10 KiB.
TEST_P(OpeningWork, IsBoundedByTheDocumentsSize) {
  size_t const work = 128 * kMiB + 64 * WithALongPage(1000).Size();
  OpenDocument within(WithALongPage(work - 10240), GetParam());
  EXPECT_NE(within.Build(), 0u);
  EXPECT_EQ(within.error(), 0u);
  OpenDocument beyond(WithALongPage(work), GetParam());
  EXPECT_EQ(beyond.Build(), 0u);
  EXPECT_EQ(beyond.error(), 1u);
}

TEST_P(OpeningWork, EachOpeningHasItsOwn) {
  OpenDocument document(WithALongPage(100 * kMiB), GetParam());
  for (int i = 0; i < 3; ++i) EXPECT_NE(document.Build(), 0u);
}

TEST(OpeningWork, PagesOfADocumentThatUsesItUpAreNotCounted) {
  test::Bytes const bytes = WithALongPage(200 * kMiB).Document();
  EXPECT_EQ(GetNumberOfPagesInPDFInMemory(bytes.data(), static_cast<DWORD>(bytes.size())),
            0xFFFFFFFFu);
}

TEST(OpeningWork, SufficesForALargeObjectStream) {
  PdfBuilder pdf("%PDF-1.5");
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Type/Pages /Count 1 /Kids[3 0 R ]>>");
  pdf.ObjectStream(8, {{3, "<</Type/Page >>"}, {5, std::string(17 * kMiB, 'x')}});
  pdf.XrefStream(9);
  OpenDocument document(pdf);
  EXPECT_NE(document.Build(), 0u);
  EXPECT_EQ(document.error(), 0u);
  EXPECT_TRUE(document.Fetch(3).valid);
}

// Pages that are held by a large and a small stream in turn do not have the large one inflated
// again for each of them.
TEST(OpeningWork, SufficesForPagesInTwoStreamsInTurn) {
  PdfBuilder pdf("%PDF-1.5");
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  std::string kids;
  std::vector<std::pair<DWORD, std::string>> objects[2];
  for (DWORD page = 100; page < 200; ++page) {
    kids += std::to_string(page) + " 0 R ";
    objects[page % 2].push_back({page, "<</Type/Page >>"});
  }
  objects[0].push_back({5, std::string(17 * kMiB, 'x')});
  pdf.Object(2, "<</Type/Pages /Count 100 /Kids[" + kids + "]>>");
  pdf.ObjectStream(7, objects[0]);
  pdf.ObjectStream(8, objects[1]);
  pdf.XrefStream(9);
  OpenDocument document(pdf);
  EXPECT_NE(document.Build(), 0u);
  EXPECT_EQ(document->GetPageObjectNumber(99), 199u);
}

// Rows of five sections, all of them about one object that nothing else needs.
TEST(OpeningWork, SufficesForManyFullSections) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  size_t const other = pdf.Object(4, "x");
  for (int i = 0; i < 5; ++i) {
    for (DWORD row = 10; row < 80000; ++row) pdf.Row(row, {1, other, 0});
    std::optional<size_t> const prev = i > 0 ? std::optional(pdf.LastSection()) : std::nullopt;
    pdf.XrefStream(9, {.prev = prev, .ranges = {{0, 80000}}});
  }
  OpenDocument document(pdf);
  EXPECT_EQ(document.Build(), 80000u);
  EXPECT_EQ(document->GetPageObjectNumber(0), 3u);
}

// The sections inflate to 20 MiB each, and there are more than the work allows.
TEST(OpeningWork, CountsTheInflatedBytesOfSections) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  std::string const packed = test::Deflate(std::string(20 * kMiB, '\0'));
  for (int i = 0; i < 8; ++i) {
    size_t const prev = pdf.LastSection();
    size_t const section = pdf.Size();
    std::string keys = "/Type/XRef /Size 9 /W [1 4 2] /Index [0 0] /Root 1 0 R /Filter /A ";
    if (prev != 0) keys += "/Prev " + std::to_string(prev) + " ";
    pdf.Stream(9, keys, packed);
    pdf.Text("startxref\n" + std::to_string(section) + "\n%%EOF\n");
  }
  OpenDocument document(pdf);
  EXPECT_EQ(document.Build(), 0u);
}

// Section 7 encloses section 8, so that both together are larger than the document.
PdfBuilder WithSectionInSection(size_t filler) {
  std::string const inner = "8 0 obj\n<</Size 4 /W [1 4 2] /Length 0 >>\nstream\n" +
                            std::string(filler, 'x') + "\nendstream\nendobj\n";
  size_t at = 0;
  for (;;) {
    PdfBuilder pdf("%PDF-1.5");
    test::AddPageTree(pdf, 1);
    size_t const outer = pdf.Size();
    pdf.Text("7 0 obj\n<</Size 4 /W [1 4 2] /Length 0 /Prev " + std::to_string(at) + " >>\n");
    bool const settled = at == pdf.Size();
    at = pdf.Size();
    pdf.Text(inner);
    pdf.XrefStream(9, {.prev = outer});
    if (settled) return pdf;
  }
}

TEST(OpeningWork, SectionsThatTogetherAreLargerThanTheDocumentFail) {
  OpenDocument small(WithSectionInSection(10));
  EXPECT_NE(small.Build(), 0u);
  OpenDocument large(WithSectionInSection(5000));
  EXPECT_EQ(large.Build(), 0u);
  EXPECT_EQ(large.error(), 0u);
}

// Nothing is written, and the session can go on.
TEST(OpeningWork, UpdateOfADocumentThatUsesItUpFails) {
  test::Bytes const bytes = WithALongPage(200 * kMiB).Document();
  auto const session = std::make_unique<CCreatePDF>();
  EXPECT_EQ(session->CreatePDFInMemory(reinterpret_cast<int64_t>(bytes.data()),
                                       static_cast<DWORD>(bytes.size())),
            0);
  EXPECT_EQ(session->PDF_GetLastError(), 1u);
  session->ClosePDFFile();
  test::Bytes const good = WithALongPage(1000).Document();
  EXPECT_EQ(session->OpenPDFFileInMemory(reinterpret_cast<int64_t>(good.data()),
                                         static_cast<DWORD>(good.size())),
            1);
  session->ClosePDFFile();
}

}  // namespace
