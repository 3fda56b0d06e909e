// Colour spaces of pictures, and their way to red, green and blue.
#ifndef TOOLS_EXTRACT_COLOUR_COLOUR_SPACE_H_
#define TOOLS_EXTRACT_COLOUR_COLOUR_SPACE_H_

#include <sorrelin/platform/types.h>

#include <memory>
#include <qpdf/QPDFObjectHandle.hh>
#include <span>
#include <string>
#include <vector>

namespace sorrelin::tool {

enum class SpaceFamily {
  kGrey,     // of the device: samples are tones already
  kRgb,      // of the device
  kIndexed,  // samples are places in a palette
  kOther
};

// Ends of the values that a component may have.
struct ComponentRange {
  double low = 0;
  double high = 1;
};

class ColourSpace {
 public:
  virtual ~ColourSpace() = default;

  // The space that an object names or describes. Calibrated spaces are treated as the device space
  // with the same number of components, and so are ICC profiles that cannot be read. Null with the
  // reason in `problem` if pictures cannot have it.
  static std::unique_ptr<ColourSpace> Read(QPDFObjectHandle object, QPDFObjectHandle resources,
                                           std::string& problem);

  SpaceFamily family() const { return family_; }
  size_t components() const { return ranges_.size(); }
  // Of the components; of an indexed space, the places of its palette.
  std::vector<ComponentRange> const& ranges() const { return ranges_; }
  // Of an indexed space.
  std::vector<RGBQUAD> const& palette() const { return palette_; }
  // The ICC profile of an /ICCBased space of grey or RGB; empty for others.
  std::string const& profile() const { return profile_; }

  // Three bytes a pixel of the values of its components, pixel by pixel.
  virtual void ToRgb(std::span<double const> values, std::span<BYTE> rgb) const = 0;

 protected:
  ColourSpace(SpaceFamily family, size_t components) : family_(family), ranges_(components) {}

  SpaceFamily family_;
  std::vector<ComponentRange> ranges_;
  std::vector<RGBQUAD> palette_;
  std::string profile_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_COLOUR_COLOUR_SPACE_H_
