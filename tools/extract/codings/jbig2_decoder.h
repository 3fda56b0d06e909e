// JBIG2 data, by jbig2dec where the program is built with it.
#ifndef TOOLS_EXTRACT_CODINGS_JBIG2_DECODER_H_
#define TOOLS_EXTRACT_CODINGS_JBIG2_DECODER_H_

#include <span>
#include <string>

#include "tools/extract/codings/sample_decoder.h"

namespace sorrelin::tool {

// `globals` may be empty. Rows have clear bits for black.
bool DecodeJbig2(PictureShape const& shape, std::span<BYTE const> globals,
                 std::span<BYTE const> data, SampleSink& sink, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_CODINGS_JBIG2_DECODER_H_
