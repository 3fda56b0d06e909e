// The steps of the hOCR walk, one by one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/ocr/hocr_walk.h>
#include <sorrelin/platform/wide_string.h>

#include <memory>
#include <string>

namespace {

using sorrelin::GatherNodeText;
using sorrelin::HocrDocument;
using sorrelin::SplitText;
using sorrelin::XmlDocument;
using testing::ElementsAre;
using testing::IsEmpty;

// A parsed text with its nodes.
class Tree {
 public:
  explicit Tree(sorrelin::WideString text) : text_(std::move(text)) {
    document_->parse<rapidxml::parse_default>(text_.data());
  }
  sorrelin::XmlNode const& root() const { return *document_->first_node(); }

 private:
  sorrelin::WideString text_;
  std::unique_ptr<XmlDocument> document_ = std::make_unique<XmlDocument>();
};

TEST(SplitText, OneTokenPerDelimiter) {
  EXPECT_THAT(SplitText(SORRELIN_TEXT("a b c"), SORRELIN_TEXT(' ')),
              ElementsAre(SORRELIN_TEXT("a"), SORRELIN_TEXT("b"), SORRELIN_TEXT("c")));
  EXPECT_THAT(SplitText(SORRELIN_TEXT("a;b"), SORRELIN_TEXT(' ')),
              ElementsAre(SORRELIN_TEXT("a;b")));
  EXPECT_THAT(SplitText(SORRELIN_TEXT("a;b"), SORRELIN_TEXT(';')),
              ElementsAre(SORRELIN_TEXT("a"), SORRELIN_TEXT("b")));
}

TEST(SplitText, TwoDelimitersMakeAnEmptyToken) {
  EXPECT_THAT(SplitText(SORRELIN_TEXT("a  b"), SORRELIN_TEXT(' ')),
              ElementsAre(SORRELIN_TEXT("a"), SORRELIN_TEXT(""), SORRELIN_TEXT("b")));
  EXPECT_THAT(SplitText(SORRELIN_TEXT(" a"), SORRELIN_TEXT(' ')),
              ElementsAre(SORRELIN_TEXT(""), SORRELIN_TEXT("a")));
  EXPECT_THAT(SplitText(SORRELIN_TEXT("  "), SORRELIN_TEXT(' ')),
              ElementsAre(SORRELIN_TEXT(""), SORRELIN_TEXT("")));
}

TEST(SplitText, TrailingDelimiterMakesNone) {
  EXPECT_THAT(SplitText(SORRELIN_TEXT("a "), SORRELIN_TEXT(' ')), ElementsAre(SORRELIN_TEXT("a")));
  EXPECT_THAT(SplitText(SORRELIN_TEXT(" "), SORRELIN_TEXT(' ')), ElementsAre(SORRELIN_TEXT("")));
}

TEST(SplitText, EmptyTextHasNoTokens) {
  EXPECT_THAT(SplitText(SORRELIN_TEXT(""), SORRELIN_TEXT(' ')), IsEmpty());
}

TEST(GatherNodeText, LeafGivesItsValue) {
  EXPECT_EQ(GatherNodeText(Tree(SORRELIN_TEXT("<a/>")).root()), SORRELIN_TEXT(""));
  Tree const tree(SORRELIN_TEXT("<a>value</a>"));
  EXPECT_EQ(GatherNodeText(*tree.root().first_node()), SORRELIN_TEXT("value"));
}

// A node's own value is that of its first text, which is one of its children as well.
TEST(GatherNodeText, ChildrenReplaceTheNodesOwnValue) {
  Tree const tree(SORRELIN_TEXT("<a>one<b>two</b>three</a>"));
  EXPECT_EQ(GatherNodeText(tree.root()), SORRELIN_TEXT("onetwothree"));
}

TEST(WalkHocrNode, LeavesNodesThatAreNoElements) {
  HocrDocument document;
  int32_t page = -1;
  Tree const tree(SORRELIN_TEXT("<a>text</a>"));
  document.word_state = 7;
  sorrelin::WalkHocrNode(document, *tree.root().first_node(), page, 0);
  EXPECT_EQ(document.word_state, 7u);
  EXPECT_EQ(page, -1);
}

TEST(WalkHocrNode, HandsThePageValueBack) {
  HocrDocument document;
  int32_t page = -1;
  sorrelin::WalkHocrNode(
      document, Tree(SORRELIN_TEXT("<a b='ocr_page' title='bbox 4 0 9 9'/>")).root(), page, 0);
  EXPECT_EQ(page, 4);
}

TEST(AddHocrWord, TakesThePageThatItIsGiven) {
  HocrDocument document;
  sorrelin::AddHocrWord(document, Tree(SORRELIN_TEXT("<a id='' title=''>t</a>")).root(), 12, 99);
  EXPECT_EQ(document.words.at(0).page, 12);
}

TEST(WalkHocrNode, FirstClassOfANodeEndsItsAttributes) {
  sorrelin::WideString const rest = SORRELIN_TEXT(" id='w' title='bbox 1 2 3 4'>t</p>");
  HocrDocument page;
  int32_t value = -1;
  sorrelin::WalkHocrNode(page, Tree(SORRELIN_TEXT("<p a='ocr_page' b='ocrx_word'") + rest).root(),
                         value, 0);
  EXPECT_EQ(page.words.size(), 0u);
  EXPECT_EQ(page.page_widths.size(), 1u);
  HocrDocument word;
  sorrelin::WalkHocrNode(word, Tree(SORRELIN_TEXT("<p a='ocrx_word' b='ocr_page'") + rest).root(),
                         value, 0);
  EXPECT_EQ(word.words.size(), 1u);
  EXPECT_EQ(word.page_widths.size(), 0u);
}

}  // namespace
