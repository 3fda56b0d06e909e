// The end of the process and the local time.
#include <gtest/gtest.h>
#include <sorrelin/platform/process.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>

namespace {

// Seconds since 1970 of a calendar time without a zone.
std::time_t SecondsOf(SYSTEMTIME const& time) {
  std::tm calendar{};
  calendar.tm_year = time.wYear - 1900;
  calendar.tm_mon = time.wMonth - 1;
  calendar.tm_mday = time.wDay;
  calendar.tm_hour = time.wHour;
  calendar.tm_min = time.wMinute;
  calendar.tm_sec = time.wSecond;
  return timegm(&calendar);
}

// The clock of std::time may lag behind.
std::time_t Now() { return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()); }

SYSTEMTIME TimeIn(char const* zone) {
  setenv("TZ", zone, 1);
  SYSTEMTIME time{};
  GetLocalTime(&time);
  unsetenv("TZ");
  return time;
}

TEST(EndProcess, WritesOneLineAndAborts) {
  EXPECT_EXIT(EndProcess("the line does not fit"), testing::KilledBySignal(SIGABRT),
              "^the line does not fit\n$");
}

TEST(GetLocalTime, IsTheTimeOfNow) {
  std::time_t const before = Now();
  SYSTEMTIME const time = TimeIn("UTC0");
  std::time_t const after = Now();
  EXPECT_GE(SecondsOf(time), before);
  EXPECT_LE(SecondsOf(time), after);
  EXPECT_LT(time.wMilliseconds, 1000);
}

TEST(GetLocalTime, FollowsTheZone) {
  std::time_t const utc = SecondsOf(TimeIn("UTC0"));
  std::time_t const east = SecondsOf(TimeIn("EST-14"));
  EXPECT_GE(east - utc, 14 * 3600);
  EXPECT_LE(east - utc, 14 * 3600 + 60);
}

// 1970-01-01 was a Thursday, 4 when Sunday is 0.
TEST(GetLocalTime, DayOfWeekFitsTheDate) {
  SYSTEMTIME const time = TimeIn("UTC0");
  EXPECT_EQ(time.wDayOfWeek, (SecondsOf(time) / 86'400 + 4) % 7);
}

}  // namespace
