// Converts Lab pixels (TIFF 6.0, 23, and the supplement of Photoshop for ICCLAB): L* is 0 to 100
// over the range of a sample, up to 0xFF00 in 16 bits of ICCLAB. a* and b* are whole numbers, with
// 8 binary places in 16 bits; signed in CIELAB, and from an offset in ICCLAB.
#include "tools/formats/tiff/tiff_lab.h"

#include <lcms2.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "tools/formats/tiff/tiff_fields.h"

namespace sorrelin::tool {
namespace {

constexpr size_t kPixelsAtOnce = 1024;

struct ProfileCloser {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, ProfileCloser>;
struct TransformDelete {
  void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
using Transform = std::unique_ptr<void, TransformDelete>;

// Of an ICCLAB page if `offset`.
struct Encoding {
  bool offset;
  size_t sample_bytes;

  cmsCIELab Decoded(BYTE const* pixel) const {
    return {Light(SampleAt(pixel, 0)), Colour(SampleAt(pixel, 1)), Colour(SampleAt(pixel, 2))};
  }

 private:
  int SampleAt(BYTE const* pixel, size_t i) const {
    if (sample_bytes == 1) return pixel[i];
    uint16_t value = 0;
    std::memcpy(&value, pixel + 2 * i, sizeof value);
    return value;
  }
  double Light(int value) const {
    return 100.0 * value / (sample_bytes == 1 ? 0xFF : offset ? 0xFF00 : 0xFFFF);
  }
  double Colour(int value) const {
    int const half = sample_bytes == 1 ? 0x80 : 0x8000;
    int const number = offset ? value - half : value >= half ? value - 2 * half : value;
    return sample_bytes == 1 ? number : number / 256.0;
  }
};

Transform TransformTo(cmsUInt32Number format) {
  Profile const lab(cmsCreateLab4Profile(nullptr)), srgb(cmsCreate_sRGBProfile());
  if (lab == nullptr || srgb == nullptr) return nullptr;
  return Transform(cmsCreateTransform(lab.get(), TYPE_Lab_DBL, srgb.get(), format,
                                      INTENT_RELATIVE_COLORIMETRIC, 0));
}

uint16_t Photometric(TIFF* tiff) {
  return FieldOf<uint16_t>(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE);
}

}  // namespace

bool IsLab(TIFF* tiff) {
  return Photometric(tiff) == PHOTOMETRIC_CIELAB || Photometric(tiff) == PHOTOMETRIC_ICCLAB;
}

bool LabToRgb(TIFF* tiff, size_t samples, size_t sample_bytes, std::span<BYTE> pixels) {
  Encoding const encoding = {Photometric(tiff) == PHOTOMETRIC_ICCLAB, sample_bytes};
  Transform const transform = TransformTo(sample_bytes == 1 ? TYPE_RGB_8 : TYPE_RGB_16);
  if (transform == nullptr) return false;
  size_t const pixel_bytes = samples * sample_bytes, colour_bytes = 3 * sample_bytes;
  std::vector<cmsCIELab> lab(kPixelsAtOnce);
  std::vector<BYTE> rgb(kPixelsAtOnce * colour_bytes);
  while (!pixels.empty()) {
    size_t const count = std::min(kPixelsAtOnce, pixels.size() / pixel_bytes);
    if (count == 0) break;
    for (size_t i = 0; i < count; ++i) lab[i] = encoding.Decoded(&pixels[i * pixel_bytes]);
    cmsDoTransform(transform.get(), lab.data(), rgb.data(), static_cast<cmsUInt32Number>(count));
    for (size_t i = 0; i < count; ++i) {
      std::memcpy(&pixels[i * pixel_bytes], &rgb[i * colour_bytes], colour_bytes);
    }
    pixels = pixels.subspan(count * pixel_bytes);
  }
  return true;
}

}  // namespace sorrelin::tool
