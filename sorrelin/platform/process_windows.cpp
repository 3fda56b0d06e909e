// The end of the process on Windows; the rest of the platform layer is the system there.
#include <sorrelin/platform/process.h>

#include <cstdio>
#include <cstdlib>

void KeepFreedMemory(void) {}

void EndProcess(char const* reason) {
  std::fprintf(stderr, "%s\n", reason);
  std::abort();
}
