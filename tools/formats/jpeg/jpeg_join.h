// JPEG data in pieces, as TIFF files keep them, put together to one JPEG file without decoding.
#ifndef TOOLS_FORMATS_JPEG_JPEG_JOIN_H_
#define TOOLS_FORMATS_JPEG_JPEG_JOIN_H_

#include <sorrelin/platform/types.h>

#include <memory>
#include <span>
#include <vector>

#include "tools/formats/jpeg/jpeg_file.h"

namespace sorrelin::tool {

// Strips or tiles of one picture.
struct JpegPieces {
  int width = 0;         // of the picture, in pixels
  int height = 0;        // of the picture, in rows
  int piece_width = 0;   // of each piece, in pixels; strips are as wide as the picture
  int piece_height = 0;  // of each piece but those at the bottom, in rows
  JpegColours colours = JpegColours::kYcbcr;  // as they are coded
  std::span<BYTE const> tables;           // a stream of tables that the pieces share; may be empty
  std::vector<std::vector<BYTE>> pieces;  // from the top, in each row from the left
};

// One file with the coefficients of all pieces. A single piece keeps its coded data to the byte.
// Null if the data are damaged, the pieces do not fit together, or memory is short.
std::shared_ptr<std::vector<BYTE> const> JoinedJpeg(JpegPieces const& pieces);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_JPEG_JPEG_JOIN_H_
