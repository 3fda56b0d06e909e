// Reads the first directory of an EXIF block (TIFF 6.0: header of 8 bytes, then a count of 16 bits
// and entries of 12 bytes: tag, type, count, value or offset of the value).
#include "tools/formats/picture/exif.h"

namespace sorrelin::tool {
namespace {

constexpr unsigned kOrientation = 0x0112;
constexpr unsigned kXResolution = 0x011A;
constexpr unsigned kYResolution = 0x011B;
constexpr unsigned kResolutionUnit = 0x0128;
constexpr unsigned kUnitInch = 2;
constexpr unsigned kUnitCentimetre = 3;
constexpr size_t kEntryBytes = 12;

// Numbers in the block's byte order; what is outside reads as 0.
class Numbers {
 public:
  explicit Numbers(std::span<BYTE const> block)
      : block_(block), big_endian_(!block.empty() && block[0] == 'M') {}

  unsigned Short(size_t at) const {
    return big_endian_ ? Byte(at) << 8 | Byte(at + 1) : Byte(at + 1) << 8 | Byte(at);
  }
  unsigned Long(size_t at) const {
    return big_endian_ ? Short(at) << 16 | Short(at + 2) : Short(at + 2) << 16 | Short(at);
  }
  double Rational(size_t at) const {
    unsigned const divisor = Long(at + 4);
    return divisor == 0 ? 0.0 : static_cast<double>(Long(at)) / divisor;
  }

 private:
  unsigned Byte(size_t at) const { return at < block_.size() ? block_[at] : 0u; }

  std::span<BYTE const> block_;
  bool big_endian_;
};

}  // namespace

ExifFacts ReadExif(std::span<BYTE const> block) {
  Numbers const numbers(block);
  size_t const directory = numbers.Long(4);
  unsigned const entries = numbers.Short(directory);
  ExifFacts facts;
  double x = 0, y = 0;
  unsigned unit = kUnitInch;
  for (unsigned i = 0; i < entries; ++i) {
    size_t const entry = directory + 2 + i * kEntryBytes;
    if (entry >= block.size()) break;
    unsigned const tag = numbers.Short(entry);
    unsigned const value = numbers.Short(entry + 8);
    if (tag == kOrientation && value >= 1 && value <= 8)
      facts.orientation = static_cast<int>(value);
    if (tag == kXResolution) x = numbers.Rational(numbers.Long(entry + 8));
    if (tag == kYResolution) y = numbers.Rational(numbers.Long(entry + 8));
    if (tag == kResolutionUnit) unit = value;
  }
  double const scale = unit == kUnitInch ? 1.0 : unit == kUnitCentimetre ? kCentimetresPerInch : 0;
  facts.dpi = {WholeDots(x * scale), WholeDots(y * scale)};
  return facts;
}

}  // namespace sorrelin::tool
