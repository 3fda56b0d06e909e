// BMP files read by hand: the image library takes the fourth byte of 32 bits for a colour, and does
// not know bit masks and run lengths.
#include "tools/formats/bmp_file.h"

#include <sorrelin/platform/row_stride.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <string>
#include <utility>

#include "tools/formats/picture/pix_rows.h"

namespace sorrelin::tool {
namespace {

constexpr double kMetresPerInch = 0.0254;
constexpr size_t kInfoAt = 14;          // after the file's header
constexpr DWORD kCoreHeaderBytes = 12;  // the oldest header, with sizes of 16 bits
constexpr DWORD kInfoHeaderBytes = 40;
constexpr DWORD kAlphaHeaderBytes = 56;                  // the first header with an alpha mask
constexpr size_t kMasksAt = kInfoAt + kInfoHeaderBytes;  // in or after the header
constexpr size_t kMaskBytes = 4;
// The last header ends with the kind of its colours, and the place and size of a profile.
constexpr DWORD kProfileHeaderBytes = 124;
constexpr size_t kColourKindAt = kInfoAt + 56;
constexpr size_t kProfilePlaceAt = kInfoAt + 112;  // in bytes from the start of the header
constexpr size_t kProfileSizeAt = kInfoAt + 116;
constexpr DWORD kProfileInside = 0x4D424544;  // "MBED"
constexpr DWORD kProfileLinked = 0x4C494E4B;  // "LINK"
constexpr size_t kAlpha = 3;                  // of the masks: red, green, blue, alpha

enum Coding : DWORD { kPlain = 0, kRuns8 = 1, kRuns4 = 2, kMasked = 3, kMaskedWithAlpha = 6 };

// Numbers of the file; what is outside reads as 0.
class Numbers {
 public:
  explicit Numbers(std::span<BYTE const> file) : file_(file) {}

  DWORD Byte(size_t at) const { return at < file_.size() ? file_[at] : 0u; }
  DWORD Word(size_t at) const { return Byte(at) | Byte(at + 1) << 8; }
  DWORD Dword(size_t at) const { return Word(at) | Word(at + 2) << 16; }

 private:
  std::span<BYTE const> file_;
};

struct Header {
  DWORD bytes = 0;
  int64_t width = 0;
  int64_t height = 0;  // rows
  bool from_top = false;
  DWORD bits = 0;
  DWORD coding = kPlain;
  DWORD colours = 0;  // 0: all that the depth has
  Resolution dpi;
  size_t rows_at = 0;
};

int Dots(DWORD per_metre) { return WholeDots(static_cast<int32_t>(per_metre) * kMetresPerInch); }

Header ReadHeader(Numbers const& file) {
  Header header;
  header.rows_at = file.Dword(10);
  header.bytes = file.Dword(kInfoAt);
  if (header.bytes == kCoreHeaderBytes) {
    header.width = file.Word(18);
    header.height = file.Word(20);
    header.bits = file.Word(24);
    return header;
  }
  header.width = static_cast<int32_t>(file.Dword(18));
  int64_t const height = static_cast<int32_t>(file.Dword(22));
  header.from_top = height < 0;
  header.height = height < 0 ? -height : height;
  header.bits = file.Word(28);
  header.coding = file.Dword(30);
  header.dpi = {Dots(file.Dword(38)), Dots(file.Dword(42))};
  header.colours = file.Dword(46);
  return header;
}

bool IsKnown(Header const& header) {
  bool const sized = header.width > 0 && header.height > 0 && header.height <= INT32_MAX;
  if (!sized || (header.bytes != kCoreHeaderBytes && header.bytes < kInfoHeaderBytes)) return false;
  DWORD const bits = header.bits;
  switch (header.coding) {
    case kPlain:
      return bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
    case kRuns8:
      return bits == 8 && !header.from_top;
    case kRuns4:
      return bits == 4 && !header.from_top;
    default:
      return (header.coding == kMasked || header.coding == kMaskedWithAlpha) &&
             (bits == 16 || bits == 32);
  }
}

// One colour's place in a pixel.
class Mask {
 public:
  Mask() = default;
  explicit Mask(DWORD bits) : bits_(bits), shift_(bits == 0 ? 0 : std::countr_zero(bits)) {}

  bool IsDeep() const { return bits_ >> shift_ > 255; }

  BYTE ToneOf(DWORD pixel) const {
    DWORD const value = (pixel & bits_) >> shift_;
    uint64_t const top = bits_ >> shift_;
    if (top == 255 || top == 0) return static_cast<BYTE>(value);
    return static_cast<BYTE>((value * uint64_t{255} + top / 2) / top);
  }

 private:
  DWORD bits_ = 0;
  int shift_ = 0;
};

using Masks = std::array<Mask, 4>;

Masks MasksOf(Numbers const& file, Header const& header) {
  if (header.coding == kPlain && header.bits == 16) {
    return {Mask(0x7C00), Mask(0x03E0), Mask(0x001F), Mask()};
  }
  if (header.coding == kPlain) return {Mask(0xFF0000), Mask(0x00FF00), Mask(0x0000FF), Mask()};
  Masks masks;
  for (size_t i = 0; i < masks.size(); ++i) masks[i] = Mask(file.Dword(kMasksAt + i * kMaskBytes));
  bool const alpha = header.coding == kMaskedWithAlpha || header.bytes >= kAlphaHeaderBytes;
  if (!alpha) masks[kAlpha] = Mask();
  return masks;
}

l_uint32* LineOf(Pix* pix, int64_t y) {
  return pixGetData(pix) + static_cast<ptrdiff_t>(y) * static_cast<ptrdiff_t>(pixGetWpl(pix));
}

// Every index has a colour: what the file leaves out is black.
PixColormap* MapOf(Numbers const& file, Header const& header) {
  PixColormap* const map = pixcmapCreate(static_cast<int>(header.bits));
  if (map == nullptr) return nullptr;
  size_t const entry_bytes = header.bytes == kCoreHeaderBytes ? 3 : 4;
  size_t const entries = size_t{1} << header.bits;
  size_t const stored = header.colours == 0 ? entries : header.colours;
  for (size_t i = 0; i < entries; ++i) {
    size_t const at = kInfoAt + header.bytes + i * entry_bytes;
    bool const known = i < stored && at + entry_bytes <= header.rows_at;
    auto const tone = [&](size_t s) { return known ? static_cast<int>(file.Byte(at + s)) : 0; };
    pixcmapAddColor(map, tone(2), tone(1), tone(0));
  }
  return map;
}

// Returns whether any pixel is not fully transparent.
bool StoreColours(std::span<BYTE const> row, Header const& header, Masks const& masks,
                  l_uint32* line) {
  Numbers const numbers(row);
  size_t const pixel_bytes = header.bits / 8;
  DWORD const used = pixel_bytes == 4 ? ~DWORD{0} : (DWORD{1} << header.bits) - 1;
  bool shown = false;
  for (size_t x = 0; x < static_cast<size_t>(header.width); ++x) {
    DWORD const pixel = numbers.Dword(x * pixel_bytes) & used;
    BYTE const alpha = masks[kAlpha].ToneOf(pixel);
    composeRGBPixel(masks[0].ToneOf(pixel), masks[1].ToneOf(pixel), masks[2].ToneOf(pixel),
                    line + x);
    line[x] |= l_uint32{alpha} << L_ALPHA_SHIFT;
    shown = shown || alpha != 0;
  }
  return shown;
}

// The rows as they are stored, as far as the file has them. Returns what is wrong with them.
std::string ReadRows(std::span<BYTE const> file, Header const& header, Pix* pix) {
  uint64_t const row_bytes = (static_cast<uint64_t>(header.width) * header.bits + 7) / 8;
  uint64_t const stride = RowStride(row_bytes, 8);
  Masks const masks = MasksOf(Numbers(file), header);
  bool shown = false;
  std::string damage;
  for (int64_t i = 0; i < header.height; ++i) {
    uint64_t const at = header.rows_at + stride * static_cast<uint64_t>(i);
    if (at + row_bytes > file.size()) {
      damage =
          "the data end in row " + std::to_string(i + 1) + " of " + std::to_string(header.height);
      break;
    }
    auto const row = file.subspan(static_cast<size_t>(at), static_cast<size_t>(row_bytes));
    l_uint32* const line = LineOf(pix, header.from_top ? i : header.height - 1 - i);
    if (header.bits <= 8)
      UnpackWords(row, line);
    else
      shown |= StoreColours(row, header, masks, line);
  }
  // Writers that name the mask and leave its bits at 0 mean an opaque picture.
  if (shown) pixSetSpp(pix, 4);
  return damage;
}

// Takes runs apart; pixels that no run reaches keep the index 0.
class RunReader {
 public:
  RunReader(std::span<BYTE const> file, Header const& header, Pix* pix)
      : file_(file), header_(header), pix_(pix), at_(header.rows_at) {}

  // Returns what is wrong with the data; empty: nothing.
  std::string Read() {
    while (y_ < header_.height) {
      if (at_ >= file_.size() || file_.size() - at_ < 2) {
        if (!IsWhole()) return "the data end before the picture does";
        break;
      }
      BYTE const count = file_[at_];
      BYTE const code = file_[at_ + 1];
      at_ += 2;
      if (count > 0)
        Put(count, [code](size_t) { return code; });
      else if (code == kEnd)
        break;
      else
        Escape(code);
    }
    return out_of_row_ ? "runs go on after the end of their row" : "";
  }

 private:
  static constexpr BYTE kEndOfRow = 0;
  static constexpr BYTE kEnd = 1;
  static constexpr BYTE kSkip = 2;

  bool IsWhole() const { return y_ == header_.height - 1 && x_ >= header_.width; }

  void Escape(BYTE code) {
    Numbers const numbers(file_);
    if (code == kEndOfRow) {
      x_ = 0;
      ++y_;
    } else if (code == kSkip) {
      x_ += numbers.Byte(at_);
      y_ += numbers.Byte(at_ + 1);
      at_ += 2;
    } else {
      size_t const bytes = header_.bits == 8 ? code : (code + 1u) / 2;
      size_t const from = at_;
      Put(code, [&](size_t i) { return static_cast<BYTE>(numbers.Byte(from + i)); });
      at_ += (bytes + 1) / 2 * 2;
    }
  }

  // `byte_at` gives the bytes that hold the indices.
  template <typename ByteAt>
  void Put(size_t count, ByteAt byte_at) {
    l_uint32* const line = LineOf(pix_, header_.height - 1 - y_);
    for (size_t i = 0; i < count; ++i, ++x_) {
      if (x_ >= header_.width) {
        out_of_row_ = true;
        continue;
      }
      if (header_.bits == 8) {
        SET_DATA_BYTE(line, x_, byte_at(i));
      } else {
        SET_DATA_QBIT(line, x_, i % 2 == 0 ? byte_at(i / 2) >> 4 : byte_at(i / 2) & 0xF);
      }
    }
  }

  std::span<BYTE const> file_;
  Header const& header_;
  Pix* pix_;
  size_t at_;
  int64_t x_ = 0;
  int64_t y_ = 0;  // from the lowest row
  bool out_of_row_ = false;
};

bool HasDeepColours(Numbers const& file, Header const& header) {
  auto const masks = MasksOf(file, header);
  return header.bits > 8 &&
         std::any_of(masks.begin(), masks.end(), [](Mask const& mask) { return mask.IsDeep(); });
}

void ReadProfile(std::span<BYTE const> file, Header const& header, Picture& picture) {
  Numbers const numbers(file);
  DWORD const kind = numbers.Dword(kColourKindAt);
  bool const inside = kind == kProfileInside;
  if (header.bytes < kProfileHeaderBytes || (!inside && kind != kProfileLinked)) return;
  size_t const at = kInfoAt + numbers.Dword(kProfilePlaceAt);
  size_t const bytes = numbers.Dword(kProfileSizeAt);
  if (inside && at <= file.size() && bytes <= file.size() - at) {
    picture.profile = UsableProfile(file.subspan(at, bytes), 3);
  }
  if (picture.profile == nullptr) picture.changes.Add(Change::kProfile);
}

}  // namespace

std::optional<Picture> DecodeBmp(std::span<BYTE const> file) {
  Numbers const numbers(file);
  Header const header = ReadHeader(numbers);
  if (!IsKnown(header)) return std::nullopt;
  int const depth = header.bits > 8 ? 32 : static_cast<int>(header.bits);
  PixPtr pix(pixCreate(static_cast<int>(header.width), static_cast<int>(header.height), depth));
  if (pix == nullptr) return std::nullopt;
  bool const runs = header.coding == kRuns8 || header.coding == kRuns4;
  std::string damage =
      runs ? RunReader(file, header, pix.get()).Read() : ReadRows(file, header, pix.get());
  if (depth <= 8) {
    PixColormap* const map = MapOf(numbers, header);
    if (map == nullptr || pixSetColormap(pix.get(), map) != 0) return std::nullopt;
  }
  Picture picture;
  picture.damage = std::move(damage);
  picture.dpi = header.dpi;
  if (HasDeepColours(numbers, header)) picture.changes.Add(Change::kDepth);
  if (BlendOnWhite(pix.get(), false)) picture.changes.Add(Change::kTransparency);
  ReadProfile(file, header, picture);
  picture.pix = std::move(pix);
  return picture;
}

}  // namespace sorrelin::tool
