// The second and third use of one session, and the last error after calls that succeed.
#include <gtest/gtest.h>
#include <sorrelin/frame/pdf.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/platform/wide_string.h>

#include <memory>
#include <string>

#include "tests/support/dib_content.h"
#include "tests/support/document.h"
#include "tests/support/page_document.h"
#include "tests/support/temp_dir.h"

namespace test {
namespace {

class SessionReuse : public testing::Test {
 protected:
  ~SessionReuse() override { session_->ClosePDFFile(); }

  // The bytes must live as long as the document is open.
  int Open(Bytes const& bytes) {
    return session_->OpenPDFFileInMemory(reinterpret_cast<int64_t>(bytes.data()),
                                         static_cast<DWORD>(bytes.size()));
  }
  int SavePage(BYTE pixel) {
    Block const dib =
        MakeDib({.width = 2, .height = 2, .bits = 8, .x_per_metre = 2835, .y_per_metre = 2835},
                [pixel](LONG, LONG) { return DWORD{pixel}; });
    return session_->SaveDIBAsColorPDFPageW(dib, kNoLibrary, PDF_COMPRESSION_FLATE, 6);
  }
  BYTE TopLeft(DWORD page) { return ReadDib(Block(session_->LoadImageFromPDF(page))).rows[0][0]; }
  DWORD Error() { return session_->PDF_GetLastError(); }
  sorrelin::WideString Title() { return Text(&CCreatePDF::GetTitleW); }
  sorrelin::WideString Text(int (CCreatePDF::*get)(WCHAR*, DWORD*)) {
    WCHAR text[64] = {};
    DWORD size = 64;
    EXPECT_EQ((session_.get()->*get)(text, &size), 1);
    return text;
  }

  std::unique_ptr<CCreatePDF> session_ = std::make_unique<CCreatePDF>();
};

Bytes WithInfo(std::string const& info) {
  PdfBuilder pdf;
  AddPageTree(pdf, 1);
  pdf.Object(4, info);
  pdf.Classic({.keys = "/Root 1 0 R /Info 4 0 R"});
  return pdf.Document();
}

Bytes WithImage(std::string const& keys) {
  PdfBuilder pdf =
      OnePage{.image = "/Subtype/Image /Width 8 /Height 2 /BitsPerComponent 1 " + keys}.Build();
  pdf.Classic();
  return pdf.Document();
}

// The second finish finds the pages root's row taken and leaves 0 in its number; the third takes
// row 0 and fails at the first write; the fourth finds row 0 taken.
TEST_F(SessionReuse, EveryFinishAfterTheFirstFails) {
  session_->CreatePDFInMemory(0, 0);
  int64_t data = 0;
  DWORD size = 0;
  ASSERT_EQ(session_->FinishPDFInMemory(&data, &size), 1);
  for (DWORD const code : {11u, 2u, 11u, 11u}) {
    session_->PDF_SetLastError(0);
    int64_t const before = data;
    EXPECT_EQ(session_->FinishPDFInMemory(&data, &size), 0);
    EXPECT_EQ(Error(), code);
    EXPECT_EQ(data, before);
  }
  pdf_FreePDFInMemory(reinterpret_cast<void*>(data));
}

// Rows 1 to 3 are those of the document that was read, so three attempts find their number taken.
// Each has written the two header lines of 9 and 7 bytes by then, and so has the fourth.
TEST_F(SessionReuse, NewDocumentAfterReadingStartsAfterTheRowsThatWereRead) {
  PdfBuilder pdf;
  AddPageTree(pdf, 1);
  pdf.Classic();
  Bytes const read = pdf.Document();
  ASSERT_EQ(Open(read), 1);
  for (DWORD number = 1; number <= 3; ++number) {
    EXPECT_EQ(session_->CreatePDFInMemory(0, 0), 0);
    EXPECT_EQ(Error(), 11u);
    EXPECT_EQ(session_->GetCurrentObject(), number);
  }
  EXPECT_EQ(session_->CreatePDFInMemory(0, 0), 1);
  EXPECT_EQ(Error(), 0u);
  EXPECT_EQ(session_->GetPagesRootObjectNr(), 6u);
  int64_t data = 0;
  DWORD size = 0;
  ASSERT_EQ(session_->FinishPDFInMemory(&data, &size), 1);
  std::string const written(reinterpret_cast<char const*>(data), size);
  pdf_FreePDFInMemory(reinterpret_cast<void*>(data));
  EXPECT_NE(written.find("\n0000000064 00000 n \n"), std::string::npos);  // 4 * 16 bytes
  EXPECT_NE(written.find("/Count 1\n"), std::string::npos);               // the page that was read
}

// The number after the highest that is listed is that of the session's last table, whose row is
// taken: the first page of each further update fails by it, and the next one goes on after it.
TEST_F(SessionReuse, FurtherUpdatesOfAFileLoseTheirFirstPageToTheRowOfTheLastTable) {
  TempDir const temp;
  sorrelin::WideString const name = sorrelin::ToWide((temp / "a.pdf").string().c_str());
  ASSERT_EQ(session_->CreatePDFW(name.c_str()), 1);
  ASSERT_EQ(SavePage(10), 1);
  ASSERT_EQ(session_->FinishPDF(), 1);
  session_ = std::make_unique<CCreatePDF>();
  for (BYTE const pixel : {BYTE{20}, BYTE{30}, BYTE{40}}) {
    ASSERT_EQ(session_->CreatePDFW(name.c_str()), 1);
    if (pixel != 20) {
      EXPECT_EQ(SavePage(99), 0);
      EXPECT_EQ(Error(), 11u);
    }
    ASSERT_EQ(SavePage(pixel), 1);
    ASSERT_EQ(session_->FinishPDF(), 1);
    EXPECT_EQ(Error(), 0u);
  }
  ASSERT_EQ(session_->OpenPDFFileW(name.c_str()), 1);
  ASSERT_EQ(session_->GetNumberOfPages(), 4u);
  for (DWORD page = 0; page < 4; ++page) EXPECT_EQ(TopLeft(page), 10 * (page + 1));
  session_->ClosePDFFile();
}

TEST_F(SessionReuse, StringsOfTheFirstDocumentStayWhereTheSecondHasNone) {
  Bytes const first = WithInfo("<</Title (One) /Author (Ann) >>");
  Bytes const second = WithInfo("<</Title (Two) >>");
  ASSERT_EQ(Open(first), 1);
  ASSERT_EQ(Open(second), 1);
  EXPECT_EQ(Title(), SORRELIN_TEXT("Two"));
  EXPECT_EQ(Text(&CCreatePDF::GetAuthorW), SORRELIN_TEXT("Ann"));
}

TEST_F(SessionReuse, PolarityOfAnImageStaysForDecodersUntilTheNextLoad) {
  auto const first_colour = [this] {
    Block const data = MakeBlock({0x55});
    return ReadDib(Block(session_->CreateDIBFromUncompressedData(data, 8, 1, 1, nullptr))).table[0];
  };
  Bytes const inverted = WithImage("/Decode [1 0]");
  Bytes const plain = WithImage("");
  EXPECT_EQ(first_colour(), 0);
  ASSERT_EQ(Open(inverted), 1);
  EXPECT_EQ(ReadDib(Block(session_->LoadImageFromPDF(0))).table[0], 255);
  EXPECT_EQ(first_colour(), 255);
  ASSERT_EQ(Open(plain), 1);
  EXPECT_EQ(first_colour(), 255);
  EXPECT_EQ(ReadDib(Block(session_->LoadImageFromPDF(0))).table[0], 0);
  EXPECT_EQ(first_colour(), 0);
  EXPECT_EQ(session_->LoadImageFromPDF(7), nullptr);
  EXPECT_EQ(first_colour(), 0);
}

// A page number that is refused resets the polarity all the same.
TEST_F(SessionReuse, RefusedPageNumberEndsAnImagesPolarity) {
  Bytes const inverted = WithImage("/Decode [1 0]");
  ASSERT_EQ(Open(inverted), 1);
  EXPECT_EQ(ReadDib(Block(session_->LoadImageFromPDF(0))).table[0], 255);
  EXPECT_EQ(session_->LoadImageFromPDF(1), nullptr);
  Block const data = MakeBlock({0x55});
  EXPECT_EQ(
      ReadDib(Block(session_->CreateDIBFromUncompressedData(data, 8, 1, 1, nullptr))).table[0], 0);
}

TEST_F(SessionReuse, PagesOfTheFirstDocumentStayInTheListAfterThoseOfTheSecond) {
  PdfBuilder three;
  AddPageTree(three, 3);  // objects 3 to 5
  three.Classic();
  PdfBuilder one;
  AddPageTree(one, 1);
  one.Classic();
  Bytes const first = three.Document();
  Bytes const second = one.Document();
  ASSERT_EQ(Open(first), 1);
  ASSERT_EQ(Open(second), 1);
  EXPECT_EQ(session_->GetNumberOfPages(), 1u);
  EXPECT_EQ(session_->GetPageObjectNumber(0), 3u);
  EXPECT_EQ(session_->GetPageObjectNumber(1), 4u);
  EXPECT_EQ(session_->GetPageObjectNumber(2), 5u);
}

TEST_F(SessionReuse, FailedOpenKeepsThePageCountAndTheNextOpenWorks) {
  Bytes const good = WithImage("");
  Bytes const bad = ToBytes("%PDF-2.0 and more");
  ASSERT_EQ(Open(good), 1);
  EXPECT_EQ(Open(bad), 0);
  EXPECT_EQ(Error(), 25u);
  EXPECT_EQ(session_->GetNumberOfPages(), 1u);
  EXPECT_EQ(session_->WriteToPDFFile("x", 1), 0);
  EXPECT_EQ(Error(), 2u);
  EXPECT_EQ(Open(good), 1);
  EXPECT_EQ(TopLeft(0), 'A');
}

TEST_F(SessionReuse, ReadingCallsThatSucceedKeepAnOlderCode) {
  Bytes const document = WithImage("");
  session_->PDF_SetLastError(99);
  EXPECT_EQ(Open(document), 1);
  EXPECT_EQ(TopLeft(0), 'A');
  EXPECT_NE(session_->GetObjectSize(3), 0u);
  EXPECT_NE(Block(session_->LoadObject(3)).get(), nullptr);
  session_->ClosePDFFile();
  EXPECT_EQ(Error(), 99u);
}

// The entry's offset, the number of the next free object, leads to no object header.
TEST_F(SessionReuse, OpenThatSucceedsOverAFreeEntryLeavesCode24) {
  PdfBuilder pdf;
  AddPageTree(pdf, 1);
  pdf.Row(4, {0, 2, 1});
  pdf.Classic();
  Bytes const document = pdf.Document();
  session_->PDF_SetLastError(0);
  EXPECT_EQ(Open(document), 1);
  EXPECT_EQ(Error(), 24u);
}

TEST_F(SessionReuse, FinishThatSucceedsKeepsTheCodeOfAFailedPage) {
  session_->CreatePDFInMemory(0, 0);
  EXPECT_EQ(session_->SaveDIBAsColorPDFPageW(nullptr, kNoLibrary, 0, 0), 0);
  EXPECT_EQ(session_->FinishPDF(), 1);
  EXPECT_EQ(Error(), 2u);
}

// The new pages root has no row that could be renewed.
TEST_F(SessionReuse, FinishOfAnUpdateInMemorySucceedsWithCode11) {
  Bytes document = WithImage("");
  ASSERT_EQ(session_->CreatePDFInMemory(reinterpret_cast<int64_t>(document.data()),
                                        static_cast<DWORD>(document.size())),
            1);
  ASSERT_EQ(SavePage(1), 1);
  EXPECT_EQ(Error(), 0u);
  int64_t data = 0;
  DWORD size = 0;
  EXPECT_EQ(session_->FinishPDFInMemory(&data, &size), 1);
  EXPECT_EQ(Error(), 11u);
  pdf_FreePDFInMemory(reinterpret_cast<void*>(data));
}

}  // namespace
}  // namespace test
