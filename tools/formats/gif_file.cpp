// GIF files, decoded by hand. A file (GIF89a specification) is
//
//   "GIF89a"  width (2) height (2) flags (1) background (1) aspect (1)  palette  blocks
//   extension  0x21 label (1) pieces
//   picture    0x2C left (2) top (2) width (2) height (2) flags (1) palette, bits of a code (1)
//              pieces
//   end        0x3B
//
// An extension with the label 0xFF starts with its writer's name, and with "ICCRGBG1012" goes on as
// a colour profile (ICC.1, B.4).
//
// Numbers have their low byte first. Pieces are a byte of length and as many bytes, up to a length
// of 0; those of a picture are LZW codes, the lowest bit first.
#include "tools/formats/gif_file.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/formats/image_source.h"

namespace sorrelin::tool {
namespace {

constexpr size_t kHeaderBytes = 13;
constexpr BYTE kExtension = 0x21, kPicture = 0x2C, kEnd = 0x3B, kControl = 0xF9,
               kApplication = 0xFF;
constexpr BYTE kHasPalette = 0x80, kInterlaced = 0x40, kHasTransparency = 0x01;
constexpr std::string_view kProfileName = "ICCRGBG1012";
constexpr int kMaxCodeBits = 12;
constexpr int kNone = -1;

// Reads the file forward. What is outside reads as 0.
class Reader {
 public:
  explicit Reader(std::span<BYTE const> file) : file_(file) {}

  BYTE Byte() { return at_ < file_.size() ? file_[at_++] : (ended_ = true, BYTE{0}); }
  int Word() {
    int const low = Byte();
    return low | Byte() << 8;
  }
  std::span<BYTE const> Bytes(size_t count) {
    ended_ |= count > file_.size() - at_;
    auto const bytes = file_.subspan(at_, std::min(count, file_.size() - at_));
    at_ += bytes.size();
    return bytes;
  }
  std::vector<BYTE> Pieces() {
    std::vector<BYTE> bytes;
    for (BYTE length = Byte(); length != 0; length = Byte()) {
      auto const piece = Bytes(length);
      bytes.insert(bytes.end(), piece.begin(), piece.end());
    }
    return bytes;
  }
  std::span<BYTE const> Rest() const { return file_.subspan(at_); }
  bool ended() const { return ended_; }

 private:
  std::span<BYTE const> file_;
  size_t at_ = 0;
  bool ended_ = false;  // more was asked for than there is
};

// Codes of growing width.
class CodeReader {
 public:
  explicit CodeReader(std::span<BYTE const> data) : data_(data) {}

  // kNone at the end of the data.
  int Next(int bits) {
    while (ready_ < bits) {
      if (at_ == data_.size()) return kNone;
      value_ |= uint32_t{data_[at_++]} << ready_;
      ready_ += 8;
    }
    int const code = static_cast<int>(value_ & ((1u << bits) - 1));
    value_ >>= bits;
    ready_ -= bits;
    return code;
  }
  bool AtEnd() const { return at_ == data_.size(); }

 private:
  std::span<BYTE const> data_;
  size_t at_ = 0;
  uint32_t value_ = 0;
  int ready_ = 0;
};

// Turns LZW codes into `count` indices; returns what is wrong with them.
class Lzw {
 public:
  Lzw(std::span<BYTE const> data, int bits)
      : codes_(data), clear_(1 << bits), first_bits_(bits + 1) {
    for (int i = 0; i < clear_; ++i) last_[static_cast<size_t>(i)] = static_cast<BYTE>(i);
    Clear();
  }

  std::string Decode(size_t count, std::vector<BYTE>& indices) {
    while (indices.size() < count) {
      int const code = codes_.Next(bits_);
      if (code == kNone || code == clear_ + 1) return "the data end before the picture does";
      if (code == clear_) {
        Clear();
      } else if (!Append(code, indices)) {
        return "it has a code without a meaning";
      }
    }
    bool const over = indices.size() > count;
    indices.resize(count);
    return over || !Ends() ? "the data go on after the end of the picture" : "";
  }

 private:
  void Clear() {
    bits_ = first_bits_;
    next_ = clear_ + 2;
    before_ = kNone;
  }

  bool Append(int code, std::vector<BYTE>& indices) {
    bool const is_new = code == next_ && before_ != kNone;
    if (code >= next_ && !is_new) return false;
    if (before_ == kNone && code >= clear_) return false;
    string_.clear();
    for (int at = is_new ? before_ : code;; at = prefix_[static_cast<size_t>(at)]) {
      string_.push_back(last_[static_cast<size_t>(at)]);
      if (at < clear_) break;
    }
    BYTE const first = string_.back();
    indices.insert(indices.end(), string_.rbegin(), string_.rend());
    if (is_new) indices.push_back(first);
    if (before_ != kNone && next_ < 1 << kMaxCodeBits) {
      prefix_[static_cast<size_t>(next_)] = static_cast<int16_t>(before_);
      last_[static_cast<size_t>(next_)] = first;
      if (++next_ == 1 << bits_ && bits_ < kMaxCodeBits) ++bits_;
    }
    before_ = code;
    return true;
  }

  // Whether the data end here; encoders may leave the end code out.
  bool Ends() {
    int code = codes_.Next(bits_);
    if (code == clear_) code = codes_.Next(first_bits_);
    return (code == kNone || code == clear_ + 1) && codes_.AtEnd();
  }

  CodeReader codes_;
  int clear_;       // the code that starts anew; the next one ends the data
  int first_bits_;  // of a code after that
  int bits_ = 0;
  int next_ = 0;              // code of the next string
  int before_ = kNone;        // code of the last string
  std::vector<BYTE> string_;  // backwards
  std::array<int16_t, 1 << kMaxCodeBits> prefix_{};
  std::array<BYTE, 1 << kMaxCodeBits> last_{};
};

struct Frame {
  int width = 0;
  int height = 0;
  bool interlaced = false;
  std::span<BYTE const> palette;  // red, green, blue
  int clear = kNone;              // the transparent index
  int code_bits = 0;
  std::vector<BYTE> data;
};

std::span<BYTE const> TakePalette(Reader& reader, BYTE flags) {
  return (flags & kHasPalette) != 0 ? reader.Bytes(size_t{3} << ((flags & 7) + 1))
                                    : std::span<BYTE const>{};
}

Frame TakeFrame(Reader& reader, std::span<BYTE const> palette, int clear) {
  Frame frame;
  reader.Bytes(4);
  frame.width = reader.Word();
  frame.height = reader.Word();
  BYTE const flags = reader.Byte();
  frame.interlaced = (flags & kInterlaced) != 0;
  auto const own = TakePalette(reader, flags);
  frame.palette = own.empty() ? palette : own;
  frame.clear = clear;
  frame.code_bits = reader.Byte();
  frame.data = reader.Pieces();
  return frame;
}

// Rows of the file in their order on the picture.
std::vector<int> RowOrder(Frame const& frame) {
  std::vector<int> rows;
  constexpr std::array<std::pair<int, int>, 4> kPasses = {{{0, 8}, {4, 8}, {2, 4}, {1, 2}}};
  for (auto const& [first, step] : kPasses) {
    for (int y = first; frame.interlaced && y < frame.height; y += step) rows.push_back(y);
  }
  for (int y = 0; !frame.interlaced && y < frame.height; ++y) rows.push_back(y);
  return rows;
}

PixColormap* MapOf(Frame const& frame, int depth) {
  PixColormap* const map = pixcmapCreate(depth);
  for (size_t i = 0; map != nullptr && i < frame.palette.size() / 3; ++i) {
    BYTE const* const entry = frame.palette.data() + 3 * i;
    int const alpha = static_cast<int>(i) == frame.clear ? 0 : 255;
    pixcmapAddRGBA(map, entry[0], entry[1], entry[2], alpha);
  }
  return map;
}

void SetIndex(l_uint32* line, int depth, int x, BYTE index) {
  if (depth == 1) SET_DATA_BIT_VAL(line, x, index);
  if (depth == 2) SET_DATA_DIBIT(line, x, index);
  if (depth == 4) SET_DATA_QBIT(line, x, index);
  if (depth == 8) SET_DATA_BYTE(line, x, index);
}

std::optional<Picture> DecodeFrame(Frame const& frame) {
  size_t const colours = frame.palette.size() / 3;
  if (frame.width == 0 || frame.height == 0 || colours < 2) return std::nullopt;
  if (frame.code_bits < 1 || frame.code_bits > 8) return std::nullopt;
  int const depth = colours <= 2 ? 1 : colours <= 4 ? 2 : colours <= 16 ? 4 : 8;
  Picture picture;
  picture.pix.reset(pixCreate(frame.width, frame.height, depth));
  PixColormap* const map = MapOf(frame, depth);
  if (picture.pix == nullptr || map == nullptr) return std::nullopt;
  if (pixSetColormap(picture.pix.get(), map) != 0) return std::nullopt;
  size_t const width = static_cast<size_t>(frame.width);
  std::vector<BYTE> indices;
  picture.damage =
      Lzw(frame.data, frame.code_bits).Decode(width * static_cast<size_t>(frame.height), indices);
  size_t at = 0;
  for (int const y : RowOrder(frame)) {
    l_uint32* const line =
        pixGetData(picture.pix.get()) + static_cast<ptrdiff_t>(y) * pixGetWpl(picture.pix.get());
    for (int x = 0; x < frame.width && at < indices.size(); ++x, ++at) {
      bool const known = indices[at] < colours;
      if (!known && picture.damage.empty()) picture.damage = "it has colours outside its palette";
      SetIndex(line, depth, x, known ? indices[at] : BYTE{0});
    }
  }
  bool const clear = std::find(indices.begin(), indices.end(), frame.clear) != indices.end();
  if (clear) picture.changes.Add(Change::kTransparency);
  return picture;
}

// What extensions say of the pictures that follow them.
struct Extensions {
  int clear = kNone;          // the transparent index
  std::vector<BYTE> profile;  // empty: none

  void Take(Reader& reader) {
    BYTE const label = reader.Byte();
    auto const data = reader.Pieces();
    if (label == kControl && data.size() >= 4) {
      clear = (data[0] & kHasTransparency) != 0 ? data[3] : kNone;
    }
    bool const named = data.size() > kProfileName.size() &&
                       std::equal(kProfileName.begin(), kProfileName.end(), data.begin());
    if (label == kApplication && named) {
      profile.assign(data.begin() + kProfileName.size(), data.end());
    }
  }
};

}  // namespace

std::optional<Picture> DecodeGif(std::span<BYTE const> file) {
  Reader reader(file);
  auto const header = reader.Bytes(kHeaderBytes);
  if (header.size() < kHeaderBytes) return std::nullopt;
  auto const palette = TakePalette(reader, header[10]);
  Extensions extensions;
  std::optional<Picture> picture;
  for (BYTE block = reader.Byte(); block != kEnd && !reader.ended(); block = reader.Byte()) {
    if (block == kExtension) {
      extensions.Take(reader);
    } else if (block == kPicture && picture) {
      TakeFrame(reader, palette, kNone);
      picture->changes.Add(Change::kFirstPicture);
    } else if (block == kPicture) {
      picture = DecodeFrame(TakeFrame(reader, palette, extensions.clear));
      if (!picture) return std::nullopt;
    } else {
      break;
    }
  }
  if (!picture) return std::nullopt;
  if (!extensions.profile.empty()) {
    picture->profile = UsableProfile(extensions.profile, 3);
    if (picture->profile == nullptr) picture->changes.Add(Change::kProfile);
  }
  if (picture->damage.empty() && reader.ended()) picture->damage = "its end is missing";
  bool const padded =
      std::all_of(reader.Rest().begin(), reader.Rest().end(), [](BYTE byte) { return byte == 0; });
  if (picture->damage.empty() && !padded) picture->damage = "it goes on after its end";
  return picture;
}

}  // namespace sorrelin::tool
