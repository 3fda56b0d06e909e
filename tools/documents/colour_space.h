// Colour spaces of images, as far as bitmaps can have them.
#ifndef TOOLS_DOCUMENTS_COLOUR_SPACE_H_
#define TOOLS_DOCUMENTS_COLOUR_SPACE_H_

#include <sorrelin/platform/types.h>

#include <optional>
#include <string>
#include <vector>

#include "tools/documents/pdf_objects.h"

namespace sorrelin::tool {

struct ColourSpace {
  int components = 1;            // 1: grey or an index; 3: red, green and blue
  std::vector<RGBQUAD> palette;  // of an indexed space; empty for others
};

// Grey, RGB, calibrated and ICC spaces of one or three components, and indexed spaces on these.
// Nothing for others, with the reason in `problem`.
std::optional<ColourSpace> ReadColourSpace(PdfObjects const& objects, PdfValue const& value,
                                           std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_COLOUR_SPACE_H_
