// A whole page through the library beside the bare codec on the same rows, A4 at 300 dpi. Each line
// prints the ratio of the two best times of the run, and the most that it may be; `extra_MiB` is
// the memory that a page takes beside its bitmap, and `extra_limit_MiB` the most it may take.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/platform/memory.h>
#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "bench/bare_codecs.h"
#include "tests/support/dib.h"

namespace {

constexpr LONG kWidth = 2480;
constexpr LONG kHeight = 3508;
constexpr LONG k300Dpi = 11811;
constexpr double kMiB = 1024.0 * 1024.0;
constexpr double kRoomMiB = 8;

double Seconds(std::function<void()> const& work) {
  auto const start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// A page of text at 1 bit (strokes in lines of words), a smooth picture with grain otherwise.
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

test::Block MakePage(WORD bits) {
  return test::MakeDib({.width = kWidth,
                        .height = kHeight,
                        .bits = bits,
                        .x_per_metre = k300Dpi,
                        .y_per_metre = k300Dpi},
                       [&](LONG x, LONG y) { return PixelAt(bits, x, y); });
}

class Target {
 public:
  Target() : path_(std::filesystem::temp_directory_path() / "sorrelin-bench.pdf") {}
  ~Target() { std::filesystem::remove(path_); }
  std::string Fresh() const {
    std::filesystem::remove(path_);
    return path_.string();
  }

 private:
  std::filesystem::path path_;
};

// Most memory the process has held, and holds now.
double ProcessMiB(char const* field) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.compare(0, std::strlen(field), field) == 0) {
      return std::stod(line.substr(std::strlen(field) + 1)) / 1024;
    }
  }
  return 0;
}

double ExtraMemory(std::function<void()> const& work) {
  malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << "5";
  double const before = ProcessMiB("VmRSS");
  work();
  return ProcessMiB("VmHWM") - before;
}

struct Limits {
  double ratio;
  double extra_MiB;
};

// Runs both, one after the other, and reports the ratio of their best times.
void Compare(benchmark::State& state, Limits const& limits, std::function<void()> const& bare,
             std::function<void(CCreatePDF&)> const& page) {
  Target const target;
  double best_bare = std::numeric_limits<double>::max();
  double best_page = best_bare;
  double extra = 0;
  auto const run = [&](std::function<void(CCreatePDF&)> const& work) {
    auto const session = std::make_unique<CCreatePDF>();
    session->CreatePDF(target.Fresh().c_str());
    work(*session);
    if (session->PDF_GetLastError() != PDF_ERROR_NONE) state.SkipWithError("the page failed");
    session->ClosePDFFile();
  };
  for ([[maybe_unused]] auto _ : state) {
    best_bare = std::min(best_bare, Seconds(bare));
    double seconds = 0;
    run([&](CCreatePDF& session) { seconds = Seconds([&] { page(session); }); });
    best_page = std::min(best_page, seconds);
    state.SetIterationTime(seconds);
  }
  // Of its own, because the look at the memory gives the heap back first.
  run([&](CCreatePDF& session) { extra = ExtraMemory([&] { page(session); }); });
  state.counters["ratio"] = best_page / best_bare;
  state.counters["limit"] = limits.ratio;
  state.counters["extra_MiB"] = extra;
  state.counters["extra_limit_MiB"] = limits.extra_MiB;
}

void SavePage(CCreatePDF& session, HDIB dib, char const* library, DWORD compression, int quality) {
  session.SaveDIBAsColorPDFPage(dib, library, compression, quality);
}

test::Bytes RawImage(HDIB dib) {
  auto const session = std::make_unique<CCreatePDF>();
  DWORD size = 0;
  return test::Block(session->ConvertDIB2UncompressedPDFImage(dib, size)).Content();
}

void FlatePage(benchmark::State& state) {
  test::Block const dib = MakePage(static_cast<WORD>(state.range(0)));
  test::Bytes const raw = RawImage(dib);
  test::Bytes out(compressBound(raw.size()));
  uLongf length = 0;
  auto const bare = [&] {
    length = out.size();
    compress2(out.data(), &length, raw.data(), raw.size(), 6);
  };
  bare();
  double const raw_MiB = static_cast<double>(raw.size()) / kMiB;
  Compare(state, {1.10, raw_MiB + static_cast<double>(length) / kMiB + kRoomMiB}, bare,
          [&](CCreatePDF& s) { SavePage(s, dib, "", PDF_COMPRESSION_FLATE, 6); });
}

void Group4Page(benchmark::State& state) {
  test::Block const dib = MakePage(1);
  test::Bytes const raw = RawImage(dib);
  size_t coded = 0;
  auto const bare = [&] { coded = bench::EncodeGroup4(raw, kWidth, kHeight).size(); };
  bare();
  Compare(state, {1.10, static_cast<double>(raw.size() + coded) / kMiB + kRoomMiB}, bare,
          [&](CCreatePDF& s) { SavePage(s, dib, CADWICK, PDF_COMPRESSION_CCITT, 0); });
}

void JpegPage(benchmark::State& state) {
  WORD const bits = static_cast<WORD>(state.range(0));
  test::Block const dib = MakePage(bits);
  size_t const rows_at = sizeof(BITMAPINFOHEADER) + (bits == 8 ? 1024 : 0);
  test::Bytes const block = dib.Content();
  size_t coded = 0;
  auto const bare = [&] {
    coded = bench::EncodeJpeg(block.data() + rows_at, kWidth, kHeight, bits, 75);
  };
  bare();
  Compare(state, {1.10, static_cast<double>(block.size() + coded) / kMiB + kRoomMiB}, bare,
          [&](CCreatePDF& s) { SavePage(s, dib, RENNICK, PDF_COMPRESSION_JPEG, 75); });
}

// Beside one copy of the rows into fresh memory and its write to a file.
void RawPage(benchmark::State& state) {
  test::Block const dib = MakePage(24);
  test::Bytes const raw = RawImage(dib);
  std::filesystem::path const path = std::filesystem::temp_directory_path() / "sorrelin-bench.raw";
  auto const bare = [&] {
    std::filesystem::remove(path);
    std::unique_ptr<BYTE[]> const copy(new BYTE[raw.size()]);
    std::memcpy(copy.get(), raw.data(), raw.size());
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    std::fwrite(copy.get(), 1, raw.size(), file);
    std::fclose(file);
  };
  Compare(state, {3.0, static_cast<double>(raw.size()) / kMiB + kRoomMiB}, bare,
          [&](CCreatePDF& s) { SavePage(s, dib, "", PDF_COMPRESSION_NONE, 0); });
  std::filesystem::remove(path);
}

BENCHMARK(FlatePage)
    ->ArgName("bits")
    ->Arg(1)
    ->Arg(8)
    ->Arg(24)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);
BENCHMARK(Group4Page)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(30);
BENCHMARK(JpegPage)
    ->ArgName("bits")
    ->Arg(8)
    ->Arg(24)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10);
BENCHMARK(RawPage)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

}  // namespace

BENCHMARK_MAIN();
