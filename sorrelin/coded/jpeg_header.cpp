// The markers of a JPEG file: FF, a code, then a length of two bytes that counts itself.
#include <sorrelin/coded/jpeg_header.h>

#include <algorithm>
#include <string_view>

namespace sorrelin::coded {
namespace {

constexpr unsigned kStartOfImage = 0xD8;
constexpr unsigned kStartOfScan = 0xDA;
constexpr unsigned kApp0 = 0xE0;
constexpr size_t kFrameBytes = 8;  // precision, height, width, components, and its length
constexpr size_t kJfifBytes = 14;  // up to the size of the thumbnail, with its length
constexpr double kCentimetresPerInch = 2.54;

// Bytes by their place; those outside are 0.
class Segment {
 public:
  explicit Segment(std::span<BYTE const> bytes) : bytes_(bytes) {}
  unsigned Byte(size_t at) const { return at < bytes_.size() ? bytes_[at] : 0u; }
  unsigned Word(size_t at) const { return Byte(at) << 8 | Byte(at + 1); }
  size_t Size() const { return bytes_.size(); }
  bool HasText(size_t at, std::string_view text) const {
    return at + text.size() <= Size() &&
           std::equal(text.begin(), text.end(), bytes_.begin() + static_cast<ptrdiff_t>(at),
                      [](char c, BYTE byte) { return static_cast<BYTE>(c) == byte; });
  }

 private:
  std::span<BYTE const> bytes_;
};

// Baseline, extended and progressive with Huffman codes, which every viewer reads.
bool IsFrame(unsigned marker) { return marker >= 0xC0 && marker <= 0xC2; }

void ReadResolution(Segment const& segment, JpegHeader& header) {
  using namespace std::literals;
  if (segment.Size() < kJfifBytes || !segment.HasText(2, "JFIF\0"sv)) return;
  unsigned const unit = segment.Byte(9);
  if (unit != 1 && unit != 2) return;
  double const factor = unit == 1 ? 1.0 : kCentimetresPerInch;
  header.dpi_x = static_cast<DWORD>(segment.Word(10) * factor + 0.5);
  header.dpi_y = static_cast<DWORD>(segment.Word(12) * factor + 0.5);
}

// Components named R, G and B, which viewers of documents would take for YCbCr.
bool IsRgb(Segment const& frame) {
  return frame.Byte(8) == 'R' && frame.Byte(11) == 'G' && frame.Byte(14) == 'B';
}

bool ReadFrame(Segment const& segment, JpegHeader& header) {
  if (segment.Size() < kFrameBytes || segment.Byte(2) != 8) return false;
  header.height = static_cast<LONG>(segment.Word(3));
  header.width = static_cast<LONG>(segment.Word(5));
  header.components = static_cast<int>(segment.Byte(7));
  return header.width != 0 && header.height != 0 &&
         (header.components == 1 || (header.components == 3 && !IsRgb(segment)));
}

}  // namespace

std::optional<JpegHeader> ReadJpegHeader(std::span<BYTE const> file) {
  Segment const all(file);
  if (all.Byte(0) != 0xFF || all.Byte(1) != kStartOfImage) return std::nullopt;
  JpegHeader header;
  for (size_t at = 2; at + 4 <= file.size();) {
    unsigned const marker = all.Byte(at + 1);
    if (all.Byte(at) != 0xFF || marker == kStartOfScan) break;
    if (marker == 0xFF) {  // a filler byte
      ++at;
      continue;
    }
    size_t const length = all.Word(at + 2);
    if (length < 2 || at + 2 + length > file.size()) break;
    Segment const segment(file.subspan(at + 2, length));
    if (marker == kApp0) ReadResolution(segment, header);
    if (IsFrame(marker)) {
      if (!ReadFrame(segment, header)) break;
      return header;
    }
    at += 2 + length;
  }
  return std::nullopt;
}

}  // namespace sorrelin::coded
