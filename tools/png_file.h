// What a PNG file tells of its pixels that the image library does not pass on.
#ifndef TOOLS_PNG_FILE_H_
#define TOOLS_PNG_FILE_H_

#include <sorrelin/platform/types.h>

#include <array>
#include <optional>
#include <vector>

#include "tools/picture.h"

namespace sorrelin::tool {

struct PngFacts {
  bool palette = false;
  int bits = 0;  // of a sample
  // The one tone or colour that is transparent, where samples have at most 8 bits.
  std::optional<std::array<int, 3>> key;
};

// Reads the facts of a PNG file and takes the transparent tone or colour out of it: the image
// library would decode such a picture of grey to nothing at all.
PngFacts TakePngFacts(std::vector<BYTE>& file);

// Brings the decoded picture to what the file shows: the transparent tone or colour is white, and a
// palette that was spread to colours is a palette again. Null when memory is short.
PixPtr ApplyPngFacts(PixPtr pix, PngFacts const& facts);

}  // namespace sorrelin::tool

#endif  // TOOLS_PNG_FILE_H_
