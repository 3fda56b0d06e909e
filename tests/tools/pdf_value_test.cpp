// Values of PDF objects (ISO 32000-1, 7.3).
#include "tools/documents/pdf_value.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sorrelin::tool {
namespace {

using Kind = PdfValue::Kind;

PdfValue Read(std::string_view text) {
  auto const value = PdfValueReader(text).Read();
  EXPECT_TRUE(value) << text;
  return value.value_or(PdfValue{});
}

bool IsRefused(std::string_view text) { return !PdfValueReader(text).Read(); }

TEST(PdfValue, NumbersAreWholeOrReal) {
  EXPECT_EQ(Read("12").number, 12);
  EXPECT_EQ(Read("+7").number, 7);
  EXPECT_EQ(Read("-.5").number, -0.5);
  EXPECT_EQ(Read("612.25/").number, 612.25);
  EXPECT_EQ(Read("3.").number, 3);
}

TEST(PdfValue, WhatIsNoNumberIsRefused) {
  EXPECT_TRUE(IsRefused("1e5"));
  EXPECT_TRUE(IsRefused("--1"));
  EXPECT_TRUE(IsRefused("12x"));
}

TEST(PdfValue, LongDigitRunEndsNothing) {
  EXPECT_GT(Read(std::string(200, '9')).number, 1e199);
  EXPECT_TRUE(IsRefused(std::string(1000, '9')));
}

TEST(PdfValue, ReferenceHasItsObjectsNumber) {
  PdfValue const value = Read("12 0 R");
  EXPECT_TRUE(value.Is(Kind::kReference));
  EXPECT_EQ(value.number, 12);
}

TEST(PdfValue, NumbersThatAreNoReferenceStayNumbers) {
  EXPECT_TRUE(IsRefused("[3 0 Rx]"));
  PdfValue const plain = Read("[1 0 2 0 R 3]");
  ASSERT_EQ(plain.items.size(), 4u);
  EXPECT_TRUE(plain.items[0].Is(Kind::kNumber));
  EXPECT_TRUE(plain.items[2].Is(Kind::kReference));
  EXPECT_EQ(plain.items[3].number, 3);
}

TEST(PdfValue, NamesAndWords) {
  EXPECT_TRUE(Read("/A#42c/").IsName("ABc"));
  EXPECT_TRUE(Read("/").IsName(""));
  EXPECT_EQ(Read("true").number, 1);
  EXPECT_EQ(Read("false").number, 0);
  EXPECT_TRUE(Read("null").Is(Kind::kNull));
  EXPECT_TRUE(IsRefused("endobj"));
}

TEST(PdfValue, StringsHaveEscapesAndParentheses) {
  EXPECT_EQ(Read("(a(b)\\)\\101\\\n\\r)").text, "a(b))A\r");
  EXPECT_EQ(Read("(a\r\nb\rc)").text, "a\nb\nc");
  EXPECT_TRUE(IsRefused("(a"));
  EXPECT_TRUE(IsRefused("(a\\"));
}

TEST(PdfValue, HexStringsMayHaveSpaceAndAnOddDigit) {
  EXPECT_EQ(Read("<41 4\n2 5>").text, "ABP");
  EXPECT_TRUE(IsRefused("<4x>"));
  EXPECT_TRUE(IsRefused("<41"));
}

TEST(PdfValue, DictionaryKeysAreFoundAtTheirOwnLevel) {
  PdfValue const value = Read("<</A<</Width 1>>/B (/Width 2)/Width 3 % /Width 4\n/Width1 5>>");
  EXPECT_EQ(value["Width"].number, 3);
  EXPECT_EQ(value["A"]["Width"].number, 1);
  EXPECT_TRUE(value["Height"].Is(Kind::kNull));
}

TEST(PdfValue, LastOfEqualKeysCounts) { EXPECT_EQ(Read("<</A 1/A 2>>")["A"].number, 2); }

TEST(PdfValue, UnclosedAndKeylessDictionariesAreRefused) {
  EXPECT_TRUE(IsRefused("<</A 1"));
  EXPECT_TRUE(IsRefused("<<1 2>>"));
  EXPECT_TRUE(IsRefused("[1 2"));
  EXPECT_TRUE(IsRefused(""));
}

TEST(PdfValue, DeepNestingIsRefused) {
  EXPECT_FALSE(IsRefused(std::string(20, '[') + std::string(20, ']')));
  EXPECT_TRUE(IsRefused(std::string(100'000, '[')));
}

TEST(PdfValue, MoreThan100000ValuesAreRefused) {
  std::string text = "[";
  for (int i = 0; i < 100'000; ++i) text += "1 ";
  EXPECT_TRUE(IsRefused(text + "]"));
}

// Every prefix ends somewhere inside a value.
TEST(PdfValue, NoPrefixIsReadBeyondItsEnd) {
  std::string const text = "<</A[1 0 R(x\\1)<4>]/B#4/C true>>";
  for (size_t size = 0; size < text.size(); ++size) {
    std::string const prefix = text.substr(0, size);
    EXPECT_TRUE(IsRefused(std::string_view(prefix))) << prefix;
  }
}

}  // namespace
}  // namespace sorrelin::tool
