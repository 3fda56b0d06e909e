// Updates: what follows an old document, byte for byte, and what is refused.
#include <gtest/gtest.h>
#include <sorrelin/writer/pages_root_text.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "tests/support/dib.h"
#include "tests/support/document.h"
#include "tests/support/environment.h"
#include "tests/support/pdf_builder.h"
#include "tests/support/temp_dir.h"

namespace {

using sorrelin::PagesRootWithPages;
using test::MemoryDocument;

test::Block Page() {
  return test::MakeDib({.width = 2, .height = 2, .bits = 24, .x_per_metre = 2835},
                       [](LONG, LONG) { return 0x010203u; });
}

std::string TextOf(std::string const& path) {
  std::vector<BYTE> const bytes = test::ReadAll(path);
  return {bytes.begin(), bytes.end()};
}

class AppendToFile : public testing::Test {
 protected:
  test::TempDir dir_;
  test::LeftOpen left_open_{dir_.path()};
  std::string const name_ = (dir_ / "a.pdf").string();

  DWORD Save() { return pdf_SaveDIBToPDF(name_.c_str(), Page(), "", PDF_COMPRESSION_NONE, 0); }
  // The text that a call adds after the old bytes, which must not change.
  std::string Added() {
    std::string const before = TextOf(name_);
    EXPECT_EQ(Save(), 0u);
    std::string const after = TextOf(name_);
    EXPECT_EQ(after.substr(0, before.size()), before);
    return after.substr(before.size());
  }
};

std::string Row(size_t offset, char const* rest) {
  char row[32];
  std::snprintf(row, sizeof row, "%010zu %s \n", offset, rest);
  return row;
}

TEST_F(AppendToFile, SecondCallAddsPagesRootCatalogTableAndTrailer) {
  ASSERT_EQ(Save(), 0u);
  std::string const old = TextOf(name_);
  std::string const added = Added();
  // The old document's numbers end at 10, its catalog; pages go on at 11.
  std::string const rows("\x01\x02\x03\x01\x02\x03\x01\x02\x03\x01\x02\x03");
  std::string const objects[] = {
      "\n\n",
      "11 0 obj\n[/PDF /ImageC ] \nendobj\n",
      "12 0 obj\n<<\n/Type /XObject\n/Subtype /Image\n/Width 2\n/Height 2\n/BitsPerComponent 8\n"
      "/ColorSpace /DeviceRGB\n/Length 13 0 R \n>>\nstream\n" +
          rows + ">\nendstream\nendobj\n",
      "13 0 obj\n14\nendobj\n",
      "14 0 obj\n<<\n/Type /Page\n/Parent 3 0 R\n/MediaBox [0 0 2 2]\n/Resources <<\n"
      "/XObject << /Im12 12 0 R >> \n/ProcSet 11 0 R\n>>\n/Contents 15 0 R\n>>\nendobj\n",
      "15 0 obj\n<< /Length 16 0 R >>\nstream\n1.0000 0.0000 0.0000 1.0000 0.0000 0.0000 cm\n"
      "2.0000 0.0000 0.0000  2.0000 0.0000 0.0000 cm\n/Im12 Do\nendstream\nendobj\n",
      "16 0 obj\n100\nendobj\n",
      "3 0 obj\n<<\n/Type /Pages\n/Count 2\n/Kids [ \n7 0 R \n 14 0 R\r]\n>>\nendobj\n",
      "17 0 obj\n<<\n/Type /Catalog\n/Pages 3 0 R\n/Outlines 2 0 R\n>>\nendobj\n"};
  std::string expected;
  size_t offsets[9] = {};
  for (size_t i = 0; i < 9; ++i) {
    offsets[i] = old.size() + expected.size();
    expected += objects[i];
  }
  size_t const table = old.size() + expected.size();
  expected += "xref\n0 18\n";
  size_t const old_rows = old.find("0000000000 65535 f \n");
  for (size_t object = 0; object < 11; ++object) {
    std::string row = old.substr(old_rows + 20 * object, 20);
    if (object == 3) row = Row(offsets[7], "00000 n");
    if (object == 10) row.replace(11, 7, "00001 f");
    expected += row;
  }
  for (size_t i = 1; i <= 6; ++i) expected += Row(offsets[i], "00000 n");
  expected += Row(offsets[8], "00000 n");
  expected += "trailer\n<<\n/Size 18\n/Root 17 0 R\n/Info 1 0 R\n>>\nstartxref\n" +
              std::to_string(table) + "\n%%EOF\n";
  EXPECT_EQ(added, expected);
}

TEST_F(AppendToFile, ThirdCallListsTheSecondCatalogAsFree) {
  Save();
  Save();
  std::string const added = Added();
  EXPECT_NE(added.find("/Count 3\n/Kids [ \n7 0 R \n 14 0 R\r 21 0 R\r]\n"), std::string::npos);
  size_t const rows = added.find("xref\n0 25\n") + 10;
  EXPECT_EQ(added.substr(rows + 20 * 17 + 11, 7), "00001 f");
  EXPECT_EQ(added.substr(rows + 20 * 10 + 11, 7), "00001 f");
}

TEST_F(AppendToFile, EveryPageIsFound) {
  for (int page = 0; page < 5; ++page) ASSERT_EQ(Save(), 0u);
  EXPECT_EQ(GetNumberOfPagesInPDFFile(name_.c_str()), 5u);
  test::Block const last(pdf_LoadPDFIntoDIB(name_.c_str(), 4));
  EXPECT_EQ(last.Content().size(), 40u + 2 * 8);
}

TEST_F(AppendToFile, FileThatIsNoDocumentKeepsItsBytes) {
  test::WriteAll(name_, test::ToBytes(std::string(200, 'x')));
  EXPECT_EQ(Save(), 24u);
  EXPECT_EQ(TextOf(name_), std::string(200, 'x'));
}

// Offsets have 32 bits. So long a file can still be read where its table is at its start.
TEST_F(AppendToFile, FileOf4GiBIsError1AndKeepsItsBytes) {
  ASSERT_EQ(Save(), 0u);
  std::string const document = TextOf(name_);
  std::string const tail = document.substr(document.rfind("startxref"));
  uint64_t const size = (uint64_t{1} << 32) + document.size();
  std::filesystem::resize_file(name_, size - tail.size());
  std::ofstream(name_, std::ios::binary | std::ios::app) << tail;
  EXPECT_EQ(Save(), 1u);
  EXPECT_EQ(std::filesystem::file_size(name_), size);
  std::string start(document.size() + 4096, '?');
  std::ifstream(name_, std::ios::binary).read(start.data(), std::ssize(start));
  EXPECT_EQ(start, document + std::string(4096, '\0'));
}

TEST_F(AppendToFile, UpdateWithoutAPageGoesOverTheOldBytes) {
  Save();
  auto const session = std::make_unique<CCreatePDF>();
  ASSERT_EQ(session->CreatePDF(name_.c_str()), 1);
  EXPECT_EQ(session->FinishPDF(), 1);
  EXPECT_EQ(TextOf(name_).substr(0, 16), "3 0 obj\n<<\n/Type");
}

TEST_F(AppendToFile, PageAfterTheTargetWasClosedIsError1) {
  ASSERT_EQ(Save(), 0u);
  std::string const before = TextOf(name_);
  auto const session = std::make_unique<CCreatePDF>();
  ASSERT_EQ(session->CreatePDF(name_.c_str()), 1);
  session->ClosePDFFile();
  EXPECT_EQ(session->SaveDIBAsColorPDFPageW(Page(), test::kNoLibrary, 0, 0), 0);
  EXPECT_EQ(session->PDF_GetLastError(), 1u);
  EXPECT_EQ(TextOf(name_), before);
}

TEST_F(AppendToFile, TitleSetBeforehandGivesWayToThatOfTheFile) {
  auto const first = std::make_unique<CCreatePDF>();
  first->SetTitleA("A");
  ASSERT_EQ(first->CreatePDF(name_.c_str()), 1);
  ASSERT_EQ(first->FinishPDF(), 1);
  std::string const before = TextOf(name_);
  ASSERT_NE(before.find("/Title <FEFF0041>\n"), std::string::npos);
  auto const session = std::make_unique<CCreatePDF>();
  session->SetTitleA("B");
  ASSERT_EQ(session->CreatePDF(name_.c_str()), 1);
  char title[8] = {};
  DWORD size = sizeof title;
  EXPECT_EQ(session->GetTitleA(title, &size), 1);
  EXPECT_STREQ(title, "A");
  EXPECT_EQ(session->SaveDIBAsColorPDFPageW(Page(), test::kNoLibrary, 0, 0), 1);
  EXPECT_EQ(session->FinishPDF(), 1);
  std::string const added = TextOf(name_).substr(before.size());
  EXPECT_EQ(added.find("/Title"), std::string::npos);
  EXPECT_NE(added.find("/Info 1 0 R\n"), std::string::npos);
}

TEST(AppendInMemory, RootHasANewNumberAndNoHeader) {
  MemoryDocument first;
  first.Create();
  first->SaveDIBAsColorPDFPageW(Page(), test::kNoLibrary, 0, 0);
  std::string const old = first.Finish();
  MemoryDocument document;
  ASSERT_EQ(document->CreatePDFInMemory(reinterpret_cast<int64_t>(old.data()),
                                        static_cast<DWORD>(old.size())),
            1);
  EXPECT_EQ(document->GetPagesRootObjectNr(), 11u);
  EXPECT_EQ(document->SaveDIBAsColorPDFPageW(Page(), test::kNoLibrary, 0, 0), 1);
  std::string const text = document.Finish();
  EXPECT_EQ(document->PDF_GetLastError(), 11u);
  EXPECT_NE(text.find("/Parent 11 0 R\n"), std::string::npos);
  // Kept: the offset is counted from where reading ended, so the root goes over old bytes.
  EXPECT_NE(text.find("<<\n/Type /Pages\n/Count 2\n"), std::string::npos);
  EXPECT_NE(text.find("/Pages 11 0 R\n"), std::string::npos);
}

struct RootRow {
  char const* old_text;
  char const* expected;  // null: refused
};

TEST(PagesRootText, OrderOfTheKeysDecidesThePlaces) {
  for (RootRow const& row : {
           RootRow{"3 0 obj<</Kids [5 0 R]/Count 1>>endobj",
                   "<</Kids [5 0 R 8 0 R\r 9 0 R\r]/Count 3>>endobj"},
           RootRow{"3 0 obj<</Count 1/Kids [5 0 R]>>endobj",
                   "<</Count 3/Kids [5 0 R 8 0 R\r 9 0 R\r]>>endobj"},
           // With /Count first the bracket is the body's first one after it.
           RootRow{"3 0 obj<</Count 1/MediaBox [0 0 9 9]/Kids [5 0 R]>>endobj",
                   "<</Count 3/MediaBox [0 0 9 9 8 0 R\r 9 0 R\r]/Kids [5 0 R]>>endobj"},
           RootRow{"3 0 obj<</MediaBox [0 0 9 9]/Count 1/Kids [5 0 R]>>endobj", nullptr},
           RootRow{"3 0 obj<</Kids 7 0 R/Count 1>>endobj", nullptr},
           RootRow{"3 0 obj<</Kids 7 0 R/Count 1/A[1]>>endobj", nullptr},
           RootRow{"3 0 obj<</Kids [5 0 R]>>endobj", nullptr},
           RootRow{"3 0 obj<</Count 1>>endobj", nullptr},
           RootRow{"no header", nullptr},
       }) {
    auto const text = PagesRootWithPages(std::string(row.old_text) + '\0', 3, {8, 9});
    EXPECT_EQ(text.has_value(), row.expected != nullptr) << row.old_text;
    if (text && row.expected != nullptr) {
      EXPECT_EQ(*text, row.expected);
    }
  }
}

}  // namespace
