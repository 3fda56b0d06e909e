// The cutting of one value out of the bytes after a key.
#include <gtest/gtest.h>
#include <sorrelin/syntax/typed_value.h>
#include <tests/support/scan_buffer.h>

#include <cstdlib>
#include <ostream>
#include <string>

namespace {

using test::ScanBuffer;
using test::WithNuls;

constexpr DWORD kUnset = 0xDEADBEEF;

struct Cutout {
  int result;
  std::string text;  // "null" for a null block
  DWORD size;
  bool operator==(Cutout const&) const = default;
};

std::ostream& operator<<(std::ostream& out, Cutout const& cutout) {
  return out << cutout.result << ", '" << cutout.text << "', " << cutout.size;
}

Cutout CutValue(std::string const& text) {
  ScanBuffer buffer(text);
  BYTE* at = buffer.data();
  BYTE* out = nullptr;
  Cutout cutout{0, "null", kUnset};
  cutout.result = sorrelin::ParseValueText(nullptr, &at, buffer.size(), &out, &cutout.size);
  if (out != nullptr) cutout.text = reinterpret_cast<char const*>(out);
  std::free(out);
  return cutout;
}

struct Row {
  char const* what;
  std::string text;
  Cutout expected;
};

template <size_t kRows>
void ExpectCutouts(Row const (&rows)[kRows]) {
  for (Row const& row : rows) EXPECT_EQ(CutValue(row.text), row.expected) << row.what;
}

TEST(ValueText, DictionaryAndOneByteMore) {
  Row const rows[] = {
      {"the byte behind comes along", " <</A 1>>Z ", {1, "<</A 1>>Z", kUnset}},
      {"at the end of the text", "<</A 1>>", {1, "<</A 1>>", kUnset}},
      {"nested", "<</A <</B 1>>>>\n ", {1, "<</A <</B 1>>>>\n", kUnset}},
      {"three open count twice inside", "<</A <<<b>>>>>>Z ", {1, "<</A <<<b>>>>>>Z", kUnset}},
      {"pairs in strings count", "<</A (>>) >> ", {1, "<</A (>>)", kUnset}},
      {"brackets inside are not looked at", "<</A [1 (] /B>> ", {1, "<</A [1 (] /B>> ", kUnset}},
      {"digits in front are passed", "12<</A 1>>Z ", {1, "<</A 1>>Z", kUnset}},
  };
  ExpectCutouts(rows);
}

TEST(ValueText, WhatEndsTheLookForADictionary) {
  Row const rows[] = {
      {"a string", "(a)<</A 1>> ", {1, "(a)", 3}},
      {"a name", "/N<</A 1>> ", {1, "/N", 2}},
      {"an array", "[1]<</A 1>> ", {1, "[1]", 3}},
      {"white space behind a token", "x <</A 1>> ", {1, "x", 1}},
  };
  ExpectCutouts(rows);
}

// The text has 14 bytes, and its block 15. The writing starts at 11, where the dictionary opens,
// with the bytes 1 to 10, which take the places 11 to 20; the block has those up to 14.
TEST(ValueText, InFrontOfAnUnclosedDictionaryStaysWithinItsBlock) {
  ScanBuffer buffer("/Title abcdefghij<<x");
  void* out = nullptr;
  uint64_t size = 0;
  ASSERT_EQ(
      sorrelin::GetTypedValue(nullptr, buffer.data(), buffer.size(), "/Title", &out, &size, 1), 1);
  // A string lacks the first and the last of the 21 places that count.
  EXPECT_EQ(std::string(static_cast<char const*>(out), static_cast<size_t>(size)),
            std::string(10, '\0') + "abcd" + std::string(5, '\0'));
  std::free(out);
}

TEST(ValueText, UnclosedDictionary) {
  Row const rows[] = {
      {"behind a blank: empty, with a size", " <</A 1 ", {1, "", 1}},
      {"behind two", "\r\n<</A <</B 1>> ", {1, "", 2}},
      {"at the start: all but the last byte", "<</A 1 ", {1, "<</A 1", 6}},
  };
  ExpectCutouts(rows);
}

TEST(ValueText, StringsNamesArraysAndWords) {
  Row const rows[] = {
      {"white space in front is passed", " \r\n(a) ", {1, "(a)", 3}},
      {"tab is not white space", "\t(a) ", {1, "\t", 1}},
      {"string with delimiters", "(a /b [c <d) ", {1, "(a /b [c <d)", 12}},
      {"nested parentheses", "(a(b)c) ", {1, "(a(b)c)", 7}},
      {"letters behind a string belong to it", "(a)b/c ", {1, "(a)b", 4}},
      {"name", "/Name/X ", {1, "/Name", 5}},
      {"name before >>", "/Name>> ", {1, "/Name", 5}},
      {"array", "[1 [2] 3]/X ", {1, "[1 [2] 3]", 9}},
      {"bracket in a string of an array", "[a (]) b] ", {1, "[a (]) b]", 9}},
      {"parenthesis in a hexadecimal string", "<a(b> ", {1, "<a(b>", 5}},
      {"angle in a string", "(a<b) c ", {1, "(a<b)", 5}},
      {"word", "true/X ", {1, "true", 4}},
      {"NUL ends", WithNuls("true\0x "), {1, "true", 4}},
      {"real number", "12.5 0 R ", {1, "12.5", 4}},
      {"negative number", "-12 0 R ", {1, "-12", 3}},
  };
  ExpectCutouts(rows);
}

TEST(ValueText, LastByteBelongsToNoValue) {
  Row const rows[] = {
      {"string", "(ab)", {1, "(ab", 3}},
      {"name", "/Name", {1, "/Nam", 4}},
      {"digit", " 4", {1, "", 0}},
      {"one byte", "x", {1, "", 0}},
      {"white space alone", "  ", {1, "", 0}},
  };
  ExpectCutouts(rows);
  EXPECT_EQ(CutValue(""), (Cutout{1, "", 0}));
}

// The lost digit is taken for a second number.
TEST(ValueText, NumberOfTwoDigitsAtTheEndGivesAllThatFollows) {
  Row const rows[] = {
      {"two digits", " 12", {0, " 12", 1}},
      {"three digits", " 123", {0, " 123", 2}},
  };
  ExpectCutouts(rows);
}

TEST(ValueText, Escapes) {
  Row const rows[] = {
      {"letters", "(\\b\\f\\n\\r\\t) ", {1, "(\b\f\n\r\t)", 7}},
      {"parentheses do not count", "(a\\)b\\(c) ", {1, "(a)b(c)", 7}},
      {"any other byte stands for itself", "(\\x\\\\\\8) ", {1, "(x\\8)", 5}},
      {"line end stays", "(a\\\nb) ", {1, "(a\nb)", 5}},
      {"three octal digits", "(\\1018) ", {1, "(A8)", 4}},
      {"two and one", "(\\53x\\7z) ", {1, "(+x\7z)", 6}},
      {"modulo 256", "(\\501) ", {1, "(A)", 3}},
      {"outside a string too", "/A\\ B ", {1, "/A B", 4}},
      {"at the end of the text", "(a\\", {1, "(a", 2}},
      {"takes the last byte", "(a\\x", {1, "(ax", 3}},
      {"NUL is a byte of the value", "(a\\000b) ", {1, "(a", 5}},
  };
  ExpectCutouts(rows);
}

TEST(ValueText, NumbersThatAreNoReference) {
  Row const rows[] = {
      {"a name behind", " 12 /Next ", {1, "12", 2}},
      {"a word behind", " 12 endobj ", {1, "12", 2}},
      {"nothing behind", " 12 ", {1, "12", 2}},
      {"no blank before the R", " 12 0R ", {1, "12", 2}},
      {"two numbers: all that follows", " 12 13 /X ", {0, " 12 13 /X ", 2}},
      {"all that follows ends at a NUL", WithNuls(" 12 13 \0/X "), {0, " 12 13 ", 2}},
  };
  ExpectCutouts(rows);
}

TEST(ValueText, ReferenceThatCannotBeFetchedGivesNothing) {
  Row const rows[] = {
      {"plain", " 12 0 R ", {0, "null", kUnset}},
      {"R is the last byte", " 12 0 R", {0, "null", kUnset}},
      {"one byte behind the generation is passed", " 12 0/R ", {0, "null", kUnset}},
  };
  ExpectCutouts(rows);
}

TEST(ValueText, NeedsTextAndOutArguments) {
  ScanBuffer buffer("(a) ");
  BYTE* at = buffer.data();
  BYTE* none = nullptr;
  BYTE* out = nullptr;
  DWORD size = 0;
  EXPECT_EQ(sorrelin::ParseValueText(nullptr, nullptr, 4, &out, &size), 0);
  EXPECT_EQ(sorrelin::ParseValueText(nullptr, &none, 4, &out, &size), 0);
  EXPECT_EQ(sorrelin::ParseValueText(nullptr, &at, 4, nullptr, &size), 0);
  EXPECT_EQ(sorrelin::ParseValueText(nullptr, &at, 4, &out, nullptr), 0);
}

}  // namespace
