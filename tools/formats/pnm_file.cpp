// A PNM picture is a header of text, in which # starts a comment, and samples:
//
//   P1, P4   "P1 width height ", bits of which 1 is black; raw rows are padded to bytes
//   P2, P5   "P2 width height maxval ", greys from 0 to maxval
//   P3, P6   "P3 width height maxval ", red, green, blue
//   P7       lines of a name and a value up to ENDHDR; WIDTH, HEIGHT, DEPTH (samples of a pixel),
//            MAXVAL, TUPLTYPE
//
// Raw samples take a byte, or two with the high byte first where maxval is above 255.
#include "tools/formats/pnm_file.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <utility>

#include "tools/formats/picture/blend.h"
#include "tools/formats/picture/pix_rows.h"

namespace sorrelin::tool {
namespace {

constexpr int kMaxMaxval = 65535;
constexpr size_t kMaxHeaderLine = 1000;
constexpr char kBadHeader[] = "is damaged: its PNM header cannot be read (save it again)";

bool IsBlank(int c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

struct Header {
  char kind = '4';  // the digit after P
  int64_t width = 0;
  int64_t height = 0;
  int maxval = 1;
  int samples = 1;       // of a pixel
  bool alpha = false;    // the last sample is opacity
  bool inks = false;     // cyan, magenta, yellow, black; 0 is none
  bool bilevel = false;  // one bit a sample in the file

  bool IsPlain() const { return kind <= '3'; }
  // Whether a pix cannot hold all that the samples say.
  bool IsDeep() const { return maxval > 255 || alpha || inks; }
  bool IsValid() const {
    constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
    return width >= 1 && height >= 1 && width <= kMost && height <= kMost && maxval >= 1 &&
           maxval <= kMaxMaxval && samples >= 1 && samples <= 4;
  }
  size_t SampleBytes() const { return maxval > 255 ? 2 : 1; }
  uint64_t RowSamples() const {
    return static_cast<uint64_t>(width) * static_cast<uint64_t>(samples);
  }
  // Of raw data. In 64 bits: a header may state any size.
  uint64_t RowBytes() const {
    return bilevel ? (static_cast<uint64_t>(width) + 7) / 8 : RowSamples() * SampleBytes();
  }
};

// Reads text, without comments.
class Text {
 public:
  explicit Text(ByteStream& stream) : stream_(stream) {}

  int Get() {
    int c = stream_.Get();
    if (c != '#') return c;
    while (c != '\n' && c != '\r' && c != -1) c = stream_.Get();
    return c;
  }

  // A number after any blanks, with the one character that follows it; -1 if there is none.
  int64_t Number() {
    int c = Get();
    while (IsBlank(c)) c = Get();
    if (c < '0' || c > '9') return -1;
    int64_t value = 0;
    for (; c >= '0' && c <= '9'; c = Get()) {
      if (value < std::numeric_limits<int32_t>::max()) value = value * 10 + (c - '0');
    }
    return IsBlank(c) || c == -1 ? value : -1;
  }

  // One digit of a plain bitmap: 0, 1, or -1.
  int Bit() {
    int c = Get();
    while (IsBlank(c)) c = Get();
    return c == '0' || c == '1' ? c - '0' : -1;
  }

  // A line of a PAM header, without its end.
  std::string Line() {
    std::string line;
    for (int c = stream_.Get(); c != '\n' && c != -1 && line.size() < kMaxHeaderLine;
         c = stream_.Get()) {
      line += static_cast<char>(c);
    }
    return line;
  }

 private:
  ByteStream& stream_;
};

int NumberOf(std::string_view text) {
  int value = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc{} && end == text.data() + text.size() ? value : -1;
}

std::optional<Header> ReadPamHeader(Text& text) {
  Header header;
  header.kind = '7';
  header.samples = 0;
  std::string type;
  for (int lines = 0; lines < 100; ++lines) {
    std::string const line = text.Line();
    if (line.empty() || line[0] == '#') continue;
    size_t const blank = std::min(line.find(' '), line.size());
    std::string_view const name = std::string_view(line).substr(0, blank);
    std::string_view const value = std::string_view(line).substr(std::min(blank + 1, line.size()));
    if (name == "WIDTH") header.width = NumberOf(value);
    if (name == "HEIGHT") header.height = NumberOf(value);
    if (name == "DEPTH") header.samples = NumberOf(value);
    if (name == "MAXVAL") header.maxval = NumberOf(value);
    if (name == "TUPLTYPE") type = value;
    if (name != "ENDHDR") continue;
    header.alpha = header.samples == 2 || (header.samples == 4 && type.ends_with("_ALPHA"));
    header.inks = header.samples == 4 && type == "CMYK";
    bool const known = header.samples != 4 || header.alpha || header.inks;
    return header.IsValid() && known ? std::optional(header) : std::nullopt;
  }
  return std::nullopt;
}

std::optional<Header> ReadHeader(ByteStream& stream) {
  Header header;
  stream.Get();
  header.kind = static_cast<char>(stream.Get());
  Text text(stream);
  if (header.kind == '7') return ReadPamHeader(text);
  header.bilevel = header.kind == '1' || header.kind == '4';
  header.samples = header.kind == '3' || header.kind == '6' ? 3 : 1;
  header.width = text.Number();
  header.height = text.Number();
  if (!header.bilevel) header.maxval = static_cast<int>(text.Number());
  return header.IsValid() ? std::optional(header) : std::nullopt;
}

// Plain samples as raw ones. They end where the text does not go on as samples.
std::vector<BYTE> TakePlain(ByteStream& stream, Header const& header, bool& out_of_range) {
  std::vector<BYTE> bytes;
  Text text(stream);
  uint64_t const rows = static_cast<uint64_t>(header.height);
  for (uint64_t y = 0; y < rows; ++y) {
    for (uint64_t x = 0; x < header.RowSamples(); ++x) {
      int64_t const value = header.bilevel ? text.Bit() : text.Number();
      if (value < 0) return bytes;
      if (header.bilevel) {
        if (x % 8 == 0) bytes.push_back(0);
        bytes.back() = static_cast<BYTE>(bytes.back() | value << (7 - x % 8));
        continue;
      }
      out_of_range |= value > header.maxval;
      int64_t const sample = std::min<int64_t>(value, header.maxval);
      if (header.SampleBytes() == 2) bytes.push_back(static_cast<BYTE>(sample >> 8));
      bytes.push_back(static_cast<BYTE>(sample & 0xFF));
    }
  }
  return bytes;
}

std::vector<BYTE> TakeRaw(ByteStream& stream, Header const& header) {
  uint64_t const rows = static_cast<uint64_t>(header.height);
  if (header.RowBytes() > std::numeric_limits<size_t>::max() / rows) return stream.TakeRest();
  return stream.Take(static_cast<size_t>(header.RowBytes() * rows));
}

// The samples of one row, 16 bits each and scaled to 65535; those of bitmaps are 0 for black.
class RowReader {
 public:
  RowReader(Header const& header, std::span<BYTE const> bytes) : header_(header), bytes_(bytes) {}

  // False if the row is not whole.
  bool Read(uint64_t y, std::vector<uint16_t>& row) {
    uint64_t const at = y * header_.RowBytes();
    if (at + header_.RowBytes() > bytes_.size()) return false;
    auto const source = bytes_.subspan(static_cast<size_t>(at));
    if (header_.maxval == 255) {
      for (size_t i = 0; i < row.size(); ++i) row[i] = static_cast<uint16_t>(source[i] * 257u);
      return true;
    }
    for (size_t i = 0; i < row.size(); ++i) {
      unsigned const value =
          header_.SampleBytes() == 2 ? unsigned{source[2 * i]} << 8 | source[2 * i + 1] : source[i];
      unsigned const maxval = static_cast<unsigned>(header_.maxval);
      out_of_range_ |= value > maxval;
      row[i] = static_cast<uint16_t>((std::min(value, maxval) * 65535u + maxval / 2) / maxval);
    }
    return true;
  }

  bool out_of_range() const { return out_of_range_; }

 private:
  Header const& header_;
  std::span<BYTE const> bytes_;
  bool out_of_range_ = false;
};

BYTE Byte(uint16_t sample) { return static_cast<BYTE>((sample * 255u + 32767u) / 65535u); }

// One row of a picture of 1 or 8 bits of grey, or 32 of colour.
void StoreRow(std::vector<uint16_t> const& row, int depth, l_uint32* line) {
  size_t const step = depth == 32 ? 3 : 1;
  for (size_t x = 0; x < row.size() / step; ++x) {
    uint16_t const* const pixel = row.data() + x * step;
    if (depth == 1) {
      SET_DATA_BIT_VAL(line, x, pixel[0] == 0 ? 1 : 0);
    } else if (depth == 8) {
      SET_DATA_BYTE(line, x, Byte(pixel[0]));
    } else {
      composeRGBPixel(Byte(pixel[0]), Byte(pixel[1]), Byte(pixel[2]), line + x);
    }
  }
}

l_uint32* LineOf(Pix* pix, uint64_t y) {
  return pixGetData(pix) + static_cast<ptrdiff_t>(y) * static_cast<ptrdiff_t>(pixGetWpl(pix));
}

class PnmSource : public ImageSource {
 public:
  PnmSource(Header const& header, std::vector<BYTE> bytes, bool out_of_range)
      : header_(header), bytes_(std::move(bytes)), out_of_range_(out_of_range) {}

  int PageCount() const override { return 1; }
  std::optional<StoredImage> Stored(int) override { return std::nullopt; }

  std::optional<Picture> Decode(int, std::string& problem) override {
    problem = kMemoryText;
    return header_.IsDeep() ? DecodeSamples() : DecodePix();
  }

 private:
  std::optional<Picture> DecodeSamples() const {
    constexpr uint64_t kMostBytes = uint64_t{1} << 31;
    if (header_.RowBytes() > kMostBytes / Rows()) return std::nullopt;
    Picture picture;
    Samples samples;
    picture.damage = Fill(samples, picture.changes);
    picture.samples = std::move(samples);
    return picture;
  }

  std::optional<Picture> DecodePix() const {
    int const depth = header_.samples == 3 ? 32 : header_.maxval == 1 ? 1 : 8;
    PixPtr pix(pixCreate(static_cast<int>(header_.width), static_cast<int>(header_.height), depth));
    if (pix == nullptr) return std::nullopt;
    Picture picture;
    picture.damage = header_.bilevel ? FillBits(pix.get()) : Fill(pix.get(), depth);
    picture.pix = std::move(pix);
    return picture;
  }

  uint64_t Rows() const { return static_cast<uint64_t>(header_.height); }

  std::string Short(uint64_t row) const {
    return "the data end in row " + std::to_string(row + 1) + " of " +
           std::to_string(header_.height);
  }

  // The picture library, too, takes a set bit for black. Returns what is wrong with the data.
  std::string FillBits(Pix* pix) const {
    uint64_t const row_bytes = header_.RowBytes();
    for (uint64_t y = 0; y < Rows(); ++y) {
      if ((y + 1) * row_bytes > bytes_.size()) return Short(y);
      UnpackWords({bytes_.data() + y * row_bytes, static_cast<size_t>(row_bytes)}, LineOf(pix, y));
    }
    return {};
  }

  // The same.
  std::string Fill(Pix* pix, int depth) const {
    return ReadRows([&](uint64_t y, auto const& row) { StoreRow(row, depth, LineOf(pix, y)); });
  }

  // The same, with all bits, and alpha laid on white.
  std::string Fill(Samples& samples, Changes& changes) const {
    DeepPixels form;
    form.samples = header_.samples;
    form.alpha = header_.alpha ? Alpha::kStraight : Alpha::kNone;
    int const colours = header_.samples - (header_.alpha ? 1 : 0);
    form.colours = header_.inks   ? ImageColours::kCmyk
                   : colours == 3 ? ImageColours::kRgb
                                  : ImageColours::kGrey;
    form.sample_bytes = static_cast<int>(header_.SampleBytes());
    std::vector<BYTE> pixels(static_cast<size_t>(header_.RowSamples() * header_.SampleBytes()));
    int const width = static_cast<int>(header_.width);
    samples = SamplesOf(form, width, 0, {});
    samples.height = static_cast<int>(header_.height);
    return ReadRows([&](uint64_t, std::vector<uint16_t> const& row) {
      for (size_t i = 0; i < row.size() && form.sample_bytes == 1; ++i) pixels[i] = Byte(row[i]);
      if (form.sample_bytes == 2) std::memcpy(pixels.data(), row.data(), pixels.size());
      if (HasTransparency(form, pixels)) changes.Add(Change::kTransparency);
      auto const bytes = SamplesOf(form, width, 1, pixels).bytes;
      samples.bytes.insert(samples.bytes.end(), bytes.begin(), bytes.end());
    });
  }

  // Gives each row to `store`; those that the data lack are white. Returns what is wrong.
  template <typename Store>
  std::string ReadRows(Store store) const {
    RowReader reader(header_, bytes_);
    std::vector<uint16_t> row(static_cast<size_t>(header_.RowSamples()));
    uint16_t const white = header_.inks ? 0 : std::numeric_limits<uint16_t>::max();
    std::string damage;
    for (uint64_t y = 0; y < Rows(); ++y) {
      if (damage.empty() && !reader.Read(y, row)) {
        damage = Short(y);
        std::fill(row.begin(), row.end(), white);
      }
      store(y, row);
    }
    if (damage.empty() && (out_of_range_ || reader.out_of_range()))
      damage = "samples are above its maxval";
    return damage;
  }

  Header header_;
  std::vector<BYTE> bytes_;  // raw samples
  bool out_of_range_;        // plain samples were above maxval
};

}  // namespace

bool IsPnm(std::span<BYTE const> start) {
  return start.size() >= 3 && start[0] == 'P' && start[1] >= '1' && start[1] <= '7' &&
         (IsBlank(start[2]) || start[2] == '#');
}

std::unique_ptr<ImageSource> TakePnm(ByteStream& stream, std::string& problem) {
  auto const header = ReadHeader(stream);
  if (!header) return problem = kBadHeader, nullptr;
  bool out_of_range = false;
  auto bytes =
      header->IsPlain() ? TakePlain(stream, *header, out_of_range) : TakeRaw(stream, *header);
  return std::make_unique<PnmSource>(*header, std::move(bytes), out_of_range);
}

}  // namespace sorrelin::tool
