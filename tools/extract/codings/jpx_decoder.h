// JPEG 2000 data, by OpenJPEG where the program is built with it.
#ifndef TOOLS_EXTRACT_CODINGS_JPX_DECODER_H_
#define TOOLS_EXTRACT_CODINGS_JPX_DECODER_H_

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tools/extract/codings/sample_decoder.h"

namespace sorrelin::tool {

struct JpxFacts {
  int bits = 8;        // of a sample
  size_t colours = 3;  // components that are no opacity: 1, 3 or 4; 0 for a space that is not read
};

// From the start of the data; nullopt with the reason in `problem` if they are no JPEG 2000 data,
// or the program cannot read any.
std::optional<JpxFacts> ReadJpxFacts(std::string_view data, std::string& problem);

bool DecodeJpx(PictureShape const& shape, std::span<BYTE const> data, SampleSink& sink,
               std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_CODINGS_JPX_DECODER_H_
