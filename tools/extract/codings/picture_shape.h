// What a picture is, by its dictionary: size, samples, colours, coding and masks.
#ifndef TOOLS_EXTRACT_CODINGS_PICTURE_SHAPE_H_
#define TOOLS_EXTRACT_CODINGS_PICTURE_SHAPE_H_

#include <sorrelin/platform/memory_size.h>
#include <sorrelin/platform/types.h>

#include <memory>
#include <optional>
#include <qpdf/QPDFObjectHandle.hh>
#include <string>
#include <vector>

#include "tools/extract/colour/colour_space.h"

namespace sorrelin::tool {

// The last filter of a picture; kRaw for data that are samples once all filters are undone.
enum class PictureCoding { kRaw, kFax, kJpeg, kJpx, kJbig2 };

// Parameters of the CCITT filter (ISO 32000-1, table 11).
struct FaxParms {
  int k = 0;  // below 0: Group 4; 0: Group 3 of one dimension; above: of two
  DWORD columns = 1728;
  bool black_is_1 = false;
  bool byte_aligned = false;
  bool has_marks = false;  // a mark of T.4 ends each row
};

// What keeps pixels of a picture from being opaque; at most one of the three.
struct PictureMask {
  std::optional<QPDFObjectHandle> soft;            // a picture of grey whose tones are opacities
  std::optional<QPDFObjectHandle> stencil;         // a picture of one bit
  std::vector<std::pair<unsigned, unsigned>> key;  // ranges of samples that are transparent
  std::vector<double> matte;  // the colour with which the picture was blended beforehand

  bool IsNone() const { return !soft && !stencil && key.empty(); }
};

struct PictureShape {
  DWORD width = 0;   // pixels
  DWORD height = 0;  // rows
  int bits = 0;      // of a sample: 1, 2, 4, 8 or 16; of JPEG 2000, 8 or 16
  std::shared_ptr<ColourSpace const> space;
  std::vector<ComponentRange> decode;  // what the lowest and the highest sample mean
  bool usual_decode = true;            // the range of the space, the lowest first
  bool is_stencil = false;             // an image mask: 0 paints
  PictureCoding coding = PictureCoding::kRaw;
  size_t filters = 0;          // all in all
  bool png_predicted = false;  // Flate alone, with rows as PNG has them
  FaxParms fax;
  int colour_transform = -1;                // of the DCT filter; -1 where it says nothing
  int alpha_in_data = 0;                    // /SMaskInData of JPEG 2000: 0, 1 or 2
  std::optional<QPDFObjectHandle> globals;  // of JBIG2
  PictureMask mask;
  QPDFObjectHandle stream;

  size_t Components() const { return space->components(); }
  size_t BitsPerPixel() const { return static_cast<size_t>(bits) * Components(); }
  size_t RowBytes() const { return MemorySize((uint64_t{width} * BitsPerPixel() + 7) / 8); }
};

// What is known of a picture, also where it cannot be read.
struct PictureFacts {
  PictureShape shape;
  std::string compression;  // as the option of make has it, or the filters' names
  std::string problem;      // why the picture cannot be read; empty if it can
};

// Reads a picture's dictionary; of JPEG 2000 data also their header. `resources` names colour
// spaces. Libqpdf's exceptions pass through.
PictureFacts ReadPictureShape(QPDFObjectHandle stream, QPDFObjectHandle resources);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_CODINGS_PICTURE_SHAPE_H_
