// JPEG 2000 files in a build without OpenJPEG: none is whole, and none can be decoded.
#include "tools/formats/jpeg2000/jpeg2000_file.h"

namespace sorrelin::tool {

std::string Jpeg2000Damage(std::span<BYTE const>) { return "JPEG 2000 cannot be checked"; }

std::optional<Picture> DecodeJpeg2000(std::span<BYTE const>, std::string& problem) {
  problem = "is JPEG 2000, and this program is built without OpenJPEG (save it as PNG or TIFF)";
  return std::nullopt;
}

}  // namespace sorrelin::tool
