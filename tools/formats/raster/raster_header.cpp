// Reads the numbers of a header at their offsets and checks them against each other.
#include "tools/formats/raster/raster_header.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <string_view>

namespace sorrelin::tool {
namespace {

constexpr size_t kHeaderBytes1 = 420, kHeaderBytes2 = 1796, kAppleHeaderBytes = 32;
constexpr unsigned kMostSide = 1'000'000;  // pixels; more than pages have at any resolution
constexpr size_t kMostPadding = 64;        // bytes at the end of a line
constexpr uint64_t kMostPageBytes = uint64_t{1} << 32;
constexpr double kPointsPerInch = 72;
constexpr double kLeastPoints = 3, kMostPoints = 14400;
constexpr unsigned kMostQuality = 100;
constexpr char kRemedy[] = " (print it again, as PWG raster in grey or sRGB)";

// Offsets of 4-byte numbers; those from kPageSizeReal on are in long headers only.
enum Offset : size_t {
  kResolution = 276,
  kBoundingBox = 284,
  kPageSize = 352,
  kWidth = 372,
  kHeight = 376,
  kBitsPerColour = 384,
  kBitsPerPixel = 388,
  kBytesPerLine = 392,
  kColourOrder = 396,
  kColourSpace = 400,
  kCompression = 404,
  kRowCount = 408,
  kPageSizeReal = 428,
  kBoundingBoxReal = 436,
};

// Offsets in Apple's header.
enum AppleOffset : size_t {
  kAppleBitsPerPixel = 0,
  kAppleColourSpace = 1,
  kAppleWidth = 12,
  kAppleHeight = 16,
  kAppleResolution = 20,
};

enum class Tones { kLight, kInk };

struct ColourSpace {
  unsigned number;
  ImageColours colours;
  Tones tones;  // of the highest sample
};

// By the number in cupsColorSpace. Cyan, magenta and yellow are red, green and blue upside down.
constexpr ColourSpace kColourSpaces[] = {
    {0, ImageColours::kGrey, Tones::kLight},   // W
    {1, ImageColours::kRgb, Tones::kLight},    // RGB
    {3, ImageColours::kGrey, Tones::kInk},     // K
    {4, ImageColours::kRgb, Tones::kInk},      // CMY
    {6, ImageColours::kCmyk, Tones::kInk},     // CMYK
    {18, ImageColours::kGrey, Tones::kLight},  // sGray
    {19, ImageColours::kRgb, Tones::kLight},   // sRGB
};

// cupsColorSpace of Apple's numbers: sGray, sRGB, Lab, Adobe RGB, W, RGB, CMYK.
constexpr unsigned kAppleColourSpaces[] = {18, 19, 16, 20, 0, 1, 6};

// The numbers of a header, from either form.
struct Numbers {
  unsigned width = 0;
  unsigned height = 0;
  unsigned bits_per_colour = 0;
  unsigned bits_per_pixel = 0;
  uint64_t line_bytes = 0;
  unsigned colour_order = 0;
  unsigned colour_space = 0;
  unsigned dpi_x = 0;
  unsigned dpi_y = 0;
};

unsigned NumberAt(std::span<BYTE const> bytes, size_t at, bool low_first) {
  unsigned value = 0;
  for (size_t i = 0; i < 4; ++i) {
    value = value << 8 | bytes[at + (low_first ? 3 - i : i)];
  }
  return value;
}

Numbers ReadNumbers(std::span<BYTE const> bytes, bool low_first) {
  auto const at = [&](size_t offset) { return NumberAt(bytes, offset, low_first); };
  return {at(kWidth),        at(kHeight),       at(kBitsPerColour),
          at(kBitsPerPixel), at(kBytesPerLine), at(kColourOrder),
          at(kColourSpace),  at(kResolution),   at(kResolution + 4)};
}

ColourSpace const* FindColours(unsigned number) {
  auto const* const found = std::ranges::find(kColourSpaces, number, &ColourSpace::number);
  return found == std::end(kColourSpaces) ? nullptr : found;
}

Numbers ReadAppleNumbers(std::span<BYTE const> bytes) {
  Numbers numbers;
  numbers.width = NumberAt(bytes, kAppleWidth, false);
  numbers.height = NumberAt(bytes, kAppleHeight, false);
  numbers.bits_per_pixel = bytes[kAppleBitsPerPixel];
  size_t const space = bytes[kAppleColourSpace];
  numbers.colour_space = space < std::size(kAppleColourSpaces) ? kAppleColourSpaces[space]
                                                               : 256 + bytes[kAppleColourSpace];
  ColourSpace const* const colours = FindColours(numbers.colour_space);
  numbers.bits_per_colour =
      numbers.bits_per_pixel /
      (colours == nullptr ? 1u : static_cast<unsigned>(ComponentsOf(colours->colours)));
  numbers.line_bytes = (uint64_t{numbers.width} * numbers.bits_per_pixel + 7) / 8;
  numbers.dpi_x = numbers.dpi_y = NumberAt(bytes, kAppleResolution, false);
  return numbers;
}

// What is wrong with the size of a page; empty if nothing is.
std::string SizeObjection(Numbers const& numbers) {
  if (numbers.width == 0 || numbers.height == 0 || numbers.width > kMostSide ||
      numbers.height > kMostSide) {
    return "has a page of " + std::to_string(numbers.width) + " by " +
           std::to_string(numbers.height) + " pixels";
  }
  constexpr unsigned kMostDots = static_cast<unsigned>(kMaxDotsPerInch);
  if (numbers.dpi_x > kMostDots || numbers.dpi_y > kMostDots) {
    return "has a page of " + std::to_string(std::max(numbers.dpi_x, numbers.dpi_y)) +
           " dots per inch";
  }
  return {};
}

// The same of its pixels.
std::string PixelObjection(Numbers const& numbers, ColourSpace const* space) {
  if (space == nullptr) {
    return "has a page in colour space " + std::to_string(numbers.colour_space);
  }
  unsigned const bits = numbers.bits_per_colour;
  unsigned const components = static_cast<unsigned>(ComponentsOf(space->colours));
  if (components > 1 && numbers.colour_order != 0) return "has a page with its colours apart";
  bool const known =
      bits == 8 || bits == 16 || (components == 1 && (bits == 1 || bits == 2 || bits == 4));
  if (!known || numbers.bits_per_pixel != bits * components) {
    return "has a page of " + std::to_string(components) + " colours of " + std::to_string(bits) +
           " bits in " + std::to_string(numbers.bits_per_pixel) + " bits of a pixel";
  }
  uint64_t const least = (uint64_t{numbers.width} * numbers.bits_per_pixel + 7) / 8;
  if (numbers.line_bytes < least || numbers.line_bytes > least + kMostPadding) {
    return "has a page with lines of " + std::to_string(numbers.line_bytes) + " bytes for " +
           std::to_string(numbers.width) + " pixels";
  }
  if (numbers.line_bytes * numbers.height >= kMostPageBytes) return "has a page of 4 GiB or more";
  return {};
}

RasterHeader HeaderOf(Numbers const& numbers, ColourSpace const& space) {
  RasterHeader header;
  RasterPage& page = header.page;
  page.width = static_cast<int>(numbers.width);
  page.height = static_cast<int>(numbers.height);
  page.colours = space.colours;
  page.bits = static_cast<int>(numbers.bits_per_colour);
  page.dpi = {static_cast<int>(numbers.dpi_x), static_cast<int>(numbers.dpi_y)};
  header.lines.bytes = static_cast<size_t>(numbers.line_bytes);
  header.lines.unit_bytes = std::max<size_t>(1, numbers.bits_per_pixel / 8);
  header.lines.inverted = space.tones == Tones::kInk && space.colours != ImageColours::kCmyk;
  header.lines.blank = space.tones == Tones::kInk ? 0 : 0xFF;
  return header;
}

// The page around the picture, by the header's size and box of either precision. What contradicts
// the size of the picture does not count.
class FrameReader {
 public:
  FrameReader(std::span<BYTE const> bytes, bool low_first) : bytes_(bytes), low_first_(low_first) {}

  std::optional<PageFrame> Read(RasterPage const& page) const {
    if (page.dpi.x == 0 || page.dpi.y == 0) return std::nullopt;
    bool const precise = bytes_.size() > kHeaderBytes1 && Real(kPageSizeReal) > 0;
    PageFrame const frame = precise ? PageFrame{Real(kPageSizeReal), Real(kPageSizeReal + 4),
                                                Real(kBoundingBoxReal), Real(kBoundingBoxReal + 4)}
                                    : PageFrame{Whole(kPageSize), Whole(kPageSize + 4),
                                                Whole(kBoundingBox), Whole(kBoundingBox + 4)};
    double const width = page.width * kPointsPerInch / page.dpi.x;
    double const height = page.height * kPointsPerInch / page.dpi.y;
    bool const has_margins = frame.width >= width + 1 || frame.height >= height + 1;
    bool const holds =
        Holds(frame.width, frame.left, width) && Holds(frame.height, frame.bottom, height);
    return has_margins && holds ? std::optional(frame) : std::nullopt;
  }

 private:
  // False for what is no number, too.
  static bool Holds(double side, double from, double length) {
    return side >= kLeastPoints && side <= kMostPoints && from >= 0 && from + length <= side + 1;
  }

  double Whole(size_t at) const { return NumberAt(bytes_, at, low_first_); }
  double Real(size_t at) const {
    return static_cast<double>(std::bit_cast<float>(NumberAt(bytes_, at, low_first_)));
  }

  std::span<BYTE const> bytes_;
  bool low_first_;
};

void ReadWishes(std::span<BYTE const> bytes, bool low_first, RasterPage& page) {
  unsigned const coding = NumberAt(bytes, kCompression, low_first);
  if (coding == 1) page.coding = RasterCoding::kFlate;
  if (coding == 2) page.coding = RasterCoding::kJpeg;
  unsigned const quality = NumberAt(bytes, kRowCount, low_first);
  if (quality <= kMostQuality) page.quality = static_cast<int>(quality);
}

bool IsPwg(std::span<BYTE const> bytes) {
  constexpr std::string_view kClass = "PwgRaster";
  return std::equal(kClass.begin(), kClass.end(), bytes.begin()) && bytes[kClass.size()] == 0;
}

}  // namespace

std::optional<RasterKind> RasterKindOf(std::span<BYTE const> start) {
  std::string_view const text(reinterpret_cast<char const*>(start.data()), start.size());
  if (text.starts_with(std::string_view("UNIRAST", kAppleSyncBytes))) {
    return RasterKind{true, true, false, kAppleHeaderBytes};
  }
  std::string_view const sync = text.substr(0, kRasterSyncBytes);
  bool const low_first = sync == "tSaR" || sync == "2SaR" || sync == "3SaR";
  if (sync == "RaSt" || sync == "tSaR") return RasterKind{false, false, low_first, kHeaderBytes1};
  if (sync == "RaS2" || sync == "2SaR") return RasterKind{false, true, low_first, kHeaderBytes2};
  if (sync == "RaS3" || sync == "3SaR") return RasterKind{false, false, low_first, kHeaderBytes2};
  return std::nullopt;
}

std::optional<RasterHeader> ReadRasterHeader(RasterKind const& kind, std::span<BYTE const> bytes,
                                             std::string& problem) {
  Numbers const numbers = kind.apple ? ReadAppleNumbers(bytes) : ReadNumbers(bytes, kind.low_first);
  ColourSpace const* const space = FindColours(numbers.colour_space);
  problem = SizeObjection(numbers);
  if (problem.empty()) problem = PixelObjection(numbers, space);
  if (!problem.empty()) return problem += kRemedy, std::nullopt;
  RasterHeader header = HeaderOf(numbers, *space);
  if (kind.apple || IsPwg(bytes)) return header;
  header.page.frame = FrameReader(bytes, kind.low_first).Read(header.page);
  ReadWishes(bytes, kind.low_first, header.page);
  return header;
}

}  // namespace sorrelin::tool
