// The scanner's free functions on names, brackets, hexadecimal text and digits.
#include <gtest/gtest.h>
#include <sorrelin/syntax/scanner.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

std::string Taken(char* text, uint64_t length) {
  std::string const copy(text, static_cast<size_t>(length));
  std::free(text);
  return copy;
}

// The name, or "-".
std::string Name(std::string const& text) {
  char* name = nullptr;
  if (sorrelin::ParseName(text.c_str(), &name) == 0) return "-";
  return Taken(name, std::char_traits<char>::length(name));
}

TEST(ParseName, FirstNameOfAText) {
  struct {
    char const* what;
    std::string text;
    std::string expected;
  } const rows[] = {
      {"plain", "/FlateDecode", "/FlateDecode"},
      {"text in front is passed", "[ 5 /FlateDecode]", "/FlateDecode]"},
      {"slash ends", "/A/B", "/A"},
      {"blank ends", "/A B", "/A"},
      {"CR ends", "/A\rB", "/A"},
      {"LF ends", "/A\nB", "/A"},
      {"tab does not", "/A\tB", "/A\tB"},
      {"two > end", "/A>>", "/A"},
      {"one > does not", "/A>B", "/A>B"},
      {"hexadecimal pair", "/A#20B#2F", "/A B/"},
      {"# at the end stays", "/A#2", "/A#2"},
      {"second digit is none: a NUL ends the name", "/A#2xB", "/A"},
      {"first digit is none: a NUL ends the name", "/A#x2B", "/A"},
      {"empty name", "/ A", "/"},
      {"no name", "FlateDecode", "-"},
      {"empty text", "", "-"},
  };
  for (auto const& row : rows) EXPECT_EQ(Name(row.text), row.expected) << row.what;
}

TEST(ParseName, HoldsUpTo127Bytes) {
  EXPECT_EQ(Name("/" + std::string(126, 'a')), "/" + std::string(126, 'a'));
  EXPECT_EQ(Name("/" + std::string(127, 'a')), "-");
}

TEST(ParseName, MissingArgumentsGiveZero) {
  char* name = nullptr;
  EXPECT_EQ(sorrelin::ParseName(nullptr, &name), 0);
  EXPECT_EQ(sorrelin::ParseName("/A", nullptr), 0);
}

// The text inside, or "-".
std::string Inside(std::string const& text, char opening) {
  char* out = nullptr;
  uint64_t length = 0;
  if (sorrelin::ExtractBracketed(text.data(), text.size(), opening, &out, &length) == 0) return "-";
  EXPECT_EQ(out[length], '\0');
  return Taken(out, length);
}

TEST(ExtractBracketed, FirstOpeningToLastClosing) {
  struct {
    char const* what;
    std::string text;
    char opening;
    std::string expected;
  } const rows[] = {
      {"square", "x[1 2 1]y", '[', "1 2 1"},
      {"nested", "[a[b]c]", '[', "a[b]c"},
      {"the last of several", "[a] [b]", '[', "a] [b"},
      {"angle", "<AB>", '<', "AB"},
      {"round", "(AB)", '(', "AB"},
      {"anything else closes with )", "{AB)", '{', "AB"},
      {"escaped closing is passed", "[a]b\\]", '[', "a"},
      {"empty", "[]", '[', "-"},
      {"not closed", "[ab", '[', "-"},
      {"closed before it opens", "]ab[", '[', "-"},
      {"not opened", "ab]", '[', "-"},
      {"empty text", "", '[', "-"},
      {"NUL bytes are text", std::string("[a\0b]", 5), '[', std::string("a\0b", 3)},
  };
  for (auto const& row : rows) {
    EXPECT_EQ(Inside(row.text, row.opening), row.expected) << row.what;
  }
}

TEST(ExtractBracketed, LooksWithinTheSizeOnly) {
  char* out = nullptr;
  uint64_t length = 0;
  EXPECT_EQ(sorrelin::ExtractBracketed("[ab]", 3, '[', &out, &length), 0);
  EXPECT_EQ(sorrelin::ExtractBracketed("xx[a]", 2, '[', &out, &length), 0);
}

TEST(ExtractBracketed, MissingArgumentsGiveZero) {
  char* out = nullptr;
  uint64_t length = 0;
  EXPECT_EQ(sorrelin::ExtractBracketed(nullptr, 4, '[', &out, &length), 0);
  EXPECT_EQ(sorrelin::ExtractBracketed("[ab]", 4, '[', nullptr, &length), 0);
  EXPECT_EQ(sorrelin::ExtractBracketed("[ab]", 4, '[', &out, nullptr), 0);
}

TEST(IsAllDigits, NeedsADigitAndNothingElse) {
  EXPECT_TRUE(sorrelin::IsAllDigits("0123456789"));
  EXPECT_FALSE(sorrelin::IsAllDigits(""));
  EXPECT_FALSE(sorrelin::IsAllDigits(nullptr));
  EXPECT_FALSE(sorrelin::IsAllDigits("12 "));
  EXPECT_FALSE(sorrelin::IsAllDigits("-1"));
}

TEST(HexDigitValue, CoversBothCases) {
  std::string const digits = "0123456789abcdefABCDEF";
  for (int c = -128; c < 128; ++c) {
    size_t const at = digits.find(static_cast<char>(c));
    int const expected = at == std::string::npos ? -1 : static_cast<int>(at < 16 ? at : at - 6);
    EXPECT_EQ(sorrelin::HexDigitValue(static_cast<char>(c)), expected) << c;
  }
}

TEST(HexPairToByte, BadDigitGivesZero) {
  EXPECT_EQ(sorrelin::HexPairToByte('F', 'e'), 0xFE);
  EXPECT_EQ(sorrelin::HexPairToByte('2', '0'), 0x20);
  EXPECT_EQ(sorrelin::HexPairToByte('0', 'a'), 0x0A);
  EXPECT_EQ(sorrelin::HexPairToByte('g', '0'), 0);
  EXPECT_EQ(sorrelin::HexPairToByte('2', 'g'), 0);
}

std::vector<BYTE> Decoded(std::string const& text) {
  std::vector<BYTE> bytes(text.size() / 2 == 0 ? 0 : text.size() / 2 - 1);
  sorrelin::DecodeHexString(text.data(), text.size(), bytes.data());
  return bytes;
}

TEST(DecodeHexString, PairsBehindTheOpeningBracket) {
  EXPECT_EQ(Decoded("<FEFF0041>"), (std::vector<BYTE>{0xFE, 0xFF, 0x00, 0x41}));
  EXPECT_EQ(Decoded("<>"), std::vector<BYTE>{});
  EXPECT_EQ(Decoded("<"), std::vector<BYTE>{});
}

TEST(DecodeHexString, OddDigitIsDropped) {
  EXPECT_EQ(Decoded("<41424>"), (std::vector<BYTE>{0x41, 0x42}));
}

TEST(DecodeHexString, BadDigitCountsAsMinusOne) {
  EXPECT_EQ(Decoded("<4 5G>"), (std::vector<BYTE>{0x3F, 0x4F}));
  EXPECT_EQ(Decoded("< 4>"), (std::vector<BYTE>{0xF4}));
  EXPECT_EQ(Decoded("<  >"), (std::vector<BYTE>{0xEF}));
}

}  // namespace
