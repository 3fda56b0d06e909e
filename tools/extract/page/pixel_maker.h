// From a picture's samples to its pixels.
#ifndef TOOLS_EXTRACT_PAGE_PIXEL_MAKER_H_
#define TOOLS_EXTRACT_PAGE_PIXEL_MAKER_H_

#include <string>

#include "tools/extract/codings/picture_shape.h"
#include "tools/extract/page/picture_form.h"

namespace sorrelin::tool {

// Decodes a picture, with its colours and its mask, into a sink. False with the reason in `problem`
// if its data are damaged; the sink may have rows then.
bool DecodePicture(PictureShape const& shape, Resolution dpi, PictureSink& sink,
                   std::string& problem);

// The colour of every value of a sample, for one component of at most 8 bits.
std::vector<RGBQUAD> ColoursOf(PictureShape const& shape);
bool IsBlack(RGBQUAD colour);
bool IsWhite(RGBQUAD colour);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_PAGE_PIXEL_MAKER_H_
