// Pictures of documents in Leptonica's form.
#ifndef TOOLS_EXTRACT_OUTPUT_PICTURE_BUILDER_H_
#define TOOLS_EXTRACT_OUTPUT_PICTURE_BUILDER_H_

#include "tools/extract/page/picture_form.h"
#include "tools/formats/picture/picture.h"

namespace sorrelin::tool {

// Builds a picture of the rows that it is given: 1 or 8 bits, or 32 of colour. Samples of 16 bits
// lose their lower half, and what is transparent is laid on white.
class PictureBuilder : public PictureSink {
 public:
  // False if the picture is too large.
  bool Begin(PictureForm const& form) override;
  bool Row(std::span<BYTE const> row) override;

  // Null if there is none, or not all of its rows have come.
  PixPtr Take();

 private:
  void StoreColours(std::span<BYTE const> row, l_uint32* line) const;

  PixPtr pix_;
  int depth_ = 0;  // of the rows
  int row_ = 0;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_OUTPUT_PICTURE_BUILDER_H_
