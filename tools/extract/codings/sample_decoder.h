// Samples of a picture, row by row as its data hold them.
#ifndef TOOLS_EXTRACT_CODINGS_SAMPLE_DECODER_H_
#define TOOLS_EXTRACT_CODINGS_SAMPLE_DECODER_H_

#include <span>
#include <string>

#include "tools/extract/codings/picture_shape.h"

namespace sorrelin::tool {

class SampleSink {
 public:
  virtual ~SampleSink() = default;
  // A row of PictureShape::RowBytes: samples one after the other, the first in the highest bits.
  // False if no more is wanted.
  virtual bool Row(std::span<BYTE const> row) = 0;
  // The opacities of the row that comes next, where the data hold them: a byte a pixel.
  virtual void Opacity(std::span<BYTE const>) {}
};

// Takes rows and forgets them.
class NoRows : public SampleSink {
 public:
  bool Row(std::span<BYTE const>) override { return true; }
};

// Decodes the data of a picture to their end. False with the reason in `problem` if they are
// damaged or do not fit the shape; rows may have been passed on then. A sink that wants no more
// ends the decoding with success.
bool DecodeSamples(PictureShape const& shape, SampleSink& sink, std::string& problem);

inline constexpr char kShortData[] = "its data end before its picture does";
inline constexpr char kDamagedData[] = "its data are damaged";

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_CODINGS_SAMPLE_DECODER_H_
