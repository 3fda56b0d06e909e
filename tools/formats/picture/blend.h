// Pixels of 8 or 16 bits a sample with alpha, laid on white.
#ifndef TOOLS_FORMATS_PICTURE_BLEND_H_
#define TOOLS_FORMATS_PICTURE_BLEND_H_

#include <sorrelin/platform/types.h>

#include <span>

#include "tools/formats/picture/samples.h"

namespace sorrelin::tool {

enum class Alpha { kNone, kStraight, kPremultiplied };

// How pixels are stored that become Samples.
struct DeepPixels {
  ImageColours colours = ImageColours::kGrey;
  int samples = 1;       // of a pixel: the colours, others
  int sample_bytes = 2;  // 1 or 2, in this machine's order
  Alpha alpha = Alpha::kNone;
  int alpha_at = 0;       // its place after the colours
  bool inverted = false;  // 0 is white
};

// Whether any of such pixels is not fully opaque.
bool HasTransparency(DeepPixels const& form, std::span<BYTE const> pixels);

// Whole rows of such pixels as Samples without alpha.
Samples SamplesOf(DeepPixels const& form, int width, int height, std::span<BYTE const> pixels);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_PICTURE_BLEND_H_
