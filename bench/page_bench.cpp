// A whole page through the library beside the bare codec on the same rows, A4 at 300 dpi. Each line
// prints the ratio of the two best times of the run, and the most that it may be; `extra_MiB` is
// the memory that a page takes beside its bitmap, and `extra_limit_MiB` the most it may take.
#include <benchmark/benchmark.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/platform/memory.h>
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "bench/a4_pages.h"
#include "bench/bare_codecs.h"

namespace {

using bench::kHeight;
using bench::kWidth;
using bench::MakePage;
using bench::Seconds;

constexpr double kMiB = 1024.0 * 1024.0;
constexpr double kRoomMiB = 8;

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
  run([&](CCreatePDF& session) { extra = bench::ExtraMemory([&] { page(session); }); });
  state.counters["bare_ms"] = best_bare * 1e3;
  state.counters["page_ms"] = best_page * 1e3;
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
    coded = bench::EncodeJpeg(block.data() + rows_at, kWidth, kHeight, bits, 75).size();
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
