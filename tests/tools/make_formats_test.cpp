// Every kind of picture becomes a page that shows its pixels.
#include <png.h>
#include <tiffio.h>

#include "tests/tools/make_fixture.h"

namespace test {
namespace {

constexpr int kWidth = 72;
constexpr int kHeight = 36;
constexpr int kPerMetre72 = 2835;

DWORD Grey(unsigned tone) { return tone << 16 | tone << 8 | tone; }
unsigned Channel(DWORD colour, int s) { return colour >> (16 - 8 * s) & 0xFF; }
unsigned ToneAt(int x, int y) { return static_cast<unsigned>(3 * x + 5 * y) & 0xFF; }
bool InkAt(int x, int y) { return (x * x + 3 * y) % 7 < 2; }
DWORD InkColour(int x, int y) { return InkAt(x, y) ? 0x000000 : 0xFFFFFF; }
unsigned OnWhite(unsigned value, unsigned alpha) {
  return (value * alpha + 255 * (255 - alpha) + 127) / 255;
}
DWORD OnWhiteColour(DWORD colour, unsigned alpha) {
  return OnWhite(Channel(colour, 0), alpha) << 16 | OnWhite(Channel(colour, 1), alpha) << 8 |
         OnWhite(Channel(colour, 2), alpha);
}

using MakeFormats = MakeTest;

PngForm Png(int bits, int type) {
  PngForm form;
  form.bits = bits;
  form.type = type;
  form.x_per_metre = form.y_per_metre = kPerMetre72;
  return form;
}

TiffPage Tiff(int bits, int samples, int photometric, int compression = COMPRESSION_NONE) {
  TiffPage page;
  page.bits = bits;
  page.samples = samples;
  page.photometric = photometric;
  page.compression = compression;
  return page;
}

TEST_F(MakeFormats, BilevelPngKeepsItsBits) {
  WritePng(Path("a.png"), Png(1, PNG_COLOR_TYPE_GRAY),
           [](int x, int y, int) { return InkAt(x, y) ? 0u : 1u; });
  MakeFrom("a.png");
  EXPECT_TRUE(DocumentHas("/BitsPerComponent 1\n/ColorSpace /DeviceGray"));
  EXPECT_TRUE(DocumentHas("/Predictor 15"));
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 72 36]"));
  ExpectPage(kWidth, kHeight, InkColour);
}

TEST_F(MakeFormats, BilevelWidthThatFillsNoByteKeepsItsEdge) {
  PngForm form = Png(1, PNG_COLOR_TYPE_GRAY);
  form.width = 75;
  WritePng(Path("a.png"), form, [](int x, int, int) { return x == 74 ? 0u : 1u; });
  for (std::string const kind : {"g4", "flate", "none"}) {
    MakeFrom("a.png", {"--force", "--compression", kind});
    ExpectPage(75, kHeight, [](int x, int) { return x == 74 ? 0u : 0xFFFFFFu; });
  }
}

TEST_F(MakeFormats, TwoBitGreyKeepsItsDepth) {
  WritePng(Path("a.png"), Png(2, PNG_COLOR_TYPE_GRAY),
           [](int x, int y, int) { return static_cast<unsigned>(x + y) % 4; });
  MakeFrom("a.png");
  EXPECT_TRUE(DocumentHas("/Filter /FlateDecode"));
  EXPECT_TRUE(DocumentHas("/BitsPerComponent 2"));
  ExpectPage(kWidth, kHeight,
             [](int x, int y) { return Grey(static_cast<unsigned>(x + y) % 4 * 85); });
}

TEST_F(MakeFormats, FourBitGreyKeepsItsDepth) {
  WritePng(Path("a.png"), Png(4, PNG_COLOR_TYPE_GRAY),
           [](int x, int y, int) { return static_cast<unsigned>(x + y) % 16; });
  MakeFrom("a.png");
  ExpectPage(kWidth, kHeight,
             [](int x, int y) { return Grey(static_cast<unsigned>(x + y) % 16 * 17); });
}

TEST_F(MakeFormats, EightBitGreyHasNoPalette) {
  WritePng(Path("a.png"), Png(8, PNG_COLOR_TYPE_GRAY),
           [](int x, int y, int) { return ToneAt(x, y); });
  MakeFrom("a.png");
  EXPECT_TRUE(DocumentHas("/ColorSpace /DeviceGray"));
  ExpectPage(kWidth, kHeight, [](int x, int y) { return Grey(ToneAt(x, y)); });
}

TEST_F(MakeFormats, SixteenBitGreyKeepsAllItsBits) {
  WritePng(Path("a.png"), Png(16, PNG_COLOR_TYPE_GRAY),
           [](int x, int y, int) { return ToneAt(x, y) << 8 | 0x80; });
  MakeFrom("a.png");
  EXPECT_TRUE(DocumentHas("/BitsPerComponent 16"));
  ExpectPage(kWidth, kHeight, [](int x, int y) { return Grey(ToneAt(x, y)); });
}

TEST_F(MakeFormats, TrueColourPngHas24Bits) {
  WritePng(Path("a.png"), Png(8, PNG_COLOR_TYPE_RGB),
           [](int x, int y, int s) { return Channel(Motley(x, y), s); });
  MakeFrom("a.png");
  EXPECT_TRUE(DocumentHas("/ColorSpace /DeviceRGB"));
  EXPECT_TRUE(DocumentHas("/Filter /FlateDecode"));
  ExpectPage(kWidth, kHeight, Motley);
}

TEST_F(MakeFormats, SixteenBitColourKeepsItsHighBytes) {
  WritePng(Path("a.png"), Png(16, PNG_COLOR_TYPE_RGB),
           [](int x, int y, int s) { return Channel(Motley(x, y), s) << 8 | 0x7F; });
  MakeFrom("a.png");
  ExpectPage(kWidth, kHeight, Motley);
}

TEST_F(MakeFormats, AlphaIsLaidOnWhite) {
  WritePng(Path("a.png"), Png(8, PNG_COLOR_TYPE_RGB_ALPHA),
           [](int x, int y, int s) { return s == 3 ? ToneAt(y, x) : Channel(Motley(x, y), s); });
  MakeFrom("a.png");
  ExpectPage(kWidth, kHeight,
             [](int x, int y) { return OnWhiteColour(Motley(x, y), ToneAt(y, x)); });
}

TEST_F(MakeFormats, GreyWithAlphaIsLaidOnWhite) {
  WritePng(Path("a.png"), Png(8, PNG_COLOR_TYPE_GRAY_ALPHA),
           [](int x, int y, int s) { return s == 1 ? ToneAt(y, x) : ToneAt(x, y); });
  MakeFrom("a.png");
  ExpectPage(kWidth, kHeight,
             [](int x, int y) { return Grey(OnWhite(ToneAt(x, y), ToneAt(y, x))); });
}

TEST_F(MakeFormats, TransparentGreyIsWhiteAndTheRestStays) {
  for (int const bits : {1, 2, 4, 8}) {
    PngForm form = Png(bits, PNG_COLOR_TYPE_GRAY);
    form.key = {0};
    unsigned const top = (1u << bits) - 1;
    WritePng(Path("a.png"), form,
             [top](int x, int y, int) { return static_cast<unsigned>(x + y) % (top + 1); });
    MakeFrom("a.png", {"--force"});
    ExpectPage(kWidth, kHeight, [top](int x, int y) {
      unsigned const value = static_cast<unsigned>(x + y) % (top + 1);
      return value == 0 ? 0xFFFFFF : Grey(value * 255 / top);
    });
  }
}

TEST_F(MakeFormats, TransparentColourIsWhite) {
  PngForm form = Png(8, PNG_COLOR_TYPE_RGB);
  form.key = {10, 20, 30};
  WritePng(Path("a.png"), form, [](int x, int y, int s) {
    return x % 3 == 0 ? static_cast<unsigned>(10 * (s + 1)) : Channel(Motley(x, y), s);
  });
  MakeFrom("a.png");
  ExpectPage(kWidth, kHeight, [](int x, int y) { return x % 3 == 0 ? 0xFFFFFF : Motley(x, y); });
}

TEST_F(MakeFormats, PalettesOfAnyDepthStayPalettes) {
  for (int const bits : {1, 2, 4, 8}) {
    PngForm form = Png(bits, PNG_COLOR_TYPE_PALETTE);
    int const entries = std::min(1 << bits, 200);
    for (int i = 0; i < entries; ++i) form.palette.push_back(Motley(i + 1, 2 * i));
    WritePng(Path("a.png"), form,
             [entries](int x, int y, int) { return static_cast<unsigned>((x + y) % entries); });
    MakeFrom("a.png", {"--force"});
    EXPECT_TRUE(DocumentHas("/Indexed")) << bits;
    ExpectPage(kWidth, kHeight,
               [&](int x, int y) { return form.palette[static_cast<size_t>((x + y) % entries)]; });
  }
}

TEST_F(MakeFormats, TransparentPaletteIsLaidOnWhiteAndStaysAPalette) {
  PngForm form = Png(8, PNG_COLOR_TYPE_PALETTE);
  form.palette = {0x102030, 0xA0B0C0, 0x506070};
  form.palette_alpha = {0, 128, 255};
  WritePng(Path("a.png"), form,
           [](int x, int y, int) { return static_cast<unsigned>((x + y) % 3); });
  MakeFrom("a.png");
  EXPECT_TRUE(DocumentHas("/Indexed"));
  ExpectPage(kWidth, kHeight, [&](int x, int y) {
    size_t const i = static_cast<size_t>((x + y) % 3);
    return OnWhiteColour(form.palette[i], form.palette_alpha[i]);
  });
}

TEST_F(MakeFormats, PaletteOfBlackAndWhiteIsBilevelInEitherOrder) {
  for (bool const black_first : {true, false}) {
    PngForm form = Png(1, PNG_COLOR_TYPE_PALETTE);
    form.palette = {black_first ? 0x000000u : 0xFFFFFFu, black_first ? 0xFFFFFFu : 0x000000u};
    WritePng(Path("a.png"), form,
             [=](int x, int y, int) { return InkAt(x, y) == black_first ? 0u : 1u; });
    MakeFrom("a.png", {"--force", "--compression", "g4"});
    EXPECT_TRUE(DocumentHas("/Filter /CCITTFaxDecode"));
    ExpectPage(kWidth, kHeight, InkColour);
  }
}

TEST_F(MakeFormats, TiffGreysOfAnyDepthAndPolarityShowTheirTones) {
  for (int const photometric : {PHOTOMETRIC_MINISWHITE, PHOTOMETRIC_MINISBLACK}) {
    for (int const bits : {1, 2, 4, 8, 16}) {
      unsigned const top = (1u << bits) - 1;
      auto const value = [=](int x, int y) { return static_cast<unsigned>((x + y) * 257) & top; };
      WriteTiff(Path("a.tif"), {Tiff(bits, 1, photometric)},
                [&](int, int x, int y, int) { return value(x, y); });
      MakeFrom("a.tif", {"--force"});
      ExpectPage(kWidth, kHeight, [&](int x, int y) {
        unsigned const stored =
            photometric == PHOTOMETRIC_MINISWHITE ? top - value(x, y) : value(x, y);
        return Grey(bits == 16 ? stored >> 8 : stored * 255 / top);
      });
    }
  }
}

TEST_F(MakeFormats, TiffColourAndPaletteShowTheirColours) {
  WriteTiff(Path("a.tif"), {Tiff(8, 3, PHOTOMETRIC_RGB, COMPRESSION_LZW)},
            [](int, int x, int y, int s) { return Channel(Motley(x, y), s); });
  MakeFrom("a.tif");
  ExpectPage(kWidth, kHeight, Motley);
  TiffPage page = Tiff(4, 1, PHOTOMETRIC_PALETTE);
  for (int i = 0; i < 16; ++i) page.palette.push_back(Motley(i, i));
  WriteTiff(Path("b.tif"), {page},
            [](int, int x, int y, int) { return static_cast<unsigned>(x + y) % 16; });
  MakeFrom("b.tif", {"--force"});
  EXPECT_TRUE(DocumentHas("/Indexed"));
  ExpectPage(kWidth, kHeight, [](int x, int y) { return Motley((x + y) % 16, (x + y) % 16); });
}

TEST_F(MakeFormats, BilevelTiffWithColoursKeepsThem) {
  TiffPage page = Tiff(1, 1, PHOTOMETRIC_PALETTE);
  page.palette = {0xC00000, 0x0000C0};
  WriteTiff(Path("a.tif"), {page}, [](int, int x, int y, int) { return InkAt(x, y) ? 0u : 1u; });
  MakeFrom("a.tif");
  EXPECT_TRUE(DocumentHas("/Indexed"));
  ExpectPage(kWidth, kHeight, [](int x, int y) { return InkAt(x, y) ? 0xC00000 : 0x0000C0; });
}

TEST_F(MakeFormats, TiffAlphaIsLaidOnWhiteWhetherScaledOrNot) {
  TiffPage page = Tiff(8, 4, PHOTOMETRIC_RGB);
  page.extra_sample = EXTRASAMPLE_UNASSALPHA;
  WriteTiff(Path("a.tif"), {page},
            [](int, int x, int y, int s) { return s == 3 ? 128u : Channel(Motley(x, y), s); });
  MakeFrom("a.tif");
  ExpectPage(
      kWidth, kHeight, [](int x, int y) { return OnWhiteColour(Motley(x, y), 128); }, 1);
  page.extra_sample = EXTRASAMPLE_ASSOCALPHA;
  WriteTiff(Path("a.tif"), {page},
            [](int, int x, int, int s) { return s == 3 ? 128u : static_cast<unsigned>(x); });
  MakeFrom("a.tif", {"--force"});
  ExpectPage(kWidth, kHeight, [](int x, int) { return Grey(static_cast<unsigned>(x) + 127); });
}

// The upright colour of a stored pixel, in one of the eight ways to store a picture.
DWORD UprightMotley(int orientation, int x, int y) {
  bool const right = orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7;
  bool const bottom = orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8;
  int const shown_x = orientation >= 5 ? y : x, shown_y = orientation >= 5 ? x : y;
  return Motley(right ? kWidth - 1 - shown_x : shown_x, bottom ? kHeight - 1 - shown_y : shown_y);
}

// A page that is stored in one of the eight ways, in grey or colours of these bits.
void WriteTurned(std::string const& path, int orientation, TiffPage page) {
  page.orientation = orientation;
  page.width = orientation >= 5 ? kHeight : kWidth;
  page.height = orientation >= 5 ? kWidth : kHeight;
  WriteTiff(path, {page}, [&](int, int x, int y, int s) {
    unsigned const value = Channel(UprightMotley(orientation, x, y), s);
    return page.bits == 16 ? value * 257 : value;
  });
}

TEST_F(MakeFormats, TiffOrientationIsApplied) {
  for (int orientation = 1; orientation <= 8; ++orientation) {
    for (int const tile : {0, 16}) {
      for (int const samples : {1, 3}) {
        TiffPage page = Tiff(8, samples, samples == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
        page.tile = tile;
        WriteTurned(Path("a.tif"), orientation, page);
        MakeFrom("a.tif", {"--force"});
        EXPECT_TRUE(DocumentHas("/MediaBox [0 0 72 36]")) << orientation;
        ExpectPage(kWidth, kHeight, [&](int x, int y) {
          return samples == 3 ? Motley(x, y) : Grey(Channel(Motley(x, y), 0));
        });
      }
    }
  }
}

TEST_F(MakeFormats, TiffOrientationIsAppliedToDeepColoursAndPlainPages) {
  for (int orientation = 1; orientation <= 8; ++orientation) {
    for (int const bits : {8, 16}) {
      WriteTurned(Path("a.tif"), orientation, Tiff(bits, 3, PHOTOMETRIC_RGB));
      for (char const* const option : {"--verbose", "--plain"}) {
        Make({Out(), Path("a.tif"), "--force", option});
        ExpectPage(kWidth, kHeight, Motley);
      }
    }
  }
}

// Stored data stay as they are, and others are turned in whatever form they are decoded to.
TEST_F(MakeFormats, ExifOrientationOfPngIsApplied) {
  for (int orientation = 1; orientation <= 8; ++orientation) {
    for (auto const& [bits, interlaced] : {std::pair{8, false}, {8, true}, {16, true}}) {
      PngForm form = {orientation >= 5 ? kHeight : kWidth,
                      orientation >= 5 ? kWidth : kHeight,
                      bits,
                      PNG_COLOR_TYPE_RGB,
                      2835,
                      2835};
      form.interlaced = interlaced;
      form.exif = MakeExif(orientation);
      WritePng(Path("a.png"), form, [&](int x, int y, int s) {
        return Channel(UprightMotley(orientation, x, y), s) * (bits == 16 ? 257u : 1u);
      });
      Make({Out(), Path("a.png"), "--force"});
      EXPECT_TRUE(DocumentHas("/MediaBox [0 0 72 36]")) << orientation;
      ExpectPage(kWidth, kHeight, Motley);
    }
  }
}

TEST_F(MakeFormats, PagesOfATiffFileAreAllWrittenInOrder) {
  std::vector<TiffPage> pages(3, Tiff(8, 1, PHOTOMETRIC_MINISBLACK));
  pages[1] = Tiff(1, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_PACKBITS);
  WriteTiff(Path("a.tif"), pages, [](int page, int x, int y, int) {
    return page == 1 ? (InkAt(x, y) ? 0u : 1u) : ToneAt(x + 40 * page, y);
  });
  MakeFrom("a.tif");
  EXPECT_EQ(PageCount(), 3);
  ExpectPage(
      kWidth, kHeight, [](int x, int y) { return Grey(ToneAt(x, y)); }, 0, 1);
  ExpectPage(kWidth, kHeight, InkColour, 0, 2);
  ExpectPage(
      kWidth, kHeight, [](int x, int y) { return Grey(ToneAt(x + 80, y)); }, 0, 3);
}

// Those that lose nothing.
TEST_F(MakeFormats, TiffInEveryCodingShowsItsColours) {
  for (int const compression :
       {COMPRESSION_NONE, COMPRESSION_PACKBITS, COMPRESSION_LZW, COMPRESSION_DEFLATE,
        COMPRESSION_ADOBE_DEFLATE, COMPRESSION_LZMA, COMPRESSION_ZSTD, COMPRESSION_LERC}) {
    SCOPED_TRACE(compression);
    WriteTiff(Path("a.tif"), {Tiff(8, 3, PHOTOMETRIC_RGB, compression)},
              [](int, int x, int y, int s) { return Channel(Motley(x, y), s); });
    MakeFrom("a.tif", {"--force"});
    ExpectPage(kWidth, kHeight, Motley);
  }
}

// There is nothing of it to keep.
TEST_F(MakeFormats, TiffInAnUnknownCodingIsNamed) {
  WriteTiff(Path("a.tif"), {Tiff(8, 1, PHOTOMETRIC_MINISBLACK)},
            [](int, int, int, int) { return 0u; });
  std::vector<BYTE> bytes = ReadAll(Path("a.tif"));
  std::vector<BYTE> const entry = {3, 1, 3, 0, 1, 0, 0, 0, 1, 0};  // Compression, SHORT, 1, none
  auto const at = std::search(bytes.begin(), bytes.end(), entry.begin(), entry.end());
  ASSERT_NE(at, bytes.end());
  at[8] = at[9] = 0xFD;
  WriteAll(Path("a.tif"), bytes);
  for (std::string const option : {"--quiet", "--keep-damaged"}) {
    ProgramResult const result = Make({Out(), Path("a.tif"), option});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, ::testing::HasSubstr("a.tif: cannot be decoded: it is of a kind"));
    EXPECT_FALSE(std::filesystem::exists(Out()));
  }
}

TEST_F(MakeFormats, TiffInTilesOrPlanesShowsItsColours) {
  for (auto const& [tile, planar] :
       {std::pair(32, false), std::pair(0, true), std::pair(32, true)}) {
    TiffPage page = Tiff(8, 3, PHOTOMETRIC_RGB, COMPRESSION_LZW);
    page.tile = tile;
    page.planar = planar;
    WriteTiff(Path("a.tif"), {page},
              [](int, int x, int y, int s) { return Channel(Motley(x, y), s); });
    MakeFrom("a.tif", {"--force"});
    EXPECT_TRUE(DocumentHas("/MediaBox [0 0 72 36]"));
    ExpectPage(kWidth, kHeight, Motley);
  }
}

TEST_F(MakeFormats, BilevelTiffInTilesStaysBilevel) {
  for (int photometric : {PHOTOMETRIC_MINISWHITE, PHOTOMETRIC_MINISBLACK}) {
    for (int compression : {COMPRESSION_CCITTFAX4, COMPRESSION_LZW}) {
      TiffPage page = Tiff(1, 1, photometric, compression);
      page.tile = 32;
      unsigned const ink = photometric == PHOTOMETRIC_MINISWHITE ? 1 : 0;
      WriteTiff(Path("a.tif"), {page},
                [&](int, int x, int y, int) { return InkAt(x, y) ? ink : 1 - ink; });
      MakeFrom("a.tif", {"--force"});
      EXPECT_TRUE(DocumentHas("/BitsPerComponent 1\n"));
      ExpectPage(kWidth, kHeight, InkColour);
    }
  }
}

TEST_F(MakeFormats, GreyAndPaletteTiffInTilesKeepTheirForm) {
  TiffPage grey = Tiff(8, 1, PHOTOMETRIC_MINISWHITE);
  TiffPage palette = Tiff(4, 1, PHOTOMETRIC_PALETTE);
  for (int i = 0; i < 16; ++i) palette.palette.push_back(Motley(i, i));
  grey.tile = palette.tile = 16;
  WriteTiff(Path("a.tif"), {grey, palette}, [](int page, int x, int y, int) {
    return page == 0 ? ToneAt(x, y) : static_cast<unsigned>(x + y) % 16;
  });
  MakeFrom("a.tif");
  EXPECT_EQ(CountOf("/Indexed"), 1);
  EXPECT_TRUE(DocumentHas("/BitsPerComponent 4"));
  ExpectPage(kWidth, kHeight, [](int x, int y) { return Grey(255 - ToneAt(x, y)); });
  ExpectPage(
      kWidth, kHeight, [](int x, int y) { return Motley((x + y) % 16, (x + y) % 16); }, 0, 2);
}

TEST_F(MakeFormats, AlphaOfTiffInPlanesIsLaidOnWhite) {
  TiffPage page = Tiff(8, 4, PHOTOMETRIC_RGB);
  page.planar = true;
  page.extra_sample = EXTRASAMPLE_UNASSALPHA;
  WriteTiff(Path("a.tif"), {page},
            [](int, int x, int y, int s) { return s == 3 ? 128u : Channel(Motley(x, y), s); });
  MakeFrom("a.tif");
  ExpectPage(
      kWidth, kHeight, [](int x, int y) { return OnWhiteColour(Motley(x, y), 128); }, 1);
}

TEST_F(MakeFormats, BigTiffIsTiff) {
  WriteTiff(
      Path("a.tif"), {Tiff(8, 1, PHOTOMETRIC_MINISBLACK)},
      [](int, int x, int y, int) { return ToneAt(x, y); }, "w8");
  MakeFrom("a.tif");
  ExpectPage(kWidth, kHeight, [](int x, int y) { return Grey(ToneAt(x, y)); });
}

TEST_F(MakeFormats, JpegInsideTiffStaysJpeg) {
  TiffPage page = Tiff(8, 3, PHOTOMETRIC_YCBCR, COMPRESSION_JPEG);
  page.width = 80;
  page.height = 48;
  WriteTiff(Path("a.tif"), {page},
            [](int, int x, int y, int) { return static_cast<unsigned>(x + y); });
  MakeFrom("a.tif");
  EXPECT_TRUE(DocumentHas("/Filter /DCTDecode"));
  ExpectPage(
      80, 48, [](int x, int y) { return Grey(static_cast<unsigned>(x + y)); }, 6);
}

TEST_F(MakeFormats, JpegPlanesOfTiffAreCodedAsJpegAgainAndThatIsSaid) {
  TiffPage page = Tiff(8, 3, PHOTOMETRIC_RGB, COMPRESSION_JPEG);
  page.width = 80;
  page.height = 48;
  page.planar = true;
  WriteTiff(Path("a.tif"), {page},
            [](int, int x, int y, int s) { return static_cast<unsigned>(x + y + 40 * s); });
  ProgramResult const result = Make({Out(), Path("a.tif")});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.err, "sorrelin: JPEG data coded anew: page 1\n");
  EXPECT_TRUE(DocumentHas("/Filter /DCTDecode"));
  ExpectPage(
      80, 48, [](int x, int y) { return Grey(static_cast<unsigned>(x + y)) + 0x2850; }, 12);
}

TEST_F(MakeFormats, LosslessFormatsOfLeptonicaKeepTheirPixels) {
  PixPtr const pix = MakeColourPix(kWidth, kHeight, Motley);
  std::pair<char const*, int> const formats[] = {
      {"a.bmp", IFF_BMP}, {"a.pnm", IFF_PNM}, {"a.tif", IFF_TIFF_ZIP}, {"a.png", IFF_PNG}};
  for (auto const& [name, format] : formats) {
    ASSERT_EQ(pixWrite(Path(name).c_str(), pix.get(), format), 0) << name;
    MakeFrom(name, {"--force"});
    ExpectPage(kWidth, kHeight, Motley);
  }
}

TEST_F(MakeFormats, AlphaOfJpeg2000IsLaidOnWhite) {
  auto const colour = [](int x, int y) {
    return static_cast<DWORD>(2 * x) << 16 | static_cast<DWORD>(100 + y) << 8 | 0x40;
  };
  PixPtr const pix = MakeColourPix(kWidth, kHeight, colour);
  pixSetSpp(pix.get(), 4);
  pixSetComponentArbitrary(pix.get(), L_ALPHA_CHANNEL, 64);
  ASSERT_EQ(pixWrite(Path("a.jp2").c_str(), pix.get(), IFF_JP2), 0);
  MakeFrom("a.jp2");
  ExpectPage(
      kWidth, kHeight, [&](int x, int y) { return OnWhiteColour(colour(x, y), 64); }, 8);
}

TEST_F(MakeFormats, LossyFormatsOfLeptonicaAreRead) {
  PixPtr const pix = MakeColourPix(kWidth, kHeight, [](int x, int y) {
    return static_cast<DWORD>(2 * x) << 16 | static_cast<DWORD>(100 + y) << 8 | 0x40;
  });
  ASSERT_EQ(pixWrite(Path("a.webp").c_str(), pix.get(), IFF_WEBP), 0);
  ASSERT_EQ(pixWrite(Path("a.jp2").c_str(), pix.get(), IFF_JP2), 0);
  for (char const* const name : {"a.webp", "a.jp2"}) {
    MakeFrom(name, {"--force"});
    EXPECT_TRUE(DocumentHas("/Filter /FlateDecode") || DocumentHas("/Filter /JPXDecode"));
    ExpectPage(
        kWidth, kHeight,
        [](int x, int y) {
          return static_cast<DWORD>(2 * x) << 16 | static_cast<DWORD>(100 + y) << 8 | 0x40;
        },
        24);
  }
}

TEST_F(MakeFormats, GifKeepsItsPalette) {
  PixPtr const pix(pixCreate(kWidth, kHeight, 8));
  PixColormap* const map = pixcmapCreate(8);
  for (int i = 0; i < 100; ++i) pixcmapAddColor(map, i, 2 * i, 255 - i);
  pixSetColormap(pix.get(), map);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      pixSetPixel(pix.get(), x, y, static_cast<l_uint32>((x + y) % 100));
    }
  }
  ASSERT_EQ(pixWrite(Path("a.gif").c_str(), pix.get(), IFF_GIF), 0);
  MakeFrom("a.gif");
  EXPECT_TRUE(DocumentHas("/Indexed"));
  ExpectPage(kWidth, kHeight, [](int x, int y) {
    DWORD const i = static_cast<DWORD>((x + y) % 100);
    return i << 16 | 2 * i << 8 | (255 - i);
  });
}

TEST_F(MakeFormats, StandardInputIsAPicture) {
  WritePng(Path("a.png"), Png(8, PNG_COLOR_TYPE_RGB),
           [](int x, int y, int s) { return Channel(Motley(x, y), s); });
  ProgramResult const result = Make({Out(), "-"}, ReadAll(Path("a.png")));
  EXPECT_EQ(result.exit_code, 0) << result.err;
  ExpectPage(kWidth, kHeight, Motley);
}

TEST_F(MakeFormats, StandardInputMayBeATiffFileOfPages) {
  WriteTiff(Path("a.tif"), {Tiff(8, 1, PHOTOMETRIC_MINISBLACK), TiffPage{}},
            [](int page, int x, int y, int) {
              return page == 0 ? ToneAt(x, y) : static_cast<unsigned>(InkAt(x, y));
            });
  ProgramResult const result = Make({Out(), "-"}, ReadAll(Path("a.tif")));
  EXPECT_EQ(result.exit_code, 0) << result.err;
  ExpectPage(
      kWidth, kHeight, [](int x, int y) { return Grey(ToneAt(x, y)); }, 0, 1);
  ExpectPage(kWidth, kHeight, InkColour, 0, 2);
  EXPECT_TRUE(HoldsStream(RawStrip(Path("a.tif"), 1)));
}

TEST_F(MakeFormats, FilesAndStandardInputKeepTheirOrder) {
  auto const write = [&](char const* name, unsigned tone) {
    WritePng(Path(name), Png(8, PNG_COLOR_TYPE_GRAY), [tone](int, int, int) { return tone; });
  };
  write("a.png", 10);
  write("b.png", 20);
  write("c.png", 30);
  ProgramResult const result =
      Make({Out(), Path("b.png"), "-", Path("a.png")}, ReadAll(Path("c.png")));
  EXPECT_EQ(result.exit_code, 0) << result.err;
  ExpectPage(
      kWidth, kHeight, [](int, int) { return Grey(20); }, 0, 1);
  ExpectPage(
      kWidth, kHeight, [](int, int) { return Grey(30); }, 0, 2);
  ExpectPage(
      kWidth, kHeight, [](int, int) { return Grey(10); }, 0, 3);
}

// heif-enc codes with loss.
TEST_F(MakeFormats, HeicAndAvifAreReadWhereTheModuleIsBuilt) {
  WritePng(Path("a.png"), {64, 48, 8, 2}, [](int x, int y, int s) {
    return s == 0 ? unsigned(3 * x) : s == 1 ? unsigned(4 * y) : 90u;
  });
  for (std::string const name : {"a.heic", "a.avif"}) {
    std::vector<std::string> call = {"heif-enc", Path("a.png"), "-q", "95", "-o", Path(name)};
    if (name == "a.avif") call.push_back("-A");
    if (RunProgram(call).exit_code != 0) GTEST_SKIP() << "heif-enc lacks the coder";
    ProgramResult const result = Make({Out(), Path(name), "--dpi", "72", "--force"});
    if (SORRELIN_TEST_HEIF == 0) {
      EXPECT_EQ(result.exit_code, 1);
      EXPECT_THAT(result.err, ::testing::HasSubstr("libsorrelin-heif.so is not there"));
      continue;
    }
    EXPECT_EQ(result.exit_code, 0) << result.err;
    ExpectPage(
        64, 48, [](int x, int y) { return DWORD(3 * x) << 16 | DWORD(4 * y) << 8 | 90u; }, 24);
  }
}

}  // namespace
}  // namespace test
