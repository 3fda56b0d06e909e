// What picture files hold comes out of the document as other programs read it.
#include <png.h>
#include <tiffio.h>

#include "tests/support/coefficients.h"
#include "tests/tools/make_fixture.h"

namespace test {
namespace {

unsigned Soft(int x, int y, int s) { return static_cast<unsigned>(2 * x + 3 * y + 20 * s); }

class MakeStored : public MakeTest {
 protected:
  // The only file that pdfimages -all writes for the document's pictures.
  std::vector<BYTE> ImageFile(std::string const& ending) const {
    ProgramResult const result = RunProgram({"pdfimages", "-all", Out(), Path("image")});
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_TRUE(std::filesystem::exists(Path("image-000." + ending)));
    EXPECT_FALSE(std::filesystem::exists(Path("image-001." + ending)));
    return ReadAll(Path("image-000." + ending));
  }

  // The data of the page's image, as qpdf finds them.
  std::string RawData() const {
    std::string const objects = RunProgram({"qpdf", "--json", "--json-key=pages", Out()}).out;
    size_t const at = objects.find("\"object\": \"", objects.find("\"images\""));
    EXPECT_NE(at, std::string::npos) << objects;
    size_t const start = at + 11;
    std::string const object = objects.substr(start, objects.find(" ", start) - start);
    return RunProgram({"qpdf", "--show-object=" + object, "--raw-stream-data", Out()}).out;
  }

  void ExpectSound() const {
    ProgramResult const result = RunProgram({"qpdf", "--check", Out()});
    EXPECT_EQ(result.exit_code, 0) << result.out << result.err;
  }
};

PngForm Png(int bits, int type) {
  PngForm form;
  form.bits = bits;
  form.type = type;
  form.x_per_metre = form.y_per_metre = 2835;
  return form;
}

std::string DataOf(std::vector<BYTE> const& png) {
  std::string data;
  for (size_t at = 8; at + 12 <= png.size();) {
    size_t const bytes = static_cast<size_t>(png[at + 2]) << 8 | png[at + 3];
    std::string const chunk(png.begin() + static_cast<long>(at) + 4,
                            png.begin() + static_cast<long>(at + 8 + bytes));
    if (chunk.starts_with("IDAT")) data += chunk.substr(4);
    at += bytes + 12;
  }
  return data;
}

TEST_F(MakeStored, PdfimagesGivesEachJpegFileBack) {
  for (int const components : {1, 3, 4}) {
    for (bool const progressive : {false, true}) {
      JpegForm form;
      form.components = components;
      form.progressive = progressive;
      form.jfif = components != 4;
      form.adobe = components == 4;
      form.exif = MakeExif(6);
      WriteAll(Path("a.jpg"), MakeJpeg(form, Soft));
      MakeFrom("a.jpg", {"--force", "--dpi", "72", "--quiet"});
      EXPECT_EQ(ImageFile("jpg"), ReadAll(Path("a.jpg"))) << components << progressive;
      ExpectSound();
    }
  }
}

TEST_F(MakeStored, PdfimagesGivesJpeg2000FilesBack) {
  PixPtr const pix = MakeColourPix(72, 36, Motley);
  ASSERT_EQ(pixWrite(Path("a.jp2").c_str(), pix.get(), IFF_JP2), 0);
  MakeFrom("a.jp2", {"--quiet"});
  EXPECT_EQ(ImageFile("jp2"), ReadAll(Path("a.jp2")));
  ExpectSound();
}

// Four planes without colours, to which the box of the colours then gives a meaning.
TEST_F(MakeStored, Jpeg2000OfInksGoesInAsItIs) {
  std::vector<BYTE> inks;
  for (int s = 0; s < 4; ++s) inks.insert(inks.end(), 64 * 40, static_cast<BYTE>(s == 1 ? 255 : 0));
  WriteAll(Path("inks.raw"), inks);
  ASSERT_EQ(
      RunProgram({"opj_compress", "-i", Path("inks.raw"), "-F", "64,40,4,8,u", "-o", Path("a.jp2")})
          .exit_code,
      0);
  std::vector<BYTE> file = ReadAll(Path("a.jp2"));
  constexpr BYTE kCmyk = 12;
  std::string const name = "colr";
  auto const colours = std::search(file.begin(), file.end(), name.begin(), name.end());
  ASSERT_NE(colours, file.end());
  colours[10] = kCmyk;
  WriteAll(Path("a.jp2"), file);
  MakeFrom("a.jp2", {"--dpi", "72"});
  EXPECT_EQ(ImageFile("jp2"), file);
  ExpectSound();
  ExpectPage(
      64, 40, [](int, int) { return 0xF600C5u; }, 60);
}

TEST_F(MakeStored, QpdfGivesTheDataOfPngFilesBack) {
  struct {
    int bits;
    int type;
  } const kForms[] = {{1, 0}, {2, 0}, {4, 0}, {8, 0}, {16, 0}, {8, 2}, {16, 2}, {2, 3}, {8, 3}};
  for (auto const& [bits, type] : kForms) {
    PngForm form = Png(bits, type);
    if (type == PNG_COLOR_TYPE_PALETTE) form.palette = {0x102030, 0x4060F0, 0xFFFFFF};
    unsigned const values = type == PNG_COLOR_TYPE_PALETTE ? 3 : 1u << bits;
    WritePng(Path("a.png"), form,
             [values](int x, int y, int s) { return Soft(x, y, s) * 7 % values; });
    MakeFrom("a.png", {"--force"});
    EXPECT_EQ(RawData(), DataOf(ReadAll(Path("a.png")))) << bits << " " << type;
    ExpectSound();
  }
}

TEST_F(MakeStored, JpegTiffOfTilesKeepsItsCoefficients) {
  TiffPage page;
  page.width = page.height = 64;
  page.bits = 8;
  page.samples = 3;
  page.photometric = PHOTOMETRIC_YCBCR;
  page.compression = COMPRESSION_JPEG;
  page.subsampling = 2;
  auto const sample = [](int, int x, int y, int s) { return Soft(x, y, s); };
  WriteTiff(Path("whole.tif"), {page}, sample);
  MakeFrom("whole.tif", {"--quiet"});
  auto const whole = CoefficientsOf(ImageFile("jpg"));
  page.tile = 16;
  WriteTiff(Path("tiles.tif"), {page}, sample);
  MakeFrom("tiles.tif", {"--quiet", "--force"});
  EXPECT_EQ(CoefficientsOf(ImageFile("jpg")), whole);
  ExpectSound();
}

TEST_F(MakeStored, EqualProfilesAreOneObject) {
  for (int i = 0; i < 4; ++i) {
    PngForm form = Png(8, PNG_COLOR_TYPE_RGB);
    form.profile = MakeProfile(3, i / 3);
    WritePng(Path(std::to_string(i) + ".png"), form, Soft);
  }
  MakeFrom("0.png", {Path("1.png"), Path("2.png"), Path("3.png")});
  EXPECT_EQ(PageCount(), 4);
  EXPECT_EQ(CountOf("/N 3\n"), 2);
  EXPECT_EQ(CountOf("/ICCBased"), 4);
  ExpectSound();
}

TEST_F(MakeStored, ProfileComesOutAsItWentIn) {
  JpegForm form;
  form.profile = MakeProfile(3);
  WriteAll(Path("a.jpg"), MakeJpeg(form, Soft));
  MakeFrom("a.jpg");
  std::string const document = RunProgram({"qpdf", "--qdf", Out(), "-"}).out;
  EXPECT_NE(document.find(std::string(form.profile.begin(), form.profile.end())),
            std::string::npos);
}

TEST_F(MakeStored, ProfileOfOtherColoursIsLeftOutAndThatIsSaid) {
  JpegForm form;
  form.profile = MakeProfile(1);
  WriteAll(Path("a.jpg"), MakeJpeg(form, Soft));
  ProgramResult const result = Make({Out(), Path("a.jpg")});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_THAT(result.err, ::testing::HasSubstr("colour profile left out"));
  EXPECT_FALSE(DocumentHas("/ICCBased"));
}

// The high bytes of 16 bits, and inks, by libtiff's values.
TEST_F(MakeStored, TiffOf16BitsAndInksKeepsThem) {
  TiffPage page;
  page.bits = 16;
  page.samples = 4;
  page.photometric = PHOTOMETRIC_SEPARATED;
  page.compression = COMPRESSION_LZW;
  WriteTiff(Path("a.tif"), {page},
            [](int, int x, int y, int s) { return (Soft(x, y, s) * 259) & 0xFFFF; });
  MakeFrom("a.tif");
  EXPECT_TRUE(DocumentHas("/BitsPerComponent 16\n/ColorSpace /DeviceCMYK"));
  ExpectSound();
  std::string const document =
      RunProgram({"qpdf", "--stream-data=uncompress", "--decode-level=all", Out(), "-"}).out;
  std::string row;
  for (int x = 0; x < 72; ++x) {
    for (int s = 0; s < 4; ++s) {
      unsigned const value = (Soft(x, 5, s) * 259) & 0xFFFF;
      row += {static_cast<char>(value >> 8), static_cast<char>(value)};
    }
  }
  EXPECT_NE(document.find(row), std::string::npos);
}

// Every second pixel is ink: Group 4 takes several bits for each of them.
TEST_F(MakeStored, HalftoneBecomesTheSmallerCoding) {
  TiffPage page;
  page.width = page.height = 640;
  page.compression = COMPRESSION_NONE;
  WriteTiff(Path("a.tif"), {page},
            [](int, int x, int y, int) { return static_cast<unsigned>(x + y) % 2; });
  for (std::string const way : {"--quiet", "--plain"}) {
    MakeFrom("a.tif", {"--force", way});
    EXPECT_TRUE(DocumentHas("/FlateDecode")) << way;
    uintmax_t const bytes = std::filesystem::file_size(Out());
    MakeFrom("a.tif", {"--force", way, "--compression", "g4"});
    EXPECT_LT(bytes * 4, std::filesystem::file_size(Out()));
  }
}

}  // namespace
}  // namespace test
