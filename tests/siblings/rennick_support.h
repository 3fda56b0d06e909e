// Parameter records, bitmaps and JPEG files for the tests of the JPEG coder, and a second way to
// read and write them: libjpeg with its own error handling, which ends the test program.
#ifndef TESTS_SIBLINGS_RENNICK_SUPPORT_H_
#define TESTS_SIBLINGS_RENNICK_SUPPORT_H_

#include <siblings/rennick/rennick.h>
#include <sorrelin/platform/memory.h>
#include <tests/support/dib.h>
#include <tests/support/temp_dir.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>

// libjpeg's header needs <cstdio> before it.
#include <jpeglib.h>

namespace test {

struct RecordSpec {
  int quality = 75;
  LONG x_per_metre = 0;
  LONG y_per_metre = 0;
  WORD width = 0;
  WORD height = 0;
};

// The bytes 28 to 47 are left unset by callers.
inline std::array<BYTE, JPEG_RECORD_BYTES> MakeRecord(RecordSpec const& spec) {
  std::array<BYTE, JPEG_RECORD_BYTES> record;
  record.fill(0xDD);
  auto const put = [&](size_t at, size_t bytes, uint32_t value) {
    for (size_t i = 0; i < bytes; ++i) record[at + i] = static_cast<BYTE>(value >> (8 * i));
  };
  put(JPEG_RECORD_WIDTH, 2, spec.width);
  put(JPEG_RECORD_HEIGHT, 2, spec.height);
  put(JPEG_RECORD_X_DENSITY, 4, static_cast<uint32_t>(spec.x_per_metre));
  put(JPEG_RECORD_Y_DENSITY, 4, static_cast<uint32_t>(spec.y_per_metre));
  put(JPEG_RECORD_QUALITY, 2, static_cast<uint32_t>(spec.quality));
  constexpr std::array<BYTE, 14> kConstants{3, 0, 0, 0, 0, 0, 2, 0, 2, 0, 0, 0, 0, 0};
  std::copy(kConstants.begin(), kConstants.end(), record.begin() + JPEG_RECORD_CONSTANTS);
  put(JPEG_RECORD_TAIL, 4, 0);
  put(JPEG_RECORD_TAIL + 4, 4, 0);
  return record;
}

// Empty on failure, with the status in `status` if given.
inline Bytes Save(HDIB dib, RecordSpec const& spec, int* status = nullptr) {
  int result = 0;
  Block const block(SaveDIBAsJPEGToMemoryEx(dib, MakeRecord(spec).data(), &result));
  if (status != nullptr) *status = result;
  return block.get() != nullptr ? block.Content() : Bytes{};
}

inline Block Load(Bytes const& file) {
  return Block(LoadJPEGIntoDIBFromMemory(file.data(), static_cast<DWORD>(file.size())));
}

inline BITMAPINFOHEADER HeaderOf(Block const& dib) {
  BITMAPINFOHEADER header{};
  Bytes const bytes = dib.Content(sizeof header);
  std::memcpy(&header, bytes.data(), bytes.size());
  return header;
}

// Samples of a JPEG file, component by component within a pixel, the top row first.
struct Samples {
  JDIMENSION width = 0;
  JDIMENSION height = 0;
  int components = 0;
  Bytes values;

  int At(JDIMENSION x, JDIMENSION y, int component) const {
    return values[(size_t{y} * width + x) * static_cast<size_t>(components) +
                  static_cast<size_t>(component)];
  }
};

struct ReadJpeg {
  Samples samples;
  J_COLOR_SPACE space = JCS_UNKNOWN;
  int h_samp = 0;  // of the first component
  int v_samp = 0;
  int first_step = 0;  // of the first quantization table
  int unit = 0;
  int x_density = 0;
  int y_density = 0;
  bool jfif = false;
};

// `out` is the form of the samples; as they are stored if it is JCS_UNKNOWN.
inline ReadJpeg Read(Bytes const& file, J_COLOR_SPACE out = JCS_UNKNOWN) {
  jpeg_decompress_struct coder{};
  jpeg_error_mgr errors{};
  coder.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&coder);
  jpeg_mem_src(&coder, file.data(), static_cast<unsigned long>(file.size()));
  jpeg_read_header(&coder, TRUE);
  coder.out_color_space = out == JCS_UNKNOWN ? coder.jpeg_color_space : out;
  ReadJpeg read;
  read.space = coder.jpeg_color_space;
  read.h_samp = coder.comp_info[0].h_samp_factor;
  read.v_samp = coder.comp_info[0].v_samp_factor;
  read.first_step = coder.quant_tbl_ptrs[0]->quantval[0];
  read.unit = coder.density_unit;
  read.x_density = coder.X_density;
  read.y_density = coder.Y_density;
  read.jfif = coder.saw_JFIF_marker != FALSE;
  jpeg_start_decompress(&coder);
  size_t const row_bytes =
      size_t{coder.output_width} * static_cast<size_t>(coder.output_components);
  read.samples = {coder.output_width, coder.output_height, coder.output_components,
                  Bytes(row_bytes * coder.output_height)};
  while (coder.output_scanline < coder.output_height) {
    JSAMPROW row = read.samples.values.data() + row_bytes * coder.output_scanline;
    jpeg_read_scanlines(&coder, &row, 1);
  }
  jpeg_finish_decompress(&coder);
  jpeg_destroy_decompress(&coder);
  return read;
}

struct WriteSpec {
  J_COLOR_SPACE in;
  J_COLOR_SPACE stored;
  std::function<void(jpeg_compress_struct&)> adjust = [](jpeg_compress_struct&) {};
};

// A file of quality 100 without chroma subsampling unless `adjust` says otherwise.
inline Bytes Write(Samples const& samples, WriteSpec const& spec) {
  jpeg_compress_struct coder{};
  jpeg_error_mgr errors{};
  coder.err = jpeg_std_error(&errors);
  jpeg_create_compress(&coder);
  unsigned char* data = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&coder, &data, &size);
  coder.image_width = samples.width;
  coder.image_height = samples.height;
  coder.input_components = samples.components;
  coder.in_color_space = spec.in;
  jpeg_set_defaults(&coder);
  jpeg_set_colorspace(&coder, spec.stored);
  jpeg_set_quality(&coder, 100, TRUE);
  coder.comp_info[0].h_samp_factor = 1;
  coder.comp_info[0].v_samp_factor = 1;
  spec.adjust(coder);
  jpeg_start_compress(&coder, TRUE);
  size_t const row_bytes = size_t{samples.width} * static_cast<size_t>(samples.components);
  while (coder.next_scanline < coder.image_height) {
    JSAMPROW row = const_cast<BYTE*>(samples.values.data()) + row_bytes * coder.next_scanline;
    jpeg_write_scanlines(&coder, &row, 1);
  }
  jpeg_finish_compress(&coder);
  jpeg_destroy_compress(&coder);
  Bytes const file(data, data + size);
  std::free(data);
  return file;
}

// A slow gradient up to 100 x 80 pixels, different for each component, which JPEG keeps within a
// few levels.
inline Samples Gradient(JDIMENSION width, JDIMENSION height, int components) {
  Samples samples{width, height, components, {}};
  for (JDIMENSION y = 0; y < height; ++y) {
    for (JDIMENSION x = 0; x < width; ++x) {
      for (JDIMENSION c = 0; c < static_cast<JDIMENSION>(components); ++c) {
        samples.values.push_back(static_cast<BYTE>(20 + 40 * c + (x + (1 + c) * y) / 4));
      }
    }
  }
  return samples;
}

// Largest difference of a sample from its counterpart.
inline int Distance(Samples const& a, Samples const& b) {
  if (a.width != b.width || a.height != b.height || a.components != b.components) return 256;
  int largest = 0;
  for (size_t i = 0; i < a.values.size(); ++i) {
    largest = std::max(largest, std::abs(a.values[i] - b.values[i]));
  }
  return largest;
}

// The pixels of a bitmap that was read: levels for 8 bits, red, green, blue for 24.
inline Samples PixelsOf(Block const& dib) {
  BITMAPINFOHEADER const header = HeaderOf(dib);
  Bytes const block = dib.Content();
  bool const grey = header.biBitCount == 8;
  size_t const first_row = sizeof header + (grey ? 1024 : 0);
  size_t const stride = StrideOf(header.biWidth, header.biBitCount);
  size_t const width = static_cast<size_t>(header.biWidth);
  size_t const height = static_cast<size_t>(header.biHeight);
  Samples samples{
      static_cast<JDIMENSION>(width), static_cast<JDIMENSION>(height), grey ? 1 : 3, {}};
  for (size_t y = 0; y < height; ++y) {
    BYTE const* const row = block.data() + first_row + (height - 1 - y) * stride;
    for (size_t x = 0; x < width; ++x) {
      if (grey) samples.values.push_back(row[x]);
      for (size_t c = 3; c > 0 && !grey; --c) samples.values.push_back(row[3 * x + c - 1]);
    }
  }
  return samples;
}

// The bitmap that holds samples of one component, or red, green, blue.
inline Block DibOf(Samples const& samples, DibSpec spec = {}) {
  spec.width = static_cast<LONG>(samples.width);
  spec.height = static_cast<LONG>(samples.height);
  spec.bits = samples.components == 1 ? 8 : 24;
  return MakeDib(spec, [&](LONG x, LONG y) {
    DWORD value = 0;
    for (int c = 0; c < samples.components; ++c) {
      value = value << 8 | static_cast<DWORD>(samples.At(static_cast<JDIMENSION>(x),
                                                         static_cast<JDIMENSION>(y), c));
    }
    return value;
  });
}

}  // namespace test

#endif  // TESTS_SIBLINGS_RENNICK_SUPPORT_H_
