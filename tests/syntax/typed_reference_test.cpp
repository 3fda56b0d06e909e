// References in values: objects of a document that was opened by the stream route.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/syntax/typed_value.h>
#include <tests/support/pdf_builder.h>
#include <tests/support/scan_buffer.h>
#include <tests/support/session_probe.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>

namespace {

using test::ScanBuffer;
using testing::StartsWith;

// An open document with the given objects, numbers from 10 on.
class ReferenceDocument {
 public:
  explicit ReferenceDocument(std::map<DWORD, std::string> const& objects) {
    test::PdfBuilder pdf("%PDF-1.5");
    test::AddPageTree(pdf, 1);
    for (auto const& [number, body] : objects) pdf.Object(number, body);
    pdf.XrefStream(objects.rbegin()->first + 1);
    document_ = pdf.Document();
    channel_ =
        sorrelin::ChannelAttachMemory(document_.data(), static_cast<DWORD>(document_.size()), true);
    SessionProbe::SetChannel(*session_, channel_);
    EXPECT_NE(session_->BuildObjectListFromFile(), 0u);
    EXPECT_TRUE(SessionProbe::Reader(*session_).objects.IsUsed());
  }
  ~ReferenceDocument() {
    session_->ClosePDFFile();
    delete channel_;
  }
  ReferenceDocument(ReferenceDocument const&) = delete;
  ReferenceDocument& operator=(ReferenceDocument const&) = delete;

  CCreatePDF& session() { return *session_; }

  // The value of "/K" as type `type`, or "-".
  std::string Typed(std::string const& text, DWORD type) {
    ScanBuffer buffer("/K " + text + " >>");
    void* out = nullptr;
    uint64_t size = 0;
    if (sorrelin::GetTypedValue(SessionProbe::Source(*session_), buffer.data(), buffer.size(), "/K",
                                &out, &size, type) == 0) {
      return "-";
    }
    std::string const value(static_cast<char const*>(out), static_cast<size_t>(size));
    std::free(out);
    return value;
  }
  int32_t Integer(std::string const& text) {
    std::string const value = Typed(text, 8);
    int32_t number = -77;
    if (value.size() == sizeof number) std::memcpy(&number, value.data(), sizeof number);
    return number;
  }

 private:
  std::unique_ptr<CCreatePDF> const session_ = std::make_unique<CCreatePDF>();
  test::Bytes document_;
  sorrelin::FileChannel* channel_ = nullptr;
};

struct ValueText {
  int result;
  std::string text;
  DWORD size;
};

ValueText CutValue(ReferenceDocument& document, std::string const& text) {
  ScanBuffer buffer(text);
  BYTE* at = buffer.data();
  BYTE* out = nullptr;
  ValueText value{0, "null", 77};
  value.result = sorrelin::ParseValueText(SessionProbe::Source(document.session()), &at,
                                          buffer.size(), &out, &value.size);
  if (out != nullptr) value.text = reinterpret_cast<char const*>(out);
  std::free(out);
  return value;
}

TEST(TypedReference, GivesTheWholeTextBehindObjAndZero) {
  ReferenceDocument document({{10, "57"}});
  ValueText const value = CutValue(document, " 10 0 R ");
  EXPECT_EQ(value.result, 0);
  EXPECT_THAT(value.text, StartsWith("\n57\nendobj"));
  EXPECT_EQ(value.size, value.text.size() + 1);
}

TEST(TypedReference, ReadingsThatIgnoreTheResultTakeTheFirstValue) {
  ReferenceDocument document(
      {{10, "57"}, {11, "/FlateDecode"}, {12, "[1 2]"}, {13, "true"}, {14, "<</A 1>>"}});
  EXPECT_EQ(document.Integer("10 0 R"), 57);
  EXPECT_EQ(document.Typed("11 0 R", 2), "/FlateDecode");
  EXPECT_EQ(document.Typed("12 0 R", 4), "1 2");
  EXPECT_EQ(document.Typed("13 0 R", 16), std::string("\1\0\0\0", 4));
  EXPECT_EQ(document.Typed("14 0 R", 32), "\n<</A 1>>");
}

TEST(TypedReference, StringsInObjectsOfTheirOwnAreRefused) {
  ReferenceDocument document({{10, "(AB)"}});
  EXPECT_EQ(document.Typed("10 0 R", 1), "-");
  ScanBuffer buffer("<</Title 10 0 R >>");
  WCHAR* title = nullptr;
  uint64_t length = 0;
  EXPECT_EQ(
      document.session().GetStringValue2W(buffer.data(), buffer.size(), "/Title", &title, &length),
      0);
}

TEST(TypedReference, GenerationIsNotLookedAt) {
  ReferenceDocument document({{10, "57"}});
  EXPECT_EQ(document.Integer("10 3 R"), 57);
}

TEST(TypedReference, ObjectOfTwoNumbersGivesOne) {
  ReferenceDocument document({{10, "12 13"}});
  ValueText const value = CutValue(document, " 10 0 R ");
  EXPECT_EQ(value.result, 1);
  EXPECT_THAT(value.text, StartsWith("\n12 13\nendobj"));
  EXPECT_EQ(value.size, 2u);
  EXPECT_EQ(document.Integer("10 0 R"), 12);
}

TEST(TypedReference, ReferenceToAReferenceGivesOne) {
  ReferenceDocument document({{10, "11 0 R"}, {11, "57"}});
  ValueText const value = CutValue(document, " 10 0 R ");
  EXPECT_EQ(value.result, 1);
  EXPECT_THAT(value.text, StartsWith("\n57\nendobj"));
  EXPECT_EQ(value.size, value.text.size() + 1);
  EXPECT_EQ(document.Integer("10 0 R"), 57);
}

TEST(TypedReference, MissingObjectGivesNothing) {
  ReferenceDocument document({{10, "57"}});
  ValueText const value = CutValue(document, " 99 0 R ");
  EXPECT_EQ(value.result, 0);
  EXPECT_EQ(value.text, "null");
  EXPECT_EQ(document.Integer("99 0 R"), -77);
}

TEST(TypedReference, ReferenceToAMissingObjectGivesNothingAndOne) {
  ReferenceDocument document({{10, "99 0 R"}});
  ValueText const value = CutValue(document, " 10 0 R ");
  EXPECT_EQ(value.result, 1);
  EXPECT_EQ(value.text, "null");
  EXPECT_EQ(document.Integer("10 0 R"), -77);
  EXPECT_EQ(document.Typed("10 0 R", 1), "-");
}

// `count` references, the first in the text that is read and the others in objects from 10 on, each
// to the object of the next; the last one to a number.
ValueText FollowChain(DWORD count) {
  std::map<DWORD, std::string> objects;
  for (DWORD i = 1; i < count; ++i) objects[9 + i] = std::to_string(10 + i) + " 0 R";
  objects[9 + count] = "57";
  ReferenceDocument document(objects);
  return CutValue(document, " 10 0 R ");
}

// Each level turns the result of the one below around.
TEST(TypedReference, ResultsAlternateAlongAChain) {
  ValueText const three = FollowChain(3);
  EXPECT_EQ(three.result, 0);
  EXPECT_THAT(three.text, StartsWith("\n11 0 R\nendobj"));
  ValueText const four = FollowChain(4);
  EXPECT_EQ(four.result, 1);
  EXPECT_THAT(four.text, StartsWith("\n12 0 R\nendobj"));
}

TEST(TypedReference, ThirtyTwoLevelsAreFollowed) {
  EXPECT_EQ(FollowChain(31).result, 0);
  EXPECT_EQ(FollowChain(32).result, 1);
  EXPECT_EQ(FollowChain(33).result, 0);
  EXPECT_EQ(FollowChain(34).result, 0);  // 1 if the chain were followed to its end
  EXPECT_EQ(FollowChain(36).result, 0);
}

TEST(TypedReference, ObjectThatNamesItselfEnds) {
  ReferenceDocument document({{10, "10 0 R"}});
  ValueText const value = CutValue(document, " 10 0 R ");
  EXPECT_EQ(value.result, 0);
  EXPECT_THAT(value.text, StartsWith("\n10 0 R\nendobj"));
  EXPECT_EQ(document.Integer("10 0 R"), 10);
}

}  // namespace
