// Sections of a classic table, one by one.
#include <gtest/gtest.h>
#include <tests/support/open_document.h>

#include <cstdio>

namespace {

using test::OpenDocument;
using test::PdfBuilder;

// The standing part of most tests: objects 1 to `count`, and where they are.
struct Objects {
  explicit Objects(DWORD count, std::string eol = "\n") : pdf("%PDF-1.4", std::move(eol)) {
    for (DWORD i = 1; i <= count; ++i) pdf.Object(i, "<</A 1 >>");
  }
  std::string Entry(DWORD number, char letter = 'n', std::string const& end = " \n") const {
    return Line(pdf.OffsetOf(number), 0, letter, end);
  }
  static std::string Line(size_t offset, unsigned generation, char letter = 'n',
                          std::string const& end = " \n") {
    char text[32];
    std::snprintf(text, sizeof text, "%010zu %05u %c", offset, generation, letter);
    return text + end;
  }
  PdfBuilder pdf;
};

std::string const kTrailer = "trailer\n<</Size 9 /Root 1 0 R >>\n" + std::string(80, '%');

// A document with the section after its objects, read as the newest.
struct Section {
  Section(PdfBuilder const& pdf, std::string const& text, int older = 0)
      : document(test::ToBytes(pdf.Content() + text)) {
    result = document->BuildObjectListFromXrefTable(static_cast<DWORD>(pdf.Size()), older);
  }
  DWORD Offset(DWORD number) { return document.row(number).nOffset; }
  OpenDocument document;
  int result;
};

TEST(ClassicTable, ReadsOffsetGenerationAndLetter) {
  Objects objects(2);
  Section section(objects.pdf, "xref\n0 3\n" + Objects::Line(0, 65535, 'f') + objects.Entry(1) +
                                   Objects::Line(objects.pdf.OffsetOf(2), 7, 'f') + kTrailer);
  EXPECT_EQ(section.result, 1);
  sorrelin::ObjectEntry const first = section.document.row(1);
  EXPECT_EQ(first.nOffset, objects.pdf.OffsetOf(1));
  EXPECT_EQ(first.nGeneration, 0u);
  EXPECT_EQ(first.bInUse, 1u);
  EXPECT_EQ(section.document.row(2).nGeneration, 7u);
  EXPECT_EQ(section.document.row(2).bInUse, 0u);
  EXPECT_EQ(SessionProbe::ObjectsInFile(*section.document), 3u);
}

TEST(ClassicTable, LeavesTheChannelOnTheTrailer) {
  Objects objects(1);
  std::string const table = "xref\n0 1\n" + Objects::Line(0, 65535, 'f') + "\r\n [";
  Section section(objects.pdf, table + kTrailer);
  EXPECT_EQ(section.document.Tell(), objects.pdf.Size() + table.size());
}

struct LineEnd {
  char const* name;
  std::string end;
};
class EntryEnd : public testing::TestWithParam<LineEnd> {};

TEST_P(EntryEnd, DoesNotMatter) {
  Objects objects(2);
  std::string const end = GetParam().end;
  Section section(objects.pdf, "xref\n0 3\n" + Objects::Line(0, 65535, 'f', end) +
                                   objects.Entry(1, 'n', end) + objects.Entry(2, 'n', end) +
                                   kTrailer);
  EXPECT_EQ(section.result, 1);
  EXPECT_EQ(section.Offset(1), objects.pdf.OffsetOf(1));
  EXPECT_EQ(section.Offset(2), objects.pdf.OffsetOf(2));
}

INSTANTIATE_TEST_SUITE_P(Rows, EntryEnd,
                         testing::Values(LineEnd{"Lf", "\n"}, LineEnd{"CrLf", "\r\n"},
                                         LineEnd{"BlankLf", " \n"}, LineEnd{"BlankCr", " \r"},
                                         LineEnd{"None", ""}, LineEnd{"Many", " \r\n  [\n"}),
                         [](auto const& row) { return row.param.name; });

class HeaderEnd : public testing::TestWithParam<LineEnd> {};

TEST_P(HeaderEnd, MayBeAnyDelimiters) {
  Objects objects(1);
  std::string const header = "xref" + GetParam().end + "0 2" + GetParam().end;
  Section section(objects.pdf, header + Objects::Line(0, 65535, 'f') + objects.Entry(1) + kTrailer);
  EXPECT_EQ(section.result, 1);
  EXPECT_EQ(section.Offset(1), objects.pdf.OffsetOf(1));
}

INSTANTIATE_TEST_SUITE_P(Rows, HeaderEnd, testing::Values(LineEnd{"Lf", "\n"}, LineEnd{"Cr", "\r"}),
                         [](auto const& row) { return row.param.name; });

// The length of the line is computed for one character after each word; more of them after the
// count are delimiters in front of the entries.
TEST(ClassicTable, BlanksAndEmptyLinesBehindTheCountAreSkipped) {
  Objects objects(1);
  Section section(objects.pdf,
                  "xref\n0 2  \r\n\n" + Objects::Line(0, 65535, 'f') + objects.Entry(1) + kTrailer);
  EXPECT_EQ(section.result, 1);
  EXPECT_EQ(section.Offset(1), objects.pdf.OffsetOf(1));
}

// With CR LF after "xref" the computed place is the LF, a delimiter, or the count's line end.
TEST(ClassicTable, CrLfLineEndsReadTheSame) {
  Objects objects(1, "\r\n");
  Section section(objects.pdf, "xref\r\n0 2\r\n" + Objects::Line(0, 65535, 'f', "\r\n") +
                                   objects.Entry(1, 'n', "\r\n") + kTrailer);
  EXPECT_EQ(section.result, 1);
  EXPECT_EQ(section.Offset(1), objects.pdf.OffsetOf(1));
}

// "xref 00 2" is a character longer than "xref 0 2": the entries are looked for in the count.
TEST(ClassicTable, LongerHeaderThanItsNumbersIsReadFromTheWrongPlace) {
  Objects objects(1);
  Section section(objects.pdf,
                  "xref\n0000 2\n" + Objects::Line(0, 65535, 'f') + objects.Entry(1) + kTrailer);
  EXPECT_NE(section.Offset(1), objects.pdf.OffsetOf(1));
}

TEST(ClassicTable, SecondSubsectionIsMeasuredWithoutTheKeyword) {
  Objects objects(3);
  Section section(objects.pdf, "xref\n0 1\n" + Objects::Line(0, 65535, 'f') + "2 2\n" +
                                   objects.Entry(2) + objects.Entry(3) + kTrailer);
  EXPECT_EQ(section.result, 1);
  EXPECT_EQ(section.Offset(1), 0u);
  EXPECT_EQ(section.Offset(2), objects.pdf.OffsetOf(2));
  EXPECT_EQ(section.Offset(3), objects.pdf.OffsetOf(3));
}

TEST(ClassicTable, CountOfZeroGoesToTheTrailer) {
  Objects objects(1);
  Section section(objects.pdf, "xref\n0 0\n" + kTrailer);
  EXPECT_EQ(section.result, 1);
  EXPECT_EQ(SessionProbe::ObjectsInFile(*section.document), 0u);
}

// Kept: neither the subsection's first number nor the entry's place in it has an effect.
TEST(ClassicTable, ObjectHeaderGivesTheNumber) {
  PdfBuilder pdf;
  pdf.Object(5, "5");
  pdf.Object(7, "7");
  Section section(pdf, "xref\n0 6\n" + Objects::Line(pdf.OffsetOf(5), 0) +
                           Objects::Line(0, 0, 'f') + Objects::Line(0, 0, 'f') +
                           Objects::Line(pdf.OffsetOf(7), 0) + Objects::Line(0, 0, 'f') +
                           Objects::Line(0, 0, 'f') + kTrailer);
  EXPECT_EQ(section.result, 1);
  EXPECT_EQ(section.Offset(5), pdf.OffsetOf(5));
  EXPECT_EQ(section.Offset(7), pdf.OffsetOf(7));
  EXPECT_EQ(section.Offset(3), 0u);
  EXPECT_EQ(SessionProbe::ObjectsInFile(*section.document), 8u);
}

// Kept: the last entry that leads to no object is in row 0, and the error stays recorded.
TEST(ClassicTable, EntryWithoutObjectLandsInRowZero) {
  Objects objects(1);
  Section section(objects.pdf, "xref\n0 3\n" + Objects::Line(3, 65535, 'f') + objects.Entry(1) +
                                   Objects::Line(2, 11, 'f') + kTrailer);
  EXPECT_EQ(section.result, 1);
  EXPECT_EQ(section.document.error(), 24u);
  EXPECT_EQ(section.Offset(0), 2u);
  EXPECT_EQ(section.document.row(0).nGeneration, 11u);
}

TEST(ClassicTable, FreeEntryOfOffsetZeroSetsNoError) {
  Objects objects(1);
  Section section(objects.pdf, "xref\n0 1\n" + Objects::Line(0, 65535, 'f') + kTrailer);
  EXPECT_EQ(section.document.error(), 0u);
  EXPECT_EQ(section.document.row(0).nGeneration, 65535u);
}

TEST(ClassicTable, LaterEntryOfTheNewestSectionReplacesAnEarlierOne) {
  PdfBuilder pdf;
  size_t const first = pdf.Object(4, "1");
  size_t const second = pdf.Object(4, "2");
  Section section(pdf,
                  "xref\n0 2\n" + Objects::Line(first, 0) + Objects::Line(second, 0) + kTrailer);
  EXPECT_EQ(section.Offset(4), second);
}

TEST(ClassicTable, OlderSectionFillsOnlyRowsWithoutOffset) {
  PdfBuilder pdf;
  size_t const first = pdf.Object(4, "1");
  size_t const second = pdf.Object(4, "2");
  Section section(pdf,
                  "xref\n0 2\n" + Objects::Line(first, 0) + Objects::Line(second, 0) + kTrailer, 1);
  EXPECT_EQ(section.Offset(4), first);
}

TEST(ClassicTable, OffsetZeroIsNoSectionAndNoError) {
  OpenDocument document(test::ToBytes(std::string(200, ' ')));
  EXPECT_EQ(document->BuildObjectListFromXrefTable(0, 0), 0);
  EXPECT_EQ(document.error(), 0u);
}

TEST(ClassicTable, HighestSectionOffsetIsKept) {
  Objects objects(1);
  std::string const table = "xref\n0 1\n" + Objects::Line(0, 65535, 'f') + kTrailer;
  OpenDocument document(test::ToBytes(objects.pdf.Content() + table + table));
  DWORD const first = static_cast<DWORD>(objects.pdf.Size());
  DWORD const second = first + static_cast<DWORD>(table.size());
  EXPECT_EQ(document->BuildObjectListFromXrefTable(second, 0), 1);
  EXPECT_EQ(document->BuildObjectListFromXrefTable(first, 1), 1);
  EXPECT_EQ(SessionProbe::MaxSectionOffset(*document), second);
}

TEST(ClassicTable, LetterThatIsNeitherCountsAsFree) {
  Objects objects(1);
  Section section(objects.pdf, "xref\n0 1\n" + objects.Entry(1, 'x') + kTrailer);
  EXPECT_EQ(section.result, 1);
  EXPECT_EQ(section.Offset(1), objects.pdf.OffsetOf(1));
  EXPECT_EQ(section.document.row(1).bInUse, 0u);
}

TEST(ClassicTable, EntriesBeforeABadOneStay) {
  Objects objects(2);
  Section section(objects.pdf,
                  "xref\n1 2\n" + objects.Entry(1) + "abcdefghij 00000 n \n" + kTrailer);
  EXPECT_EQ(section.result, 0);
  EXPECT_EQ(section.document.error(), 24u);
  EXPECT_EQ(section.Offset(1), objects.pdf.OffsetOf(1));
  EXPECT_EQ(section.Offset(2), 0u);
  EXPECT_EQ(SessionProbe::ObjectsInFile(*section.document), 2u);
}

TEST(ClassicTable, OffsetThatAFileCannotSeekToIsErrorOne) {
  OpenDocument document(test::Bytes(200, ' '), test::Target::kFile);
  EXPECT_EQ(document->BuildObjectListFromXrefTable(0x80000000, 0), 0);
  EXPECT_EQ(document.error(), 1u);
}

struct FailureRow {
  char const* name;
  std::string text;  // after object 1
  DWORD error;
};
class TableFailure : public testing::TestWithParam<FailureRow> {};

TEST_P(TableFailure, EndsTheSection) {
  Objects objects(1);
  Section section(objects.pdf, GetParam().text);
  EXPECT_EQ(section.result, 0);
  EXPECT_EQ(section.document.error(), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, TableFailure,
    testing::Values(FailureRow{"FewerThanFiftyBytes", "xref\n0 1\n0000000000 65535 f \ntrailer", 1},
                    FailureRow{"NoNumbers", "xref\n" + std::string(60, 'x'), 1},
                    FailureRow{"OneNumber", "xref\n5 " + std::string(60, 'x'), 1},
                    FailureRow{"EntryWithoutLetter",
                               "xref\n0 1\n0000000000 65535  " + std::string(60, ' '), 24},
                    FailureRow{"EntryOfText",
                               "xref\n0 2\nabcdefghijklmnopqrst" + std::string(60, 'x'), 24},
                    FailureRow{"EntryOfDelimiters", "xref\n0 2\n" + std::string(90, '\n'), 24},
                    FailureRow{"FewerThanEighteenBytesForAnEntry",
                               "xref\n0 3\n0000000000 65535 f \n0000000000 65535 f \n00000", 1},
                    FailureRow{"FewerThanSevenBytesBehindTheEntries",
                               "xref\n0 2\n0000000000 65535 f \n0000000000 65535 f \ntrail", 1}),
    [](auto const& row) { return row.param.name; });

// Entries after 18 delimiters are cut off by the 36 bytes that are looked at.
TEST(ClassicTable, EntryIsLookedForInThirtySixBytes) {
  Objects objects(1);
  Section fits(objects.pdf, "xref\n0 1\n" + Objects::Line(0, 1, 'n') + kTrailer);
  std::string const gap(18, '\n');
  Section last(objects.pdf,
               "xref\n0 2\n" + Objects::Line(0, 1) + gap + objects.Entry(1) + kTrailer);
  EXPECT_EQ(fits.result, 1);
  EXPECT_EQ(last.result, 0);
  EXPECT_EQ(last.document.error(), 24u);
}

TEST(ClassicTable, NumberBeyondThirtyTwoBitsIsTheNearestBound) {
  Objects objects(1);
  Section section(objects.pdf, "xref\n0 1\n0000000000 99999999999 n\n" + kTrailer);
  // The entry is cut after 18 characters: the generation keeps seven digits and no letter is left.
  EXPECT_EQ(section.result, 0);
  Section large(objects.pdf, "xref\n0 1\n9999999999 00000 n \n" + kTrailer);
  EXPECT_EQ(large.Offset(0), 2147483647u);
}

TEST(ClassicTable, ObjectNumberBeyondTheTableIsErrorTen) {
  PdfBuilder pdf;
  pdf.Object(90049, "last");
  pdf.Object(90050, "beyond");
  Section last(pdf, "xref\n0 1\n" + Objects::Line(pdf.OffsetOf(90049), 0) + kTrailer);
  EXPECT_EQ(last.result, 1);
  EXPECT_EQ(SessionProbe::ObjectsInFile(*last.document), 90050u);
  Section beyond(pdf, "xref\n0 1\n" + Objects::Line(pdf.OffsetOf(90050), 0) + kTrailer);
  EXPECT_EQ(beyond.result, 0);
  EXPECT_EQ(beyond.document.error(), 10u);
}

// Real sections do not overlap; what lists more entries than the document has room for ends.
TEST(ClassicTable, MoreEntriesThanTheDocumentHasRoomForEnd) {
  Objects objects(1);
  std::string const table =
      "xref\n0 2\n" + Objects::Line(0, 65535, 'f') + objects.Entry(1) + kTrailer;
  OpenDocument document(test::ToBytes(objects.pdf.Content() + table));
  DWORD const at = static_cast<DWORD>(objects.pdf.Size());
  EXPECT_EQ(document->BuildObjectListFromXrefTable(at, 0), 1);
  int reads = 1;
  while (reads < 100 && document->BuildObjectListFromXrefTable(at, 1) != 0) ++reads;
  EXPECT_EQ(reads, static_cast<int>((objects.pdf.Size() + table.size()) / 18 / 2));
}

struct HeaderRow {
  char const* name;
  std::string text;  // at offset 10
  DWORD number;
  DWORD error;
};
class ObjectHeader : public testing::TestWithParam<HeaderRow> {};

TEST_P(ObjectHeader, GivesTheNumber) {
  for (auto const target : {test::Target::kMemory, test::Target::kFile}) {
    OpenDocument document(test::ToBytes("%PDF-1.4 \n" + GetParam().text), target);
    document.Seek(5);
    EXPECT_EQ(document->GetRealObjectNumber(10), GetParam().number);
    EXPECT_EQ(document.error(), GetParam().error);
    EXPECT_EQ(document.Tell(), 5u);
  }
}

std::string Twenty(std::string text) {
  text.resize(20, ' ');
  return text;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ObjectHeader,
    testing::Values(HeaderRow{"Plain", Twenty("12 0 obj\n<<"), 12, 0},
                    HeaderRow{"Generation", Twenty("12 3 obj"), 12, 0},
                    HeaderRow{"WhiteSpaceInFront", Twenty("\r\n\t12\n3\robj"), 12, 0},
                    HeaderRow{"NothingBehindTheKeyword", Twenty("12 0 obj<</A 1>>"), 12, 0},
                    HeaderRow{"KeywordAtTheTwentiethByte", "1234567890123 45 obj", 2147483647, 0},
                    HeaderRow{"KeywordCut", Twenty("123456789012 12345 ") + "obj", 0, 24},
                    HeaderRow{"OtherKeyword", Twenty("12 0 xbj"), 0, 24},
                    HeaderRow{"OneNumber", Twenty("12 obj"), 0, 24},
                    HeaderRow{"NineteenBytes", Twenty("12 0 obj").substr(1), 0, 0}),
    [](auto const& row) { return row.param.name; });

TEST(ObjectHeader, OffsetZeroIsNone) {
  OpenDocument document(test::ToBytes(Twenty("12 0 obj")));
  EXPECT_EQ(document->GetRealObjectNumber(0), 0u);
  EXPECT_EQ(document.error(), 0u);
}

TEST(ObjectHeader, OffsetThatAFileCannotSeekToIsErrorOne) {
  OpenDocument document(test::ToBytes(Twenty("12 0 obj")), test::Target::kFile);
  EXPECT_EQ(document->GetRealObjectNumber(0xFFFFFFFF), 0u);
  EXPECT_EQ(document.error(), 1u);
}

TEST(ObjectHeader, HighestOffsetThatAFileSeeksToIsNoneWithoutACode) {
  OpenDocument document(test::ToBytes(Twenty("12 0 obj")), test::Target::kFile);
  EXPECT_EQ(document->GetRealObjectNumber(0x7FFFFFFF), 0u);
  EXPECT_EQ(document.error(), 0u);
}

}  // namespace
