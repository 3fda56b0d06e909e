// Files come out of Leptonica in memory, so that a failed write is noticed.
#include "tools/extract/picture_file.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <system_error>

#include "tools/cli/messages.h"
#include "tools/formats/group4_tiff.h"

namespace sorrelin::tool {
namespace {

constexpr int kJpegQuality = 90;

struct FormatName {
  std::string_view name;
  FileFormat format;
};

constexpr FormatName kNames[] = {{"png", FileFormat::kPng},
                                 {"tiff", FileFormat::kTiff},
                                 {"bmp", FileFormat::kBmp},
                                 {"pnm", FileFormat::kPnm},
                                 {"jpeg", FileFormat::kJpeg}};

constexpr FormatName kExtensions[] = {{".png", FileFormat::kPng},   {".tif", FileFormat::kTiff},
                                      {".tiff", FileFormat::kTiff}, {".bmp", FileFormat::kBmp},
                                      {".pnm", FileFormat::kPnm},   {".pbm", FileFormat::kPnm},
                                      {".pgm", FileFormat::kPnm},   {".ppm", FileFormat::kPnm},
                                      {".jpg", FileFormat::kJpeg},  {".jpeg", FileFormat::kJpeg}};

int TiffForm(Pix* pix) {
  bool const bilevel = pixGetDepth(pix) == 1 && pixGetColormap(pix) == nullptr;
  return bilevel ? IFF_TIFF_G4 : IFF_TIFF_ZIP;
}

int LeptonicaForm(Pix* pix, FileFormat format) {
  switch (format) {
    case FileFormat::kPng:
      return IFF_PNG;
    case FileFormat::kTiff:
      return TiffForm(pix);
    case FileFormat::kBmp:
      return IFF_BMP;
    case FileFormat::kPnm:
      return IFF_PNM;
    default:
      return IFF_JFIF_JPEG;
  }
}

PixColormap* ColormapOf(PictureForm const& form) {
  PixColormap* const map = pixcmapCreate(form.depth);
  for (RGBQUAD const& colour : form.palette) {
    pixcmapAddColor(map, colour.rgbRed, colour.rgbGreen, colour.rgbBlue);
  }
  return map;
}

struct LeptonicaBytes {
  ~LeptonicaBytes() { lept_free(data); }
  l_uint8* data = nullptr;
  size_t size = 0;
};

// The picture as a file in memory, by the image library.
bool Encode(Pix* pix, FileFormat format, LeptonicaBytes& bytes, std::string& problem) {
  problem = "cannot be made: the picture does not fit this format (choose another --format)";
  if (format != FileFormat::kJpeg) {
    return pixWriteMem(&bytes.data, &bytes.size, pix, LeptonicaForm(pix, format)) == 0;
  }
  PixPtr const plain = WithoutPalette(pix);
  if (plain == nullptr) return false;
  pixSetResolution(plain.get(), pixGetXRes(pix), pixGetYRes(pix));
  return pixWriteMemJpeg(&bytes.data, &bytes.size, plain.get(), kJpegQuality, 0) == 0;
}

// Hands the picture as a file in memory to `take`, whose result comes back.
template <typename Take>
bool WithFile(Pix* pix, FileFormat format, std::string& problem, Take take) {
  if (format == FileFormat::kTiff) {
    std::vector<BYTE> const file = Group4Tiff(pix);
    if (!file.empty()) return take(file);
  }
  LeptonicaBytes bytes;
  return Encode(pix, format, bytes, problem) && take({bytes.data, bytes.size});
}

}  // namespace

std::optional<FileFormat> FormatOfName(std::string_view name) {
  for (FormatName const& row : kNames) {
    if (row.name == name) return row.format;
  }
  return std::nullopt;
}

std::optional<FileFormat> FormatOfFile(std::filesystem::path const& path) {
  std::string extension = path.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  for (FormatName const& row : kExtensions) {
    if (row.name == extension) return row.format;
  }
  return std::nullopt;
}

char const* ExtensionOf(FileFormat format) {
  switch (format) {
    case FileFormat::kPng:
      return ".png";
    case FileFormat::kTiff:
      return ".tif";
    case FileFormat::kBmp:
      return ".bmp";
    case FileFormat::kPnm:
      return ".pnm";
    default:
      return ".jpg";
  }
}

bool PictureBuilder::Begin(PictureForm const& form) {
  row_ = 0;
  constexpr DWORD kMaxSide = 0x7FFFFFFF;
  if (form.width > kMaxSide || form.height > kMaxSide) return false;
  int const depth = form.depth == 24 ? 32 : form.depth;
  pix_.reset(pixCreate(static_cast<int>(form.width), static_cast<int>(form.height), depth));
  if (pix_ == nullptr) return false;
  pixSetResolution(pix_.get(), form.dpi.x, form.dpi.y);
  if (!form.palette.empty()) pixSetColormap(pix_.get(), ColormapOf(form));
  return true;
}

bool PictureBuilder::Row(std::span<BYTE const> row) {
  if (pix_ == nullptr || row_ == pixGetHeight(pix_.get())) return false;
  l_uint32* const line =
      pixGetData(pix_.get()) + static_cast<ptrdiff_t>(row_++) * pixGetWpl(pix_.get());
  if (pixGetDepth(pix_.get()) == 32) {
    for (size_t x = 0; 3 * x + 2 < row.size(); ++x) {
      composeRGBPixel(row[3 * x], row[3 * x + 1], row[3 * x + 2], line + x);
    }
    return true;
  }
  // Whole words at once: black and white pages come by the hundred.
  BYTE const* const bytes = row.data();
  size_t const words = row.size() / 4;
  for (size_t i = 0; i < words; ++i) {
    BYTE const* const four = bytes + 4 * i;
    line[i] = static_cast<l_uint32>(four[0]) << 24 | static_cast<l_uint32>(four[1]) << 16 |
              static_cast<l_uint32>(four[2]) << 8 | four[3];
  }
  for (size_t i = 4 * words; i < row.size(); ++i) SET_DATA_BYTE(line, i, bytes[i]);
  return true;
}

PixPtr PictureBuilder::Take() {
  if (pix_ != nullptr && row_ != pixGetHeight(pix_.get())) pix_.reset();
  return std::move(pix_);
}

bool WritePicture(std::filesystem::path const& path, Pix* pix, FileFormat format,
                  std::string& problem) {
  auto const write = [&](std::span<BYTE const> file) { return WriteBytes(path, file, problem); };
  return WithFile(pix, format, problem, write);
}

bool WriteBytes(std::filesystem::path const& path, std::span<BYTE const> bytes,
                std::string& problem) {
  errno = 0;
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<char const*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (file) return true;
  problem = "cannot be written: " + std::generic_category().message(errno) + kRoomRemedy;
  return false;
}

bool AddTiffPage(TiffFile& file, Pix* pix, std::string& problem) {
  auto const add = [&](std::span<BYTE const> page) { return file.Add(page, problem); };
  return WithFile(pix, FileFormat::kTiff, problem, add);
}

}  // namespace sorrelin::tool
