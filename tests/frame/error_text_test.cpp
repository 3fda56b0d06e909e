// The table of error texts.
#include <gtest/gtest.h>
#include <sorrelin/frame/error_text.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/wide_string.h>

#include <cstring>
#include <memory>
#include <string>

#include "tests/support/system_text.h"
#include "tests/support/temp_dir.h"

namespace sorrelin {
namespace {

std::string TextOf(DWORD code) {
  char text[1024] = {};
  EXPECT_EQ(GetErrorText(code, text), 1);
  return text;
}

TEST(ErrorText, TableIsExact) {
  char const* const texts[] = {"No Error",
                               nullptr,
                               "Invalid handle value",
                               "File already exists",
                               "Invalid image size",
                               "Invalid bits per pixel value",
                               "Invalid string",
                               "Null pointer",
                               "Zero bytes to write",
                               "Invalid DPI value",
                               "Memory allocation error",
                               "The object already exists",
                               nullptr,
                               nullptr,
                               nullptr,
                               "The filter (compression) type currently is not supported",
                               "Negative value is not supported",
                               "Error accessing the temp directory",
                               "Error accessing the temp file",
                               "Invalid Cadwick32.DLL",
                               "Encoding has failed",
                               "Invalid Jpeg DLL",
                               "Invalid parameter",
                               "Error opening file",
                               "File is not a PDF file",
                               "PDF version is not supported",
                               "Error reading file",
                               "Error during decompression",
                               "Invalid palette",
                               "Compression type not supported",
                               "CCITT encoding failed",
                               "Invalid page number",
                               "PDF Object not initialized",
                               "Invalid ProcSet value",
                               "Invalid object type",
                               "Insufficient buffer",
                               "Could not load Lumbrel.dll",
                               "The PDF document is password protected",
                               "The width of the pages does not match",
                               "Could not load Pellory.dll",
                               "Failed to create a new page object in the PDF file",
                               "Could not insert image to the PDF page",
                               "File not found",
                               "Access denied",
                               "The specified password is invalid",
                               "Could not load Averna.dll",
                               "Could not load functions from Averna.dll",
                               "Error during OCR process",
                               "Error during parsing HOCR data"};
  for (DWORD code = 0; code < std::size(texts); ++code) {
    if (texts[code] == nullptr) continue;
    EXPECT_EQ(TextOf(code), texts[code]);
    EXPECT_LT(std::strlen(texts[code]), size_t{kLongestErrorText});
  }
}

TEST(ErrorText, CodesWithoutATextReadAsTheFallback) {
  for (DWORD const code : {12u, 13u, 14u, 49u, 50u, 0xFFFFFFFFu}) {
    EXPECT_EQ(TextOf(code), "No error message defined for this error.") << code;
  }
}

TEST(ErrorText, Code1IsTheSystemsTextAtTheTimeOfAsking) {
  SetLastError(ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(TextOf(1), test::SystemText(ERROR_FILE_NOT_FOUND));
  SetLastError(ERROR_ACCESS_DENIED);
  EXPECT_EQ(TextOf(1), test::SystemText(ERROR_ACCESS_DENIED));
  EXPECT_NE(test::SystemText(ERROR_ACCESS_DENIED), test::SystemText(ERROR_FILE_NOT_FOUND));
}

TEST(ErrorText, NullBufferGives0) {
  EXPECT_EQ(GetErrorText(5, nullptr), 0);
  EXPECT_EQ(GetErrorTextW(5, nullptr), 0);
}

TEST(ErrorText, WideFormHoldsTheSameText) {
  WCHAR text[512];
  EXPECT_EQ(GetErrorTextW(4, text), 1);
  EXPECT_EQ(WideString(text), SORRELIN_TEXT("Invalid image size"));
}

TEST(SessionError, FreshSessionIsNotInitialized) {
  auto const session = std::make_unique<CCreatePDF>();
  char text[kLongestErrorText];
  EXPECT_EQ(session->PDF_GetLastError(), 32u);
  EXPECT_EQ(session->GetLastPDFErrorText(text), 1);
  EXPECT_STREQ(text, "PDF Object not initialized");
  EXPECT_EQ(session->GetLastPDFErrorText(nullptr), 0);
}

TEST(SessionError, CodeOfAFailedCreateOutlivesALaterSuccess) {
  test::TempDir const dir;
  auto const session = std::make_unique<CCreatePDF>();
  EXPECT_EQ(session->CreatePDFW(ToWide((dir / "none/a.pdf").string().c_str()).c_str()), 0);
  ASSERT_EQ(session->PDF_GetLastError(), 1u);
  EXPECT_EQ(session->SetTitleW(SORRELIN_TEXT("x")), 1);
  EXPECT_EQ(session->PDF_GetLastError(), 1u);
}

TEST(SessionError, SetterOnlyStoresTheNumber) {
  auto const session = std::make_unique<CCreatePDF>();
  session->PDF_SetLastError(4711);
  EXPECT_EQ(session->PDF_GetLastError(), 4711u);
}

}  // namespace
}  // namespace sorrelin
