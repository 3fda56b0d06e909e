// Pictures in, documents made by other programs, pixels out.
#include "tests/foreign/foreign_fixture.h"

#include <png.h>
#include <tiffio.h>
#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <sstream>

namespace test {
namespace {

// A shape without any symmetry, in each depth. Colours are smooth enough for JPEG.
unsigned BitAt(int x, int y) { return x > 3 * y || (x + 2 * y) % 11 == 0 ? 1 : 0; }
unsigned GreyAt(int x, int y) { return static_cast<unsigned>(x + y / 2 + (y > 20 ? 20 : 0)) & 255; }
unsigned IndexAt(int x, int y, int colours) {
  return static_cast<unsigned>((x / 3 + 2 * y) % colours);
}
unsigned ChannelAt(int x, int y, int channel) {
  if (channel == 0) return static_cast<unsigned>(x);
  return static_cast<unsigned>(channel == 1 ? 4 * y : 255 - x);
}

// Black, then shades of red that differ in every channel.
std::vector<DWORD> PaletteOf(DWORD colours) {
  std::vector<DWORD> palette = {0};
  for (DWORD i = 1; i < colours; ++i) {
    palette.push_back((255 - i) << 16 | (i * 5 & 255) << 8 | (i * 11 & 255));
  }
  return palette;
}

void WritePngs(std::filesystem::path const& folder) {
  auto const bits = [](int x, int y, int) { return 1 - BitAt(x, y); };
  WritePng(folder / "bits.png", {.width = kWidth, .height = kHeight, .bits = 1}, bits);
  auto const grey = [](int x, int y, int) { return GreyAt(x, y); };
  WritePng(folder / "grey.png", {.width = kWidth, .height = kHeight}, grey);
  auto const deep = [](int x, int y, int) { return GreyAt(x, y) * 256 + 7; };
  WritePng(folder / "grey16.png", {.width = kWidth, .height = kHeight, .bits = 16}, deep);
  PngForm form = {.width = kWidth, .height = kHeight, .type = PNG_COLOR_TYPE_PALETTE};
  form.palette = PaletteOf(40);
  WritePng(folder / "palette.png", form, [](int x, int y, int) { return IndexAt(x, y, 40); });
  form.bits = 4;
  form.palette = PaletteOf(10);
  WritePng(folder / "palette4.png", form, [](int x, int y, int) { return IndexAt(x, y, 10); });
  form = {.width = kWidth, .height = kHeight, .type = PNG_COLOR_TYPE_RGB};
  WritePng(folder / "colour.png", form, ChannelAt);
  form.width = 200;
  WritePng(folder / "even.png", form, ChannelAt);
  form.type = PNG_COLOR_TYPE_RGB_ALPHA;
  WritePng(folder / "alpha.png", form, ChannelAt);
}

void WriteTiffs(std::filesystem::path const& folder) {
  auto const bits = [](int, int x, int y, int) { return BitAt(x, y); };
  TiffPage page = {.width = kWidth, .height = kHeight};
  WriteTiff(folder / "g4.tif", {page}, bits);
  page.rows_per_strip = 20;
  WriteTiff(folder / "strips.tif", {page}, bits);
  page.rows_per_strip = 0;
  page.compression = COMPRESSION_CCITTFAX3;
  WriteTiff(folder / "g3.tif", {page}, bits);
  page.compression = COMPRESSION_NONE;
  WriteTiff(folder / "bits.tif", {page}, bits);
  page.bits = 8;
  page.photometric = PHOTOMETRIC_MINISBLACK;
  WriteTiff(folder / "grey.tif", {page}, [](int, int x, int y, int) { return GreyAt(x, y); });
  page.samples = 3;
  page.photometric = PHOTOMETRIC_RGB;
  WriteTiff(folder / "colour.tif", {page},
            [](int, int x, int y, int s) { return ChannelAt(x, y, s); });
  page.samples = 1;
  page.photometric = PHOTOMETRIC_PALETTE;
  page.palette = PaletteOf(256);
  WriteTiff(folder / "palette.tif", {page},
            [](int, int x, int y, int) { return IndexAt(x, y, 256); });
}

void WriteJpegs(std::filesystem::path const& folder) {
  JpegForm form = {.width = kWidth, .height = kHeight};
  WriteAll(folder / "colour.jpg", MakeJpeg(form, ChannelAt));
  form.components = 1;
  WriteAll(folder / "grey.jpg", MakeJpeg(form, [](int x, int y, int) { return GreyAt(x, y); }));
  form.components = 4;
  form.jfif = false;
  form.adobe = true;
  WriteAll(folder / "inks.jpg", MakeJpeg(form, ChannelAt));
}

DWORD ColourOf(DibContent const& bitmap, size_t x, size_t y) {
  DWORD const value = bitmap.Pixel(x, y);
  if (bitmap.header.biBitCount == 24) return value;
  BYTE const* const entry = &bitmap.table[4 * value];
  return DWORD{entry[2]} << 16 | DWORD{entry[1]} << 8 | entry[0];
}

Pixels PixelsOf(DibContent const& bitmap) {
  Pixels pixels = {bitmap.header.biWidth, bitmap.header.biHeight, {}};
  for (size_t y = 0; y < static_cast<size_t>(pixels.height); ++y) {
    for (size_t x = 0; x < static_cast<size_t>(pixels.width); ++x) {
      pixels.colours.push_back(ColourOf(bitmap, x, y));
    }
  }
  return pixels;
}

Pixels FromPnm(std::filesystem::path const& path) {
  PnmPicture picture = ReadPnm(path);
  return {picture.width, picture.height, std::move(picture.pixels)};
}

// What the data inflate to; the data themselves if they are not deflated.
std::string Inflated(std::string const& data) {
  std::string out(size_t{1} << 20, '\0');
  uLongf size = out.size();
  int const result = uncompress(reinterpret_cast<Bytef*>(out.data()), &size,
                                reinterpret_cast<Bytef const*>(data.data()), data.size());
  if (result != Z_OK) return data;
  out.resize(size);
  return out;
}

std::string Word(std::string const& line, int column) {
  std::istringstream words(line);
  std::string word;
  for (int i = 0; i < column; ++i) words >> word;
  return word;
}

}  // namespace

Pixels UpsideDown(Pixels pixels) {
  for (int y = 0; y < pixels.height / 2; ++y) {
    auto const top = pixels.colours.begin() + ptrdiff_t{y} * pixels.width;
    auto const low = pixels.colours.begin() + ptrdiff_t{pixels.height - 1 - y} * pixels.width;
    std::swap_ranges(top, top + pixels.width, low);
  }
  return pixels;
}

Pixels Stacked(std::vector<Pixels> const& pictures) {
  Pixels stack = pictures.at(0);
  for (size_t i = 1; i < pictures.size(); ++i) {
    stack.height += pictures[i].height;
    stack.colours.insert(stack.colours.end(), pictures[i].colours.begin(),
                         pictures[i].colours.end());
  }
  return stack;
}

int Difference(Pixels const& a, Pixels const& b) {
  if (a.width != b.width || a.height != b.height || a.colours.size() != b.colours.size()) {
    return kOtherSize;
  }
  int most = 0;
  for (size_t i = 0; i < a.colours.size(); ++i) {
    for (int shift = 0; shift <= 16; shift += 8) {
      int const x = static_cast<int>(a.colours[i] >> shift & 255);
      int const y = static_cast<int>(b.colours[i] >> shift & 255);
      most = std::max(most, std::abs(x - y));
    }
  }
  return most;
}

void ForeignTest::SetUp() {
  WritePngs(directory_.path());
  WriteTiffs(directory_.path());
  WriteJpegs(directory_.path());
}

void ForeignTest::Shell(std::string const& line) const {
  std::string const go = "cd '" + directory_.path().string() + "' && ";
  ProgramResult const result = RunProgram({"sh", "-c", go + line});
  ASSERT_EQ(result.exit_code, 0) << line << "\n" << result.err;
}

ProgramResult ForeignTest::Tool(std::vector<std::string> arguments) const {
  arguments.insert(arguments.begin(), SORRELIN_TOOL);
  return RunProgram(std::move(arguments));
}

std::vector<Pixels> ForeignTest::Witness() const {
  Shell("mkdir witness && pdfimages out.pdf witness/p");
  std::vector<std::filesystem::path> files;
  for (auto const& entry : std::filesystem::directory_iterator(directory_ / "witness")) {
    files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  std::vector<Pixels> pictures;
  for (auto const& file : files) pictures.push_back(FromPnm(file));
  return pictures;
}

Pixels ForeignTest::Source(std::string const& name) const {
  PixPtr const read(pixRead(Path(name).c_str()));
  PixPtr const pix(read == nullptr ? nullptr : pixConvertTo32(read.get()));
  if (pix == nullptr) return {};
  Pixels pixels = {pixGetWidth(pix.get()), pixGetHeight(pix.get()), {}};
  for (int y = 0; y < pixels.height; ++y) {
    for (int x = 0; x < pixels.width; ++x) {
      l_uint32 pixel = 0;
      pixGetPixel(pix.get(), x, y, &pixel);
      pixels.colours.push_back(pixel >> 8);
    }
  }
  return pixels;
}

Pixels ForeignTest::Extracted(std::string const& name) const { return FromPnm(Path(name)); }

LoadedPage ForeignTest::Load(std::string const& name, DWORD page) const {
  auto const session = std::make_unique<CCreatePDF>();
  LoadedPage loaded;
  loaded.opened = session->OpenPDFFile(Path(name).c_str()) != 0;
  if (loaded.opened) {
    session->PDF_SetLastError(PDF_ERROR_NONE);
    Block const bitmap(session->LoadImageFromPDF(page));
    loaded.loaded = bitmap.get() != nullptr;
    if (loaded.loaded) loaded.bitmap = ReadDib(bitmap);
  }
  loaded.error = session->PDF_GetLastError();
  session->ClosePDFFile();
  if (!loaded.loaded) return loaded;
  loaded.pixels = PixelsOf(loaded.bitmap);
  loaded.x_per_metre = loaded.bitmap.header.biXPelsPerMeter;
  return loaded;
}

std::string ForeignTest::Listed(int column) const {
  ProgramResult const list = RunProgram({"pdfimages", "-list", Path("out.pdf")});
  std::istringstream lines(list.out);
  std::string line;
  for (int i = 0; i < 3; ++i) std::getline(lines, line);
  return Word(line, column);
}

std::string ForeignTest::StreamBytes() const {
  ProgramResult const shown =
      RunProgram({"qpdf", "--show-object=" + Listed(11), "--raw-stream-data", Path("out.pdf")});
  EXPECT_EQ(shown.exit_code, 0) << shown.err;
  return Inflated(shown.out);
}

std::string ForeignTest::PagesByPdfinfo(std::string const& name) const {
  ProgramResult const info = RunProgram({"pdfinfo", Path(name)});
  size_t const at = info.out.find("\nPages:");
  return at == std::string::npos ? "" : Word(info.out.substr(at), 2);
}

}  // namespace test
