// The end of the process and the local time on POSIX.
#include <sorrelin/platform/process.h>
#include <time.h>

#include <cstdio>
#include <cstdlib>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

void GetLocalTime(SYSTEMTIME* time) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tzset();  // localtime_r alone may keep the zone of an earlier call
  tm local{};
  localtime_r(&now.tv_sec, &local);
  time->wYear = static_cast<WORD>(local.tm_year + 1900);
  time->wMonth = static_cast<WORD>(local.tm_mon + 1);
  time->wDayOfWeek = static_cast<WORD>(local.tm_wday);
  time->wDay = static_cast<WORD>(local.tm_mday);
  time->wHour = static_cast<WORD>(local.tm_hour);
  time->wMinute = static_cast<WORD>(local.tm_min);
  time->wSecond = static_cast<WORD>(local.tm_sec);
  time->wMilliseconds = static_cast<WORD>(now.tv_nsec / 1'000'000);
}

void KeepFreedMemory(void) {
#if defined(__GLIBC__)
  constexpr int kLargestKeptBlock = 32 << 20;  // what every glibc takes
  constexpr int kMostKept = 256 << 20;
  mallopt(M_MMAP_THRESHOLD, kLargestKeptBlock);
  mallopt(M_TRIM_THRESHOLD, kMostKept);
#endif
}

void EndProcess(char const* reason) {
  std::fprintf(stderr, "%s\n", reason);
  std::abort();
}
