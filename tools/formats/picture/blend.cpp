// Pixels laid on white, a sample at a time, so that all depths and colours share the code.
#include "tools/formats/picture/blend.h"

#include <cstdint>
#include <cstring>

namespace sorrelin::tool {
namespace {

uint32_t SampleAt(BYTE const* at, int sample_bytes) {
  if (sample_bytes == 1) return *at;
  uint16_t value = 0;
  std::memcpy(&value, at, sizeof value);
  return value;
}

uint32_t TopOf(DeepPixels const& form) { return form.sample_bytes == 1 ? 0xFF : 0xFFFF; }

size_t PixelBytes(DeepPixels const& form) {
  return static_cast<size_t>(form.samples * form.sample_bytes);
}

// Of the alpha in a pixel.
size_t AlphaAt(DeepPixels const& form) {
  return static_cast<size_t>((ComponentsOf(form.colours) + form.alpha_at) * form.sample_bytes);
}

// `top` is the largest sample; white is that, or no ink.
uint32_t OnWhite(uint32_t value, uint32_t alpha, DeepPixels const& form, uint32_t top) {
  bool const white_is_top = form.colours != ImageColours::kCmyk;
  uint64_t const paper = white_is_top ? uint64_t{top} * (top - alpha) : 0;
  uint64_t const own =
      form.alpha == Alpha::kPremultiplied ? uint64_t{value} * top : uint64_t{value} * alpha;
  uint64_t const sum = (own + paper + top / 2) / top;
  return static_cast<uint32_t>(sum > top ? top : sum);
}

}  // namespace

bool HasTransparency(DeepPixels const& form, std::span<BYTE const> pixels) {
  if (form.alpha == Alpha::kNone) return false;
  size_t const pixel_bytes = PixelBytes(form);
  for (size_t at = AlphaAt(form); at < pixels.size(); at += pixel_bytes) {
    if (SampleAt(pixels.data() + at, form.sample_bytes) != TopOf(form)) return true;
  }
  return false;
}

Samples SamplesOf(DeepPixels const& form, int width, int height, std::span<BYTE const> pixels) {
  Samples samples;
  samples.width = width;
  samples.height = height;
  samples.colours = form.colours;
  samples.bits = 8 * form.sample_bytes;
  int const components = ComponentsOf(form.colours);
  bool const blends = form.alpha != Alpha::kNone;
  uint32_t const top = TopOf(form);
  size_t const step = static_cast<size_t>(form.sample_bytes);
  size_t const pixel_bytes = PixelBytes(form);
  samples.bytes.resize(samples.Bytes());
  BYTE* out = samples.bytes.data();
  for (size_t at = 0; at + pixel_bytes <= pixels.size(); at += pixel_bytes) {
    BYTE const* const pixel = pixels.data() + at;
    uint32_t const alpha = blends ? SampleAt(pixel + AlphaAt(form), form.sample_bytes) : top;
    for (int i = 0; i < components; ++i) {
      uint32_t value = SampleAt(pixel + step * static_cast<size_t>(i), form.sample_bytes);
      if (form.inverted) value = top - value;
      if (blends) value = OnWhite(value, alpha, form, top);
      if (step == 2) *out++ = static_cast<BYTE>(value >> 8);
      *out++ = static_cast<BYTE>(value);
    }
  }
  return samples;
}

}  // namespace sorrelin::tool
