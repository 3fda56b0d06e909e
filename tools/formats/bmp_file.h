// BMP files: their decoding.
#ifndef TOOLS_FORMATS_BMP_FILE_H_
#define TOOLS_FORMATS_BMP_FILE_H_

#include <sorrelin/platform/types.h>

#include <optional>
#include <span>

#include "tools/formats/picture/picture.h"

namespace sorrelin::tool {

// Decodes a file of any depth, also one that is coded by run lengths: palettes keep their depth,
// and what a file with an alpha mask shows transparent is laid on white. Of a damaged file what
// can be read, and the damage. nullopt if it is of a rarer kind, or memory is short. Prints
// nothing.
std::optional<Picture> DecodeBmp(std::span<BYTE const> file);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_BMP_FILE_H_
