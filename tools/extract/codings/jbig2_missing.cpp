// JBIG2 data in a program that is built without jbig2dec.
#include "tools/extract/codings/jbig2_decoder.h"

namespace sorrelin::tool {

bool DecodeJbig2(PictureShape const&, std::span<BYTE const>, std::span<BYTE const>, SampleSink&,
                 std::string& problem) {
  problem = "its JBIG2 data are not decoded: this program is built without jbig2dec";
  return false;
}

}  // namespace sorrelin::tool
