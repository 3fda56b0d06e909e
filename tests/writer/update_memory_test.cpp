// Updates of documents in memory, which differ from those of files on purpose.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/document.h"
#include "tests/support/pdf_builder.h"
#include "tests/writer/update_golden.h"

namespace {

using test::PdfBuilder;
using test::SmallPage;
using test::SmallPageObjects;

// A document whose reading ends after object 4, the Info.
PdfBuilder OnePage() {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Object(4, "<</Title (a)>>");
  pdf.Text(std::string(2000, ' '));
  pdf.Object(5, "<<>>");
  pdf.Classic({.keys = "/Root 1 0 R /Info 4 0 R"});
  return pdf;
}

struct MemoryUpdate {
  explicit MemoryUpdate(PdfBuilder const& pdf) : bytes(pdf.Document()) {
    result = document->CreatePDFInMemory(reinterpret_cast<int64_t>(bytes.data()),
                                         static_cast<DWORD>(bytes.size()));
  }
  test::Bytes bytes;
  test::MemoryDocument document;
  int result = 0;
};

TEST(UpdateInMemory, RootGetsTheNextNumberAtOnce) {
  MemoryUpdate update(OnePage());
  EXPECT_EQ(update.result, 1);
  EXPECT_EQ(update.document->GetPagesRootObjectNr(), 6u);
  EXPECT_EQ(update.document->GetCurrentObject(), 6u);
}

TEST(UpdateInMemory, CallersBytesStayTheCallers) {
  MemoryUpdate update(OnePage());
  test::Bytes const before = update.bytes;
  update.document->SaveDIBAsColorPDFPageW(SmallPage(), test::kNoLibrary, 0, 0);
  EXPECT_NE(update.document.Finish(), "");
  EXPECT_EQ(update.bytes, before);
}

// Kept: pages go after the old bytes, but their offsets count from where reading ended, and what
// closes the document is written there.
TEST(UpdateInMemory, EveryByte) {
  PdfBuilder const pdf = OnePage();
  MemoryUpdate update(pdf);
  update.document->SaveDIBAsColorPDFPageW(SmallPage(), test::kNoLibrary, 0, 0);
  std::string const text = update.document.Finish();
  EXPECT_EQ(update.document->PDF_GetLastError(), 11u);

  std::string pages = "\n\n";
  test::TableRows rows = {{0, "0000000000 65535 f"}};
  for (DWORD object = 1; object <= 5; ++object) {
    rows[object] = test::UsedRow(pdf.OffsetOf(object));
  }
  rows[1].replace(11, 7, "00001 f");
  // Reading ends with the Info object: through its "endobj" and one byte more.
  size_t const start = pdf.Content().find("endobj", pdf.OffsetOf(4)) + 7;
  for (std::string const& object : SmallPageObjects(7, 6)) {
    rows[std::stol(object)] = test::UsedRow(start + pages.size());
    pages += object;
  }
  // The root has no header and no row.
  std::string const root = "\n<</Type/Pages /Kids [3 0 R  10 0 R\r] /Count 2 >>\nendobj\n";
  size_t const closing = start + pages.size();
  std::string const end =
      root + test::GoldenUpdate(closing + root.size(), {test::CatalogObject(13, 6, 0)}, rows,
                                "/Info 4 0 R\n");
  std::string expected = pdf.Content() + pages;
  if (expected.size() < closing + end.size()) expected.resize(closing + end.size());
  expected.replace(closing, end.size(), end);
  EXPECT_EQ(text, expected);
}

TEST(UpdateInMemory, OneCallHelperAddsToTheCallersBlock) {
  test::Bytes bytes = OnePage().Document();
  test::Bytes const before = bytes;
  void* data = bytes.data();
  DWORD size = static_cast<DWORD>(bytes.size());
  ASSERT_EQ(pdf_SaveDIBToPDFInMemory(&data, &size, SmallPage(), test::kNoLibrary, 0, 0), 0u);
  EXPECT_NE(data, bytes.data());
  EXPECT_GT(size, bytes.size());
  EXPECT_EQ(bytes, before);
  pdf_FreePDFInMemory(data);
}

TEST(UpdateInMemory, BytesThatAreNoDocumentAreRefused) {
  test::Bytes bytes(200, 'x');
  void* data = bytes.data();
  DWORD size = static_cast<DWORD>(bytes.size());
  EXPECT_EQ(pdf_SaveDIBToPDFInMemory(&data, &size, SmallPage(), test::kNoLibrary, 0, 0), 24u);
  EXPECT_EQ(data, bytes.data());
  EXPECT_EQ(size, 200u);
}

}  // namespace
