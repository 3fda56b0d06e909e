// JPEG 2000 files, as they go into a document without decoding.
#ifndef TOOLS_FORMATS_JPEG2000_JP2_FILE_H_
#define TOOLS_FORMATS_JPEG2000_JP2_FILE_H_

#include <sorrelin/platform/types.h>

#include <optional>
#include <span>

#include "tools/formats/picture/stored_image.h"

namespace sorrelin::tool {

// A JP2 file as it is, or a bare codestream in the boxes that make it one. nullopt for files with
// transparency, colours that readers of documents need not know, or damaged boxes. The bytes of a
// JP2 file stay the caller's.
std::optional<StoredImage> StoredJp2(std::span<BYTE const> file);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_JPEG2000_JP2_FILE_H_
