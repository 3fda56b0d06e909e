// JPEG files through libjpeg, with its messages kept back.
#include "tools/formats/jpeg/jpeg_file.h"

#include <turbojpeg.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "tools/formats/jpeg/jpeg_errors.h"
#include "tools/formats/picture/exif.h"

namespace sorrelin::tool {
namespace {

constexpr BYTE kEndOfImage = 0xD9;
constexpr BYTE kStartOfScan = 0xDA;
constexpr unsigned kMaxMarkerBytes = 0xFFFF;
constexpr char kExifMark[] = "Exif\0";  // six bytes with its terminator
constexpr UINT8 kPerInch = 1;
constexpr UINT8 kPerCentimetre = 2;

// One decompressor of a whole file.
class Decompressor {
 public:
  explicit Decompressor(std::span<BYTE const> file) {
    info_.err = errors_.manager();
    created_ = Try([&] {
      jpeg_create_decompress(&info_);
      jpeg_mem_src(&info_, file.data(), static_cast<unsigned long>(file.size()));
      jpeg_save_markers(&info_, JPEG_APP0 + 1, kMaxMarkerBytes);
      jpeg_save_markers(&info_, JPEG_APP0 + 2, kMaxMarkerBytes);
    });
  }
  ~Decompressor() { jpeg_destroy_decompress(&info_); }
  Decompressor(Decompressor const&) = delete;
  Decompressor& operator=(Decompressor const&) = delete;

  bool ReadHeader() {
    return created_ && Try([&] { jpeg_read_header(&info_, TRUE); });
  }

  template <typename Work>
  bool Try(Work work) {
    return errors_.Try(work);
  }

  // libjpeg's code of why it gave up.
  int failure() { return errors_.manager()->msg_code; }

  jpeg_decompress_struct& info() { return info_; }

 private:
  jpeg_decompress_struct info_{};
  JpegErrors errors_;
  bool created_ = false;
};

JpegColours ColoursOf(jpeg_decompress_struct const& info) {
  switch (info.jpeg_color_space) {
    case JCS_GRAYSCALE:
      return JpegColours::kGrey;
    case JCS_RGB:
      return JpegColours::kRgb;
    case JCS_YCbCr:
      return JpegColours::kYcbcr;
    case JCS_CMYK:
      return JpegColours::kCmyk;
    case JCS_YCCK:
      return JpegColours::kYcck;
    default:
      return JpegColours::kOther;
  }
}

bool IsCommon(jpeg_decompress_struct const& info) {
  return info.arith_code == FALSE && info.data_precision == 8 &&
         ColoursOf(info) != JpegColours::kOther;
}

Resolution JfifDensity(jpeg_decompress_struct const& info) {
  if (info.saw_JFIF_marker == FALSE) return {};
  // Written for "none"; a picture of so few dots would be one of 100 metres.
  if (info.X_density == 1 && info.Y_density == 1 && info.density_unit != 0) return {1, 1};
  double const scale = info.density_unit == kPerInch         ? 1.0
                       : info.density_unit == kPerCentimetre ? kCentimetresPerInch
                                                             : 0.0;
  return {WholeDots(info.X_density * scale), WholeDots(info.Y_density * scale)};
}

ExifFacts ExifOf(jpeg_decompress_struct const& info) {
  for (auto marker = info.marker_list; marker != nullptr; marker = marker->next) {
    bool const exif = marker->marker == JPEG_APP0 + 1 && marker->data_length > sizeof kExifMark &&
                      std::memcmp(marker->data, kExifMark, sizeof kExifMark) == 0;
    if (!exif) continue;
    return ReadExif({marker->data + sizeof kExifMark, marker->data_length - sizeof kExifMark});
  }
  return {};
}

bool HasProfileMarker(jpeg_decompress_struct const& info) {
  constexpr char kMark[] = "ICC_PROFILE";
  for (auto marker = info.marker_list; marker != nullptr; marker = marker->next) {
    if (marker->marker == JPEG_APP0 + 2 && marker->data_length >= sizeof kMark &&
        std::memcmp(marker->data, kMark, sizeof kMark) == 0) {
      return true;
    }
  }
  return false;
}

// A profile may be spread over several markers (ICC.1:2022, B.4), which libjpeg puts together.
void ReadProfile(Decompressor& decompressor, JpegFacts& facts) {
  JOCTET* bytes = nullptr;
  unsigned count = 0;
  bool found = false;
  bool const read = decompressor.Try(
      [&] { found = jpeg_read_icc_profile(&decompressor.info(), &bytes, &count) != FALSE; });
  if (read && found) {
    facts.profile = UsableProfile({bytes, count}, facts.components);
    std::free(bytes);
  }
  facts.profile_unusable = facts.profile == nullptr && HasProfileMarker(decompressor.info());
}

void StoreRow(BYTE const* row, jpeg_decompress_struct const& info, l_uint32* line) {
  int const width = static_cast<int>(info.output_width);
  for (int x = 0; x < width; ++x, row += info.output_components) {
    if (info.output_components == 1) {
      SET_DATA_BYTE(line, x, row[0]);
    } else {
      composeRGBPixel(row[0], row[1], row[2], line + x);
    }
  }
}

void ReadRows(jpeg_decompress_struct& info, Pix* pix, BYTE* row) {
  while (info.output_scanline < info.output_height) {
    l_uint32* const line = pixGetData(pix) + static_cast<ptrdiff_t>(info.output_scanline) *
                                                 static_cast<ptrdiff_t>(pixGetWpl(pix));
    jpeg_read_scanlines(&info, &row, 1);
    StoreRow(row, info, line);
  }
  jpeg_finish_decompress(&info);
}

// The place after a scan's coded data: that of the next marker, or the file's end.
size_t SkipScan(std::span<BYTE const> file, size_t at) {
  while (at < file.size()) {
    void const* const found = std::memchr(file.data() + at, 0xFF, file.size() - at);
    if (found == nullptr) return file.size();
    at = static_cast<size_t>(static_cast<BYTE const*>(found) - file.data());
    if (at + 1 >= file.size()) return file.size();
    BYTE const code = file[at + 1];
    bool const data = code == 0x00 || (code >= 0xD0 && code <= 0xD7);
    if (!data) return at;
    at += 2;
  }
  return at;
}

struct TransformCloser {
  void operator()(tjhandle handle) const { tjDestroy(handle); }
};
struct TurnedDeleter {
  void operator()(unsigned char* bytes) const { tjFree(bytes); }
};

// Turning keeps the whole picture in memory, with two bytes for a sample.
constexpr int64_t kMaxTurnedPixels = int64_t{1} << 27;

// What brings a picture of an orientation upright.
int OperationOf(int orientation) {
  constexpr std::array<int, 9> kOperations = {TJXOP_NONE,   TJXOP_NONE,       TJXOP_HFLIP,
                                              TJXOP_ROT180, TJXOP_VFLIP,      TJXOP_TRANSPOSE,
                                              TJXOP_ROT90,  TJXOP_TRANSVERSE, TJXOP_ROT270};
  return kOperations[static_cast<size_t>(orientation)];
}

}  // namespace

std::optional<JpegFacts> ReadJpegFacts(std::span<BYTE const> file) {
  Decompressor decompressor(file);
  if (!decompressor.ReadHeader()) return std::nullopt;
  jpeg_decompress_struct const& info = decompressor.info();
  ExifFacts const exif = ExifOf(info);
  JpegFacts facts;
  facts.width = static_cast<int>(info.image_width);
  facts.height = static_cast<int>(info.image_height);
  facts.components = info.num_components;
  facts.orientation = exif.orientation;
  facts.dpi = JfifDensity(info);
  if (facts.dpi == Resolution{}) facts.dpi = exif.dpi;
  facts.colours = ColoursOf(info);
  facts.adobe = info.saw_Adobe_marker != FALSE;
  facts.common = IsCommon(info);
  ReadProfile(decompressor, facts);
  return facts;
}

bool IsJpegOfOtherKind(std::span<BYTE const> file) {
  Decompressor decompressor(file);
  if (decompressor.ReadHeader()) return false;
  int const failure = decompressor.failure();
  return failure == JERR_SOF_UNSUPPORTED || failure == JERR_BAD_PRECISION;
}

ImageForm FormOfJpeg(JpegFacts const& facts) {
  constexpr ImageColours kColours[] = {ImageColours::kGrey, ImageColours::kGrey,
                                       ImageColours::kRgb,  ImageColours::kRgb,
                                       ImageColours::kCmyk, ImageColours::kCmyk};
  ImageForm form;
  form.filter = ImageFilter::kJpeg;
  form.colours = kColours[static_cast<int>(facts.colours)];
  form.inverted = form.colours == ImageColours::kCmyk && facts.adobe;
  if (facts.colours == JpegColours::kRgb && !facts.adobe) form.jpeg_is_ycbcr = false;
  return form;
}

size_t JpegEnd(std::span<BYTE const> file) {
  size_t at = 2;
  while (at + 1 < file.size()) {
    BYTE const code = file[at + 1];
    if (file[at] != 0xFF || code == 0xFF) {
      ++at;
    } else if (code == kEndOfImage) {
      return at + 2;
    } else if (code == 0x00 || code == 0x01 || (code >= 0xD0 && code <= 0xD8)) {
      at += 2;
    } else {
      if (at + 3 >= file.size()) return 0;
      at += 2 + (static_cast<size_t>(file[at + 2]) << 8 | file[at + 3]);
      if (code == kStartOfScan) at = SkipScan(file, at);
    }
  }
  return 0;
}

std::shared_ptr<std::vector<BYTE> const> TurnedJpeg(std::span<BYTE const> file,
                                                    JpegFacts const& facts) {
  int const operation = OperationOf(facts.orientation);
  if (operation == TJXOP_NONE || int64_t{facts.width} * facts.height > kMaxTurnedPixels) {
    return nullptr;
  }
  std::unique_ptr<void, TransformCloser> const turner(tjInitTransform());
  if (turner == nullptr) return nullptr;
  tjtransform transform{};
  transform.op = operation;
  transform.options = TJXOPT_PERFECT | TJXOPT_COPYNONE;
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  int const failed =
      tjTransform(turner.get(), file.data(), static_cast<unsigned long>(file.size()), 1, &bytes,
                  &size, &transform, TJFLAG_LIMITSCANS | TJFLAG_STOPONWARNING);
  std::unique_ptr<unsigned char, TurnedDeleter> const turned(bytes);
  if (failed != 0 || bytes == nullptr) return nullptr;
  return std::make_shared<std::vector<BYTE> const>(bytes, bytes + size);
}

PixPtr DecodeJpeg(std::span<BYTE const> file) {
  Decompressor decompressor(file);
  if (!decompressor.ReadHeader()) return nullptr;
  jpeg_decompress_struct& info = decompressor.info();
  int const components = info.num_components;
  if (components != 1 && components != 3) return nullptr;
  info.out_color_space = components == 1 ? JCS_GRAYSCALE : JCS_RGB;
  PixPtr pix(pixCreate(static_cast<int>(info.image_width), static_cast<int>(info.image_height),
                       components == 1 ? 8 : 32));
  if (pix == nullptr) return nullptr;
  std::vector<BYTE> row(static_cast<size_t>(info.image_width) * static_cast<size_t>(components));
  pixSetAll(pix.get());
  decompressor.Try([&] {
    jpeg_start_decompress(&info);
    ReadRows(info, pix.get(), row.data());
  });
  return pix;
}

std::optional<Samples> DecodeJpegInks(std::span<BYTE const> file) {
  Decompressor decompressor(file);
  if (!decompressor.ReadHeader() || decompressor.info().num_components != 4) return std::nullopt;
  jpeg_decompress_struct& info = decompressor.info();
  info.out_color_space = JCS_CMYK;
  Samples samples;
  samples.width = static_cast<int>(info.image_width);
  samples.height = static_cast<int>(info.image_height);
  samples.colours = ImageColours::kCmyk;
  samples.bytes.resize(samples.Bytes());
  decompressor.Try([&] {
    jpeg_start_decompress(&info);
    while (info.output_scanline < info.output_height) {
      BYTE* row = samples.bytes.data() + info.output_scanline * samples.RowBytes();
      jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
  });
  // With an Adobe marker, inks are stored as their complement.
  if (info.saw_Adobe_marker != FALSE) {
    for (BYTE& ink : samples.bytes) ink = static_cast<BYTE>(~ink);
  }
  return samples;
}

}  // namespace sorrelin::tool
