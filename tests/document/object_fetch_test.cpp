// Objects by number: sizes and texts, by the object table and through the index.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/document/cxref_stm.h>
#include <sorrelin/platform/error.h>
#include <tests/support/open_document.h>
#include <tests/support/page_document.h>

namespace {

using test::OpenDocument;
using test::PdfBuilder;
using test::Target;
using testing::Optional;
using testing::StartsWith;

// One byte after "endobj" belongs to an object's text.
std::string Text(DWORD number, std::string const& body) {
  return std::to_string(number) + " 0 obj\n" + body + "\nendobj\n";
}

PdfBuilder Classic(std::string const& body) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Object(4, body);
  pdf.Object(5, "x");
  pdf.Classic();
  return pdf;
}

class TableFetch : public testing::TestWithParam<Target> {};

INSTANTIATE_TEST_SUITE_P(Channels, TableFetch, testing::Values(Target::kMemory, Target::kFile),
                         [](auto const& row) {
                           return std::string(row.param == Target::kMemory ? "Memory" : "File");
                         });

// A document that was refused leaves the pages of the one before listed, without a channel.
TEST(ClosedDocument, PageWithoutAChannelIsAnInvalidHandleOfTheSystem) {
  test::OnePage const page;
  PdfBuilder pdf = page.Build();
  test::PageDocument document(pdf);
  std::string const refused = "%PDF-2.0 and more";
  EXPECT_EQ(document->OpenPDFFileInMemory(reinterpret_cast<int64_t>(refused.data()),
                                          static_cast<DWORD>(refused.size())),
            0);
  ASSERT_EQ(document->GetNumberOfPages(), 1u);
  SetLastError(0);
  EXPECT_EQ(document->LoadImageFromPDF(0), nullptr);
  EXPECT_EQ(document->PDF_GetLastError(), 1u);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
}

TEST_P(TableFetch, TextObjectEndsOneByteBehindEndobj) {
  OpenDocument document(Classic("<</A 1>>"), GetParam());
  ASSERT_NE(document.Build(), 0u);
  EXPECT_EQ(document->GetObjectSize(4), Text(4, "<</A 1>>").size());
  EXPECT_EQ(document.Load(4), Text(4, "<</A 1>>"));
}

TEST_P(TableFetch, BytesBetweenObjectsAreCutOff) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Object(4, "a");
  pdf.Text("anything between the objects\n");
  pdf.Object(5, "b");
  pdf.Classic();
  OpenDocument document(pdf, GetParam());
  ASSERT_NE(document.Build(), 0u);
  EXPECT_EQ(document.Load(4), Text(4, "a"));
  EXPECT_EQ(document.Load(5), Text(5, "b"));
}

// A NUL hides the keyword, and the object reaches to the next one.
TEST_P(TableFetch, ObjectWithNulReachesToTheNextOffset) {
  std::string const body("a\0b", 3);
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  size_t const begin = pdf.Object(4, body);
  pdf.Text("between");
  size_t const next = pdf.Object(5, "x");
  pdf.Classic();
  OpenDocument document(pdf, GetParam());
  ASSERT_NE(document.Build(), 0u);
  EXPECT_EQ(document->GetObjectSize(4), next - begin);
  EXPECT_EQ(document.Load(4), Text(4, body) + "between");
}

TEST_P(TableFetch, ImageWithNulInItsDataReachesToTheNextOffset) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  size_t const begin =
      pdf.Stream(4, "/Subtype/Image /Width 3 /Height 1 /BitsPerComponent 8", {"A\0B", 3});
  pdf.Text("% behind endobj\n");
  size_t const next = pdf.Object(5, "x");
  pdf.Classic();
  OpenDocument document(pdf, GetParam());
  ASSERT_NE(document.Build(), 0u);
  EXPECT_EQ(document->GetObjectSize(4), next - begin);
}

TEST_P(TableFetch, LastObjectWithNulReachesToTheEnd) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  size_t const begin = pdf.Object(4, std::string("a\0b", 3));
  pdf.Classic();
  OpenDocument document(pdf, GetParam());
  ASSERT_NE(document.Build(), 0u);
  EXPECT_EQ(document->GetObjectSize(4), pdf.Size() - begin);
  EXPECT_THAT(document.Load(4), Optional(testing::EndsWith("%%EOF\n")));
}

// Streams of every size around those of the looks, without NUL and with one in front of the end.
TEST_P(TableFetch, KeywordIsFoundWhereverLooksEnd) {
  for (size_t bytes : {480u, 500u, 2040u, 8150u, 32700u, 65500u, 131000u, 200000u}) {
    for (size_t more : {0u, 3u, 6u, 9u, 12u, 15u, 18u}) {
      std::string const body(bytes + more, 'x');
      OpenDocument document(Classic(body), GetParam());
      ASSERT_NE(document.Build(), 0u);
      ASSERT_EQ(document.Load(4), Text(4, body)) << bytes + more;
      ASSERT_EQ(document->GetObjectSize(4), Text(4, body).size());
    }
  }
}

TEST_P(TableFetch, SizeRestoresThePositionAndLoadMovesItBehindTheObject) {
  PdfBuilder const pdf = Classic("<</A 1>>");
  OpenDocument document(pdf, GetParam());
  ASSERT_NE(document.Build(), 0u);
  document.Seek(3);
  document->GetObjectSize(4);
  EXPECT_EQ(document.Tell(), 3u);
  document.Load(4);
  EXPECT_EQ(document.Tell(), pdf.OffsetOf(5));
}

TEST_P(TableFetch, ObjectZeroIsNothing) {
  OpenDocument document(Classic("x"), GetParam());
  ASSERT_NE(document.Build(), 0u);
  EXPECT_EQ(document->GetObjectSize(0), 0u);
  EXPECT_EQ(document.Load(0), std::nullopt);
  EXPECT_EQ(document.error(), 0u);
}

TEST_P(TableFetch, RowWithoutOffsetIsFetchedFromTheStart) {
  OpenDocument document(Classic("x"), GetParam());
  ASSERT_NE(document.Build(), 0u);
  // Object 1 follows, and nothing in front of it ends an object.
  for (DWORD const number : {20u, 90049u, 90050u, 0xFFFFFFFFu}) {
    EXPECT_EQ(document.Load(number), "%PDF-1.4\n") << number;
  }
}

TEST_P(TableFetch, OffsetBehindTheEndGivesNullAndASizeThatNothingDelivers) {
  OpenDocument document(Classic("x"), GetParam());
  ASSERT_NE(document.Build(), 0u);
  DWORD const end = static_cast<DWORD>(Classic("x").Size());
  SessionProbe::Row(*document, 20).nOffset = end + 100;
  EXPECT_EQ(document->GetObjectSize(20), 0u - 100u);
  EXPECT_EQ(document.Load(20), std::nullopt);
  EXPECT_EQ(document.error(), 0u);
  SessionProbe::Row(*document, 20).nOffset = end;
  EXPECT_EQ(document->GetObjectSize(20), 0u);
  EXPECT_EQ(document.Load(20), std::nullopt);
}

// The size counts one byte after the keyword, which the document does not have.
TEST_P(TableFetch, EndobjAtTheVeryEndIsNotLoaded) {
  std::string const content = "%PDF-1.4\n5 0 obj x endobj";
  OpenDocument document(test::ToBytes(content), GetParam());
  SessionProbe::Row(*document, 5).nOffset = 9;
  EXPECT_EQ(document->GetObjectSize(5), content.size() - 9 + 1);
  EXPECT_EQ(document.Load(5), std::nullopt);
}

TEST(TableFetch, OffsetThatAFileCannotSeekToIsErrorOne) {
  OpenDocument document(Classic("x"), Target::kFile);
  ASSERT_NE(document.Build(), 0u);
  SessionProbe::Row(*document, 20).nOffset = 0x80000000;
  EXPECT_EQ(document.Load(20), std::nullopt);
  EXPECT_EQ(document.error(), 1u);
}

TEST(TableFetch, HighestOffsetThatAFileSeeksToGivesNullWithoutACode) {
  OpenDocument document(Classic("x"), Target::kFile);
  ASSERT_NE(document.Build(), 0u);
  SessionProbe::Row(*document, 20).nOffset = 0x7FFFFFFF;
  EXPECT_EQ(document.Load(20), std::nullopt);
  EXPECT_EQ(document.error(), 0u);
}

TEST(TableFetch, ClosedDocumentGivesErrorOneUnlessTheRowIsZero) {
  OpenDocument document(Classic("x"));
  ASSERT_NE(document.Build(), 0u);
  document->ClosePDFFile();
  EXPECT_EQ(document.Load(20), std::nullopt);
  EXPECT_EQ(document.error(), 0u);
  EXPECT_EQ(document.Load(4), std::nullopt);
  EXPECT_EQ(document.error(), 1u);
  EXPECT_EQ(document->GetObjectSize(4), 0u);
}

TEST(TableFetch, WritingAnObjectMovesTheNextOffset) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  size_t const begin = pdf.Object(4, std::string("a\0b", 3));
  size_t const next = pdf.Object(5, "x");
  pdf.Object(6, "x");
  pdf.Classic();
  OpenDocument document(pdf);
  ASSERT_NE(document.Build(), 0u);
  EXPECT_EQ(document->GetObjectSize(4), next - begin);
  SessionProbe::FilePos(*document) = static_cast<DWORD>(begin + 3);
  document->ObjectStartNewGen(6, 0, 1, 0);  // the channel refuses the bytes, the row moves
  EXPECT_EQ(document->GetObjectSize(4), 3u);
}

TEST(ObjectType, IsOneForOrdinaryObjects) {
  OpenDocument document(test::Bytes(100, ' '));
  for (std::string text : {"<</Type /Page /Parent 3 0 R >>", "<</Type/Page>>", "<</Type Page >>",
                           "<</Type /XObject >>", "<</A 1 >>", ""}) {
    EXPECT_EQ(document->GetObjectType(reinterpret_cast<BYTE*>(text.data()),
                                      static_cast<DWORD>(text.size())),
              1u)
        << text;
  }
}

TEST(ObjectType, OfNothingIsOneWithErrorTwo) {
  OpenDocument document(test::Bytes(100, ' '));
  std::string text = "<</Type/Page>>";
  BYTE* const data = reinterpret_cast<BYTE*>(text.data());
  for (auto const& [from, size] : {std::pair<BYTE*, DWORD>{nullptr, 5}, {data, 0}}) {
    document->PDF_SetLastError(0);
    EXPECT_EQ(document->GetObjectType(from, size), 1u);
    EXPECT_EQ(document.error(), 2u);
  }
}

// Catalog, page tree and an object 4 that `add` makes, by the stream route.
template <typename Add>
PdfBuilder Stream(Add add) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  add(pdf);
  pdf.XrefStream(9);
  return pdf;
}

class IndexFetch : public testing::TestWithParam<Target> {};

INSTANTIATE_TEST_SUITE_P(Channels, IndexFetch, testing::Values(Target::kMemory, Target::kFile),
                         [](auto const& row) {
                           return std::string(row.param == Target::kMemory ? "Memory" : "File");
                         });

// The whole extent, up to the next offset, and two NUL bytes after it.
TEST_P(IndexFetch, GivesTheExtentAndTwoNuls) {
  PdfBuilder const pdf = Stream([](PdfBuilder& p) {
    p.Object(4, "<</A 1>>");
    p.Text("between");
    p.Object(5, "x");
  });
  OpenDocument document(pdf, GetParam());
  ASSERT_NE(document.Build(), 0u);
  std::string const text = Text(4, "<</A 1>>") + "between" + std::string(2, '\0');
  auto const fetched = document.Fetch(4);
  EXPECT_TRUE(fetched.valid);
  EXPECT_EQ(fetched.text, text);
  EXPECT_EQ(document.Tell(), pdf.OffsetOf(5));
  EXPECT_EQ(document.Load(4), text);
  EXPECT_EQ(document->GetObjectSize(4), text.size());
}

TEST_P(IndexFetch, NulBytesOfATextBecomeBlanks) {
  OpenDocument document(Stream([](PdfBuilder& p) { p.Object(4, std::string("a\0b", 3)); }),
                        GetParam());
  ASSERT_NE(document.Build(), 0u);
  EXPECT_THAT(document.Fetch(4).text, StartsWith("4 0 obj\na b\nendobj"));
}

TEST_P(IndexFetch, NulBytesOfAStreamStay) {
  std::string const data("a\0b", 3);
  OpenDocument document(Stream([&](PdfBuilder& p) { p.Stream(4, "", data); }), GetParam());
  ASSERT_NE(document.Build(), 0u);
  EXPECT_NE(document.Fetch(4).text.find(data), std::string::npos);
}

TEST_P(IndexFetch, NulBytesOfAnObjectThatNamesAFilterStay) {
  std::string const body = "<</Filter /A>>" + std::string(1, '\0') + "b";
  OpenDocument document(Stream([&](PdfBuilder& p) { p.Object(4, body); }), GetParam());
  ASSERT_NE(document.Build(), 0u);
  EXPECT_NE(document.Fetch(4).text.find(body), std::string::npos);
}

// Only what comes before the first NUL is looked at for the two words.
TEST_P(IndexFetch, WordsBehindANulDoNotCount) {
  std::string const body = std::string(1, '\0') + "stream";
  OpenDocument document(Stream([&](PdfBuilder& p) { p.Object(4, body); }), GetParam());
  ASSERT_NE(document.Build(), 0u);
  EXPECT_NE(document.Fetch(4).text.find(" stream"), std::string::npos);
}

TEST_P(IndexFetch, LargeObjectsComeWhole) {
  for (size_t const bytes : {1000u, 65000u, 65536u, 70000u, 300000u}) {
    std::string const data(bytes, 'x');
    OpenDocument document(Stream([&](PdfBuilder& p) { p.Stream(4, "", data); }), GetParam());
    ASSERT_NE(document.Build(), 0u);
    EXPECT_NE(document.Fetch(4).text.find(data), std::string::npos) << bytes;
  }
}

TEST(IndexFetch, ClassicDocumentHasNoIndex) {
  OpenDocument document(Classic("x"));
  ASSERT_NE(document.Build(), 0u);
  EXPECT_FALSE(document.Fetch(4).valid);
  EXPECT_EQ(document.Fetch(4).text, "");
}

TEST(IndexFetch, UnknownNumberAndOtherGenerationAreNotFound) {
  OpenDocument document(Stream([](PdfBuilder& p) { p.Object(4, "x", 2); }));
  ASSERT_NE(document.Build(), 0u);
  EXPECT_FALSE(document.Fetch(4).valid);
  EXPECT_TRUE(document.Fetch(4, 2).valid);
  EXPECT_FALSE(document.Fetch(8).valid);
  EXPECT_FALSE(document.Fetch(4000000000).valid);
}

// Those who ask for sizes ask for generation 0; the table row then serves.
TEST(IndexFetch, OtherGenerationIsServedByTheTable) {
  OpenDocument document(Stream([](PdfBuilder& p) { p.Object(4, "x", 2); }));
  ASSERT_NE(document.Build(), 0u);
  EXPECT_EQ(document.Load(4), "4 2 obj\nx\nendobj\n");
  EXPECT_EQ(document->GetObjectSize(4), 17u);
}

// The mark of the newest section ends the highest object; after it there is none.
TEST(IndexFetch, LastMarksObjectIsServedByTheTable) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  size_t const section = pdf.XrefStream(9, {.tail = "%%EOF"});
  std::string text = pdf.Content();
  OpenDocument document(test::ToBytes(text));
  ASSERT_NE(document.Build(), 0u);
  // The section lists itself under the offset of the boundary, and the boundary came first.
  EXPECT_EQ(document.reader().objects.index()->Extents().Find({9, 0})->nEnd, 0u);
  EXPECT_FALSE(document.Fetch(9).valid);
  EXPECT_THAT(document.Load(9), Optional(StartsWith("9 0 obj\n<</Type/XRef")));
  EXPECT_EQ(document.row(9).nOffset, section);
}

// A document whose object 4 comes last, after the section that lists it, and whose row 5 points
// `bytes` bytes past the start of object 4, which thereby is its extent.
PdfBuilder EndingInObject4(std::string const& body, size_t bytes) {
  size_t at = 0;
  for (;;) {
    PdfBuilder pdf("%PDF-1.5");
    test::AddPageTree(pdf, 1);
    pdf.Row(4, {1, at, 0}).Row(5, {1, at + bytes, 0});
    size_t const section = pdf.XrefStream(9, {.stream = {.filter = ""}});
    if (at == pdf.Size()) {
      pdf.Object(4, body);
      pdf.Text("startxref\n" + std::to_string(section) + "\n%%EOF\n");
      return pdf;
    }
    at = pdf.Size();
  }
}

// Two NULs end a fetched text, and what the file lacks of the extent is 0, which in a text that is
// no stream becomes blanks.
TEST_P(IndexFetch, ExtentThatReachesPastTheFileIsServedInFull) {
  for (size_t const bytes : {500u, 5000u, 100000u}) {
    PdfBuilder const pdf = EndingInObject4("<</A 1>>", bytes);
    OpenDocument document(pdf, GetParam());
    ASSERT_NE(document.Build(), 0u);
    std::string text = pdf.Content().substr(pdf.OffsetOf(4));
    text.resize(bytes, ' ');
    text.resize(bytes + 2, '\0');
    EXPECT_EQ(document.Fetch(4).text, text) << bytes;
    EXPECT_EQ(document.Load(4), text) << bytes;
    EXPECT_EQ(document->GetObjectSize(4), bytes + 2);
  }
}

TEST_P(IndexFetch, StreamThatReachesPastTheFileEndsInZeros) {
  PdfBuilder const pdf = EndingInObject4("<</Filter /A>>", 5000);
  OpenDocument document(pdf, GetParam());
  ASSERT_NE(document.Build(), 0u);
  std::string text = pdf.Content().substr(pdf.OffsetOf(4));
  text.resize(5002, '\0');
  EXPECT_EQ(document.Load(4), text);
  EXPECT_EQ(document->GetObjectSize(4), 5002u);
}

// One fetch may handle 128 MiB and 64 times the document's bytes; the table row then serves.
TEST_P(IndexFetch, ExtentBeyondTheWorkOfAFetchYieldsNothing) {
  size_t const size = EndingInObject4("<</A 1>>", 500).Size();
  size_t const work = 128 * 1024 * 1024 + 64 * size;
  OpenDocument within(EndingInObject4("<</A 1>>", work), GetParam());
  ASSERT_NE(within.Build(), 0u);
  EXPECT_EQ(within->GetObjectSize(4), work + 2);
  OpenDocument beyond(EndingInObject4("<</A 1>>", work + 1), GetParam());
  ASSERT_NE(beyond.Build(), 0u);
  EXPECT_FALSE(beyond.Fetch(4).valid);
  EXPECT_EQ(beyond.Load(4), "4 0 obj\n<</A 1>>\nendobj\n");
}

// The end of the file is not taken for the end of the object.
TEST(IndexFetch, BracketAtTheEndOfTheFileDoesNotEndALongerExtent) {
  std::string const text = "%PDF-1.5\n5 0 obj <</A 1>>";
  for (DWORD const more : {0u, 1u, 2u, 3u, 100u, 3000000000u}) {
    OpenDocument document(test::ToBytes(text));
    auto index = std::make_unique<sorrelin::CXRef>(document.reader().file);
    index->Extents()[{5, 0}] = {9, static_cast<DWORD>(text.size()) + more};
    document.reader().objects.Open(std::move(index), true);
    EXPECT_TRUE(document.Fetch(5).valid == (more <= 3)) << more;
  }
}

TEST(IndexFetch, ReferencesToThemselvesEnd) {
  OpenDocument document(Stream([](PdfBuilder& p) {
    p.ObjectStream(6, {{4, "1"}}, {.stream = {.length_text = "4 0 R"}});
  }));
  ASSERT_NE(document.Build(), 0u);
  EXPECT_FALSE(document.Fetch(4).valid);
}

TEST(IndexFetch, ClosedDocumentHasNoObjects) {
  OpenDocument document(Stream([](PdfBuilder& p) { p.Object(4, "x"); }));
  ASSERT_NE(document.Build(), 0u);
  document->ClosePDFFile();
  EXPECT_FALSE(document.Fetch(4).valid);
  EXPECT_EQ(document.Load(4), std::nullopt);
  EXPECT_EQ(document.error(), 1u);
}

// One of the two extents is empty, which a scan of the document sets right.
TEST(IndexFetch, TwoRowsOfOneOffsetAreScannedFor) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  size_t const offset = pdf.Object(4, "<</A 1>>");
  pdf.Row(5, {1, offset, 0});
  pdf.XrefStream(9);
  OpenDocument document(pdf);
  ASSERT_NE(document.Build(), 0u);
  EXPECT_FALSE(document.reader().objects.index()->IsRebuilt());
  document.Load(5);
  EXPECT_THAT(document.Load(4), Optional(StartsWith("4 0 obj\n<</A 1>>\nendobj\n")));
  EXPECT_TRUE(document.reader().objects.index()->IsRebuilt());
}

// The row of an object in a stream holds the stream's number, which then counts as an offset.
TEST(IndexFetch, ObjectThatItsStreamDoesNotListIsReadFromItsRow) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.ObjectStream(10, {{4, "x"}});
  pdf.Row(5, {2, 10, 1});
  pdf.XrefStream(11);
  OpenDocument document(pdf);
  ASSERT_NE(document.Build(), 0u);
  EXPECT_EQ(document.row(5).nOffset, 10u);
  // Object 1 begins at 9, with "1"; what follows up to its "endobj" and one byte is served.
  EXPECT_EQ(document.Load(5), " 0 obj\n<</Type/Catalog /Pages 2 0 R >>\nendobj\n");
  EXPECT_EQ(document.error(), 0u);
}

}  // namespace
