// The flat functions that read a document: guards, results, and the one-call helpers.
#include <gtest/gtest.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/wide_string.h>
#include <tests/support/page_document.h>
#include <tests/support/temp_dir.h>

#include <filesystem>

namespace test {
namespace {

using sorrelin::ToWide;
using sorrelin::WideString;

constexpr DWORD kNoCount = 0xFFFFFFFF;

Bytes OnePageDocument() {
  PdfBuilder pdf = OnePage{}.Build();
  pdf.Classic();
  return pdf.Document();
}

class FlatReading : public testing::Test {
 protected:
  FlatReading() : document_(OnePageDocument()), size_(static_cast<DWORD>(document_.size())) {
    pdf_Init_PDF(&pdf_);
    WriteAll(path_, document_);
  }
  ~FlatReading() override { pdf_Release_PDF(pdf_); }

  static BYTE TopLeft(HDIB bitmap) { return ReadDib(Block(bitmap)).rows[0][0]; }

  TempDir temp_;
  std::filesystem::path const path_ = temp_ / "one.pdf";
  WideString const wide_path_ = ToWide(path_.string().c_str());
  std::string const missing_ = (temp_ / "missing.pdf").string();
  Bytes const document_;
  DWORD const size_;
  hPDF pdf_ = 0;
};

TEST_F(FlatReading, OpenedDocumentGivesPagesAndImages) {
  EXPECT_EQ(pdf_OpenPDFFile(pdf_, path_.string().c_str()), 0u);
  EXPECT_EQ(pdf_GetNumberOfPages(pdf_), 1u);
  EXPECT_EQ(TopLeft(pdf_LoadImageFromPDF(pdf_, 0)), 'A');
  pdf_ClosePDFFile(pdf_);
  EXPECT_EQ(pdf_OpenPDFFileW(pdf_, wide_path_.c_str()), 0u);
  EXPECT_EQ(TopLeft(pdf_LoadImageFromPDF(pdf_, 0)), 'A');
}

TEST_F(FlatReading, DocumentInMemoryGivesPagesAndImages) {
  EXPECT_EQ(pdf_OpenPDFInMemory(pdf_, document_.data(), size_), 0u);
  EXPECT_EQ(pdf_GetNumberOfPages(pdf_), 1u);
  EXPECT_EQ(TopLeft(pdf_LoadImageFromPDF(pdf_, 0)), 'A');
  EXPECT_EQ(pdf_ClosePDFInMemory(pdf_), 0u);
}

TEST_F(FlatReading, OpenRefusesBadHandlesAndANullWideName) {
  for (hPDF const handle : {hPDF{0}, hPDF{-1}}) {
    EXPECT_EQ(pdf_OpenPDFFile(handle, path_.string().c_str()), 2u);
    EXPECT_EQ(pdf_OpenPDFFileW(handle, wide_path_.c_str()), 2u);
    EXPECT_EQ(pdf_OpenPDFInMemory(handle, document_.data(), size_), 2u);
  }
  EXPECT_EQ(pdf_OpenPDFFileW(pdf_, nullptr), 2u);
  EXPECT_EQ(pdf_PDF_GetLastError(pdf_), 32u);  // guards do not touch the session
}

TEST_F(FlatReading, OpenInMemoryRefusesNullDataAndNoBytes) {
  EXPECT_EQ(pdf_OpenPDFInMemory(pdf_, nullptr, size_), 7u);
  EXPECT_EQ(pdf_OpenPDFInMemory(pdf_, nullptr, 0), 7u);
  EXPECT_EQ(pdf_OpenPDFInMemory(pdf_, document_.data(), 0), 24u);
  EXPECT_EQ(pdf_OpenPDFInMemory(0, nullptr, 0), 2u);
  EXPECT_EQ(pdf_PDF_GetLastError(pdf_), 32u);
}

TEST_F(FlatReading, FailedOpenReturnsTheSessionsLastError) {
  EXPECT_EQ(pdf_OpenPDFFile(pdf_, missing_.c_str()), 23u);
  EXPECT_EQ(pdf_PDF_GetLastError(pdf_), 23u);
  EXPECT_EQ(pdf_OpenPDFInMemory(pdf_, "%PDF-1.", 7), 24u);
  EXPECT_EQ(pdf_OpenPDFInMemory(pdf_, "%PDF-1.9", 8), 25u);
  EXPECT_EQ(pdf_OpenPDFInMemory(pdf_, "%PDF-1.4", 8), 1u);
}

// Kept: the stream route may fail without a code, and the last error is all that is returned.
TEST_F(FlatReading, OpenThatFailsWithoutACodeReturnsTheLastErrorFromBefore) {
  PdfBuilder pdf("%PDF-1.5");
  AddPageTree(pdf, 1);
  pdf.XrefStream(4, {.keys = ""});  // no /Root
  Bytes const bytes = pdf.Document();
  DWORD const size = static_cast<DWORD>(bytes.size());
  EXPECT_EQ(pdf_OpenPDFInMemory(pdf_, bytes.data(), size), 32u);
  pdf_ClosePDFInMemory(pdf_);
  pdf_LoadImageFromPDF(pdf_, 0xFFFFFFFF);
  EXPECT_EQ(pdf_OpenPDFInMemory(pdf_, bytes.data(), size), 31u);
  pdf_ClosePDFInMemory(pdf_);
  ASSERT_EQ(pdf_OpenPDFFile(pdf_, path_.string().c_str()), 0u);
  EXPECT_NE(Block(pdf_LoadImageFromPDF(pdf_, 0)).get(), nullptr);
  EXPECT_EQ(pdf_OpenPDFInMemory(pdf_, bytes.data(), size), 0u);
}

TEST_F(FlatReading, NumberOfPagesOfABadHandleIs0) {
  EXPECT_EQ(pdf_GetNumberOfPages(0), 0u);
  EXPECT_EQ(pdf_GetNumberOfPages(-1), 0u);
  EXPECT_EQ(pdf_GetNumberOfPages(pdf_), 0u);  // nothing is open
}

TEST_F(FlatReading, LoadOnABadHandleIs0) {
  EXPECT_EQ(pdf_LoadImageFromPDF(0, 0), nullptr);
  EXPECT_EQ(pdf_LoadImageFromPDF(-1, 0), nullptr);
}

TEST_F(FlatReading, LoadClearsTheLastError) {
  EXPECT_EQ(pdf_OpenPDFFile(pdf_, path_.string().c_str()), 0u);
  EXPECT_EQ(pdf_PDF_GetLastError(pdf_), 32u);  // a success does not clear it
  EXPECT_EQ(TopLeft(pdf_LoadImageFromPDF(pdf_, 0)), 'A');
  EXPECT_EQ(pdf_PDF_GetLastError(pdf_), 0u);
  EXPECT_EQ(pdf_LoadImageFromPDF(pdf_, 1), nullptr);
  EXPECT_EQ(pdf_PDF_GetLastError(pdf_), 31u);
}

TEST_F(FlatReading, LoadInOneCallGivesThePage) {
  EXPECT_EQ(TopLeft(pdf_LoadPDFIntoDIB(path_.string().c_str(), 0)), 'A');
  EXPECT_EQ(TopLeft(pdf_LoadPDFIntoDIBW(wide_path_.c_str(), 0)), 'A');
  EXPECT_EQ(TopLeft(pdf_LoadPDFIntoDIBInMemory(document_.data(), size_, 0)), 'A');
}

TEST_F(FlatReading, LoadInOneCallGives0ForWhateverFails) {
  EXPECT_EQ(pdf_LoadPDFIntoDIB(missing_.c_str(), 0), nullptr);
  EXPECT_EQ(pdf_LoadPDFIntoDIBW(ToWide(missing_.c_str()).c_str(), 0), nullptr);
  EXPECT_EQ(pdf_LoadPDFIntoDIBW(nullptr, 0), nullptr);
  EXPECT_EQ(pdf_LoadPDFIntoDIB(path_.string().c_str(), 1), nullptr);
  EXPECT_EQ(pdf_LoadPDFIntoDIBInMemory(document_.data(), size_, 1), nullptr);
  EXPECT_EQ(pdf_LoadPDFIntoDIBInMemory(nullptr, size_, 0), nullptr);
  EXPECT_EQ(pdf_LoadPDFIntoDIBInMemory(document_.data(), 0, 0), nullptr);
  EXPECT_EQ(pdf_LoadPDFIntoDIBInMemory(document_.data(), size_ - 60, 0), nullptr);
}

TEST_F(FlatReading, CountInOneCallGivesThePages) {
  EXPECT_EQ(GetNumberOfPagesInPDFFile(path_.string().c_str()), 1u);
  EXPECT_EQ(GetNumberOfPagesInPDFFileW(wide_path_.c_str()), 1u);
  EXPECT_EQ(GetNumberOfPagesInPDFInMemory(document_.data(), size_), 1u);
}

TEST_F(FlatReading, CountInOneCallGivesAllBitsForWhateverFails) {
  EXPECT_EQ(GetNumberOfPagesInPDFFile(missing_.c_str()), kNoCount);
  EXPECT_EQ(GetNumberOfPagesInPDFFileW(ToWide(missing_.c_str()).c_str()), kNoCount);
  EXPECT_EQ(GetNumberOfPagesInPDFFileW(nullptr), kNoCount);
  EXPECT_EQ(GetNumberOfPagesInPDFInMemory(nullptr, size_), kNoCount);
  EXPECT_EQ(GetNumberOfPagesInPDFInMemory(document_.data(), 0), kNoCount);
  EXPECT_EQ(GetNumberOfPagesInPDFInMemory(document_.data(), size_ - 60), kNoCount);
}

// A reader that stayed open would keep the writer out.
TEST_F(FlatReading, OneCallHelpersLetGoOfTheFile) {
  Block(pdf_LoadPDFIntoDIB(path_.string().c_str(), 0));
  GetNumberOfPagesInPDFFile(path_.string().c_str());
  WriteAll(temp_ / "bad.pdf", ToBytes("%PDF-1.4 without a table"));
  std::string const bad = (temp_ / "bad.pdf").string();
  EXPECT_EQ(GetNumberOfPagesInPDFFile(bad.c_str()), kNoCount);
  for (std::string const& name : {path_.string(), bad}) {
    HANDLE const file = CreateFileW(ToWide(name.c_str()).c_str(), GENERIC_READ | GENERIC_WRITE,
                                    FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(file, INVALID_HANDLE_VALUE) << name;
    CloseHandle(file);
  }
}

}  // namespace
}  // namespace test
