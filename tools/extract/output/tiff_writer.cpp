// TIFF files (TIFF 6.0): header (8 bytes), the strip, values that do not fit their entries, and the
// directory last, whose offset is put into the header then.
#include "tools/extract/output/tiff_writer.h"

#include <siblings/cadwick/group4.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <optional>

#include "tools/extract/output/format_writers.h"

namespace sorrelin::tool {
namespace {

constexpr uint64_t kHeaderBytes = 8;
constexpr uint64_t kMaxFileBytes = 0xFFFFFFFF;
constexpr int kDeflateLevel = 3;
constexpr int kDeflated = 8;
constexpr int kGroup4 = 4;

enum Type : uint16_t { kShort = 3, kLong = 4, kRational = 5, kUndefined = 7 };

template <typename Number>
void Append(std::vector<BYTE>& bytes, Number number) {
  BYTE raw[sizeof number];
  std::memcpy(raw, &number, sizeof number);
  bytes.insert(bytes.end(), raw, raw + sizeof number);
}

// The directory, and the values that it refers to, at their place in the file.
class Directory {
 public:
  explicit Directory(uint64_t place) : place_(place) {}

  // Tags come in ascending order, as the format wants them.
  void Add(uint16_t tag, Type type, std::vector<BYTE> const& values, uint32_t count) {
    Append<uint16_t>(entries_, tag);
    Append<uint16_t>(entries_, type);
    Append(entries_, count);
    std::vector<BYTE> field = values;
    if (values.size() > 4) {
      field.clear();
      Append(field, static_cast<uint32_t>(place_ + values_.size()));
      values_.insert(values_.end(), values.begin(), values.end());
      values_.resize((values_.size() + 1) / 2 * 2);
    }
    field.resize(4);
    entries_.insert(entries_.end(), field.begin(), field.end());
    ++count_;
  }

  void AddShorts(uint16_t tag, std::vector<uint16_t> const& numbers) {
    std::vector<BYTE> bytes;
    for (uint16_t const number : numbers) Append(bytes, number);
    Add(tag, kShort, bytes, static_cast<uint32_t>(numbers.size()));
  }

  void AddLong(uint16_t tag, uint64_t number) {
    std::vector<BYTE> bytes;
    Append(bytes, static_cast<uint32_t>(number));
    Add(tag, kLong, bytes, 1);
  }

  void AddRational(uint16_t tag, int number) {
    std::vector<BYTE> bytes;
    Append(bytes, static_cast<uint32_t>(number));
    Append<uint32_t>(bytes, 1);
    Add(tag, kRational, bytes, 1);
  }

  // The offset of the directory itself.
  uint64_t Place() const { return place_ + values_.size(); }

  std::vector<BYTE> Bytes() const {
    std::vector<BYTE> bytes = values_;
    Append<uint16_t>(bytes, count_);
    bytes.insert(bytes.end(), entries_.begin(), entries_.end());
    Append<uint32_t>(bytes, 0);
    return bytes;
  }

 private:
  uint64_t place_;
  uint16_t count_ = 0;
  std::vector<BYTE> entries_;
  std::vector<BYTE> values_;
};

struct Samples {
  uint16_t count;
  uint16_t bits;
};

Samples SamplesOf(int depth) {
  if (depth <= 16) return {1, static_cast<uint16_t>(depth)};
  uint16_t const count = depth % 32 == 0 ? 4 : 3;
  return {count, static_cast<uint16_t>(depth / count)};
}

void AddPalette(Directory& directory, PictureForm const& form) {
  size_t const entries = size_t{1} << form.depth;
  std::vector<uint16_t> values(3 * entries);
  for (size_t i = 0; i < std::min(entries, form.palette.size()); ++i) {
    RGBQUAD const& colour = form.palette[i];
    BYTE const channels[] = {colour.rgbRed, colour.rgbGreen, colour.rgbBlue};
    for (size_t c = 0; c < 3; ++c)
      values[c * entries + i] = static_cast<uint16_t>(channels[c] * 257);
  }
  directory.AddShorts(320, values);
}

// Ends a file whose strip has `strip_bytes` after the header.
bool WriteDirectory(PictureForm const& form, TiffCoding const& coding, uint64_t strip_bytes,
                    ByteOutput& output) {
  if (output.end() + form.profile.size() > kMaxFileBytes - 65536) return false;
  if (output.end() % 2 != 0) output.Write(std::array<BYTE, 1>{});
  Directory directory(output.end());
  Samples const samples = SamplesOf(form.depth);
  directory.AddLong(256, form.width);
  directory.AddLong(257, form.height);
  directory.AddShorts(258, std::vector<uint16_t>(samples.count, samples.bits));
  directory.AddShorts(259, {static_cast<uint16_t>(coding.compression)});
  directory.AddShorts(262, {static_cast<uint16_t>(coding.photometric)});
  directory.AddShorts(266, {1});  // the highest bit is the first
  directory.AddLong(273, kHeaderBytes);
  if (coding.orientation != kUpright) {
    directory.AddShorts(274, {static_cast<uint16_t>(coding.orientation)});
  }
  directory.AddShorts(277, {samples.count});
  directory.AddLong(278, form.height);
  directory.AddLong(279, strip_bytes);
  if (form.dpi.x > 0 && form.dpi.y > 0) {
    directory.AddRational(282, form.dpi.x);
    directory.AddRational(283, form.dpi.y);
  }
  directory.AddShorts(284, {1});  // samples side by side
  if (coding.fax_options >= 0) directory.AddLong(292, static_cast<uint64_t>(coding.fax_options));
  if (coding.compression == kGroup4) directory.AddLong(293, 0);
  directory.AddShorts(296, {2});  // inches
  if (!form.palette.empty()) AddPalette(directory, form);
  if (form.HasOpacity()) directory.AddShorts(338, {2});
  if (!form.profile.empty()) {
    directory.Add(34675, kUndefined, {form.profile.begin(), form.profile.end()},
                  static_cast<uint32_t>(form.profile.size()));
  }
  std::vector<BYTE> place;
  Append(place, static_cast<uint32_t>(directory.Place()));
  return output.Write(directory.Bytes()) && output.WriteAt(4, place);
}

bool WriteHeader(ByteOutput& output) {
  std::vector<BYTE> header;
  bool const little = std::endian::native == std::endian::little;
  Append<uint16_t>(header, little ? 0x4949 : 0x4D4D);
  Append<uint16_t>(header, 42);
  Append<uint32_t>(header, 0);
  return output.Write(header);
}

class OutputSink final : public cadwick::ByteSink {
 public:
  explicit OutputSink(ByteOutput& output) : output_(output) {}
  bool Write(std::span<BYTE const> bytes) override { return output_.Write(bytes); }

 private:
  ByteOutput& output_;
};

// Deflates bytes on their way.
class Deflater {
 public:
  explicit Deflater(ByteOutput& output) : output_(output) {
    is_written_ = deflateInit(&stream_, kDeflateLevel) == Z_OK;
  }
  ~Deflater() { deflateEnd(&stream_); }
  Deflater(Deflater const&) = delete;
  Deflater& operator=(Deflater const&) = delete;

  bool Write(std::span<BYTE const> bytes, int flush = Z_NO_FLUSH) {
    stream_.next_in = const_cast<Bytef*>(bytes.data());
    stream_.avail_in = static_cast<uInt>(bytes.size());
    do {
      stream_.next_out = block_.data();
      stream_.avail_out = static_cast<uInt>(block_.size());
      int const result = deflate(&stream_, flush);
      size_t const size = block_.size() - stream_.avail_out;
      is_written_ =
          is_written_ && result != Z_STREAM_ERROR && output_.Write(std::span(block_).first(size));
    } while (is_written_ && stream_.avail_out == 0);
    return is_written_;
  }

 private:
  ByteOutput& output_;
  z_stream stream_{};
  std::array<BYTE, 65536> block_;
  bool is_written_;
};

class TiffWriter : public PictureWriter {
 public:
  explicit TiffWriter(ByteOutput& output) : output_(output), sink_(output) {}

  bool Begin(PictureForm const& form) override {
    form_ = form;
    rows_ = 0;
    if (!WriteHeader(output_)) return false;
    bool const fax =
        form.depth == 1 && form.palette.empty() && cadwick::ValidPicture(form.width, form.height);
    if (fax) {
      group4_.emplace(cadwick::Picture{form.width, form.height}, sink_);
    } else {
      deflater_.emplace(output_);
    }
    return true;
  }

  bool Row(std::span<BYTE const> row) override {
    ++rows_;
    if (group4_) {
      std::copy(row.begin(), row.end(), group4_->Row().begin());
      return is_written_ = is_written_ && group4_->Encode();
    }
    return is_written_ = is_written_ && deflater_->Write(Native(row));
  }

  bool TakesProfile() const override { return true; }

  bool Finish() override {
    if (!is_written_ || rows_ != form_.height) return false;
    bool const ended = group4_ ? group4_->Finish() : deflater_->Write({}, Z_FINISH);
    uint64_t const strip_bytes = output_.end() - kHeaderBytes;
    return ended && WriteDirectory(form_, Coding(), strip_bytes, output_);
  }

 private:
  TiffCoding Coding() const {
    if (group4_) return {kGroup4, 0, -1, kUpright};
    int const photometric = form_.depth > 16 ? 2 : !form_.palette.empty() ? 3 : form_.depth != 1;
    return {kDeflated, photometric, -1, kUpright};
  }

  // Samples of 16 bits in this machine's byte order.
  std::span<BYTE const> Native(std::span<BYTE const> row) {
    if (SamplesOf(form_.depth).bits != 16 || std::endian::native == std::endian::big) return row;
    row_.assign(row.begin(), row.end());
    for (size_t i = 0; i + 1 < row_.size(); i += 2) std::swap(row_[i], row_[i + 1]);
    return row_;
  }

  ByteOutput& output_;
  OutputSink sink_;
  PictureForm form_;
  std::optional<cadwick::Group4Encoder> group4_;
  std::optional<Deflater> deflater_;
  std::vector<BYTE> row_;
  DWORD rows_ = 0;
  bool is_written_ = true;
};

}  // namespace

bool WriteStripTiff(PictureForm const& form, TiffCoding const& coding, std::span<BYTE const> strip,
                    ByteOutput& output) {
  return WriteHeader(output) && output.Write(strip) &&
         WriteDirectory(form, coding, strip.size(), output);
}

std::unique_ptr<PictureWriter> MakeTiffWriter(ByteOutput& output) {
  return std::make_unique<TiffWriter>(output);
}

}  // namespace sorrelin::tool
