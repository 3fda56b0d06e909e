// The records of a section: decoding, and their way into the index.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tests/support/xref_document.h>

#include <tuple>

namespace {

using sorrelin::ObjectExtent;
using sorrelin::ObjectId;
using test::BigEndian;
using test::Deflate;
using test::XrefDocument;
using testing::ElementsAre;
using testing::IsEmpty;

using Record = std::tuple<DWORD, DWORD, DWORD>;

std::string Object(std::string const& keys, std::string const& data,
                   std::string const& line_end = "\n") {
  return "7 0 obj\n<<" + keys + " >>\nstream" + line_end + data + "\nendstream\nendobj";
}

// Records of widths 1, 2 and 1, raw.
std::string Raw(std::vector<Record> const& records) {
  std::string data;
  for (auto const& [type, second, third] : records) {
    data += BigEndian(type, 1) + BigEndian(second, 2) + BigEndian(third, 1);
  }
  return data;
}

// One section, read up to its records.
struct Decoded {
  explicit Decoded(std::string const& text) : document(text) { result = Step(false); }
  int Step(bool older) {
    return document->LoadSection(false, older) != 0 && document->ParseStreamDict() != 0 &&
           document->DecodeRecords() != 0;
  }
  std::vector<Record> Records() {
    std::vector<Record> records;
    for (auto const& record : XrefProbe::Records(*document)) {
      records.push_back({record.nType, record.nField2, record.nField3});
    }
    return records;
  }
  XrefDocument document;
  int result;
};

Decoded Flate(std::string const& keys, std::string const& data) {
  std::string const packed = Deflate(data);
  return Decoded(
      Object("/Length " + std::to_string(packed.size()) + " /Filter /FlateDecode " + keys, packed));
}

TEST(DecodeRecords, ReadsSizeRecordsWithoutIndex) {
  Decoded section = Flate("/Size 2 /W [1 2 1]", Raw({{1, 500, 0}, {2, 9, 3}, {1, 7, 7}}));
  EXPECT_EQ(section.result, 1);
  EXPECT_THAT(section.Records(), ElementsAre(Record{1, 500, 0}, Record{2, 9, 3}));
  EXPECT_EQ(XrefProbe::RecordCount(*section.document), 2u);
}

TEST(DecodeRecords, EndsWithTheData) {
  Decoded section = Flate("/Size 5 /W [1 2 1]", Raw({{1, 500, 0}}) + "abc");
  EXPECT_THAT(section.Records(), ElementsAre(Record{1, 500, 0}));
}

TEST(DecodeRecords, IndexCountsLimitTheRecords) {
  Decoded section =
      Flate("/Size 9 /Index [3 1 7 1] /W [1 2 1]", Raw({{1, 1, 0}, {1, 2, 0}, {1, 3, 0}}));
  EXPECT_THAT(section.Records(), ElementsAre(Record{1, 1, 0}, Record{1, 2, 0}));
}

// Kept: the standard's default of type 1 is not applied.
TEST(DecodeRecords, FirstFieldOfWidthZeroIsFree) {
  Decoded section = Flate("/Size 2 /W [0 2 0]", BigEndian(500, 2) + BigEndian(600, 2));
  EXPECT_THAT(section.Records(), ElementsAre(Record{0, 500, 65535}, Record{0, 600, 65535}));
}

TEST(DecodeRecords, FreeRecordHasGeneration65535) {
  EXPECT_THAT(Flate("/Size 1 /W [1 2 1]", Raw({{0, 5, 7}})).Records(),
              ElementsAre(Record{0, 5, 65535}));
}

TEST(DecodeRecords, BytesBeyondTheFourthPushOutTheHighOnes) {
  Decoded section = Flate("/Size 1 /W [1 8 1]",
                          BigEndian(1, 1) + BigEndian(0x1122334455667788, 8) + BigEndian(0, 1));
  EXPECT_THAT(section.Records(), ElementsAre(Record{1, 0x55667788, 0}));
}

TEST(DecodeRecords, RecordsOfNoBytesAreAllFree) {
  Decoded section = Flate("/Size 3 /W [0 0 0]", "x");
  EXPECT_THAT(section.Records(),
              ElementsAre(Record{0, 0, 65535}, Record{0, 0, 65535}, Record{0, 0, 65535}));
}

TEST(DecodeRecords, HugeWidthsLeaveNoRecord) {
  EXPECT_THAT(Flate("/Size 3 /W [1 2147483647 2147483647]", "abcd").Records(), IsEmpty());
  EXPECT_THAT(Flate("/Size 3 /W [1 -1 1]", "abcd").Records(), IsEmpty());
}

struct LineEndRow {
  char const* name;
  std::string line_end;
};
class DataStart : public testing::TestWithParam<LineEndRow> {};

TEST_P(DataStart, IsBehindTheLineEnd) {
  std::string const packed = Deflate(Raw({{1, 500, 0}}));
  std::string const keys =
      "/Filter /FlateDecode /Size 1 /W [1 2 1] /Length " + std::to_string(packed.size());
  Decoded section(Object(keys, packed, GetParam().line_end));
  EXPECT_THAT(section.Records(), ElementsAre(Record{1, 500, 0}));
}

INSTANTIATE_TEST_SUITE_P(Rows, DataStart,
                         testing::Values(LineEndRow{"CrLf", "\r\n"}, LineEndRow{"Lf", "\n"},
                                         LineEndRow{"Cr", "\r"}, LineEndRow{"None", ""},
                                         LineEndRow{"BlanksAndLines", " \n \r\n"}),
                         [](auto const& row) { return row.param.name; });

TEST(DecodeRecords, WhiteSpaceAtTheDatasStartIsLost) {
  Decoded section(Object("/Size 1 /W [1 2 1] /Length 4", "\n\n\n\n" + Raw({{1, 500, 0}})));
  EXPECT_THAT(section.Records(), ElementsAre(Record{1, 500, 0}));
  // CR LF ends the search for white space.
  Decoded raw(Object("/Size 1 /W [1 1 1] /Length 3", "\n\n\n", "\r\n"));
  EXPECT_THAT(raw.Records(), ElementsAre(Record{10, 10, 10}));
}

TEST(DecodeRecords, NamesOfFiltersAreNotCompared) {
  std::string const packed = Deflate(Raw({{1, 500, 0}}));
  std::string const length = "/Length " + std::to_string(packed.size());
  EXPECT_EQ(Decoded(Object("/Filter /Other /Size 1 /W [1 2 1] " + length, packed)).result, 1);
  EXPECT_EQ(
      Decoded(Object("/Filter /ASCII85Decode /Size 1 /W [1 2 1] /Length 9", "87cURD]i~>")).result,
      0);
}

// Kept: each pass inflates the raw data, and the second takes the size of the first output for its
// input, which must be enough.
TEST(DecodeRecords, SecondFilterInflatesTheRawDataAgain) {
  std::string const records = Raw({{1, 500, 0}}) + std::string(200, '\0');
  std::string const packed = Deflate(records);
  std::string const keys = "/Filter [/A /B] /Size 1 /W [1 2 1] /Length ";
  Decoded section(Object(keys + std::to_string(packed.size()), packed));
  EXPECT_EQ(section.result, 1);
  EXPECT_THAT(section.Records(), ElementsAre(Record{1, 500, 0}));
  std::string const one = Deflate(Raw({{1, 500, 0}}));  // longer than what comes out
  EXPECT_EQ(Decoded(Object(keys + std::to_string(one.size()), one)).result, 0);
}

TEST(DecodeRecords, LengthThatCutsTheDataFails) {
  std::string const packed = Deflate(Raw({{1, 500, 0}}));
  EXPECT_EQ(
      Decoded(Object("/Filter /A /Size 1 /W [1 2 1] /Length " + std::to_string(packed.size() - 1),
                     packed))
          .result,
      0);
}

TEST(DecodeRecords, LengthBeyondTheSectionReadsAsZeros) {
  std::string const packed = Deflate(Raw({{1, 500, 0}}));
  EXPECT_EQ(Decoded(Object("/Filter /A /Size 1 /W [1 2 1] /Length 2147483647", packed)).result, 1);
  // Without a filter the records after the section are all zeros: 4 + 18 bytes of "\nendstream..."
  // come before them.
  Decoded raw(Object("/Size 8 /W [1 2 1] /Length 2147483647", Raw({{1, 500, 0}})));
  ASSERT_EQ(raw.Records().size(), 8u);
  EXPECT_EQ(raw.Records()[0], (Record{1, 500, 0}));
  EXPECT_EQ(raw.Records()[7], (Record{0, 0, 65535}));
}

TEST(DecodeRecords, NeedsKeywordAndTwoIntegersInFront) {
  EXPECT_EQ(Decoded("7 0 obj <</Length 1 /Size 1>> endobj").result, 0);
  EXPECT_EQ(Decoded("x 0 obj <</Length 1 /Size 1>> stream\n1\nendobj").result, 0);
  EXPECT_EQ(Decoded("7 obj <</Length 1 /Size 1>> stream\n1\nendobj").result, 0);
  EXPECT_EQ(Decoded("7 0\n<</Length 1 /Size 1>> stream\n1\nendobj").result, 1);
}

TEST(DecodeRecords, PredictorRowsAreUndone) {
  std::string const rows = test::PngRows(Raw({{1, 500, 0}, {1, 600, 0}, {1, 700, 0}}), 4, 2);
  Decoded section = Flate("/Size 3 /W [1 2 1] /DecodeParms <</Predictor 12 /Columns 4 >> ", rows);
  EXPECT_THAT(section.Records(),
              ElementsAre(Record{1, 500, 0}, Record{1, 600, 0}, Record{1, 700, 0}));
  EXPECT_EQ(XrefProbe::DecodedSize(*section.document), 15u);
}

// Kept: the size still counts the tags, so that a table whose counts allow it reads on.
TEST(DecodeRecords, BytesBehindTheUndoneRowsAreReadIfTheCountsAllow) {
  std::string const rows = test::PngRows(Raw({{1, 1, 0}, {1, 2, 0}, {1, 3, 0}, {1, 4, 0}}), 4, 0);
  Decoded section = Flate("/Size 9 /W [1 2 1] /DecodeParms <</Predictor 10 /Columns 4 >> ", rows);
  EXPECT_EQ(section.Records().size(), 5u);  // 20 bytes
}

TEST(DecodeRecords, SizeOfOneSkipsThePredictor) {
  Decoded section = Flate("/Size 1 /W [1 2 1] /DecodeParms <</Predictor 2 >> ", Raw({{1, 500, 0}}));
  EXPECT_THAT(section.Records(), ElementsAre(Record{1, 500, 0}));
}

TEST(DecodeRecords, SizeOfZeroSkipsThePredictor) {
  Decoded section =
      Flate("/Size 0 /Index [0 1] /W [1 2 1] /DecodeParms <</Predictor 2 >> ", Raw({{1, 500, 0}}));
  EXPECT_EQ(section.result, 1);
  EXPECT_THAT(section.Records(), ElementsAre(Record{1, 500, 0}));
}

TEST(DecodeRecords, TiffPredictorFails) {
  EXPECT_EQ(Flate("/Size 2 /W [1 2 1] /DecodeParms <</Predictor 2 >> ", Raw({{1, 500, 0}})).result,
            0);
}

TEST(DecodeRecords, ParametersOfTheSectionBeforeStand) {
  std::string const rows = Deflate(test::PngRows(Raw({{1, 500, 0}, {1, 600, 0}}), 4, 2));
  std::string const keys =
      "/Filter /A /Size 2 /W [1 2 1] /Length " + std::to_string(rows.size()) + " ";
  std::string const first = Object(keys + "/DecodeParms <</Predictor 12 /Columns 4 >> ", rows);
  Decoded section(first + Object(keys, rows));
  section.document->MergeRecords();
  section.document->Prev() = first.size();
  EXPECT_EQ(section.Step(true), 1);
  EXPECT_THAT(section.Records(), ElementsAre(Record{1, 500, 0}, Record{1, 600, 0}));
}

// Kept: neither is a section of one row read by them, nor are its own parameters taken.
TEST(DecodeRecords, SizeOfOneLeavesTheParametersOfTheSectionBeforeAlone) {
  std::string const rows = Deflate(test::PngRows(Raw({{1, 500, 0}, {1, 600, 0}}), 4, 2));
  std::string const plain = Deflate(Raw({{1, 700, 0}}));
  auto const keys = [](std::string const& packed, std::string const& size) {
    return "/Filter /A /W [1 2 1] /Length " + std::to_string(packed.size()) + " /Size " + size;
  };
  std::string const first =
      Object(keys(rows, "2 ") + "/DecodeParms <</Predictor 12 /Columns 4 >> ", rows);
  std::string const second = Object(keys(plain, "1 ") + "/DecodeParms <</Predictor 2 >> ", plain);
  Decoded section(first + second + Object(keys(rows, "2 "), rows));
  section.document->MergeRecords();
  section.document->Prev() = first.size();
  EXPECT_EQ(section.Step(true), 1);
  EXPECT_THAT(section.Records(), ElementsAre(Record{1, 700, 0}));
  section.document->MergeRecords();
  section.document->Prev() = first.size() + second.size();
  EXPECT_EQ(section.Step(true), 1);
  EXPECT_THAT(section.Records(), ElementsAre(Record{1, 500, 0}, Record{1, 600, 0}));
}

// Sections that are merged one after the other, newest first.
struct Merged {
  struct Part {
    DWORD size;
    std::string index;
    std::vector<Record> records;
  };
  explicit Merged(std::vector<Part> const& parts) : document(Text(parts)) {
    for (size_t i = 0; i < parts.size(); ++i) {
      document->Prev() = offsets[i];
      result = document->LoadSection(false, true) != 0 && document->ParseStreamDict() != 0 &&
               document->DecodeRecords() != 0 && document->MergeRecords() != 0;
    }
  }
  std::string Text(std::vector<Part> const& parts) {
    std::string text;
    for (Part const& part : parts) {
      offsets.push_back(text.size());
      std::string const data = Raw(part.records);
      std::string const index = part.index.empty() ? "" : "/Index [" + part.index + "] ";
      text += Object("/Size " + std::to_string(part.size) + " /W [1 2 1] /Length " +
                         std::to_string(data.size()) + " " + index,
                     data);
    }
    return text;
  }
  Record Entry(size_t number) {
    auto const& entry = document->ObjectIndex().at(number);
    return {entry.nType, static_cast<DWORD>(entry.nOffset), entry.nGeneration};
  }
  std::vector<std::pair<uint64_t, bool>> Marks() {
    std::vector<std::pair<uint64_t, bool>> marks;
    for (auto const& mark : XrefProbe::Marks(*document)) {
      marks.push_back({mark.nOffset, mark.pExtent != nullptr});
    }
    return marks;
  }
  std::vector<size_t> offsets;
  XrefDocument document;
  int result = 0;
};

TEST(MergeRecords, PlacesRecordsByTheirSubsections) {
  Merged merged({{11, "3 2 10 1", {{1, 30, 0}, {1, 40, 0}, {1, 100, 0}}}});
  EXPECT_EQ(merged.result, 1);
  EXPECT_EQ(merged.Entry(3), (Record{1, 30, 0}));
  EXPECT_EQ(merged.Entry(4), (Record{1, 40, 0}));
  EXPECT_EQ(merged.Entry(10), (Record{1, 100, 0}));
  EXPECT_EQ(merged.Entry(5), (Record{0, 0, 0}));
}

TEST(MergeRecords, WithoutIndexTheRecordsAreThoseOfObjectsFromZeroUpToSize) {
  Merged merged({{3, "", {{1, 10, 0}, {1, 20, 0}, {1, 30, 0}, {1, 40, 0}}}});
  ASSERT_EQ(merged.document->ObjectIndex().size(), 3u);
  EXPECT_EQ(merged.Entry(0), (Record{1, 10, 0}));
  EXPECT_EQ(merged.Entry(1), (Record{1, 20, 0}));
  EXPECT_EQ(merged.Entry(2), (Record{1, 30, 0}));
  EXPECT_THAT(merged.Marks(),
              ElementsAre(std::pair(10u, true), std::pair(20u, true), std::pair(30u, true)));
}

// /Size and the first subsection's first number together.
TEST(MergeRecords, IndexGrowsToSizePlusFirstNumber) {
  EXPECT_EQ(Merged({{11, "3 1", {{1, 30, 0}}}}).document->ObjectIndex().size(), 14u);
  EXPECT_EQ(Merged({{11, "", {{1, 30, 0}}}}).document->ObjectIndex().size(), 11u);
  EXPECT_EQ(Merged({{11, "", {}}, {4, "", {}}}).document->ObjectIndex().size(), 11u);
}

TEST(MergeRecords, SubsectionsAreUsedUp) {
  Merged merged({{11, "3 2 10 1", {{1, 30, 0}}}});
  EXPECT_THAT(XrefProbe::Subsections(*merged.document), IsEmpty());
}

TEST(MergeRecords, EnterExtentsAndMarks) {
  Merged merged({{4, "1 3", {{1, 30, 2}, {2, 9, 5}, {0, 7, 0}}}});
  auto& extents = merged.document->Extents();
  ASSERT_EQ(extents.size(), 3u);
  EXPECT_EQ(extents.Find(ObjectId{1, 2})->nStart, 30u);
  EXPECT_EQ(extents.Find(ObjectId{1, 2})->nEnd, 0u);
  EXPECT_EQ(extents.Find(ObjectId{2, 5})->nStart, 9u);
  EXPECT_EQ(extents.Find(ObjectId{3, 65535})->nStart, 7u);
  EXPECT_THAT(merged.Marks(), ElementsAre(std::pair(30u, true)));
}

TEST(MergeRecords, NewerEntryStaysAndTheOlderOffsetIsABoundary) {
  Merged merged({{4, "1 1", {{1, 90, 0}}}, {4, "1 1", {{1, 30, 0}}}});
  EXPECT_EQ(merged.Entry(1), (Record{1, 90, 0}));
  EXPECT_THAT(merged.Marks(), ElementsAre(std::pair(90u, true), std::pair(30u, false)));
}

TEST(MergeRecords, OlderEntryOfAnotherTypeIsNoBoundary) {
  Merged merged({{4, "1 1", {{2, 9, 0}}}, {4, "1 1", {{2, 8, 0}}}});
  EXPECT_EQ(merged.Entry(1), (Record{2, 9, 0}));
  EXPECT_THAT(merged.Marks(), IsEmpty());
}

// Kept: a free entry protects nothing.
TEST(MergeRecords, FreeEntryIsReplacedByAnOlderSection) {
  Merged merged({{4, "1 1", {{0, 0, 0}}}, {4, "1 1", {{1, 30, 0}}}});
  EXPECT_EQ(merged.Entry(1), (Record{1, 30, 0}));
}

TEST(MergeRecords, LaterRecordReplacesTheExtentOfItsNumberAndGeneration) {
  Merged merged({{4, "1 1 1 1", {{0, 5, 0}, {0, 6, 0}}}});
  EXPECT_EQ(merged.document->Extents().Find(ObjectId{1, 65535})->nStart, 6u);
}

TEST(MergeRecords, RecordBeyondTheIndexKeepsExtentAndMark) {
  Merged merged({{4, "0 1 50 1", {{1, 30, 0}, {1, 60, 0}}}});
  EXPECT_EQ(merged.result, 1);
  EXPECT_EQ(merged.document->ObjectIndex().size(), 4u);
  EXPECT_EQ(merged.document->Extents().Find(ObjectId{50, 0})->nStart, 60u);
  EXPECT_THAT(merged.Marks(), ElementsAre(std::pair(30u, true), std::pair(60u, true)));
}

TEST(MergeRecords, IndexBeyondTheObjectTableFails) {
  EXPECT_EQ(Merged({{90050, "", {}}}).result, 1);
  Merged beyond({{90051, "", {}}});
  EXPECT_EQ(beyond.result, 0);
  EXPECT_TRUE(beyond.document->IsTooLarge());
  EXPECT_EQ(Merged({{90000, "51 1", {}}}).result, 0);
  EXPECT_EQ(Merged({{4294967295, "4294967295 1", {}}}).result, 0);
  EXPECT_THAT(beyond.document->ObjectIndex(), IsEmpty());
}

// Both lists name more numbers than there are rows, but only the second has the records for it.
TEST(DecodeRecords, RecordsOfOneSectionUpToTheObjectTableAreRead) {
  Decoded section =
      Flate("/Size 90000 /W [1 0 0] /Index [0 90050 0 90050]", std::string(90050, '\1'));
  EXPECT_EQ(section.result, 1);
  EXPECT_EQ(XrefProbe::RecordCount(*section.document), 90050u);
}

TEST(DecodeRecords, MoreRecordsInOneSectionThanTheObjectTableFail) {
  Decoded section =
      Flate("/Size 90000 /W [1 0 0] /Index [0 90050 0 90050]", std::string(90051, '\1'));
  EXPECT_EQ(section.result, 0);
  EXPECT_TRUE(section.document->IsTooLarge());
}

TEST(DecodeRecords, SectionsTogetherMayHaveMoreRecordsThanTheObjectTable) {
  Decoded section = Flate("/Size 90000 /W [1 0 0]", std::string(90000, '\1'));
  for (int i = 0; i < 5; ++i) EXPECT_EQ(section.Step(false), 1);
}

// Extents in the order in which the marks were added; nullopt is a boundary.
std::vector<DWORD> Ends(std::vector<std::pair<uint64_t, bool>> const& given) {
  XrefDocument document("");
  std::vector<ObjectExtent> extents(given.size());
  for (size_t i = 0; i < given.size(); ++i) {
    auto const& [offset, has_extent] = given[i];
    XrefProbe::Marks(*document).push_back({offset, has_extent ? &extents[i] : nullptr});
  }
  document->FinishExtents();
  std::vector<DWORD> ends;
  for (ObjectExtent const& extent : extents) ends.push_back(extent.nEnd);
  return ends;
}

TEST(FinishExtents, EndsEachExtentAtTheNextMark) {
  EXPECT_THAT(Ends({{300, true}, {100, true}, {200, true}}), ElementsAre(0, 200, 300));
  EXPECT_THAT(Ends({{100, true}, {150, false}, {200, true}}), ElementsAre(150, 0, 0));
}

TEST(FinishExtents, OneMarkEndsNothing) { EXPECT_THAT(Ends({{100, true}}), ElementsAre(0)); }

TEST(FinishExtents, EqualOffsetsKeepTheirOrder) {
  EXPECT_THAT(Ends({{100, true}, {100, false}, {200, false}}), ElementsAre(100, 0, 0));
  EXPECT_THAT(Ends({{100, false}, {100, true}, {200, false}}), ElementsAre(0, 200, 0));
}

TEST(FinishExtents, LowBitsCountAsSignedNumbers) {
  EXPECT_THAT(Ends({{100, true}, {0x80000000, true}}), ElementsAre(0, 100));
  EXPECT_THAT(Ends({{0x100000050, true}, {100, true}}), ElementsAre(100, 0));
}

}  // namespace
