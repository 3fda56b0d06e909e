// Documents of every kind before outside witnesses: they must find no fault, and show and give back
// the source pixels, exactly or within JPEG's loss.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>

#include "tests/support/dib.h"
#include "tests/support/pnm.h"
#include "tests/support/random_ids.h"
#include "tests/support/run_program.h"
#include "tests/support/session_probe.h"
#include "tests/support/temp_dir.h"

namespace {

constexpr LONG k72Dpi = 2835;
constexpr LONG kWidth = 61;
constexpr LONG kHeight = 47;

// Pixel values of the test picture by depth: a shape without any symmetry, smooth at 24 bits.
DWORD PixelAt(int bits, LONG x, LONG y) {
  if (bits == 1) return x * 2 > y * 3 || (x + y) % 7 == 0 ? 1 : 0;
  if (bits == 8) return static_cast<DWORD>(x * 4 + (y > 20 ? 3 : 0));
  return static_cast<DWORD>(x * 4) << 16 | static_cast<DWORD>(y * 5) << 8 |
         static_cast<DWORD>(255 - x * 2 - y);
}

std::vector<RGBQUAD> PaletteOf(int bits, bool reversed) {
  if (bits == 1 && reversed) return {test::kWhite, test::kBlack};
  std::vector<RGBQUAD> palette;
  for (int i = 0; bits == 8 && i < 256; ++i) {
    palette.push_back(
        {static_cast<BYTE>(255 - i), static_cast<BYTE>(i / 2), static_cast<BYTE>(i), 0});
  }
  return palette;
}

struct Kind {
  char const* name;
  WORD bits;
  DWORD compression;
  int quality;
  bool reversed_palette;
  int tolerance;  // in each component
};

void PrintTo(Kind const& kind, std::ostream* out) { *out << kind.name; }

constexpr Kind kKinds[] = {
    {"RawBilevel", 1, PDF_COMPRESSION_NONE, 0, false, 0},
    {"RawBilevelWhiteFirst", 1, PDF_COMPRESSION_NONE, 0, true, 0},
    {"FlateBilevel", 1, PDF_COMPRESSION_FLATE, 6, false, 0},
    {"Group4", 1, PDF_COMPRESSION_CCITT, 0, false, 0},
    {"Group4WhiteFirst", 1, PDF_COMPRESSION_CCITT, 0, true, 0},
    {"RawIndexed", 8, PDF_COMPRESSION_NONE, 0, false, 0},
    {"FlateIndexed", 8, PDF_COMPRESSION_FLATE, 9, false, 0},
    {"RunLengthIndexed", 8, PDF_COMPRESSION_RUN_LENGTH, 0, false, 0},
    {"JpegIndexed", 8, PDF_COMPRESSION_JPEG, 100, false, 6},
    {"RawColor", 24, PDF_COMPRESSION_NONE, 0, false, 0},
    {"FlateColor", 24, PDF_COMPRESSION_FLATE, 1, false, 0},
    {"JpegColor", 24, PDF_COMPRESSION_JPEG, 95, false, 12},
};

class WrittenDocuments : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override {
    Kind const& kind = GetParam();
    test::Block const dib = Bitmap();
    auto const session = std::make_unique<CCreatePDF>();
    ASSERT_EQ(session->CreatePDF(Path("a.pdf").c_str()), 1);
    for (int page = 0; page < 2; ++page) {
      ASSERT_EQ(session->SaveDIBAsColorPDFPage(dib, Library(), kind.compression, kind.quality), 1)
          << session->PDF_GetLastError();
    }
    ASSERT_EQ(session->FinishPDF(), 1);
  }

  static test::Block Bitmap() {
    Kind const& kind = GetParam();
    return test::MakeDib({.width = kWidth,
                          .height = kHeight,
                          .bits = kind.bits,
                          .x_per_metre = k72Dpi,
                          .palette = PaletteOf(kind.bits, kind.reversed_palette)},
                         [&](LONG x, LONG y) { return PixelAt(kind.bits, x, y); });
  }
  static char const* Library() { return GetParam().bits == 1 ? CADWICK : RENNICK; }

  std::string Path(std::string const& name) const { return (directory_ / name).string(); }

  void ExpectSound(std::string const& name) const {
    test::ProgramResult const result = test::RunProgram({"qpdf", "--check", Path(name)});
    std::istringstream remarks(result.err);
    for (std::string line; std::getline(remarks, line);) {
      EXPECT_TRUE(
          line.ends_with("duplicated key /Columns; last occurrence overrides earlier ones") ||
          line == "qpdf: operation succeeded with warnings")
          << line;
    }
    EXPECT_EQ(result.exit_code, GetParam().compression == PDF_COMPRESSION_CCITT ? 3 : 0)
        << result.err;
  }

  // What poppler and MuPDF show of a page.
  std::string Shown(std::string const& name, std::string const& page) const {
    test::RunProgram({"pdftoppm", "-r", "50", "-singlefile", "-f", page, "-l", page, Path(name),
                      Path("poppler")});
    test::RunProgram(
        {"mutool", "draw", "-q", "-r", "50", "-o", Path("mupdf.ppm"), Path(name), page});
    std::string shown;
    for (char const* const picture : {"poppler.ppm", "mupdf.ppm"}) {
      std::vector<BYTE> const bytes = test::ReadAll(Path(picture));
      EXPECT_GT(bytes.size(), 1000u) << picture;
      shown.append(bytes.begin(), bytes.end());
    }
    return shown;
  }

  static DWORD ExpectedColour(LONG x, LONG y) {
    Kind const& kind = GetParam();
    DWORD const value = PixelAt(kind.bits, x, y);
    if (kind.bits == 24) return value;
    if (kind.bits == 1) return (value != 0) != kind.reversed_palette ? 0xFFFFFF : 0x000000;
    return value << 16 | (value / 2) << 8 | (255 - value);
  }

  // Runs a program and compares the picture that it wrote, the middle of each pixel where it shows
  // one as `scale` by `scale`.
  void ExpectPicture(std::vector<std::string> const& command, std::string const& file,
                     int scale = 1) const {
    test::ProgramResult const result = test::RunProgram(command);
    ASSERT_EQ(result.exit_code, 0) << command[0] << ": " << result.err;
    test::PnmPicture const picture = test::ReadPnm(Path(file));
    ASSERT_EQ(picture.width, kWidth * scale) << command[0];
    ASSERT_EQ(picture.height, kHeight * scale) << command[0];
    ASSERT_EQ(picture.pixels.size(), static_cast<size_t>(picture.width * picture.height));
    int wrong = 0;
    for (LONG y = 0; y < kHeight; ++y) {
      for (LONG x = 0; x < kWidth; ++x) {
        LONG const at = (y * scale + scale / 2) * picture.width + x * scale + scale / 2;
        if (!IsNear(picture.pixels[static_cast<size_t>(at)], ExpectedColour(x, y))) ++wrong;
      }
    }
    EXPECT_EQ(wrong, 0) << "pixels differ in what " << command[0] << " gives";
  }

 private:
  static bool IsNear(DWORD a, DWORD b) {
    for (int shift = 0; shift <= 16; shift += 8) {
      int const difference =
          static_cast<int>(a >> shift & 255) - static_cast<int>(b >> shift & 255);
      if (std::abs(difference) > GetParam().tolerance) return false;
    }
    return true;
  }

  test::TempDir directory_;
};

INSTANTIATE_TEST_SUITE_P(Kinds, WrittenDocuments, testing::ValuesIn(kKinds),
                         [](auto const& row) { return std::string(row.param.name); });

// Kept: /Columns is twice in the parameters of Group 4, and that is all that qpdf remarks.
TEST_P(WrittenDocuments, PassQpdfsCheck) { ExpectSound("a.pdf"); }

// Poppler widens pictures by up to a pixel and smooths them below four times their size.
TEST_P(WrittenDocuments, AreShownByPoppler) {
  ExpectPicture({"pdftoppm", "-r", "576", "-singlefile", "-f", "2", Path("a.pdf"), Path("page")},
                "page.ppm", 8);
}

TEST_P(WrittenDocuments, AreShownByMuPdf) {
  ExpectPicture(
      {"mutool", "draw", "-q", "-r", "72", "-c", "rgb", "-o", Path("page.ppm"), Path("a.pdf"), "2"},
      "page.ppm");
}

TEST_P(WrittenDocuments, AreShownByGhostscript) {
  ExpectPicture({"gs", "-q", "-dBATCH", "-dNOPAUSE", "-dSAFER", "-sDEVICE=ppmraw", "-r72",
                 "-dLastPage=1", "-o", Path("page.ppm"), Path("a.pdf")},
                "page.ppm");
}

// pdfimages gives the samples of bilevel images without regard to /Decode, and coded JPEG data as
// they are; what it decodes must be the source.
TEST_P(WrittenDocuments, GiveTheirImagesToPdfimages) {
  Kind const& kind = GetParam();
  std::string const suffix = kind.bits == 1 ? ".pbm" : ".ppm";
  ExpectPicture({"pdfimages", "-l", "1", Path("a.pdf"), Path("image")}, "image-000" + suffix);
}

// Two pages of Ghostscript's stay as they were when one of ours comes after them, twice.
TEST_P(WrittenDocuments, AreRightBehindThePagesOfAnotherProgram) {
  Kind const& kind = GetParam();
  test::WriteByGhostscript(
      Path("b.pdf"),
      {"-c", "9 9 moveto 200 300 lineto stroke showpage 9 9 400 90 rectfill showpage"});
  std::string const first = Shown("b.pdf", "1"), second = Shown("b.pdf", "2");
  ASSERT_NE(first, second);
  for (char const* const page : {"3", "4"}) {
    ASSERT_EQ(pdf_SaveDIBToPDF(Path("b.pdf").c_str(), Bitmap(), Library(), kind.compression,
                               kind.quality),
              0u);
    ExpectSound("b.pdf");
    ExpectPicture({"mutool", "draw", "-q", "-r", "72", "-c", "rgb", "-o", Path("page.ppm"),
                   Path("b.pdf"), page},
                  "page.ppm");
    ExpectPicture({"pdftoppm", "-r", "576", "-singlefile", "-f", page, Path("b.pdf"), Path("page")},
                  "page.ppm", 8);
  }
  EXPECT_EQ(Shown("b.pdf", "1"), first);
  EXPECT_EQ(Shown("b.pdf", "2"), second);
  // Our own reader agrees, with the picture as it is in a document of our own.
  EXPECT_EQ(GetNumberOfPagesInPDFFile(Path("b.pdf").c_str()), 4u);
  test::Block const ours(pdf_LoadPDFIntoDIB(Path("a.pdf").c_str(), 1));
  test::Block const added(pdf_LoadPDFIntoDIB(Path("b.pdf").c_str(), 3));
  EXPECT_EQ(added.Content(), ours.Content());
  EXPECT_GT(added.Content().size(), 40u);
}

}  // namespace
