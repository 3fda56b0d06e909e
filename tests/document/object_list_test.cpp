// BuildObjectListFromFile: what a session holds of a document afterwards, by either route.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/document/object_stream.h>
#include <sorrelin/frame/string_error.h>
#include <tests/support/open_document.h>
#include <tests/support/xref_probe.h>

namespace {

using test::OpenDocument;
using test::PdfBuilder;
using test::Target;

sorrelin::WideString Wide(char const* text) { return sorrelin::ToWide(text); }

TEST(ObjectList, ClassicRouteFillsTheSession) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 2);
  pdf.Object(5, "<</Title (A title) >>", 3);
  size_t const section = pdf.Classic({.keys = "/Root 1 0 R /Info 5 3 R", .size = 77});
  for (auto const target : {Target::kMemory, Target::kFile}) {
    OpenDocument document(pdf, target);
    EXPECT_EQ(document.Build(), 6u);
    EXPECT_EQ(document.error(), 0u);
    EXPECT_EQ(SessionProbe::ObjectsInFile(*document), 6u);
    EXPECT_EQ(SessionProbe::MaxSectionOffset(*document), section);
    EXPECT_EQ(SessionProbe::TrailerSize(*document), 77u);
    EXPECT_EQ(SessionProbe::Catalog(*document), 1u);
    EXPECT_EQ(SessionProbe::Info(*document), 5u);
    EXPECT_EQ(SessionProbe::InfoGeneration(*document), 3u);
    EXPECT_EQ(SessionProbe::PagesRoot(*document), 2u);
    EXPECT_EQ(document->GetNumberOfPages(), 2u);
    EXPECT_EQ(document->GetPageObjectNumber(0), 3u);
    EXPECT_EQ(document->GetPageObjectNumber(1), 4u);
    EXPECT_EQ(document.row(3).nOffset, pdf.OffsetOf(3));
    EXPECT_EQ(document.row(3).bInUse, 1u);
    EXPECT_FALSE(document.reader().objects.IsUsed());
  }
}

TEST(ObjectList, StreamRouteFillsTheSession) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 2);
  pdf.Object(5, "<</Title (A title) >>");
  pdf.ObjectStream(7, {{6, "<</A 1>>"}});
  size_t const section = pdf.XrefStream(8, {.keys = "/Root 1 0 R /Info 5 0 R", .size = 12});
  for (auto const target : {Target::kMemory, Target::kFile}) {
    OpenDocument document(pdf, target);
    EXPECT_EQ(document.Build(), 12u);
    EXPECT_EQ(document.error(), 0u);
    EXPECT_EQ(SessionProbe::ObjectsInFile(*document), 12u);
    EXPECT_EQ(SessionProbe::TrailerSize(*document), 12u);
    EXPECT_EQ(SessionProbe::MaxSectionOffset(*document), section);
    EXPECT_EQ(SessionProbe::Catalog(*document), 1u);
    EXPECT_EQ(SessionProbe::Info(*document), 5u);
    EXPECT_EQ(document->GetNumberOfPages(), 2u);
    EXPECT_EQ(document->GetPageObjectNumber(1), 4u);
    EXPECT_EQ(document.row(3).nOffset, pdf.OffsetOf(3));
    EXPECT_EQ(document.row(3).bInUse, 1u);
    EXPECT_EQ(document.row(6).nOffset, 7u);
    EXPECT_EQ(document.row(6).nGeneration, 0u);
    EXPECT_EQ(document.row(6).bInUse, 2u);
    EXPECT_EQ(document.row(11).bInUse, 0u);
    EXPECT_TRUE(document.reader().objects.IsUsed());
    EXPECT_EQ(document.reader().m_Title, Wide("A title"));
  }
}

// The rows after the highest object in use count, too.
TEST(ObjectList, IndexReachesToSizeWithZerosBehindTheLastObject) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.XrefStream(4, {.size = 9});
  OpenDocument document(pdf);
  EXPECT_EQ(document.Build(), 9u);
  auto const& index = document.reader().objects.index()->ObjectIndex();
  ASSERT_EQ(index.size(), 9u);
  EXPECT_EQ(index[4].nType, 1u);
  for (size_t number = 5; number < 9; ++number) {
    EXPECT_EQ(index[number].nOffset, 0u) << number;
    EXPECT_EQ(index[number].nGeneration, 0u) << number;
    EXPECT_EQ(index[number].nType, 0u) << number;
  }
}

TEST(ObjectList, StreamRouteLeavesTheTrailerTextsAlone) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.XrefStream(4, {.keys = "/Root 1 0 R /Encrypt 9 0 R /ID [<41> <42>]"});
  OpenDocument document(pdf);
  EXPECT_NE(document.Build(), 0u);
  EXPECT_STREQ(SessionProbe::TrailerId(*document), "");
  EXPECT_STREQ(SessionProbe::TrailerEncrypt(*document), "");
}

TEST(ObjectList, StreamDocumentWithoutInfoHasInfoZero) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.XrefStream(4);
  OpenDocument document(pdf);
  EXPECT_NE(document.Build(), 0u);
  EXPECT_EQ(SessionProbe::Info(*document), 0u);
  EXPECT_EQ(SessionProbe::InfoGeneration(*document), 0u);
}

TEST(ObjectList, OutlinesAreReadFromTheCatalog) {
  for (auto const& [keys, number] : {std::pair{"/Outlines 9 0 R ", 9u}, {"", 0u}}) {
    PdfBuilder pdf;
    test::AddPageTree(pdf, 1);
    pdf.Object(1, std::string("<</Type/Catalog /Pages 2 0 R ") + keys + ">>");
    pdf.Classic();
    OpenDocument document(pdf);
    EXPECT_NE(document.Build(), 0u);
    EXPECT_EQ(document->GetOutlinesObjectNr(), number);
  }
}

TEST(ObjectList, InfoStringsAreReadEachIfFound) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Object(4, "<</Title (T) /Subject <FEFF00410042> /Keywords (K) >>");
  pdf.Classic({.keys = "/Root 1 0 R /Info 4 0 R"});
  OpenDocument document(pdf);
  document.reader().m_Author = Wide("before");
  EXPECT_NE(document.Build(), 0u);
  EXPECT_EQ(document.reader().m_Title, Wide("T"));
  EXPECT_EQ(document.reader().m_Author, Wide("before"));
  EXPECT_EQ(document.reader().m_Subject, Wide("AB"));
  EXPECT_EQ(document.reader().m_Keywords, Wide("K"));
}

TEST(ObjectList, MissingInfoObjectLeavesTheStrings) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.XrefStream(4, {.keys = "/Root 1 0 R /Info 99 0 R"});
  OpenDocument document(pdf);
  document.reader().m_Title = Wide("before");
  EXPECT_NE(document.Build(), 0u);
  EXPECT_EQ(document.reader().m_Title, Wide("before"));
}

TEST(ObjectList, TitleInAnObjectOfItsOwnStaysEmpty) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.Object(4, "<</Title 5 0 R /Author (A) >>");
  pdf.Object(5, "(T)");
  pdf.XrefStream(6, {.keys = "/Root 1 0 R /Info 4 0 R"});
  OpenDocument document(pdf);
  EXPECT_NE(document.Build(), 0u);
  EXPECT_EQ(document.reader().m_Title, Wide(""));
  EXPECT_EQ(document.reader().m_Author, Wide("A"));
}

// An update in memory takes the position after the Info object for the place of its first page.
TEST(ObjectList, ChannelStandsBehindTheInfoObject) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Object(4, "<</Title (T) >>");
  pdf.Object(5, "x");
  pdf.Classic({.keys = "/Root 1 0 R /Info 4 0 R"});
  for (auto const target : {Target::kMemory, Target::kFile}) {
    OpenDocument document(pdf, target);
    EXPECT_NE(document.Build(), 0u);
    EXPECT_EQ(document.Tell(), pdf.OffsetOf(5));
  }
}

TEST(ObjectList, ChannelStandsBehindTheInfoObjectsExtent) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.Object(4, "<</Title (T) >>");
  pdf.Text("between");
  pdf.Object(5, "x");
  pdf.XrefStream(6, {.keys = "/Root 1 0 R /Info 4 0 R"});
  for (auto const target : {Target::kMemory, Target::kFile}) {
    OpenDocument document(pdf, target);
    EXPECT_NE(document.Build(), 0u);
    EXPECT_EQ(document.Tell(), pdf.OffsetOf(5));
  }
}

struct FailureRow {
  char const* name;
  std::string catalog;
  std::string pages;
  DWORD error;
};
class OpenFailure : public testing::TestWithParam<FailureRow> {};

TEST_P(OpenFailure, HasItsCodeByEitherRoute) {
  for (bool const stream : {false, true}) {
    PdfBuilder pdf("%PDF-1.5");
    pdf.Object(1, GetParam().catalog);
    if (!GetParam().pages.empty()) pdf.Object(2, GetParam().pages);
    pdf.Object(3, "<</Type/Page >>");
    pdf.Object(4, "1");
    stream ? pdf.XrefStream(5) : pdf.Classic();
    OpenDocument document(pdf);
    EXPECT_EQ(document.Build(), 0u);
    EXPECT_EQ(document.error(), GetParam().error);
    EXPECT_NE(document.reader().objects.index(), nullptr);
    EXPECT_NE(document.reader().objects.streams(), nullptr);
  }
}

std::string const kCatalog = "<</Pages 2 0 R >>";

INSTANTIATE_TEST_SUITE_P(
    Rows, OpenFailure,
    testing::Values(FailureRow{"NoPages", "<</Type/Catalog >>", "", 1},
                    FailureRow{"PagesIsObjectZero", "<</Pages 0 0 R >>", "", 0},
                    FailureRow{"NoCount", kCatalog, "<</Kids [3 0 R] >>", 1},
                    FailureRow{"CountByReference", kCatalog, "<</Kids [3 0 R] /Count 4 0 R >>", 1},
                    FailureRow{"NoKids", kCatalog, "<</Count 1 >>", 1},
                    FailureRow{"OpenKids", kCatalog, "<</Count 1 /Kids ( >>", 1}),
    [](auto const& row) { return row.param.name; });

// Kept: only a reference whose number cannot be read is followed, and then nothing is there.
TEST(ObjectList, CountThatLooksLikeAReferenceWithoutNumbersFails) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Object(2, "<</Kids [3 0 R] /Count R>>");
  pdf.Classic();
  OpenDocument document(pdf);
  EXPECT_EQ(document.Build(), 0u);
  EXPECT_EQ(document.error(), 1u);
}

// Kept: one number in front of the "R" is no readable pair, and so the object is looked at.
TEST(ObjectList, CountWithOneNumberInFrontOfRIsFollowed) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Object(2, "<</Kids [3 0 R] /Count 4 R>>");
  pdf.Object(4, "7");
  pdf.Classic();
  OpenDocument document(pdf);
  EXPECT_EQ(document.Build(), 5u);
  EXPECT_EQ(document->GetNumberOfPages(), 7u);
}

TEST(ObjectList, CountThatIsNoCleanNumberLeavesThePages) {
  for (char const* const count : {"-3", "2.5"}) {
    PdfBuilder pdf;
    test::AddPageTree(pdf, 1);
    pdf.Object(2, "<</Kids [3 0 R] /Count " + std::string(count) + " >>");
    pdf.Classic();
    OpenDocument document(pdf);
    SessionProbe::TotalPages(*document) = 7;
    EXPECT_EQ(document.Build(), 0u) << count;
    EXPECT_EQ(document.error(), 1u) << count;
    EXPECT_EQ(document->GetNumberOfPages(), 7u) << count;
  }
}

TEST(ObjectList, RootThatIsObjectZeroFailsWithoutCode) {
  for (bool const stream : {false, true}) {
    PdfBuilder pdf("%PDF-1.5");
    test::AddPageTree(pdf, 1);
    stream ? pdf.XrefStream(5, {.keys = "/Root 0 0 R"}) : pdf.Classic({.keys = "/Root 0 0 R"});
    OpenDocument document(pdf);
    EXPECT_EQ(document.Build(), 0u);
    EXPECT_EQ(document.error(), 0u);
  }
}

TEST(ObjectList, ClassicFileWithABadTableIsNotScanned) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Row(0, {1, 5, 0});
  std::string text = pdf.Content();
  size_t const section = text.size();
  text += "xref\n0 4\n" + std::string(200, 'x') +
          "\ntrailer\n<</Size 4 /Root 1 0 R>>\nstartxref\n" + std::to_string(section) + "\n%%EOF\n";
  OpenDocument document(test::ToBytes(text));
  EXPECT_EQ(document.Build(), 0u);
  EXPECT_EQ(document.error(), 24u);
  EXPECT_FALSE(document.reader().objects.index()->IsRebuilt());
}

TEST(ObjectList, EncryptedClassicFileOpens) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Classic({.keys = "/Root 1 0 R /Encrypt 9 0 R"});
  OpenDocument document(pdf);
  EXPECT_NE(document.Build(), 0u);
  EXPECT_EQ(document.error(), 0u);
  EXPECT_STREQ(SessionProbe::TrailerEncrypt(*document), "/Encrypt 9");
}

TEST(ObjectList, EncryptTextThatDoesNotFitFailsWithoutCode) {
  PdfBuilder pdf;
  test::AddPageTree(pdf, 1);
  pdf.Classic({.keys = "/Root 1 0 R /Encrypt <</O (" + std::string(120, 'x') + ")>> "});
  OpenDocument document(pdf);
  EXPECT_EQ(document.Build(), 0u);
  EXPECT_EQ(document.error(), 0u);
}

// A document of the stream route that is right but for what `change` does to its section's options.
DWORD OpenStream(test::XrefStreamOptions const& options, DWORD* error = nullptr) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.XrefStream(4, options);
  OpenDocument document(pdf);
  DWORD const rows = document.Build();
  if (error != nullptr) *error = document.error();
  return rows;
}

TEST(StreamRoute, StepThatFailsSetsNoCode) {
  test::XrefStreamOptions no_root{.keys = ""};
  test::XrefStreamOptions bad_id{.keys = "/Root 1 0 R /UUID 5 "};
  test::XrefStreamOptions bad_filter{.stream = {.filter = "/FlateDecode", .length = 5}};
  test::XrefStreamOptions tiff{.keys = "/Root 1 0 R /DecodeParms <</Predictor 2 >> "};
  test::XrefStreamOptions trailer{.keys = "/Root 1 0 R /A (trailer) "};
  for (auto const& options : {no_root, bad_id, bad_filter, tiff, trailer}) {
    DWORD error = 77;
    EXPECT_EQ(OpenStream(options, &error), 0u) << options.keys;
    EXPECT_EQ(error, 0u);
  }
}

TEST(StreamRoute, PredictorsOneWouldMeetOpen) {
  for (int const predictor : {0, 10, 11, 12}) {
    EXPECT_EQ(OpenStream({.stream = {.predictor = predictor}}), 5u) << predictor;
  }
}

TEST(StreamRoute, SectionWithoutFilterOpens) {
  EXPECT_EQ(OpenStream({.stream = {.filter = ""}}), 5u);
}

TEST(StreamRoute, WidthsOfAnySizeOpen) {
  for (auto const& widths :
       {std::vector<size_t>{1, 2, 1}, {1, 4, 2}, {1, 8, 2}, {4, 4, 4}, {1, 3, 0}}) {
    EXPECT_EQ(OpenStream({.widths = widths}), 5u) << widths[1];
  }
}

TEST(StreamRoute, SectionWithoutIndexOpens) { EXPECT_EQ(OpenStream({.index_key = false}), 5u); }

TEST(StreamRoute, OddIndexLeavesByAnException) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.XrefStream(4, {.keys = "/Root 1 0 R /Index [0 1 2]", .index_key = false});
  OpenDocument document(pdf);
  EXPECT_THROW(document.Build(), SorrelinStringError);
}

TEST(StreamRoute, SizeBeyondTheObjectTableIsErrorTen) {
  DWORD error = 0;
  EXPECT_EQ(OpenStream({.size = 90050}), 90050u);
  EXPECT_EQ(OpenStream({.size = 90051}, &error), 0u);
  EXPECT_EQ(error, 10u);
  EXPECT_EQ(OpenStream({.size = 4000000000}, &error), 0u);
  EXPECT_EQ(error, 10u);
}

// The objects are found by their extents, which the index does not bound.
TEST(StreamRoute, DocumentWithoutRowsCountsAsAFailure) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.XrefStream(4, {.size = 0});
  OpenDocument document(pdf);
  EXPECT_EQ(document.Build(), 0u);
  EXPECT_EQ(document.error(), 0u);
  EXPECT_EQ(document->GetNumberOfPages(), 1u);
}

TEST(StreamRoute, NewestSectionWins) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.Object(4, "first");
  pdf.XrefStream(9);
  pdf.Object(4, "second");
  pdf.XrefStream(9, {.prev = pdf.LastSection()});
  OpenDocument document(pdf);
  EXPECT_EQ(document.Build(), 14u);  // /Size 10 after the first number of /Index [4 1 9 1]
  EXPECT_THAT(document.Load(4).value_or(""), testing::StartsWith("4 0 obj\nsecond\nendobj"));
}

TEST(StreamRoute, OnlyTheNewestSectionGivesRootAndInfo) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.XrefStream(4, {.keys = "/Root 3 0 R /Info 3 0 R /UUID 7 "});
  pdf.Object(5, "x");
  pdf.XrefStream(6, {.prev = pdf.LastSection()});
  OpenDocument document(pdf);
  EXPECT_NE(document.Build(), 0u);
  EXPECT_EQ(SessionProbe::Catalog(*document), 1u);
  EXPECT_EQ(SessionProbe::Info(*document), 0u);
}

TEST(StreamRoute, OlderObjectComesBackWhereTheNewerSectionFreesIt) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.Object(4, "kept");
  pdf.XrefStream(5);
  pdf.Row(4, {0, 0, 1});
  pdf.XrefStream(6, {.prev = pdf.LastSection()});
  OpenDocument document(pdf);
  EXPECT_NE(document.Build(), 0u);
  EXPECT_THAT(document.Load(4).value_or(""), testing::StartsWith("4 0 obj\nkept"));
}

// Sections of fixed size, each naming the next one, the last one the first.
std::string StreamCycleOf(int sections) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  std::string text = pdf.Content();
  size_t const first = text.size();
  size_t const bytes = 300;
  std::string records;
  for (DWORD number = 0; number < 4; ++number) {
    records += test::BigEndian(number == 0 ? 0 : 1, 1) +
               test::BigEndian(number == 0 ? 0 : pdf.OffsetOf(number), 4);
  }
  for (int i = 0; i < sections; ++i) {
    size_t const next = first + static_cast<size_t>((i + 1) % sections) * bytes;
    std::string section = "9 0 obj\n<</Type/XRef /Size 4 /W [1 4 0] /Root 1 0 R /Length 20 /Prev " +
                          std::to_string(next) + " >>\nstream\r\n" + records +
                          "\nendstream\nendobj\n";
    section.resize(bytes, ' ');
    text += section;
  }
  return text + "startxref\n" + std::to_string(first) + "\n%%EOF\n";
}

TEST(StreamRoute, ChainEndsWhereItComesBack) {
  for (int sections = 1; sections <= 4; ++sections) {
    OpenDocument document(test::ToBytes(StreamCycleOf(sections)));
    EXPECT_EQ(document.Build(), 4u) << sections;
    EXPECT_EQ(document.error(), 0u) << sections;
  }
}

TEST(StreamRoute, PrevThatLeadsNowhereFails) { EXPECT_EQ(OpenStream({.prev = 1000000}), 0u); }

TEST(StreamRoute, SectionWithoutEndFails) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.XrefStream(4);
  std::string text = pdf.Content();
  text.replace(text.rfind("endobj"), 6, "endxxx");
  OpenDocument document(test::ToBytes(text));
  EXPECT_EQ(document.Build(), 0u);
  EXPECT_EQ(document.error(), 0u);
}

// A second document on the session of a first one, which is closed.
class SecondDocument {
 public:
  SecondDocument(OpenDocument& first, PdfBuilder const& pdf)
      : session_(*first), bytes_(pdf.Document()) {
    session_.ClosePDFFile();
    channel_ =
        sorrelin::ChannelAttachMemory(bytes_.data(), static_cast<DWORD>(bytes_.size()), true);
    SessionProbe::SetChannel(session_, channel_);
  }
  ~SecondDocument() {
    session_.ClosePDFFile();
    delete channel_;
  }
  SecondDocument(SecondDocument const&) = delete;
  SecondDocument& operator=(SecondDocument const&) = delete;

  DWORD Build() { return session_.BuildObjectListFromFile(); }

 private:
  CCreatePDF& session_;
  test::Bytes bytes_;
  sorrelin::FileChannel* channel_;
};

// Objects after `gap` bytes.
PdfBuilder Pages(DWORD pages, size_t gap = 0) {
  PdfBuilder pdf;
  pdf.Text(std::string(gap, '\n'));
  test::AddPageTree(pdf, pages);
  pdf.Classic();
  return pdf;
}

// Kept: only a new session has an empty table.
TEST(ObjectList, SecondDocumentKeepsRowsOfTheFirst) {
  OpenDocument document(Pages(4));
  EXPECT_EQ(document.Build(), 7u);
  DWORD const left = document.row(6).nOffset;
  SecondDocument second(document, Pages(1));
  EXPECT_EQ(second.Build(), 4u);
  EXPECT_EQ(document.row(6).nOffset, left);
  EXPECT_EQ(document->GetNumberOfPages(), 1u);
  EXPECT_EQ(SessionProbe::MaxSectionOffset(*document), Pages(1).LastSection());
}

// The rows of the first come after the second, where they cut no object short.
TEST(ObjectList, RowsOfTheFirstDocumentBlockAnOlderSectionOfTheSecond) {
  OpenDocument document(Pages(4, 2000));
  EXPECT_EQ(document.Build(), 7u);
  DWORD const left = document.row(6).nOffset;
  PdfBuilder pdf;
  pdf.Object(6, "6");
  pdf.Object(7, "7");
  pdf.Classic();
  test::AddPageTree(pdf, 1);
  pdf.Classic({.prev = pdf.LastSection()});
  SecondDocument second(document, pdf);
  EXPECT_EQ(second.Build(), 8u);
  EXPECT_NE(left, pdf.OffsetOf(6));
  EXPECT_EQ(document.row(6).nOffset, left);
  EXPECT_EQ(document.row(7).nOffset, pdf.OffsetOf(7));
}

TEST(ObjectList, ClosingDestroysTheReadersObjects) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.XrefStream(4);
  OpenDocument document(pdf);
  EXPECT_NE(document.Build(), 0u);
  document->ClosePDFFile();
  EXPECT_EQ(document.reader().objects.index(), nullptr);
  EXPECT_EQ(document.reader().objects.streams(), nullptr);
  EXPECT_EQ(document->GetNumberOfPages(), 1u);
}

TEST(ObjectList, BuildingTwiceReplacesTheReadersObjects) {
  PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.XrefStream(4);
  OpenDocument document(pdf);
  EXPECT_EQ(document.Build(), 5u);
  EXPECT_EQ(document.Build(), 5u);
}

TEST(CrossReference, FreshObjectIsEmpty) {
  sorrelin::DocumentFile file;
  sorrelin::CXRefStm xref(file, nullptr);
  EXPECT_EQ(XrefProbe::EntryLength(xref), 20u);
  EXPECT_TRUE(xref.ObjectIndex().empty());
  EXPECT_EQ(xref.Extents().size(), 0u);
  EXPECT_TRUE(XrefProbe::Marks(xref).empty());
  EXPECT_TRUE(XrefProbe::PrevOffsets(xref).empty());
  EXPECT_TRUE(XrefProbe::PendingOffsets(xref).empty());
  EXPECT_EQ(xref.Root(), nullptr);
  EXPECT_EQ(xref.Info(), nullptr);
  EXPECT_EQ(xref.StartXref(), 0);
  EXPECT_EQ(xref.Prev(), 0u);
  EXPECT_EQ(XrefProbe::TableSize(xref), 0u);
  EXPECT_EQ(XrefProbe::PrevOffset(xref), 0u);
  EXPECT_EQ(XrefProbe::HybridOffset(xref), 0u);
}

}  // namespace
