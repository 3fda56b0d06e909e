// JPEG 2000 files: their decoding.
#ifndef TOOLS_FORMATS_JPEG2000_JPEG2000_FILE_H_
#define TOOLS_FORMATS_JPEG2000_JPEG2000_FILE_H_

#include <sorrelin/platform/types.h>

#include <optional>
#include <span>
#include <string>

#include "tools/formats/picture/picture.h"

namespace sorrelin::tool {

// What OpenJPEG says of damage anywhere in the coded data; empty if they are whole.
std::string Jpeg2000Damage(std::span<BYTE const> file);

// Decodes a JP2 file or a bare codestream to 8 bits of grey or 32 of colour, with what is
// transparent laid on white. Of a damaged file what can be read, and the damage. nullopt, with the
// message in `problem`, if its header cannot be read, it is of a rarer kind, or memory is short.
std::optional<Picture> DecodeJpeg2000(std::span<BYTE const> file, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_JPEG2000_JPEG2000_FILE_H_
