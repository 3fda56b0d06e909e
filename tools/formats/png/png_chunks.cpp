// The chunks of PNG files. A file (ISO/IEC 15948, 5) is a signature of 8 bytes and chunks:
//
//   chunk  length of the data (4 bytes), type (4), data, CRC-32 of type and data (4)
//
// Numbers have their highest byte first.
#include "tools/formats/png/png_chunks.h"

#include <libdeflate.h>
#include <png.h>
#include <sorrelin/image/inflate_stream.h>
#include <sorrelin/platform/memory_size.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include "tools/formats/picture/exif.h"

namespace sorrelin::tool {
namespace {

constexpr std::array<BYTE, 8> kSignature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr size_t kChunkFrameBytes = 12;
constexpr size_t kHeaderBytes = 13;
constexpr size_t kDensityBytes = 9;
constexpr size_t kMaxProfileNameBytes = 80;  // with its terminator
constexpr size_t kMaxProfileBytes = size_t{1} << 24;
constexpr BYTE kPerMetre = 1;
constexpr double kMetresPerInch = 0.0254;
constexpr BYTE kLastFilterType = 4;
// What deflate can make of one byte at most.
constexpr uint64_t kMostExpansion = 1032;

uint32_t NumberAt(std::span<BYTE const> bytes, size_t at) {
  return uint32_t{bytes[at]} << 24 | uint32_t{bytes[at + 1]} << 16 | uint32_t{bytes[at + 2]} << 8 |
         bytes[at + 3];
}

struct Chunk {
  std::string_view type;
  std::span<BYTE const> data;
};

// Takes the next chunk off the front of `rest`: nullopt if it is cut short or its CRC is wrong.
std::optional<Chunk> TakeChunk(std::span<BYTE const>& rest) {
  if (rest.size() < kChunkFrameBytes) return std::nullopt;
  size_t const length = NumberAt(rest, 0);
  if (length > rest.size() - kChunkFrameBytes) return std::nullopt;
  auto const checked = rest.subspan(4, 4 + length);
  if (libdeflate_crc32(0, checked.data(), checked.size()) != NumberAt(rest, 8 + length)) {
    return std::nullopt;
  }
  rest = rest.subspan(kChunkFrameBytes + length);
  return Chunk{{reinterpret_cast<char const*>(checked.data()), 4}, checked.subspan(4)};
}

bool IsDepthOf(int type, int bits) {
  if (type == PNG_COLOR_TYPE_GRAY) {
    return bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16;
  }
  if (type == PNG_COLOR_TYPE_PALETTE) return bits == 1 || bits == 2 || bits == 4 || bits == 8;
  bool const known = type == PNG_COLOR_TYPE_RGB || type == PNG_COLOR_TYPE_GRAY_ALPHA ||
                     type == PNG_COLOR_TYPE_RGB_ALPHA;
  return known && (bits == 8 || bits == 16);
}

bool ReadHeader(std::span<BYTE const> data, PngChunks& png) {
  if (data.size() != kHeaderBytes) return false;
  constexpr uint32_t kMostSide = 0x7FFFFFFF;
  uint32_t const width = NumberAt(data, 0), height = NumberAt(data, 4);
  if (width == 0 || height == 0 || width > kMostSide || height > kMostSide) return false;
  png.width = static_cast<int>(width);
  png.height = static_cast<int>(height);
  png.bits = data[8];
  png.type = data[9];
  png.interlaced = data[12] == PNG_INTERLACE_ADAM7;
  png.transparent = (png.type & PNG_COLOR_MASK_ALPHA) != 0;
  bool const known_methods = data[10] == 0 && data[11] == 0 && data[12] <= PNG_INTERLACE_ADAM7;
  return known_methods && IsDepthOf(png.type, png.bits);
}

std::vector<BYTE> Inflated(std::span<BYTE const> stream, size_t most) {
  std::vector<BYTE> bytes;
  InflateStream inflate(stream);
  constexpr size_t kPieceBytes = 1 << 16;
  while (bytes.size() < most) {
    size_t const before = bytes.size();
    bytes.resize(before + kPieceBytes);
    size_t const count = inflate.Read({bytes.data() + before, kPieceBytes});
    bytes.resize(before + count);
    if (count < kPieceBytes) break;
  }
  return bytes;
}

// Name, terminator, method (0), zlib stream.
void ReadProfile(std::span<BYTE const> data, PngChunks& png) {
  auto const start = data.first(std::min(data.size(), kMaxProfileNameBytes));
  auto const end = std::find(start.begin(), start.end(), BYTE{0});
  size_t const method = static_cast<size_t>(end - start.begin()) + 1;
  int const components = (png.type & PNG_COLOR_MASK_COLOR) != 0 ? 3 : 1;
  if (end != start.end() && method < data.size() && data[method] == 0) {
    png.profile = UsableProfile(Inflated(data.subspan(method + 1), kMaxProfileBytes), components);
  }
  png.profile_unusable = png.profile == nullptr;
}

void ReadDensity(std::span<BYTE const> data, PngChunks& png) {
  if (data.size() != kDensityBytes || data[8] != kPerMetre) return;
  png.dpi = {WholeDots(NumberAt(data, 0) * kMetresPerInch),
             WholeDots(NumberAt(data, 4) * kMetresPerInch)};
}

// An animation's pictures (APNG) are counted in acTL. The one of IDAT is among them if an fcTL
// comes before it.
void ReadAnimation(Chunk const& chunk, PngChunks& png, uint32_t& others) {
  constexpr size_t kControlBytes = 8;
  if (chunk.type == "acTL" && chunk.data.size() == kControlBytes) others = NumberAt(chunk.data, 0);
  if (chunk.type == "fcTL" && png.data.empty() && others > 0) --others;
  png.animated = others > 0;
}

void ReadOptional(Chunk const& chunk, PngChunks& png) {
  if (chunk.type == "PLTE") png.palette = chunk.data;
  if (chunk.type == "tRNS") png.transparent = true;
  if (chunk.type == "iCCP") ReadProfile(chunk.data, png);
  if (chunk.type == "pHYs") ReadDensity(chunk.data, png);
  if (chunk.type == "eXIf") png.orientation = ReadExif(chunk.data).orientation;
  if (chunk.type == "IDAT") png.data.push_back(chunk.data);
}

bool HasItsPalette(PngChunks const& png) {
  if (png.type != PNG_COLOR_TYPE_PALETTE) return true;
  size_t const most = size_t{3} << png.bits;
  return !png.palette.empty() && png.palette.size() % 3 == 0 && png.palette.size() <= most;
}

struct DecompressorFree {
  void operator()(libdeflate_decompressor* d) const { libdeflate_free_decompressor(d); }
};

// Whether the stream holds exactly the rows, each of a known filter type.
bool HoldsRows(std::span<BYTE const> stream, PngChunks const& chunks) {
  uint64_t const row_bytes = chunks.RowBytes() + 1;
  uint64_t const wanted = row_bytes * static_cast<uint64_t>(chunks.height);
  if (wanted / kMostExpansion > stream.size()) return false;
  size_t const bytes = MemorySize(wanted);
  std::unique_ptr<libdeflate_decompressor, DecompressorFree> const decompressor(
      libdeflate_alloc_decompressor());
  if (decompressor == nullptr) return false;
  auto const rows = std::make_unique_for_overwrite<BYTE[]>(bytes);
  if (libdeflate_zlib_decompress(decompressor.get(), stream.data(), stream.size(), rows.get(),
                                 bytes, nullptr) != LIBDEFLATE_SUCCESS) {
    return false;
  }
  for (uint64_t at = 0; at < bytes; at += row_bytes) {
    if (rows[static_cast<size_t>(at)] > kLastFilterType) return false;
  }
  return true;
}

// An index that the file gives no colour is black.
std::vector<BYTE> WholePalette(PngChunks const& chunks) {
  std::vector<BYTE> palette(chunks.palette.begin(), chunks.palette.end());
  palette.resize(size_t{3} << chunks.bits);
  return palette;
}

ImageForm FormOf(PngChunks const& chunks) {
  ImageForm form;
  form.filter = ImageFilter::kFlate;
  form.predicted = true;
  form.bits_per_component = chunks.bits;
  bool const colour = (chunks.type & PNG_COLOR_MASK_COLOR) != 0;
  form.colours = colour ? ImageColours::kRgb : ImageColours::kGrey;
  if (chunks.type == PNG_COLOR_TYPE_PALETTE) form.palette = WholePalette(chunks);
  return form;
}

}  // namespace

int PngChunks::Samples() const {
  if (type == PNG_COLOR_TYPE_PALETTE) return 1;
  int const colours = (type & PNG_COLOR_MASK_COLOR) != 0 ? 3 : 1;
  return (type & PNG_COLOR_MASK_ALPHA) != 0 ? colours + 1 : colours;
}

uint64_t PngChunks::RowBytes() const {
  return (static_cast<uint64_t>(width) * static_cast<uint64_t>(Samples() * bits) + 7) / 8;
}

std::optional<PngChunks> ReadPngChunks(std::span<BYTE const> file) {
  if (file.size() < kSignature.size() ||
      !std::equal(kSignature.begin(), kSignature.end(), file.begin())) {
    return std::nullopt;
  }
  auto rest = file.subspan(kSignature.size());
  auto const header = TakeChunk(rest);
  PngChunks png;
  if (!header || header->type != "IHDR" || !ReadHeader(header->data, png)) return std::nullopt;
  uint32_t others = 0;
  for (;;) {
    auto const chunk = TakeChunk(rest);
    if (!chunk) return std::nullopt;
    if (chunk->type == "IEND") break;
    ReadAnimation(*chunk, png, others);
    ReadOptional(*chunk, png);
  }
  if (png.data.empty() || !HasItsPalette(png)) return std::nullopt;
  return png;
}

std::optional<StoredImage> StoredPng(PngChunks const& chunks) {
  if (chunks.interlaced || chunks.transparent) return std::nullopt;
  auto const stream = std::make_shared<std::vector<BYTE>>();
  for (auto const& part : chunks.data) stream->insert(stream->end(), part.begin(), part.end());
  if (!HoldsRows(*stream, chunks)) return std::nullopt;
  StoredImage image;
  image.bytes = *stream;
  image.owner = stream;
  image.width = chunks.width;
  image.height = chunks.height;
  image.form = FormOf(chunks);
  image.profile = chunks.profile;
  image.orientation = chunks.orientation;
  image.dpi = chunks.dpi;
  return image;
}

}  // namespace sorrelin::tool
