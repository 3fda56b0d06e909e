// An update of a document by one page beside a copy of its file, for documents of many pages. Each
// line prints the ratio of the two best times of the run, and the most that it may be; `growth` is
// the time per page beside that of the smallest document, 1 where an update is linear in it.
#include <benchmark/benchmark.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/writer/encoded_page.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/a4_pages.h"

namespace {

namespace fs = std::filesystem;

constexpr double kMostRatio = 3;
constexpr double kMostGrowth = 1.5;

// A bilevel page of 300 dpi whose coded picture is `bytes` long; what the bytes are matters to
// nobody here.
sorrelin::EncodedPage PageOf(std::vector<BYTE> const& picture) {
  sorrelin::EncodedPage page;
  page.width = 2480;
  page.height = 3508;
  page.bits_per_pixel = 1;
  page.compression = PDF_COMPRESSION_CCITT;
  page.dpi = {300, 300};
  page.data = picture.data();
  page.size = static_cast<DWORD>(picture.size());
  return page;
}

std::vector<BYTE> RandomBytes(size_t count) {
  std::minstd_rand random(1);
  std::vector<BYTE> bytes(count);
  for (BYTE& byte : bytes) byte = static_cast<BYTE>(random() >> 8);
  return bytes;
}

// A document of pages, and a copy of it to update.
class Files {
 public:
  Files(int pages, size_t bytes)
      : directory_(fs::temp_directory_path() / "sorrelin-update-bench"),
        picture_(RandomBytes(bytes)) {
    fs::create_directories(directory_);
    Write([&](CCreatePDF& session) {
      for (int i = 0; i < pages; ++i) sorrelin::WriteEncodedPage(session, PageOf(picture_));
    });
    fs::rename(Copied(), Original());
  }
  ~Files() { fs::remove_all(directory_); }

  double CopySeconds() const {
    fs::remove(Copied());
    return bench::Seconds([&] { fs::copy_file(Original(), Copied()); });
  }
  // Adds a page to the copy.
  double UpdateSeconds() const {
    return bench::Seconds([&] {
      Write([&](CCreatePDF& session) { sorrelin::WriteEncodedPage(session, PageOf(picture_)); });
    });
  }
  unsigned Pages() const { return GetNumberOfPagesInPDFFile(Copied().c_str()); }

 private:
  fs::path Original() const { return directory_ / "original.pdf"; }
  fs::path Copied() const { return directory_ / "copy.pdf"; }

  template <typename AddPages>
  void Write(AddPages add_pages) const {
    auto const session = std::make_unique<CCreatePDF>();
    session->CreatePDF(Copied().c_str());
    add_pages(*session);
    session->FinishPDF();
    session->ClosePDFFile();
  }

  fs::path directory_;
  std::vector<BYTE> picture_;
};

// Arguments: pages, and KiB of each page's picture.
void UpdateByOnePage(benchmark::State& state) {
  // Seconds per page of the smallest document, by the size of its pictures.
  static std::map<int64_t, double> smallest;
  int const pages = static_cast<int>(state.range(0));
  Files const files(pages, static_cast<size_t>(state.range(1)) * 1024);
  double copy = std::numeric_limits<double>::max();
  double update = copy;
  for ([[maybe_unused]] auto _ : state) {
    copy = std::min(copy, files.CopySeconds());
    double const seconds = files.UpdateSeconds();
    update = std::min(update, seconds);
    state.SetIterationTime(seconds);
    if (files.Pages() != static_cast<unsigned>(pages) + 1) state.SkipWithError("no page was added");
  }
  double const per_page = update / pages;
  double const& first = smallest.try_emplace(state.range(1), per_page).first->second;
  state.counters["copy_ms"] = copy * 1000;
  state.counters["ratio"] = update / copy;
  state.counters["limit"] = kMostRatio;
  state.counters["growth"] = per_page / first;
  state.counters["growth_limit"] = kMostGrowth;
}

BENCHMARK(UpdateByOnePage)
    ->ArgNames({"pages", "KiB"})
    ->ArgsProduct({{1'000, 5'000, 10'000}, {4, 40}})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(10);

}  // namespace

BENCHMARK_MAIN();
