// TIFF files as sequences of pages.
#ifndef TOOLS_FORMATS_TIFF_TIFF_SOURCE_H_
#define TOOLS_FORMATS_TIFF_TIFF_SOURCE_H_

#include <sorrelin/platform/types.h>

#include <memory>
#include <span>
#include <string>

#include "tools/formats/image_source.h"

namespace sorrelin::tool {

inline constexpr size_t kTiffHeaderBytes = 4;

// Whether a file that starts so is TIFF, of either byte order, classic or BigTIFF.
bool IsTiff(std::span<BYTE const> start);

// Opens a file, and keeps `owner` for as long as it reads it. Null with the reason in `problem`.
std::unique_ptr<ImageSource> OpenTiff(std::string const& name, std::shared_ptr<void const> owner,
                                      std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_TIFF_TIFF_SOURCE_H_
