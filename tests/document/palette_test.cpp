// The colour table of an indexed image.
#include <gtest/gtest.h>
#include <tests/support/page_document.h>
#include <tests/support/session_probe.h>

#include <string>

namespace test {
namespace {

class LoadPalette : public testing::Test {
 protected:
  // `build` adds object 6, the lookup, to a document.
  template <typename Build>
  Bytes Entries(DWORD bits, DWORD high, Build build, std::string const& eol = "\n") {
    PdfBuilder pdf = OnePage{.eol = eol}.Build();
    build(pdf);
    PageDocument document(pdf);
    Block const palette(document->LoadPalette(bits, high, 6));
    error_ = document->PDF_GetLastError();
    black_is_1_ = SessionProbe::BlackIs1(*document);
    if (palette.get() == nullptr) return {};
    EXPECT_EQ(TakeLocks(palette), 0);
    return palette.Content();
  }

  DWORD error_ = 0;
  DWORD black_is_1_ = 0;
};

TEST_F(LoadPalette, TriplesBecomeBlueGreenRedAndZero) {
  EXPECT_EQ(Entries(8, 1, [](PdfBuilder& pdf) { pdf.Stream(6, "", "abcdef"); }),
            (Bytes{'c', 'b', 'a', 0, 'f', 'e', 'd', 0}));
}

TEST_F(LoadPalette, BlockHasAnEntryMoreThanTheHighValue) {
  EXPECT_EQ(
      Entries(8, 99, [](PdfBuilder& pdf) { pdf.Stream(6, "", std::string(300, 'x')); }).size(),
      400u);
}

TEST_F(LoadPalette, DataThatBeginWithABlankKeepIt) {
  EXPECT_EQ(Entries(8, 0, [](PdfBuilder& pdf) { pdf.Stream(6, "", " [a"); }),
            (Bytes{'a', '[', ' ', 0}));
}

// Kept: one byte is taken for the line end, so that a CR LF file has its LF as the first red.
TEST_F(LoadPalette, TableOfAFileWithCrLfIsShiftedByAByte) {
  EXPECT_EQ(Entries(
                8, 0, [](PdfBuilder& pdf) { pdf.Stream(6, "", "abc"); }, "\r\n"),
            (Bytes{'b', 'a', '\n', 0}));
}

TEST_F(LoadPalette, LengthMayBeAReference) {
  EXPECT_EQ(Entries(8, 0,
                    [](PdfBuilder& pdf) {
                      pdf.Stream(6, "", "abc", "7 0 R");
                      pdf.Object(7, "3");
                    }),
            (Bytes{'c', 'b', 'a', 0}));
}

TEST_F(LoadPalette, LengthIsTestedButNotUsed) {
  EXPECT_EQ(Entries(8, 1, [](PdfBuilder& pdf) { pdf.Stream(6, "", "abcdef", "1"); }),
            (Bytes{'c', 'b', 'a', 0, 'f', 'e', 'd', 0}));
}

// "\nendstream\nendobj" and the byte after it, which is set to 0, still belong to the object.
TEST_F(LoadPalette, EntriesBehindTheObjectAreZero) {
  Bytes const entries = Entries(8, 9, [](PdfBuilder& pdf) { pdf.Stream(6, "", "abc"); });
  EXPECT_EQ(Bytes(entries.begin(), entries.begin() + 8),
            (Bytes{'c', 'b', 'a', 0, 'n', 'e', '\n', 0}));
  EXPECT_EQ(Bytes(entries.begin() + 24, entries.begin() + 28), (Bytes{0, 'j', 'b', 0}));
  EXPECT_EQ(Bytes(entries.begin() + 28, entries.end()), Bytes(12));
}

TEST_F(LoadPalette, FailuresGiveNullWithoutACode) {
  EXPECT_TRUE(Entries(8, 0, [](PdfBuilder& pdf) { pdf.Stream(6, "", "abc", "0"); }).empty());
  EXPECT_EQ(error_, 0u);
  EXPECT_TRUE(Entries(8, 0, [](PdfBuilder& pdf) { pdf.Stream(6, "", "abc", "(3)"); }).empty());
  EXPECT_EQ(error_, 0u);
  EXPECT_TRUE(Entries(8, 0, [](PdfBuilder& pdf) { pdf.Object(6, "<</Length 3 >>"); }).empty());
  EXPECT_EQ(error_, 0u);
}

TEST_F(LoadPalette, MissingObjectGivesNull) {
  PdfBuilder pdf = OnePage{}.Build();
  PageDocument document(pdf);
  EXPECT_EQ(document->LoadPalette(8, 255, 0), nullptr);
  EXPECT_EQ(document->PDF_GetLastError(), 0u);
}

TEST_F(LoadPalette, TablePast4GiBGivesNull) {
  for (DWORD const high : {0x40000000u, 0xFFFFFFFFu}) {
    EXPECT_TRUE(Entries(8, high, [](PdfBuilder& pdf) { pdf.Stream(6, "", "abc"); }).empty());
    EXPECT_EQ(error_, 0u);
  }
}

TEST_F(LoadPalette, OfOneBitTellsWhetherTheFirstBlueIsNotZero) {
  auto const white_first = [](PdfBuilder& pdf) { pdf.Stream(6, "", "__\x01___"); };
  auto const black_first = [](PdfBuilder& pdf) { pdf.Stream(6, "", std::string("__\0___", 6)); };
  Entries(1, 1, white_first);
  EXPECT_EQ(black_is_1_, 1u);
  Entries(1, 1, black_first);
  EXPECT_EQ(black_is_1_, 0u);
  Entries(8, 1, white_first);
  EXPECT_EQ(black_is_1_, 0u);  // not of one bit
  Entries(1, 0, white_first);
  EXPECT_EQ(black_is_1_, 0u);  // a single colour says nothing
}

TEST_F(LoadPalette, FailureLeavesTheColourOrder) {
  PdfBuilder pdf = OnePage{}.Build();
  pdf.Stream(6, "", "__\x01___", "0");
  pdf.Object(7, "<</Length 6 >>");
  PageDocument document(pdf);
  SessionProbe::BlackIs1(*document) = 77;
  for (DWORD const object : {0u, 6u, 7u}) {
    EXPECT_EQ(document->LoadPalette(1, 1, object), nullptr) << object;
    EXPECT_EQ(SessionProbe::BlackIs1(*document), 77u) << object;
  }
}

}  // namespace
}  // namespace test
