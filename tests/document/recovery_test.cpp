// The recovery scan: what counts as an object, the sliding window, and the index that a scan gives.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tests/support/open_document.h>
#include <tests/support/xref_document.h>

namespace {

using sorrelin::CXrefParser;
using sorrelin::CXRefStm;
using sorrelin::ObjectId;
using test::OpenDocument;
using test::PdfBuilder;
using test::XrefDocument;
using testing::ElementsAre;
using testing::IsEmpty;

struct TextRow {
  char const* name;
  std::string text;
  int valid;
};
class ObjectText : public testing::TestWithParam<TextRow> {};

TEST_P(ObjectText, IsValidOrNot) {
  std::string const& text = GetParam().text;
  EXPECT_EQ(CXRefStm::IsObjectTextValid(test::ToBytes(text), text.size()), GetParam().valid);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ObjectText,
    testing::Values(TextRow{"Whole", "5 0 obj <</A 1>> endobj", 1},
                    TextRow{"EndobjBehindNul", std::string("5 0 obj \0 endobj", 16), 1},
                    TextRow{"EndobjBeforeObj", "endobj 5 0 obj <</A 1>>", 0},
                    TextRow{"OnlyEndobj", "5 0 endobj", 0},
                    TextRow{"CutBehindTheBracket", "5 0 obj <</A 1>>", 1},
                    TextRow{"ThreeBytesBehindTheBracket", "5 0 obj <</A 1>>\r\n ", 1},
                    TextRow{"FourBytesBehindTheBracket", "5 0 obj <</A 1>>\r\n  ", 0},
                    TextRow{"NeitherKeywordButABracket", "<</A 1>>", 1},
                    TextRow{"NeitherKeywordNorBracket", "abcdefgh", 0},
                    TextRow{"ShorterThanFourBytes", ">", 1}, TextRow{"Empty", "", 0}),
    [](auto const& row) { return row.param.name; });

// `bytes` bytes of a pattern that differs at each position.
std::string Pattern(size_t bytes) {
  std::string text(bytes, '\0');
  for (size_t i = 0; i < bytes; ++i) text[i] = static_cast<char>('a' + (i / 7 + i) % 26);
  return text;
}

TEST(XrefParser, DeliversEveryByteInOrder) {
  for (size_t bytes : {1u, 1999u, 2000u, 2001u, 3999u, 4000u, 4001u, 10000u}) {
    std::string const text = Pattern(bytes);
    XrefDocument document(text);
    CXrefParser parser(document.channel());
    for (DWORD i = 0; i < bytes; ++i) ASSERT_EQ(parser.GetByte(i), text[i]) << bytes << " " << i;
  }
}

TEST(XrefParser, StatesFollowTheReads) {
  XrefDocument document(Pattern(4500));
  CXrefParser parser(document.channel());
  EXPECT_EQ(parser.CurrentState(), CXrefParser::kConstructed);
  parser.GetByte(0);
  EXPECT_EQ(parser.CurrentState(), CXrefParser::kRefilling);
  EXPECT_EQ(parser.ReadPosition(), 2000u);
  parser.GetByte(1);
  EXPECT_EQ(parser.CurrentState(), CXrefParser::kReading);
  parser.GetByte(2000);
  EXPECT_EQ(parser.ReadPosition(), 4000u);
  EXPECT_EQ(XrefProbe::WriteIndex(parser), 0u);
  parser.GetByte(4000);
  EXPECT_EQ(parser.CurrentState(), CXrefParser::kEndOfFile);
  EXPECT_EQ(parser.ReadPosition(), 4500u);
  EXPECT_EQ(XrefProbe::ChunkSize(parser), 500u);
}

TEST(XrefParser, ReachesTwoThousandBytesBack) {
  std::string const text = Pattern(6000);
  XrefDocument document(text);
  CXrefParser parser(document.channel());
  for (DWORD i = 0; i < 3000; ++i) parser.GetByte(i);
  EXPECT_EQ(parser.GetByte(1000), text[1000]);
  EXPECT_EQ(parser.ReadPosition(), 4000u);
}

// A refill that starts at most 24 bytes late is made; a later one is not.
TEST(XrefParser, RefillsUpTo24BytesPastTheWriteIndex) {
  for (auto const& [first, position] : {std::pair{2024u, 4000u}, {2025u, 2000u}}) {
    XrefDocument document(Pattern(6000));
    CXrefParser parser(document.channel());
    parser.GetByte(0);
    parser.GetByte(first);
    EXPECT_EQ(parser.ReadPosition(), position) << first;
  }
}

TEST(XrefParser, BlankAfterAReadFailure) {
  CXrefParser parser(nullptr);
  EXPECT_EQ(parser.GetByte(0), ' ');
  EXPECT_EQ(parser.CurrentState(), CXrefParser::kReadFailure);
}

// What a scan of the content enters: number, offset, generation.
struct Scanned {
  explicit Scanned(std::string const& content) : document("%" + content) {
    document->RebuildByScan();
  }
  uint64_t Offset(DWORD number) {
    auto const& index = document->ObjectIndex();
    return number < index.size() ? index[number].nOffset : 0;
  }
  sorrelin::ObjectExtent Extent(DWORD number, DWORD generation = 0) {
    return *document->Extents().Find(ObjectId{number, generation});
  }
  XrefDocument document;
};

std::string Text(DWORD number, std::string const& body = "x") {
  return std::to_string(number) + " 0 obj\n" + body + "\nendobj\n";
}

TEST(Scan, EntersEachHeader) {
  Scanned scanned("\n" + Text(3) + "7 2 obj x endobj\n");
  EXPECT_EQ(scanned.document->ObjectIndex().size(), 8u);
  EXPECT_EQ(scanned.Offset(3), 2u);
  EXPECT_EQ(scanned.document->ObjectIndex()[3].nType, 1u);
  EXPECT_EQ(scanned.Offset(7), 2 + Text(3).size());
  EXPECT_EQ(scanned.document->ObjectIndex()[7].nGeneration, 2u);
  EXPECT_EQ(scanned.Extent(3).nEnd, scanned.Offset(7));
  EXPECT_EQ(scanned.Offset(5), 0u);
}

TEST(Scan, BoundaryAtTheSectionEndsTheLastObject) {
  XrefDocument document("%\n" + Text(3) + "tail");
  XrefProbe::StartXref(*document) = 20;
  document->RebuildByScan();
  EXPECT_EQ(document->Extents().Find(ObjectId{3, 0})->nEnd, 20u);
}

TEST(Scan, KnownSectionOffsetsAreBoundaries) {
  XrefDocument document("%\n" + Text(3) + "tail");
  XrefProbe::StartXref(*document) = 21;
  XrefProbe::PrevOffsets(*document) = {19, 20};
  document->RebuildByScan();
  EXPECT_EQ(document->Extents().Find(ObjectId{3, 0})->nEnd, 19u);
}

// Kept: the opposite of what the cross-reference says.
TEST(Scan, FirstVersionWinsAndTheSecondIsABoundary) {
  std::string const first = Text(5, "first");
  Scanned scanned("\n" + first + Text(5, "second") + Text(6));
  EXPECT_EQ(scanned.Offset(5), 2u);
  EXPECT_EQ(scanned.Extent(5).nEnd, 2 + first.size());
  EXPECT_EQ(scanned.document->Extents().size(), 2u);
}

TEST(Scan, SecondVersionOfAnotherGenerationIsABoundaryToo) {
  Scanned scanned("\n5 0 obj x endobj\n5 1 obj y endobj\n");
  EXPECT_EQ(scanned.document->ObjectIndex()[5].nGeneration, 0u);
  EXPECT_EQ(scanned.document->Extents().Find(ObjectId{5, 1}), nullptr);
}

TEST(Scan, NumberZeroIsDropped) {
  Scanned scanned("\n0 0 obj x endobj\n");
  EXPECT_THAT(scanned.document->ObjectIndex(), IsEmpty());
  EXPECT_EQ(scanned.document->Extents().size(), 0u);
}

struct HeaderRow {
  char const* name;
  std::string text;
  uint64_t offset;  // of object 5; 0: not found
};
class ScannedHeader : public testing::TestWithParam<HeaderRow> {};

TEST_P(ScannedHeader, NeedsOneBlankInFrontOfTheKeyword) {
  EXPECT_EQ(Scanned(GetParam().text).Offset(5), GetParam().offset);
}

INSTANTIATE_TEST_SUITE_P(Rows, ScannedHeader,
                         testing::Values(HeaderRow{"Plain", "\n5 0 obj", 2},
                                         HeaderRow{"SeveralBlanks", "\n5  0  obj", 2},
                                         HeaderRow{"LineEnd", "\n5 0\nobj", 0},
                                         HeaderRow{"Tab", "\n5 0\tobj", 0},
                                         HeaderRow{"NoBlank", "\n5 0obj", 0},
                                         HeaderRow{"LineEndBetween", "\n5\n0 obj", 0},
                                         HeaderRow{"LetterInFront", "x5 0 obj", 2},
                                         HeaderRow{"BlanksInFront", "x   5 0 obj", 2},
                                         HeaderRow{"NoGeneration", "\n5 obj", 2},
                                         HeaderRow{"ThreeNumbers", "\n5 0 7 obj", 2},
                                         HeaderRow{"BlankBeforeTheBlank", " 5 0  obj", 1},
                                         HeaderRow{"BehindABrokenKeyword", " o obob 5 0 obj", 8},
                                         HeaderRow{"BehindAWrongKeyword", "\n5 0 oobj 5 0 obj", 10},
                                         HeaderRow{"LongerKeyword", "\n5 0 objx", 2}),
                         [](auto const& row) { return row.param.name; });

TEST(Scan, FileThatBeginsWithDigitsLosesItsFirstByte) {
  XrefDocument document("15 0 obj");
  document->RebuildByScan();
  ASSERT_EQ(document->ObjectIndex().size(), 6u);
  EXPECT_EQ(document->ObjectIndex()[5].nOffset, 1u);
}

TEST(Scan, HeaderAcrossReadsIsFound) {
  for (size_t before = 1980; before < 2010; ++before) {
    for (size_t const chunks : {size_t{0}, size_t{2000}, size_t{4000}}) {
      std::string const filling(before + chunks, 'x');
      EXPECT_EQ(Scanned(filling + "\n5 0 obj").Offset(5), filling.size() + 2) << before;
    }
  }
}

// Kept: after the end of the file the ring shows old bytes again, 4000 positions on, and 2000 of
// these are looked at. A header in them is a boundary for its number.
TEST(Scan, OldBytesBehindTheEndAreScannedToo) {
  std::string text(3600, 'x');
  text.replace(1500, 9, "\n5 0 obj\n");
  Scanned echo(text);
  EXPECT_EQ(echo.Offset(5), 1502u);
  EXPECT_EQ(echo.Extent(5).nEnd, 5502u);
}

TEST(Scan, OldBytesTwoThousandBehindTheEndAreNot) {
  std::string text(3000, 'x');
  text.replace(1500, 9, "\n5 0 obj\n");
  Scanned no_echo(text);
  EXPECT_EQ(no_echo.Offset(5), 1502u);
  EXPECT_EQ(no_echo.Extent(5).nEnd, 0u);
}

// Blanks and digits before the keyword may be more than the ring holds.
TEST(Scan, FirstTwoNumbersOfALongHeaderCount) {
  for (size_t const bytes : {1000u, 1900u, 2000u, 3970u, 4000u, 9000u, 20000u}) {
    Scanned blanks("\n5 3 " + std::string(bytes, ' ') + "obj x endobj\n" + Text(6));
    EXPECT_EQ(blanks.Offset(5), 2u) << bytes;
    EXPECT_EQ(blanks.document->ObjectIndex()[5].nGeneration, 3u) << bytes;
    EXPECT_EQ(blanks.Extent(5, 3).nEnd, blanks.Offset(6)) << bytes;
    Scanned digits("\n5 3 " + std::string(bytes, '7') + " obj x endobj\n");
    EXPECT_EQ(digits.Offset(5), 2u) << bytes;
  }
}

TEST(Scan, NumberBeyondTheObjectTableIsOnlyABoundary) {
  Scanned scanned("\n" + Text(5) + Text(90050) + Text(2147483647));
  EXPECT_EQ(scanned.document->ObjectIndex().size(), 6u);
  EXPECT_EQ(scanned.Extent(5).nEnd, 2 + Text(5).size());
}

TEST(Scan, ReplacesWhatStoodInTheIndex) {
  XrefDocument document("%\n" + Text(3));
  document->ObjectIndex().resize(100);
  document->Extents()[{50, 0}] = {1, 2};
  XrefProbe::Marks(*document).push_back({7, nullptr});
  document->RebuildByScan();
  EXPECT_EQ(document->ObjectIndex().size(), 4u);
  EXPECT_EQ(document->Extents().size(), 1u);
  EXPECT_EQ(XrefProbe::Marks(*document).size(), 2u);
  EXPECT_TRUE(document->IsRebuilt());
}

// A document of the stream route whose every offset but those of catalog and pages root is wrong.
PdfBuilder WrongOffsets(std::vector<DWORD> const& right) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 2);
  for (DWORD number = 1; number <= 4; ++number) {
    if (std::count(right.begin(), right.end(), number) == 0) {
      pdf.Row(number, {1, pdf.OffsetOf(number) + 30, 0});
    }
  }
  pdf.XrefStream(5);
  return pdf;
}

TEST(Recovery, DocumentWithWrongOffsetsOpens) {
  for (auto const& right : {std::vector<DWORD>{1, 2}, {1}, {}}) {
    OpenDocument document(WrongOffsets(right));
    EXPECT_EQ(document.Build(), 6u) << right.size();
    EXPECT_EQ(document->GetNumberOfPages(), 2u);
    EXPECT_THAT(document.Load(4).value_or(""), testing::StartsWith("4 0 obj\n<</Type/Page"));
  }
}

TEST(Recovery, SessionTableStaysAsItWas) {
  PdfBuilder const pdf = WrongOffsets({1, 2});
  OpenDocument document(pdf);
  EXPECT_NE(document.Build(), 0u);
  document.Load(3);
  EXPECT_TRUE(document.reader().objects.index()->IsRebuilt());
  EXPECT_EQ(document.row(3).nOffset, pdf.OffsetOf(3) + 30);
}

TEST(Recovery, IsMadeOnceAndThenTheTableServes) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  // An object that no scan makes valid.
  pdf.Object(4, "x");
  size_t const broken = pdf.Size();
  pdf.Row(6, {1, broken, 0}).Text("6 0 obj no end of it " + std::string(20, '.') + "\n");
  pdf.XrefStream(5);
  OpenDocument document(pdf);
  EXPECT_NE(document.Build(), 0u);
  EXPECT_FALSE(document.reader().objects.index()->IsRebuilt());
  EXPECT_FALSE(document.Fetch(6).valid);
  EXPECT_TRUE(document.reader().objects.index()->IsRebuilt());
  EXPECT_FALSE(document.Fetch(6).valid);
  EXPECT_THAT(document.Load(6).value_or(""), testing::StartsWith("6 0 obj no end"));
}

}  // namespace
