// Seconds since 1970 as dates.
#include "tools/make/source_date.h"

#include <gtest/gtest.h>

#include <string>

namespace sorrelin::tool {
namespace {

std::string Text(std::string const& seconds) {
  auto const time = TimeOfEpoch(seconds);
  if (!time) return "none";
  char text[64];
  std::snprintf(text, sizeof text, "%d %04d-%02d-%02d %02d:%02d:%02d", time->wDayOfWeek,
                time->wYear, time->wMonth, time->wDay, time->wHour, time->wMinute, time->wSecond);
  return text;
}

// 1 January 1970 was a Thursday; 951782400 is 29 February 2000,
// 11,016 days of 86,400 seconds later; 1,000,000,000 is the well-known second of September 2001.
TEST(SourceDate, SecondsAreADateInUtc) {
  EXPECT_EQ(Text("0"), "4 1970-01-01 00:00:00");
  EXPECT_EQ(Text("951782400"), "2 2000-02-29 00:00:00");
  EXPECT_EQ(Text("1000000000"), "0 2001-09-09 01:46:40");
  EXPECT_EQ(Text("253402300799"), "5 9999-12-31 23:59:59");
}

TEST(SourceDate, AnythingElseIsNone) {
  for (char const* const text : {"", "-1", "+1", " 1", "1 ", "1.5", "0x10", "now", "253402300800",
                                 "99999999999999999999999"}) {
    EXPECT_EQ(Text(text), "none") << text;
  }
}

}  // namespace
}  // namespace sorrelin::tool
