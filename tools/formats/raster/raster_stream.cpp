// Lines are plain, or packed: a byte with the number of further lines that are the same, then runs
// until the line is full. A run is a byte n and, for n up to 127, a pixel that comes n + 1 times;
// for n from 129 on, 257 - n different pixels. 128 leaves the rest of the line blank.
#include "tools/formats/raster/raster_stream.h"

#include <algorithm>

namespace sorrelin::tool {
namespace {

constexpr int kMostRepeats = 127, kRestIsBlank = 128, kLiteralBase = 257;
constexpr char kRemedy[] = " (print it again)";

std::string CutText(RasterHeader const& header, int rows) {
  return "the data end or are damaged in row " + std::to_string(rows + 1) + " of " +
         std::to_string(header.page.height) + ", and what follows is not read";
}

}  // namespace

RasterStream::RasterStream(ByteStream& stream, RasterKind const& kind)
    : stream_(stream), kind_(kind) {
  stream_.Take(kind.apple ? kAppleSyncBytes : kRasterSyncBytes);
  if (!kind.apple) return;
  for (BYTE const byte : stream_.Take(4)) pages_left_ = pages_left_ << 8 | byte;
}

std::optional<RasterPage> RasterStream::NextPage(std::string& problem) {
  problem.clear();
  if (ended_ || !SkipRows(problem)) return std::nullopt;
  ended_ = true;
  auto const bytes = stream_.Take(kind_.header_bytes);
  if (bytes.empty()) {
    if (pages_left_ > 0) {
      problem = "lacks " + std::to_string(pages_left_) + " of the pages that it announces";
      problem += kRemedy;
    }
    return std::nullopt;
  }
  if (bytes.size() < kind_.header_bytes) {
    return problem = std::string("ends within the header of a page") + kRemedy, std::nullopt;
  }
  auto const header = ReadRasterHeader(kind_, bytes, problem);
  if (!header) return std::nullopt;
  header_ = *header;
  if (pages_left_ > 0) --pages_left_;
  ended_ = false;
  rows_ = 0;
  repeats_ = 0;
  return header_.page;
}

bool RasterStream::SkipRows(std::string& problem) {
  std::vector<BYTE> row(header_.page.RowBytes());
  while (rows_ < header_.page.height) {
    if (!ReadRow(row, problem)) return false;
  }
  return true;
}

bool RasterStream::ReadRow(std::span<BYTE> row, std::string& problem) {
  if (ended_ || rows_ == header_.page.height) return false;
  if (repeats_ > 0) {
    --repeats_;
  } else if (!ReadLine()) {
    ended_ = true;
    return problem = CutText(header_, rows_), false;
  }
  ++rows_;
  Convert(row);
  return true;
}

bool RasterStream::ReadLine() {
  line_.resize(header_.lines.bytes);
  if (!kind_.packed) return stream_.TakeInto(line_);
  int const repeats = stream_.Get();
  if (repeats < 0) return false;
  repeats_ = static_cast<unsigned>(repeats);
  return UnpackLine() && repeats <= header_.page.height - rows_ - 1;
}

bool RasterStream::UnpackLine() {
  size_t const unit = header_.lines.unit_bytes;
  std::span<BYTE> rest(line_);
  while (!rest.empty()) {
    int const run = stream_.Get();
    if (run < 0) return false;
    if (run == kRestIsBlank) {
      std::ranges::fill(rest, header_.lines.blank);
      return true;
    }
    bool const literal = run > kMostRepeats;
    size_t const pixels = static_cast<size_t>(literal ? kLiteralBase - run : run + 1);
    if (pixels * unit > rest.size()) return false;
    if (!stream_.TakeInto(rest.first(literal ? pixels * unit : unit))) return false;
    for (size_t i = unit; !literal && i < pixels * unit; ++i) rest[i] = rest[i - unit];
    rest = rest.subspan(pixels * unit);
  }
  return true;
}

void RasterStream::Convert(std::span<BYTE> row) const {
  size_t const count = std::min(row.size(), line_.size());
  BYTE const flip = header_.lines.inverted ? 0xFF : 0;
  for (size_t i = 0; i < count; ++i) row[i] = static_cast<BYTE>(line_[i] ^ flip);
  if (header_.page.bits != 16 || !kind_.low_first) return;
  for (size_t i = 0; i + 1 < count; i += 2) std::swap(row[i], row[i + 1]);
}

}  // namespace sorrelin::tool
