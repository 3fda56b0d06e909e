// GIF files: the decoding of their first picture.
#ifndef TOOLS_FORMATS_GIF_FILE_H_
#define TOOLS_FORMATS_GIF_FILE_H_

#include <sorrelin/platform/types.h>

#include <optional>
#include <span>

#include "tools/formats/picture/picture.h"

namespace sorrelin::tool {

// Decodes the first picture with its palette, of which the transparent colour is clear. Of a
// damaged file what can be read, and the damage. nullopt if there is no picture, or memory is
// short.
std::optional<Picture> DecodeGif(std::span<BYTE const> file);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_GIF_FILE_H_
