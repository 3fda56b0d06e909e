// Print rasters of every kind. The input is the stream itself.
#include <tools/formats/raster/raster_stream.h>
#include <unistd.h>

#include <filesystem>

#include "fuzz/fuzz_input.h"

namespace {

constexpr int kMostRows = 2000;  // of all pages: a line may come 256 times
constexpr size_t kMostRowBytes = size_t{1} << 20;

void ReadPages(sorrelin::tool::RasterStream& stream) {
  std::string problem;
  int rows = 0;
  while (auto const page = stream.NextPage(problem)) {
    fuzz::Require(page->width > 0 && page->height > 0, "a page without pixels");
    if (page->RowBytes() > kMostRowBytes) return;
    std::vector<BYTE> row(page->RowBytes());
    for (int y = 0; y < page->height && stream.ReadRow(row, problem); ++y) {
      if (++rows > kMostRows) return;
    }
    if (!problem.empty()) {
      fuzz::Require(!stream.NextPage(problem), "a page after damage");
      return;
    }
  }
}

// Readers of files are given the input as one.
std::string Stored(fuzz::Data data) {
  static std::string const path =
      (std::filesystem::temp_directory_path() / ("raster-" + std::to_string(getpid()))).string();
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  fuzz::Require(file != nullptr, "no file for the input");
  std::fwrite(data.data(), 1, data.size(), file);
  std::fclose(file);
  return path;
}

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  std::string const path = Stored({bytes, size});
  std::string problem;
  auto const input = sorrelin::tool::ByteStream::Open(path, problem);
  std::filesystem::remove(path);
  auto const kind = sorrelin::tool::RasterKindOf(input->Peek(sorrelin::tool::kAppleSyncBytes));
  if (!kind) return 0;
  sorrelin::tool::RasterStream stream(*input, *kind);
  ReadPages(stream);
  return 0;
}
