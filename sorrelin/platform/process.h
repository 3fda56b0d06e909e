/* What the library needs of the process and its clock. Valid C11 and C++. */
#ifndef SORRELIN_PLATFORM_PROCESS_H_
#define SORRELIN_PLATFORM_PROCESS_H_

#include <sorrelin/platform/types.h>

#if defined(_WIN32)

#ifdef __cplusplus
#define SORRELIN_PLATFORM_API extern "C"
#else
#define SORRELIN_PLATFORM_API
#endif

#else

/* A time of day. */
typedef struct tagSYSTEMTIME {
  WORD wYear;         /* all four digits */
  WORD wMonth;        /* from 1 */
  WORD wDayOfWeek;    /* from 0, Sunday */
  WORD wDay;          /* from 1 */
  WORD wHour;         /* 0 to 23 */
  WORD wMinute;       /* 0 to 59 */
  WORD wSecond;       /* 0 to 60 */
  WORD wMilliseconds; /* 0 to 999 */
} SYSTEMTIME;

/* The local time of now. */
SORRELIN_PLATFORM_API void GetLocalTime(SYSTEMTIME* time);

#endif /* _WIN32 */

#if defined(__GNUC__)
#define SORRELIN_NORETURN __attribute__((noreturn))
#else
#define SORRELIN_NORETURN __declspec(noreturn)
#endif

/* Writes `reason` as one line to standard error and aborts. The only way in which the library ends
 * a process, kept for conditions that have no error code. */
SORRELIN_PLATFORM_API SORRELIN_NORETURN void EndProcess(char const* reason);

/* From now on large blocks that are freed are kept for the next ones, where some systems would take
 * each back at once and hand out zeroed memory page by page. For programs that work through many
 * pictures of one size; the library leaves the choice to the process. */
SORRELIN_PLATFORM_API void KeepFreedMemory(void);

#endif /* SORRELIN_PLATFORM_PROCESS_H_ */
