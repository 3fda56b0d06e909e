// Sizes in headers, and lengths of markers and boxes up to the last:
//
//   BMP         "BM", bytes of the file (4), 4 bytes, place of the rows (4), header; lowest first
//   WebP        "RIFF", bytes after this field (4), "WEBP", chunks; lowest first
//   codestream  SOC (2); marker (2), length (2), contents; SOT (2), length (2), tile (2), bytes of
//               the tile part with SOT (4), and more; EOC (2) (ISO/IEC 15444-1, annex A)
//   box         bytes of the box (4; 1: they follow the type in 8 bytes, 0: to the end), type (4)
#include "tools/formats/ends/file_end.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace sorrelin::tool {
namespace {

// What is outside the file reads as 0.
uint64_t ByteAt(std::span<BYTE const> file, size_t at) { return at < file.size() ? file[at] : 0u; }

uint64_t LowestFirst(std::span<BYTE const> file, size_t at, size_t bytes) {
  uint64_t number = 0;
  for (size_t i = bytes; i > 0; --i) number = number << 8 | ByteAt(file, at + i - 1);
  return number;
}

uint64_t HighestFirst(std::span<BYTE const> file, size_t at, size_t bytes) {
  uint64_t number = 0;
  for (size_t i = 0; i < bytes; ++i) number = number << 8 | ByteAt(file, at + i);
  return number;
}

size_t Within(std::span<BYTE const> file, uint64_t end) {
  return static_cast<size_t>(std::min<uint64_t>(end, file.size()));
}

bool HasType(std::span<BYTE const> file, size_t at, char const* type) {
  return file.size() >= at + 8 && std::memcmp(file.data() + at + 4, type, 4) == 0;
}

}  // namespace

// Some writers leave out the size of the file. The rows give it too, unless they are run lengths.
size_t BmpEnd(std::span<BYTE const> file) {
  constexpr size_t kInfoAt = 14, kCoreHeaderBytes = 12, kProfileHeaderBytes = 124;
  uint64_t const stated = LowestFirst(file, 2, 4), rows_at = LowestFirst(file, 10, 4);
  uint64_t const header_bytes = LowestFirst(file, kInfoAt, 4);
  bool const core = header_bytes == kCoreHeaderBytes;
  uint64_t const width = LowestFirst(file, 18, core ? 2 : 4);
  auto const height = static_cast<int32_t>(LowestFirst(file, core ? 20 : 22, core ? 2 : 4));
  uint64_t const bits = LowestFirst(file, core ? 24 : 28, 2);
  uint64_t const rows = height < 0 ? uint64_t{0} - static_cast<uint64_t>(int64_t{height})
                                   : static_cast<uint64_t>(height);
  bool const runs = !core && (LowestFirst(file, 30, 4) == 1 || LowestFirst(file, 30, 4) == 2);
  if (runs && stated == 0) return file.size();
  uint64_t const row_bytes = (width * bits + 31) / 32 * 4;
  if (!runs && row_bytes > 0 && rows > file.size() / row_bytes) return file.size();
  uint64_t end = std::max(stated, runs ? 0 : rows_at + row_bytes * rows);
  if (!core && header_bytes >= kProfileHeaderBytes) {
    end = std::max(
        end, kInfoAt + LowestFirst(file, kInfoAt + 112, 4) + LowestFirst(file, kInfoAt + 116, 4));
  }
  return Within(file, end);
}

size_t WebpEnd(std::span<BYTE const> file) {
  uint64_t const bytes = LowestFirst(file, 4, 4);
  return Within(file, 8 + bytes + bytes % 2);
}

size_t CodestreamEnd(std::span<BYTE const> file) {
  constexpr uint64_t kStartOfTile = 0xFF90, kEndOfCodestream = 0xFFD9;
  uint64_t at = 2;
  while (at < file.size()) {
    size_t const place = static_cast<size_t>(at);
    uint64_t const marker = HighestFirst(file, place, 2);
    if (marker == kEndOfCodestream) return Within(file, at + 2);
    bool const tile = marker == kStartOfTile;
    uint64_t const bytes =
        tile ? HighestFirst(file, place + 6, 4) : 2 + HighestFirst(file, place + 2, 2);
    // A tile part of no size reaches to the end.
    if (marker < 0xFF00 || bytes == 0) break;
    at += bytes;
  }
  return file.size();
}

size_t BoxesEnd(std::span<BYTE const> file) {
  constexpr uint64_t kHeaderBytes = 8, kLongHeaderBytes = 16;
  uint64_t at = 0;
  while (at < file.size()) {
    size_t const place = static_cast<size_t>(at);
    bool const another = at > 0 && HasType(file, place, "ftyp");
    bool const padding = HasType(file, place, "\0\0\0\0");
    uint64_t bytes = HighestFirst(file, place, 4);
    if (another || padding) return place;
    bool const to_the_end = bytes == 0;
    if (to_the_end) break;
    if (bytes == 1) bytes = std::max(HighestFirst(file, place + 8, 8), kLongHeaderBytes);
    bool const cut_short = bytes > file.size() - at;
    if (cut_short && (HasType(file, place, "meta") || HasType(file, place, "mdat"))) break;
    if (cut_short || bytes < kHeaderBytes) return place;
    at += bytes;
  }
  return file.size();
}

bool HasBytesAfter(std::span<BYTE const> file, size_t end) {
  auto const rest = file.subspan(std::min(end, file.size()));
  return std::any_of(rest.begin(), rest.end(), [](BYTE byte) { return byte != 0; });
}

}  // namespace sorrelin::tool
