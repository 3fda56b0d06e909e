// Trailers of the classic route, and the chain of sections.
#include <gtest/gtest.h>
#include <tests/support/open_document.h>

#include <algorithm>
#include <cstring>

namespace {

using test::OpenDocument;
using test::PdfBuilder;

// A trailer as the only content, read from its start.
struct Trailer {
  explicit Trailer(std::string const& text) : document(test::ToBytes(text)) {
    std::strcpy(SessionProbe::TrailerId(*document), "old");
    std::strcpy(SessionProbe::TrailerEncrypt(*document), "old");
    result = document->BuildObjectListFromTrailer(&prev);
  }
  std::string Id() { return SessionProbe::TrailerId(*document); }
  std::string Encrypt() { return SessionProbe::TrailerEncrypt(*document); }
  OpenDocument document;
  DWORD prev = 0;
  DWORD result;
};

std::string Full(std::string const& keys) {
  return "trailer\n<< /Size 9 /Root 3 1 R " + keys + " >>\nstartxref\n0\n%%EOF\n";
}

TEST(ClassicTrailer, ReadsSizeRootInfoAndPrev) {
  Trailer trailer(Full("/Info 4 2 R /Prev 1234"));
  EXPECT_EQ(trailer.result, 1u);
  EXPECT_EQ(trailer.prev, 1234u);
  EXPECT_EQ(SessionProbe::TrailerSize(*trailer.document), 9u);
  EXPECT_EQ(SessionProbe::Catalog(*trailer.document), 3u);
  EXPECT_EQ(SessionProbe::CatalogGeneration(*trailer.document), 1u);
  EXPECT_EQ(SessionProbe::Info(*trailer.document), 4u);
  EXPECT_EQ(SessionProbe::InfoGeneration(*trailer.document), 2u);
}

// Kept: updates write the pair back.
TEST(ClassicTrailer, WithoutInfoTakesRootForIt) {
  Trailer trailer(Full(""));
  EXPECT_EQ(SessionProbe::Info(*trailer.document), 3u);
  EXPECT_EQ(SessionProbe::InfoGeneration(*trailer.document), 1u);
}

TEST(ClassicTrailer, ThatLacksRootLeavesInfoCleared) {
  OpenDocument document(test::ToBytes("trailer << /Size 9 /Info 4 2 R >> "));
  SessionProbe::Info(*document) = 7;
  SessionProbe::InfoGeneration(*document) = 7;
  DWORD prev = 0;
  EXPECT_EQ(document->BuildObjectListFromTrailer(&prev), 0u);
  EXPECT_EQ(SessionProbe::Info(*document), 0u);
  EXPECT_EQ(SessionProbe::InfoGeneration(*document), 0u);
}

TEST(ClassicTrailer, WithoutPrevLeavesTheCallersValue) {
  OpenDocument document(test::ToBytes(Full("")));
  DWORD prev = 77;
  EXPECT_EQ(document->BuildObjectListFromTrailer(&prev), 1u);
  EXPECT_EQ(prev, 77u);
}

TEST(ClassicTrailer, PrevByReferenceIsTheObjectNumber) {
  EXPECT_EQ(Trailer(Full("/Prev 12 0 R")).prev, 12u);
}

TEST(ClassicTrailer, WithoutSizeGivesPrevAndLeavesTheCatalog) {
  OpenDocument document(test::ToBytes("trailer << /Prev 5 /Root 3 0 R >> "));
  SessionProbe::Catalog(*document) = 7;
  DWORD prev = 0;
  EXPECT_EQ(document->BuildObjectListFromTrailer(&prev), 0u);
  EXPECT_EQ(document.error(), 1u);
  EXPECT_EQ(prev, 5u);
  EXPECT_EQ(SessionProbe::Catalog(*document), 7u);
}

TEST(ClassicTrailer, WithoutRootGivesSize) {
  OpenDocument document(test::ToBytes("trailer << /Size 9 >> "));
  DWORD prev = 0;
  EXPECT_EQ(document->BuildObjectListFromTrailer(&prev), 0u);
  EXPECT_EQ(SessionProbe::TrailerSize(*document), 9u);
}

// Kept: the scan runs on past the dictionary, to the number after startxref.
TEST(ClassicTrailer, InfoOfOneNumberTakesTheNextNumberForItsGeneration) {
  Trailer trailer("trailer\n<< /Size 9 /Root 3 1 R /Info 4 >>\nstartxref\n1234\n%%EOF\n");
  EXPECT_EQ(trailer.result, 1u);
  EXPECT_EQ(SessionProbe::Info(*trailer.document), 4u);
  EXPECT_EQ(SessionProbe::InfoGeneration(*trailer.document), 1234u);
}

// Kept: the number that was read stays, beside the generation of Root.
TEST(ClassicTrailer, InfoOfOneNumberAtTheEndKeepsTheGenerationOfRoot) {
  Trailer trailer("trailer << /Size 9 /Root 3 1 R /Info 4 >> ");
  EXPECT_EQ(trailer.result, 1u);
  EXPECT_EQ(SessionProbe::Info(*trailer.document), 4u);
  EXPECT_EQ(SessionProbe::InfoGeneration(*trailer.document), 1u);
}

struct TrailerTextRow {
  char const* name;
  std::string keys;
  DWORD result;
  std::string id;
  std::string encrypt;
};
class TrailerText : public testing::TestWithParam<TrailerTextRow> {};

TEST_P(TrailerText, IsCutAsUpdatesWriteItBack) {
  Trailer trailer(Full(GetParam().keys));
  EXPECT_EQ(trailer.result, GetParam().result);
  EXPECT_EQ(trailer.document.error(), 0u);
  EXPECT_EQ(trailer.Id(), GetParam().id);
  EXPECT_EQ(trailer.Encrypt(), GetParam().encrypt);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, TrailerText,
    testing::Values(TrailerTextRow{"Absent", "", 1, "", ""},
                    TrailerTextRow{"IdWithBlank", "/ID [<a> <b>]", 1, "/ID [<a>", ""},
                    TrailerTextRow{"IdWithoutBlank", "/ID [<a><b>]", 1, "old", ""},
                    TrailerTextRow{"EncryptByReference", "/Encrypt 5 0 R", 1, "", "/Encrypt 5"},
                    TrailerTextRow{"EncryptDictionary", "/Encrypt <</V 1 /R 2>> ", 1, "",
                                   "/Encrypt <</V 1 /R 2>>"},
                    TrailerTextRow{"EncryptTooLong",
                                   "/Encrypt <</O (" + std::string(120, 'x') + ")>> ", 0, "",
                                   "old"},
                    TrailerTextRow{"EncryptInALongerName", "/Encrypted 1", 1, "", "/Encrypted"},
                    TrailerTextRow{"EncryptWithoutSolidus", "/A (Encrypt)", 0, "", "old"}),
    [](auto const& row) { return row.param.name; });

TEST(ClassicTrailer, EncryptTextTakesAllOfThe128Bytes) {
  // 9 + 118 characters and the terminator.
  std::string const value = "<" + std::string(116, 'x') + ">";
  EXPECT_EQ(Trailer(Full("/Encrypt " + value.substr(1, 116) + "yy ")).Encrypt().size(), 127u);
  EXPECT_EQ(Trailer(Full("/Encrypt " + value.substr(1, 116) + "yyy ")).result, 0u);
}

struct TrailerErrorRow {
  char const* name;
  std::string text;
};
class TrailerError : public testing::TestWithParam<TrailerErrorRow> {};

TEST_P(TrailerError, IsOne) {
  Trailer trailer(GetParam().text);
  EXPECT_EQ(trailer.result, 0u);
  EXPECT_EQ(trailer.document.error(), 1u);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, TrailerError,
    testing::Values(TrailerErrorRow{"NoSize", "trailer << /Root 3 0 R >> "},
                    TrailerErrorRow{"NoRoot", "trailer << /Size 9 >> "},
                    TrailerErrorRow{"RootWithOneNumber", "trailer << /Size 9 /Root 3 >> "},
                    TrailerErrorRow{
                        "RootBehindThe300thByte",
                        "trailer << /Size 9 " + std::string(290, ' ') + "/Root 3 0 R >> "}),
    [](auto const& row) { return row.param.name; });

// The blank after a number ends it, and that of the second one is byte 300 or 301.
TEST(ClassicTrailer, ThreeHundredBytesAreLookedAt) {
  std::string const front = "trailer << /Prev 5 /Size 9 ";
  std::string const root = "/Root 3 1 ";
  std::string const blanks(300 - front.size() - root.size(), ' ');
  std::string const behind = "R /Info 4 2 R >> ";
  Trailer fits(front + blanks + root + behind);
  EXPECT_EQ(fits.result, 1u);
  EXPECT_EQ(SessionProbe::Catalog(*fits.document), 3u);
  EXPECT_EQ(SessionProbe::Info(*fits.document), 3u);
  EXPECT_EQ(Trailer(front + " " + blanks + root + behind).result, 0u);
}

TEST(ClassicTrailer, NothingToReadIsErrorOne) {
  for (auto const target : {test::Target::kMemory, test::Target::kFile}) {
    OpenDocument document(test::ToBytes("x"), target);
    document.Seek(1);
    DWORD prev = 5;
    EXPECT_EQ(document->BuildObjectListFromTrailer(&prev), 0u);
    EXPECT_EQ(document.error(), 1u);
    document->PDF_SetLastError(0);
    EXPECT_EQ(document->ReadPrevFlag(&prev), 0);
    EXPECT_EQ(document.error(), 1u);
    EXPECT_EQ(prev, 5u);
  }
}

struct PrevRow {
  char const* name;
  std::string keys;
  DWORD entered;
  DWORD left;
};
class PrevFlag : public testing::TestWithParam<PrevRow> {};

TEST_P(PrevFlag, GivesTheNextSectionOrTheEnd) {
  OpenDocument document(test::ToBytes(Full(GetParam().keys)));
  DWORD prev = GetParam().entered;
  EXPECT_EQ(document->ReadPrevFlag(&prev), 1);
  EXPECT_EQ(prev, GetParam().left);
  EXPECT_EQ(document.error(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Rows, PrevFlag,
                         testing::Values(PrevRow{"Number", "/Prev 500", 900, 500},
                                         PrevRow{"Absent", "", 900, 0},
                                         PrevRow{"ItsOwnOffset", "/Prev 900", 900, 0},
                                         PrevRow{"NoCleanNumber", "/Prev -500", 900, 0}),
                         [](auto const& row) { return row.param.name; });

TEST(PrevFlag, ByReferenceIsResolved) {
  PdfBuilder pdf;
  pdf.Object(6, "4711");
  std::string const text = pdf.Content() + Full("/Prev 6 0 R");
  OpenDocument document(test::ToBytes(text));
  SessionProbe::Row(*document, 6) = {static_cast<DWORD>(pdf.OffsetOf(6)), 0, 1};
  document.Seek(static_cast<DWORD>(pdf.Size()));
  DWORD prev = 900;
  EXPECT_EQ(document->ReadPrevFlag(&prev), 1);
  EXPECT_EQ(prev, 4711u);
}

TEST(PrevFlag, ReferenceThatCannotBeResolvedFails) {
  OpenDocument document(test::ToBytes(Full("/Prev 0 0 R")));
  DWORD prev = 900;
  EXPECT_EQ(document->ReadPrevFlag(&prev), 0);
}

// Three versions of the page tree: the newest section wins for each object.
TEST(ClassicChain, NewestSectionWins) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Object(4, "first");
  pdf.Object(5, "first");
  pdf.Classic();
  pdf.Object(4, "second");
  pdf.Classic({.prev = pdf.LastSection()});
  pdf.Object(5, "third");
  pdf.Classic({.prev = pdf.LastSection()});
  OpenDocument document(pdf);
  EXPECT_EQ(document.Build(), 6u);
  EXPECT_EQ(document.Load(4), "4 0 obj\nsecond\nendobj\n");
  EXPECT_EQ(document.Load(5), "5 0 obj\nthird\nendobj\n");
  EXPECT_EQ(SessionProbe::MaxSectionOffset(*document), pdf.LastSection());
}

TEST(ClassicChain, OnlyTheNewestTrailerCounts) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Classic({.keys = "/Root 3 0 R /Info 2 0 R /ID [<a> <b>] "});
  pdf.Object(4, "x");
  pdf.Classic({.prev = pdf.LastSection(), .keys = "/Root 1 0 R /Info 4 0 R"});
  OpenDocument document(pdf);
  EXPECT_NE(document.Build(), 0u);
  EXPECT_EQ(SessionProbe::Catalog(*document), 1u);
  EXPECT_EQ(SessionProbe::Info(*document), 4u);
  EXPECT_STREQ(SessionProbe::TrailerId(*document), "");
}

// Kept: an entry of offset 0 hides nothing, so the older object comes back.
TEST(ClassicChain, FreeEntryOfANewerSectionDoesNotHideAnObject) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Object(4, "kept");
  pdf.Classic();
  pdf.Row(4, {0, 0, 1});
  pdf.Classic({.prev = pdf.LastSection()});
  OpenDocument document(pdf);
  EXPECT_NE(document.Build(), 0u);
  EXPECT_EQ(document.Load(4), "4 0 obj\nkept\nendobj\n");
}

TEST(ClassicChain, HybridSectionIsNotFollowed) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  size_t const stream = pdf.Size();
  pdf.Object(9, "<</Type/XRef /Size 10>>");
  pdf.NoRow(9);
  pdf.Classic({.keys = "/Root 1 0 R /XRefStm " + std::to_string(stream)});
  OpenDocument document(pdf);
  EXPECT_EQ(document.Build(), 4u);
  EXPECT_FALSE(document.reader().objects.IsUsed());
  EXPECT_EQ(document.row(9).nOffset, 0u);
}

// A document whose sections are at fixed offsets, so that /Prev can point forward.
std::string CycleOf(int sections) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  std::string text = pdf.Content();
  size_t const first = text.size();
  size_t const bytes = 200;
  for (int i = 0; i < sections; ++i) {
    size_t const next = first + static_cast<size_t>((i + 1) % sections) * bytes;
    std::string section = "xref\n0 4\n";
    for (DWORD number = 0; number < 4; ++number) {
      char entry[32];
      std::snprintf(entry, sizeof entry, "%010zu 00000 n \n",
                    number == 0 ? size_t{0} : pdf.OffsetOf(number));
      section += entry;
    }
    section += "trailer\n<</Size 4 /Root 1 0 R /Prev " + std::to_string(next) + " >>\n";
    section.resize(bytes, ' ');
    text += section;
  }
  return text + "startxref\n" + std::to_string(first) + "\n%%EOF\n";
}

TEST(ClassicChain, EndsWhereItComesBack) {
  for (int sections = 1; sections <= 4; ++sections) {
    OpenDocument document(test::ToBytes(CycleOf(sections)));
    EXPECT_EQ(document.Build(), 4u) << sections;
    EXPECT_EQ(document.error(), 0u) << sections;
  }
}

TEST(ClassicChain, PrevThatLeadsNowhereFails) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Classic({.prev = 1000000});
  OpenDocument document(pdf);
  EXPECT_EQ(document.Build(), 0u);
  EXPECT_EQ(document.error(), 1u);
}

}  // namespace
