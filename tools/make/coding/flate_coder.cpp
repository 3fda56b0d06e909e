// Chooses the prediction of a picture by a quick compressor on bands of its rows.
#include "tools/make/coding/flate_coder.h"

#include <libdeflate.h>

#include <algorithm>

#include "tools/make/coding/png_filter.h"

namespace sorrelin::tool {
namespace {

constexpr int kLevel = 6;
constexpr int kTrialLevel = 1;
// Pictures of fewer bytes are coded in each way that may serve, and the smallest is taken.
constexpr size_t kSmallBytes = size_t{1} << 18;
constexpr size_t kBands = 32;
constexpr size_t kBandShare = 8;  // one of so many rows is tried

// Rows before a band in its part of the picture, of `spare` ones. Parts differ, so that lines of
// text that come at even distances are not all hit or all missed.
size_t RowsBefore(size_t band, size_t spare) {
  constexpr size_t kScatter = 40503, kScatterRange = 65536;  // the golden section, in whole numbers
  return spare * (band * kScatter % kScatterRange) / kScatterRange;
}

// Rows spread over the picture, as the picture's if there are few.
std::vector<BYTE> BandsOf(Samples const& samples) {
  size_t const row_bytes = samples.RowBytes(), rows = static_cast<size_t>(samples.height);
  size_t const band_rows = rows / (kBands * kBandShare);
  if (samples.bytes.size() <= kSmallBytes || band_rows == 0) return samples.bytes;
  std::vector<BYTE> bands;
  bands.reserve(kBands * band_rows * row_bytes);
  for (size_t i = 0; i < kBands; ++i) {
    size_t const part = i * rows / kBands, part_rows = (i + 1) * rows / kBands - part;
    size_t const first = part + RowsBefore(i, part_rows - band_rows);
    auto const start = samples.bytes.begin() + static_cast<ptrdiff_t>(first * row_bytes);
    bands.insert(bands.end(), start, start + static_cast<ptrdiff_t>(band_rows * row_bytes));
  }
  return bands;
}

size_t PixelBytes(Samples const& samples) {
  return std::max<size_t>(1, static_cast<size_t>(samples.Components() * samples.bits) / 8);
}

// Differences of indices and of packed pixels mean little, unless they are 0.
std::vector<Prediction> CandidatesFor(Samples const& samples) {
  if (samples.bits < 8 || !samples.palette.empty()) return {Prediction::kNone, Prediction::kUp};
  return {Prediction::kNone, Prediction::kUp, Prediction::kAdaptive};
}

std::vector<BYTE> RowsFor(Samples const& samples, std::span<BYTE const> bytes,
                          Prediction prediction) {
  return PredictedRows(bytes, samples.RowBytes(), PixelBytes(samples), prediction);
}

}  // namespace

void FlateCoder::Free::operator()(libdeflate_compressor* compressor) const {
  libdeflate_free_compressor(compressor);
}

std::vector<BYTE> FlateCoder::Compress(std::span<BYTE const> bytes) {
  if (compressor_ == nullptr) compressor_.reset(libdeflate_alloc_compressor(kLevel));
  if (compressor_ == nullptr) return {};
  size_t const bound = libdeflate_zlib_compress_bound(compressor_.get(), bytes.size());
  auto const room = std::make_unique_for_overwrite<BYTE[]>(bound);
  size_t const size =
      libdeflate_zlib_compress(compressor_.get(), bytes.data(), bytes.size(), room.get(), bound);
  return {room.get(), room.get() + size};
}

// 0 if memory is short.
size_t FlateCoder::TrialBytes(std::span<BYTE const> bytes) {
  if (trial_ == nullptr) trial_.reset(libdeflate_alloc_compressor(kTrialLevel));
  if (trial_ == nullptr) return 0;
  size_t const bound = libdeflate_zlib_compress_bound(trial_.get(), bytes.size());
  auto const room = std::make_unique_for_overwrite<BYTE[]>(bound);
  return libdeflate_zlib_compress(trial_.get(), bytes.data(), bytes.size(), room.get(), bound);
}

FlateData FlateCoder::Code(Samples const& samples) {
  auto const candidates = CandidatesFor(samples);
  if (samples.bytes.size() <= kSmallBytes) {
    FlateData best;
    for (Prediction const prediction : candidates) {
      auto stream = Compress(RowsFor(samples, samples.bytes, prediction));
      if (!best.stream.empty() && stream.size() >= best.stream.size()) continue;
      best = {std::move(stream), prediction != Prediction::kNone};
    }
    return best;
  }
  std::vector<BYTE> const bands = BandsOf(samples);
  Prediction best = Prediction::kNone;
  size_t least = SIZE_MAX;
  for (Prediction const prediction : candidates) {
    size_t const size = TrialBytes(RowsFor(samples, bands, prediction));
    if (size >= least) continue;
    least = size;
    best = prediction;
  }
  if (best == Prediction::kNone) return {Compress(samples.bytes), false};
  return {Compress(RowsFor(samples, samples.bytes, best)), true};
}

size_t FlateCoder::EstimatedBytes(Samples const& samples) {
  std::vector<BYTE> const bands = BandsOf(samples);
  if (bands.empty()) return 0;
  return static_cast<size_t>(uint64_t{TrialBytes(bands)} * samples.bytes.size() / bands.size());
}

}  // namespace sorrelin::tool
