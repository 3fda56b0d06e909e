// The steps of the hOCR walk, one by one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/ocr/hocr_walk.h>

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
  explicit Tree(std::u16string text) : text_(std::move(text)) {
    document_->parse<rapidxml::parse_default>(text_.data());
  }
  sorrelin::XmlNode const& root() const { return *document_->first_node(); }

 private:
  std::u16string text_;
  std::unique_ptr<XmlDocument> document_ = std::make_unique<XmlDocument>();
};

TEST(SplitText, OneTokenPerDelimiter) {
  EXPECT_THAT(SplitText(u"a b c", u' '), ElementsAre(u"a", u"b", u"c"));
  EXPECT_THAT(SplitText(u"a;b", u' '), ElementsAre(u"a;b"));
  EXPECT_THAT(SplitText(u"a;b", u';'), ElementsAre(u"a", u"b"));
}

TEST(SplitText, TwoDelimitersMakeAnEmptyToken) {
  EXPECT_THAT(SplitText(u"a  b", u' '), ElementsAre(u"a", u"", u"b"));
  EXPECT_THAT(SplitText(u" a", u' '), ElementsAre(u"", u"a"));
  EXPECT_THAT(SplitText(u"  ", u' '), ElementsAre(u"", u""));
}

TEST(SplitText, TrailingDelimiterMakesNone) {
  EXPECT_THAT(SplitText(u"a ", u' '), ElementsAre(u"a"));
  EXPECT_THAT(SplitText(u" ", u' '), ElementsAre(u""));
}

TEST(SplitText, EmptyTextHasNoTokens) { EXPECT_THAT(SplitText(u"", u' '), IsEmpty()); }

TEST(GatherNodeText, LeafGivesItsValue) {
  EXPECT_EQ(GatherNodeText(Tree(u"<a/>").root()), u"");
  Tree const tree(u"<a>value</a>");
  EXPECT_EQ(GatherNodeText(*tree.root().first_node()), u"value");
}

// A node's own value is that of its first text, which is one of its children as well.
TEST(GatherNodeText, ChildrenReplaceTheNodesOwnValue) {
  Tree const tree(u"<a>one<b>two</b>three</a>");
  EXPECT_EQ(GatherNodeText(tree.root()), u"onetwothree");
}

TEST(WalkHocrNode, LeavesNodesThatAreNoElements) {
  HocrDocument document;
  int32_t page = -1;
  Tree const tree(u"<a>text</a>");
  document.word_state = 7;
  sorrelin::WalkHocrNode(document, *tree.root().first_node(), page, 0);
  EXPECT_EQ(document.word_state, 7u);
  EXPECT_EQ(page, -1);
}

TEST(WalkHocrNode, HandsThePageValueBack) {
  HocrDocument document;
  int32_t page = -1;
  sorrelin::WalkHocrNode(document, Tree(u"<a b='ocr_page' title='bbox 4 0 9 9'/>").root(), page, 0);
  EXPECT_EQ(page, 4);
}

TEST(AddHocrWord, TakesThePageThatItIsGiven) {
  HocrDocument document;
  sorrelin::AddHocrWord(document, Tree(u"<a id='' title=''>t</a>").root(), 12, 99);
  EXPECT_EQ(document.words.at(0).page, 12);
}

TEST(WalkHocrNode, FirstClassOfANodeEndsItsAttributes) {
  std::u16string const rest = u" id='w' title='bbox 1 2 3 4'>t</p>";
  HocrDocument page;
  int32_t value = -1;
  sorrelin::WalkHocrNode(page, Tree(u"<p a='ocr_page' b='ocrx_word'" + rest).root(), value, 0);
  EXPECT_EQ(page.words.size(), 0u);
  EXPECT_EQ(page.page_widths.size(), 1u);
  HocrDocument word;
  sorrelin::WalkHocrNode(word, Tree(u"<p a='ocrx_word' b='ocr_page'" + rest).root(), value, 0);
  EXPECT_EQ(word.words.size(), 1u);
  EXPECT_EQ(word.page_widths.size(), 0u);
}

}  // namespace
