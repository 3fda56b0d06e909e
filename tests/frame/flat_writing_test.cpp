// The flat functions that make documents, and the one-call helpers.
#include <gtest/gtest.h>
#include <sorrelin/platform/wide_string.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "tests/support/dib.h"
#include "tests/support/document.h"
#include "tests/support/temp_dir.h"

namespace {

using test::kNoLibrary;
using test::MakeDib;

test::Block Page() {
  return MakeDib({.width = 8, .height = 8, .bits = 24, .x_per_metre = 2835},
                 [](LONG x, LONG) { return static_cast<DWORD>(x); });
}

struct Session {
  Session() { pdf_Init_PDF(&pdf); }
  ~Session() { pdf_Release_PDF(pdf); }
  hPDF pdf = 0;
};

std::string Take(void* data, DWORD size) {
  std::string const document(static_cast<char const*>(data), size);
  pdf_FreePDFInMemory(data);
  return document;
}

std::string TextOf(std::filesystem::path const& path) {
  std::vector<BYTE> const bytes = test::ReadAll(path);
  return {bytes.begin(), bytes.end()};
}

TEST(FlatWriting, DocumentInMemoryComesOutOfFinish) {
  Session session;
  EXPECT_EQ(pdf_CreatePDFInMemory(session.pdf, nullptr, 0), 0u);
  EXPECT_EQ(pdf_SaveDIBAsColorPDFPageW(session.pdf, Page(), kNoLibrary, 0, 0), 0u);
  EXPECT_EQ(pdf_SaveDIBAsColorPDFPage(session.pdf, Page(), "", 4, 6), 0u);
  void* data = nullptr;
  DWORD size = 0;
  EXPECT_EQ(pdf_FinishPDFInMemory(session.pdf, &data, &size), 0u);
  EXPECT_NE(Take(data, size).find("/Count 2\n"), std::string::npos);
}

TEST(FlatWriting, DocumentInAFileThroughBothNameWidths) {
  test::TempDir const dir;
  for (bool const wide : {false, true}) {
    Session session;
    std::string const name = (dir / (wide ? "w.pdf" : "a.pdf")).string();
    EXPECT_EQ(wide ? pdf_CreatePDFW(session.pdf, sorrelin::ToWide(name.c_str()).c_str())
                   : pdf_CreatePDF(session.pdf, name.c_str()),
              0u);
    EXPECT_EQ(pdf_FinishPDF(session.pdf), 0u);
    EXPECT_NE(TextOf(name).find("/Count 0\n"), std::string::npos);
  }
}

TEST(FlatWriting, BadHandlesAre2) {
  void* data = nullptr;
  DWORD size = 0;
  for (hPDF const bad : {hPDF{0}, hPDF{-1}}) {
    EXPECT_EQ(pdf_CreatePDF(bad, "x"), 2u);
    EXPECT_EQ(pdf_CreatePDFW(bad, SORRELIN_TEXT("x")), 2u);
    EXPECT_EQ(pdf_CreatePDFInMemory(bad, nullptr, 0), 2u);
    EXPECT_EQ(pdf_SaveDIBAsPDFPage(bad, Page(), ""), 2u);
    EXPECT_EQ(pdf_SaveDIBAsPDFPageW(bad, Page(), kNoLibrary), 2u);
    EXPECT_EQ(pdf_SaveDIBAsColorPDFPage(bad, Page(), "", 0, 0), 2u);
    EXPECT_EQ(pdf_SaveDIBAsColorPDFPageW(bad, Page(), kNoLibrary, 0, 0), 2u);
    EXPECT_EQ(pdf_FinishPDF(bad), 2u);
    EXPECT_EQ(pdf_FinishPDFInMemory(bad, &data, &size), 2u);
  }
  EXPECT_FALSE(std::filesystem::exists("x"));
}

TEST(FlatWriting, BadBitmapIs2AndTheSessionKeepsItsCode) {
  Session session;
  for (HDIB const bad : {HDIB{nullptr}, HDIB{INVALID_HANDLE_VALUE}}) {
    EXPECT_EQ(pdf_SaveDIBAsPDFPageW(session.pdf, bad, kNoLibrary), 2u);
    EXPECT_EQ(pdf_SaveDIBAsColorPDFPageW(session.pdf, bad, kNoLibrary, 0, 0), 2u);
  }
  EXPECT_EQ(pdf_PDF_GetLastError(session.pdf), 32u);
}

TEST(FlatWriting, FailuresReturnTheSessionsCode) {
  Session session;
  EXPECT_EQ(pdf_FinishPDF(session.pdf), 2u);
  EXPECT_EQ(pdf_CreatePDFInMemory(session.pdf, nullptr, 0), 0u);
  EXPECT_EQ(pdf_SaveDIBAsPDFPage(session.pdf, Page(), ""), 15u);
  EXPECT_EQ(pdf_SaveDIBAsPDFPageW(session.pdf, Page(), kNoLibrary), 15u);
}

TEST(FlatWriting, CloseThrowsAMemoryDocumentAway) {
  Session session;
  pdf_CreatePDFInMemory(session.pdf, nullptr, 0);
  pdf_ClosePDFFile(session.pdf);  // the block would show as a leak
  EXPECT_EQ(pdf_FinishPDF(session.pdf), 2u);
}

TEST(FlatWriting, CloseInMemoryDropsTheBlockWithoutFreeingIt) {
  Session session;
  pdf_CreatePDFInMemory(session.pdf, nullptr, 0);
  CCreatePDF& object = *reinterpret_cast<CCreatePDF*>(session.pdf);
  void* const block = SessionProbe::Channel(object)->buffer.pData;
  EXPECT_EQ(pdf_ClosePDFInMemory(session.pdf), 0u);
  EXPECT_EQ(std::memcmp(block, "%PDF", 4), 0);
  pdf_FreePDFInMemory(block);
}

TEST(FlatWriting, FreeOfNullIsHarmless) { EXPECT_EQ(pdf_FreePDFInMemory(nullptr), 0u); }

TEST(OneCall, GuardsComeInTheirOrder) {
  EXPECT_EQ(pdf_SaveDIBToPDFW(SORRELIN_TEXT(""), nullptr, kNoLibrary, 0, 0), 2u);
  EXPECT_EQ(pdf_SaveDIBToPDFW(SORRELIN_TEXT(""), Page(), kNoLibrary, 0, 0), 7u);
  EXPECT_EQ(pdf_SaveDIBToPDFW(nullptr, Page(), kNoLibrary, 0, 0), 7u);
  EXPECT_EQ(pdf_SaveDIBToPDF("", Page(), "", 0, 0), 7u);
  void* data = nullptr;
  DWORD size = 0;
  EXPECT_EQ(pdf_SaveDIBToPDFInMemory(nullptr, nullptr, nullptr, kNoLibrary, 0, 0), 2u);
  EXPECT_EQ(pdf_SaveDIBToPDFInMemory(nullptr, &size, Page(), kNoLibrary, 0, 0), 7u);
  EXPECT_EQ(pdf_SaveDIBToPDFInMemory(&data, nullptr, Page(), kNoLibrary, 0, 0), 7u);
}

TEST(OneCall, PageToAFile) {
  test::TempDir const dir;
  std::string const name = (dir / "a.pdf").string();
  EXPECT_EQ(pdf_SaveDIBToPDF(name.c_str(), Page(), "", 4, 6), 0u);
  EXPECT_NE(TextOf(name).find("/Count 1\n"), std::string::npos);
}

TEST(OneCall, FailedPageStillLeavesAWellFormedFile) {
  test::TempDir const dir;
  std::string const name = (dir / "a.pdf").string();
  EXPECT_EQ(pdf_SaveDIBToPDF(name.c_str(), Page(), "", 6, 0), 15u);
  EXPECT_NE(TextOf(name).find("/Count 0\n"), std::string::npos);
  EXPECT_TRUE(TextOf(name).ends_with("%%EOF\n"));
}

TEST(OneCall, MissingDirectoryIs1) {
  test::TempDir const dir;
  EXPECT_EQ(pdf_SaveDIBToPDF((dir / "none/a.pdf").string().c_str(), Page(), "", 0, 0), 1u);
}

TEST(OneCall, PageToMemoryFillsBothPointers) {
  void* data = nullptr;
  DWORD size = 0;
  EXPECT_EQ(pdf_SaveDIBToPDFInMemory(&data, &size, Page(), kNoLibrary, 0, 0), 0u);
  std::string const document = Take(data, size);
  EXPECT_NE(document.find("/Count 1\n"), std::string::npos);
  EXPECT_TRUE(document.ends_with("%%EOF\n"));
}

TEST(OneCall, FailedPageToMemoryLeavesThePointers) {
  void* data = nullptr;
  DWORD size = 77;
  EXPECT_EQ(pdf_SaveDIBToPDFInMemory(&data, &size, Page(), kNoLibrary, 6, 0), 15u);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(size, 77u);
}

TEST(OneCall, HandleOfMinus1Is4) {
  test::TempDir const dir;
  std::string const name = (dir / "a.pdf").string();
  EXPECT_EQ(pdf_SaveDIBToPDF(name.c_str(), INVALID_HANDLE_VALUE, "", 0, 0), 4u);
  EXPECT_NE(TextOf(name).find("/Count 0\n"), std::string::npos);
  void* data = nullptr;
  DWORD size = 77;
  EXPECT_EQ(pdf_SaveDIBToPDFInMemory(&data, &size, INVALID_HANDLE_VALUE, kNoLibrary, 0, 0), 4u);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(size, 77u);
}

}  // namespace
