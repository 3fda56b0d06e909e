// Chunks of a PNG file (ISO/IEC 15948, 5.3): length, name, data, check sum, behind a signature of 8
// bytes; the header's data lies at byte 16.
#include "tools/png_file.h"

#include <cstring>
#include <string_view>

namespace sorrelin::tool {
namespace {

constexpr size_t kSignatureBytes = 8;
constexpr size_t kChunkFrameBytes = 12;  // length, name and check sum
constexpr size_t kChunkDataAt = 8;
constexpr size_t kBitsAt = 24;
constexpr size_t kColourTypeAt = 25;
constexpr BYTE kGrey = 0;
constexpr BYTE kTrueColour = 2;
constexpr BYTE kPalette = 3;

struct Chunk {
  size_t at = 0;     // of its length
  size_t bytes = 0;  // of its data
};

size_t Number(std::vector<BYTE> const& file, size_t at) {
  return static_cast<size_t>(file[at]) << 24 | static_cast<size_t>(file[at + 1]) << 16 |
         static_cast<size_t>(file[at + 2]) << 8 | file[at + 3];
}

// The first chunk of a name that stands before the pixels.
std::optional<Chunk> FindChunk(std::vector<BYTE> const& file, std::string_view name) {
  size_t at = kSignatureBytes;
  while (at + kChunkFrameBytes <= file.size()) {
    size_t const bytes = Number(file, at);
    std::string_view const found(reinterpret_cast<char const*>(file.data()) + at + 4, 4);
    if (found == "IDAT" || bytes > file.size() - at - kChunkFrameBytes) return std::nullopt;
    if (found == name) return Chunk{at, bytes};
    at += kChunkFrameBytes + bytes;
  }
  return std::nullopt;
}

std::array<int, 3> KeyOf(std::vector<BYTE> const& file, Chunk const& chunk, size_t samples) {
  std::array<int, 3> key{};
  for (size_t i = 0; i < samples; ++i) {
    size_t const at = chunk.at + kChunkDataAt + 2 * i;
    key[i] = file[at] << 8 | file[at + 1];
  }
  return key;
}

// The pixel value of the key in the decoded picture, in which a set bit is black.
l_uint32 PixelOfKey(Pix* pix, std::array<int, 3> const& key) {
  int const depth = pixGetDepth(pix);
  if (depth == 1) return key[0] == 0 ? 1 : 0;
  if (depth != 32) return static_cast<l_uint32>(key[0]);
  l_uint32 pixel = 0;
  composeRGBPixel(key[0] & 0xFF, key[1] & 0xFF, key[2] & 0xFF, &pixel);
  return pixel;
}

void WhitenKey(Pix* pix, std::array<int, 3> const& key) {
  int const depth = pixGetDepth(pix);
  l_uint32 const mask = depth == 32 ? ~l_uint32{0xFF} : (l_uint32{1} << depth) - 1;
  l_uint32 const clear = PixelOfKey(pix, key);
  l_uint32 const white = depth == 1 ? 0 : mask;
  for (int y = 0; y < pixGetHeight(pix); ++y) {
    for (int x = 0; x < pixGetWidth(pix); ++x) {
      l_uint32 pixel = 0;
      pixGetPixel(pix, x, y, &pixel);
      if ((pixel & mask) == clear) pixSetPixel(pix, x, y, white);
    }
  }
}

}  // namespace

PngFacts TakePngFacts(std::vector<BYTE>& file) {
  PngFacts facts;
  if (file.size() <= kColourTypeAt) return facts;
  BYTE const type = file[kColourTypeAt];
  facts.palette = type == kPalette;
  facts.bits = file[kBitsAt];
  if (type != kGrey && type != kTrueColour) return facts;
  auto const chunk = FindChunk(file, "tRNS");
  if (!chunk) return facts;
  size_t const samples = type == kGrey ? 1 : 3;
  if (facts.bits <= 8 && chunk->bytes == 2 * samples) facts.key = KeyOf(file, *chunk, samples);
  auto const first = file.begin() + static_cast<ptrdiff_t>(chunk->at);
  file.erase(first, first + static_cast<ptrdiff_t>(kChunkFrameBytes + chunk->bytes));
  return facts;
}

PixPtr ApplyPngFacts(PixPtr pix, PngFacts const& facts) {
  BlendOnWhite(pix.get(), false);
  if (facts.palette) return Reindexed(std::move(pix));
  if (facts.key && pixGetColormap(pix.get()) == nullptr) WhitenKey(pix.get(), *facts.key);
  return pix;
}

}  // namespace sorrelin::tool
