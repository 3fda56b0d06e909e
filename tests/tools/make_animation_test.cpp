// Of an animation the first picture is a page, and the report says so.
#include <zlib.h>

#include "tests/tools/make_fixture.h"

namespace test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kFirstOnly[] = "only the first picture taken";

class MakeAnimation : public MakeTest {
 protected:
  // Two pictures, red and blue, in red.ppm and blue.ppm.
  void SetUp() override {
    WritePicture("red.ppm", {0xFF, 0, 0});
    WritePicture("blue.ppm", {0, 0, 0xFF});
  }

  void ExpectFirstPicture(std::string const& name) const {
    ProgramResult const result = Make({Out(), Path(name), "--dpi", "72", "--json", "--force"});
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_THAT(result.err, HasSubstr(std::string("sorrelin: ") + kFirstOnly + ": page 1\n"));
    EXPECT_THAT(result.out, HasSubstr(std::string("\"") + kFirstOnly + "\""));
    EXPECT_EQ(PageCount(), 1);
    ExpectPage(
        kSide, kSide, [](int, int) { return 0xFF0000u; }, 8);
  }

  void ExpectNoMention(std::string const& name) const {
    ProgramResult const result = Make({Out(), Path(name), "--dpi", "72", "--force"});
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_THAT(result.err, Not(HasSubstr(kFirstOnly)));
  }

  static constexpr int kSide = 64;

 private:
  void WritePicture(std::string const& name, std::vector<BYTE> const& colour) const {
    std::string const header = "P6\n64 64\n255\n";
    std::vector<BYTE> bytes(header.begin(), header.end());
    for (int i = 0; i < kSide * kSide; ++i) {
      bytes.insert(bytes.end(), colour.begin(), colour.end());
    }
    WriteAll(Path(name), bytes);
  }
};

// Writes a.png by Pillow, with `more` among the options of its save().
std::string SaveApng(std::string const& more) {
  return "/usr/bin/python3 -c \"from PIL import Image; "
         "Image.open('red.ppm').save('a.png', " +
         more + ")\"";
}

TEST_F(MakeAnimation, GifGivesItsFirstPicture) {
  Run("gm convert -delay 10 red.ppm blue.ppm a.gif");
  ExpectFirstPicture("a.gif");
  Run("gm convert red.ppm one.gif");
  ExpectNoMention("one.gif");
}

TEST_F(MakeAnimation, WebpGivesItsFirstPicture) {
  Run("cwebp -quiet -lossless red.ppm -o red.webp && cwebp -quiet -lossless blue.ppm -o blue.webp "
      "&& webpmux -frame red.webp +100 -frame blue.webp +100 -o a.webp 2>/dev/null");
  ExpectFirstPicture("a.webp");
  ExpectNoMention("red.webp");
}

TEST_F(MakeAnimation, ApngGivesItsFirstPictureAsItIs) {
  Run(SaveApng("save_all=True, append_images=[Image.open('blue.ppm')], duration=100"));
  ExpectFirstPicture("a.png");
  EXPECT_TRUE(DocumentHas("/Predictor 15"));
}

// The picture that programs show that know no animations is not one of its pictures.
TEST_F(MakeAnimation, PictureBesideAnApngOfOnePictureIsTaken) {
  Run(SaveApng("save_all=True, default_image=True, append_images=[Image.open('blue.ppm')]"));
  ExpectFirstPicture("a.png");
}

TEST_F(MakeAnimation, ApngOfOnePictureIsNoAnimation) {
  Run("pnmtopng red.ppm >a.png 2>/dev/null");
  std::vector<BYTE> png = ReadAll(Path("a.png"));
  // acTL: one picture, played once; fcTL: the whole of 64 x 64, shown for 1/10 s.
  std::vector<BYTE> const control = {0, 0, 0, 8, 'a', 'c', 'T', 'L', 0, 0, 0, 1, 0, 0, 0, 1};
  std::vector<BYTE> const frame = {0, 0, 0,  26, 'f', 'c', 'T', 'L', 0, 0, 0, 0, 0, 0, 0,  64, 0,
                                   0, 0, 64, 0,  0,   0,   0,   0,   0, 0, 0, 0, 1, 0, 10, 0,  0};
  std::vector<BYTE> chunks;
  for (auto const& chunk : {control, frame}) {
    auto const crc = crc32(0, chunk.data() + 4, static_cast<uInt>(chunk.size() - 4));
    chunks.insert(chunks.end(), chunk.begin(), chunk.end());
    for (int shift = 24; shift >= 0; shift -= 8) chunks.push_back(static_cast<BYTE>(crc >> shift));
  }
  png.insert(png.begin() + 33, chunks.begin(), chunks.end());  // after IHDR
  WriteAll(Path("a.png"), png);
  ExpectNoMention("a.png");
}

TEST_F(MakeAnimation, HeicWithAFilmGivesItsPicture) {
  if (SORRELIN_TEST_HEIF == 0) GTEST_SKIP() << "built without libheif";
  WritePng(Path("red.png"), {kSide, kSide, 8, 2},
           [](int, int, int s) { return s == 0 ? 255u : 0u; });
  Run("heif-enc red.png -q 95 -o red.heic");
  ExpectNoMention("red.heic");
  std::string const film("\0\0\0\x08moov", 8);
  std::string const long_box("\0\0\0\1free\0\0\0\0\0\0\0\x11x", 17);
  for (std::string const& boxes : {film, long_box + film}) {
    std::vector<BYTE> heic = ReadAll(Path("red.heic"));
    for (char const byte : boxes) heic.push_back(static_cast<BYTE>(byte));
    WriteAll(Path("a.heic"), heic);
    ExpectFirstPicture("a.heic");
  }
}

}  // namespace
}  // namespace test
