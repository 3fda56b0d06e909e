// JPEG files: what their headers tell, and their decoding.
#ifndef TOOLS_FORMATS_JPEG_FILE_H_
#define TOOLS_FORMATS_JPEG_FILE_H_

#include <sorrelin/platform/types.h>

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "tools/formats/picture.h"
#include "tools/formats/resolution.h"

namespace sorrelin::tool {

// The coder's limit on each side of a picture, in pixels.
inline constexpr int kMaxJpegSide = 65500;

struct JpegFacts {
  int width = 0;   // pixels, as stored
  int height = 0;  // rows, as stored
  int components = 0;
  int orientation = 1;  // as in EXIF
  Resolution dpi;       // from JFIF, or else from EXIF; as stored
  // Every PDF reader decodes it, and to the same colours: Huffman coded, one component of grey or
  // three of YCbCr, or of RGB where an Adobe marker says so.
  bool common = false;
};

// Reads the header of a JPEG file; nothing if it is not one, or one that cannot be decoded.
std::optional<JpegFacts> ReadJpegFacts(std::span<BYTE const> file);

// Bytes of the file up to and with its end marker; 0 if it has none. Not every reader shows a file
// that was cut short.
size_t JpegEnd(std::span<BYTE const> file);

// The file turned upright by moving its coded blocks, so that nothing is lost, and without its EXIF
// mark. Null where that is not possible: where its sides are no whole number of blocks, or it is
// damaged.
std::shared_ptr<std::vector<BYTE> const> TurnedJpeg(std::span<BYTE const> file,
                                                    JpegFacts const& facts);

// Decodes a file to 8 bits of grey or 32 of colour, rows as stored. Null if it is damaged or memory
// is short.
PixPtr DecodeJpeg(std::span<BYTE const> file);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_JPEG_FILE_H_
