// Rows of one-bit pixels by words of 64, whatever the byte order of the machine. In the bytes of a
// row the leftmost pixel is the highest bit of the first byte.
#ifndef SIBLINGS_CADWICK_PIXEL_WORDS_H_
#define SIBLINGS_CADWICK_PIXEL_WORDS_H_

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace sorrelin::cadwick {

inline constexpr uint32_t kWordPixels = 64;
inline constexpr size_t kWordBytes = 8;

// Eight bytes in their order in memory.
inline uint64_t LoadWord(uint8_t const* bytes) {
  uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

inline void StoreWord(uint8_t* bytes, uint64_t word) { std::memcpy(bytes, &word, sizeof word); }

constexpr uint64_t SwapBytes(uint64_t word) {
  word = (word >> 32) | (word << 32);
  word = (word >> 16 & 0x0000FFFF0000FFFF) | (word & 0x0000FFFF0000FFFF) << 16;
  return (word >> 8 & 0x00FF00FF00FF00FF) | (word & 0x00FF00FF00FF00FF) << 8;
}

// Between a word in memory and the number whose highest byte is the word's first; the same step
// leads both ways.
constexpr uint64_t BigEndian(uint64_t word) {
  return std::endian::native == std::endian::little ? SwapBytes(word) : word;
}

// The number whose bit k is pixel k of a word in memory. Counting trailing zeros finds the first
// set pixel then, and `x & (x - 1)` takes it away.
constexpr uint64_t PixelsFromLeft(uint64_t word) {
  uint64_t pixels = std::endian::native == std::endian::little ? word : SwapBytes(word);
  pixels = (pixels >> 4 & 0x0F0F0F0F0F0F0F0F) | (pixels & 0x0F0F0F0F0F0F0F0F) << 4;
  pixels = (pixels >> 2 & 0x3333333333333333) | (pixels & 0x3333333333333333) << 2;
  return (pixels >> 1 & 0x5555555555555555) | (pixels & 0x5555555555555555) << 1;
}

}  // namespace sorrelin::cadwick

#endif  // SIBLINGS_CADWICK_PIXEL_WORDS_H_
