// Texts between UTF-8 and UTF-16.
#include "tools/cli/text.h"

#include <gtest/gtest.h>

namespace sorrelin::tool {
namespace {

// The units of Windows have a type of their own.
std::u16string UnitsOf(std::string const& text) {
  WideText const wide = Utf16(text).value();
  return {wide.begin(), wide.end()};
}

TEST(Text, Utf8BecomesUtf16) {
  EXPECT_EQ(UnitsOf(""), u"");
  EXPECT_EQ(UnitsOf("a\xC3\xA4\xE2\x82\xAC"), u"a\u00E4\u20AC");
  EXPECT_EQ(UnitsOf("\xF0\x9F\x98\x80"), u"\U0001F600");
}

TEST(Text, WhatIsNotUtf8IsRefused) {
  EXPECT_EQ(Utf16("\xFF"), std::nullopt);
  EXPECT_EQ(Utf16("a\xC3"), std::nullopt);
  EXPECT_EQ(Utf16("\xED\xA0\x80"), std::nullopt);
}

}  // namespace
}  // namespace sorrelin::tool
