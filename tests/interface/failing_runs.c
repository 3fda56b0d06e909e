/* Runs of a scenario in which allocations fail. */
#define _GNU_SOURCE
#include "tests/interface/failing_runs.h"

#include <dlfcn.h>
#include <sorrelin/frame/pdf.h>
#include <sorrelin/platform/memory.h>
#include <stdio.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

static void (*fail_allocations)(long number, int and_later);
static int (*has_allocation_failed)(void);

static long fail_at;   /* the allocation that fails */
static int fail_later; /* and all after it */
char const* step = "";

int FindAllocator(void) {
  *(void**)&fail_allocations = dlsym(RTLD_DEFAULT, "FailAllocations");
  *(void**)&has_allocation_failed = dlsym(RTLD_DEFAULT, "HasAllocationFailed");
  return fail_allocations != NULL && has_allocation_failed != NULL;
}

void GiveMemory(void) { fail_allocations(0, 0); }

void Require(int holds, char const* what, long value) {
  if (holds) return;
  GiveMemory();
  fprintf(stderr, "step %s, allocation %ld%s: %s (%ld)\n", step, fail_at,
          fail_later ? " and later" : "", what, value);
  _exit(3);
}

int IsShortage(DWORD code) {
  switch (code) {
    case PDF_ERROR_SYSTEM:
    case PDF_ERROR_MEMORY:
    case PDF_ERROR_TEMP_DIRECTORY:
    case PDF_ERROR_TEMP_FILE:
    case PDF_ERROR_CCITT_LIBRARY:
    case PDF_ERROR_ENCODING:
    case PDF_ERROR_JPEG_LIBRARY:
    case PDF_ERROR_OPEN:
    case PDF_ERROR_DECOMPRESSION:
    case PDF_ERROR_CCITT_CODING:
      return 1;
    default:
      return 0;
  }
}

HDIB NewBitmap(int bits) {
  enum { kWidth = 40, kHeight = 9 };
  DWORD const stride = (DWORD)((kWidth * bits + 31) / 32 * 4);
  DWORD const colours = bits == 1 ? 2 : bits == 8 ? 256 : 0;
  HDIB const bitmap = GlobalAlloc(GHND, 40 + colours * 4 + stride * kHeight);
  BYTE* const bytes = GlobalLock(bitmap);
  BITMAPINFOHEADER header = {40, kWidth, kHeight, 1, (WORD)bits, 0, 0, 3780, 3780, 0, 0};
  memcpy(bytes, &header, sizeof header);
  for (DWORD i = 0; i < colours * 4; ++i) bytes[40 + i] = (BYTE)(i / 4 * (bits == 1 ? 255 : 1));
  for (DWORD i = 0; i < stride * kHeight; ++i) bytes[40 + colours * 4 + i] = (BYTE)(i * 7);
  GlobalUnlock(bitmap);
  return bitmap;
}

/* What became of a child. */
enum Outcome { kNothingFailed, kRecovered, kBroken };

static enum Outcome RunChild(void (*prepare)(void), void (*scenario)(void), long number,
                             int later) {
  pid_t const child = fork();
  if (child == 0) {
    alarm(60);
    fail_at = number;
    fail_later = later;
    if (prepare != NULL) prepare();
    fail_allocations(number, later);
    scenario();
    _exit(has_allocation_failed() ? kRecovered : kNothingFailed);
  }
  int status = 0;
  if (waitpid(child, &status, 0) != child) return kBroken;
  if (WIFSIGNALED(status)) {
    fprintf(stderr, "allocation %ld%s: signal %d\n", number, later ? " and later" : "",
            WTERMSIG(status));
  }
  return WIFEXITED(status) && WEXITSTATUS(status) <= kRecovered ? WEXITSTATUS(status) : kBroken;
}

int RunScenario(char const* name, void (*prepare)(void), void (*scenario)(void)) {
  enum { kMostBroken = 20 };
  long runs = 0;
  int broken = 0;
  for (int later = 0; later <= 1; ++later) {
    for (long number = 1; broken < kMostBroken; ++number) {
      enum Outcome const outcome = RunChild(prepare, scenario, number, later);
      if (outcome == kNothingFailed) break;
      ++runs;
      broken += outcome == kBroken;
    }
  }
  printf("%s: %ld runs, %d broken\n", name, runs, broken);
  fflush(stdout);
  return broken == 0 && runs > 0;
}
