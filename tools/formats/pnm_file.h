// Pictures of the PNM family: PBM, PGM and PPM, plain (P1 to P3) and raw (P4 to P6), and PAM (P7).
#ifndef TOOLS_FORMATS_PNM_FILE_H_
#define TOOLS_FORMATS_PNM_FILE_H_

#include <memory>
#include <span>
#include <string>

#include "tools/formats/byte_stream.h"
#include "tools/formats/image_source.h"

namespace sorrelin::tool {

// Whether a picture of the family starts so.
bool IsPnm(std::span<BYTE const> start);

// Takes one picture off the stream, which IsPnm has recognised; what follows stays. Its samples are
// not looked at yet. nullptr, with the reason in `problem`, if its header is damaged.
std::unique_ptr<ImageSource> TakePnm(ByteStream& stream, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_PNM_FILE_H_
