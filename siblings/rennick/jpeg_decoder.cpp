// A JPEG file to a bitmap, by libjpeg, row by row into the bitmap's block.
#include <jerror.h>
#include <siblings/rennick/density.h>
#include <siblings/rennick/dib_rows.h>
#include <siblings/rennick/jpeg_decoder.h>
#include <siblings/rennick/jpeg_failure.h>
#include <sorrelin/platform/memory.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace sorrelin::rennick {
namespace {

// Each scan is work over the whole picture, and a file can hold very many small ones. Small
// pictures may have the larger number of scans; as many as make kScannedBlocks of work, in between.
constexpr uint64_t kMaxScans = 500;
constexpr uint64_t kMaxScansOfLargest = 64;
constexpr uint64_t kScannedBlocks = uint64_t{1} << 26;
constexpr uint64_t kMaxBitmapBytes = UINT32_MAX;
// Of the coefficients that files with several scans need; more fails. 2 GiB where a long has 32
// bits.
constexpr long kMaxWorkBytes =
    static_cast<long>(std::min<int64_t>(int64_t{1} << 32, std::numeric_limits<long>::max()));
constexpr JDIMENSION kRowsAtOnce = 16;

struct DecodeJob {
  jpeg_decompress_struct coder;
  jpeg_progress_mgr progress;
  std::span<BYTE const> file;
  HDIB dib;
  BYTE* pixels;  // of the locked bitmap
  size_t stride;
};

uint64_t BlocksOf(jpeg_decompress_struct const& coder) {
  uint64_t blocks = 0;
  for (int i = 0; i < coder.num_components; ++i) {
    jpeg_component_info const& component = coder.comp_info[i];
    blocks += uint64_t{component.width_in_blocks} * component.height_in_blocks;
  }
  return blocks;
}

void LimitScans(j_common_ptr coder) {
  j_decompress_ptr const decoder = reinterpret_cast<j_decompress_ptr>(coder);
  uint64_t const blocks = std::max<uint64_t>(BlocksOf(*decoder), 1);
  uint64_t const most = std::clamp(kScannedBlocks / blocks, kMaxScansOfLargest, kMaxScans);
  if (static_cast<uint64_t>(decoder->input_scan_number) > most) {
    ERREXIT(coder, JERR_BAD_PROGRESSION);
  }
}

// A Huffman code takes at least one bit, and a block at least one code: a file that promises more
// blocks than it has bits ends early, which need not be found out by decoding it.
bool CanHoldItsBlocks(jpeg_decompress_struct const& coder, size_t file_bytes) {
  return BlocksOf(coder) <= uint64_t{file_bytes} * 8;
}

// Sets the output form by the number of components.
void ChooseColours(jpeg_decompress_struct& coder) {
  switch (coder.num_components) {
    case 1:
      coder.out_color_space = JCS_GRAYSCALE;
      return;
    case 3:
      coder.out_color_space = JCS_EXT_BGR;
      return;
    case 4:
      coder.out_color_space = JCS_CMYK;
      return;
    default:
      ERREXIT(&coder, JERR_CONVERSION_NOTIMPL);
  }
}

BITMAPINFOHEADER HeaderOf(jpeg_decompress_struct const& coder, uint32_t bytes_per_pixel) {
  PixelsPerMetre const resolution =
      ResolutionOf({coder.density_unit, coder.X_density, coder.Y_density});
  uint64_t const stride = StrideOf(coder.image_width, bytes_per_pixel);
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = static_cast<LONG>(coder.image_width);
  header.biHeight = static_cast<LONG>(coder.image_height);
  header.biPlanes = 1;
  header.biBitCount = static_cast<WORD>(8 * bytes_per_pixel);
  header.biSizeImage = static_cast<DWORD>(stride * coder.image_height);
  header.biXPelsPerMeter = resolution.x;
  header.biYPelsPerMeter = resolution.y;
  return header;
}

void WriteGreyPalette(BYTE* table) {
  for (int i = 0; i < 256; ++i) {
    BYTE const level = static_cast<BYTE>(i);
    RGBQUAD const entry{level, level, level, 0};
    std::memcpy(table + static_cast<size_t>(i) * sizeof entry, &entry, sizeof entry);
  }
}

void MakeBitmap(DecodeJob& job) {
  bool const grey = job.coder.num_components == 1;
  uint32_t const bytes_per_pixel = grey ? 1 : 3;
  uint64_t const stride = StrideOf(job.coder.image_width, bytes_per_pixel);
  size_t const first_row = sizeof(BITMAPINFOHEADER) + (grey ? 256 * sizeof(RGBQUAD) : 0);
  uint64_t const bytes = first_row + stride * job.coder.image_height;
  if (bytes > kMaxBitmapBytes) ERREXIT1(&job.coder, JERR_OUT_OF_MEMORY, 0);
  job.dib = GlobalAlloc(GHND, static_cast<SIZE_T>(bytes));
  BYTE* const block = static_cast<BYTE*>(GlobalLock(job.dib));
  if (block == nullptr) ERREXIT1(&job.coder, JERR_OUT_OF_MEMORY, 0);
  BITMAPINFOHEADER const header = HeaderOf(job.coder, bytes_per_pixel);
  std::memcpy(block, &header, sizeof header);
  if (grey) WriteGreyPalette(block + sizeof header);
  job.pixels = block + first_row;
  job.stride = static_cast<size_t>(stride);
}

// The place of row `y`, 0 being the top one.
BYTE* RowOf(DecodeJob const& job, JDIMENSION y) {
  return job.pixels + job.stride * (job.coder.image_height - 1 - y);
}

void ReadRows(DecodeJob& job) {
  jpeg_decompress_struct& coder = job.coder;
  while (coder.output_scanline < coder.output_height) {
    JSAMPROW batch[kRowsAtOnce];
    JDIMENSION const count = std::min(kRowsAtOnce, coder.output_height - coder.output_scanline);
    for (JDIMENSION i = 0; i < count; ++i) batch[i] = RowOf(job, coder.output_scanline + i);
    jpeg_read_scanlines(&coder, batch, count);
  }
}

BYTE WithoutInk(int light, int light_of_black) {
  return static_cast<BYTE>((light * light_of_black + 127) / 255);
}

// Four inks to blue, green, red. `inverted` samples are the light that an ink leaves.
void ConvertInks(JSAMPLE const* inks, bool inverted, BYTE* pixel) {
  int const flip = inverted ? 0 : 255;
  int const black = inks[3] ^ flip;
  pixel[0] = WithoutInk(inks[2] ^ flip, black);
  pixel[1] = WithoutInk(inks[1] ^ flip, black);
  pixel[2] = WithoutInk(inks[0] ^ flip, black);
}

void ReadInkRows(DecodeJob& job) {
  jpeg_decompress_struct& coder = job.coder;
  JSAMPARRAY const inks = coder.mem->alloc_sarray(reinterpret_cast<j_common_ptr>(&coder),
                                                  JPOOL_IMAGE, coder.output_width * 4, 1);
  bool const inverted = coder.saw_Adobe_marker != FALSE;
  while (coder.output_scanline < coder.output_height) {
    BYTE* const row = RowOf(job, coder.output_scanline);
    jpeg_read_scanlines(&coder, inks, 1);
    for (size_t x = 0; x < coder.output_width; ++x) {
      ConvertInks(inks[0] + 4 * x, inverted, row + 3 * x);
    }
  }
}

void Decode(void* argument) {
  DecodeJob& job = *static_cast<DecodeJob*>(argument);
  jpeg_decompress_struct& coder = job.coder;
  jpeg_create_decompress(&coder);
  coder.mem->max_memory_to_use = kMaxWorkBytes;
  coder.progress = &job.progress;
  jpeg_mem_src(&coder, job.file.data(), static_cast<unsigned long>(job.file.size()));
  jpeg_read_header(&coder, TRUE);
  if (coder.arith_code) ERREXIT(&coder, JERR_ARITH_NOTIMPL);
  if (!CanHoldItsBlocks(coder, job.file.size())) ERREXIT(&coder, JERR_INPUT_EOF);
  ChooseColours(coder);
  MakeBitmap(job);
  jpeg_start_decompress(&coder);
  if (coder.out_color_space == JCS_CMYK) {
    ReadInkRows(job);
  } else {
    ReadRows(job);
  }
  jpeg_finish_decompress(&coder);
}

}  // namespace

HDIB DecodeJpeg(std::span<BYTE const> file) {
  JpegFailure failure;
  DecodeJob job{};
  job.coder.err = failure.manager();
  job.progress.progress_monitor = LimitScans;
  job.file = file;
  bool const done = failure.Attempt(Decode, &job);
  jpeg_destroy_decompress(&job.coder);
  if (job.pixels != nullptr) GlobalUnlock(job.dib);
  if (done) return job.dib;
  if (job.dib != nullptr) GlobalFree(job.dib);
  return nullptr;
}

}  // namespace sorrelin::rennick
