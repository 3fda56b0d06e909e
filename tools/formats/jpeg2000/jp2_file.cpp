// A JP2 file (ISO/IEC 15444-1, annex I) is a sequence of boxes; numbers have their highest byte
// first:
//
//   box      length (4 bytes; 1: it follows the type in 8 bytes, 0: to the end), type (4), contents
//   jp2h     a box of boxes: ihdr, bpcc, colr, pclr, cdef, res
//   ihdr     height (4), width (4), components (2), bits - 1 (1), coding (1), two flags
//   colr     method (1: enumerated, 2: profile), two bytes, enumerated space (4) or the profile
//   res      a box of boxes resc and resd: y and x fraction (4 x 2), exponents of 10 (2 x 1)
//
// A codestream (annex A) starts with SOC and SIZ: marker (2), length (2), capabilities (2), width
// (4), height (4), their offsets (2 x 4), tiles (4 x 4), components (2), and for each its bits - 1,
// x step and y step.
#include "tools/formats/jpeg2000/jp2_file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

namespace sorrelin::tool {
namespace {

constexpr BYTE kSignatureBox[] = {0, 0, 0, 12, 'j', 'P', ' ', ' ', 0x0D, 0x0A, 0x87, 0x0A};
constexpr BYTE kTypeBox[] = {0,   0,   0, 20, 'f', 't', 'y', 'p', 'j', 'p',
                             '2', ' ', 0, 0,  0,   0,   'j', 'p', '2', ' '};
constexpr BYTE kStartOfCodestream[] = {0xFF, 0x4F, 0xFF, 0x51};
constexpr size_t kBoxHeaderBytes = 8;
constexpr size_t kImageHeaderBytes = 14;
constexpr size_t kSizeMarkerBytes = 42;  // SOC, and SIZ up to its components
constexpr BYTE kWaveletCoding = 7;
constexpr double kMetresPerInch = 0.0254;

enum Method : BYTE { kEnumerated = 1, kRestrictedProfile = 2 };
enum Space : uint32_t { kCmyk = 12, kSrgb = 16, kGrey = 17, kSycc = 18 };

// Reads numbers; what is outside reads as 0.
class Contents {
 public:
  explicit Contents(std::span<BYTE const> bytes) : bytes_(bytes) {}

  uint32_t Byte(size_t at) const { return at < bytes_.size() ? bytes_[at] : 0u; }
  uint32_t Short(size_t at) const { return Byte(at) << 8 | Byte(at + 1); }
  uint32_t Long(size_t at) const { return Short(at) << 16 | Short(at + 2); }
  size_t size() const { return bytes_.size(); }
  std::span<BYTE const> From(size_t at) const {
    return at < bytes_.size() ? bytes_.subspan(at) : std::span<BYTE const>{};
  }

 private:
  std::span<BYTE const> bytes_;
};

struct Box {
  std::string_view type;
  Contents contents;
};

// Takes the next box off the front; nullopt if it is cut short.
std::optional<Box> TakeBox(std::span<BYTE const>& rest) {
  Contents const start(rest);
  uint64_t length = start.Long(0);
  size_t header = kBoxHeaderBytes;
  if (length == 1) {
    length = uint64_t{start.Long(8)} << 32 | start.Long(12);
    header += 8;
  }
  if (length == 0) length = rest.size();
  if (length < header || length > rest.size()) return std::nullopt;
  Box const box = {{reinterpret_cast<char const*>(rest.data()) + 4, 4},
                   Contents(rest.subspan(header, static_cast<size_t>(length) - header))};
  rest = rest.subspan(static_cast<size_t>(length));
  return box;
}

// What the header boxes say.
struct Facts {
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t components = 0;
  bool wavelet = false;
  int colour_boxes = 0;  // readable ones; the first counts
  uint32_t method = 0;
  uint32_t space = 0;
  std::vector<BYTE> profile;
  uint32_t columns = 0;  // of the palette; 0: there is none
  bool transparent = false;
  Resolution capture;
  Resolution display;
  bool has_data = false;
};

int DotsOf(Contents const& box, size_t fraction, size_t exponent) {
  uint32_t const divisor = box.Short(fraction + 2);
  if (divisor == 0) return 0;
  double const scale = std::pow(10.0, static_cast<int8_t>(box.Byte(exponent)));
  return WholeDots(box.Short(fraction) * scale / divisor * kMetresPerInch);
}

bool ReadResolutions(std::span<BYTE const> rest, Facts& facts) {
  while (!rest.empty()) {
    auto const box = TakeBox(rest);
    if (!box) return false;
    Resolution const dpi = {DotsOf(box->contents, 4, 9), DotsOf(box->contents, 0, 8)};
    if (box->type == "resc") facts.capture = dpi;
    if (box->type == "resd") facts.display = dpi;
  }
  return true;
}

void ReadColours(Contents const& box, Facts& facts) {
  uint32_t const method = box.Byte(0);
  if ((method != kEnumerated && method != kRestrictedProfile) || facts.colour_boxes++ > 0) return;
  facts.method = method;
  if (method == kEnumerated) facts.space = box.Long(3);
  auto const profile = box.From(3);
  if (method == kRestrictedProfile) facts.profile.assign(profile.begin(), profile.end());
}

// Channels of type 0 are colours, and all others are opacity or unknown.
bool HasOtherChannels(Contents const& box) {
  for (uint32_t i = 0; i < box.Short(0); ++i) {
    if (box.Short(2 + 6 * size_t{i} + 2) != 0) return true;
  }
  return false;
}

bool ReadHeader(std::span<BYTE const> rest, Facts& facts) {
  while (!rest.empty()) {
    auto const box = TakeBox(rest);
    if (!box) return false;
    Contents const& contents = box->contents;
    if (box->type == "ihdr" && contents.size() == kImageHeaderBytes) {
      facts.height = contents.Long(0);
      facts.width = contents.Long(4);
      facts.components = contents.Short(8);
      facts.wavelet = contents.Byte(11) == kWaveletCoding;
    }
    if (box->type == "colr") ReadColours(contents, facts);
    if (box->type == "pclr") facts.columns = contents.Byte(2);
    if (box->type == "cdef") facts.transparent |= HasOtherChannels(contents);
    if (box->type == "res " && !ReadResolutions(contents.From(0), facts)) return false;
  }
  return true;
}

std::optional<Facts> ReadBoxes(std::span<BYTE const> file) {
  Facts facts;
  auto rest = file.subspan(sizeof kSignatureBox);
  while (!rest.empty() && !facts.has_data) {
    auto const box = TakeBox(rest);
    if (!box) return std::nullopt;
    if (box->type == "jp2h" && !ReadHeader(box->contents.From(0), facts)) return std::nullopt;
    facts.has_data = box->type == "jp2c";
  }
  return facts;
}

// 0 if they are not known.
int ComponentsOf(Facts const& facts) {
  if (facts.method == kRestrictedProfile) return ProfileComponents(facts.profile);
  if (facts.space == kGrey) return 1;
  if (facts.space == kSrgb || facts.space == kSycc) return 3;
  return facts.space == kCmyk ? 4 : 0;
}

// Channels of colour that the file's data give, all of which have to be known.
bool HasKnownColours(Facts const& facts) {
  uint32_t const channels = facts.columns != 0 ? facts.columns : facts.components;
  if (facts.transparent || facts.colour_boxes == 0) return false;
  int const components = ComponentsOf(facts);
  return components != 0 && static_cast<uint32_t>(components) == channels;
}

bool HasSize(Facts const& facts) {
  constexpr uint32_t kMost = std::numeric_limits<int32_t>::max();
  return facts.width >= 1 && facts.height >= 1 && facts.width <= kMost && facts.height <= kMost;
}

StoredImage ImageOf(std::span<BYTE const> file, Facts const& facts) {
  StoredImage image;
  image.bytes = file;
  image.width = static_cast<int>(facts.width);
  image.height = static_cast<int>(facts.height);
  image.form.filter = ImageFilter::kJpeg2000;
  image.form.colours = ImageColours::kInData;
  image.dpi = facts.capture == Resolution{} ? facts.display : facts.capture;
  return image;
}

void PutLong(std::vector<BYTE>& bytes, uint64_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<BYTE>(value >> shift));
}

void PutBoxHeader(std::vector<BYTE>& bytes, uint64_t length, char const* type) {
  PutLong(bytes, length);
  bytes.insert(bytes.end(), type, type + 4);
}

// The boxes before the codestream, whose components have the same bits.
std::vector<BYTE> BoxesFor(Facts const& facts, BYTE bits, uint64_t stream_bytes) {
  constexpr uint64_t kHeaderBox = kBoxHeaderBytes + kImageHeaderBytes;
  constexpr uint64_t kColourBox = kBoxHeaderBytes + 7;
  std::vector<BYTE> bytes(std::begin(kSignatureBox), std::end(kSignatureBox));
  bytes.insert(bytes.end(), std::begin(kTypeBox), std::end(kTypeBox));
  PutBoxHeader(bytes, kBoxHeaderBytes + kHeaderBox + kColourBox, "jp2h");
  PutBoxHeader(bytes, kHeaderBox, "ihdr");
  PutLong(bytes, facts.height);
  PutLong(bytes, facts.width);
  BYTE const components = static_cast<BYTE>(facts.components);
  for (BYTE const byte : {BYTE{0}, components, bits, kWaveletCoding, BYTE{0}, BYTE{0}}) {
    bytes.push_back(byte);
  }
  PutBoxHeader(bytes, kColourBox, "colr");
  for (BYTE const byte : {BYTE{kEnumerated}, BYTE{0}, BYTE{0}}) bytes.push_back(byte);
  PutLong(bytes, facts.components == 1 ? kGrey : kSrgb);
  PutBoxHeader(bytes, kBoxHeaderBytes + stream_bytes, "jp2c");
  return bytes;
}

// One or three components of equal bits and steps of 1.
std::optional<StoredImage> Boxed(std::span<BYTE const> stream) {
  Contents const size(stream);
  Facts facts;
  facts.width = size.Long(8) - size.Long(16);
  facts.height = size.Long(12) - size.Long(20);
  facts.components = size.Short(40);
  bool const fits = stream.size() > kSizeMarkerBytes && HasSize(facts) &&
                    (facts.components == 1 || facts.components == 3) &&
                    stream.size() < std::numeric_limits<uint32_t>::max() - kBoxHeaderBytes;
  if (!fits) return std::nullopt;
  uint32_t const bits = size.Byte(kSizeMarkerBytes);
  for (size_t i = 0; i < facts.components; ++i) {
    size_t const at = kSizeMarkerBytes + 3 * i;
    if (size.Byte(at) != bits || size.Short(at + 1) != 0x0101) return std::nullopt;
  }
  auto const file =
      std::make_shared<std::vector<BYTE>>(BoxesFor(facts, static_cast<BYTE>(bits), stream.size()));
  file->insert(file->end(), stream.begin(), stream.end());
  StoredImage image = ImageOf(*file, facts);
  image.owner = file;
  return image;
}

template <size_t kBytes>
bool StartsWith(std::span<BYTE const> file, BYTE const (&start)[kBytes]) {
  return file.size() >= kBytes && std::memcmp(file.data(), start, kBytes) == 0;
}

}  // namespace

std::optional<StoredImage> StoredJp2(std::span<BYTE const> file) {
  if (StartsWith(file, kStartOfCodestream)) return Boxed(file);
  if (!StartsWith(file, kSignatureBox)) return std::nullopt;
  auto const facts = ReadBoxes(file);
  bool const known =
      facts && facts->has_data && facts->wavelet && HasSize(*facts) && HasKnownColours(*facts);
  if (!known) return std::nullopt;
  return ImageOf(file, *facts);
}

std::optional<int> Jp2Colours(std::span<BYTE const> start) {
  if (!StartsWith(start, kSignatureBox)) return std::nullopt;
  auto rest = start.subspan(sizeof kSignatureBox);
  while (auto const box = TakeBox(rest)) {
    if (box->type != "jp2h") continue;
    Facts facts;
    if (!ReadHeader(box->contents.From(0), facts) || facts.colour_boxes == 0) return std::nullopt;
    return ComponentsOf(facts);
  }
  return std::nullopt;
}

}  // namespace sorrelin::tool
