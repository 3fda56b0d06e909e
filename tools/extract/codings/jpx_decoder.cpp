// JPEG 2000 through OpenJPEG, which decodes whole pictures only.
#include "tools/extract/codings/jpx_decoder.h"

#include <openjpeg.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "tools/formats/jpeg2000/jp2_file.h"

namespace sorrelin::tool {
namespace {

constexpr char kDamaged[] = "its JPEG 2000 data are damaged";
// OpenJPEG takes four bytes a sample, twice, before it looks at the data of a tile.
constexpr uint64_t kMaxSamples = uint64_t{1} << 28;
constexpr uint64_t kFewSamples = uint64_t{1} << 24;
constexpr uint64_t kMaxSamplesPerByte = 4096;

struct Input {
  std::span<BYTE const> data;
  size_t at = 0;
};

OPJ_SIZE_T Give(void* buffer, OPJ_SIZE_T size, void* user) {
  Input& input = *static_cast<Input*>(user);
  size_t const count = std::min<size_t>(size, input.data.size() - input.at);
  if (count == 0) return static_cast<OPJ_SIZE_T>(-1);
  std::memcpy(buffer, input.data.data() + input.at, count);
  input.at += count;
  return count;
}

OPJ_OFF_T Pass(OPJ_OFF_T size, void* user) {
  Input& input = *static_cast<Input*>(user);
  if (size < 0) return -1;
  size_t const count = std::min(static_cast<size_t>(size), input.data.size() - input.at);
  input.at += count;
  return static_cast<OPJ_OFF_T>(count);
}

OPJ_BOOL Seek(OPJ_OFF_T place, void* user) {
  Input& input = *static_cast<Input*>(user);
  if (place < 0 || static_cast<size_t>(place) > input.data.size()) return OPJ_FALSE;
  input.at = static_cast<size_t>(place);
  return OPJ_TRUE;
}

struct StreamDeleter {
  void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
};
struct CodecDeleter {
  void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }
};
struct ImageDeleter {
  void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};

bool IsCodestream(std::span<BYTE const> data) {
  return data.size() > 4 && data[0] == 0xFF && data[1] == 0x4F && data[2] == 0xFF &&
         data[3] == 0x51;
}

// One run of the decoder over data in memory.
class JpxReader {
 public:
  // `raw_index`: a palette in the data is left alone.
  JpxReader(std::span<BYTE const> data, bool raw_index) : input_{data} {
    codec_.reset(opj_create_decompress(IsCodestream(data) ? OPJ_CODEC_J2K : OPJ_CODEC_JP2));
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    if (raw_index) parameters.flags |= OPJ_DPARAMETERS_IGNORE_PCLR_CMAP_CDEF_FLAG;
    stream_.reset(opj_stream_create(65536, OPJ_TRUE));
    if (codec_ == nullptr || stream_ == nullptr) return;
    opj_set_warning_handler(codec_.get(), Warn, this);
    opj_set_error_handler(codec_.get(), Warn, this);
    if (opj_setup_decoder(codec_.get(), &parameters) == OPJ_FALSE) return;
    opj_stream_set_user_data(stream_.get(), &input_, nullptr);
    opj_stream_set_user_data_length(stream_.get(), data.size());
    opj_stream_set_read_function(stream_.get(), Give);
    opj_stream_set_skip_function(stream_.get(), Pass);
    opj_stream_set_seek_function(stream_.get(), Seek);
    opj_image_t* image = nullptr;
    is_read_ = opj_read_header(stream_.get(), codec_.get(), &image) != OPJ_FALSE;
    image_.reset(image);
  }
  JpxReader(JpxReader const&) = delete;
  JpxReader& operator=(JpxReader const&) = delete;

  bool is_read() const { return is_read_ && image_ != nullptr && image_->numcomps != 0; }
  opj_image_t const& image() const { return *image_; }

  bool Decode() {
    opj_decoder_set_strict_mode(codec_.get(), OPJ_TRUE);
    return opj_decode(codec_.get(), stream_.get(), image_.get()) != OPJ_FALSE && !warned_ &&
           opj_end_decompress(codec_.get(), stream_.get()) != OPJ_FALSE;
  }

 private:
  static void Warn(char const*, void* user) { static_cast<JpxReader*>(user)->warned_ = true; }

  Input input_;
  std::unique_ptr<opj_stream_t, StreamDeleter> stream_;
  std::unique_ptr<opj_codec_t, CodecDeleter> codec_;
  std::unique_ptr<opj_image_t, ImageDeleter> image_;
  bool is_read_ = false;
  bool warned_ = false;
};

// Takes the decoded planes apart row by row.
class JpxRows {
 public:
  JpxRows(PictureShape const& shape, opj_image_t const& image) : shape_(shape), image_(image) {}

  bool Fits() const {
    if (image_.numcomps < shape_.Components()) return false;
    for (size_t c = 0; c < image_.numcomps; ++c) {
      opj_image_comp_t const& plane = image_.comps[c];
      if (plane.data == nullptr || plane.w == 0 || plane.h == 0 || plane.prec > 16) return false;
    }
    return image_.x1 - image_.x0 == shape_.width && image_.y1 - image_.y0 == shape_.height;
  }

  void Send(SampleSink& sink) const {
    std::vector<BYTE> row(shape_.RowBytes()), opacity(shape_.width);
    size_t const channel = shape_.alpha_in_data == 0 ? image_.numcomps : OpacityChannel();
    for (DWORD y = 0; y < shape_.height; ++y) {
      if (channel < image_.numcomps) {
        for (DWORD x = 0; x < shape_.width; ++x) {
          opacity[x] = static_cast<BYTE>(Sample(channel, x, y, 8));
        }
        sink.Opacity(opacity);
      }
      FillRow(y, row);
      if (!sink.Row(row)) return;
    }
  }

 private:
  // The one that the data mark, or else the first after the colours; numcomps if there is none.
  size_t OpacityChannel() const {
    for (size_t c = 0; c < image_.numcomps; ++c) {
      if (image_.comps[c].alpha != 0) return c;
    }
    return std::min<size_t>(shape_.Components(), image_.numcomps);
  }

  // Indices stay as they are; tones are spread over `bits`.
  unsigned Sample(size_t component, DWORD x, DWORD y, int bits) const {
    opj_image_comp_t const& plane = image_.comps[component];
    size_t const column = std::min<size_t>(x / std::max<OPJ_UINT32>(plane.dx, 1), plane.w - 1);
    size_t const line = std::min<size_t>(y / std::max<OPJ_UINT32>(plane.dy, 1), plane.h - 1);
    int const offset = plane.sgnd != 0 ? 1 << (plane.prec - 1) : 0;
    int const top = (1 << plane.prec) - 1;
    int const value = std::clamp(plane.data[line * plane.w + column] + offset, 0, top);
    bool const is_index = shape_.space->family() == SpaceFamily::kIndexed;
    int const wanted = (1 << bits) - 1;
    if (is_index || top == wanted) return static_cast<unsigned>(std::min(value, wanted));
    return static_cast<unsigned>((int64_t{value} * wanted + top / 2) / top);
  }

  void FillRow(DWORD y, std::vector<BYTE>& row) const {
    size_t at = 0;
    for (DWORD x = 0; x < shape_.width; ++x) {
      unsigned samples[4] = {};
      for (size_t c = 0; c < shape_.Components() && c < 4; ++c) {
        samples[c] = Sample(c, x, y, shape_.bits);
      }
      if (image_.color_space == OPJ_CLRSPC_SYCC && shape_.Components() == 3) ToRgb(samples);
      for (size_t c = 0; c < shape_.Components() && c < 4; ++c) {
        if (shape_.bits == 16) row[at++] = static_cast<BYTE>(samples[c] >> 8);
        row[at++] = static_cast<BYTE>(samples[c]);
      }
    }
  }

  void ToRgb(unsigned* samples) const {
    double const top = (1 << shape_.bits) - 1, middle = (1 << (shape_.bits - 1));
    double const y = samples[0], cb = samples[1] - middle, cr = samples[2] - middle;
    double const rgb[3] = {y + 1.402 * cr, y - 0.344136 * cb - 0.714136 * cr, y + 1.772 * cb};
    for (size_t i = 0; i < 3; ++i) {
      samples[i] = static_cast<unsigned>(std::clamp(rgb[i] + 0.5, 0.0, top));
    }
  }

  PictureShape const& shape_;
  opj_image_t const& image_;
};

}  // namespace

std::optional<JpxFacts> ReadJpxFacts(std::string_view data, std::string& problem) {
  std::span<BYTE const> const bytes(reinterpret_cast<BYTE const*>(data.data()), data.size());
  JpxReader const reader(bytes, false);
  problem = kDamaged;
  if (!reader.is_read()) return std::nullopt;
  JpxFacts facts;
  opj_image_t const& image = reader.image();
  for (size_t c = 0; c < image.numcomps; ++c) {
    facts.bits = std::max(facts.bits, static_cast<int>(image.comps[c].prec));
  }
  // A codestream does not say which of its components are opacity; usually the last is.
  auto const stated = Jp2Colours(bytes);
  facts.colours = stated ? static_cast<size_t>(*stated) : image.numcomps <= 2 ? 1 : 3;
  return facts;
}

bool DecodeJpx(PictureShape const& shape, std::span<BYTE const> data, SampleSink& sink,
               std::string& problem) {
  problem = "its picture is too large";
  uint64_t const samples = uint64_t{shape.width} * shape.height * shape.Components();
  if (samples > std::min(kMaxSamples, kFewSamples + data.size() * kMaxSamplesPerByte)) return false;
  problem = kDamaged;
  JpxReader reader(data, shape.space->family() == SpaceFamily::kIndexed);
  if (!reader.is_read() || !reader.Decode()) return false;
  JpxRows const rows(shape, reader.image());
  problem = "its JPEG 2000 data do not fit the picture";
  if (!rows.Fits()) return false;
  rows.Send(sink);
  return true;
}

}  // namespace sorrelin::tool
