// The A4 pages at 300 dpi that the benchmarks write and read, and how they are measured.
#ifndef BENCH_A4_PAGES_H_
#define BENCH_A4_PAGES_H_

#include <functional>

#include "tests/support/dib.h"

namespace bench {

inline constexpr LONG kWidth = 2480;
inline constexpr LONG kHeight = 3508;

// A page of text at 1 bit (strokes in lines of words), a smooth picture with grain otherwise.
test::Block MakePage(WORD bits);

double Seconds(std::function<void()> const& work);

// MiB of memory that `work` takes beside what the process holds.
double ExtraMemory(std::function<void()> const& work);

}  // namespace bench

#endif  // BENCH_A4_PAGES_H_
