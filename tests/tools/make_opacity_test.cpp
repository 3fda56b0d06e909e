// What becomes of alpha and other samples beyond the colours, and what the report says of it.
#include <png.h>
#include <tiff.h>

#include "tests/tools/make_fixture.h"

namespace test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr int kWidth = 72, kHeight = 36;
constexpr char kLaidOnWhite[] = "transparency laid on white";
constexpr char kLeftOut[] = "samples beyond the colours left out";

unsigned Channel(DWORD colour, int s) { return colour >> (16 - 8 * s) & 0xFF; }

// Red, green, blue of the pattern, and an opaque alpha.
unsigned Opaque(int x, int y, int s) { return s == 3 ? 255u : Channel(Motley(x, y), s); }

class MakeOpacity : public MakeTest {
 protected:
  std::string MessagesFrom(std::string const& name) const {
    ProgramResult const result = Make({Out(), Path(name), "--force", "--dpi", "72"});
    EXPECT_EQ(result.exit_code, 0) << result.err;
    return result.err;
  }

  void ExpectNoChange(std::string const& name) const {
    EXPECT_EQ(MessagesFrom(name), "") << name;
    ExpectPage(kWidth, kHeight, Motley);
  }

  void WritePam(std::string const& name, std::string const& type, int samples) const {
    std::string pam = "P7\nWIDTH 72\nHEIGHT 36\nDEPTH " + std::to_string(samples) +
                      "\nMAXVAL 255\nTUPLTYPE " + type + "\nENDHDR\n";
    for (int i = 0; i < kWidth * kHeight * samples; ++i) {
      int const pixel = i / samples;
      pam += static_cast<char>(Opaque(pixel % kWidth, pixel / kWidth, i % samples));
    }
    WriteAll(Path(name), {pam.begin(), pam.end()});
  }

  void WriteTiffOf(TiffPage const& page, std::function<unsigned(int, int, int)> const& at) const {
    WriteTiff(Path("a.tif"), {page}, [&](int, int x, int y, int s) {
      unsigned const value = at(x, y, s);
      return page.bits == 16 ? value * 257 : value;
    });
  }

  std::string Inflated() const {
    return RunProgram({"qpdf", "--stream-data=uncompress", "--decode-level=all", Out(), "-"}).out;
  }
};

PngForm Png(int bits, int type) { return {.bits = bits, .type = type}; }

TiffPage Tiff(int bits, int samples, int extra_sample) {
  return {.bits = bits,
          .samples = samples,
          .photometric = samples < 3 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB,
          .compression = COMPRESSION_LZW,
          .extra_sample = extra_sample};
}

// RGB with a sample beyond the colours, in all layouts.
std::vector<TiffPage> EachLayout(int extra_sample) {
  std::vector<TiffPage> pages;
  for (int const bits : {8, 16}) {
    for (int const tile : {0, 16}) {
      for (bool const planar : {false, true}) {
        pages.push_back(Tiff(bits, 4, extra_sample));
        pages.back().tile = tile;
        pages.back().planar = planar;
      }
    }
  }
  return pages;
}

TEST_F(MakeOpacity, OpaqueAlphaOfPngIsNoChange) {
  WritePng(Path("a.png"), Png(8, PNG_COLOR_TYPE_RGB_ALPHA), Opaque);
  ExpectNoChange("a.png");
  WritePng(Path("a.png"), Png(16, PNG_COLOR_TYPE_RGB_ALPHA),
           [](int x, int y, int s) { return Opaque(x, y, s) * 257; });
  ExpectNoChange("a.png");
  PngForm keyed = Png(8, PNG_COLOR_TYPE_RGB);
  keyed.key = {1, 2, 3};
  WritePng(Path("a.png"), keyed, Opaque);
  ExpectNoChange("a.png");
}

TEST_F(MakeOpacity, ClearColourOfAPaletteCountsWhereItIsUsed) {
  PngForm form = Png(8, PNG_COLOR_TYPE_PALETTE);
  form.palette = {0x102030, 0x405060, 0x708090};
  form.palette_alpha = {255, 255, 0};
  WritePng(Path("a.png"), form, [](int x, int, int) { return unsigned(x) % 2; });
  EXPECT_EQ(MessagesFrom("a.png"), "");
  WritePng(Path("a.png"), form, [](int x, int, int) { return unsigned(x) % 3; });
  EXPECT_THAT(MessagesFrom("a.png"), HasSubstr(kLaidOnWhite));
}

TEST_F(MakeOpacity, OpaqueAlphaOfTiffIsNoChangeHoweverItIsLaidOut) {
  for (TiffPage const& page : EachLayout(EXTRASAMPLE_UNASSALPHA)) {
    WriteTiffOf(page, Opaque);
    ExpectNoChange("a.tif");
  }
}

TEST_F(MakeOpacity, OpaqueAlphaOfPamAndJpeg2000IsNoChange) {
  WritePam("a.pam", "RGB_ALPHA", 4);
  ExpectNoChange("a.pam");
  WritePng(Path("a.png"), Png(8, PNG_COLOR_TYPE_RGB_ALPHA), Opaque);
  Run("opj_compress -i a.png -o a.jp2");
  ExpectNoChange("a.jp2");
}

// cwebp leaves an opaque alpha out; the bit after the two sizes of 14 bits says that there is one.
TEST_F(MakeOpacity, OpaqueAlphaOfWebpIsNoChange) {
  WritePng(Path("a.png"), Png(8, PNG_COLOR_TYPE_RGB), Opaque);
  Run("cwebp -quiet -lossless a.png -o a.webp");
  std::vector<BYTE> webp = ReadAll(Path("a.webp"));
  ASSERT_EQ(webp[20], 0x2F);
  webp[24] |= 0x10;
  WriteAll(Path("a.webp"), webp);
  ASSERT_THAT(RunProgram({"webpinfo", Path("a.webp")}).out, HasSubstr("Alpha: 1"));
  ExpectNoChange("a.webp");
}

TEST_F(MakeOpacity, AlphaOfHeicAndAvifIsReportedUnlessItIsOpaque) {
  if (!SORRELIN_TEST_HEIF) GTEST_SKIP() << "built without libheif";
  auto const half = [](int x, int y, int s) { return s == 3 ? 128u : Opaque(x, y, s); };
  for (std::string const name : {"a.heic", "a.avif"}) {
    std::string const encode = "heif-enc a.png -o " + name + (name == "a.avif" ? " -A" : "");
    WritePng(Path("a.png"), Png(8, PNG_COLOR_TYPE_RGB_ALPHA), Opaque);
    Run(encode);
    ASSERT_THAT(RunProgram({"heif-info", Path(name)}).out, HasSubstr("alpha channel: yes"));
    EXPECT_EQ(MessagesFrom(name), "");
    WritePng(Path("a.png"), Png(8, PNG_COLOR_TYPE_RGB_ALPHA), half);
    Run(encode);
    EXPECT_THAT(MessagesFrom(name), HasSubstr(kLaidOnWhite));
  }
}

TEST_F(MakeOpacity, AlphaThatIsNotOpaqueIsReportedInEachFormat) {
  auto const half = [](int x, int y, int s) { return s == 3 ? 128u : Opaque(x, y, s); };
  WritePng(Path("a.png"), Png(8, PNG_COLOR_TYPE_RGB_ALPHA), half);
  WriteTiffOf(Tiff(8, 4, EXTRASAMPLE_UNASSALPHA), half);
  Run("opj_compress -i a.png -o a.jp2 && cwebp -quiet -lossless a.png -o a.webp");
  for (char const* const name : {"a.png", "a.tif", "a.jp2", "a.webp"}) {
    EXPECT_THAT(MessagesFrom(name), HasSubstr(kLaidOnWhite)) << name;
  }
}

TEST_F(MakeOpacity, GreyTiffWithAlphaStaysGrey) {
  WriteTiffOf(Tiff(8, 2, EXTRASAMPLE_UNASSALPHA),
              [](int x, int, int s) { return s == 1 ? 51u : unsigned(x); });
  EXPECT_THAT(MessagesFrom("a.tif"), HasSubstr(kLaidOnWhite));
  EXPECT_TRUE(DocumentHas("/ColorSpace /DeviceGray"));
  // A fifth of the tone on white.
  ExpectPage(
      kWidth, kHeight, [](int x, int) { return DWORD(204 + x / 5) * 0x010101; }, 1);
}

TEST_F(MakeOpacity, SamplesOfAnUnknownKindAreLeftOutAndThatIsSaid) {
  for (TiffPage const& page : EachLayout(EXTRASAMPLE_UNSPECIFIED)) {
    WriteTiffOf(page, [](int x, int y, int s) { return s == 3 ? 7u : Opaque(x, y, s); });
    std::string const said = MessagesFrom("a.tif");
    EXPECT_THAT(said, HasSubstr(kLeftOut));
    EXPECT_THAT(said, Not(HasSubstr(kLaidOnWhite)));
    ExpectPage(kWidth, kHeight, Motley);
  }
}

TEST_F(MakeOpacity, AlphaOfDeepJpeg2000LeavesAllBits) {
  auto const deep = [](int x, int y, int s) {
    return s == 3 ? 0xFFFFu - unsigned(y) : unsigned(x * 911 + y * 257 + s * 7919) & 0xFFFF;
  };
  WritePng(Path("a.png"), Png(16, PNG_COLOR_TYPE_RGB_ALPHA), deep);
  Run("opj_compress -i a.png -o a.jp2");
  std::string const said = MessagesFrom("a.jp2");
  EXPECT_THAT(said, HasSubstr(kLaidOnWhite));
  EXPECT_THAT(said, Not(HasSubstr("reduced")));
  EXPECT_TRUE(DocumentHas("/BitsPerComponent 16"));
  std::string first_row;  // which is opaque
  for (int x = 0; x < kWidth; ++x) {
    for (int s = 0; s < 3; ++s) {
      unsigned const value = deep(x, 0, s);
      first_row += {static_cast<char>(value >> 8), static_cast<char>(value)};
    }
  }
  EXPECT_THAT(Inflated(), HasSubstr(first_row));
}

void PutBigLong(std::vector<BYTE>& bytes, size_t at, size_t value) {
  for (size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<BYTE>(value >> (24 - 8 * i));
}

// A JP2 file whose colours are described by a profile in place of a number.
std::vector<BYTE> WithProfile(std::vector<BYTE> jp2, std::vector<BYTE> const& profile) {
  constexpr size_t kColourBoxBytes = 15, kMethodAt = 8, kProfileAt = 11;
  auto const box = [&](std::string const& type) {
    return static_cast<size_t>(std::search(jp2.begin(), jp2.end(), type.begin(), type.end()) -
                               jp2.begin() - 4);
  };
  size_t const header = box("jp2h"), colours = box("colr");
  size_t const header_bytes = size_t{jp2[header + 2]} << 8 | jp2[header + 3];
  jp2[colours + kMethodAt] = 2;
  auto const at = jp2.begin() + static_cast<ptrdiff_t>(colours);
  jp2.insert(jp2.erase(at + kProfileAt, at + kColourBoxBytes), profile.begin(), profile.end());
  PutBigLong(jp2, colours, kProfileAt + profile.size());
  PutBigLong(jp2, header, header_bytes + kProfileAt + profile.size() - kColourBoxBytes);
  return jp2;
}

TEST_F(MakeOpacity, ProfileOfJpeg2000WithAlphaStays) {
  WritePng(Path("a.png"), Png(8, PNG_COLOR_TYPE_RGB_ALPHA),
           [](int x, int y, int s) { return s == 3 ? 9u : Opaque(x, y, s); });
  Run("opj_compress -i a.png -o a.jp2");
  std::vector<BYTE> const profile = MakeProfile(3);
  WriteAll(Path("a.jp2"), WithProfile(ReadAll(Path("a.jp2")), profile));
  EXPECT_THAT(MessagesFrom("a.jp2"), Not(HasSubstr("profile")));
  EXPECT_TRUE(DocumentHas("/ICCBased"));
  EXPECT_NE(Inflated().find(std::string(profile.begin(), profile.end())), std::string::npos);
}

}  // namespace
}  // namespace test
