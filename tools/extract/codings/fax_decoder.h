// CCITT data (ITU-T T.4 and T.6) in every form that documents have.
#ifndef TOOLS_EXTRACT_CODINGS_FAX_DECODER_H_
#define TOOLS_EXTRACT_CODINGS_FAX_DECODER_H_

#include <span>
#include <string>

#include "tools/extract/codings/sample_decoder.h"

namespace sorrelin::tool {

// Decodes a fax picture. Rows have set bits for black, or clear ones as the parameters say.
bool DecodeFax(PictureShape const& shape, std::span<BYTE const> data, SampleSink& sink,
               std::string& problem);

// Whether the data can be decoded to the last row; if not, the reason is in `problem`.
bool CheckFax(PictureShape const& shape, std::span<BYTE const> data, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_CODINGS_FAX_DECODER_H_
