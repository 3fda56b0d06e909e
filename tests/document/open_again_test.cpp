// Several documents on one session: what an open leaves of the document before.
#include <gtest/gtest.h>
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/frame/string_error.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/wide_string.h>
#include <tests/support/open_document.h>
#include <tests/support/page_document.h>

#include <memory>
#include <string>

namespace test {
namespace {

Bytes OnePageDocument(ClassicOptions const& options = {}) {
  PdfBuilder pdf = OnePage{}.Build();
  pdf.Classic(options);
  return pdf.Document();
}

// A page tree whose catalog has these keys.
Bytes DocumentOfCatalog(std::string const& keys) {
  PdfBuilder pdf;
  AddPageTree(pdf, 1);
  pdf.Object(1, "<</Type/Catalog " + keys + ">>");
  pdf.Classic();
  return pdf.Document();
}

class OpenAgain : public testing::Test {
 protected:
  OpenAgain() { session_->PDF_SetLastError(PDF_ERROR_NONE); }
  ~OpenAgain() override { session_->ClosePDFFile(); }

  int Open(Bytes const& bytes) {
    return session_->OpenPDFFileInMemory(reinterpret_cast<int64_t>(bytes.data()),
                                         static_cast<DWORD>(bytes.size()));
  }
  BYTE TopLeft() { return ReadDib(Block(session_->LoadImageFromPDF(0))).rows[0][0]; }
  DWORD Error() { return session_->PDF_GetLastError(); }

  Bytes const good_ = OnePageDocument();
  std::unique_ptr<CCreatePDF> session_ = std::make_unique<CCreatePDF>();
};

TEST_F(OpenAgain, NullNameLeavesTheOpenDocument) {
  ASSERT_EQ(Open(good_), 1);
  EXPECT_EQ(session_->OpenPDFFileW(nullptr), 0);
  EXPECT_EQ(Error(), 22u);
  EXPECT_EQ(TopLeft(), 'A');
}

// A reader that is open keeps writers out.
TEST_F(OpenAgain, MissingFileClosesTheOpenDocument) {
  TempDir const temp;
  std::string const name = (temp / "a.pdf").string();
  WriteAll(name, good_);
  sorrelin::WideString const wide = sorrelin::ToWide(name.c_str());
  auto const open_for_writing = [&wide] {
    return CreateFileW(wide.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                       OPEN_EXISTING, 0, nullptr);
  };
  ASSERT_EQ(session_->OpenPDFFileW(wide.c_str()), 1);
  EXPECT_EQ(open_for_writing(), INVALID_HANDLE_VALUE);
  EXPECT_EQ(session_->OpenPDFFile((temp / "missing.pdf").string().c_str()), 0);
  EXPECT_EQ(Error(), 23u);
  HANDLE const file = open_for_writing();
  EXPECT_NE(file, INVALID_HANDLE_VALUE);
  CloseHandle(file);
}

TEST_F(OpenAgain, EmptyNameIsCode23AndAPathThatIsNotFound) {
  SetLastError(ERROR_SUCCESS);
  EXPECT_EQ(session_->OpenPDFFile(""), 0);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_PATH_NOT_FOUND});
  EXPECT_EQ(Error(), 23u);
}

TEST_F(OpenAgain, DocumentAfterOneOfAnIncompleteIndexOpens) {
  Bytes const without_pages = DocumentOfCatalog("");
  EXPECT_EQ(Open(without_pages), 0);
  EXPECT_EQ(Error(), 1u);
  EXPECT_EQ(Open(good_), 1);
  EXPECT_EQ(TopLeft(), 'A');
}

TEST_F(OpenAgain, DocumentAfterOneThatThrewOpens) {
  PdfBuilder pdf("%PDF-1.5");
  AddPageTree(pdf, 1);
  pdf.XrefStream(4, {.keys = "/Root 1 0 R /Index [0 1 2]", .index_key = false});
  Bytes const odd = pdf.Document();
  EXPECT_THROW(Open(odd), SorrelinStringError);
  EXPECT_EQ(Open(good_), 1);
  EXPECT_EQ(TopLeft(), 'A');
}

// Kept: a text that runs off the end of its key is not taken, and the one before stays.
TEST_F(OpenAgain, IdOfTheDocumentBeforeStaysWhereTheNextHasNoBlankInIts) {
  Bytes const first = OnePageDocument({.keys = "/Root 1 0 R /ID [<a> <b>]"});
  Bytes const second = OnePageDocument({.keys = "/Root 1 0 R /ID [<c><d>]"});
  ASSERT_EQ(Open(first), 1);
  EXPECT_STREQ(SessionProbe::TrailerId(*session_), "/ID [<a>");
  ASSERT_EQ(Open(second), 1);
  EXPECT_STREQ(SessionProbe::TrailerId(*session_), "/ID [<a>");
}

TEST_F(OpenAgain, OutlinesOfTheDocumentBeforeAreForgotten) {
  Bytes const outlined = DocumentOfCatalog("/Pages 2 0 R /Outlines 9 0 R ");
  ASSERT_EQ(Open(outlined), 1);
  EXPECT_EQ(session_->GetOutlinesObjectNr(), 9u);
  ASSERT_EQ(Open(good_), 1);
  EXPECT_EQ(session_->GetOutlinesObjectNr(), 0u);
}

// Without a "startxref" at its end nothing of a document is taken over.
TEST(ReadAgain, DocumentWithoutStartxrefLeavesTheRowsAndTheIndex) {
  PdfBuilder pdf("%PDF-1.5");
  AddPageTree(pdf, 1);
  pdf.XrefStream(4);
  OpenDocument document(pdf);
  ASSERT_EQ(document.Build(), 5u);
  sorrelin::FileChannel* const own = SessionProbe::Channel(*document);
  auto const* const index = document.reader().objects.index();
  Bytes blanks(100, ' ');
  std::unique_ptr<sorrelin::FileChannel> const other(
      sorrelin::ChannelAttachMemory(blanks.data(), static_cast<DWORD>(blanks.size()), true));
  SessionProbe::SetChannel(*document, other.get());
  EXPECT_EQ(document.Build(), 0u);
  EXPECT_EQ(document.error(), 24u);
  EXPECT_EQ(SessionProbe::ObjectsInFile(*document), 5u);
  EXPECT_EQ(document.reader().objects.index(), index);
  sorrelin::ChannelClose(other.get());
  SessionProbe::SetChannel(*document, own);
}

}  // namespace
}  // namespace test
