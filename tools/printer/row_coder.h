// Coders that take a picture row by row, so that only its coded bytes are held.
#ifndef TOOLS_PRINTER_ROW_CODER_H_
#define TOOLS_PRINTER_ROW_CODER_H_

#include <sorrelin/platform/types.h>
#include <sorrelin/writer/image_form.h>

#include <memory>
#include <span>
#include <vector>

#include "tools/formats/raster/raster_header.h"

namespace sorrelin::tool {

class RowCoder {
 public:
  virtual ~RowCoder() = default;

  // Takes RasterPage::RowBytes() bytes. False if memory is short.
  virtual bool Row(std::span<BYTE const> row) = 0;
  // Completes the coded bytes after the last row.
  virtual bool Finish() = 0;
  // How a document describes them.
  virtual ImageForm Form() const = 0;
};

// The coder for a page: Group 4 for black and white; otherwise JPEG if the page asks for it and its
// samples are 8 bits of grey or RGB, and Flate for all else. The coded bytes are appended to
// `bytes`, which outlives the coder. nullptr if memory is short.
std::unique_ptr<RowCoder> MakeRowCoder(RasterPage const& page, std::vector<BYTE>& bytes);

}  // namespace sorrelin::tool

#endif  // TOOLS_PRINTER_ROW_CODER_H_
