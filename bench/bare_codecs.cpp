// The bare codecs that the benchmarks measure the library against.
#include "bench/bare_codecs.h"

#include <stdio.h>  // jpeglib.h needs it

#include <jpeglib.h>
#include <tiffio.h>

#include <cstdlib>
#include <cstring>

namespace bench {

namespace {

struct MemoryTiff {
  std::vector<BYTE> bytes;
  toff_t position = 0;
};

MemoryTiff& Of(thandle_t handle) { return *static_cast<MemoryTiff*>(handle); }

tsize_t Read(thandle_t, void*, tsize_t) { return 0; }

tsize_t Write(thandle_t handle, void* data, tsize_t size) {
  MemoryTiff& file = Of(handle);
  size_t const end = static_cast<size_t>(file.position) + static_cast<size_t>(size);
  if (file.bytes.size() < end) file.bytes.resize(end);
  std::memcpy(file.bytes.data() + file.position, data, static_cast<size_t>(size));
  file.position = end;
  return size;
}

toff_t Seek(thandle_t handle, toff_t offset, int whence) {
  MemoryTiff& file = Of(handle);
  if (whence == SEEK_SET) file.position = offset;
  if (whence == SEEK_CUR) file.position += offset;
  if (whence == SEEK_END) file.position = file.bytes.size() + offset;
  return file.position;
}

int Close(thandle_t) { return 0; }

toff_t Size(thandle_t handle) { return Of(handle).bytes.size(); }

}  // namespace

std::vector<BYTE> EncodeGroup4(std::vector<BYTE> const& rows, int width, int height) {
  MemoryTiff file;
  TIFF* const tiff =
      TIFFClientOpen("memory", "wm", &file, Read, Write, Seek, Close, Size, nullptr, nullptr);
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, height);
  size_t const row_bytes = static_cast<size_t>(width + 7) / 8;
  for (int y = 0; y < height; ++y) {
    TIFFWriteScanline(tiff, const_cast<BYTE*>(rows.data()) + row_bytes * static_cast<size_t>(y),
                      static_cast<uint32_t>(y), 0);
  }
  TIFFClose(tiff);
  return file.bytes;
}

std::vector<BYTE> EncodeJpeg(BYTE const* rows, int width, int height, int bits, int quality) {
  jpeg_compress_struct jpeg;
  jpeg_error_mgr errors;
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  unsigned char* out = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&jpeg, &out, &size);
  jpeg.image_width = static_cast<JDIMENSION>(width);
  jpeg.image_height = static_cast<JDIMENSION>(height);
  jpeg.input_components = bits / 8;
  jpeg.in_color_space = bits == 8 ? JCS_GRAYSCALE : JCS_EXT_BGR;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, quality, TRUE);
  jpeg_start_compress(&jpeg, TRUE);
  size_t const stride = (static_cast<size_t>(width) * static_cast<size_t>(bits) / 8 + 3) / 4 * 4;
  for (int y = height - 1; y >= 0; --y) {
    JSAMPROW row = const_cast<BYTE*>(rows) + stride * static_cast<size_t>(y);
    jpeg_write_scanlines(&jpeg, &row, 1);
  }
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  std::vector<BYTE> file(out, out + size);
  std::free(out);
  return file;
}

void DecodeJpeg(std::vector<BYTE> const& file, BYTE* out) {
  jpeg_decompress_struct jpeg;
  jpeg_error_mgr errors;
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&jpeg);
  jpeg_mem_src(&jpeg, file.data(), file.size());
  jpeg_read_header(&jpeg, TRUE);
  if (jpeg.num_components == 3) jpeg.out_color_space = JCS_EXT_BGR;
  jpeg_start_decompress(&jpeg);
  size_t const row_bytes = size_t{jpeg.output_width} * static_cast<size_t>(jpeg.output_components);
  while (jpeg.output_scanline < jpeg.output_height) {
    JSAMPROW row = out + row_bytes * jpeg.output_scanline;
    jpeg_read_scanlines(&jpeg, &row, 1);
  }
  jpeg_finish_decompress(&jpeg);
  jpeg_destroy_decompress(&jpeg);
}

}  // namespace bench
