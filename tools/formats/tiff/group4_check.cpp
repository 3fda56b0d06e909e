// Decodes Group 4 data to the last row with the sibling's decoder, which is compiled into the
// program: pages that pass through need no coder at run time.
#include "tools/formats/tiff/group4_check.h"

#include <siblings/cadwick/group4.h>

#include <cstdint>

namespace sorrelin::tool {

bool IsWholeGroup4(std::span<BYTE const> data, int width, int height) {
  if (!cadwick::ValidPicture(width, height)) return false;
  cadwick::Picture const picture = {static_cast<uint32_t>(width), static_cast<uint32_t>(height)};
  return cadwick::CheckGroup4(data, picture).outcome == cadwick::Outcome::kDone;
}

}  // namespace sorrelin::tool
