// JPEG 2000 data in a program that is built without OpenJPEG.
#include "tools/extract/codings/jpx_decoder.h"

namespace sorrelin::tool {
namespace {

constexpr char kMissing[] =
    "its JPEG 2000 data are not decoded: this program is built without OpenJPEG";

}  // namespace

std::optional<JpxFacts> ReadJpxFacts(std::string_view, std::string& problem) {
  problem = kMissing;
  return std::nullopt;
}

bool DecodeJpx(PictureShape const&, std::span<BYTE const>, SampleSink&, std::string& problem) {
  problem = kMissing;
  return false;
}

}  // namespace sorrelin::tool
