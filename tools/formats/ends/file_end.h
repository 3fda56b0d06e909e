// The ends of picture files in memory, by what their headers say of their sizes. Bytes after them
// belong to no picture, unless they are zeros.
#ifndef TOOLS_FORMATS_ENDS_FILE_END_H_
#define TOOLS_FORMATS_ENDS_FILE_END_H_

#include <sorrelin/platform/types.h>

#include <cstddef>
#include <span>

namespace sorrelin::tool {

// Bytes of the file up to its end; all there are where it is cut short or its end is unknown.
size_t BmpEnd(std::span<BYTE const> file);
size_t WebpEnd(std::span<BYTE const> file);

// Of a bare JPEG 2000 codestream.
size_t CodestreamEnd(std::span<BYTE const> file);

// Of a HEIC or AVIF file, and of any other whose boxes start with the one of its type.
size_t BoxesEnd(std::span<BYTE const> file);

// Whether there is anything but zeros after so many bytes.
bool HasBytesAfter(std::span<BYTE const> file, size_t end);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_ENDS_FILE_END_H_
