// Opacities of a picture's pixels, by its mask.
#ifndef TOOLS_EXTRACT_PAGE_OPACITY_H_
#define TOOLS_EXTRACT_PAGE_OPACITY_H_

#include <optional>
#include <string>
#include <vector>

#include "tools/extract/codings/picture_shape.h"

namespace sorrelin::tool {

// The tones of a mask, which may be of another size than its picture.
class OpacityPlane {
 public:
  // Reads the soft mask or the stencil of the picture. nullopt with the reason in `problem`.
  static std::optional<OpacityPlane> Read(PictureShape const& shape, std::string& problem);

  // The opacities of row `y` of the picture, a byte a pixel.
  std::vector<BYTE> Row(PictureShape const& shape, DWORD y) const;

 private:
  DWORD width_ = 0, height_ = 0;
  std::vector<BYTE> tones_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_PAGE_OPACITY_H_
