// An EXIF block of one entry (TIFF 6.0; Exif 2.3, 4.6.4): the orientation.
#include "tools/extract/output/jpeg_mark.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace sorrelin::tool {
namespace {

constexpr BYTE kApp0 = 0xE0, kApp1 = 0xE1;
constexpr std::string_view kExif("Exif\0\0", 6);

std::vector<BYTE> MarkOf(Orientation orientation) {
  BYTE const value = static_cast<BYTE>(orientation);
  return {0xFF, kApp1, 0,   34,               // the segment's size without the marker
          'E',  'x',   'i', 'f', 0, 0,        //
          'M',  'M',   0,   42,  0, 0, 0, 8,  // the directory follows
          0,    1,                            // of one entry
          0x01, 0x12,  0,   3,   0, 0, 0, 1, 0, value, 0, 0,  //
          0,    0,     0,   0};                               // no further directory
}

bool IsExif(std::span<BYTE const> segment) {
  return segment[1] == kApp1 && segment.size() >= 4 + kExif.size() &&
         std::equal(kExif.begin(), kExif.end(), segment.begin() + 4,
                    [](char a, BYTE b) { return static_cast<BYTE>(a) == b; });
}

// The file with the mark as its first segment, or after that of JFIF, which must come first.
std::vector<BYTE> Marked(std::span<BYTE const> file, std::span<BYTE const> mark) {
  std::vector<BYTE> out(file.begin(), file.begin() + 2);
  bool is_marked = false;
  size_t at = 2;
  while (at + 4 <= file.size() && file[at] == 0xFF && (file[at + 1] & 0xF0) == kApp0) {
    size_t const size = 2 + (static_cast<size_t>(file[at + 2]) << 8 | file[at + 3]);
    if (at + size > file.size()) break;
    auto const segment = file.subspan(at, size);
    if (segment[1] != kApp0 && !is_marked) {
      out.insert(out.end(), mark.begin(), mark.end());
      is_marked = true;
    }
    if (!IsExif(segment)) out.insert(out.end(), segment.begin(), segment.end());
    at += size;
  }
  if (!is_marked) out.insert(out.end(), mark.begin(), mark.end());
  out.insert(out.end(), file.begin() + static_cast<ptrdiff_t>(at), file.end());
  return out;
}

}  // namespace

std::vector<BYTE> OrientedJpeg(std::span<BYTE const> file, JpegFacts facts,
                               Orientation orientation) {
  bool const misleading = facts.orientation != kUpright;
  if (orientation == kUpright) {
    return misleading ? Marked(file, {}) : std::vector<BYTE>(file.begin(), file.end());
  }
  facts.orientation = orientation;
  if (auto const turned = TurnedJpeg(file, facts)) return *turned;
  return Marked(file, MarkOf(orientation));
}

}  // namespace sorrelin::tool
