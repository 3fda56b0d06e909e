// Documents made with --plain, read back by the library.
#include <png.h>
#include <sorrelin/frame/pdf.h>
#include <sorrelin/platform/block.h>
#include <tiffio.h>

#include <cstring>

#include "tests/tools/make_fixture.h"

namespace test {
namespace {

unsigned Soft(int x, int y, int s) { return static_cast<unsigned>(2 * x + 3 * y + 20 * s); }

class MakePlain : public MakeTest {
 protected:
  // Bits of a pixel of the bitmap that the library makes of the only page; 0 if it makes none.
  int LoadedBits() const {
    sorrelin::OwnedBlock const bitmap(pdf_LoadPDFIntoDIB(Out().c_str(), 0));
    sorrelin::LockedBlock const locked(bitmap.get());
    if (!locked) return 0;
    BITMAPINFOHEADER header;
    std::memcpy(&header, locked.bytes().data(), sizeof header);
    EXPECT_EQ(header.biWidth, 72);
    return header.biBitCount;
  }
};

TEST_F(MakePlain, PngOfEachDepthIsReadBack) {
  struct {
    int bits;
    int type;
    int loaded;
  } const kForms[] = {{1, 0, 1}, {4, 0, 8}, {16, 0, 8}, {8, 2, 24}, {16, 2, 24}, {8, 3, 8}};
  for (auto const& [bits, type, loaded] : kForms) {
    PngForm form;
    form.bits = bits;
    form.type = type;
    form.profile = type == PNG_COLOR_TYPE_RGB ? MakeProfile(3, 2) : std::vector<BYTE>{};
    if (type == PNG_COLOR_TYPE_PALETTE) form.palette = {0x102030, 0x4060F0};
    unsigned const values = type == PNG_COLOR_TYPE_PALETTE ? 2 : 1u << bits;
    WritePng(Path("a.png"), form, [values](int x, int y, int s) { return Soft(x, y, s) % values; });
    MakeFrom("a.png", {"--force", "--plain", "--quiet", "--dpi", "72"});
    EXPECT_EQ(LoadedBits(), loaded) << bits << " " << type;
    EXPECT_FALSE(DocumentHas("/Predictor") || DocumentHas("/ICCBased"));
  }
}

TEST_F(MakePlain, HalftoneIsReadBackFromFlate) {
  TiffPage page;
  page.compression = COMPRESSION_NONE;
  auto const dot = [](int x, int y) { return static_cast<unsigned>(x + y) % 2; };
  WriteTiff(Path("a.tif"), {page}, [&](int, int x, int y, int) { return dot(x, y); });
  MakeFrom("a.tif", {"--plain", "--dpi", "72"});
  EXPECT_TRUE(DocumentHas("/FlateDecode"));
  EXPECT_EQ(LoadedBits(), 1);
  ExpectPage(72, 36, [&](int x, int y) { return dot(x, y) == 1 ? 0x000000u : 0xFFFFFFu; });
}

TEST_F(MakePlain, InksAreReadBackAsColours) {
  TiffPage page;
  page.bits = 8;
  page.samples = 4;
  page.photometric = PHOTOMETRIC_SEPARATED;
  page.compression = COMPRESSION_LZW;
  WriteTiff(Path("a.tif"), {page}, [](int, int x, int y, int s) { return Soft(x, y, s) & 0xFF; });
  ProgramResult const result = Make({Out(), Path("a.tif"), "--plain"});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_THAT(result.err, ::testing::HasSubstr("colours converted"));
  EXPECT_EQ(LoadedBits(), 24);
}

TEST_F(MakePlain, JpegIsReadBackWhateverItsFile) {
  for (int const components : {1, 3, 4}) {
    for (int const orientation : {1, 3}) {
      JpegForm form;
      form.components = components;
      form.exif = MakeExif(orientation);
      form.jfif = components != 4;
      WriteAll(Path("a.jpg"), MakeJpeg(form, Soft));
      MakeFrom("a.jpg", {"--force", "--plain", "--quiet", "--dpi", "72"});
      EXPECT_EQ(LoadedBits(), components == 1 ? 8 : 24) << components << " " << orientation;
    }
  }
}

}  // namespace
}  // namespace test
