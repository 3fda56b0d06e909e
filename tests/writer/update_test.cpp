// Updates of documents that other programs could have written, byte for byte: both orders of the
// keys, trailers, numbers, and the update without a page.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/support/document.h"
#include "tests/support/pdf_builder.h"
#include "tests/support/temp_dir.h"
#include "tests/writer/update_golden.h"

namespace {

using test::CatalogObject;
using test::GoldenUpdate;
using test::PdfBuilder;
using test::SmallPage;
using test::SmallPageObjects;
using test::TableRows;
using testing::HasSubstr;
using testing::Not;

constexpr char kFreeHead[] = "0000000000 65535 f";

class Update : public testing::Test {
 protected:
  test::TempDir dir_;
  std::string const name_ = (dir_ / "a.pdf").string();
  std::unique_ptr<CCreatePDF> session_ = std::make_unique<CCreatePDF>();

  ~Update() override { session_->ClosePDFFile(); }

  void Write(PdfBuilder const& pdf) const { test::WriteAll(name_, pdf.Document()); }
  std::string Text() const { return test::ToText(test::ReadAll(name_)); }

  // What `pages` pages add after the old bytes, which must not change.
  std::string Added(PdfBuilder const& pdf, int pages) {
    Write(pdf);
    EXPECT_EQ(session_->CreatePDF(name_.c_str()), 1);
    for (int i = 0; i < pages; ++i) {
      EXPECT_EQ(session_->SaveDIBAsColorPDFPageW(SmallPage(), test::kNoLibrary, 0, 0), 1);
    }
    EXPECT_EQ(session_->FinishPDF(), 1);
    std::string const text = Text();
    EXPECT_EQ(text.substr(0, pdf.Size()), pdf.Content());
    return text.substr(pdf.Size());
  }
  // Rows 0 to `last` as the document has them, with the old catalog 1 free.
  static TableRows OldRows(PdfBuilder const& pdf, DWORD last) {
    TableRows rows = {{0, kFreeHead}};
    for (DWORD object = 1; object <= last; ++object) {
      rows[object] = test::UsedRow(pdf.OffsetOf(object));
    }
    rows[1].replace(11, 7, "00001 f");
    return rows;
  }
  // Two pages added to three; the pages root is object 2, with `body` in the old document and
  // `new_body` in the new one.
  void ExpectTwoPagesAdded(std::string const& body, std::string const& new_body) {
    PdfBuilder pdf;
    test::AddPageTree(pdf, 3);
    pdf.Object(2, body);
    pdf.Classic({.keys = "/Root 1 0 R /Info 5 0 R"});
    std::vector<std::string> objects = SmallPageObjects(6, 2);
    for (std::string const& object : SmallPageObjects(12, 2)) objects.push_back(object);
    objects.push_back("2 0 obj\n" + new_body + "\nendobj\n");
    objects.push_back(CatalogObject(18, 2, 0));
    EXPECT_EQ(Added(pdf, 2),
              "\n\n" + GoldenUpdate(pdf.Size() + 2, objects, OldRows(pdf, 5), "/Info 5 0 R\n"));
  }
};

TEST_F(Update, KidsFirstGetsTheEntriesAndThenTheCount) {
  ExpectTwoPagesAdded("<</Type/Pages /Kids [3 0 R 4 0 R 5 0 R] /Count 3 /Rotate 0>>",
                      "<</Type/Pages /Kids [3 0 R 4 0 R 5 0 R 9 0 R\r 15 0 R\r] /Count 5 "
                      "/Rotate 0>>");
}

TEST_F(Update, CountFirstGetsTheCountAndThenTheEntries) {
  ExpectTwoPagesAdded("<</Type/Pages/Count 3/Kids[3 0 R 4 0 R 5 0 R]>>",
                      "<</Type/Pages/Count 5/Kids[3 0 R 4 0 R 5 0 R 9 0 R\r 15 0 R\r]>>");
}

// Kept: with the count first, an array before /Kids gets the entries.
TEST_F(Update, ArrayBetweenCountAndKidsGetsTheEntries) {
  ExpectTwoPagesAdded("<</Count 3/MediaBox [0 0 9 9]/Kids [3 0 R 4 0 R 5 0 R]>>",
                      "<</Count 5/MediaBox [0 0 9 9 9 0 R\r 15 0 R\r]/Kids [3 0 R 4 0 R 5 0 R]>>");
}

TEST_F(Update, CountMayGrowByADigit) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 9);
  pdf.Classic();
  EXPECT_THAT(Added(pdf, 1), HasSubstr("11 0 R  15 0 R\r] /Count 10 >>\nendobj\n"));
}

// Pages that the session counts without their being its appended ones do not show.
TEST_F(Update, CountGrowsByTheAppendedPagesOnly) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Classic();
  Write(pdf);
  ASSERT_EQ(session_->CreatePDF(name_.c_str()), 1);
  EXPECT_EQ(session_->SaveDIBAsColorPDFPageW(SmallPage(), test::kNoLibrary, 0, 0), 1);
  session_->CreatePageObject(2, 1, 5, 6, "", {1, 2});
  EXPECT_EQ(session_->GetNumberOfPages(), 3u);
  EXPECT_EQ(session_->FinishPDF(), 1);
  EXPECT_THAT(Text(), HasSubstr("/Kids [3 0 R  7 0 R\r] /Count 2 >>"));
}

// Kept: a trailer without /Info leaves that of the reader, which is the catalog's number.
TEST_F(Update, WithoutInfoTheFreedCatalogIsNamedAsInfo) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Classic();
  std::string const added = Added(pdf, 1);
  EXPECT_THAT(added, HasSubstr("/Root 10 0 R\n/Info 1 0 R\n>>\n"));
  size_t const rows = added.find("xref\n0 11\n") + 10;
  EXPECT_EQ(added.substr(rows + 20 + 11, 7), "00001 f");
}

TEST_F(Update, GenerationOfTheInfoIsKept) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Object(4, "<</Title (a)>>", 3);
  pdf.Classic({.keys = "/Root 1 0 R /Info 4 3 R"});
  EXPECT_THAT(Added(pdf, 1), HasSubstr("/Info 4 3 R\n>>\n"));
}

struct TrailerRow {
  char const* keys;     // after /Root
  char const* written;  // after the new /Info
};

// Kept: /ID and /Encrypt go out as far as the reader took them.
TEST_F(Update, IdAndEncryptGoOutAsTheyWereRead) {
  for (TrailerRow const& row : {
           TrailerRow{"/ID [<a> <b>]", "/ID [<a>\n"},
           TrailerRow{"/ID [<0A> <0B>]", "/ID [<0A>\n"},
           TrailerRow{"/ID [<0A><0B>]", ""},
           TrailerRow{"/Encrypt 3 0 R", "/Encrypt 3\n"},
           TrailerRow{"/Encrypt <</Filter /Standard /V 1>>",
                      "/Encrypt <</Filter /Standard /V 1>>\n"},
           TrailerRow{"/ID [<0A> <0B>] /Encrypt 3 0 R", "/ID [<0A>\n/Encrypt 3\n"},
       }) {
    PdfBuilder pdf;
    test::AddPageTree(pdf, 1);
    pdf.Classic({.keys = std::string("/Root 1 0 R ") + row.keys});
    EXPECT_THAT(Added(pdf, 1), HasSubstr(std::string("/Info 1 0 R\n") + row.written + ">>\n"))
        << row.keys;
    session_->ClosePDFFile();
    session_ = std::make_unique<CCreatePDF>();
  }
}

TEST_F(Update, NumbersGoOnAboveTheHighestThatWasRead) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Object(7, "<<>>");
  // /Size does not count, and the gap of 4 to 6 is not used.
  pdf.Classic({.size = 40});
  std::string const added = Added(pdf, 1);
  EXPECT_THAT(added, HasSubstr("\n\n8 0 obj\n[/PDF /ImageC ] \n"));
  EXPECT_THAT(added, HasSubstr("xref\n0 15\n"));
  size_t const rows = added.find("xref\n0 15\n") + 10;
  for (size_t object : {4u, 5u, 6u}) {
    EXPECT_EQ(added.substr(rows + 20 * object, 20), "0000000000 00000 f \n");
  }
}

TEST_F(Update, NumbersOfAStreamIndexGoOnAboveItsSize) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.XrefStream(4, {.size = 9});
  std::string const added = Added(pdf, 1);
  EXPECT_THAT(added, HasSubstr("\n\n9 0 obj\n[/PDF /ImageC ] \n"));
  EXPECT_THAT(added, HasSubstr("/Size 16\n/Root 15 0 R\n"));
  EXPECT_THAT(added, Not(HasSubstr("/Info")));
}

TEST_F(Update, OutlinesOfTheOldCatalogAreKept) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Object(1, "<</Type/Catalog /Outlines 4 0 R /Pages 2 0 R >>");
  pdf.Object(4, "<</Type/Outlines >>");
  pdf.Classic();
  EXPECT_THAT(Added(pdf, 1), HasSubstr("/Pages 2 0 R\n/Outlines 4 0 R\n"));
}

TEST_F(Update, LineEndsAreTheSessionsAndEntriesStillEndInCr) {
  session_->SetChar13(1);
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Classic();
  std::string const added = Added(pdf, 1);
  EXPECT_EQ(added.substr(0, 14), "\n\r\n4 0 obj\r\n[/");
  EXPECT_THAT(added, HasSubstr("2 0 obj\n<</Type/Pages /Kids [3 0 R  7 0 R\r] /Count 2 >>\n"
                               "endobj\r\n10 0 obj\r\n<<\r\n/Type /Catalog\r\n"));
  EXPECT_THAT(added, HasSubstr("xref\r\n0 11\r\n0000000000 65535 f \r\n"));
}

TEST_F(Update, NestedTreeGetsItsPagesInTheRoot) {
  PdfBuilder pdf;
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Type/Pages /Kids [3 0 R 4 0 R] /Count 3 >>");
  pdf.Object(3, "<</Type/Pages /Parent 2 0 R /Kids [5 0 R 6 0 R] /Count 2 >>");
  pdf.Object(4, "<</Type/Page /Parent 2 0 R >>");
  pdf.Object(5, "<</Type/Page /Parent 3 0 R >>");
  pdf.Object(6, "<</Type/Page /Parent 3 0 R >>");
  pdf.Classic();
  EXPECT_THAT(Added(pdf, 1), HasSubstr("/Kids [3 0 R 4 0 R 10 0 R\r] /Count 4 >>"));
  EXPECT_EQ(GetNumberOfPagesInPDFFile(name_.c_str()), 4u);
}

// A document of a later version, or with something before its header, makes no difference here.
TEST_F(Update, HeaderIsNotLookedAt) {
  PdfBuilder pdf("%PDF-1.9");
  test::AddPageTree(pdf, 1);
  pdf.Classic();
  EXPECT_THAT(Added(pdf, 1), HasSubstr("/Count 2"));
  EXPECT_EQ(session_->OpenPDFFile(name_.c_str()), 0);
}

TEST_F(Update, ChainOfSectionsThatComesBackEnds) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  size_t const first = pdf.Size() + 0;
  pdf.Classic({.prev = first});
  EXPECT_THAT(Added(pdf, 1), HasSubstr("/Count 2"));
  EXPECT_EQ(GetNumberOfPagesInPDFFile(name_.c_str()), 2u);
}

// Each update goes on from the one before and frees its catalog too.
TEST_F(Update, UpdatesInARowFreeEachCatalogAndKeepEveryByte) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Classic({.keys = "/Root 1 0 R /Info 3 0 R"});
  Write(pdf);
  std::string before = Text();
  std::string table;
  for (int i = 0; i < 5; ++i) {
    ASSERT_EQ(pdf_SaveDIBToPDF(name_.c_str(), SmallPage(), "", PDF_COMPRESSION_NONE, 0), 0u);
    std::string const after = Text();
    ASSERT_EQ(after.substr(0, before.size()), before);
    table = after.substr(after.rfind("xref\n0 "));
    before = after;
  }
  // Each update uses seven numbers; the last one is the catalog.
  table = before.substr(before.rfind("\nxref\n0 ") + 1);
  size_t const rows = table.find('\n', 5) + 1;
  for (size_t const catalog : {1u, 10u, 17u, 24u, 31u}) {
    EXPECT_EQ(table.substr(rows + 20 * catalog + 11, 7), "00001 f") << catalog;
  }
  EXPECT_EQ(table.substr(rows + 20 * 38 + 11, 7), "00000 n");
  EXPECT_THAT(table, HasSubstr("/Root 38 0 R\n"));
  EXPECT_EQ(GetNumberOfPagesInPDFFile(name_.c_str()), 6u);
}

// Kept: without a page nothing has moved to the document's end, and the update goes over its start.
TEST_F(Update, WithoutAPageTheFirstBytesAreWrittenOver) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 30);
  pdf.Classic();
  Write(pdf);
  ASSERT_EQ(session_->CreatePDF(name_.c_str()), 1);
  EXPECT_EQ(session_->FinishPDF(), 1);
  std::string kids;
  for (int page = 3; page <= 32; ++page) kids += std::to_string(page) + " 0 R ";
  std::vector<std::string> const objects = {
      "2 0 obj\n<</Type/Pages /Kids [" + kids + "] /Count 30 >>\nendobj\n",
      CatalogObject(33, 2, 0)};
  std::string expected = GoldenUpdate(0, objects, OldRows(pdf, 32), "/Info 1 0 R\n");
  ASSERT_LT(expected.size(), pdf.Size());
  EXPECT_EQ(Text(), expected + pdf.Content().substr(expected.size()));
}

TEST_F(Update, AppendedPagesAreNotedAndThenCleared) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 2);
  pdf.Classic();
  Added(pdf, 2);
  EXPECT_EQ(SessionProbe::AppendedPages(*session_), 2u);
  EXPECT_EQ(session_->GetNumberOfPages(), 4u);
  // The objects of the first page begin at 5, those of the second at 11; the page is the fourth.
  EXPECT_EQ(SessionProbe::AppendedPage(*session_, 0), 8u);
  EXPECT_EQ(SessionProbe::AppendedPage(*session_, 1), 14u);
  EXPECT_EQ(session_->CreatePDF(name_.c_str()), 1);
  EXPECT_EQ(SessionProbe::AppendedPages(*session_), 0u);
  EXPECT_EQ(SessionProbe::AppendedPage(*session_, 0), 0u);
  EXPECT_EQ(SessionProbe::AppendedPage(*session_, 1), 0u);
}

}  // namespace
