// The character classes of the scanner, each over all 256 bytes.
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/syntax/scanner.h>

#include <functional>
#include <memory>
#include <string>

namespace {

using Predicate = std::function<bool(BYTE)>;

// Exactly the bytes of `members` are in the class.
void ExpectMembers(std::string const& members, Predicate const& is_member) {
  for (int c = 0; c < 256; ++c) {
    bool const expected = members.find(static_cast<char>(c)) != std::string::npos;
    EXPECT_EQ(is_member(static_cast<BYTE>(c)), expected) << "byte " << c;
  }
}

std::string const kDigitBytes = "0123456789";
std::string const kLetterBytes = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";

TEST(CharacterClass, SeparatorsAreCrLfBlankAndBracket) {
  auto const session = std::make_unique<CCreatePDF>();
  ExpectMembers("\r\n [", [&](BYTE c) { return session->IsDelimiter(static_cast<char>(c)) == 1; });
}

TEST(CharacterClass, NumbersAreTheDigits) {
  auto const session = std::make_unique<CCreatePDF>();
  ExpectMembers(kDigitBytes, [&](BYTE c) { return session->IsNumber(static_cast<char>(c)) == 1; });
  ExpectMembers(kDigitBytes, sorrelin::IsDigitChar);
}

TEST(CharacterClass, ValidCharactersAreAsciiLettersAndDigits) {
  auto const session = std::make_unique<CCreatePDF>();
  ExpectMembers(kDigitBytes + kLetterBytes,
                [&](BYTE c) { return session->IsValidChar(static_cast<char>(c)) == 1; });
}

TEST(CharacterClass, MembersGiveOneAndOthersZero) {
  auto const session = std::make_unique<CCreatePDF>();
  EXPECT_EQ(session->IsDelimiter('['), 1u);
  EXPECT_EQ(session->IsDelimiter(']'), 0u);
  EXPECT_EQ(session->IsNumber('7'), 1u);
  EXPECT_EQ(session->IsNumber('a'), 0u);
  EXPECT_EQ(session->IsValidChar('a'), 1u);
  EXPECT_EQ(session->IsValidChar('/'), 0u);
}

TEST(CharacterClass, WhiteSpaceIsLfCrAndBlank) { ExpectMembers("\n\r ", sorrelin::IsWhiteSpace); }

TEST(CharacterClass, PdfWhiteSpaceAddsNulAndTab) {
  ExpectMembers(std::string("\0\t\n\r ", 5), sorrelin::IsPdfWhiteSpace);
}

TEST(CharacterClass, DelimitersAreWhiteSpaceBracketsSlashAndNul) {
  ExpectMembers(std::string("\n\r /[]()<>\0", 11), sorrelin::IsDelimiterChar);
}

TEST(CharacterClass, NumberCharactersAddMinusAndPoint) {
  ExpectMembers(kDigitBytes + "-.", sorrelin::IsNumberChar);
}

}  // namespace
