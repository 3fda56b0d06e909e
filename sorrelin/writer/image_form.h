// The description of coded samples in an image dictionary (ISO 32000-1, 8.9.5), for images beyond
// the forms of the library's own pages.
#ifndef SORRELIN_WRITER_IMAGE_FORM_H_
#define SORRELIN_WRITER_IMAGE_FORM_H_

#include <sorrelin/platform/types.h>

#include <optional>
#include <vector>

namespace sorrelin {

enum class ImageFilter { kGroup4, kFlate, kJpeg, kJpeg2000 };

// kInData: the data themselves name their colours, as those of JPEG 2000 do.
enum class ImageColours { kGrey, kRgb, kCmyk, kInData };

// Samples of a pixel; 0 for colours in the data.
constexpr int ComponentsOf(ImageColours colours) {
  constexpr int kComponents[] = {1, 3, 4, 0};
  return kComponents[static_cast<int>(colours)];
}

struct ImageForm {
  ImageFilter filter = ImageFilter::kFlate;
  ImageColours colours = ImageColours::kGrey;
  int bits_per_component = 8;  // 1, 2, 4, 8 or 16
  // Red, green, blue of each index; then a pixel is one index, and `colours` is kRgb.
  std::vector<BYTE> palette;
  // The highest sample is the lowest tone, or no ink. Black runs of Group 4 are samples of 0.
  bool inverted = false;
  bool predicted = false;             // Flate: each row starts with its PNG filter type
  std::optional<bool> jpeg_is_ycbcr;  // three JPEG components: where the data do not say

  // Samples of a pixel as they are coded; 0 for colours in the data.
  int Components() const { return palette.empty() ? ComponentsOf(colours) : 1; }
};

// An ICC profile that pages share: the first of them writes it.
struct ColourProfile {
  std::vector<BYTE> stream;  // compressed with Flate
  int components = 0;        // 1, 3 or 4
  DWORD object = 0;          // its number in the document; 0: not written yet
};

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_IMAGE_FORM_H_
