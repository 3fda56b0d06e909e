// JPEG files to bitmaps: the forms that are read and what the bitmap then holds.
#include <gmock/gmock.h>
#include <tests/siblings/rennick_support.h>

using namespace test;

namespace {

void UseProgression(jpeg_compress_struct& coder) { jpeg_simple_progression(&coder); }

void UseFourTwoZero(jpeg_compress_struct& coder) {
  coder.comp_info[0].h_samp_factor = 2;
  coder.comp_info[0].v_samp_factor = 2;
}

void LeaveAdobeMarkerOut(jpeg_compress_struct& coder) { coder.write_Adobe_marker = FALSE; }

// Red, green, blue under inks given as amounts: each takes its share of the light, black of all.
Samples LightOf(Samples const& inks) {
  Samples light{inks.width, inks.height, 3, {}};
  for (size_t i = 0; i < inks.values.size(); i += 4) {
    int const black = 255 - inks.values[i + 3];
    for (size_t c = 0; c < 3; ++c) {
      light.values.push_back(static_cast<BYTE>((255 - inks.values[i + c]) * black / 255));
    }
  }
  return light;
}

Samples Inverted(Samples samples) {
  for (BYTE& value : samples.values) value = static_cast<BYTE>(255 - value);
  return samples;
}

}  // namespace

TEST(JpegLoad, OneComponentBecomesEightBitsWithAGreyPalette) {
  Samples const samples = Gradient(37, 23, 1);
  Block const dib = Load(Write(samples, {JCS_GRAYSCALE, JCS_GRAYSCALE}));
  BITMAPINFOHEADER const header = HeaderOf(dib);
  EXPECT_EQ(header.biBitCount, 8);
  EXPECT_LE(Distance(PixelsOf(dib), samples), 2);
  Bytes const block = dib.Content();
  for (size_t i = 0; i < 256; ++i) {
    BYTE const level = static_cast<BYTE>(i);
    EXPECT_EQ(Bytes(&block[40 + 4 * i], &block[44 + 4 * i]), (Bytes{level, level, level, 0}));
  }
}

TEST(JpegLoad, HeaderIsThatOfAPackedBitmap) {
  Block const dib = Load(Write(Gradient(37, 23, 1), {JCS_GRAYSCALE, JCS_GRAYSCALE}));
  BITMAPINFOHEADER const header = HeaderOf(dib);
  EXPECT_EQ(header.biSize, 40u);
  EXPECT_EQ(header.biWidth, 37);
  EXPECT_EQ(header.biHeight, 23);
  EXPECT_EQ(header.biPlanes, 1);
  EXPECT_EQ(header.biCompression, 0u);
  EXPECT_EQ(header.biSizeImage, 40u * 23u);
  EXPECT_EQ(header.biClrUsed, 0u);
  EXPECT_EQ(header.biClrImportant, 0u);
  EXPECT_EQ(GlobalSize(dib), 40u + 1024u + 40u * 23u);
}

TEST(JpegLoad, PaddingOfRowsIsZero) {
  Bytes const block = Load(Write(Gradient(5, 2, 3), {JCS_RGB, JCS_YCbCr})).Content();
  ASSERT_EQ(block.size(), 40u + 2u * 16u);
  EXPECT_EQ(block[40 + 15], 0);
  EXPECT_EQ(block[40 + 31], 0);
}

TEST(JpegLoad, ThreeComponentsBecomeTwentyFourBits) {
  Samples const samples = Gradient(37, 23, 3);
  for (J_COLOR_SPACE const stored : {JCS_YCbCr, JCS_RGB}) {
    Block const dib = Load(Write(samples, {JCS_RGB, stored}));
    EXPECT_EQ(HeaderOf(dib).biBitCount, 24);
    EXPECT_LE(Distance(PixelsOf(dib), samples), 4) << stored;
  }
}

TEST(JpegLoad, HalvedChromaAndProgressionAreRead) {
  Samples const samples = Gradient(61, 47, 3);
  EXPECT_LE(Distance(PixelsOf(Load(Write(samples, {JCS_RGB, JCS_YCbCr, UseFourTwoZero}))), samples),
            12);
  EXPECT_LE(Distance(PixelsOf(Load(Write(samples, {JCS_RGB, JCS_YCbCr, UseProgression}))), samples),
            4);
}

TEST(JpegLoad, PixelsAreThoseOfTheOtherReader) {
  Bytes const file = Write(Gradient(61, 47, 3), {JCS_RGB, JCS_YCbCr, UseFourTwoZero});
  EXPECT_EQ(PixelsOf(Load(file)).values, Read(file, JCS_RGB).samples.values);
}

// Without an Adobe marker a sample is the amount of ink.
TEST(JpegLoad, InksBecomeLight) {
  Samples const inks = Gradient(30, 20, 4);
  Bytes const file = Write(inks, {JCS_CMYK, JCS_CMYK, LeaveAdobeMarkerOut});
  Block const dib = Load(file);
  EXPECT_EQ(HeaderOf(dib).biBitCount, 24);
  EXPECT_LE(Distance(PixelsOf(dib), LightOf(inks)), 5);
}

// With one it is the light that the ink leaves.
TEST(JpegLoad, AdobeInksAreInverted) {
  Samples const inks = Gradient(30, 20, 4);
  for (J_COLOR_SPACE const stored : {JCS_CMYK, JCS_YCCK}) {
    Bytes const file = Write(Inverted(inks), {JCS_CMYK, stored});
    EXPECT_LE(Distance(PixelsOf(Load(file)), LightOf(inks)), 5) << stored;
  }
}

TEST(JpegLoad, WhiteAndBlackInksAreExact) {
  Samples inks{8, 8, 4, Bytes(8 * 8 * 4, 255)};
  EXPECT_EQ(PixelsOf(Load(Write(inks, {JCS_CMYK, JCS_CMYK}))).At(0, 0, 1), 255);
  EXPECT_EQ(PixelsOf(Load(Write(inks, {JCS_CMYK, JCS_CMYK, LeaveAdobeMarkerOut}))).At(0, 0, 1), 0);
}

TEST(JpegLoad, DensityBecomesPixelsPerMetre) {
  struct {
    UINT8 unit;
    UINT16 x;
    UINT16 y;
    LONG x_per_metre;
    LONG y_per_metre;
  } const kCases[] = {{1, 300, 200, 11811, 7874}, {2, 100, 40, 10000, 4000}, {0, 300, 300, 0, 0}};
  for (auto const& density : kCases) {
    auto const adjust = [&](jpeg_compress_struct& coder) {
      coder.density_unit = density.unit;
      coder.X_density = density.x;
      coder.Y_density = density.y;
    };
    BITMAPINFOHEADER const header =
        HeaderOf(Load(Write(Gradient(8, 8, 1), {JCS_GRAYSCALE, JCS_GRAYSCALE, adjust})));
    EXPECT_EQ(header.biXPelsPerMeter, density.x_per_metre);
    EXPECT_EQ(header.biYPelsPerMeter, density.y_per_metre);
  }
}

TEST(JpegLoad, FileWithoutJfifHasNoResolution) {
  auto const adjust = [](jpeg_compress_struct& coder) { coder.write_JFIF_header = FALSE; };
  EXPECT_EQ(HeaderOf(Load(Write(Gradient(8, 8, 3), {JCS_RGB, JCS_YCbCr, adjust}))).biXPelsPerMeter,
            0);
}

TEST(JpegLoad, SavedResolutionComesBack) {
  for (LONG const per_metre : {2835, 3780, 11811, 23622, 300, 10000}) {
    Bytes const file = Save(DibOf(Gradient(8, 8, 1)), {75, per_metre, per_metre, 0, 0});
    EXPECT_EQ(HeaderOf(Load(file)).biXPelsPerMeter, per_metre);
    EXPECT_EQ(HeaderOf(Load(file)).biYPelsPerMeter, per_metre);
  }
}

TEST(JpegLoad, BytesBehindTheEndMarkerAreNotLookedAt) {
  Bytes file = Write(Gradient(8, 8, 1), {JCS_GRAYSCALE, JCS_GRAYSCALE});
  file.resize(file.size() + 100, 0xAB);
  EXPECT_NE(Load(file).get(), nullptr);
}

TEST(JpegLoad, BitmapIsNotLocked) {
  Block const dib = Load(Write(Gradient(8, 8, 1), {JCS_GRAYSCALE, JCS_GRAYSCALE}));
  EXPECT_FALSE(GlobalUnlock(dib));
}

TEST(JpegLoad, FileOnDiskIsReadAsFromMemory) {
  TempDir const folder;
  Bytes const file = Write(Gradient(37, 23, 3), {JCS_RGB, JCS_YCbCr});
  WriteAll(folder / "a.jpg", file);
  Block const dib(LoadJPEGIntoDIBW((folder / "a.jpg").string<WCHAR>().c_str()));
  EXPECT_EQ(dib.Content(), Load(file).Content());
}

TEST(JpegLoad, FileThatCannotBeReadGivesNull) {
  TempDir const folder;
  WriteAll(folder / "empty.jpg", {});
  EXPECT_EQ(LoadJPEGIntoDIBW((folder / "none.jpg").string<WCHAR>().c_str()), nullptr);
  EXPECT_EQ(LoadJPEGIntoDIBW((folder / "empty.jpg").string<WCHAR>().c_str()), nullptr);
  EXPECT_EQ(LoadJPEGIntoDIBW(folder.path().string<WCHAR>().c_str()), nullptr);
  EXPECT_EQ(LoadJPEGIntoDIBW(SORRELIN_TEXT("")), nullptr);
  EXPECT_EQ(LoadJPEGIntoDIBW(nullptr), nullptr);
}
