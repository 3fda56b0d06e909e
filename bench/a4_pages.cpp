// The A4 pages at 300 dpi that the benchmarks write and read, and how they are measured.
#include "bench/a4_pages.h"

#include <malloc.h>

#include <chrono>
#include <cstring>
#include <fstream>
#include <string>

namespace bench {

namespace {

constexpr LONG k300Dpi = 11811;

DWORD PixelAt(int bits, LONG x, LONG y) {
  DWORD const noise = (static_cast<DWORD>(x) * 2654435761u ^ static_cast<DWORD>(y) * 40503u) >> 28;
  if (bits == 1) {
    bool const margin = x < 250 || x > 2230 || y < 250 || y > 3250 || y % 62 > 34;
    bool const gap = (x / 23 + y / 62 * 5) % 6 == 0;
    LONG const in_glyph = (x + y / 62 * 7) % 23;
    bool const stroke =
        in_glyph < 4 || (in_glyph < 18 && (y % 62 < 4 || (y % 62 > 15 && y % 62 < 19)));
    return margin || gap || !stroke ? 1 : 0;
  }
  DWORD const base = static_cast<DWORD>((x * 200 / kWidth + y * 40 / kHeight));
  if (bits == 8) return base + noise % 4;
  return (base + noise) << 16 | (base / 2 + 60 + noise) << 8 | (200 - base / 2 + noise);
}

// A field of the process's status that counts kB, in MiB.
double ProcessMiB(char const* field) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.compare(0, std::strlen(field), field) == 0) {
      return std::stod(line.substr(std::strlen(field) + 1)) / 1024;
    }
  }
  return 0;
}

}  // namespace

test::Block MakePage(WORD bits) {
  return test::MakeDib({.width = kWidth,
                        .height = kHeight,
                        .bits = bits,
                        .x_per_metre = k300Dpi,
                        .y_per_metre = k300Dpi},
                       [&](LONG x, LONG y) { return PixelAt(bits, x, y); });
}

double Seconds(std::function<void()> const& work) {
  auto const start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double ExtraMemory(std::function<void()> const& work) {
  malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << "5";
  double const before = ProcessMiB("VmRSS");
  work();
  return ProcessMiB("VmHWM") - before;
}

}  // namespace bench
