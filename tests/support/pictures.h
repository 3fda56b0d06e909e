// Picture files for tests, written by the libraries of their formats.
#ifndef TESTS_SUPPORT_PICTURES_H_
#define TESTS_SUPPORT_PICTURES_H_

#include <leptonica/allheaders.h>
#include <sorrelin/platform/types.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace test {

struct PixDeleter {
  void operator()(Pix* pix) const { pixDestroy(&pix); }
};
using PixPtr = std::unique_ptr<Pix, PixDeleter>;

// 0xRRGGBB of the pixel at column x of row y.
using ColourAt = std::function<DWORD(int x, int y)>;

// A pattern that no turning, mirroring or mixing up of channels leaves as it is.
DWORD Motley(int x, int y);

// What is written to a TIFF page beyond its pixels.
struct TiffPage {
  int width = 72;
  int height = 36;
  int bits = 1;
  int samples = 1;
  int photometric = 0;     // PHOTOMETRIC_MINISWHITE
  int compression = 4;     // COMPRESSION_CCITTFAX4
  int orientation = 1;     // ORIENTATION_TOPLEFT
  int fill_order = 1;      // FILLORDER_MSB2LSB
  int rows_per_strip = 0;  // 0: all
  int tile = 0;            // side of the tiles, a multiple of 16; 0: strips
  bool planar = false;     // a plane for each sample
  int unit = 2;            // RESUNIT_INCH
  float x_resolution = 72;
  float y_resolution = 72;  // 0: neither is written
  int extra_sample = -1;    // EXTRASAMPLE_*, or none
  std::vector<DWORD> palette = {};
  std::vector<BYTE> profile = {};
  int subsampling = 1;  // of YCbCr, both ways; without JPEG only 1
};

// Writes a file of pages; `sample(page, x, y, s)` gives the stored value of sample s.
using SampleAt = std::function<unsigned(int page, int x, int y, int s)>;
void WriteTiff(std::filesystem::path const& path, std::vector<TiffPage> const& pages,
               SampleAt const& sample, char const* mode = "w");

// The bytes of a page's strip as they are in the file.
std::vector<BYTE> RawStrip(std::filesystem::path const& path, int page = 0);

struct PngForm {
  int width = 72;
  int height = 36;
  int bits = 8;
  int type = 0;  // PNG_COLOR_TYPE_*
  int x_per_metre = 0;
  int y_per_metre = 0;
  std::vector<DWORD> palette = {};
  std::vector<BYTE> palette_alpha = {};
  std::vector<WORD> key = {};  // the transparent tone or colour
  std::vector<BYTE> profile = {};
  bool interlaced = false;
  std::vector<BYTE> exif = {};  // a block as MakeExif gives it
};

// `sample(x, y, s)` gives the value of sample s.
void WritePng(std::filesystem::path const& path, PngForm const& form,
              std::function<unsigned(int x, int y, int s)> const& sample);

struct JpegForm {
  int width = 72;
  int height = 36;
  int components = 3;
  bool progressive = false;
  bool arithmetic = false;
  bool rgb = false;  // stored as RGB
  bool jfif = true;
  bool adobe = false;
  int unit = 1;  // of JFIF: 1 inch, 2 centimetre, 0 none
  int x_density = 72;
  int y_density = 72;
  std::vector<BYTE> exif = {};  // a block as it is after "Exif\0\0"
  int quality = 95;
  std::vector<BYTE> profile = {};
};

// An ICC profile for colours of so many components: 1, 3, or 4 for inks, whose tables are those of
// RGB. Different `variant`s give different profiles.
std::vector<BYTE> MakeProfile(int components, int variant = 0);

// `sample(x, y, s)` gives the value of component s: grey, RGB, or the four inks as stored.
std::vector<BYTE> MakeJpeg(JpegForm const& form,
                           std::function<unsigned(int x, int y, int s)> const& sample);

// An EXIF block with an orientation and, unless 0, a resolution in dots of `unit` (2 inch, 3
// centimetre).
std::vector<BYTE> MakeExif(int orientation, unsigned x_resolution = 0, unsigned y_resolution = 0,
                           unsigned unit = 2, bool big_endian = false);

// A 32-bit picture.
PixPtr MakeColourPix(int width, int height, ColourAt const& colour);

}  // namespace test

#endif  // TESTS_SUPPORT_PICTURES_H_
