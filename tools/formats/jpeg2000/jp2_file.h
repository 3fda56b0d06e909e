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

// Components of the colours that the boxes at the start of a JP2 file state: 1, 3 or 4, whatever
// palette or opacity the file has. 0 for spaces that are not read, and nullopt where no box states
// them, as in a bare codestream.
std::optional<int> Jp2Colours(std::span<BYTE const> start);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_JPEG2000_JP2_FILE_H_
