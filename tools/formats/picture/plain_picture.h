// Pictures brought to the forms that every reader of the library's documents takes: greys and
// palettes of up to 8 bits, and colours of 24, without a profile.
#ifndef TOOLS_FORMATS_PICTURE_PLAIN_PICTURE_H_
#define TOOLS_FORMATS_PICTURE_PLAIN_PICTURE_H_

#include <optional>

#include "tools/formats/picture/picture.h"
#include "tools/formats/picture/stored_image.h"

namespace sorrelin::tool {

// Puts samples into a pix: the high bytes of 16 bits, inks as red, green and blue, upright. The
// profile is used for inks and kept for the other colours. False when memory is short.
bool GiveUpSamples(Picture& picture);

// As above, and converts colours with a profile to those of sRGB.
bool MakePlain(Picture& picture);

// A stored image in such a form: Group 4 data, or JPEG data of grey or YCbCr, upright. nullopt if
// it has to be decoded for that.
std::optional<StoredImage> PlainStored(StoredImage image);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_PICTURE_PLAIN_PICTURE_H_
