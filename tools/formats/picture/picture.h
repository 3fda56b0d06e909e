// Decoded pictures on their way into a page: from Leptonica's form to the packed bitmap that the
// library takes.
#ifndef TOOLS_FORMATS_PICTURE_PICTURE_H_
#define TOOLS_FORMATS_PICTURE_PICTURE_H_

#include <leptonica/allheaders.h>
#include <sorrelin/platform/block.h>

#include <memory>
#include <optional>
#include <string>

#include "tools/formats/page_frame.h"
#include "tools/formats/picture/changes.h"
#include "tools/formats/picture/icc_profile.h"
#include "tools/formats/picture/resolution.h"
#include "tools/formats/picture/samples.h"

namespace sorrelin::tool {

struct PixDeleter {
  void operator()(Pix* pix) const { pixDestroy(&pix); }
};
using PixPtr = std::unique_ptr<Pix, PixDeleter>;

// A picture as its file shows it, without transparency: 1, 2, 4, 8 or 16 bits of grey or palette
// index, or 32 bits of red, green and blue, upright. What that cannot hold is in `samples`.
struct Picture {
  PixPtr pix;               // null if there are samples
  Resolution dpi;           // of samples that are to be turned, as stored
  bool from_jpeg = false;   // it was stored with loss, so storing it so again is no surprise
  Changes changes = {};     // that decoding brought about
  std::string damage = {};  // what is wrong with the file's data; empty: the picture is whole
  std::optional<Samples> samples = {};
  int orientation = 1;                  // as in EXIF: how samples are to be turned
  ProfileBytes profile = {};            // null: none
  std::optional<PageFrame> frame = {};  // of a picture that does not fill its page
};

// Lays a 32-bit picture with an alpha channel on white and drops the channel. `premultiplied` says
// that the colours are scaled by their alpha already. Other pictures are left as they are. Returns
// whether any pixel was not fully opaque.
bool BlendOnWhite(Pix* pix, bool premultiplied);

// A palette picture that its decoder has spread to 32 bits, with a palette again. Any other picture
// comes back as it is. Null when memory is short.
PixPtr Reindexed(PixPtr pix);

// Turns a picture that its file says is stored lying or mirrored: the orientations of EXIF and
// TIFF, 1 for upright. Null when memory is short.
PixPtr Upright(PixPtr pix, int orientation);

// The bit that a 1-bit picture shows as black, or -1 if its palette is not black and white.
int BlackBit(Pix* pix);

// Bits of the bitmap that PackedDib makes: 1 for black and white, 8 for a palette or grey, 24 for
// colour.
int PackedDepth(Pix* pix);

// The picture with each pixel's value being its tone: 8 bits of grey or 32 bits of colour. Lossy
// coders need it, because a palette's neighbours are not alike. Null when memory is short.
PixPtr WithoutPalette(Pix* pix);

// A packed bitmap of PackedDepth bits, rows from the lowest up. 1 bit has the palette black, white;
// 8 bits has 256 entries, with transparent ones laid on white. An unknown resolution is stored as
// 0. Empty when memory is short.
OwnedBlock PackedDib(Pix* pix, Resolution dpi);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_PICTURE_PICTURE_H_
