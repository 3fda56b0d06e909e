// The coded data of a picture, once the filters before its coding are undone.
#ifndef TOOLS_EXTRACT_CODINGS_PICTURE_DATA_H_
#define TOOLS_EXTRACT_CODINGS_PICTURE_DATA_H_

#include <sorrelin/platform/types.h>

#include <optional>
#include <qpdf/QPDFObjectHandle.hh>
#include <string>
#include <vector>

namespace sorrelin::tool {

inline constexpr size_t kMaxCodedBytes = size_t{1} << 30;
inline constexpr char kUnknownFilter[] = "its data are coded in a way that is not read";

// nullopt with the reason in `problem`, which is empty before, if the data cannot be had whole.
std::optional<std::vector<BYTE>> ReadPictureData(QPDFObjectHandle stream, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_CODINGS_PICTURE_DATA_H_
