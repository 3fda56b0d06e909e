// The pixels of a page's picture, row by row from the top.
#ifndef TOOLS_EXTRACT_PAGE_PICTURE_H_
#define TOOLS_EXTRACT_PAGE_PICTURE_H_

#include <span>
#include <string>
#include <vector>

#include "tools/extract/page_image.h"

namespace sorrelin::tool {

struct PictureForm {
  DWORD width = 0;   // pixels
  DWORD height = 0;  // rows
  int depth = 0;     // 1, 8 or 24 bits per pixel
  // At most 256 colours of 1 or 8 bits. Without them, a set bit is black, 8 bits are tones of grey,
  // and 24 bits are red, green and blue.
  std::vector<RGBQUAD> palette;
  Resolution dpi;

  size_t RowBytes() const {
    return (static_cast<size_t>(width) * static_cast<size_t>(depth) + 7) / 8;
  }
};

class PictureSink {
 public:
  virtual ~PictureSink() = default;
  // Then come `form.height` rows of RowBytes each, the first pixel in the highest bits. Either is
  // false if no more is wanted.
  virtual bool Begin(PictureForm const& form) = 0;
  virtual bool Row(std::span<BYTE const> row) = 0;

  // Whether a picture that is stored as a JPEG file may come as that file, in place of Begin and
  // its rows.
  virtual bool TakesJpeg() const { return false; }
  virtual void Jpeg(std::span<BYTE const>) {}
};

// Decodes a picture with the library's decoders. False with the reason in `problem`, and nothing
// passed on, if its data are damaged or short.
bool DecodePicture(CCreatePDF& session, PageImage const& image, Resolution dpi, PictureSink& sink,
                   std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_PAGE_PICTURE_H_
