// TIFF files of one page in one strip, in this machine's byte order.
#ifndef TOOLS_EXTRACT_OUTPUT_TIFF_WRITER_H_
#define TOOLS_EXTRACT_OUTPUT_TIFF_WRITER_H_

#include <span>

#include "tools/extract/output/byte_output.h"
#include "tools/extract/page/picture_form.h"
#include "tools/extract/page/placement.h"

namespace sorrelin::tool {

// What a page's directory says beside its size and resolution.
struct TiffCoding {
  int compression = 1;   // 3: Group 3, 4: Group 4, 8: deflated
  int photometric = 0;   // 0: a set bit is black; 1: it is white; 2: colours; 3: palette
  int fax_options = -1;  // of Group 3: bit 0 for two dimensions; -1: none
  Orientation orientation = kUpright;
};

// A file whose strip is this coded data. False if writing fails.
bool WriteStripTiff(PictureForm const& form, TiffCoding const& coding, std::span<BYTE const> strip,
                    ByteOutput& output);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_OUTPUT_TIFF_WRITER_H_
