// Decoded samples. Data of picture codings are collected, since their decoders want them whole;
// other samples are cut into rows as they come.
#include "tools/extract/codings/sample_decoder.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "tools/documents/stream_reader.h"
#include "tools/extract/codings/fax_decoder.h"
#include "tools/extract/codings/jbig2_decoder.h"
#include "tools/extract/codings/jpeg_decoder.h"
#include "tools/extract/codings/jpx_decoder.h"
#include "tools/extract/codings/picture_data.h"

namespace sorrelin::tool {
namespace {

constexpr uint64_t kMaxPictureBytes = uint64_t{1} << 40;
// Bytes that some writers add after the samples.
constexpr size_t kSpareBytes = 16;

// Cuts bytes into rows.
class RowCutter {
 public:
  RowCutter(PictureShape const& shape, SampleSink& sink)
      : row_bytes_(shape.RowBytes()), left_(uint64_t{row_bytes_} * shape.height), sink_(sink) {}

  // False once nothing more is wanted.
  bool Take(std::span<BYTE const> bytes) {
    while (!bytes.empty() && left_ != 0) {
      size_t const wanted = row_bytes_ - part_.size();
      if (part_.empty() && bytes.size() >= row_bytes_) {
        if (!Send(bytes.first(row_bytes_))) return false;
        bytes = bytes.subspan(row_bytes_);
        continue;
      }
      size_t const count = std::min(wanted, bytes.size());
      part_.insert(part_.end(), bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(count));
      bytes = bytes.subspan(count);
      if (part_.size() < row_bytes_) break;
      if (!Send(part_)) return false;
      part_.clear();
    }
    spare_ += bytes.size();
    return spare_ <= std::max(row_bytes_, kSpareBytes);
  }

  bool IsFull() const { return left_ == 0; }
  bool IsRefused() const { return refused_; }

 private:
  bool Send(std::span<BYTE const> row) {
    left_ -= row_bytes_;
    refused_ = !sink_.Row(row);
    return !refused_;
  }

  size_t row_bytes_;
  uint64_t left_;
  SampleSink& sink_;
  std::vector<BYTE> part_;
  uint64_t spare_ = 0;
  bool refused_ = false;
};

bool DecodeRaw(PictureShape const& shape, SampleSink& sink, std::string& problem) {
  RowCutter cutter(shape, sink);
  StreamEnd const end =
      ReadStream(shape.stream, [&](std::span<BYTE const> bytes) { return cutter.Take(bytes); });
  if (end == StreamEnd::kUnreadable) problem = kUnknownFilter;
  if (end == StreamEnd::kDamaged) problem = cutter.IsFull() ? kDamagedData : kShortData;
  if (end == StreamEnd::kStopped && !cutter.IsRefused()) {
    problem = "its data are longer than its picture";
  }
  if (end == StreamEnd::kWhole && !cutter.IsFull()) problem = kShortData;
  return problem.empty();
}

bool DecodeCoded(PictureShape const& shape, SampleSink& sink, std::string& problem) {
  auto const data = ReadPictureData(shape.stream, problem);
  if (!data) return false;
  switch (shape.coding) {
    case PictureCoding::kFax:
      return DecodeFax(shape, *data, sink, problem);
    case PictureCoding::kJpeg:
      return DecodeJpegSamples(shape, *data, sink, problem);
    case PictureCoding::kJpx:
      return DecodeJpx(shape, *data, sink, problem);
    default:
      break;
  }
  std::vector<BYTE> globals;
  if (shape.globals) {
    auto found = ReadPictureData(*shape.globals, problem);
    if (!found) return false;
    globals = std::move(*found);
  }
  return DecodeJbig2(shape, globals, *data, sink, problem);
}

}  // namespace

std::optional<std::vector<BYTE>> ReadPictureData(QPDFObjectHandle stream, std::string& problem) {
  problem.clear();
  std::vector<BYTE> data;
  bool too_long = false;
  StreamEnd const end = ReadStream(stream, [&](std::span<BYTE const> bytes) {
    too_long = data.size() + bytes.size() > kMaxCodedBytes;
    if (!too_long) data.insert(data.end(), bytes.begin(), bytes.end());
    return !too_long;
  });
  if (end == StreamEnd::kUnreadable) problem = kUnknownFilter;
  if (end == StreamEnd::kDamaged) problem = kDamagedData;
  if (too_long) problem = "its data are too long";
  if (end == StreamEnd::kWhole && data.empty()) problem = "its picture has no data";
  if (!problem.empty()) return std::nullopt;
  return data;
}

bool DecodeSamples(PictureShape const& shape, SampleSink& sink, std::string& problem) {
  problem.clear();
  if (uint64_t{shape.RowBytes()} * shape.height > kMaxPictureBytes) {
    problem = "its picture is too large";
    return false;
  }
  if (shape.coding == PictureCoding::kRaw) return DecodeRaw(shape, sink, problem);
  return DecodeCoded(shape, sink, problem);
}

}  // namespace sorrelin::tool
