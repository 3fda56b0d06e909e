// TIFF files as sequences of pages.
#ifndef TOOLS_FORMATS_TIFF_SOURCE_H_
#define TOOLS_FORMATS_TIFF_SOURCE_H_

#include <sorrelin/platform/types.h>

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "tools/formats/image_source.h"

namespace sorrelin::tool {

inline constexpr size_t kTiffHeaderBytes = 4;

// Whether a file that starts so is TIFF, of either byte order, classic or BigTIFF.
bool IsTiff(std::span<BYTE const> start);

// Opens a file on disk, or one in memory. Null with the reason in `problem`.
std::unique_ptr<ImageSource> OpenTiff(std::string const& name, std::string& problem);
std::unique_ptr<ImageSource> OpenTiff(std::vector<BYTE> bytes, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_TIFF_SOURCE_H_
