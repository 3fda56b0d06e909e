// Masks as opacity. They are read whole, since they are seldom large.
#include "tools/extract/page/opacity.h"

#include <algorithm>

#include "tools/extract/codings/sample_decoder.h"
#include "tools/extract/page/pixel_maker.h"

namespace sorrelin::tool {
namespace {

constexpr uint64_t kMaxMaskPixels = uint64_t{1} << 30;
constexpr BYTE kOpaque = 255;

class ToneSink : public SampleSink {
 public:
  ToneSink(PictureShape const& shape, bool is_stencil, std::vector<BYTE>& tones)
      : shape_(shape), tones_(tones) {
    if (shape.bits > 8) return;
    for (RGBQUAD const& colour : ColoursOf(shape)) {
      // 0 paints in a stencil.
      BYTE const tone = colour.rgbGreen;
      tones_of_.push_back(is_stencil ? static_cast<BYTE>(kOpaque - tone) : tone);
    }
  }

  bool Row(std::span<BYTE const> row) override {
    unsigned const bits = static_cast<unsigned>(shape_.bits);
    for (size_t x = 0; x < shape_.width; ++x) {
      if (bits == 16) {
        tones_.push_back(row[2 * x]);
        continue;
      }
      size_t const bit = x * bits;
      unsigned const mask = (1u << bits) - 1;
      tones_.push_back(tones_of_[row[bit / 8] >> (8 - bits - bit % 8) & mask]);
    }
    return true;
  }

 private:
  PictureShape const& shape_;
  std::vector<BYTE>& tones_;
  std::vector<BYTE> tones_of_;
};

}  // namespace

std::optional<OpacityPlane> OpacityPlane::Read(PictureShape const& shape, std::string& problem) {
  bool const is_stencil = !shape.mask.soft;
  QPDFObjectHandle mask = is_stencil ? *shape.mask.stencil : *shape.mask.soft;
  PictureFacts const facts = ReadPictureShape(mask, QPDFObjectHandle::newNull());
  problem = facts.problem;
  bool const fits = problem.empty() && facts.shape.Components() == 1 &&
                    uint64_t{facts.shape.width} * facts.shape.height <= kMaxMaskPixels;
  OpacityPlane plane;
  plane.width_ = facts.shape.width;
  plane.height_ = facts.shape.height;
  if (fits) {
    ToneSink sink(facts.shape, is_stencil, plane.tones_);
    if (DecodeSamples(facts.shape, sink, problem)) return plane;
  }
  problem = "its mask cannot be read" + (problem.empty() ? "" : ": " + problem);
  return std::nullopt;
}

std::vector<BYTE> OpacityPlane::Row(PictureShape const& shape, DWORD y) const {
  std::vector<BYTE> row(shape.width);
  uint64_t const line = uint64_t{y} * height_ / shape.height;
  BYTE const* const tones = &tones_[static_cast<size_t>(line * width_)];
  for (uint64_t x = 0; x < shape.width; ++x) {
    row[static_cast<size_t>(x)] = tones[static_cast<size_t>(x * width_ / shape.width)];
  }
  return row;
}

}  // namespace sorrelin::tool
