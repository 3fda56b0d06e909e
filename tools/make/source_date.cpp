// Seconds to a date of the calendar.
#include "tools/make/source_date.h"

#include <charconv>
#include <chrono>

namespace sorrelin::tool {

std::optional<SYSTEMTIME> TimeOfEpoch(std::string_view seconds) {
  long long count = 0;
  char const* const end = seconds.data() + seconds.size();
  auto const [stop, error] = std::from_chars(seconds.data(), end, count);
  if (error != std::errc{} || stop != end || count < 0 || count > kLastSecond) return std::nullopt;
  using namespace std::chrono;
  sys_seconds const time{std::chrono::seconds{count}};
  sys_days const day = floor<days>(time);
  year_month_day const date(day);
  hh_mm_ss const clock(time - day);
  SYSTEMTIME result{};
  result.wYear = static_cast<WORD>(static_cast<int>(date.year()));
  result.wMonth = static_cast<WORD>(static_cast<unsigned>(date.month()));
  result.wDayOfWeek = static_cast<WORD>(weekday(day).c_encoding());
  result.wDay = static_cast<WORD>(static_cast<unsigned>(date.day()));
  result.wHour = static_cast<WORD>(clock.hours().count());
  result.wMinute = static_cast<WORD>(clock.minutes().count());
  result.wSecond = static_cast<WORD>(clock.seconds().count());
  return result;
}

}  // namespace sorrelin::tool
