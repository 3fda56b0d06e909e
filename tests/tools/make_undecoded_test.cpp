// JPEG files and Group 4 pages go into the document as they are, wherever a reader understands
// them so.
#include <tiffio.h>

#include "tests/tools/make_fixture.h"

namespace test {
namespace {

constexpr int kWidth = 72;
constexpr int kHeight = 36;
constexpr int kJpegError = 8;
constexpr int kInkError = 48;  // of red ink as a reader shows it

DWORD Soft(int x, int y) {
  return static_cast<DWORD>(2 * x + 20) << 16 | static_cast<DWORD>(3 * y + 60) << 8 |
         static_cast<DWORD>(200 - 2 * x);
}
unsigned SoftSample(int x, int y, int s) { return Soft(x, y) >> (16 - 8 * s) & 0xFF; }
unsigned SoftTone(int x, int y, int) { return static_cast<unsigned>(2 * x + y + 20); }
DWORD SoftGrey(int x, int y) { return SoftTone(x, y, 0) * 0x010101; }
bool InkAt(int x, int y) { return (x * x + 3 * y) % 7 < 2; }
DWORD InkColour(int x, int y) { return InkAt(x, y) ? 0x000000 : 0xFFFFFF; }

class MakeUndecoded : public MakeTest {
 protected:
  std::vector<BYTE> WriteJpeg(JpegForm const& form) {
    std::vector<BYTE> const file = MakeJpeg(form, form.components == 1 ? SoftTone : SoftSample);
    WriteAll(Path("a.jpg"), file);
    return file;
  }

  // A page whose bits, taken as ink where they are 1, are InkAt.
  std::vector<BYTE> WriteGroup4(TiffPage const& page) {
    WriteTiff(Path("a.tif"), {page},
              [](int, int x, int y, int) { return static_cast<unsigned>(InkAt(x, y)); });
    return RawStrip(Path("a.tif"));
  }
};

TEST_F(MakeUndecoded, JpegOfThreeComponentsIsKeptToTheByte) {
  std::vector<BYTE> const file = WriteJpeg({});
  MakeFrom("a.jpg");
  EXPECT_TRUE(HoldsStream(file));
  EXPECT_TRUE(DocumentHas("/ColorSpace /DeviceRGB"));
  EXPECT_TRUE(DocumentHas("/Filter /DCTDecode"));
  ExpectPage(kWidth, kHeight, Soft, kJpegError);
}

TEST_F(MakeUndecoded, JpegOfOneComponentIsGrey) {
  JpegForm form;
  form.components = 1;
  std::vector<BYTE> const file = WriteJpeg(form);
  MakeFrom("a.jpg");
  EXPECT_TRUE(HoldsStream(file));
  EXPECT_TRUE(DocumentHas("/ColorSpace /DeviceGray"));
  ExpectPage(kWidth, kHeight, SoftGrey, kJpegError);
}

TEST_F(MakeUndecoded, ProgressiveJpegIsKept) {
  JpegForm form;
  form.progressive = true;
  std::vector<BYTE> const file = WriteJpeg(form);
  MakeFrom("a.jpg");
  EXPECT_TRUE(HoldsStream(file));
  ExpectPage(kWidth, kHeight, Soft, kJpegError);
}

TEST_F(MakeUndecoded, JpegOfRgbIsKeptWithAndWithoutAMarker) {
  JpegForm form;
  form.rgb = true;
  form.jfif = false;
  form.adobe = true;
  std::vector<BYTE> const marked = WriteJpeg(form);
  MakeFrom("a.jpg", {"--dpi", "72"});
  EXPECT_TRUE(HoldsStream(marked));
  ExpectPage(kWidth, kHeight, Soft, kJpegError);
  form.adobe = false;
  std::vector<BYTE> const unmarked = WriteJpeg(form);
  MakeFrom("a.jpg", {"--force", "--dpi", "72"});
  EXPECT_TRUE(HoldsStream(unmarked));
  EXPECT_TRUE(DocumentHas("/ColorTransform 0"));
  ExpectPage(kWidth, kHeight, Soft, kJpegError);
}

TEST_F(MakeUndecoded, ArithmeticJpegIsDecoded) {
  JpegForm form;
  form.arithmetic = true;
  std::vector<BYTE> const file = WriteJpeg(form);
  MakeFrom("a.jpg");
  EXPECT_FALSE(HoldsStream(file));
  EXPECT_TRUE(DocumentHas("/Filter /DCTDecode"));
  ExpectPage(kWidth, kHeight, Soft, 24);
}

TEST_F(MakeUndecoded, JpegOfFourInksIsKeptWithEitherPolarity) {
  for (bool const adobe : {true, false}) {
    for (bool const plain : {true, false}) {
      JpegForm form;
      form.components = 4;
      form.rgb = plain;  // CMYK as it is, or else YCCK
      form.jfif = false;
      form.adobe = adobe;
      if (!plain && !adobe) continue;  // nothing would tell it from CMYK
      // Inks of red: no cyan, full magenta and yellow, no black.
      std::vector<BYTE> const file = MakeJpeg(form, [adobe](int, int, int s) {
        bool const ink = s == 1 || s == 2;
        return ink == adobe ? 0u : 255u;
      });
      WriteAll(Path("a.jpg"), file);
      MakeFrom("a.jpg", {"--force", "--dpi", "72"});
      EXPECT_TRUE(HoldsStream(file));
      EXPECT_TRUE(DocumentHas("/ColorSpace /DeviceCMYK"));
      EXPECT_EQ(DocumentHas("/Decode [1 0 1 0 1 0 1 0]"), adobe);
      ExpectPage(
          kWidth, kHeight, [](int, int) { return 0xFF0000; }, kInkError);
      MakeFrom("a.jpg", {"--force", "--dpi", "72", "--plain"});
      EXPECT_TRUE(DocumentHas("/ColorSpace /DeviceRGB"));
      ExpectPage(
          kWidth, kHeight, [](int, int) { return 0xFF0000; }, kJpegError);
    }
  }
}

TEST_F(MakeUndecoded, JpegThatLiesOnItsSideIsTurnedByThePageAlone) {
  for (int orientation = 2; orientation <= 8; ++orientation) {
    bool const turned = orientation >= 5;
    JpegForm form;
    form.width = turned ? kHeight : kWidth;
    form.height = turned ? kWidth : kHeight;
    form.exif = MakeExif(orientation);
    bool const right = orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7;
    bool const bottom =
        orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8;
    std::vector<BYTE> const file = MakeJpeg(form, [&](int x, int y, int s) {
      int const shown_x = turned ? y : x, shown_y = turned ? x : y;
      return SoftSample(right ? kWidth - 1 - shown_x : shown_x,
                        bottom ? kHeight - 1 - shown_y : shown_y, s);
    });
    WriteAll(Path("a.jpg"), file);
    for (std::string const way : {"--force", "--plain"}) {
      MakeFrom("a.jpg", {"--force", way});
      EXPECT_EQ(HoldsStream(file), way == "--force") << orientation;
      EXPECT_TRUE(DocumentHas("/MediaBox [0 0 72 36]")) << orientation;
      EXPECT_TRUE(DocumentHas("/Filter /DCTDecode"));
      ExpectPage(kWidth, kHeight, Soft, way == "--force" ? kJpegError : 24);
    }
  }
}

TEST_F(MakeUndecoded, UprightOrientationKeepsTheJpeg) {
  JpegForm form;
  form.exif = MakeExif(1);
  std::vector<BYTE> const file = WriteJpeg(form);
  MakeFrom("a.jpg");
  EXPECT_TRUE(HoldsStream(file));
}

TEST_F(MakeUndecoded, PlainKeepsTheDataOfUprightJpeg) {
  std::vector<BYTE> file = WriteJpeg({});
  MakeFrom("a.jpg", {"--plain"});
  file.push_back('>');  // with which the library ends the data of its images
  EXPECT_TRUE(HoldsStream(file));
  EXPECT_TRUE(DocumentHas("/Filter /DCTDecode"));
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 72 36]"));
  ExpectPage(kWidth, kHeight, Soft, kJpegError);
}

TEST_F(MakeUndecoded, AskedCompressionDecidesWhetherJpegIsKept) {
  std::vector<BYTE> const file = WriteJpeg({});
  MakeFrom("a.jpg", {"--compression", "jpeg"});
  EXPECT_TRUE(HoldsStream(file));
  MakeFrom("a.jpg", {"--force", "--compression", "flate"});
  EXPECT_FALSE(HoldsStream(file));
  EXPECT_TRUE(DocumentHas("/Filter /FlateDecode"));
  ExpectPage(kWidth, kHeight, Soft, kJpegError);
}

TEST_F(MakeUndecoded, JpegDensityInCentimetresGivesThePage) {
  JpegForm form;
  form.unit = 2;
  form.x_density = 118;  // 299.7 dots per inch
  form.y_density = 59;
  WriteJpeg(form);
  MakeFrom("a.jpg");
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 17 17]"));
}

TEST_F(MakeUndecoded, JpegWithoutDensityTakesThatOfExif) {
  JpegForm form;
  form.unit = 0;
  form.exif = MakeExif(1, 144, 36);
  std::vector<BYTE> const file = WriteJpeg(form);
  MakeFrom("a.jpg");
  EXPECT_TRUE(HoldsStream(file));
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 36 72]"));
}

TEST_F(MakeUndecoded, JpegWithoutAnyDensityHas96DotsPerInch) {
  JpegForm form;
  form.unit = 0;
  WriteJpeg(form);
  MakeFrom("a.jpg");
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 54 27]"));
}

TEST_F(MakeUndecoded, DpiOptionGoesBeforeTheFilesOwn) {
  std::vector<BYTE> const file = WriteJpeg({});
  MakeFrom("a.jpg", {"--dpi", "36x18"});
  EXPECT_TRUE(HoldsStream(file));
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 144 144]"));
}

TEST_F(MakeUndecoded, JpegCutShortIsNamedAndNotWritten) {
  std::vector<BYTE> file = WriteJpeg({});
  file.resize(file.size() / 2);
  WriteAll(Path("a.jpg"), file);
  for (std::string const option : {"--quiet", "--plain"}) {
    ProgramResult const result = Make({Out(), Path("a.jpg"), option});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, ::testing::HasSubstr("a.jpg: cannot be decoded"));
    EXPECT_THAT(result.err, ::testing::Not(::testing::HasSubstr("Premature")));
    EXPECT_FALSE(std::filesystem::exists(Out()));
  }
}

TEST_F(MakeUndecoded, Group4StripIsKeptToTheByte) {
  std::vector<BYTE> const strip = WriteGroup4({});
  MakeFrom("a.tif");
  EXPECT_TRUE(HoldsStream(strip));
  EXPECT_TRUE(DocumentHas("/Decode [0 1]"));
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 72 36]"));
  ExpectPage(kWidth, kHeight, InkColour);
}

TEST_F(MakeUndecoded, Group4WhereZeroIsBlackIsKeptAndInverted) {
  TiffPage page;
  page.photometric = PHOTOMETRIC_MINISBLACK;
  std::vector<BYTE> const strip = WriteGroup4(page);
  MakeFrom("a.tif");
  EXPECT_TRUE(HoldsStream(strip));
  EXPECT_TRUE(DocumentHas("/Decode [1 0]"));
  ExpectPage(kWidth, kHeight, [](int x, int y) { return ~InkColour(x, y) & 0xFFFFFF; });
}

TEST_F(MakeUndecoded, Group4OfReversedBitsIsTurnedAround) {
  TiffPage page;
  page.fill_order = FILLORDER_LSB2MSB;
  std::vector<BYTE> strip = WriteGroup4(page);
  TIFFReverseBits(strip.data(), static_cast<tmsize_t>(strip.size()));
  MakeFrom("a.tif");
  EXPECT_TRUE(HoldsStream(strip));
  ExpectPage(kWidth, kHeight, InkColour);
}

TEST_F(MakeUndecoded, Group4OfSeveralStripsIsDecoded) {
  TiffPage page;
  page.rows_per_strip = 10;
  std::vector<BYTE> const strip = WriteGroup4(page);
  MakeFrom("a.tif");
  EXPECT_FALSE(HoldsStream(strip));
  EXPECT_TRUE(DocumentHas("/BitsPerComponent 1\n"));
  ExpectPage(kWidth, kHeight, InkColour);
}

TEST_F(MakeUndecoded, Group4StripsOfEachPolarityBitOrderAndOrientationShowTheirPixels) {
  TiffPage page;
  page.rows_per_strip = 7;
  page.photometric = PHOTOMETRIC_MINISBLACK;
  WriteGroup4(page);
  MakeFrom("a.tif");
  ExpectPage(kWidth, kHeight, [](int x, int y) { return ~InkColour(x, y) & 0xFFFFFF; });
  page.photometric = PHOTOMETRIC_MINISWHITE;
  page.fill_order = FILLORDER_LSB2MSB;
  page.orientation = ORIENTATION_BOTRIGHT;
  WriteGroup4(page);
  MakeFrom("a.tif", {"--force"});
  ExpectPage(kWidth, kHeight,
             [](int x, int y) { return InkColour(kWidth - 1 - x, kHeight - 1 - y); });
}

TEST_F(MakeUndecoded, Group4ThatIsNotUprightIsTurnedByThePageAlone) {
  TiffPage page;
  page.orientation = ORIENTATION_BOTRIGHT;
  std::vector<BYTE> const strip = WriteGroup4(page);
  MakeFrom("a.tif");
  EXPECT_TRUE(HoldsStream(strip));
  ExpectPage(kWidth, kHeight,
             [](int x, int y) { return InkColour(kWidth - 1 - x, kHeight - 1 - y); });
}

TEST_F(MakeUndecoded, Group3IsDecoded) {
  TiffPage page;
  page.compression = COMPRESSION_CCITTFAX3;
  std::vector<BYTE> const strip = WriteGroup4(page);
  MakeFrom("a.tif");
  EXPECT_FALSE(HoldsStream(strip));
  ExpectPage(kWidth, kHeight, InkColour);
}

TEST_F(MakeUndecoded, PlainKeepsGroup4AndOtherCompressionDecodesIt) {
  TiffPage page;
  page.photometric = PHOTOMETRIC_MINISBLACK;
  std::vector<BYTE> const strip = WriteGroup4(page);
  MakeFrom("a.tif", {"--plain"});
  EXPECT_TRUE(DocumentHas("/Filter /CCITTFaxDecode"));
  EXPECT_TRUE(DocumentHas("/Decode [1 0]"));
  ExpectPage(kWidth, kHeight, [](int x, int y) { return ~InkColour(x, y) & 0xFFFFFF; });
  MakeFrom("a.tif", {"--force", "--compression", "flate"});
  EXPECT_FALSE(HoldsStream(strip));
  EXPECT_TRUE(DocumentHas("/Filter /FlateDecode"));
  ExpectPage(kWidth, kHeight, [](int x, int y) { return ~InkColour(x, y) & 0xFFFFFF; });
}

TEST_F(MakeUndecoded, TiffResolutionIsKeptInInchesAndCentimetres) {
  TiffPage page;
  page.x_resolution = 144;
  page.y_resolution = 36;
  WriteGroup4(page);
  MakeFrom("a.tif");
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 36 72]"));
  page.unit = RESUNIT_CENTIMETER;
  page.x_resolution = page.y_resolution = 28.346F;
  WriteGroup4(page);
  MakeFrom("a.tif", {"--force"});
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 72 36]"));
}

TEST_F(MakeUndecoded, TiffWithoutAUnitHas96DotsPerInch) {
  TiffPage page;
  page.unit = RESUNIT_NONE;
  page.x_resolution = page.y_resolution = 1;
  WriteGroup4(page);
  MakeFrom("a.tif");
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 54 27]"));
  MakeFrom("a.tif", {"--force", "--plain"});
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 54 27]"));
}

// The strip's size (tag 279, of type LONG) is made to pass the file's end.
TEST_F(MakeUndecoded, StripThatTheFileDoesNotHoldIsNamed) {
  WriteGroup4({});
  std::vector<BYTE> file = ReadAll(Path("a.tif"));
  std::vector<BYTE> const entry = {0x17, 0x01, 4, 0, 1, 0, 0, 0};
  auto const at = std::search(file.begin(), file.end(), entry.begin(), entry.end());
  ASSERT_NE(at, file.end());
  at[8] = at[9] = at[10] = 0x7F;
  WriteAll(Path("a.tif"), file);
  ProgramResult const result = Make({Out(), Path("a.tif")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, ::testing::HasSubstr("a.tif: cannot be decoded"));
}

}  // namespace
}  // namespace test
