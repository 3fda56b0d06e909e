// None of the 46 flat functions prints, on its good way
// or on a bad one.
#include <gtest/gtest.h>
#include <sorrelin/platform/wide_string.h>

#include "tests/support/dib.h"
#include "tests/support/document.h"
#include "tests/support/temp_dir.h"

namespace {

using sorrelin::WideString;
using test::Block;
using test::kNoLibrary;

class FlatSilence : public testing::Test {
 protected:
  void SetUp() override {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    pdf_Init_PDF(&pdf_);
  }
  void TearDown() override {
    pdf_Release_PDF(pdf_);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  }

  test::TempDir dir_;
  std::string const name_ = (dir_ / "a.pdf").string();
  std::string const missing_ = (dir_ / "none/a.pdf").string();
  WideString const wide_name_ = sorrelin::ToWide(name_.c_str());
  WideString const wide_missing_ = sorrelin::ToWide(missing_.c_str());
  Block const dib_ = test::MakeDib({.width = 8, .height = 8, .bits = 24},
                                   [](LONG x, LONG y) { return static_cast<DWORD>(x + y); });
  hPDF pdf_ = 0;
};

TEST_F(FlatSilence, OfTheSession) {
  char text[512];
  EXPECT_EQ(pdf_Init_PDF(nullptr), 2u);
  EXPECT_EQ(pdf_Release_PDF(0), 2u);
  EXPECT_EQ(pdf_PDF_GetLastError(pdf_), 32u);
  EXPECT_EQ(pdf_GetLastPDFErrorText(pdf_, text), 1u);
}

TEST_F(FlatSilence, OfPagesInAFile) {
  EXPECT_EQ(pdf_CreatePDF(pdf_, missing_.c_str()), 1u);
  EXPECT_EQ(pdf_CreatePDFW(pdf_, wide_name_.c_str()), 0u);
  EXPECT_EQ(pdf_SaveDIBAsPDFPage(pdf_, dib_, ""), 15u);
  EXPECT_EQ(pdf_SaveDIBAsPDFPageW(pdf_, dib_, kNoLibrary), 15u);
  EXPECT_EQ(pdf_SaveDIBAsColorPDFPage(pdf_, dib_, "", PDF_COMPRESSION_JPEG, 0), 21u);
  EXPECT_EQ(pdf_SaveDIBAsColorPDFPageW(pdf_, dib_, kNoLibrary, PDF_COMPRESSION_FLATE, 6), 0u);
  EXPECT_EQ(pdf_FinishPDF(pdf_), 0u);
  EXPECT_EQ(pdf_FinishPDF(pdf_), 11u);
  pdf_ClosePDFFile(pdf_);
}

TEST_F(FlatSilence, OfADocumentInMemory) {
  void* data = nullptr;
  DWORD size = 0;
  EXPECT_EQ(pdf_FinishPDFInMemory(pdf_, &data, &size), 2u);
  EXPECT_EQ(pdf_CreatePDFInMemory(pdf_, nullptr, 100), 0u);
  EXPECT_EQ(pdf_FinishPDFInMemory(pdf_, &data, &size), 0u);
  EXPECT_EQ(pdf_ClosePDFInMemory(pdf_), 0u);
  EXPECT_EQ(pdf_FreePDFInMemory(data), 0u);
}

TEST_F(FlatSilence, OfTheOneCallHelpers) {
  void* data = nullptr;
  DWORD size = 0;
  EXPECT_EQ(pdf_SaveDIBToPDF(name_.c_str(), dib_, "", 0, 0), 0u);
  EXPECT_EQ(pdf_SaveDIBToPDFW(wide_name_.c_str(), dib_, kNoLibrary, 0, 0), 0u);
  EXPECT_EQ(pdf_SaveDIBToPDFW(wide_missing_.c_str(), dib_, kNoLibrary, 0, 0), 1u);
  EXPECT_EQ(pdf_SaveDIBToPDFInMemory(&data, &size, dib_, kNoLibrary, 0, 0), 0u);
  EXPECT_EQ(GetNumberOfPagesInPDFInMemory(data, size), 1u);
  EXPECT_NE(Block(pdf_LoadPDFIntoDIBInMemory(data, size, 0)).get(), nullptr);
  pdf_FreePDFInMemory(data);
  EXPECT_EQ(GetNumberOfPagesInPDFFile(name_.c_str()), 2u);
  EXPECT_EQ(GetNumberOfPagesInPDFFileW(wide_missing_.c_str()), 0xFFFFFFFFu);
  EXPECT_NE(Block(pdf_LoadPDFIntoDIB(name_.c_str(), 1)).get(), nullptr);
  EXPECT_EQ(pdf_LoadPDFIntoDIBW(wide_name_.c_str(), 2), nullptr);
}

TEST_F(FlatSilence, OfReading) {
  ASSERT_EQ(pdf_SaveDIBToPDF(name_.c_str(), dib_, "", 0, 0), 0u);
  std::vector<BYTE> const document = test::ReadAll(name_);
  EXPECT_EQ(pdf_OpenPDFFile(pdf_, missing_.c_str()), 23u);
  EXPECT_EQ(pdf_OpenPDFFileW(pdf_, wide_name_.c_str()), 0u);
  EXPECT_EQ(pdf_GetNumberOfPages(pdf_), 1u);
  EXPECT_NE(Block(pdf_LoadImageFromPDF(pdf_, 0)).get(), nullptr);
  EXPECT_EQ(pdf_LoadImageFromPDF(pdf_, 1), nullptr);
  pdf_ClosePDFFile(pdf_);
  EXPECT_EQ(pdf_OpenPDFInMemory(pdf_, document.data(), static_cast<DWORD>(document.size())), 0u);
}

TEST_F(FlatSilence, OfTheInformationStrings) {
  char narrow[8];
  WCHAR wide[8];
  DWORD size = 8;
  for (auto const set : {pdf_SetTitleA, pdf_SetAuthorA, pdf_SetSubjectA, pdf_SetKeywordsA}) {
    EXPECT_EQ(set(pdf_, "abc"), 0u);
  }
  for (auto const set : {pdf_SetTitleW, pdf_SetAuthorW, pdf_SetSubjectW, pdf_SetKeywordsW}) {
    EXPECT_EQ(set(pdf_, SORRELIN_TEXT("abc")), 0u);
  }
  for (auto const get : {pdf_GetTitleA, pdf_GetAuthorA, pdf_GetSubjectA, pdf_GetKeywordsA}) {
    EXPECT_EQ(get(pdf_, narrow, &size), 0u);
  }
  for (auto const get : {pdf_GetTitleW, pdf_GetAuthorW, pdf_GetSubjectW, pdf_GetKeywordsW}) {
    EXPECT_EQ(get(pdf_, wide, &size), 0u);
  }
}

}  // namespace
