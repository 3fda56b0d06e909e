// One section of the stream route: how its object is read, and what its dictionary says.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/frame/string_error.h>
#include <tests/support/xref_document.h>

namespace {

using test::XrefDocument;
using testing::ElementsAre;
using testing::IsEmpty;

// A document that is one section's object.
std::string Object(std::string const& keys, std::string const& data = {}) {
  return "7 0 obj\n<<" + keys + " >>\nstream\n" + data + "\nendstream\nendobj";
}

struct Loaded {
  explicit Loaded(std::string const& text) : document(text) {
    result = document->LoadSection(false, false);
  }
  std::string Text() { return test::ToText(document->SectionText()); }
  sorrelin::CXRefStm* operator->() { return &*document; }
  sorrelin::CXRefStm& operator*() { return *document; }
  XrefDocument document;
  int result;
};

TEST(LoadSection, EndsBehindTheFirstEndobj) {
  std::string const object = Object("/A 1");
  Loaded section(object + "\n8 0 obj\n1\nendobj\n");
  EXPECT_EQ(section.result, 1);
  EXPECT_EQ(section.Text(), object);
}

TEST(LoadSection, KeepsNulBytes) {
  std::string const object = Object("/A 1", std::string("a\0b", 3));
  EXPECT_EQ(Loaded(object).Text(), object);
}

TEST(LoadSection, FindsEndobjWhereverReadsEnd) {
  for (size_t bytes : {230u, 240u, 250u, 4000u, 4090u, 4096u, 8180u, 8192u, 20000u}) {
    for (size_t more = 0; more < 20; ++more) {
      std::string const object = Object("/A 1", std::string(bytes + more, 'x'));
      EXPECT_EQ(Loaded(object + "\nendobj").Text(), object) << bytes + more;
    }
  }
}

TEST(LoadSection, FailsWithoutEndobj) {
  EXPECT_EQ(Loaded("7 0 obj <</A 1>>" + std::string(1000, ' ')).result, 0);
  EXPECT_EQ(Loaded("").result, 0);
}

TEST(LoadSection, FailsWithTrailerInItsText) {
  EXPECT_EQ(Loaded(Object("/A (trailer)")).result, 0);
}

TEST(LoadSection, TakesItsOffsetFromWhatIsAskedFor) {
  std::string const first = Object("/A 1");
  std::string const second = Object("/B 2");
  XrefDocument document(first + second);
  XrefProbe::StartXref(*document) = static_cast<int32_t>(first.size());
  document->Prev() = 3;
  EXPECT_EQ(document->LoadSection(false, false), 1);
  EXPECT_EQ(test::ToText(document->SectionText()), second);
  EXPECT_EQ(document->LoadSection(true, false), 1);
  EXPECT_EQ(test::ToText(document->SectionText()), first);
  EXPECT_EQ(document->LoadSection(true, true), 1);
  EXPECT_EQ(test::ToText(document->SectionText()), first.substr(3));
}

TEST(TrailerKeys, RootAndInfo) {
  Loaded section(Object("/Root 3 1 R /Info 4 2 R"));
  EXPECT_EQ(section->ReadTrailerKeys(), 1);
  EXPECT_EQ(*section->Root(), (sorrelin::ObjectId{3, 1}));
  EXPECT_EQ(*section->Info(), (sorrelin::ObjectId{4, 2}));
}

TEST(TrailerKeys, InfoMayBeMissing) {
  Loaded section(Object("/Root 3 0 R"));
  EXPECT_EQ(section->ReadTrailerKeys(), 1);
  EXPECT_EQ(section->Info(), nullptr);
}

TEST(TrailerKeys, RootMayNot) {
  EXPECT_EQ(Loaded(Object("/Info 3 0 R"))->ReadTrailerKeys(), 0);
  EXPECT_EQ(Loaded(Object("/Root 3 R"))->ReadTrailerKeys(), 0);
}

TEST(TrailerKeys, InfoWithoutTwoNumbersFails) {
  EXPECT_EQ(Loaded(Object("/Root 3 0 R /Info null"))->ReadTrailerKeys(), 0);
}

TEST(StreamDict, NeedsLengthAndSize) {
  EXPECT_EQ(Loaded(Object("/Length 5 /Size 3"))->ParseStreamDict(), 1);
  EXPECT_EQ(Loaded(Object("/Size 3"))->ParseStreamDict(), 0);
  EXPECT_EQ(Loaded(Object("/Length 5"))->ParseStreamDict(), 0);
}

TEST(StreamDict, LengthByReferenceIsTheObjectNumber) {
  Loaded section(Object("/Length 12 0 R /Size 3"));
  EXPECT_EQ(section->ParseStreamDict(), 1);
  EXPECT_EQ(XrefProbe::Length(*section), 12u);
}

std::vector<std::string> FilterNames(std::string const& keys) {
  Loaded section(Object("/Length 5 /Size 3 " + keys));
  section->ParseStreamDict();
  return XrefProbe::FilterNames(*section);
}

TEST(StreamDict, FilterNamesAreSplitAtTheirSolidus) {
  EXPECT_THAT(FilterNames("/Filter /FlateDecode"), ElementsAre("/FlateDecode"));
  EXPECT_THAT(FilterNames("/Filter [/A /B]"), ElementsAre("/A ", "/B"));
  EXPECT_THAT(FilterNames("/Filter[/A/B]"), ElementsAre("/A", "/B"));
  EXPECT_THAT(FilterNames(""), IsEmpty());
  EXPECT_THAT(FilterNames("/Filter null"), IsEmpty());
}

TEST(StreamDict, EachSectionHasItsOwnFilters) {
  std::string const first = Object("/Length 5 /Size 3 /Filter /A");
  XrefDocument document(first + Object("/Length 5 /Size 3"));
  document->LoadSection(false, false);
  document->ParseStreamDict();
  document->Prev() = first.size();
  document->LoadSection(false, true);
  document->ParseStreamDict();
  EXPECT_THAT(XrefProbe::FilterNames(*document), IsEmpty());
}

std::vector<DWORD> Widths(std::string const& array) {
  Loaded section(Object("/Length 5 /Size 3 /W " + array));
  section->ParseStreamDict();
  auto const& widths = XrefProbe::FieldWidth(*section);
  return {widths[0], widths[1], widths[2]};
}

TEST(StreamDict, FieldWidthsAreTheFirstThreeTokens) {
  EXPECT_THAT(Widths("[1 2 3]"), ElementsAre(1, 2, 3));
  EXPECT_THAT(Widths("[1 2 3 4]"), ElementsAre(1, 2, 3));
  EXPECT_THAT(Widths("[ 1  2   3 ]"), ElementsAre(1, 2, 3));
  EXPECT_THAT(Widths("[1 2]"), ElementsAre(1, 2, 0));
  EXPECT_THAT(Widths("[1 2\n3]"), ElementsAre(1, 2, 0));
  EXPECT_THAT(Widths("[1x y 3]"), ElementsAre(1, 0, 3));
  EXPECT_THAT(Widths("[99999999999 0 0]"), ElementsAre(2147483647, 0, 0));
}

std::vector<std::pair<DWORD, DWORD>> Subsections(std::string const& keys) {
  Loaded section(Object("/Length 5 /Size 3 " + keys));
  section->ParseStreamDict();
  std::vector<std::pair<DWORD, DWORD>> pairs;
  for (auto const& subsection : XrefProbe::Subsections(*section)) {
    pairs.push_back({subsection.nFirst, subsection.nCount});
  }
  return pairs;
}

TEST(StreamDict, IndexIsPairsOfTokens) {
  using testing::Pair;
  EXPECT_THAT(Subsections(""), ElementsAre(Pair(0, 3)));
  EXPECT_THAT(Subsections("/Index []"), ElementsAre(Pair(0, 3)));
  EXPECT_THAT(Subsections("/Index [3 2]"), ElementsAre(Pair(3, 2)));
  EXPECT_THAT(Subsections("/Index [3 2 10 1]"), ElementsAre(Pair(3, 2), Pair(10, 1)));
  EXPECT_THAT(Subsections("/Index [  3   2 ]"), ElementsAre(Pair(3, 2)));
}

TEST(StreamDict, OddIndexThrows) {
  for (char const* index : {"/Index [3]", "/Index [3 2 10]"}) {
    Loaded section(Object(std::string("/Length 5 /Size 3 ") + index));
    try {
      section->ParseStreamDict();
      ADD_FAILURE() << index;
    } catch (SorrelinStringError const& error) {
      EXPECT_EQ(error.code(), 0x80070057u);
    }
  }
}

// The size is asked for first.
TEST(StreamDict, OddIndexWithoutSizeFailsWithoutThrowing) {
  EXPECT_EQ(Loaded(Object("/Length 5 /Index [3 2 10]"))->ParseStreamDict(), 0);
}

TEST(StreamDict, PrevStaysWhereThereIsNone) {
  Loaded with(Object("/Length 5 /Size 3 /Prev 99"));
  with->ParseStreamDict();
  EXPECT_EQ(with->Prev(), 99u);
  Loaded without(Object("/Length 5 /Size 3"));
  without->Prev() = 44;
  without->ParseStreamDict();
  EXPECT_EQ(without->Prev(), 44u);
}

}  // namespace
