// JBIG2 files (ITU-T T.88, annex D) from the segments that documents hold.
#ifndef TOOLS_EXTRACT_OUTPUT_JBIG2_FILE_H_
#define TOOLS_EXTRACT_OUTPUT_JBIG2_FILE_H_

#include <span>

#include "tools/extract/output/byte_output.h"

namespace sorrelin::tool {

// A file of one page: the globals, the page's segments and the end marks that documents leave out.
// False if writing fails.
bool WriteJbig2File(std::span<BYTE const> globals, std::span<BYTE const> page, ByteOutput& output);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_OUTPUT_JBIG2_FILE_H_
