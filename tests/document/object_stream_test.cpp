// Objects out of object streams.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/document/cxref_stm.h>
#include <tests/support/open_document.h>
#include <tests/support/xref_probe.h>

namespace {

using test::ObjectStreamOptions;
using test::OpenDocument;
using test::PdfBuilder;
using testing::ElementsAre;

using Objects = std::vector<std::pair<DWORD, std::string>>;

// A document with one object stream, number 10.
PdfBuilder With(Objects const& objects, ObjectStreamOptions const& options = {}) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.ObjectStream(10, objects, options);
  pdf.XrefStream(11);
  return pdf;
}

// What a fetch of the object gives; empty if it is not valid.
std::string Served(PdfBuilder const& pdf, DWORD number) {
  OpenDocument document(pdf);
  EXPECT_NE(document.Build(), 0u);
  auto const fetched = document.Fetch(number);
  return fetched.valid ? fetched.text : "";
}

// The text as a fetch dresses it up, the terminator included.
std::string Dressed(DWORD number, std::string const& body) {
  return std::to_string(number) + " 0 obj\n" + body + "\nendobj" + std::string(1, '\0');
}

TEST(ObjectStream, ServesEachObject) {
  PdfBuilder const pdf = With({{4, "<</A 1>>"}, {5, "[1 2]"}, {6, "7"}});
  EXPECT_EQ(Served(pdf, 4), Dressed(4, "<</A 1>> "));
  EXPECT_EQ(Served(pdf, 5), Dressed(5, "[1 2] "));
  EXPECT_EQ(Served(pdf, 6), Dressed(6, "7 "));
}

TEST(ObjectStream, ObjectsLoadLikeThoseOfTheFile) {
  OpenDocument document(With({{4, "<</A 1>>"}}));
  ASSERT_NE(document.Build(), 0u);
  EXPECT_EQ(document.Load(4), Dressed(4, "<</A 1>> "));
  EXPECT_EQ(document->GetObjectSize(4), Dressed(4, "<</A 1>> ").size());
}

TEST(ObjectStream, PageTreeMayStandInOne) {
  PdfBuilder pdf("%PDF-1.5");
  pdf.ObjectStream(
      10, {{1, "<</Pages 2 0 R >>"}, {2, "<</Kids [3 0 R] /Count 1 >>"}, {3, "<</Type/Page >>"}});
  pdf.XrefStream(11);
  OpenDocument document(pdf);
  EXPECT_EQ(document.Build(), 12u);
  EXPECT_EQ(document->GetNumberOfPages(), 1u);
}

TEST(ObjectStream, NumberIsTheOneAskedForAndGenerationZero) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.ObjectStream(10, {{4, "x"}});
  pdf.Row(4, {2, 10, 77});  // the index in the stream plays no part
  pdf.XrefStream(11);
  EXPECT_EQ(Served(pdf, 4), Dressed(4, "x "));
}

TEST(ObjectStream, NulBytesBecomeBlanks) {
  EXPECT_EQ(Served(With({{4, std::string("a\0b", 3)}}), 4), Dressed(4, "a b "));
}

TEST(ObjectStream, ObjectThatTheHeaderDoesNotListIsNotServed) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.ObjectStream(10, {{4, "x"}});
  pdf.Row(5, {2, 10, 1});
  pdf.XrefStream(11);
  EXPECT_EQ(Served(pdf, 5), "");
}

struct HeaderRow {
  char const* name;
  std::string header;
  std::optional<std::string> text4;  // of object 4, if it is served
};
class Header : public testing::TestWithParam<HeaderRow> {};

// The objects' part is "abcdef ".
TEST_P(Header, IsPairsOfTokens) {
  std::string const expected = GetParam().text4 ? Dressed(4, *GetParam().text4) : "";
  EXPECT_EQ(Served(With({{4, "abcdef"}}, {.header = GetParam().header}), 4), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Header,
    testing::Values(HeaderRow{"Blank", "4 0 ", "abcdef "}, HeaderRow{"Lf", "4\n0\n", "abcdef "},
                    HeaderRow{"CrLf", "4 0\r\n5 2\r\n", "ab"},
                    HeaderRow{"LoneCrRunsTogether", "3 0\r4 1 ", std::nullopt},
                    HeaderRow{"RunsOfSeparators", "  4 \n 0  ", "abcdef "},
                    HeaderRow{"OddTokenIsDropped", "4 0 5 ", "abcdef "},
                    HeaderRow{"NextOffsetEndsTheObject", "4 1 5 3 ", "bc"},
                    HeaderRow{"OrderIsByOffset", "5 3 4 1 ", "bc"},
                    HeaderRow{"ListedTwiceServesTheLowerOffset", "4 3 4 1 ", "bc"},
                    HeaderRow{"RepeatedOffsetKeepsTheLaterNumber", "4 1 5 1 ", std::nullopt},
                    HeaderRow{"RepeatedOffsetForTheLaterNumber", "5 1 4 1 ", "bcdef "},
                    HeaderRow{"TextIsZero", "4 x ", "abcdef "},
                    HeaderRow{"OffsetBehindTheData", "4 100 ", ""},
                    // From offset 3 to 100 are 97 bytes, of which the data hold "def ".
                    HeaderRow{"NextOffsetBehindTheData", "4 3 5 100 ",
                              "def " + std::string(93, ' ')},
                    HeaderRow{"BothOffsetsBehindTheData", "4 100 5 105 ", std::string(5, ' ')},
                    HeaderRow{"NextOffsetBeyondAnyWork", "4 3 5 4000000000 ", std::nullopt},
                    HeaderRow{"NegativeOffset", "4 -1 ", ""}, HeaderRow{"None", "", std::nullopt}),
    [](auto const& row) { return row.param.name; });

TEST(ObjectStream, FirstBehindTheDataLeavesEmptyObjects) {
  EXPECT_EQ(Served(With({{4, "abc"}}, {.first = 1000}), 4), Dressed(4, ""));
}

// More pairs than the object table has rows, the last of them for object 4.
TEST(ObjectStream, HeaderMayHaveAnyNumberOfPairs) {
  std::string header;
  for (int i = 0; i < 90060; ++i) header += "5 " + std::to_string(i) + " ";
  EXPECT_EQ(Served(With({{4, "abc"}}, {.header = header + "4 0 "}), 4), Dressed(4, "a"));
}

TEST(ObjectStream, CountPlaysNoPart) {
  OpenDocument document(With({{4, "a"}, {5, "b"}}, {.stream = {.keys = "/N 1"}}));
  ASSERT_NE(document.Build(), 0u);
  EXPECT_TRUE(document.Fetch(5).valid);
}

TEST(ObjectStream, DictionaryIsReadInOrderAndEndsAtTheFirstMissingKey) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  std::string const packed = test::Deflate("4 0 abc");
  pdf.Stream(10, "/N 1 /Filter /FlateDecode ", packed);  // no /First
  pdf.Row(4, {2, 10, 0});
  pdf.XrefStream(11);
  EXPECT_EQ(Served(pdf, 4), "");
}

TEST(ObjectStream, ExtendsIsStoredAndNotFollowed) {
  PdfBuilder const pdf = With({{4, "a"}}, {.stream = {.keys = "/Extends 8 2 R"}});
  OpenDocument document(pdf);
  ASSERT_NE(document.Build(), 0u);
  EXPECT_TRUE(document.Fetch(4).valid);
  auto const& reader = XrefProbe::Stream(*document.reader().objects.streams(), pdf.OffsetOf(10));
  EXPECT_EQ(XrefProbe::Extends(reader), (std::pair<DWORD, DWORD>{8, 2}));
  EXPECT_EQ(XrefProbe::ObjectCount(reader), 1u);
  EXPECT_THAT(XrefProbe::FilterNames(reader), ElementsAre("/FlateDecode"));
}

// Kept: the second pass inflates what the first one gave, taken to be as long as the stream.
TEST(ObjectStream, TwoFiltersAreInflatedTwice) {
  ObjectStreamOptions options{.stream = {.filter = "[/FlateDecode /Other]", .passes = 2}};
  EXPECT_EQ(Served(With({{4, "abc"}}, options), 4), Dressed(4, "abc "));
}

TEST(ObjectStream, TwoFiltersOverDataPackedOnceAreUnreadable) {
  EXPECT_EQ(Served(With({{4, "abc"}}, {.stream = {.filter = "[/FlateDecode /Other]"}}), 4), "");
}

TEST(ObjectStream, WithoutFilterIsUnreadable) {
  EXPECT_EQ(Served(With({{4, "abc"}}, {.stream = {.filter = ""}}), 4), "");
}

TEST(ObjectStream, WrongLengthIsUnreadable) {
  EXPECT_EQ(Served(With({{4, "abc"}}, {.stream = {.length = 5}}), 4), "");
  EXPECT_EQ(Served(With({{4, "abc"}}, {.stream = {.length = 0}}), 4), "");
  EXPECT_EQ(Served(With({{4, "abc"}}, {.stream = {.length = 2000000000}}), 4), Dressed(4, "abc "));
}

TEST(ObjectStream, LengthByReferenceIsFollowed) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  std::string const packed = test::Deflate("4 0 abc");
  pdf.Object(8, std::to_string(packed.size()));
  pdf.Stream(10, "/N 1 /First 4 /Filter /FlateDecode ", packed, "8 0 R");
  pdf.Row(4, {2, 10, 0});
  pdf.XrefStream(11);
  EXPECT_EQ(Served(pdf, 4), Dressed(4, "abc"));
}

TEST(ObjectStream, PredictorRowsAreUndone) {
  for (int const predictor : {10, 11, 12}) {
    PdfBuilder pdf("%PDF-1.5");
    test::AddPageTree(pdf, 1);
    std::string const packed = test::Deflate(test::PngRows("4 0 abcdefgh", 4, predictor - 10) + "");
    pdf.Stream(10,
               "/N 1 /First 4 /Filter /FlateDecode /DecodeParms <</Predictor " +
                   std::to_string(predictor) + " /Columns 4 >> ",
               packed);
    pdf.Row(4, {2, 10, 0});
    pdf.XrefStream(11);
    // The size stays what it was with the tags: the last three bytes are after the text.
    std::string const text = Served(pdf, 4);
    EXPECT_EQ(text.substr(0, 16), "4 0 obj\nabcdefgh") << predictor;
    EXPECT_EQ(text.size(), Dressed(4, "abcdefgh123").size());
  }
}

TEST(ObjectStream, WithoutEndobjIsUnreadable) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.XrefStream(11);
  OpenDocument document(pdf);
  ASSERT_NE(document.Build(), 0u);
  DWORD const behind = static_cast<DWORD>(pdf.Size() - 20);
  document.reader().objects.index()->ObjectIndex()[5] = {10, 0, 2};
  document.reader().objects.index()->Extents()[{10, 0}] = {behind, 0};
  EXPECT_FALSE(document.Fetch(5).valid);
  EXPECT_FALSE(document.Fetch(5).valid);
}

TEST(ObjectStream, UnknownStreamIsLookedForAtTheStartOfTheFile) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.Row(4, {2, 77, 0});
  pdf.XrefStream(11);
  OpenDocument document(pdf);
  ASSERT_NE(document.Build(), 0u);
  EXPECT_FALSE(document.Fetch(4).valid);
  EXPECT_TRUE(XrefProbe::Holds(*document.reader().objects.streams(), 0));
  EXPECT_NE(document.reader().objects.index()->Extents().Find({77, 0}), nullptr);
}

// "4 0 5 2 " lists two objects; its first four bytes list one, whose text then begins with the
// rest.
TEST(ObjectStream, HeaderEndsAtFirst) {
  ObjectStreamOptions const cut{.first = 4, .header = "4 0 5 2 "};
  EXPECT_EQ(Served(With({{4, "abc"}, {5, "d"}}, cut), 4), Dressed(4, "5 2 abc d "));
  EXPECT_EQ(Served(With({{4, "abc"}, {5, "d"}}, cut), 5), "");
}

TEST(ObjectStream, NulEndsTheHeader) {
  ObjectStreamOptions const options{.header = std::string("4 0\0005 2 ", 8)};
  PdfBuilder const pdf = With({{4, "abc"}, {5, "d"}}, options);
  EXPECT_EQ(Served(pdf, 4), Dressed(4, "abc d "));
  EXPECT_EQ(Served(pdf, 5), "");
}

TEST(ObjectStream, FirstOfZeroServesNothing) {
  EXPECT_EQ(Served(With({{4, "abc"}}, {.first = 0}), 4), "");
}

// What object 4 of a stream with these dictionary keys is.
std::string ServedBy(std::string const& keys) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.Object(10, "<<" + keys + " >>\nstream\n" + test::Deflate("4 0 abc") + "\nendstream");
  pdf.Row(4, {2, 10, 0});
  pdf.XrefStream(11);
  return Served(pdf, 4);
}

TEST(ObjectStream, WithoutCountOrLengthIsUnreadable) {
  std::string const length = "/Length " + std::to_string(test::Deflate("4 0 abc").size());
  EXPECT_EQ(ServedBy("/N 1 /First 4 " + length + " /Filter /FlateDecode"), Dressed(4, "abc"));
  EXPECT_EQ(ServedBy("/First 4 " + length + " /Filter /FlateDecode"), "");
  EXPECT_EQ(ServedBy("/N 1 /First 4 /Filter /FlateDecode"), "");
}

// The stream's text must begin with its two numbers.
TEST(ObjectStream, OffsetOfTheDictionaryIsUnreadableWithoutACode) {
  PdfBuilder const pdf = With({{4, "abc"}});
  OpenDocument document(pdf);
  ASSERT_NE(document.Build(), 0u);
  document.reader().objects.index()->Extents().Find({10, 0})->nStart += 9;  // past "10 0 obj\n"
  EXPECT_FALSE(document.Fetch(4).valid);
  EXPECT_EQ(document.error(), 0u);
}

// A page tree, `streams` object streams from number 100 on, and in each the object 500 numbers on.
PdfBuilder Many(DWORD streams) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  for (DWORD i = 0; i < streams; ++i) {
    pdf.ObjectStream(100 + i, {{600 + i, "object " + std::to_string(i)}});
  }
  pdf.XrefStream(99);
  return pdf;
}

TEST(ObjectStreamList, KeepsFortyNineStreamsFirstInFirstOut) {
  PdfBuilder const pdf = Many(51);
  OpenDocument document(pdf);
  ASSERT_NE(document.Build(), 0u);
  auto& list = *document.reader().objects.streams();
  auto const holds = [&](DWORD i) { return XrefProbe::Holds(list, pdf.OffsetOf(100 + i)); };
  for (DWORD i = 0; i < 49; ++i) EXPECT_TRUE(document.Fetch(600 + i).valid);
  EXPECT_EQ(XrefProbe::StreamCount(list), 49u);
  document.Fetch(600);  // a hit moves nothing
  EXPECT_TRUE(document.Fetch(649).valid);
  EXPECT_EQ(XrefProbe::StreamCount(list), 49u);
  EXPECT_FALSE(holds(0));
  EXPECT_TRUE(holds(1));
  EXPECT_TRUE(document.Fetch(600).valid);
  EXPECT_TRUE(holds(0));
  EXPECT_FALSE(holds(1));
}

// Decoded streams of 50 MiB: no more than two stay in memory, and all are served.
TEST(ObjectStreamList, KeepsFewerLargeStreams) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  for (DWORD i = 0; i < 3; ++i) {
    pdf.ObjectStream(100 + i, {{600 + i, "x"}, {500, std::string(50 * 1024 * 1024, 'x')}});
  }
  pdf.XrefStream(99);
  OpenDocument document(pdf);
  ASSERT_NE(document.Build(), 0u);
  for (DWORD i = 0; i < 3; ++i) EXPECT_TRUE(document.Fetch(600 + i).valid);
  EXPECT_EQ(XrefProbe::StreamCount(*document.reader().objects.streams()), 2u);
}

}  // namespace
