// Picture files for tests.
#include "tests/support/pictures.h"

#include <gtest/gtest.h>
#include <jpeglib.h>
#include <lcms2.h>
#include <png.h>
#include <tiffio.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace test {
namespace {

// Packs samples of any depth of a row, the first one in the highest bits.
class RowPacker {
 public:
  explicit RowPacker(int bits) : bits_(bits) {}
  void Put(unsigned value) {
    for (int bit = bits_ - 1; bit >= 0; --bit) {
      if (count_ % 8 == 0) bytes_.push_back(0);
      unsigned const one = value >> bit & 1u;
      bytes_.back() = static_cast<BYTE>(bytes_.back() | one << (7 - count_ % 8));
      ++count_;
    }
  }
  std::vector<BYTE>& bytes() { return bytes_; }

 private:
  int bits_;
  int count_ = 0;
  std::vector<BYTE> bytes_;
};

void DescribePage(TIFF* tiff, TiffPage const& page) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, page.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, page.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, page.bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, page.samples);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, page.photometric);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, page.compression);
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, page.orientation);
  TIFFSetField(tiff, TIFFTAG_FILLORDER, page.fill_order);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG,
               page.planar ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
  if (page.tile > 0) {
    TIFFSetField(tiff, TIFFTAG_TILEWIDTH, page.tile);
    TIFFSetField(tiff, TIFFTAG_TILELENGTH, page.tile);
  } else {
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP,
                 page.rows_per_strip > 0 ? page.rows_per_strip : page.height);
  }
  if (page.compression == COMPRESSION_JPEG) {
    TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  }
  if (page.photometric == PHOTOMETRIC_YCBCR) {
    TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, page.subsampling, page.subsampling);
  }
  if (!page.profile.empty()) {
    TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<uint32_t>(page.profile.size()),
                 page.profile.data());
  }
  if (page.y_resolution != 0) {
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, static_cast<double>(page.x_resolution));
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, static_cast<double>(page.y_resolution));
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, page.unit);
  }
  if (page.extra_sample >= 0) {
    uint16_t const kind = static_cast<uint16_t>(page.extra_sample);
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
  }
}

void WriteColourMap(TIFF* tiff, TiffPage const& page) {
  if (page.palette.empty()) return;
  size_t const entries = size_t{1} << page.bits;
  std::vector<uint16_t> red(entries), green(entries), blue(entries);
  for (size_t i = 0; i < page.palette.size(); ++i) {
    red[i] = static_cast<uint16_t>((page.palette[i] >> 16 & 0xFF) * 257);
    green[i] = static_cast<uint16_t>((page.palette[i] >> 8 & 0xFF) * 257);
    blue[i] = static_cast<uint16_t>((page.palette[i] & 0xFF) * 257);
  }
  TIFFSetField(tiff, TIFFTAG_COLORMAP, red.data(), green.data(), blue.data());
}

// libtiff takes samples of 16 bits in the machine's order.
void SwapForLibtiff(std::vector<BYTE>& row, int bits) {
  for (size_t i = 0; bits == 16 && i + 1 < row.size(); i += 2) std::swap(row[i], row[i + 1]);
}

// The stored value at column x of row y; 0 beside the page.
using ValueAt = std::function<unsigned(int x, int y, int s)>;

// One plane of `width` pixels from (x, y) on, or with the plane -1 all samples.
std::vector<BYTE> PackedRow(TiffPage const& page, int x, int y, int width, int plane,
                            ValueAt const& value) {
  RowPacker row(page.bits);
  for (int i = x; i < x + width; ++i) {
    for (int s = 0; s < page.samples; ++s) {
      bool const inside = i < page.width && y < page.height;
      if (plane < 0 || plane == s) row.Put(inside ? value(i, y, s) : 0);
    }
  }
  SwapForLibtiff(row.bytes(), page.bits);
  return row.bytes();
}

void WriteTiles(TIFF* tiff, TiffPage const& page, int plane, ValueAt const& value) {
  for (int top = 0; top < page.height; top += page.tile) {
    for (int left = 0; left < page.width; left += page.tile) {
      std::vector<BYTE> tile;
      for (int y = top; y < top + page.tile; ++y) {
        auto const row = PackedRow(page, left, y, page.tile, plane, value);
        tile.insert(tile.end(), row.begin(), row.end());
      }
      ASSERT_GT(
          TIFFWriteTile(tiff, tile.data(), static_cast<uint32_t>(left), static_cast<uint32_t>(top),
                        0, static_cast<uint16_t>(std::max(plane, 0))),
          0);
    }
  }
}

void WriteRows(TIFF* tiff, TiffPage const& page, int plane, ValueAt const& value) {
  for (int y = 0; y < page.height; ++y) {
    auto row = PackedRow(page, 0, y, page.width, plane, value);
    ASSERT_EQ(TIFFWriteScanline(tiff, row.data(), static_cast<uint32_t>(y),
                                static_cast<uint16_t>(std::max(plane, 0))),
              1);
  }
}

struct Compressor {
  jpeg_compress_struct info{};
  jpeg_error_mgr errors{};
  unsigned char* data = nullptr;
  unsigned long size = 0;

  Compressor() {
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    jpeg_mem_dest(&info, &data, &size);
  }
  ~Compressor() {
    jpeg_destroy_compress(&info);
    std::free(data);
  }
};

void SetForm(jpeg_compress_struct& info, JpegForm const& form) {
  info.image_width = static_cast<JDIMENSION>(form.width);
  info.image_height = static_cast<JDIMENSION>(form.height);
  info.input_components = form.components;
  info.in_color_space = form.components == 1   ? JCS_GRAYSCALE
                        : form.components == 3 ? JCS_RGB
                                               : JCS_CMYK;
  jpeg_set_defaults(&info);
  if (form.rgb) jpeg_set_colorspace(&info, JCS_RGB);
  if (form.components == 4) jpeg_set_colorspace(&info, form.rgb ? JCS_CMYK : JCS_YCCK);
  jpeg_set_quality(&info, form.quality, TRUE);
  for (int i = 0; i < form.components; ++i) {
    info.comp_info[i].h_samp_factor = info.comp_info[i].v_samp_factor = 1;
  }
  if (form.progressive) jpeg_simple_progression(&info);
  info.arith_code = form.arithmetic ? TRUE : FALSE;
  info.write_JFIF_header = form.jfif ? TRUE : FALSE;
  info.write_Adobe_marker = form.adobe ? TRUE : FALSE;
  info.density_unit = static_cast<UINT8>(form.unit);
  info.X_density = static_cast<UINT16>(form.x_density);
  info.Y_density = static_cast<UINT16>(form.y_density);
}

void WriteExif(jpeg_compress_struct& info, std::vector<BYTE> const& exif) {
  if (exif.empty()) return;
  std::vector<BYTE> block = {'E', 'x', 'i', 'f', 0, 0};
  block.insert(block.end(), exif.begin(), exif.end());
  jpeg_write_marker(&info, JPEG_APP0 + 1, block.data(), static_cast<unsigned>(block.size()));
}

}  // namespace

DWORD Motley(int x, int y) {
  unsigned const red = static_cast<unsigned>(3 * x + y) & 0xFF;
  unsigned const green = static_cast<unsigned>(x * x + 7 * y) & 0xFF;
  unsigned const blue = static_cast<unsigned>(x * y) & 0xFF;
  return red << 16 | green << 8 | blue;
}

void WriteTiff(std::filesystem::path const& path, std::vector<TiffPage> const& pages,
               SampleAt const& sample, char const* mode) {
  TIFF* const tiff = TIFFOpen(path.string().c_str(), mode);
  ASSERT_NE(tiff, nullptr);
  for (size_t i = 0; i < pages.size(); ++i) {
    TiffPage const& page = pages[i];
    DescribePage(tiff, page);
    WriteColourMap(tiff, page);
    ValueAt const value = [&](int x, int y, int s) { return sample(static_cast<int>(i), x, y, s); };
    auto const write = page.tile > 0 ? WriteTiles : WriteRows;
    for (int plane = 0; plane < (page.planar ? page.samples : 1); ++plane) {
      write(tiff, page, page.planar ? plane : -1, value);
    }
    ASSERT_EQ(TIFFWriteDirectory(tiff), 1);
  }
  TIFFClose(tiff);
}

std::vector<BYTE> RawStrip(std::filesystem::path const& path, int page) {
  TIFF* const tiff = TIFFOpen(path.string().c_str(), "r");
  TIFFSetDirectory(tiff, static_cast<uint16_t>(page));
  std::vector<BYTE> strip(static_cast<size_t>(TIFFRawStripSize(tiff, 0)));
  TIFFReadRawStrip(tiff, 0, strip.data(), static_cast<tmsize_t>(strip.size()));
  TIFFClose(tiff);
  return strip;
}

void WritePng(std::filesystem::path const& path, PngForm const& form,
              std::function<unsigned(int x, int y, int s)> const& sample) {
  std::FILE* const file = std::fopen(path.string().c_str(), "wb");
  ASSERT_NE(file, nullptr);
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file);
  png_set_IHDR(png, info, static_cast<png_uint_32>(form.width),
               static_cast<png_uint_32>(form.height), form.bits, form.type,
               form.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, 0, 0);
  if (!form.profile.empty()) {
    png_set_iCCP(png, info, "profile", 0, form.profile.data(),
                 static_cast<png_uint_32>(form.profile.size()));
  }
  if (!form.exif.empty()) {
    std::vector<BYTE> exif = form.exif;
    png_set_eXIf_1(png, info, static_cast<png_uint_32>(exif.size()), exif.data());
  }
  if (form.x_per_metre != 0) {
    png_set_pHYs(png, info, static_cast<png_uint_32>(form.x_per_metre),
                 static_cast<png_uint_32>(form.y_per_metre), PNG_RESOLUTION_METER);
  }
  std::vector<png_color> colours;
  for (DWORD const c : form.palette) {
    colours.push_back(
        {static_cast<png_byte>(c >> 16), static_cast<png_byte>(c >> 8), static_cast<png_byte>(c)});
  }
  if (!colours.empty()) png_set_PLTE(png, info, colours.data(), static_cast<int>(colours.size()));
  if (!form.palette_alpha.empty()) {
    png_set_tRNS(png, info, form.palette_alpha.data(), static_cast<int>(form.palette_alpha.size()),
                 nullptr);
  }
  if (!form.key.empty()) {
    png_color_16 key{};
    key.gray = key.red = form.key[0];
    key.green = form.key.size() > 1 ? form.key[1] : WORD{0};
    key.blue = form.key.size() > 2 ? form.key[2] : WORD{0};
    png_set_tRNS(png, info, nullptr, 0, &key);
  }
  png_write_info(png, info);
  int const samples = png_get_channels(png, info);
  std::vector<std::vector<BYTE>> rows;
  std::vector<BYTE*> starts;
  for (int y = 0; y < form.height; ++y) {
    RowPacker row(form.bits);
    for (int x = 0; x < form.width; ++x) {
      for (int s = 0; s < samples; ++s) row.Put(sample(x, y, s));
    }
    rows.push_back(row.bytes());
  }
  for (auto& row : rows) starts.push_back(row.data());
  png_write_image(png, starts.data());
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  std::fclose(file);
}

std::vector<BYTE> MakeJpeg(JpegForm const& form,
                           std::function<unsigned(int x, int y, int s)> const& sample) {
  Compressor compressor;
  SetForm(compressor.info, form);
  jpeg_start_compress(&compressor.info, TRUE);
  WriteExif(compressor.info, form.exif);
  if (!form.profile.empty()) {
    jpeg_write_icc_profile(&compressor.info, form.profile.data(),
                           static_cast<unsigned>(form.profile.size()));
  }
  for (int y = 0; y < form.height; ++y) {
    std::vector<BYTE> row;
    for (int x = 0; x < form.width; ++x) {
      for (int s = 0; s < form.components; ++s) row.push_back(static_cast<BYTE>(sample(x, y, s)));
    }
    BYTE* rows = row.data();
    jpeg_write_scanlines(&compressor.info, &rows, 1);
  }
  jpeg_finish_compress(&compressor.info);
  return {compressor.data, compressor.data + compressor.size};
}

std::vector<BYTE> MakeExif(int orientation, unsigned x_resolution, unsigned y_resolution,
                           unsigned unit, bool big_endian) {
  std::vector<BYTE> block;
  auto const put = [&](unsigned value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
      int const shift = 8 * (big_endian ? bytes - 1 - i : i);
      block.push_back(static_cast<BYTE>(value >> shift));
    }
  };
  auto const entry = [&](unsigned tag, unsigned type, unsigned value) {
    put(tag, 2);
    put(type, 2);
    put(1, 4);
    if (type == 3) {
      put(value, 2);
      put(0, 2);
    } else {
      put(value, 4);
    }
  };
  block.push_back(big_endian ? 'M' : 'I');
  block.push_back(big_endian ? 'M' : 'I');
  put(42, 2);
  put(8, 4);
  put(4, 2);
  constexpr unsigned kRationalsAt = 8 + 2 + 4 * 12 + 4;
  entry(0x0112, 3, static_cast<unsigned>(orientation));
  entry(0x011A, 5, kRationalsAt);
  entry(0x011B, 5, kRationalsAt + 8);
  entry(0x0128, 3, unit);
  put(0, 4);
  put(x_resolution, 4);
  put(1, 4);
  put(y_resolution, 4);
  put(1, 4);
  return block;
}

std::vector<BYTE> MakeProfile(int components, int variant) {
  cmsToneCurve* const curve = cmsBuildGamma(nullptr, 1.8 + 0.1 * variant);
  cmsToneCurve* const curves[] = {curve, curve, curve};
  cmsCIExyY const white = {0.3457, 0.3585, 1};
  cmsCIExyYTRIPLE const primaries = {{0.64, 0.33, 1}, {0.30, 0.60, 1}, {0.15, 0.06, 1}};
  cmsHPROFILE const made = components == 1 ? cmsCreateGrayProfile(&white, curve)
                                           : cmsCreateRGBProfile(&white, &primaries, curves);
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(made, nullptr, &size);
  std::vector<BYTE> bytes(size);
  cmsSaveProfileToMem(made, bytes.data(), &size);
  cmsCloseProfile(made);
  cmsFreeToneCurve(curve);
  constexpr size_t kSpaceAt = 16;
  if (components == 4) std::memcpy(bytes.data() + kSpaceAt, "CMYK", 4);
  return bytes;
}

PixPtr MakeColourPix(int width, int height, ColourAt const& colour) {
  PixPtr pix(pixCreate(width, height, 32));
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) pixSetPixel(pix.get(), x, y, colour(x, y) << 8);
  }
  return pix;
}

}  // namespace test
