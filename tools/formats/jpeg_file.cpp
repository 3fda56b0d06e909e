// JPEG files through libjpeg, with its messages kept back.
#include "tools/formats/jpeg_file.h"

// jpeglib.h needs size_t and FILE declared before it.
#include <jerror.h>
#include <jpeglib.h>
#include <turbojpeg.h>

#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <vector>

#include "tools/formats/exif.h"

namespace sorrelin::tool {
namespace {

constexpr BYTE kEndOfImage = 0xD9;
constexpr BYTE kStartOfScan = 0xDA;
constexpr unsigned kMaxMarkerBytes = 0xFFFF;
constexpr char kExifMark[] = "Exif\0";  // six bytes with its terminator
constexpr UINT8 kPerInch = 1;
constexpr UINT8 kPerCentimetre = 2;

// Counts a warning unless the picture is whole in spite of it.
void CountWarning(j_common_ptr info, int level) {
  int const code = info->err->msg_code;
  bool const harmless =
      code == JWRN_EXTRANEOUS_DATA || code == JWRN_JFIF_MAJOR || code == JWRN_ADOBE_XFORM;
  if (level < 0 && !harmless) ++info->err->num_warnings;
}

// One decompressor. libjpeg leaves it by a jump when it gives up, so whatever runs inside Try has
// no destructors of its own.
class Decompressor {
 public:
  explicit Decompressor(std::span<BYTE const> file) {
    info_.err = jpeg_std_error(&errors_.manager);
    errors_.manager.error_exit = [](j_common_ptr info) {
      std::longjmp(reinterpret_cast<Errors*>(info->err)->jump, 1);
    };
    errors_.manager.emit_message = CountWarning;
    created_ = Try([&] {
      jpeg_create_decompress(&info_);
      jpeg_mem_src(&info_, file.data(), static_cast<unsigned long>(file.size()));
      jpeg_save_markers(&info_, JPEG_APP0 + 1, kMaxMarkerBytes);
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
    if (setjmp(errors_.jump) != 0) return false;
    work();
    return true;
  }

  jpeg_decompress_struct& info() { return info_; }
  bool warned() const { return errors_.manager.num_warnings != 0; }

 private:
  struct Errors {
    jpeg_error_mgr manager;
    std::jmp_buf jump;
  };
  jpeg_decompress_struct info_{};
  Errors errors_{};
  bool created_ = false;
};

bool IsCommon(jpeg_decompress_struct const& info) {
  if (info.arith_code != FALSE || info.data_precision != 8) return false;
  if (info.num_components == 1) return info.jpeg_color_space == JCS_GRAYSCALE;
  if (info.num_components != 3) return false;
  return info.jpeg_color_space == JCS_YCbCr ||
         (info.jpeg_color_space == JCS_RGB && info.saw_Adobe_marker != FALSE);
}

Resolution JfifDensity(jpeg_decompress_struct const& info) {
  if (info.saw_JFIF_marker == FALSE) return {};
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

// Inks are stored as they are, or with an Adobe marker as their complement.
BYTE ToneOfInk(int ink, int black, bool inverted) {
  int const tone = inverted ? ink : 255 - ink;
  int const light = inverted ? black : 255 - black;
  return static_cast<BYTE>((tone * light + 127) / 255);
}

void StoreRow(BYTE const* row, jpeg_decompress_struct const& info, l_uint32* line) {
  int const width = static_cast<int>(info.output_width);
  bool const inverted = info.saw_Adobe_marker != FALSE;
  for (int x = 0; x < width; ++x, row += info.output_components) {
    if (info.output_components == 1) {
      SET_DATA_BYTE(line, x, row[0]);
    } else if (info.output_components == 3) {
      composeRGBPixel(row[0], row[1], row[2], line + x);
    } else {
      composeRGBPixel(ToneOfInk(row[0], row[3], inverted), ToneOfInk(row[1], row[3], inverted),
                      ToneOfInk(row[2], row[3], inverted), line + x);
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

// The place behind a scan's coded data: where the next marker stands, or the file's end.
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
  facts.common = IsCommon(info);
  return facts;
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
  if (components != 1 && components != 3 && components != 4) return nullptr;
  info.out_color_space = components == 1 ? JCS_GRAYSCALE : components == 3 ? JCS_RGB : JCS_CMYK;
  PixPtr pix(pixCreate(static_cast<int>(info.image_width), static_cast<int>(info.image_height),
                       components == 1 ? 8 : 32));
  if (pix == nullptr) return nullptr;
  std::vector<BYTE> row(static_cast<size_t>(info.image_width) * static_cast<size_t>(components));
  bool const decoded = decompressor.Try([&] {
    jpeg_start_decompress(&info);
    ReadRows(info, pix.get(), row.data());
  });
  return decoded && !decompressor.warned() ? std::move(pix) : nullptr;
}

}  // namespace sorrelin::tool
