// Values of a dictionary by key and type.
#include <gtest/gtest.h>
#include <sorrelin/syntax/typed_value.h>
#include <tests/support/scan_buffer.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

namespace {

using test::ScanBuffer;
using test::WithNuls;

// The bytes of the value, or "-" for a failure, which leaves the out arguments as they were.
std::string Typed(std::string const& text, char const* key, DWORD type) {
  ScanBuffer buffer(text);
  void* out = nullptr;
  uint64_t size = 77;
  if (sorrelin::GetTypedValue(nullptr, buffer.data(), buffer.size(), key, &out, &size, type) == 0) {
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(size, 77u);
    return "-";
  }
  std::string const value(static_cast<char const*>(out), static_cast<size_t>(size));
  std::free(out);
  return value;
}

template <class Number>
std::string BytesOf(Number number) {
  std::string bytes(sizeof number, '\0');
  std::memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}

std::string Int(int32_t value) { return BytesOf(value); }
std::string Real(double value) { return BytesOf(value); }

struct Row {
  char const* what;
  std::string text;  // after "/K"
  std::string expected;
};

template <size_t kRows>
void ExpectValues(DWORD type, Row const (&rows)[kRows]) {
  for (Row const& row : rows)
    EXPECT_EQ(Typed("<</K" + row.text, "/K", type), row.expected) << row.what;
}

TEST(TypedValueKey, OnlyTheFollowSetMayStandBehindTheKey) {
  for (std::string const follow : {"\r", "\n", " ", "(", "/", "<", "["}) {
    EXPECT_EQ(Typed("/N" + follow + "x", "/N", 4096), follow + "x") << follow;
  }
  for (std::string const other : {"\t", ")", ">", "]", "5", "a", ""}) {
    EXPECT_EQ(Typed("/N" + other, "/N", 4096), "-") << other;
  }
}

TEST(TypedValueKey, LongerNamesArePassed) {
  EXPECT_EQ(Typed("<</Names 1 /N 5 >>", "/N", 8), Int(5));
  EXPECT_EQ(Typed("<</Names 1 /N/X>>", "/N", 2), "/X");
}

TEST(TypedValueKey, IsFoundBehindNuls) {
  EXPECT_EQ(Typed(WithNuls("stream\0\0/N 5 "), "/N", 8), Int(5));
}

TEST(TypedValueKey, IsFoundInAString) {
  EXPECT_EQ(Typed("<</Title (/First 9) /First 5 >>", "/First", 8), Int(9));
}

TEST(TypedValueKey, UnknownTypesGiveZero) {
  for (DWORD type : {0u, 3u, 5u, 7u, 128u, 256u, 259u, 1025u, 8192u}) {
    EXPECT_EQ(Typed("/K 5 ", "/K", type), "-") << type;
  }
}

TEST(TypedValueKey, MissingArgumentsGiveZero) {
  ScanBuffer b("/K 5 ");
  void* out = nullptr;
  uint64_t size = 0;
  EXPECT_EQ(sorrelin::GetTypedValue(nullptr, nullptr, 5, "/K", &out, &size, 8), 0);
  EXPECT_EQ(sorrelin::GetTypedValue(nullptr, b.data(), 0, "/K", &out, &size, 8), 0);
  EXPECT_EQ(sorrelin::GetTypedValue(nullptr, b.data(), 5, nullptr, &out, &size, 8), 0);
  EXPECT_EQ(sorrelin::GetTypedValue(nullptr, b.data(), 5, "", &out, &size, 8), 0);
  EXPECT_EQ(sorrelin::GetTypedValue(nullptr, b.data(), 5, "/K", nullptr, &size, 8), 0);
  EXPECT_EQ(sorrelin::GetTypedValue(nullptr, b.data(), 5, "/K", &out, nullptr, 8), 0);
}

TEST(TypedValue, String) {
  Row const rows[] = {
      {"literal", " (AB) ", "AB"},
      {"literal with a NUL", " (A\\000B) ", WithNuls("A\0B")},
      {"empty literal", " () ", ""},
      {"hexadecimal", "<4142> ", "AB"},
      {"hexadecimal at the end loses a digit", "<4142>", "A"},
      {"odd digit is dropped", "<41425> ", "AB"},
      {"empty hexadecimal", "<> ", ""},
      {"first and last byte go, whatever they are", " /Name ", "Nam"},
      {"letters behind a string", " (AB)xy ", "AB)x"},
      {"shorter than its brackets", " 7 /X ", ""},
      {"nothing", " ", ""},
      {"dictionary, which reports no size", " <</A 1>> ", ""},
      {"two numbers", " 12 13 /X ", "-"},
      {"reference", " 12 0 R ", "-"},
  };
  ExpectValues(1, rows);
}

TEST(TypedValue, Name) {
  Row const rows[] = {
      {"plain", " /FlateDecode/X ", "/FlateDecode"},
      {"at once", "/FlateDecode ", "/FlateDecode"},
      {"first of an array", " [/A /B] ", "/A"},
      {"hexadecimal pair", " /A#42 ", "/AB"},
      {"no name", " 5 ", "-"},
      {"too long", " /" + std::string(127, 'a') + " ", "-"},
      {"reference", " 12 0 R ", "-"},
  };
  ExpectValues(2, rows);
}

TEST(TypedValue, Array) {
  Row const rows[] = {
      {"plain", " [1 2 1]/X ", "1 2 1"},
      {"at once", "[/A/B] ", "/A/B"},
      {"nested", " [1 [2] 3] ", "1 [2] 3"},
      {"array of a dictionary", " <</A [1 2]>> ", "1 2"},
      {"mentions /Length", " [/Length 5] ", "-"},
      {"empty", " [] ", "-"},
      {"a name", " /X ", "-"},
      {"reference", " 12 0 R ", "-"},
  };
  ExpectValues(4, rows);
}

TEST(TypedValue, NameOrArray) {
  Row const rows[] = {
      {"name", " /A/B ", "/A"},
      {"array", " [/A /B] ", "/A /B"},
      {"array that mentions /Length", " [/Length] ", "/Length"},
      {"slash before the bracket, in a string", " (a/b [c]) ", "/b"},
      {"bracket before the slash, in a string", " (a[b /c]) ", "b /c"},
      {"neither", " 5 ", "-"},
  };
  ExpectValues(6, rows);
}

TEST(TypedValue, Integer) {
  Row const rows[] = {
      {"plain", " 12/X ", Int(12)},
      {"negative", " -12 ", Int(-12)},
      {"plus is none", " +12 ", Int(0)},
      {"up to the first other byte", " 12.7 ", Int(12)},
      {"two numbers", " 12 13 /X ", Int(12)},
      {"one digit at the end is lost", " 4", Int(0)},
      {"more digits at the end are not", " 12", Int(12)},
      {"no number", " /X ", Int(0)},
      {"upper bound", " 2147483648 ", Int(2147483647)},
      {"lower bound", " -99999999999 ", Int(std::numeric_limits<int32_t>::min())},
      {"reference", " 12 0 R ", "-"},
  };
  ExpectValues(8, rows);
}

TEST(TypedValue, Boolean) {
  Row const rows[] = {
      {"true", " true/X ", Int(1)},
      {"false", " false ", Int(0)},
      {"letters end at a digit", " true5 ", Int(1)},
      {"longer word", " truer ", "-"},
      {"longer word with false in front", " falsehood ", "-"},
      {"another case", " True ", "-"},
      {"in brackets", " [true] ", "-"},
      {"number", " 1 ", "-"},
      {"reference", " 12 0 R ", "-"},
  };
  ExpectValues(16, rows);
}

TEST(TypedValue, Dictionary) {
  Row const rows[] = {
      {"plain", " <</A 1>>/X ", "<</A 1>>"},
      {"nested with a gap", " <</A <</B 1>> >> ", "<</A <</B 1>> >>"},
      {"four closing brackets lose one", " <</A <</B 1>>>> ", "<</A <</B 1>>>"},
      {"closed in a string", " <</A (>>) >> ", "<</A (>>"},
      {"in a string", " (a<<b>>c) ", "(a<<b>>"},
      {"not closed", " <</A 1 ", "-"},
      {"hexadecimal string", " <AB> ", "-"},
      {"number", " 5 ", "-"},
      {"empty", " ", "-"},
      {"reference", " 12 0 R ", "-"},
  };
  ExpectValues(32, rows);
}

TEST(TypedValue, RealNumber) {
  Row const rows[] = {
      {"plain", " 12.5 ", Real(12.5)},
      {"negative", " -0.25 ", Real(-0.25)},
      {"integer", " 12 ", Real(12)},
      {"point first", " .5 ", Real(0.5)},
      {"second point ends it", " 1.5.7 ", Real(1.5)},
      {"no number", " /X ", Real(0)},
      {"exponents are none", " 1e5 ", Real(1)},
      {"too large", " " + std::string(400, '9') + ".0 ", Real(HUGE_VAL)},
      {"too small", " ." + std::string(400, '0') + "1 ", Real(0)},
      {"reference", " 12 0 R ", "-"},
  };
  ExpectValues(64, rows);
}

TEST(TypedValue, FlatArray) {
  Row const rows[] = {
      {"plain", " [1 2]/X ", "[1 2]"},
      {"inner brackets are not counted", " [1 [2] 3] ", "[1 [2]"},
      {"> ends it too", " [1 > 2] ", "[1 >"},
      {"last byte counts", " [1 2]", "[1 2]"},
      {"dictionary", " <</A [1]>> ", "-"},
      {"not closed", " [1 2 ", "-"},
      {"in a string", " (a]b) ", "(a]"},
      {"value without a bracket", " 5 ] ", "-"},
      {"nothing", " ", "-"},
      {"reference", " 12 0 R ] ", "-"},
  };
  ExpectValues(512, rows);
}

TEST(TypedValue, Reference) {
  Row const rows[] = {
      {"plain", " 12 3 R", Int(12) + Int(3)},
      {"no R is needed", "\r\n12\n3", Int(12) + Int(3)},
      {"no generation", " 12 R ", Int(12) + Int(0)},
      {"no number", " /X 12 0 R ", "-"},
      {"nothing", " ", "-"},
  };
  ExpectValues(1024, rows);
}

TEST(TypedValue, AnyValueAsText) {
  Row const rows[] = {
      {"name", " /Name/X ", "/Name"},
      {"string", " (a b) ", "(a b)"},
      {"dictionary and a byte more", " <</A 1>>Z ", "<</A 1>>Z"},
      {"up to a NUL", " (a\\000b) ", "(a"},
      {"empty", " ", "-"},
      {"not closed", " <</A 1 ", "-"},
      {"reference", " 12 0 R ", "-"},
  };
  for (DWORD type : {257u, 258u, 260u, 272u, 2048u}) ExpectValues(type, rows);
}

TEST(TypedValue, NumberBehindObj) {
  Row const rows[] = {
      {"plain", " (5 0 obj \r\n 15 endobj) ", Int(15)},
      {"no digits", " (obj x) ", Int(0)},
      {"no obj", " (15) ", "-"},
      {"empty", " ", "-"},
  };
  ExpectValues(264, rows);
}

TEST(TypedValue, DictionaryFoundAnywhere) {
  Row const rows[] = {
      {"plain", " <</A 1>>Z ", "<</A 1>>"},
      {"four closing brackets", " <</A<</B 1>>>> ", "<</A<</B 1>>>>"},
      {"in a string", " (a<<b<<c>>d>>e>>) ", "<<b<<c>>d>>"},
      {"not closed", " (a<<b) ", "-"},
      {"none", " (a) ", "-"},
      {"empty", " ", "-"},
  };
  ExpectValues(288, rows);
}

TEST(TypedValue, FirstDigits) {
  Row const rows[] = {
      {"plain", " (abc12d34) ", Int(12)},
      {"minus is passed", " -12 ", Int(12)},
      {"none", " (abc) ", Int(0)},
      {"twenty digits count", " (" + std::string(19, '0') + "78) ", Int(7)},
      {"empty", " ", Int(0)},
      {"reference", " 12 0 R ", "-"},
  };
  ExpectValues(1032, rows);
  ExpectValues(1056, rows);
}

TEST(TypedValue, RestOfTheBuffer) {
  Row const rows[] = {
      {"all of it", " 1 /X (a)", " 1 /X (a)"},
      {"up to a NUL", WithNuls(" 1\0 2"), " 1"},
  };
  ExpectValues(4096, rows);
}

}  // namespace
