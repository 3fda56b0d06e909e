// Packed rows of bytes to and from Leptonica's words, whose highest byte comes first.
#ifndef TOOLS_FORMATS_PICTURE_PIX_ROWS_H_
#define TOOLS_FORMATS_PICTURE_PIX_ROWS_H_

#include <leptonica/allheaders.h>
#include <sorrelin/platform/types.h>

#include <bit>
#include <cstddef>
#include <cstring>
#include <span>

namespace sorrelin::tool {

// A word as its bytes are in memory, or back.
inline l_uint32 SwappedWord(l_uint32 word) {
  if constexpr (std::endian::native == std::endian::big) return word;
  return word >> 24 | (word >> 8 & 0xFF00) | (word << 8 & 0xFF0000) | word << 24;
}

// Copies a row out of its words, each byte changed by exclusive or with `flip`.
inline void PackWords(l_uint32 const* line, BYTE flip, std::span<BYTE> row) {
  constexpr size_t kWordBytes = sizeof(l_uint32);
  l_uint32 const flips = flip * 0x01010101u;
  size_t const words = row.size() / kWordBytes;
  for (size_t i = 0; i < words; ++i) {
    l_uint32 const word = SwappedWord(line[i] ^ flips);
    std::memcpy(row.data() + i * kWordBytes, &word, kWordBytes);
  }
  for (size_t i = words * kWordBytes; i < row.size(); ++i) {
    row[i] = static_cast<BYTE>(GET_DATA_BYTE(line, i) ^ flip);
  }
}

// Copies a row into its words.
inline void UnpackWords(std::span<BYTE const> row, l_uint32* line) {
  constexpr size_t kWordBytes = sizeof(l_uint32);
  size_t const words = row.size() / kWordBytes;
  for (size_t i = 0; i < words; ++i) {
    l_uint32 word = 0;
    std::memcpy(&word, row.data() + i * kWordBytes, kWordBytes);
    line[i] = SwappedWord(word);
  }
  for (size_t i = words * kWordBytes; i < row.size(); ++i) SET_DATA_BYTE(line, i, row[i]);
}

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_PICTURE_PIX_ROWS_H_
