// Text in the form of JSON.
#include "tools/cli/json.h"

#include <gtest/gtest.h>

namespace sorrelin::tool {
namespace {

TEST(Json, StringsAreEscaped) {
  EXPECT_EQ(JsonString("a\"b\\c\nd\x01"), R"("a\"b\\c\u000ad\u0001")");
  EXPECT_EQ(JsonString("K\xC3\xA4se"), "\"K\xC3\xA4se\"");
}

TEST(Json, WhatIsNotUtf8IsReplaced) { EXPECT_EQ(JsonString("a\xFFz"), "\"a\xEF\xBF\xBDz\""); }

TEST(Json, NumbersHaveNoNeedlessDecimals) {
  EXPECT_EQ(JsonNumber(612), "612");
  EXPECT_EQ(JsonNumber(595.276), "595.276");
  EXPECT_EQ(JsonNumber(0.5), "0.5");
  EXPECT_EQ(JsonNumber(0), "0");
}

TEST(Json, MembersKeepTheirOrder) {
  JsonObject object(2);
  object.Add("b", "1");
  object.Add("a", "null");
  EXPECT_EQ(object.Finish(), "{\n    \"b\": 1,\n    \"a\": null\n  }");
  EXPECT_EQ(JsonObject(0).Finish(), "{}");
}

}  // namespace
}  // namespace sorrelin::tool
