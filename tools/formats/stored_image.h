// A coded picture that goes into a document as it is, without being decoded: nothing is lost and
// nothing is computed.
#ifndef TOOLS_FORMATS_STORED_IMAGE_H_
#define TOOLS_FORMATS_STORED_IMAGE_H_

#include <sorrelin/platform/types.h>

#include <memory>
#include <span>

#include "tools/formats/changes.h"
#include "tools/formats/resolution.h"

namespace sorrelin::tool {

struct StoredImage {
  std::span<BYTE const> bytes;        // as long as `owner` stands
  std::shared_ptr<void const> owner;  // may be null where the caller keeps the bytes
  int width = 0;                      // pixels
  int height = 0;                     // rows
  int bits_per_pixel = 0;             // 1, 8 (whose values are tones of grey) or 24
  DWORD compression = 0;              // PDF_COMPRESSION_*
  bool zero_is_black = true;          // 1 bit: how the decoded bits are to be read
  Resolution dpi;
  Changes changes = {};  // beside the resolution that a file lacks
};

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_STORED_IMAGE_H_
