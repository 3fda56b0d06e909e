// Twenty copies of a picture of each format, each with eight flipped bits in its coded data: what
// the format's own program calls damaged or warns of is named and left out.
#include <random>

#include "tests/tools/make_fixture.h"

namespace test {
namespace {

using ::testing::HasSubstr;

constexpr int kWidth = 400, kHeight = 300;
constexpr int kCopies = 20;
constexpr int kFlips = 8;

unsigned Sample(int x, int y, int s) {
  return static_cast<unsigned>(x * (s + 2) + y * y / 9 + x * y % 31) & 0xFF;
}

class MakeDamage : public MakeTest {
 protected:
  using IsBad = std::function<bool(ProgramResult const&)>;
  static bool SaysSomething(ProgramResult const& run) { return !run.err.empty(); }
  static bool Fails(ProgramResult const& run) { return run.exit_code != 0; }

  // Copies of the picture whose bytes between two shares of it are damaged. The whole picture must
  // give a page, and at least `least` of the copies must be damaged in the eyes of `program`, which
  // is called with the file's name for FILE.
  void ExpectVerdicts(std::string const& name, std::pair<double, double> where,
                      std::vector<std::string> const& program, IsBad const& is_bad, int least) {
    MakeFrom(name, {"--force"});
    std::vector<BYTE> const whole = ReadAll(Path(name));
    auto const at = [&](double share) { return size_t(share * double(whole.size())); };
    std::mt19937 random(7);
    std::uniform_int_distribution<size_t> place(at(where.first), at(where.second) - 1);
    std::vector<std::string> arguments = {Out(), "--force", "--quiet"};
    std::vector<std::string> bad;
    for (int copy = 0; copy < kCopies; ++copy) {
      std::vector<BYTE> bytes = whole;
      for (int i = 0; i < kFlips; ++i) bytes[place(random)] ^= BYTE(1u << random() % 8);
      std::string const path = Path("copy" + std::to_string(copy) + "-" + name);
      WriteAll(path, bytes);
      arguments.push_back(path);
      std::vector<std::string> call = program;
      std::replace(call.begin(), call.end(), std::string("FILE"), path);
      if (is_bad(RunProgram(call))) bad.push_back(path);
    }
    EXPECT_GE(static_cast<int>(bad.size()), least) << name;
    ProgramResult const result = Make(arguments);
    EXPECT_EQ(result.exit_code, 1);
    for (std::string const& path : bad) EXPECT_THAT(result.err, HasSubstr(path + ": ")) << name;
    long const named = std::count(result.err.begin(), result.err.end(), '\n');
    if (std::filesystem::exists(Out()) && named < kCopies) {
      EXPECT_EQ(PageCount(), kCopies - named);
    }
  }

  void WriteTiffOf(std::string const& name, int bits, int compression, int rows_per_strip = 0) {
    TiffPage page;
    page.width = kWidth;
    page.height = kHeight;
    page.bits = bits;
    page.samples = bits == 8 ? 3 : 1;
    page.photometric = bits == 8 ? 2 : 0;
    page.compression = compression;
    page.rows_per_strip = rows_per_strip;
    WriteTiff(Path(name), {page}, [bits](int, int x, int y, int s) {
      return bits == 8 ? Sample(x, y, s) : (Sample(x, y, 0) > 200 ? 1u : 0u);
    });
  }

  void WriteJpegOf(std::string const& name, bool progressive) {
    JpegForm form;
    form.width = kWidth;
    form.height = kHeight;
    form.progressive = progressive;
    WriteAll(Path(name), MakeJpeg(form, Sample));
  }

  // Runs a shell command that makes a picture of picture.ppm.
  void Convert(std::string const& command) {
    std::string ppm = "P6\n400 300\n255\n";
    for (int i = 0; i < kWidth * kHeight * 3; ++i) {
      ppm += static_cast<char>(Sample(i / 3 % kWidth, i / 3 / kWidth, i % 3));
    }
    WriteAll(Path("picture.ppm"), {ppm.begin(), ppm.end()});
    Run(command);
  }
};

TEST_F(MakeDamage, Group4IsDecodedToItsLastRowWhetherOrNotItPassesThrough) {
  WriteTiffOf("one.tif", 1, 4);
  WriteTiffOf("many.tif", 1, 4, 20);
  for (std::string const name : {"one.tif", "many.tif"}) {
    ExpectVerdicts(name, {0.05, 0.9}, {"tiffinfo", "-D", "FILE"}, SaysSomething, 15);
  }
}

TEST_F(MakeDamage, MessagesOfLibtiffCountForEachCoding) {
  WriteTiffOf("fax3.tif", 1, 3);
  WriteTiffOf("lzw.tif", 8, 5);
  WriteTiffOf("deflate.tif", 8, 8);
  WriteTiffOf("jpeg.tif", 8, 7);
  for (std::string const name : {"fax3.tif", "lzw.tif", "deflate.tif", "jpeg.tif"}) {
    ExpectVerdicts(name, {0.1, 0.6}, {"tiffinfo", "-D", "FILE"}, SaysSomething, 3);
  }
}

TEST_F(MakeDamage, WarningsOfLibjpegCountInSequentialAndProgressiveFiles) {
  WriteJpegOf("sequential.jpg", false);
  WriteJpegOf("progressive.jpg", true);
  for (std::string const name : {"sequential.jpg", "progressive.jpg"}) {
    ExpectVerdicts(name, {0.3, 0.95}, {"djpeg", "-outfile", "/dev/null", "FILE"}, SaysSomething, 5);
  }
}

TEST_F(MakeDamage, ChecksumsOfPngCount) {
  PngForm form;
  form.width = kWidth;
  form.height = kHeight;
  form.type = 2;
  WritePng(Path("a.png"), form, Sample);
  ExpectVerdicts("a.png", {0.2, 0.9}, {"pngtopnm", "FILE"}, Fails, 15);
}

TEST_F(MakeDamage, CodesOfGifMustFillThePictureExactly) {
  Convert("pnmquant 64 picture.ppm 2>/dev/null | ppmtogif >a.gif 2>/dev/null");
  ExpectVerdicts("a.gif", {0.1, 0.95}, {"giftopnm", "FILE"}, SaysSomething, 10);
}

TEST_F(MakeDamage, WebpAndJpeg2000AreJudgedByTheirLibraries) {
  Convert("cwebp -quiet picture.ppm -o a.webp && opj_compress -r 20 -i picture.ppm -o a.jp2");
  ExpectVerdicts("a.webp", {0.0, 0.002}, {"dwebp", "FILE", "-o", Path("x.png")}, Fails, 1);
  MakeFrom("a.jp2", {"--force"});
}

#ifdef SORRELIN_HEIF_WARNING

// Libheif repairs what it can and leaves a warning, which heif-convert prints.
TEST_F(MakeDamage, WarningsOfLibheifCount) {
  PngForm form;
  form.type = 2;
  WritePng(Path("a.png"), form, Sample);
  ASSERT_EQ(RunProgram({"heif-enc", "-A", Path("a.png"), "-o", Path("a.avif")}).exit_code, 0);
  MakeFrom("a.avif", {"--dpi", "72", "--force"});
  std::vector<std::string> const preloaded = {"LD_PRELOAD=" SORRELIN_HEIF_WARNING,
                                              "ASAN_OPTIONS=verify_asan_link_order=0"};
  ProgramResult const result = Make({Out(), Path("a.avif"), "--force"}, {}, preloaded);
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("a.avif: cannot be decoded whole, it is damaged: a tile is "
                                    "missing ("));
  ProgramResult const kept =
      Make({Out(), Path("a.avif"), "--force", "--keep-damaged"}, {}, preloaded);
  EXPECT_EQ(kept.exit_code, 1);
  EXPECT_THAT(kept.err, HasSubstr("a.avif: is damaged, and kept"));
  EXPECT_EQ(PageCount(), 1);
}

#endif  // SORRELIN_HEIF_WARNING

TEST_F(MakeDamage, FilesCutShortAreNamedInEveryFormat) {
  WriteTiffOf("a.tif", 8, 1);
  WriteJpegOf("a.jpg", true);
  Convert(
      "pnmquant 64 picture.ppm 2>/dev/null >q.ppm && ppmtogif q.ppm >a.gif 2>/dev/null && "
      "ppmtobmp q.ppm >a.bmp 2>/dev/null && pnmtopng q.ppm >a.png 2>/dev/null && "
      "cwebp -quiet picture.ppm -o a.webp && opj_compress -i picture.ppm -o a.jp2");
  for (std::string const name :
       {"a.jpg", "a.gif", "a.bmp", "a.png", "a.webp", "a.jp2", "picture.ppm"}) {
    MakeFrom(name, {"--force"});
    std::vector<BYTE> bytes = ReadAll(Path(name));
    bytes.resize(bytes.size() * 2 / 3);
    WriteAll(Path("cut-" + name), bytes);
    ProgramResult const result = Make({Out(), Path("cut-" + name), "--force"});
    EXPECT_EQ(result.exit_code, 1) << name;
    EXPECT_THAT(result.err,
                HasSubstr(Path("cut-" + name) + ": cannot be decoded whole, it is damaged: "));
    ProgramResult const kept = Make({Out(), Path("cut-" + name), "--force", "--keep-damaged"});
    EXPECT_EQ(kept.exit_code, 1) << name;
    EXPECT_THAT(kept.err, HasSubstr(Path("cut-" + name) + ": is damaged, and kept"));
    EXPECT_EQ(PageCount(), 1) << name;
  }
}

}  // namespace
}  // namespace test
