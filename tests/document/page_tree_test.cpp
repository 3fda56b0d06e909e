// The walk over the page tree, and the test of a page object.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>
#include <tests/support/object_session.h>
#include <tests/support/pdf_builder.h>
#include <tests/support/scan_buffer.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

using test::ObjectSession;
using test::ScanBuffer;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr char kPage[] = "<</Type /Page /MediaBox [0 0 9 9] >>";

// A node, whose text mentions /Kids.
std::string Node(std::string const& kids) { return "<</Type /Pages /Kids [" + kids + "] >>"; }

// A walk over the text of object 2, the pages root.
struct Walk {
  int result = 0;
  std::vector<DWORD> pages;
};

Walk WalkText(ObjectSession& session, std::string const& text) {
  SessionProbe::PagesRoot(*session) = 2;
  SessionProbe::Reader(*session).page_counter = 0;
  ScanBuffer buffer(text);
  Walk walk;
  walk.result = session->ParseKids(buffer.data(), buffer.size());
  DWORD const count = SessionProbe::Reader(*session).page_counter;
  for (DWORD page = 0; page < count; ++page) {
    walk.pages.push_back(session->GetPageObjectNumber(page));
  }
  return walk;
}

Walk WalkTree(std::map<DWORD, std::string> const& objects) {
  ObjectSession session(objects);
  return WalkText(session, ObjectSession::ObjectText(2, objects.at(2)));
}

TEST(PageTree, LeavesComeDepthFirstInOrder) {
  Walk const walk = WalkTree(
      {{2, Node("3 0 R 4 0 R")}, {3, Node("5 0 R 6 0 R")}, {4, kPage}, {5, kPage}, {6, kPage}});
  EXPECT_EQ(walk.result, 1);
  EXPECT_THAT(walk.pages, ElementsAre(5, 6, 4));
}

// Of object streams a page is told by its bytes there, NUL bytes among them; an object that the
// stream does not list is a page like any other that cannot be loaded.
TEST(PageTree, NodesAndPagesOfObjectStreamsAreToldApart) {
  test::PdfBuilder pdf("%PDF-1.5");
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.ObjectStream(9, {{2, Node("3 0 R 4 0 R 6 0 R 7 0 R") + "/Count 4 "},
                       {3, Node("5 0 R")},
                       {4, kPage},
                       {5, kPage},
                       {6, test::WithNuls("<</X (\0) /Kids [] >>")}});
  pdf.Row(7, {2, 9, 5});
  pdf.XrefStream(10);
  test::Bytes bytes = pdf.Document();
  CCreatePDF session;
  ASSERT_EQ(session.OpenPDFFileInMemory(reinterpret_cast<int64_t>(bytes.data()),
                                        static_cast<DWORD>(bytes.size())),
            1);
  std::vector<DWORD> pages;
  for (DWORD page = 0; page < SessionProbe::Reader(session).page_counter; ++page) {
    pages.push_back(session.GetPageObjectNumber(page));
  }
  EXPECT_THAT(pages, ElementsAre(5, 4, 7));
  session.ClosePDFFile();
}

TEST(PageTree, EmptyKidsListNothing) {
  Walk const walk = WalkTree({{2, "<</Type /Pages /Kids [] /Count 5 >>"}});
  EXPECT_EQ(walk.result, 1);
  EXPECT_THAT(walk.pages, IsEmpty());
}

TEST(PageTree, CountIsNotRead) {
  ObjectSession session({{3, kPage}});
  SessionProbe::TotalPages(*session) = 5;
  EXPECT_THAT(WalkText(session, "/Count 9 /Kids [3 0 R] ").pages, ElementsAre(3));
  EXPECT_EQ(session->GetNumberOfPages(), 5u);
  EXPECT_EQ(session->GetTotalPageNumber(), 5u);
}

TEST(PageTree, NoKidsIsAFailureWithoutAnError) {
  ObjectSession session({});
  EXPECT_EQ(WalkText(session, "<</Type /Pages /Count 1 >> ").result, 0);
  EXPECT_EQ(session->PDF_GetLastError(), DWORD{PDF_ERROR_NONE});
}

TEST(PageTree, NullAndEmptyBuffersAreError2) {
  ObjectSession session({});
  ScanBuffer buffer("/Kids [] ");
  EXPECT_EQ(session->ParseKids(nullptr, 9), 0);
  EXPECT_EQ(session->PDF_GetLastError(), DWORD{PDF_ERROR_INVALID_HANDLE});
  session->PDF_SetLastError(PDF_ERROR_NONE);
  EXPECT_EQ(session->ParseKids(buffer.data(), 0), 0);
  EXPECT_EQ(session->PDF_GetLastError(), DWORD{PDF_ERROR_INVALID_HANDLE});
}

TEST(PageTree, ScanOfTheKids) {
  struct {
    char const* what;
    std::string text;
    int result;
    std::vector<DWORD> pages;
  } const rows[] = {
      {"plain", "/Kids [13 0 R 14 0 R] ", 1, {13, 14}},
      {"bracket at the key", "/Kids[13 0 R]/X ", 1, {13}},
      {"line ends separate", "/Kids\r\n[13\r0\nR\r\n14 0 R] ", 1, {13, 14}},
      {"generations are not used", "/Kids [13 7 R 14 99 R] ", 1, {13, 14}},
      {"the end of the array ends all", "/Kids [13 0 R] 14 0 R 15 ", 1, {13}},
      {"a bracket drops an open number", "/Kids [13 0 R 14] ", 1, {13}},
      {"digits that touch letters do not count", "/Kids[13 0 R x9 14 0 R] ", 1, {13, 14}},
      {"letters behind the end do not matter", "/Kids[13 0 R]x9 ", 1, {13}},
      {"a dropped generation shifts the pairs", "/Kids [13 0R 14 0 R 15 0 R] ", 1, {13, 0, 0}},
      {"without an end", "/Kids [13 0 R 14 0 R ", 0, {13, 14}},
      {"the end of the buffer drops an open number", "/Kids [13 0 R 14", 0, {13}},
      {"the first text Kids counts, in a string too", "(Kids 15 0 x)/Kids [13 0 R] ", 1, {15, 13}},
      {"no key behind a NUL", test::WithNuls("a\0/Kids [13 0 R] "), 0, {}},
      {"NUL drops an open number", test::WithNuls("/Kids [13\0 14 0 R] "), 1, {14}},
  };
  ObjectSession session({});
  for (auto const& row : rows) {
    Walk const walk = WalkText(session, row.text);
    EXPECT_EQ(walk.result, row.result) << row.what;
    EXPECT_EQ(walk.pages, row.pages) << row.what;
  }
}

TEST(PageTree, IndirectKidsAreTakenForAPage) {
  Walk const walk =
      WalkTree({{2, "<</Type /Pages /Kids 7 0 R /Count 9 >>"}, {7, "[3 0 R 4 0 R]"}, {3, kPage}});
  EXPECT_EQ(walk.result, 0);
  EXPECT_THAT(walk.pages, ElementsAre(7, 9));
}

TEST(PageTree, KidThatCannotBeLoadedIsAPage) {
  Walk const walk = WalkTree({{2, Node("0 0 R 4000000000 0 R 3 0 R")}, {3, kPage}});
  EXPECT_EQ(walk.result, 1);
  EXPECT_THAT(walk.pages, ElementsAre(0, 2147483647, 3));
}

TEST(PageTree, TypeOfAKidIsNotRead) {
  EXPECT_THAT(WalkTree({{2, Node("3 0 R")}, {3, "<</Type /Font >>"}}).pages, ElementsAre(3));
}

TEST(PageTree, MentionOfKidsMakesANode) {
  Walk const walk = WalkTree(
      {{2, Node("3 0 R 4 0 R")}, {3, "<</Type /Page /Title (no /Kids here) >>"}, {4, kPage}});
  EXPECT_EQ(walk.result, 1);
  EXPECT_THAT(walk.pages, ElementsAre(4));
}

TEST(PageTree, MentionOfKidsWithoutTheSolidusMakesNoNode) {
  Walk const walk =
      WalkTree({{2, Node("3 0 R 4 0 R")}, {3, "<</Title (no Kids [4 0 R] here) >>"}, {4, kPage}});
  EXPECT_EQ(walk.result, 1);
  EXPECT_THAT(walk.pages, ElementsAre(3, 4));
}

TEST(PageTree, FailureOfANodeChangesNothing) {
  Walk const walk =
      WalkTree({{2, Node("3 0 R 4 0 R")}, {3, "<</Kids 5 0 R >>"}, {4, kPage}, {5, kPage}});
  EXPECT_EQ(walk.result, 1);
  EXPECT_THAT(walk.pages, ElementsAre(5, 4));
}

TEST(PageTree, NodeNamedTwiceIsWalkedTwice) {
  Walk const walk = WalkTree({{2, Node("3 0 R 3 0 R")}, {3, Node("4 0 R")}, {4, kPage}});
  EXPECT_THAT(walk.pages, ElementsAre(4, 4));
}

TEST(PageTree, AncestorsAmongTheKidsAreSkipped) {
  Walk const walk = WalkTree({{2, Node("3 0 R 2 0 R 6 0 R")},
                              {3, Node("3 0 R 4 0 R 2 0 R")},
                              {4, Node("2 0 R 3 0 R 5 0 R")},
                              {5, kPage},
                              {6, kPage}});
  EXPECT_EQ(walk.result, 1);
  EXPECT_THAT(walk.pages, ElementsAre(5, 6));
}

TEST(PageTree, CounterOfTheSideRecordGoesOn) {
  ObjectSession session({{3, kPage}});
  SessionProbe::Reader(*session).page_counter = 7;
  ScanBuffer buffer("/Kids [3 0 R] ");
  EXPECT_EQ(session->ParseKids(buffer.data(), buffer.size()), 1);
  EXPECT_EQ(session->GetPageObjectNumber(7), 3u);
  EXPECT_EQ(SessionProbe::Reader(*session).page_counter, 8u);
}

TEST(PageTree, DeepTreeIsWalkedToItsLeaf) {
  constexpr DWORD kDepth = 3000;
  std::map<DWORD, std::string> objects;
  for (DWORD node = 2; node < kDepth; ++node)
    objects[node] = Node(std::to_string(node + 1) + " 0 R");
  objects[kDepth] = kPage;
  Walk const walk = WalkTree(objects);
  EXPECT_EQ(walk.result, 1);
  EXPECT_THAT(walk.pages, ElementsAre(kDepth));
}

std::string Kids(std::string const& kid, DWORD count) {
  std::string text = "/Kids [";
  for (DWORD i = 0; i < count; ++i) text += kid;
  return text + "] ";
}

TEST(PageTree, HoldsThirtyThousandPages) {
  ObjectSession session({});
  Walk const walk = WalkText(session, Kids("0 0 R ", 30000));
  EXPECT_EQ(walk.result, 1);
  EXPECT_THAT(walk.pages, SizeIs(30000));
}

TEST(PageTree, InitClearsTheWholeListAndNotThePageCount) {
  ObjectSession session({});
  SessionProbe::TotalPages(*session) = 5;
  EXPECT_THAT(WalkText(session, Kids("9 0 R ", 30000)).pages, SizeIs(30000));
  session->InitPageObjectsList();
  for (DWORD page = 0; page < 30000; ++page) {
    ASSERT_EQ(session->GetPageObjectNumber(page), 0u) << page;
  }
  EXPECT_EQ(session->GetNumberOfPages(), 5u);
}

TEST(PageTree, OnePageMoreFailsAndKeepsThePageCount) {
  ObjectSession session({});
  SessionProbe::TotalPages(*session) = 5;
  Walk const walk = WalkText(session, Kids("9 0 R ", 30001));
  EXPECT_EQ(walk.result, 0);
  EXPECT_EQ(session->GetNumberOfPages(), 5u);
  EXPECT_EQ(session->PDF_GetLastError(), DWORD{PDF_ERROR_NONE});
}

// 2 to the 16th nodes and more, out of a few objects that name the next one twice.
std::map<DWORD, std::string> DoublingTree(DWORD levels) {
  std::map<DWORD, std::string> objects;
  for (DWORD node = 2; node < 2 + levels; ++node) {
    std::string const next = std::to_string(node + 1) + " 0 R ";
    objects[node] = Node(next + next);
  }
  objects[2 + levels] = Node("");
  return objects;
}

TEST(PageTree, MoreNodesThanObjectRowsFail) {
  EXPECT_EQ(WalkTree(DoublingTree(15)).result, 1);  // 65,535 nodes
  EXPECT_EQ(WalkTree(DoublingTree(16)).result, 0);  // 131,071
}

TEST(PageTree, MoreKidsThanRoomFailEarly) {
  ObjectSession session({});
  EXPECT_EQ(WalkText(session, Kids("9 0 R ", 120051)).result, 0);
  EXPECT_EQ(SessionProbe::Reader(*session).page_counter, 0u);
}

TEST(PageTreeDeathTest, HundredDigitsEndTheProcess) {
  ObjectSession session({});
  ScanBuffer buffer("/Kids [" + std::string(100, '0') + " 0 R] ");
  EXPECT_DEATH(session->ParseKids(buffer.data(), buffer.size()), "100 or more characters");
}

// Result and error of a look at object 3.
std::pair<int, DWORD> LoadPage(std::string const& body) {
  ObjectSession session({{3, body}});
  int const result = session->LoadPageObject(3);
  EXPECT_EQ(SessionProbe::Reader(*session).page_counter, 0u);
  return {result, session->PDF_GetLastError()};
}

TEST(PageObject, NeedsReferencesToResourcesAndContents) {
  struct {
    char const* what;
    std::string body;
    int result;
    DWORD error;
  } const rows[] = {
      {"both", "<</Type /Page /Resources 5 0 R /Contents 6 0 R >>", 1, 0},
      {"type is not told apart", "<</Type /Font /Resources 5 0 R /Contents 6 0 R >>", 1, 0},
      {"no resources", "<</Type /Page /Contents 6 0 R >>", 0, PDF_ERROR_OBJECT_TYPE},
      {"no contents", "<</Type /Page /Resources 5 0 R >>", 0, PDF_ERROR_OBJECT_TYPE},
      {"direct resources behind", "<</Contents 6 0 R /Resources <</X 1>> >>", 0,
       PDF_ERROR_OBJECT_TYPE},
      {"direct resources in front of clean numbers", "<</Resources <<>> /Contents 6 0 R >>", 1, 0},
  };
  for (auto const& row : rows) {
    EXPECT_EQ(LoadPage(row.body), std::make_pair(row.result, row.error)) << row.what;
  }
}

TEST(PageObject, MissingObjectIsNoError) {
  ObjectSession session({{3, kPage}});
  EXPECT_EQ(session->LoadPageObject(0), 0);
  EXPECT_EQ(session->PDF_GetLastError(), DWORD{PDF_ERROR_NONE});
}

}  // namespace
