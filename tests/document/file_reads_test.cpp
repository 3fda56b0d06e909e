// How many bytes of a file the reader reads, as they are counted for the process.
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>
#include <tests/support/dib.h>
#include <tests/support/environment.h>
#include <tests/support/temp_dir.h>

#include <memory>
#include <string>

namespace {

constexpr DWORD kPages = 3;

// Three pages of one picture each; the size of a page's image data.
uint64_t WriteDocument(std::filesystem::path const& path, DWORD compression) {
  test::Block const dib =
      test::MakeDib({.width = 1000, .height = 1000, .bits = 24}, [](LONG x, LONG y) {
        return (static_cast<DWORD>(x) * 2654435761u ^ static_cast<DWORD>(y) * 40503u) >> 8;
      });
  auto const session = std::make_unique<CCreatePDF>();
  session->CreatePDF(path.string().c_str());
  for (DWORD page = 0; page < kPages; ++page) {
    session->SaveDIBAsColorPDFPage(dib, "", compression, 6);
  }
  session->FinishPDF();
  return std::filesystem::file_size(path) / kPages;
}

class FileReads : public testing::TestWithParam<DWORD> {};

INSTANTIATE_TEST_SUITE_P(Compressions, FileReads,
                         testing::Values(PDF_COMPRESSION_NONE, PDF_COMPRESSION_FLATE));

// The rest of a page, its dictionaries and looks at the table, is small beside the image.
TEST_P(FileReads, APageReadsEachByteOfItsImageAtMostTwice) {
  test::TempDir const dir;
  uint64_t const image = WriteDocument(dir / "document.pdf", GetParam());
  auto const session = std::make_unique<CCreatePDF>();
  ASSERT_NE(session->OpenPDFFile((dir / "document.pdf").string().c_str()), 0);
  uint64_t const before = test::BytesRead();
  ASSERT_NE(test::Block(session->LoadImageFromPDF(1)).get(), nullptr);
  uint64_t const read = test::BytesRead() - before;
  session->ClosePDFFile();
  EXPECT_GE(read, image);
  EXPECT_LE(read, 2 * image + image / 10);
}

}  // namespace
