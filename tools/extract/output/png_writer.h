// PNG files, of rows or of data that are deflated already.
#ifndef TOOLS_EXTRACT_OUTPUT_PNG_WRITER_H_
#define TOOLS_EXTRACT_OUTPUT_PNG_WRITER_H_

#include <span>
#include <vector>

#include "tools/extract/output/byte_output.h"
#include "tools/extract/page/picture_form.h"

namespace sorrelin::tool {

// What comes before the rows of a PNG file.
struct PngHead {
  DWORD width = 0, height = 0;
  int bits = 8;         // of a sample
  int colour_type = 0;  // 0 grey, 2 colours, 3 palette, 6 colours and opacity
  std::vector<RGBQUAD> palette;
  Resolution dpi;
  std::string profile;
};

// A file whose rows are this zlib stream of PNG's rows, tags and all. False if writing fails.
bool WriteDeflatedPng(PngHead const& head, std::span<BYTE const> deflated, ByteOutput& output);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_OUTPUT_PNG_WRITER_H_
