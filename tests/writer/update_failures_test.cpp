// Updates that cannot be: the code of each, and what is left of the document.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>

#include <filesystem>
#include <memory>
#include <string>

#include "tests/support/document.h"
#include "tests/support/environment.h"
#include "tests/support/pdf_builder.h"
#include "tests/support/temp_dir.h"
#include "tests/writer/update_golden.h"

namespace {

using test::PdfBuilder;
using test::SmallPage;

class UpdateFailure : public testing::Test {
 protected:
  test::TempDir dir_;
  test::LeftOpen left_open_{dir_.path()};
  std::string const name_ = (dir_ / "a.pdf").string();
  std::unique_ptr<CCreatePDF> const session_ = std::make_unique<CCreatePDF>();

  int files_ = 0;

  ~UpdateFailure() override { session_->ClosePDFFile(); }

  // Pages root 2 and page 3, with bodies of the test's own where they are not empty.
  static PdfBuilder Tree(std::string const& catalog, std::string const& root = {},
                         std::string const& page = {}) {
    PdfBuilder pdf;
    test::AddPageTree(pdf, 1);
    if (!catalog.empty()) pdf.Object(1, catalog);
    if (!root.empty()) pdf.Object(2, root);
    if (!page.empty()) pdf.Object(3, page);
    return pdf;
  }
  std::string Text() const { return test::ToText(test::ReadAll(name_)); }
  // The create call fails with this code, and the file stays.
  void ExpectRefused(std::string const& document, DWORD code) {
    SCOPED_TRACE(document);
    test::WriteAll(name_, test::ToBytes(document));
    EXPECT_EQ(session_->CreatePDF(name_.c_str()), 0);
    EXPECT_EQ(session_->PDF_GetLastError(), code);
    session_->ClosePDFFile();
    EXPECT_EQ(Text(), document);
    ExpectOneCallRefused(document, code);
  }
  // Kept: the helper leaves its channel open, so that each call has a file of its own here.
  void ExpectOneCallRefused(std::string const& document, DWORD code) {
    std::string const name = (dir_ / (std::to_string(++files_) + ".pdf")).string();
    test::WriteAll(name, test::ToBytes(document));
    EXPECT_EQ(pdf_SaveDIBToPDF(name.c_str(), SmallPage(), "", 0, 0), code);
    EXPECT_EQ(test::ToText(test::ReadAll(name)), document);
  }
  void ExpectRefused(PdfBuilder pdf, DWORD code) {
    pdf.Classic();
    ExpectRefused(pdf.Content(), code);
  }
};

TEST_F(UpdateFailure, FilesWithoutACrossReferenceKeepTheirBytes) {
  ExpectRefused("", 1);
  ExpectRefused(std::string(49, 'x'), 1);
  ExpectRefused(std::string(500, 'x'), 24);
  // Kept: what is not found as a cross-reference stream sets no code.
  ExpectRefused("%PDF-1.4\n" + std::string(100, ' ') + "startxref\n9\n%%EOF\n", 0);
}

// Wherever a document ends, the create call writes nothing.
TEST_F(UpdateFailure, TruncatedDocumentsKeepTheirBytes) {
  PdfBuilder pdf = Tree("");
  pdf.Classic();
  std::string const whole = pdf.Content();
  int refused = 0;
  for (size_t size = 0; size < whole.size(); ++size) {
    std::string const cut = whole.substr(0, size);
    test::WriteAll(name_, test::ToBytes(cut));
    bool const opened = session_->CreatePDF(name_.c_str()) != 0;
    session_->ClosePDFFile();
    refused += opened ? 0 : 1;
    ASSERT_EQ(Text(), cut);
  }
  // Only the last line may be missing: the number after startxref is whole then.
  EXPECT_GE(refused, static_cast<int>(whole.size()) - 8);
}

TEST_F(UpdateFailure, CatalogWithoutPagesIs1) { ExpectRefused(Tree("<</Type/Catalog >>"), 1); }

// An object that the table does not list is read from the document's start, where nothing is found.
TEST_F(UpdateFailure, ObjectsWithoutARowAre1) {
  ExpectRefused(Tree("<</Type/Catalog /Pages 9 0 R >>"), 1);
  PdfBuilder pdf = Tree("");
  pdf.Classic({.keys = "/Root 9 0 R"});
  ExpectRefused(pdf.Content(), 1);
}

// Kept: object 0 is no object, which sets no code.
TEST_F(UpdateFailure, ObjectZeroLeavesNoCode) {
  ExpectRefused(Tree("<</Type/Catalog /Pages 0 0 R >>"), 0);
  PdfBuilder pdf = Tree("");
  pdf.Classic({.keys = "/Root 0 0 R"});
  ExpectRefused(pdf.Content(), 0);
}

TEST_F(UpdateFailure, RootWithoutItsKeysIs1) {
  ExpectRefused(Tree("", "<</Type/Pages /Kids [3 0 R] >>"), 1);
  ExpectRefused(Tree("", "<</Type/Pages /Count 1 >>"), 1);
}

// Kept: a count by reference fails the open, though the update itself could follow it.
TEST_F(UpdateFailure, IndirectCountIs1) {
  PdfBuilder pdf = Tree("", "<</Type/Pages /Kids [3 0 R] /Count 4 0 R >>");
  pdf.Object(4, "1");
  ExpectRefused(pdf, 1);
}

TEST_F(UpdateFailure, TrailerWithoutRootOrSizeIs1) {
  PdfBuilder pdf = Tree("");
  pdf.Classic({.keys = "/Info 3 0 R"});
  ExpectRefused(pdf.Content(), 1);
}

TEST_F(UpdateFailure, CyclesInThePageTreeEnd) {
  PdfBuilder pdf = Tree("", "<</Type/Pages /Kids [2 0 R 3 0 R] /Count 1 >>",
                        "<</Type/Pages /Kids [2 0 R] /Count 1 >>");
  pdf.Classic();
  test::WriteAll(name_, pdf.Document());
  EXPECT_EQ(session_->CreatePDF(name_.c_str()), 1);
  EXPECT_EQ(session_->GetPageObjectNumber(0), 0u);
  session_->ClosePDFFile();
  EXPECT_EQ(Text(), pdf.Content());
}

TEST_F(UpdateFailure, IndirectKidsAre1) {
  PdfBuilder pdf = Tree("", "<</Type/Pages /Kids 4 0 R /Count 1 >>");
  pdf.Object(4, "[3 0 R ]");
  ExpectRefused(pdf, 1);
}

// A bracket of another key lets the document open; no page can be added at it.
TEST_F(UpdateFailure, IndirectKidsBeforeAnArrayAre26BehindThePagesThatWereWritten) {
  PdfBuilder pdf = Tree("", "<</Type/Pages /Kids 4 0 R /Count 1 /Box [0 0 9 9 ] >>");
  pdf.Object(4, "[3 0 R ]");
  pdf.Classic();
  test::WriteAll(name_, pdf.Document());
  EXPECT_EQ(pdf_SaveDIBToPDF(name_.c_str(), SmallPage(), "", 0, 0), 26u);
  std::string expected = pdf.Content() + "\n\n";
  for (std::string const& object : test::SmallPageObjects(5, 2)) expected += object;
  EXPECT_EQ(Text(), expected);
}

// The page's own code comes back, whatever becomes of the finish after it.
TEST_F(UpdateFailure, CodeOfAFailedPageStandsOverThatOfTheFinish) {
  PdfBuilder pdf = Tree("", "<</Type/Pages /Kids 4 0 R /Count 1 /Box [0 0 9 9 ] >>");
  pdf.Object(4, "[3 0 R ]");
  pdf.Classic();
  test::WriteAll(name_, pdf.Document());
  EXPECT_EQ(pdf_SaveDIBToPDF(name_.c_str(), SmallPage(), "", PDF_COMPRESSION_CCITT, 0), 15u);
  EXPECT_EQ(Text(), pdf.Content() + "\n\n");
}

TEST_F(UpdateFailure, ObjectsInObjectStreamsAre25InAFileAndInMemory) {
  PdfBuilder pdf("%PDF-1.5");
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.ObjectStream(
      5, {{2, "<</Type/Pages /Kids [3 0 R] /Count 1 >>"}, {3, "<</Type/Page /Parent 2 0 R >>"}});
  pdf.XrefStream(6);
  ExpectRefused(pdf.Content(), 25);
  test::Bytes const bytes = pdf.Document();
  EXPECT_EQ(session_->CreatePDFInMemory(reinterpret_cast<int64_t>(bytes.data()),
                                        static_cast<DWORD>(bytes.size())),
            0);
  EXPECT_EQ(session_->PDF_GetLastError(), 25u);
}

TEST_F(UpdateFailure, TargetsThatCannotBeOpenedAre1AndLeaveNoChannel) {
  EXPECT_EQ(session_->CreatePDF(dir_.path().string().c_str()), 0);
  EXPECT_EQ(session_->PDF_GetLastError(), 1u);
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_EQ(session_->FinishPDF(), 0);
}

TEST_F(UpdateFailure, HeldTargetIs1AndStays) {
  PdfBuilder pdf = Tree("");
  pdf.Classic();
  test::WriteAll(name_, pdf.Document());
  auto const reader = std::make_unique<CCreatePDF>();
  ASSERT_EQ(reader->OpenPDFFile(name_.c_str()), 1);
  EXPECT_EQ(pdf_SaveDIBToPDF(name_.c_str(), SmallPage(), "", 0, 0), 1u);
  EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
  reader->ClosePDFFile();
  EXPECT_EQ(Text(), pdf.Content());
  EXPECT_EQ(pdf_SaveDIBToPDF(name_.c_str(), SmallPage(), "", 0, 0), 0u);
}

// While an update is under way, others may not read a half document.
TEST_F(UpdateFailure, TargetOfAnUpdateIsHeldUntilItIsFinished) {
  PdfBuilder pdf = Tree("");
  pdf.Classic();
  test::WriteAll(name_, pdf.Document());
  ASSERT_EQ(session_->CreatePDF(name_.c_str()), 1);
  EXPECT_EQ(pdf_SaveDIBToPDF(name_.c_str(), SmallPage(), "", 0, 0), 1u);
  session_->SaveDIBAsColorPDFPageW(SmallPage(), test::kNoLibrary, 0, 0);
  EXPECT_EQ(session_->FinishPDF(), 1);
  EXPECT_EQ(GetNumberOfPagesInPDFFile(name_.c_str()), 2u);
}

TEST_F(UpdateFailure, ReadOnlyTargetIs1AndStays) {
  PdfBuilder pdf = Tree("");
  pdf.Classic();
  test::WriteAll(name_, pdf.Document());
  std::filesystem::permissions(name_, std::filesystem::perms(0444));
  std::filesystem::permissions(dir_.path(), std::filesystem::perms::all);
  {
    test::OrdinaryUser const user;
    EXPECT_EQ(pdf_SaveDIBToPDF(name_.c_str(), SmallPage(), "", 0, 0), 1u);
  }
  EXPECT_EQ(Text(), pdf.Content());
}

TEST_F(UpdateFailure, PageLimitCountsTheOldPages) {
  PdfBuilder pdf = Tree("", "<</Type/Pages /Kids [3 0 R] /Count 30000 >>");
  pdf.Classic();
  test::WriteAll(name_, pdf.Document());
  ASSERT_EQ(session_->CreatePDF(name_.c_str()), 1);
  EXPECT_EQ(session_->SaveDIBAsColorPDFPageW(SmallPage(), test::kNoLibrary, 0, 0), 0);
  EXPECT_EQ(session_->PDF_GetLastError(), 12u);
  session_->ClosePDFFile();
  EXPECT_EQ(Text().substr(0, pdf.Size()), pdf.Content());
}

// The catalog and the table's own row must fit.
TEST_F(UpdateFailure, DocumentWithoutRoomForItsNewEndIsError40) {
  for (DWORD const highest : {90'048u, 90'049u}) {
    PdfBuilder pdf = Tree("");
    pdf.Object(highest, "x");
    ExpectRefused(pdf, 40);
  }
}

TEST_F(UpdateFailure, RootWithoutARowEndsTheFinishWithoutACode) {
  test::MemoryDocument document;
  document.Create();
  document->PDF_SetLastError(0);
  EXPECT_EQ(document->CreatePagesRootObjectForAppend(), 0);
  EXPECT_EQ(document->PDF_GetLastError(), 0u);
}

// What an update in a row reads must be what the one before wrote, also where that was cut short.
TEST_F(UpdateFailure, UpdateWithoutItsTableIsRefusedAndStays) {
  PdfBuilder pdf = Tree("");
  pdf.Classic();
  test::WriteAll(name_, pdf.Document());
  ASSERT_EQ(session_->CreatePDF(name_.c_str()), 1);
  session_->SaveDIBAsColorPDFPageW(SmallPage(), test::kNoLibrary, 0, 0);
  session_->ClosePDFFile();
  std::string const half = Text();
  ASSERT_GT(half.size(), pdf.Size());
  ExpectRefused(half, 24);
}

}  // namespace
