// Conversion between bytes and UTF-16 in both code pages.
#include <gtest/gtest.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/text.h>

#include <climits>
#include <string>
#include <vector>

namespace {

constexpr UINT kBoth[] = {CP_ACP, CP_UTF8};

std::u16string Wide(UINT code_page, std::string const& text) {
  int const length = static_cast<int>(text.size());
  int const units = MultiByteToWideChar(code_page, MB_PRECOMPOSED, text.data(), length, nullptr, 0);
  std::u16string wide(static_cast<size_t>(units), u'?');
  EXPECT_EQ(MultiByteToWideChar(code_page, 0, text.data(), length, wide.data(), units), units);
  return wide;
}

std::string Narrow(UINT code_page, std::u16string const& text) {
  int const length = static_cast<int>(text.size());
  int const bytes =
      WideCharToMultiByte(code_page, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<size_t>(bytes), '?');
  EXPECT_EQ(WideCharToMultiByte(code_page, 0, text.data(), length, narrow.data(), bytes, nullptr,
                                nullptr),
            bytes);
  return narrow;
}

struct Pair {
  std::string narrow;
  std::u16string wide;
};

// The first and last character of each UTF-8 length, RFC 3629 section 3, and some between.
std::vector<Pair> const kValid = {
    {"a", u"a"},
    {"title.pdf", u"title.pdf"},
    {std::string("\0", 1), std::u16string(u"\0", 1)},
    {"\x7F", u"\x7F"},
    {"\xC2\x80", u"\x80"},
    {"\xC3\xBC", u"\xFC"},
    {"\xDF\xBF", u"\x7FF"},
    {"\xE0\xA0\x80", u"\x800"},
    {"\xE2\x82\xAC", u"\x20AC"},
    {"\xED\x9F\xBF", u"\xD7FF"},
    {"\xEE\x80\x80", u"\xE000"},
    {"\xEF\xBB\xBF", u"\xFEFF"},
    {"\xEF\xBF\xBD", u"\xFFFD"},
    {"\xEF\xBF\xBF", u"\xFFFF"},
    {"\xF0\x90\x80\x80", u"\xD800\xDC00"},
    {"\xF0\x9F\x98\x80", u"\xD83D\xDE00"},
    {"\xF4\x8F\xBF\xBF", u"\xDBFF\xDFFF"},
    {"1\xC3\xA4\xF0\x9F\x98\x80z", u"1\xE4\xD83D\xDE00z"},
};

TEST(MultiByteToWideChar, ValidTextIsUtf8InBothCodePages) {
  for (Pair const& pair : kValid) {
    for (UINT const code_page : kBoth) EXPECT_EQ(Wide(code_page, pair.narrow), pair.wide);
  }
}

TEST(WideCharToMultiByte, ResultIsUtf8InBothCodePages) {
  for (Pair const& pair : kValid) {
    for (UINT const code_page : kBoth) EXPECT_EQ(Narrow(code_page, pair.wide), pair.narrow);
  }
}

// Overlong forms, surrogates, numbers past U+10FFFF, cut sequences, bytes that start none.
std::vector<std::string> const kInvalid = {
    "\x80",
    "\xBF",
    "\xC0\x80",
    "\xC1\xBF",
    "\xC3",
    "\xE2\x82",
    "\xE0\x80\x80",
    "\xE0\x9F\xBF",
    "\xED\xA0\x80",
    "\xED\xBF\xBF",
    "\xF0\x9F",
    "\xF0\x9F\x98",
    "\xF0\x80\x80\x80",
    "\xF0\x8F\xBF\xBF",
    "\xF4\x90\x80\x80",
    "\xF5\x80",
    "\xF8\x88\x80",
    "\xFE",
    "\xFF\xFF",
};

TEST(MultiByteToWideChar, EachInvalidByteIsOneUnit) {
  for (std::string const& bytes : kInvalid) {
    EXPECT_EQ(Wide(CP_UTF8, bytes), std::u16string(bytes.size(), u'\xFFFD'));
    std::u16string const ansi = Wide(CP_ACP, bytes);
    EXPECT_EQ(ansi.size(), bytes.size());
    EXPECT_EQ(ansi.find(u'\xFFFD'), std::u16string::npos);
  }
}

TEST(MultiByteToWideChar, TextGoesOnBehindAnInvalidByte) {
  EXPECT_EQ(Wide(CP_UTF8, "a\xE4z"), u"a\xFFFDz");
  EXPECT_EQ(Wide(CP_ACP, "a\xE4z"), u"a\xE4z");
  EXPECT_EQ(Wide(CP_UTF8,
                 "\xE2\x82"
                 "A\xE2\x82\xAC"),
            u"\xFFFD\xFFFD"
            u"A\x20AC");
  EXPECT_EQ(Wide(CP_ACP,
                 "\xE2\x82"
                 "A\xE2\x82\xAC"),
            u"\xE2\x201A"
            u"A\x20AC");
}

TEST(MultiByteToWideChar, Latin1TextSurvivesInCodePage0) {
  for (int byte = 0xA0; byte <= 0xFF; ++byte) {
    std::u16string const expected(1, static_cast<char16_t>(byte));
    EXPECT_EQ(Wide(CP_ACP, std::string(1, static_cast<char>(byte))), expected);
  }
}

// unicode.org, MAPPINGS/VENDORS/MICSFT/WindowsBestFit/bestfit1252.txt, 0x80 to 0x9F.
TEST(MultiByteToWideChar, BytesBelowLatin1AreWindows1252) {
  std::u16string const expected =
      u"\x20AC\x0081\x201A\x0192\x201E\x2026\x2020\x2021\x02C6\x2030\x0160\x2039\x0152\x008D\x017D"
      u"\x008F\x0090\x2018\x2019\x201C\x201D\x2022\x2013\x2014\x02DC\x2122\x0161\x203A\x0153\x009D"
      u"\x017E\x0178";
  std::string bytes;
  for (int byte = 0x80; byte <= 0x9F; ++byte) bytes += static_cast<char>(byte);
  EXPECT_EQ(Wide(CP_ACP, bytes), expected);
}

TEST(WideCharToMultiByte, LoneSurrogateIsTheReplacementCharacter) {
  std::string const replaced = "\xEF\xBF\xBD";
  EXPECT_EQ(Narrow(CP_UTF8, u"\xD800"), replaced);
  EXPECT_EQ(Narrow(CP_UTF8, u"\xDFFF"), replaced);
  EXPECT_EQ(Narrow(CP_ACP, u"a\xDC00\xD800z"), "a" + replaced + replaced + "z");
  EXPECT_EQ(Narrow(CP_UTF8, u"\xD83D\xD83D\xDE00"), replaced + "\xF0\x9F\x98\x80");
}

TEST(MultiByteToWideChar, LengthMinusOneCountsTheTerminator) {
  WCHAR buffer[4] = {u'?', u'?', u'?', u'?'};
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "ab", -1, nullptr, 0), 3);
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "ab", -1, buffer, 4), 3);
  EXPECT_EQ(std::u16string(buffer, 4), std::u16string(u"ab\0?", 4));
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "", -1, nullptr, 0), 1);
}

TEST(WideCharToMultiByte, LengthMinusOneCountsTheTerminator) {
  char buffer[4] = {'?', '?', '?', '?'};
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"\xFC", -1, nullptr, 0, nullptr, nullptr), 3);
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"\xFC", -1, buffer, 4, nullptr, nullptr), 3);
  EXPECT_EQ(std::string(buffer, 4), std::string("\xC3\xBC\0?", 4));
}

TEST(MultiByteToWideChar, RefusedArgumentsAreError87) {
  WCHAR buffer[4];
  auto const refused = [&](UINT code_page, char const* text, int length, WCHAR* to, int capacity) {
    SetLastError(0);
    EXPECT_EQ(MultiByteToWideChar(code_page, 0, text, length, to, capacity), 0);
    EXPECT_EQ(GetLastError(), 87u);
  };
  refused(CP_ACP, "a", 0, buffer, 4);
  refused(CP_ACP, "a", 0, nullptr, 0);
  refused(1252, "a", 1, buffer, 4);
  refused(CP_ACP, nullptr, 1, buffer, 4);
  refused(CP_ACP, "a", 1, nullptr, 4);
  refused(CP_ACP, "a", 1, buffer, -1);
}

TEST(WideCharToMultiByte, RefusedArgumentsAreError87) {
  char buffer[4];
  BOOL used = 0;
  auto const refused = [&](UINT code_page, WCHAR const* text, int length, char* to, int capacity,
                           char const* default_char, BOOL* used_default) {
    SetLastError(0);
    EXPECT_EQ(
        WideCharToMultiByte(code_page, 0, text, length, to, capacity, default_char, used_default),
        0);
    EXPECT_EQ(GetLastError(), 87u);
  };
  refused(CP_UTF8, u"a", 0, buffer, 4, nullptr, nullptr);
  refused(1200, u"a", 1, buffer, 4, nullptr, nullptr);
  refused(CP_UTF8, nullptr, 1, buffer, 4, nullptr, nullptr);
  refused(CP_UTF8, u"a", 1, nullptr, 4, nullptr, nullptr);
  refused(CP_UTF8, u"a", 1, buffer, -1, nullptr, nullptr);
  refused(CP_UTF8, u"a", 1, buffer, 4, "?", nullptr);
  refused(CP_UTF8, u"a", 1, buffer, 4, nullptr, &used);
}

// What fits is stored, and nothing after the buffer is touched.
TEST(MultiByteToWideChar, SmallBufferIsError122) {
  WCHAR buffer[3] = {u'?', u'?', u'?'};
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", 3, buffer, 2), 0);
  EXPECT_EQ(GetLastError(), 122u);
  EXPECT_EQ(std::u16string(buffer, 3), u"ab?");
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "z\xF0\x9F\x98\x80y", 6, buffer, 2), 0);
  EXPECT_EQ(std::u16string(buffer, 3), u"zb?");
}

TEST(WideCharToMultiByte, SmallBufferIsError122) {
  char buffer[3] = {'?', '?', '?'};
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"ab\xFC", 3, buffer, 2, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), 122u);
  EXPECT_EQ(std::string(buffer, 3), "ab?");
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"z\xFCy", 3, buffer, 2, nullptr, nullptr), 0);
  EXPECT_EQ(std::string(buffer, 3), "zb?");
}

TEST(MultiByteToWideChar, SuccessLeavesTheLastError) {
  SetLastError(38);
  Wide(CP_ACP, "text");
  Narrow(CP_UTF8, u"text");
  EXPECT_EQ(GetLastError(), 38u);
}

// Kept: measuring with 65001 and converting with 0 agree in length; readers of document strings
// measure a marked text in the one and convert it in the other.
TEST(MultiByteToWideChar, BothCodePagesMeasureAlike) {
  std::string text = "\xEF\xBB\xBF";
  for (std::string const& bytes : kInvalid) text += bytes + "a";
  for (Pair const& pair : kValid) text += pair.narrow;
  EXPECT_EQ(Wide(CP_UTF8, text).size(), Wide(CP_ACP, text).size());
}

}  // namespace
