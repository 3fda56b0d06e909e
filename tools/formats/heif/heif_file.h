// HEIC and AVIF files as sequences of pages.
#ifndef TOOLS_FORMATS_HEIF_HEIF_FILE_H_
#define TOOLS_FORMATS_HEIF_HEIF_FILE_H_

#include <sorrelin/platform/types.h>

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "tools/formats/image_source.h"

namespace sorrelin::tool {

// Whether a file that starts so is HEIC or AVIF.
bool IsHeif(std::span<BYTE const> start);

// nullptr with the reason in `problem` if the file is damaged, or the module that reads it is not
// installed.
std::unique_ptr<ImageSource> OpenHeif(std::vector<BYTE> bytes, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_HEIF_HEIF_FILE_H_
