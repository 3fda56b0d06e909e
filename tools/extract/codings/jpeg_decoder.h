// JPEG data of documents.
#ifndef TOOLS_EXTRACT_CODINGS_JPEG_DECODER_H_
#define TOOLS_EXTRACT_CODINGS_JPEG_DECODER_H_

#include <span>
#include <string>

#include "tools/extract/codings/sample_decoder.h"

namespace sorrelin::tool {

// Samples are those of the colour space: grey, red-green-blue, or inks as they are stored.
bool DecodeJpegSamples(PictureShape const& shape, std::span<BYTE const> data, SampleSink& sink,
                       std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_CODINGS_JPEG_DECODER_H_
