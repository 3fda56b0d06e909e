// JPEG files: what their headers say, and their decoding.
#ifndef TOOLS_FORMATS_JPEG_JPEG_FILE_H_
#define TOOLS_FORMATS_JPEG_JPEG_FILE_H_

#include <sorrelin/platform/types.h>

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "tools/formats/picture/icc_profile.h"
#include "tools/formats/picture/picture.h"
#include "tools/formats/picture/resolution.h"
#include "tools/formats/picture/samples.h"
#include "tools/formats/picture/stored_image.h"

namespace sorrelin::tool {

// The coder's limit on each side of a picture, in pixels.
inline constexpr int kMaxJpegSide = 65500;

// Colours as they are coded.
enum class JpegColours { kOther, kGrey, kRgb, kYcbcr, kCmyk, kYcck };

struct JpegFacts {
  int width = 0;   // pixels, as stored
  int height = 0;  // rows, as stored
  int components = 0;
  int orientation = 1;  // as in EXIF
  Resolution dpi;       // from JFIF, or else from EXIF; as stored
  JpegColours colours = JpegColours::kOther;
  bool adobe = false;  // an Adobe marker names the colours; inks are then stored inverted
  // Every PDF reader decodes it: Huffman coded samples of 8 bits in a known colour space.
  bool common = false;
  ProfileBytes profile;           // null: none that fits the colours
  bool profile_unusable = false;  // there is one that does not
};

// Reads the header of a JPEG file; nullopt if it is not one, or one that cannot be decoded.
std::optional<JpegFacts> ReadJpegFacts(std::span<BYTE const> file);

// Whether a header that cannot be read is that of a coding that libjpeg lacks, as that of samples
// of 12 bits or without loss.
bool IsJpegOfOtherKind(std::span<BYTE const> file);

// How a document describes the file's data.
ImageForm FormOfJpeg(JpegFacts const& facts);

// Bytes of the file up to and with its end marker; 0 if it has none. Not every reader shows a file
// that was cut short.
size_t JpegEnd(std::span<BYTE const> file);

// The file turned upright by moving its coded blocks, so that nothing is lost, and without its EXIF
// mark. Null where that is not possible: where its sides are no whole number of blocks, or it is
// damaged.
std::shared_ptr<std::vector<BYTE> const> TurnedJpeg(std::span<BYTE const> file,
                                                    JpegFacts const& facts);

// Decodes a file of one or three components to 8 bits of grey or 32 of colour, rows as stored: of a
// damaged file what can be read, on white. Null if nothing can be, or memory is short.
PixPtr DecodeJpeg(std::span<BYTE const> file);

// Decodes a file of four components to inks, 0 for none, rows as stored: of a damaged file what can
// be read.
std::optional<Samples> DecodeJpegInks(std::span<BYTE const> file);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_JPEG_JPEG_FILE_H_
