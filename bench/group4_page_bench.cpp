// A whole page with Group 4 beside the bare encoder on the same rows.
//
// The page is added to a document in memory, and the sibling is loaded and freed for it. "page_ms"
// and "encoder_ms" are the processor time of the best iteration of each, "ratio" is how many times
// the encoder's time the page takes, and the label says whether that is little enough. The program
// links nothing that callers would not have, since each loaded library makes loading a sibling
// dearer.
#include <benchmark/benchmark.h>
#include <siblings/cadwick/group4.h>
#include <sorrelin/frame/pdf.h>
#include <sorrelin/platform/wide_string.h>
#include <tests/support/bilevel.h>
#include <tests/support/dib.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <string>

namespace {

using test::Bilevel;

// A page that write_text_page has written.
Bilevel ReadPage(char const* path) {
  std::ifstream file(path, std::ios::binary);
  std::string magic;
  int32_t width = 0;
  int32_t height = 0;
  file >> magic >> width >> height;
  file.get();
  Bilevel page(width, height);
  for (int32_t y = 0; y < height; ++y) {
    file.read(reinterpret_cast<char*>(page.Row(y).data()),
              static_cast<std::streamsize>(page.Payload()));
  }
  if (!file || magic != "P4") throw std::runtime_error("no page");
  return page;
}

test::Block DibOf(Bilevel const& page) {
  constexpr LONG kPixelsPerMetre = 11811;  // 300 dpi
  test::DibSpec spec;
  spec.width = page.Width();
  spec.height = page.Height();
  spec.bits = 1;
  spec.x_per_metre = spec.y_per_metre = kPixelsPerMetre;
  return test::MakeDib(spec, [&](LONG x, LONG y) { return page.Black(x, y) ? 0U : 1U; });
}

class DataSink final : public sorrelin::cadwick::ByteSink {
 public:
  bool Write(std::span<BYTE const> bytes) override {
    data.insert(data.end(), bytes.begin(), bytes.end());
    return true;
  }
  std::vector<BYTE> data;
};

void EncodeBare(Bilevel& page) {
  auto const give_row = [](BYTE* row, int32_t y, void* user) {
    auto const& rows = *static_cast<Bilevel const*>(user);
    std::memcpy(row, rows.Row(y).data(), rows.Stride());
    return static_cast<int>(CCITT_ROW_DONE);
  };
  DataSink sink;
  sorrelin::cadwick::EncodeGroup4(
      {static_cast<uint32_t>(page.Width()), static_cast<uint32_t>(page.Height())},
      {give_row, &page}, sink);
  benchmark::DoNotOptimize(sink.data.data());
}

// Seconds of processor time that `work` takes.
template <typename Work>
double Measure(Work const& work) {
  std::clock_t const start = std::clock();
  work();
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

// The time that a new session takes to save the page.
double MeasurePage(benchmark::State& state, HDIB dib) {
  hPDF session = 0;
  pdf_Init_PDF(&session);
  pdf_CreatePDFInMemory(session, nullptr, 0);
  DWORD error = PDF_ERROR_NONE;
  double const time = Measure([&] {
    error = pdf_SaveDIBAsColorPDFPageW(session, dib, SORRELIN_TEXT("Cadwick.dll"),
                                       PDF_COMPRESSION_CCITT, 0);
  });
  if (error != PDF_ERROR_NONE) state.SkipWithError("the page was not saved");
  pdf_Release_PDF(session);
  return time;
}

void WholePage(benchmark::State& state, char const* path, double limit) {
  Bilevel page = ReadPage(path);
  test::Block const dib = DibOf(page);
  double best_page = std::numeric_limits<double>::max();
  double best_encoder = best_page;
  for (auto _ : state) {
    double const time = MeasurePage(state, dib.get());
    state.SetIterationTime(time);
    best_page = std::min(best_page, time);
    best_encoder = std::min(best_encoder, Measure([&] { EncodeBare(page); }));
  }
  double const ratio = best_page / best_encoder;
  state.counters["page_ms"] = best_page * 1e3;
  state.counters["encoder_ms"] = best_encoder * 1e3;
  state.counters["ratio"] = ratio;
  std::string const wanted = "at most " + std::to_string(limit).substr(0, 4);
  state.SetLabel(ratio <= limit ? wanted : wanted + ", MISSED");
}

}  // namespace

BENCHMARK_CAPTURE(WholePage, text_300dpi, TEXT_PAGE_300, 1.15)->UseManualTime();
BENCHMARK_CAPTURE(WholePage, text_600dpi, TEXT_PAGE_600, 1.15)->UseManualTime();
