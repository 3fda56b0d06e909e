// Reading: a page image beside the bare codec on the same data, and how opening, loading and memory
// grow with the document. Each line prints a figure and the most that it may be.
#include <benchmark/benchmark.h>
#include <siblings/cadwick/group4.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/platform/memory.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <stdexcept>
#include <vector>

#include "bench/a4_pages.h"
#include "bench/bare_codecs.h"

namespace {

using bench::kHeight;
using bench::kWidth;
using test::Bytes;

constexpr double kDecodeLimit = 1.15;

// A document in memory, in a block of its own.
Bytes FinishDocument(CCreatePDF& session) {
  int64_t address = 0;
  DWORD size = 0;
  session.FinishPDFInMemory(&address, &size);
  auto const* const data = reinterpret_cast<BYTE const*>(address);
  if (data == nullptr) throw std::runtime_error("the document was not written");
  return Bytes(data, data + size);
}

std::unique_ptr<CCreatePDF> StartDocument() {
  auto session = std::make_unique<CCreatePDF>();
  session->CreatePDFInMemory(0, 0);
  return session;
}

std::unique_ptr<CCreatePDF> Open(Bytes const& document) {
  auto session = std::make_unique<CCreatePDF>();
  auto const address = reinterpret_cast<int64_t>(document.data());
  if (session->OpenPDFFileInMemory(address, static_cast<DWORD>(document.size())) == 0) {
    throw std::runtime_error("the document was not opened");
  }
  return session;
}

void LoadPage(CCreatePDF& session, DWORD page) {
  test::Block const dib(session.LoadImageFromPDF(page));
  if (dib.get() == nullptr) throw std::runtime_error("the page was not read");
}

// Runs both, one after the other, and reports the ratio of their best times.
void CompareDecoding(benchmark::State& state, Bytes const& document,
                     std::function<void()> const& bare) {
  auto const session = Open(document);
  double best_bare = std::numeric_limits<double>::max();
  double best_page = best_bare;
  for ([[maybe_unused]] auto _ : state) {
    best_bare = std::min(best_bare, bench::Seconds(bare));
    double const seconds = bench::Seconds([&] { LoadPage(*session, 0); });
    best_page = std::min(best_page, seconds);
    state.SetIterationTime(seconds);
  }
  state.counters["bare_ms"] = best_bare * 1e3;
  state.counters["page_ms"] = best_page * 1e3;
  state.counters["ratio"] = best_page / best_bare;
  state.counters["limit"] = kDecodeLimit;
}

Bytes OnePage(HDIB dib, char const* library, DWORD compression, int quality) {
  auto const session = StartDocument();
  session->SaveDIBAsColorPDFPage(dib, library, compression, quality);
  return FinishDocument(*session);
}

// Memory that a decoder fills, fresh as the library's is.
using Fresh = std::unique_ptr<BYTE[]>;
Fresh MakeFresh(size_t size) { return Fresh(new BYTE[size]); }

void FlatePage(benchmark::State& state) {
  test::Block const dib = bench::MakePage(static_cast<WORD>(state.range(0)));
  DWORD size = 0;
  Bytes const raw =
      test::Block(StartDocument()->ConvertDIB2UncompressedPDFImage(dib, size)).Content();
  Bytes coded(compressBound(raw.size()));
  uLongf length = coded.size();
  compress2(coded.data(), &length, raw.data(), raw.size(), 6);
  CompareDecoding(state, OnePage(dib, "", PDF_COMPRESSION_FLATE, 6), [&] {
    Fresh const out = MakeFresh(raw.size());
    uLongf out_length = raw.size();
    uncompress(out.get(), &out_length, coded.data(), length);
    benchmark::DoNotOptimize(out.get());
  });
}

constexpr size_t kBilevelRowBytes = (kWidth + 7) / 8;

int GiveRow(BYTE* row, int32_t index, void* user) {
  Bytes const& rows = *static_cast<Bytes const*>(user);
  std::memcpy(row, rows.data() + kBilevelRowBytes * static_cast<size_t>(index), kBilevelRowBytes);
  return CCITT_ROW_DONE;
}

class CodedData : public sorrelin::cadwick::ByteSink {
 public:
  bool Write(std::span<BYTE const> bytes) override {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    return true;
  }
  Bytes const& bytes() const { return bytes_; }

 private:
  Bytes bytes_;
};

// The bare decoder's rows, one after another.
int TakeRow(BYTE* row, int32_t index, void* user) {
  BYTE* const rows = static_cast<BYTE*>(user);
  std::memcpy(rows + kBilevelRowBytes * static_cast<size_t>(index), row, kBilevelRowBytes);
  return CCITT_ROW_DONE;
}

void Group4Page(benchmark::State& state) {
  test::Block const dib = bench::MakePage(1);
  DWORD size = 0;
  Bytes rows = test::Block(StartDocument()->ConvertDIB2UncompressedPDFImage(dib, size)).Content();
  for (BYTE& byte : rows) byte = static_cast<BYTE>(~byte);
  CodedData coded;
  sorrelin::cadwick::EncodeGroup4({kWidth, kHeight}, {GiveRow, &rows}, coded);
  CompareDecoding(state, OnePage(dib, CADWICK, PDF_COMPRESSION_CCITT, 0), [&] {
    Fresh const out = MakeFresh(rows.size());
    sorrelin::cadwick::DecodeGroup4(coded.bytes(), {kWidth, kHeight}, {TakeRow, out.get()});
    benchmark::DoNotOptimize(out.get());
  });
}

void JpegPage(benchmark::State& state) {
  WORD const bits = static_cast<WORD>(state.range(0));
  test::Block const dib = bench::MakePage(bits);
  size_t const rows_at = sizeof(BITMAPINFOHEADER) + (bits == 8 ? 1024 : 0);
  Bytes const block = dib.Content();
  Bytes const file = bench::EncodeJpeg(block.data() + rows_at, kWidth, kHeight, bits, 75);
  CompareDecoding(state, OnePage(dib, RENNICK, PDF_COMPRESSION_JPEG, 75), [&] {
    Fresh const out = MakeFresh(size_t{kWidth} * kHeight * bits / 8);
    bench::DecodeJpeg(file, out.get());
    benchmark::DoNotOptimize(out.get());
  });
}

constexpr DWORD kFewPages = 1000;
constexpr DWORD kManyPages = 15000;
constexpr DWORD kObjectsOfAPage = 6;

Bytes MakeDocument(DWORD pages) {
  test::Block const dib = test::MakeDib({.width = 16, .height = 16, .bits = 1},
                                        [](LONG x, LONG y) { return (x ^ y) & 1 ? 1u : 0u; });
  auto const session = StartDocument();
  for (DWORD page = 0; page < pages; ++page) {
    session->SaveDIBAsColorPDFPage(dib, "", PDF_COMPRESSION_NONE, 0);
  }
  return FinishDocument(*session);
}

Bytes const& Document(DWORD pages) {
  static Bytes const few = MakeDocument(kFewPages);
  static Bytes const many = MakeDocument(kManyPages);
  return pages == kFewPages ? few : many;
}

// Many pages beside few, and the memory of an open document beside that of an unused session.
void OpenDocument(benchmark::State& state) {
  double best_few = std::numeric_limits<double>::max();
  double best_many = best_few;
  for ([[maybe_unused]] auto _ : state) {
    best_few = std::min(best_few, bench::Seconds([&] { Open(Document(kFewPages)); }));
    double const seconds = bench::Seconds([&] { Open(Document(kManyPages)); });
    best_many = std::min(best_many, seconds);
    state.SetIterationTime(seconds);
  }
  std::unique_ptr<CCreatePDF> unused;
  std::unique_ptr<CCreatePDF> open;
  double const session_MiB = bench::ExtraMemory([&] { unused = std::make_unique<CCreatePDF>(); });
  double const open_MiB = bench::ExtraMemory([&] { open = Open(Document(kManyPages)); });
  state.counters["ratio"] = best_many / best_few;
  state.counters["limit"] = 16;
  state.counters["bytes_per_object"] =
      (open_MiB - session_MiB) * 1024 * 1024 / (kManyPages * kObjectsOfAPage);
  state.counters["bytes_limit"] = 250;
}

// The last page beside the first.
void LoadLastPage(benchmark::State& state) {
  auto const session = Open(Document(kManyPages));
  double best_first = std::numeric_limits<double>::max();
  double best_last = best_first;
  for ([[maybe_unused]] auto _ : state) {
    best_first = std::min(best_first, bench::Seconds([&] { LoadPage(*session, 0); }));
    double const seconds = bench::Seconds([&] { LoadPage(*session, kManyPages - 1); });
    best_last = std::min(best_last, seconds);
    state.SetIterationTime(seconds);
  }
  state.counters["first_us"] = best_first * 1e6;
  state.counters["last_us"] = best_last * 1e6;
  state.counters["ratio"] = best_last / best_first;
}

BENCHMARK(FlatePage)
    ->ArgName("bits")
    ->Arg(1)
    ->Arg(8)
    ->Arg(24)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(20);
BENCHMARK(Group4Page)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(50);
BENCHMARK(JpegPage)
    ->ArgName("bits")
    ->Arg(8)
    ->Arg(24)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(20);
BENCHMARK(OpenDocument)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);
BENCHMARK(LoadLastPage)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(500);

}  // namespace

BENCHMARK_MAIN();
