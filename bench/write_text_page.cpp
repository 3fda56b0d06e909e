// Writes the benchmarks' text page to standard output as a portable bitmap (PBM, raw), so that a
// program which does not link Leptonica can have it. Argument: the resolution in dpi.
#include <tests/support/bilevel_pages.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  test::Bilevel const page = test::TextPage(std::atoi(argv[1]));
  std::printf("P4\n%d %d\n", page.Width(), page.Height());
  for (int32_t y = 0; y < page.Height(); ++y) {
    if (std::fwrite(page.Row(y).data(), page.Payload(), 1, stdout) != 1) return 1;
  }
  return std::fflush(stdout) == 0 ? 0 : 1;
}
