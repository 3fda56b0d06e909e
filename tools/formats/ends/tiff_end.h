// The end of a TIFF file: the last byte that a directory or what it points to takes up.
#ifndef TOOLS_FORMATS_ENDS_TIFF_END_H_
#define TOOLS_FORMATS_ENDS_TIFF_END_H_

#include <cstdint>
#include <optional>
#include <string>

namespace sorrelin::tool {

// Bytes of the file up to its end. nullopt where that cannot be known: the file cannot be read, a
// directory is damaged or of a kind that says only where its data start, or there are too many.
std::optional<uint64_t> TiffEnd(std::string const& name);

// Whether the file has bytes other than zeros after so many.
bool HasBytesAfter(std::string const& name, uint64_t end);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_ENDS_TIFF_END_H_
