// The number scan in each of its variants.
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/syntax/scanner.h>
#include <tests/support/scan_buffer.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>

namespace {

using test::ScanBuffer;
using test::WithNuls;

constexpr DWORD kUnset = 0xDEADBEEF;

struct Pair {
  int result;
  DWORD first;
  DWORD second;
  bool operator==(Pair const&) const = default;
};

std::ostream& operator<<(std::ostream& out, Pair const& pair) {
  return out << pair.result << ": " << pair.first << ", " << pair.second;
}

struct Single {
  int result;
  DWORD value;
  bool operator==(Single const&) const = default;
};

std::ostream& operator<<(std::ostream& out, Single const& single) {
  return out << single.result << ": " << single.value;
}

constexpr Pair kNone{0, kUnset, kUnset};
constexpr Single kNoNumber{0, kUnset};

class NumberScan : public testing::Test {
 protected:
  std::unique_ptr<CCreatePDF> const session_ = std::make_unique<CCreatePDF>();

  Pair Two(std::string const& text, char const* key) {
    ScanBuffer b(text);
    Pair pair = kNone;
    pair.result = session_->GetValue(b.data(), b.size(), key, &pair.first, &pair.second);
    return pair;
  }
  Single One(std::string const& text, char const* key) {
    ScanBuffer b(text);
    Single single = kNoNumber;
    single.result = session_->GetValue(b.data(), b.size(), key, &single.value);
    return single;
  }
  Pair First(std::string const& text) {
    ScanBuffer b(text);
    Pair pair = kNone;
    pair.result = session_->GetFirstValue(b.data(), b.size(), &pair.first, &pair.second);
    return pair;
  }
  Pair Array(std::string const& text, char const* key) {
    ScanBuffer b(text);
    Pair pair = kNone;
    pair.result = session_->GetValueFromArray(b.data(), b.size(), key, &pair.first, &pair.second);
    return pair;
  }
  Pair XrefTwo(std::string const& text, char const* key) {
    ScanBuffer b(text);
    Pair pair = kNone;
    pair.result = sorrelin::GetIntPairAfterKey(b.data(), b.size(), key, &pair.first, &pair.second);
    return pair;
  }
  Single XrefOne(std::string const& text, char const* key) {
    ScanBuffer b(text);
    Single single = kNoNumber;
    single.result = sorrelin::GetIntAfterKey(b.data(), b.size(), key, &single.value);
    return single;
  }
};

TEST_F(NumberScan, TwoNumbersBehindAKey) {
  struct {
    char const* what;
    std::string text;
    char const* key;
    Pair expected;
  } const rows[] = {
      {"plain", "/Root 5 0 R ", "Root", {1, 5, 0}},
      {"CR, LF and bracket separate", "/Kids[5\r0\nR ", "Kids", {1, 5, 0}},
      {"null key: the start of the buffer", "17 4 x", nullptr, {1, 17, 4}},
      {"digits of a name start no number", "/Im0 12 3 R ", "Im", {1, 12, 3}},
      {"slash drops the open number", "/Root 5 0/Next 6 ", "Root", {1, 5, 6}},
      {"slash drops it, and no other comes", "/Root 5 0/Next", "Root", {0, 5, kUnset}},
      {"NUL drops the open number", WithNuls("/Root 5 0\0 7 "), "Root", {1, 5, 7}},
      {"tab drops the open number", "/Root 5\t6 7 8 ", "Root", {1, 7, 8}},
      {"closing bracket drops it", "/Root 5] 6 7 ", "Root", {1, 6, 7}},
      {"point drops it, and the digits behind", "/Root 12.5 6 7 ", "Root", {1, 6, 7}},
      {"minus drops its digits", "/Root -5 6 7 ", "Root", {1, 6, 7}},
      {"end of the buffer, number in progress", "/Root 5 0", "Root", {0, 5, kUnset}},
      {"end of the buffer, one number", "/Root 5 R ", "Root", {0, 5, kUnset}},
      {"key missing", "/Info 5 0 R ", "Root", kNone},
      {"zeros past the end separate nothing", "xxxx/Root 5 0", "Root", {0, 5, kUnset}},
      {"no numbers at all", "/Root /Name ", "Root", kNone},
  };
  for (auto const& row : rows) EXPECT_EQ(Two(row.text, row.key), row.expected) << row.what;
}

TEST_F(NumberScan, OneNumberBehindAKey) {
  struct {
    char const* what;
    std::string text;
    Single expected;
  } const rows[] = {
      {"plain", "/Count 2 ", {1, 2}},
      {"> separates", "/Count 2>>", {1, 2}},
      {"slash separates", "/Count 2/Kids", {1, 2}},
      {"NUL separates", WithNuls("/Count 2\0x"), {1, 2}},
      {"bracket separates", "/Count[2 ]", {1, 2}},
      {"slash arms: digits may follow it", "/Count /7 ", {1, 7}},
      {"other byte drops", "/Count 2]/X 3 ", {1, 3}},
      {"minus drops", "/Count -90 /Width 10 ", {1, 10}},
      {"tab drops", "/Count\t2 3 ", {1, 3}},
      {"digits touching the key start none", "/Count1 100 /Count 20 ", {1, 100}},
      {"number in progress at the end, key at the start", "/Count 2", kNoNumber},
      {"number at the end, bytes before the key", "xx/Count 2", {1, 2}},
      {"none", "/Count >> ", kNoNumber},
  };
  for (auto const& row : rows) EXPECT_EQ(One(row.text, "/Count"), row.expected) << row.what;
}

TEST_F(NumberScan, FirstMatchWinsInsideALongerName) {
  EXPECT_EQ(One("/Length1 100 /Length 20 ", "Length"), (Single{1, 100}));
}

TEST_F(NumberScan, RotateIsPassedForWidth) {
  EXPECT_EQ(One("/Rotate -90 /Width 10 ", "Rotate"), (Single{1, 10}));
}

TEST_F(NumberScan, TwoNumbersBehindTheFirstName) {
  struct {
    char const* what;
    std::string text;
    Pair expected;
  } const rows[] = {
      {"plain", "15 0 obj <</Im0 12 0 R>> ", {1, 12, 0}},
      {"digits of the name do not count", "/0 1 2 ", {1, 1, 2}},
      {"the name ends at a bracket", "/Im[3 4 ]", {1, 3, 4}},
      {"NUL before a separator", WithNuls("/Im0\0 12 0 R "), kNone},
      {"no separator behind the name", "/Im0/Im1", kNone},
      {"separator last", "/Im0 ", kNone},
      {"no name", "12 0 R ", kNone},
      {"one number only", "/Im0 12 R ", {0, 12, kUnset}},
      {"other byte drops", "/Im0 <</X 1/Y 2 3 ", {1, 2, 3}},
  };
  for (auto const& row : rows) EXPECT_EQ(First(row.text), row.expected) << row.what;
}

TEST_F(NumberScan, FirstTwoNumbersOfAnArray) {
  struct {
    char const* what;
    std::string text;
    char const* key;
    Pair expected;
  } const rows[] = {
      {"plain", "/Decode [1 0]/X ", "Decode", {1, 1, 0}},
      {"bracket at the name", "/Decode[0 1] ", "Decode", {1, 0, 1}},
      {"brackets separate", "/Decode [1][0]", "Decode", {1, 1, 0}},
      {"null key", "[3 4]", nullptr, {1, 3, 4}},
      {"longer name does not match", "/DecodeParms [7 8] /Decode [1 0] ", "Decode", {1, 1, 0}},
      {"slash behind the name does not match", "/Decode/Foo 1 2 ", "Decode", kNone},
      {"no slash, no match", "Decode [1 0] ", "Decode", kNone},
      {"match with the last byte behind it", "/Decode ", "Decode", kNone},
      {"real numbers are none", "/Decode [1.0 0.0] /B 7 8 ", "Decode", {1, 7, 8}},
      {"NUL ends the search", WithNuls("\0/Decode [1 0] "), "Decode", kNone},
      {"end of the buffer in a number", "/Decode [1 0", "Decode", {0, 1, kUnset}},
  };
  for (auto const& row : rows) EXPECT_EQ(Array(row.text, row.key), row.expected) << row.what;
}

TEST_F(NumberScan, TwoNumbersForTheCrossReference) {
  struct {
    char const* what;
    std::string text;
    char const* key;
    Pair expected;
  } const rows[] = {
      {"plain", "/Root 5 0 R", "Root", {1, 5, 0}},
      {"null key", "3 4 ", nullptr, {1, 3, 4}},
      {"slash ends a number", "/Root 5 0/Info", "Root", {1, 5, 0}},
      {"point ends it, and the digits behind do not count", "/Root 12.5 6 ", "Root", {1, 12, 6}},
      {"NUL ends a number", WithNuls("/Root 5 0\0x"), "Root", {1, 5, 0}},
      {"bracket is no separator", "/Root[5 6 7 ", "Root", {1, 6, 7}},
      {"minus hides its digits", "/Root -5 6 7 ", "Root", {1, 6, 7}},
      {"number in progress at the end, key at the start", "Root 5 0", "Root", {0, 5, kUnset}},
      {"number at the end, bytes before the key", "xxxx/Root 5 0", "Root", {1, 5, 0}},
      {"miss", "/Info 5 0 ", "Root", kNone},
  };
  for (auto const& row : rows) EXPECT_EQ(XrefTwo(row.text, row.key), row.expected) << row.what;
}

TEST_F(NumberScan, OneNumberForTheCrossReference) {
  struct {
    char const* what;
    std::string text;
    Single expected;
  } const rows[] = {
      {"plain", "/Size 12 ", {1, 12}},
      {"> ends a number", "/Size 12>>", {1, 12}},
      {"point ends a number", "/Size 12.5 ", {1, 12}},
      {"slash separates", "/Size /12 ", {1, 12}},
      {"NUL separates", WithNuls("/Size\00012 "), {1, 12}},
      {"bracket is no separator", "/Size[12 13 ", {1, 13}},
      {"reference reads as its number", "/Size 12 0 R ", {1, 12}},
      {"minus hides its digits", "/Size -12 13 ", {1, 13}},
      {"number in progress at the end, key at the start", "/Size 12", kNoNumber},
      {"number at the end, bytes before the key", "xx/Size 12", {1, 12}},
      {"miss", "/Sise 12 ", kNoNumber},
  };
  for (auto const& row : rows) EXPECT_EQ(XrefOne(row.text, "/Size"), row.expected) << row.what;
}

TEST_F(NumberScan, NumbersBeyond32BitsAreTheNearestBound) {
  EXPECT_EQ(One("/Count 2147483647 ", "Count"), (Single{1, 2147483647}));
  EXPECT_EQ(One("/Count 2147483648 ", "Count"), (Single{1, 2147483647}));
  EXPECT_EQ(One("/Count 99999999999999999999999999 ", "Count"), (Single{1, 2147483647}));
  EXPECT_EQ(XrefOne("/Size 4294967296 ", "Size"), (Single{1, 2147483647}));
}

TEST_F(NumberScan, MethodsSetError2ForMissingArguments) {
  ScanBuffer b("/K 1 2 ");
  DWORD v = 0;
  CCreatePDF& s = *session_;
  std::function<int()> const calls[] = {
      [&] { return s.GetValue(nullptr, b.size(), "K", &v, &v); },
      [&] { return s.GetValue(b.data(), 0, "K", &v, &v); },
      [&] { return s.GetValue(b.data(), b.size(), "K", nullptr, &v); },
      [&] { return s.GetValue(b.data(), b.size(), "K", &v, nullptr); },
      [&] { return s.GetValue(nullptr, b.size(), "K", &v); },
      [&] { return s.GetValue(b.data(), 0, "K", &v); },
      [&] { return s.GetValue(b.data(), b.size(), nullptr, &v); },
      [&] { return s.GetValue(b.data(), b.size(), "K", nullptr); },
      [&] { return s.GetFirstValue(nullptr, b.size(), &v, &v); },
      [&] { return s.GetFirstValue(b.data(), 0, &v, &v); },
      [&] { return s.GetFirstValue(b.data(), b.size(), nullptr, &v); },
      [&] { return s.GetFirstValue(b.data(), b.size(), &v, nullptr); },
      [&] { return s.GetValueFromArray(nullptr, b.size(), "K", &v, &v); },
      [&] { return s.GetValueFromArray(b.data(), 0, "K", &v, &v); },
      [&] { return s.GetValueFromArray(b.data(), b.size(), "K", nullptr, &v); },
      [&] { return s.GetValueFromArray(b.data(), b.size(), "K", &v, nullptr); },
  };
  for (auto const& call : calls) {
    s.PDF_SetLastError(PDF_ERROR_NONE);
    EXPECT_EQ(call(), 0);
    EXPECT_EQ(s.PDF_GetLastError(), DWORD{PDF_ERROR_INVALID_HANDLE});
  }
}

TEST_F(NumberScan, MissSetsNoError) {
  session_->PDF_SetLastError(PDF_ERROR_NONE);
  EXPECT_EQ(Two("/Info 5 0 R ", "Root"), kNone);
  EXPECT_EQ(One("/Info 5 0 R ", "Root"), kNoNumber);
  EXPECT_EQ(First("12 0 R "), kNone);
  EXPECT_EQ(Array("[1 0] ", "Decode"), kNone);
  EXPECT_EQ(session_->PDF_GetLastError(), DWORD{PDF_ERROR_NONE});
}

TEST_F(NumberScan, FunctionsReturnZeroForMissingArguments) {
  ScanBuffer b("/K 1 2 ");
  DWORD v = 0;
  EXPECT_EQ(sorrelin::GetIntPairAfterKey(nullptr, b.size(), "K", &v, &v), 0);
  EXPECT_EQ(sorrelin::GetIntPairAfterKey(b.data(), 0, "K", &v, &v), 0);
  EXPECT_EQ(sorrelin::GetIntPairAfterKey(b.data(), b.size(), "K", nullptr, &v), 0);
  EXPECT_EQ(sorrelin::GetIntPairAfterKey(b.data(), b.size(), "K", &v, nullptr), 0);
  EXPECT_EQ(sorrelin::GetIntAfterKey(nullptr, b.size(), "K", &v), 0);
  EXPECT_EQ(sorrelin::GetIntAfterKey(b.data(), 0, "K", &v), 0);
  EXPECT_EQ(sorrelin::GetIntAfterKey(b.data(), b.size(), nullptr, &v), 0);
  EXPECT_EQ(sorrelin::GetIntAfterKey(b.data(), b.size(), "K", nullptr), 0);
}

// Each variant, run on "/Key" with numbers after it.
struct Variant {
  char const* name;
  std::function<int(CCreatePDF&, ScanBuffer&)> run;
};

DWORD g_values[4];

Variant const kVariants[] = {
    {"GetValue, two",
     [](CCreatePDF& s, ScanBuffer& b) {
       return s.GetValue(b.data(), b.size(), "Key", &g_values[0], &g_values[1]);
     }},
    {"GetValue, one",
     [](CCreatePDF& s, ScanBuffer& b) {
       return s.GetValue(b.data(), b.size(), "Key", &g_values[0]);
     }},
    {"GetFirstValue",
     [](CCreatePDF& s, ScanBuffer& b) {
       return s.GetFirstValue(b.data(), b.size(), &g_values[0], &g_values[1]);
     }},
    {"GetValueFromArray",
     [](CCreatePDF& s, ScanBuffer& b) {
       return s.GetValueFromArray(b.data(), b.size(), "Key", &g_values[0], &g_values[1]);
     }},
    {"GetNumericArray",
     [](CCreatePDF&, ScanBuffer& b) {
       return sorrelin::GetNumericArray(b.data(), b.size(), "Key", g_values, 2);
     }},
    {"GetIntPairAfterKey",
     [](CCreatePDF&, ScanBuffer& b) {
       return sorrelin::GetIntPairAfterKey(b.data(), b.size(), "Key", &g_values[0], &g_values[1]);
     }},
    {"GetIntAfterKey",
     [](CCreatePDF&, ScanBuffer& b) {
       return sorrelin::GetIntAfterKey(b.data(), b.size(), "Key", &g_values[0]);
     }},
};

TEST_F(NumberScan, NinetyNineDigitsAreRead) {
  std::string const number = std::string(98, '0') + "7";
  for (Variant const& variant : kVariants) {
    ScanBuffer buffer("/Key " + number + " " + number + " ");
    g_values[0] = kUnset;
    EXPECT_EQ(variant.run(*session_, buffer), 1) << variant.name;
    EXPECT_EQ(g_values[0], 7u) << variant.name;
  }
}

TEST_F(NumberScan, UnfinishedOrDroppedRunOfHundredDigitsIsHarmless) {
  EXPECT_EQ(One("/Count " + std::string(100, '1'), "/Count"), kNoNumber);
  EXPECT_EQ(One("/Count " + std::string(100, '1') + "x 5 ", "/Count"), (Single{1, 5}));
  EXPECT_EQ(One("/Count x" + std::string(100, '1') + " 5 ", "/Count"), (Single{1, 5}));
}

using NumberScanDeathTest = NumberScan;

TEST_F(NumberScanDeathTest, HundredDigitsEndTheProcess) {
  for (Variant const& variant : kVariants) {
    ScanBuffer buffer("/Key " + std::string(100, '0') + " 1 ");
    EXPECT_DEATH(variant.run(*session_, buffer), "100 or more characters") << variant.name;
  }
}

}  // namespace
