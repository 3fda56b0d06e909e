// Group 4 as libtiff codes it, in memory.
#include <tests/support/tiff_witness.h>
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace test {
namespace {

// What libtiff reads or writes instead of a file.
struct MemoryFile {
  std::vector<uint8_t> bytes;
  size_t position = 0;
};

tmsize_t ReadMemory(thandle_t handle, void* out, tmsize_t count) {
  auto* file = static_cast<MemoryFile*>(handle);
  size_t const left = file->bytes.size() - std::min(file->position, file->bytes.size());
  size_t const taken = std::min(left, static_cast<size_t>(count));
  std::copy_n(file->bytes.data() + file->position, taken, static_cast<uint8_t*>(out));
  file->position += taken;
  return static_cast<tmsize_t>(taken);
}

tmsize_t WriteMemory(thandle_t handle, void* data, tmsize_t count) {
  auto* file = static_cast<MemoryFile*>(handle);
  size_t const end = file->position + static_cast<size_t>(count);
  if (file->bytes.size() < end) {
    file->bytes.resize(end);
  }
  std::copy_n(static_cast<uint8_t const*>(data), count, file->bytes.data() + file->position);
  file->position = end;
  return count;
}

toff_t SeekMemory(thandle_t handle, toff_t offset, int origin) {
  auto* file = static_cast<MemoryFile*>(handle);
  size_t const base = origin == SEEK_SET   ? 0
                      : origin == SEEK_CUR ? file->position
                                           : file->bytes.size();
  file->position = base + static_cast<size_t>(offset);
  return file->position;
}

int CloseMemory(thandle_t) { return 0; }
toff_t SizeOfMemory(thandle_t handle) { return static_cast<MemoryFile*>(handle)->bytes.size(); }
int MapMemory(thandle_t handle, void** base, toff_t* size) {
  auto* file = static_cast<MemoryFile*>(handle);
  *base = file->bytes.data();
  *size = file->bytes.size();
  return 1;
}
void UnmapMemory(thandle_t, void*, toff_t) {}

struct TiffDeleter {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffPtr = std::unique_ptr<TIFF, TiffDeleter>;

thread_local std::string first_complaint;

void Complain(char const*, char const* format, va_list arguments) {
  std::array<char, 200> text{};
  std::vsnprintf(text.data(), text.size(), format, arguments);
  std::string_view const sentence = text.data();
  if (first_complaint.empty()) first_complaint = sentence.substr(0, sentence.find(" at "));
}

TiffPtr Open(MemoryFile& file, char const* mode) {
  TIFFSetWarningHandler(Complain);
  TIFFSetErrorHandler(Complain);
  TiffPtr tiff(TIFFClientOpen("memory", mode, &file, ReadMemory, WriteMemory, SeekMemory,
                              CloseMemory, SizeOfMemory, MapMemory, UnmapMemory));
  if (!tiff) {
    throw std::runtime_error("libtiff does not open");
  }
  return tiff;
}

void SetFields(TIFF* tiff, int32_t width, int32_t height) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  TIFFSetField(tiff, TIFFTAG_FILLORDER, FILLORDER_MSB2LSB);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
}

}  // namespace

std::vector<uint8_t> TiffEncode(Bilevel const& bitmap) {
  MemoryFile file;
  TiffPtr const tiff = Open(file, "w");
  SetFields(tiff.get(), bitmap.Width(), bitmap.Height());
  for (int32_t y = 0; y < bitmap.Height(); ++y) {
    // libtiff reads the row only, though its parameter is not const.
    auto* row = const_cast<uint8_t*>(bitmap.Row(y).data());
    if (TIFFWriteScanline(tiff.get(), row, static_cast<uint32_t>(y)) != 1) {
      throw std::runtime_error("libtiff does not encode");
    }
  }
  TIFFFlushData(tiff.get());
  auto const begin =
      file.bytes.begin() + static_cast<ptrdiff_t>(TIFFGetStrileOffset(tiff.get(), 0));
  return {begin, begin + static_cast<ptrdiff_t>(TIFFGetStrileByteCount(tiff.get(), 0))};
}

std::vector<uint8_t> TiffFile(std::span<uint8_t const> coded, int32_t width, int32_t height) {
  MemoryFile file;
  TiffPtr tiff = Open(file, "w");
  SetFields(tiff.get(), width, height);
  std::vector<uint8_t> copy(coded.begin(), coded.end());
  TIFFWriteRawStrip(tiff.get(), 0, copy.data(), static_cast<tmsize_t>(copy.size()));
  tiff.reset();
  return file.bytes;
}

TiffDecoded TiffDecode(std::span<uint8_t const> coded, int32_t width, int32_t height) {
  MemoryFile file{TiffFile(coded, width, height)};
  TiffPtr const tiff = Open(file, "r");
  TiffDecoded result{Bilevel(width, height), 0, {}};
  std::vector<uint8_t> line(static_cast<size_t>(TIFFScanlineSize(tiff.get())));
  first_complaint.clear();
  for (int32_t y = 0; y < height; ++y) {
    std::fill(line.begin(), line.end(), uint8_t{0});
    int const read = TIFFReadScanline(tiff.get(), line.data(), static_cast<uint32_t>(y));
    if (read != 1 || !first_complaint.empty()) {
      break;
    }
    std::copy(line.begin(), line.end(), result.bitmap.Row(y).begin());
    result.clean_rows = y + 1;
  }
  result.complaint = first_complaint;
  return result;
}

void TiffReadRows(std::span<uint8_t const> file, std::span<uint8_t> rows) {
  MemoryFile memory{std::vector<uint8_t>(file.begin(), file.end())};
  TiffPtr const tiff = Open(memory, "r");
  tmsize_t const size = TIFFScanlineSize(tiff.get());
  for (uint32_t y = 0; static_cast<size_t>(size) * (y + 1) <= rows.size(); ++y) {
    if (TIFFReadScanline(tiff.get(), rows.data() + size * y, y) != 1) {
      throw std::runtime_error("libtiff does not decode");
    }
  }
}

}  // namespace test
