// Colours described by an ICC profile, converted to sRGB by Little CMS.
#ifndef TOOLS_FORMATS_PICTURE_COLOUR_CONVERSION_H_
#define TOOLS_FORMATS_PICTURE_COLOUR_CONVERSION_H_

#include <sorrelin/platform/types.h>

#include <memory>
#include <span>

namespace sorrelin::tool {

// Whether the profile says that it is sRGB.
bool IsSrgb(std::span<BYTE const> profile);

// From pixels of 8 bits a component: greys become greys, RGB and CMYK become RGB. For one thread at
// a time.
class ColourConversion {
 public:
  // Without a usable profile, the device's colours are taken as they are: inks are subtracted.
  ColourConversion(std::span<BYTE const> profile, int components);
  ~ColourConversion();
  ColourConversion(ColourConversion const&) = delete;
  ColourConversion& operator=(ColourConversion const&) = delete;

  // Whether colours change. Inks always do.
  bool Changes() const { return transform_ != nullptr || components_ == 4; }

  // Components of what comes out: 1 or 3.
  int Components() const { return components_ == 1 ? 1 : 3; }

  // Pixels of one row; `to` has room for as many.
  void Convert(BYTE const* from, BYTE* to, int pixels) const;

 private:
  int components_;
  void* transform_ = nullptr;  // null: none is needed or possible
};

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_PICTURE_COLOUR_CONVERSION_H_
