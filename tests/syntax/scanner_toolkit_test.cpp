// The scanner functions that only tools call.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/platform/wide_string.h>
#include <sorrelin/syntax/scanner.h>
#include <tests/support/scan_buffer.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace {

using test::ScanBuffer;
using testing::ElementsAre;
using testing::IsEmpty;

bool IsName(std::string const& text) {
  ScanBuffer buffer(text);
  return sorrelin::IsValueName(buffer.data(), buffer.size(), "/Type");
}

TEST(IsValueName, SlashBehindTheKeyAndWhiteSpace) {
  EXPECT_TRUE(IsName("/Type/Page "));
  EXPECT_TRUE(IsName("/Type \r\n /Page "));
  EXPECT_FALSE(IsName("/Type [/Page "));
  EXPECT_FALSE(IsName("/Type\t/Page "));
  EXPECT_FALSE(IsName("/Type "));
  EXPECT_FALSE(IsName("/Kids/Page "));
}

bool IsReferenceValue(std::string const& text) {
  ScanBuffer buffer(text);
  return sorrelin::IsValueReference(buffer.data(), buffer.size(), "/Length");
}

TEST(IsValueReference, AllPartsButTheRMayBeMissing) {
  EXPECT_TRUE(IsReferenceValue("/Length 12 0 R "));
  EXPECT_TRUE(IsReferenceValue("/Length12\r0\nR "));
  EXPECT_TRUE(IsReferenceValue("/LengthR "));
  EXPECT_TRUE(IsReferenceValue("/Length 12 R "));
  EXPECT_FALSE(IsReferenceValue("/Length [12 0 R "));
  EXPECT_FALSE(IsReferenceValue("/Length 12 "));
  EXPECT_FALSE(IsReferenceValue("/Length 12 0 0 R "));
  EXPECT_FALSE(IsReferenceValue("/Width 12 0 R "));
}

TEST(ScannerToolkit, MissingArgumentsAreFalse) {
  ScanBuffer b("/K /V ");
  EXPECT_FALSE(sorrelin::IsValueName(nullptr, b.size(), "/K"));
  EXPECT_FALSE(sorrelin::IsValueName(b.data(), 0, "/K"));
  EXPECT_FALSE(sorrelin::IsValueName(b.data(), b.size(), nullptr));
  EXPECT_FALSE(sorrelin::IsValueReference(nullptr, b.size(), "/K"));
  EXPECT_FALSE(sorrelin::IsValueReference(b.data(), 0, "/K"));
  EXPECT_FALSE(sorrelin::IsValueReference(b.data(), b.size(), nullptr));
  EXPECT_FALSE(sorrelin::IsNumericText(nullptr, 0));
}

TEST(IsNumericText, FirstCharacterIsNotLookedAt) {
  EXPECT_TRUE(sorrelin::IsNumericText("12", 0));
  EXPECT_TRUE(sorrelin::IsNumericText("-12", 0));
  EXPECT_TRUE(sorrelin::IsNumericText("x12", 0));
  EXPECT_TRUE(sorrelin::IsNumericText(" \r\n-12", 0));
  EXPECT_TRUE(sorrelin::IsNumericText("12 x", 0));
  EXPECT_FALSE(sorrelin::IsNumericText("1x", 0));
  EXPECT_FALSE(sorrelin::IsNumericText("--1", 0));
  EXPECT_FALSE(sorrelin::IsNumericText("", 0));
}

TEST(IsNumericText, LengthBoundsTheText) {
  EXPECT_TRUE(sorrelin::IsNumericText("12x", 2));
  EXPECT_FALSE(sorrelin::IsNumericText("12x", 3));
  EXPECT_TRUE(sorrelin::IsNumericText("12", 50));
}

struct Header {
  int result;
  DWORD number;
  DWORD generation;
  bool operator==(Header const&) const = default;
};

Header ParseHeader(char const* text) {
  Header header{0, 77, 77};
  header.result = sorrelin::ParseObjectHeader(text, &header.number, &header.generation);
  return header;
}

TEST(ParseObjectHeader, TwoNumbersAndTheKeyword) {
  EXPECT_EQ(ParseHeader("12 3 obj<<"), (Header{1, 12, 3}));
  EXPECT_EQ(ParseHeader("\r\n12\r3\nobj"), (Header{1, 12, 3}));
  EXPECT_EQ(ParseHeader("12 3obj"), (Header{1, 12, 3}));
}

TEST(ParseObjectHeader, AnythingElseZeroesBoth) {
  EXPECT_EQ(ParseHeader("12 3 R"), (Header{0, 0, 0}));
  EXPECT_EQ(ParseHeader("12 x obj"), (Header{0, 0, 0}));
  EXPECT_EQ(ParseHeader("12 3 endobj"), (Header{0, 0, 0}));
  EXPECT_EQ(ParseHeader(""), (Header{0, 0, 0}));
}

TEST(ParseObjectHeader, FourteenDigitsOfANumberCount) {
  EXPECT_EQ(ParseHeader("00000000000012 0 obj"), (Header{1, 12, 0}));
  EXPECT_EQ(ParseHeader("000000000000123 0 obj"), (Header{1, 12, 0}));
  EXPECT_EQ(ParseHeader("99999999999 0 obj"), (Header{1, 2147483647, 0}));
}

TEST(ParseObjectHeader, MissingArgumentsGiveZero) {
  DWORD v = 0;
  EXPECT_EQ(sorrelin::ParseObjectHeader(nullptr, &v, &v), 0);
  EXPECT_EQ(sorrelin::ParseObjectHeader("1 0 obj", nullptr, &v), 0);
  EXPECT_EQ(sorrelin::ParseObjectHeader("1 0 obj", &v, nullptr), 0);
}

std::vector<std::string> Keys(std::string const& text) {
  ScanBuffer buffer(text);
  char* table = nullptr;
  DWORD const count = sorrelin::ListDictionaryKeys(buffer.data(), buffer.size(), &table);
  EXPECT_EQ(table == nullptr, count == 0);
  std::vector<std::string> keys;
  for (DWORD slot = 0; slot < count; ++slot) keys.push_back(table + slot * 50);
  std::free(table);
  return keys;
}

TEST(ListDictionaryKeys, NamesOfTheOuterDictionary) {
  EXPECT_THAT(Keys("<</Type /Page/Count 3>>"), ElementsAre("/Type", "/Page/Count", "/Count"));
  EXPECT_THAT(Keys("<</A <</B 1>> /C [/D] /E<ab>>>"), ElementsAre("/A", "/C", "/E"));
  EXPECT_THAT(Keys("/A <</B>> /C"), ElementsAre("/B"));
  EXPECT_THAT(Keys("(no keys)"), IsEmpty());
}

TEST(ListDictionaryKeys, LongNamesAreCutToTheSlot) {
  std::string const name = "/" + std::string(80, 'k');
  EXPECT_THAT(Keys("<<" + name + " /B 1>>"), ElementsAre(name.substr(0, 49), "/B"));
}

TEST(ListDictionaryKeys, MissingArgumentsGiveZero) {
  ScanBuffer b("<</A 1>>");
  char* table = nullptr;
  EXPECT_EQ(sorrelin::ListDictionaryKeys(nullptr, 4, &table), 0u);
  EXPECT_EQ(sorrelin::ListDictionaryKeys(b.data(), 0, &table), 0u);
  EXPECT_EQ(sorrelin::ListDictionaryKeys(b.data(), b.size(), nullptr), 0u);
}

sorrelin::WideString Wide(char const* text) {
  WCHAR* const wide = sorrelin::AnsiToWide(text);
  sorrelin::WideString const copy(reinterpret_cast<WCHAR const*>(wide));
  std::free(wide);
  return copy;
}

TEST(AnsiToWide, CopiesInTheSystemsCodePage) {
  EXPECT_EQ(Wide("AB"), SORRELIN_TEXT("AB"));
  EXPECT_EQ(Wide(""), SORRELIN_TEXT(""));
  EXPECT_EQ(sorrelin::AnsiToWide(nullptr), nullptr);
}

}  // namespace
