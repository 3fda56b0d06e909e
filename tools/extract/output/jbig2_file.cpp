// JBIG2 files in sequential organisation: a file header, then segments, each a header with its
// data.
#include "tools/extract/output/jbig2_file.h"

#include <array>

namespace sorrelin::tool {
namespace {

// Identifier (8 bytes), flags (sequential, number of pages known), one page (4).
constexpr std::array<BYTE, 13> kHeader = {0x97, 'J',  'B', '2', 0x0D, 0x0A, 0x1A,
                                          0x0A, 0x01, 0,   0,   0,    1};

// A segment without data: number (4 bytes), type, no references, its page, length 0 (4). The
// numbers are above those of any other segment.
constexpr std::array<BYTE, 11> kEndOfPage = {0xFF, 0xFF, 0xFF, 0xFD, 49, 0, 1, 0, 0, 0, 0};
constexpr std::array<BYTE, 11> kEndOfFile = {0xFF, 0xFF, 0xFF, 0xFE, 51, 0, 0, 0, 0, 0, 0};

}  // namespace

bool WriteJbig2File(std::span<BYTE const> globals, std::span<BYTE const> page, ByteOutput& output) {
  return output.Write(kHeader) && output.Write(globals) && output.Write(page) &&
         output.Write(kEndOfPage) && output.Write(kEndOfFile);
}

}  // namespace sorrelin::tool
