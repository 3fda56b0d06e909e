// WebP files: the decoding of their first picture.
#ifndef TOOLS_FORMATS_WEBP_FILE_H_
#define TOOLS_FORMATS_WEBP_FILE_H_

#include <sorrelin/platform/types.h>

#include <optional>
#include <span>

#include "tools/formats/picture/picture.h"

namespace sorrelin::tool {

// Decodes the first picture to 32 bits, upright and with what is transparent laid on white. Of a
// damaged file what can be read, and the damage. nullopt if its header cannot be read, or memory is
// short.
std::optional<Picture> DecodeWebp(std::span<BYTE const> file);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_WEBP_FILE_H_
