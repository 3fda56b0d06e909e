// PNG files: their decoding.
#ifndef TOOLS_FORMATS_PNG_PNG_FILE_H_
#define TOOLS_FORMATS_PNG_PNG_FILE_H_

#include <sorrelin/platform/types.h>

#include <optional>
#include <span>

#include "tools/formats/picture/picture.h"

namespace sorrelin::tool {

// Decodes a file: greys of up to 8 bits and palettes keep their depth, the high bytes of 16 bits
// stay, and what is transparent is laid on white. Of a damaged file what can be read, and the
// damage. nullopt if its header cannot be read, or memory is short. Prints nothing.
std::optional<Picture> DecodePng(std::span<BYTE const> file);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_PNG_PNG_FILE_H_
