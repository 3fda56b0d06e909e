// Depths, inks and profiles of pictures that have to be decoded stay what they were.
#include <png.h>
#include <tiff.h>

#include <cstring>

#include "tests/tools/make_fixture.h"

namespace test {
namespace {

using ::testing::HasSubstr;

unsigned Deep(int x, int y, int s) {
  return static_cast<unsigned>(x * 1021 + y * 257 + s * 7919 + 3) & 0xFFFF;
}

// To the nearest: 65535 is opaque.
unsigned OnWhite(unsigned value, unsigned alpha) {
  return static_cast<unsigned>(
      (uint64_t{value} * alpha + uint64_t{65535} * (65535 - alpha) + 32767) / 65535);
}

std::string BigEndian(unsigned value) {
  return {static_cast<char>(value >> 8), static_cast<char>(value)};
}

PngForm DeepPng(int type) {
  PngForm form;
  form.bits = 16;
  form.type = type;
  return form;
}

void PutLittle(std::vector<BYTE>& bytes, size_t at, uint32_t value, size_t count = 4) {
  for (size_t i = 0; i < count; ++i) bytes[at + i] = static_cast<BYTE>(value >> 8 * i);
}

class MakeKept : public MakeTest {
 protected:
  // The document, its streams inflated by qpdf, without the changes that were reported.
  std::string Inflated() const {
    return RunProgram({"qpdf", "--stream-data=uncompress", "--decode-level=all", Out(), "-"}).out;
  }

  std::string MessagesFrom(std::string const& name, std::vector<std::string> options = {}) const {
    options.insert(options.begin(), {Out(), Path(name), "--force"});
    ProgramResult const result = Make(options);
    EXPECT_EQ(result.exit_code, 0) << result.err;
    return result.err;
  }

  // Row 5 of 72 pixels, each of `samples` values of 16 bits.
  void ExpectDeepRow(int samples, std::function<unsigned(int x, int s)> const& value) const {
    EXPECT_TRUE(DocumentHas("/BitsPerComponent 16"));
    std::string row;
    for (int x = 0; x < 72; ++x) {
      for (int s = 0; s < samples; ++s) row += BigEndian(value(x, s));
    }
    EXPECT_NE(Inflated().find(row), std::string::npos);
  }

  void ExpectProfile(std::string const& messages, std::vector<BYTE> const& profile) const {
    EXPECT_THAT(messages, ::testing::Not(HasSubstr("profile")));
    EXPECT_TRUE(DocumentHas("/ICCBased"));
    EXPECT_NE(Inflated().find(std::string(profile.begin(), profile.end())), std::string::npos);
  }
};

TEST_F(MakeKept, InterlacedPngKeeps16Bits) {
  for (int const type : {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_RGB}) {
    PngForm form = DeepPng(type);
    form.interlaced = true;
    WritePng(Path("a.png"), form, Deep);
    EXPECT_THAT(MessagesFrom("a.png"), ::testing::Not(HasSubstr("reduced")));
    ExpectDeepRow(type == PNG_COLOR_TYPE_GRAY ? 1 : 3, [](int x, int s) { return Deep(x, 5, s); });
  }
}

TEST_F(MakeKept, TransparentPngKeeps16Bits) {
  for (int const type : {PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB_ALPHA}) {
    int const colours = type == PNG_COLOR_TYPE_GRAY_ALPHA ? 1 : 3;
    WritePng(Path("a.png"), DeepPng(type), Deep);
    EXPECT_THAT(MessagesFrom("a.png"), HasSubstr("transparency laid on white"));
    ExpectDeepRow(colours,
                  [=](int x, int s) { return OnWhite(Deep(x, 5, s), Deep(x, 5, colours)); });
  }
}

// Only the low byte tells the clear pixels from the others.
TEST_F(MakeKept, ClearToneOf16BitsIsFoundByBothBytes) {
  PngForm form = DeepPng(PNG_COLOR_TYPE_GRAY);
  form.key = {0x1234};
  auto const tone = [](int x, int, int) { return x % 2 == 0 ? 0x1234u : 0x1235u; };
  WritePng(Path("a.png"), form, tone);
  MakeFrom("a.png");
  ExpectDeepRow(1, [](int x, int) { return x % 2 == 0 ? 0xFFFFu : 0x1235u; });
}

TEST_F(MakeKept, PngOfGreyAndAlphaStaysGrey) {
  PngForm form = DeepPng(PNG_COLOR_TYPE_GRAY_ALPHA);
  form.bits = 8;
  form.profile = MakeProfile(1);
  WritePng(Path("a.png"), form,
           [](int x, int, int s) { return s == 0 ? static_cast<unsigned>(x) : 255u; });
  ExpectProfile(MessagesFrom("a.png"), form.profile);
  EXPECT_TRUE(DocumentHas("/N 1\n"));
}

TEST_F(MakeKept, DeepPnmKeepsItsBits) {
  std::string colour = "P6 72 6 65535\n", scaled = "P6 72 6 1023\n";
  for (int y = 0; y < 6; ++y) {
    for (int i = 0; i < 72 * 3; ++i) {
      colour += BigEndian(Deep(i / 3, y, i % 3));
      scaled += BigEndian(Deep(i / 3, y, i % 3) >> 6);
    }
  }
  WriteAll(Path("a.ppm"), {colour.begin(), colour.end()});
  EXPECT_THAT(MessagesFrom("a.ppm"), ::testing::Not(HasSubstr("reduced")));
  ExpectDeepRow(3, [](int x, int s) { return Deep(x, 5, s); });
  WriteAll(Path("b.ppm"), {scaled.begin(), scaled.end()});
  MessagesFrom("b.ppm");
  ExpectDeepRow(3, [](int x, int s) { return ((Deep(x, 5, s) >> 6) * 65535 + 511) / 1023; });
}

TEST_F(MakeKept, PamOfInksKeepsThem) {
  std::string pam = "P7\nWIDTH 72\nHEIGHT 6\nDEPTH 4\nMAXVAL 65535\nTUPLTYPE CMYK\nENDHDR\n";
  for (int i = 0; i < 6 * 72 * 4; ++i) pam += BigEndian(Deep(i / 4 % 72, i / 288, i % 4));
  WriteAll(Path("a.pam"), {pam.begin(), pam.end()});
  EXPECT_THAT(MessagesFrom("a.pam"), ::testing::Not(HasSubstr("converted")));
  EXPECT_TRUE(DocumentHas("/DeviceCMYK"));
  ExpectDeepRow(4, [](int x, int s) { return Deep(x, 5, s); });
}

TEST_F(MakeKept, DeepPamWithAlphaIsLaidOnWhite) {
  std::string pam =
      "P7\nWIDTH 72\nHEIGHT 6\nDEPTH 2\nMAXVAL 65535\nTUPLTYPE GRAYSCALE_ALPHA\nENDHDR\n";
  for (int i = 0; i < 6 * 72 * 2; ++i) pam += BigEndian(Deep(i / 2 % 72, i / 144, i % 2));
  WriteAll(Path("a.pam"), {pam.begin(), pam.end()});
  EXPECT_THAT(MessagesFrom("a.pam"), HasSubstr("transparency laid on white"));
  ExpectDeepRow(1, [](int x, int) { return OnWhite(Deep(x, 5, 0), Deep(x, 5, 1)); });
}

TEST_F(MakeKept, BlackAndWhitePamHasOneBit) {
  std::string const pam =
      "P7\nWIDTH 9\nHEIGHT 1\nDEPTH 1\nMAXVAL 1\nTUPLTYPE BLACKANDWHITE\nENDHDR\n" +
      std::string({1, 0, 1, 1, 0, 0, 0, 1, 0});
  WriteAll(Path("a.pam"), {pam.begin(), pam.end()});
  MakeFrom("a.pam", {"--dpi", "72"});
  EXPECT_TRUE(DocumentHas("/BitsPerComponent 1\n"));
  ExpectPage(9, 1, [&](int x, int) {
    return pam[pam.size() - 9 + static_cast<size_t>(x)] == 0 ? 0x000000 : 0xFFFFFF;
  });
}

// White on the left, and on the right the Lab of sRGB's pure red: 54.29, 80.81, 69.89.
TEST_F(MakeKept, TiffOfLabBecomesRgbAndThatIsSaid) {
  TiffPage page;
  page.samples = 3;
  page.compression = COMPRESSION_LZW;
  for (int const bits : {8, 16}) {
    for (int const photometric : {PHOTOMETRIC_CIELAB, PHOTOMETRIC_ICCLAB}) {
      page.bits = bits;
      page.photometric = photometric;
      unsigned const offset = photometric == PHOTOMETRIC_ICCLAB ? 128 : 0;
      unsigned const step = bits == 16 ? 256 : 1;
      unsigned const most = bits == 8 ? 255 : photometric == PHOTOMETRIC_ICCLAB ? 0xFF00 : 0xFFFF;
      WriteTiff(Path("a.tif"), {page}, [&](int, int x, int, int s) {
        bool const white = x < 36;
        if (s == 0) return white ? most : most * 5429 / 10000;
        return (offset + (white ? 0u : s == 1 ? 81u : 70u)) * step;
      });
      EXPECT_THAT(MessagesFrom("a.tif"), HasSubstr("colours converted"));
      EXPECT_EQ(DocumentHas("/BitsPerComponent 16"), bits == 16);
      ExpectPage(
          72, 36, [](int x, int) { return x < 36 ? 0xFFFFFFu : 0xFF0000u; }, 6);
    }
  }
}

TEST_F(MakeKept, TiffOfYcbcrBecomesRgbAndThatIsSaid) {
  TiffPage page;
  page.bits = 8;
  page.samples = 3;
  page.compression = COMPRESSION_LZW;
  page.photometric = PHOTOMETRIC_YCBCR;
  WriteTiff(Path("a.tif"), {page},
            [](int, int x, int, int s) { return s == 0 ? static_cast<unsigned>(3 * x) : 128u; });
  EXPECT_THAT(MessagesFrom("a.tif"), HasSubstr("colours converted"));
  ExpectPage(
      72, 36, [](int x, int) { return DWORD(3 * x) * 0x010101; }, 2);
}

TEST_F(MakeKept, UnusableProfileOfADecodedTiffIsReported) {
  TiffPage page;
  page.bits = 8;
  page.samples = 3;
  page.compression = COMPRESSION_LZW;
  page.photometric = PHOTOMETRIC_RGB;
  page.profile = MakeProfile(4);
  auto const sample = [](int, int x, int, int s) { return static_cast<unsigned>(x + s); };
  WriteTiff(Path("a.tif"), {page}, sample);
  EXPECT_THAT(MessagesFrom("a.tif"), HasSubstr("colour profile left out"));
  page.profile = MakeProfile(3);
  WriteTiff(Path("a.tif"), {page}, sample);
  ExpectProfile(MessagesFrom("a.tif"), page.profile);
}

TEST_F(MakeKept, WebpKeepsItsProfile) {
  PngForm form;
  form.type = PNG_COLOR_TYPE_RGB;
  WritePng(Path("a.png"), form, [](int x, int y, int s) { return Deep(x, y, s) & 0xFF; });
  auto const profile = MakeProfile(3);
  WriteAll(Path("a.icc"), profile);
  ASSERT_EQ(
      RunProgram({"cwebp", "-quiet", "-lossless", Path("a.png"), "-o", Path("b.webp")}).exit_code,
      0);
  ASSERT_EQ(
      RunProgram({"webpmux", "-set", "icc", Path("a.icc"), Path("b.webp"), "-o", Path("a.webp")})
          .exit_code,
      0);
  ExpectProfile(MessagesFrom("a.webp"), profile);
}

// GIF and BMP as their specifications lay profiles out: 4 by 1 pixels.
TEST_F(MakeKept, GifKeepsItsProfile) {
  auto const profile = MakeProfile(3);
  std::string gif = "GIF89a" + std::string("\x04\0\x01\0\xF0\0\0", 7) +
                    std::string("\x10\x20\x30\xF0\xE0\xD0", 6) + "\x21\xFF\x0BICCRGBG1012";
  for (size_t at = 0; at < profile.size(); at += 255) {
    size_t const count = std::min<size_t>(255, profile.size() - at);
    gif += static_cast<char>(count);
    gif.append(profile.begin() + static_cast<long>(at),
               profile.begin() + static_cast<long>(at + count));
  }
  // Codes of 3 bits: clear, 0, 1, 1; and of 4: 1, end.
  gif += std::string("\0\x2C\0\0\0\0\x04\0\x01\0\0\x02\x03\x44\x12\x05\0\x3B", 18);
  WriteAll(Path("a.gif"), {gif.begin(), gif.end()});
  ExpectProfile(MessagesFrom("a.gif"), profile);
}

std::vector<BYTE> MakeBmp(uint32_t colour_kind, std::vector<BYTE> const& profile) {
  constexpr size_t kRows = 14 + 124;
  std::vector<BYTE> bmp(kRows + 12);
  bmp[0] = 'B', bmp[1] = 'M';
  PutLittle(bmp, 10, kRows);
  PutLittle(bmp, 14, 124);
  PutLittle(bmp, 18, 4);
  PutLittle(bmp, 22, 1);
  PutLittle(bmp, 26, 1, 2);
  PutLittle(bmp, 28, 24, 2);
  PutLittle(bmp, 70, colour_kind);
  PutLittle(bmp, 126, static_cast<uint32_t>(bmp.size() - 14));
  PutLittle(bmp, 130, static_cast<uint32_t>(profile.size()));
  bmp.insert(bmp.end(), profile.begin(), profile.end());
  return bmp;
}

TEST_F(MakeKept, BmpKeepsItsProfile) {
  auto const profile = MakeProfile(3);
  WriteAll(Path("a.bmp"), MakeBmp(0x4D424544, profile));
  ExpectProfile(MessagesFrom("a.bmp"), profile);
}

TEST_F(MakeKept, ProfileThatABmpOnlyNamesOrCutsShortIsReported) {
  WriteAll(Path("a.bmp"), MakeBmp(0x4C494E4B, {'a', '.', 'i', 'c', 'c', 0}));
  EXPECT_THAT(MessagesFrom("a.bmp"), HasSubstr("colour profile left out"));
  auto cut = MakeBmp(0x4D424544, MakeProfile(3));
  cut.pop_back();
  WriteAll(Path("a.bmp"), cut);
  EXPECT_THAT(MessagesFrom("a.bmp"), HasSubstr("colour profile left out"));
}

TEST_F(MakeKept, BmpOf10BitsAColourIsReportedAsReduced) {
  std::vector<BYTE> bmp = MakeBmp(0, {});
  PutLittle(bmp, 18, 3);
  PutLittle(bmp, 28, 32, 2);
  PutLittle(bmp, 30, 3);
  PutLittle(bmp, 54, 0x3FF00000);
  PutLittle(bmp, 58, 0x000FFC00);
  PutLittle(bmp, 62, 0x000003FF);
  WriteAll(Path("a.bmp"), bmp);
  EXPECT_THAT(MessagesFrom("a.bmp"), HasSubstr("samples reduced to 8 bits"));
}

// heif-enc puts the profile of the PNG file into its own.
TEST_F(MakeKept, HeicKeepsItsProfile) {
  if (!SORRELIN_TEST_HEIF) GTEST_SKIP() << "built without libheif";
  PngForm form;
  form.type = PNG_COLOR_TYPE_RGB;
  form.profile = MakeProfile(3);
  WritePng(Path("a.png"), form, [](int x, int y, int) { return static_cast<unsigned>(x + y); });
  if (RunProgram({"heif-enc", Path("a.png"), "-q", "95", "-o", Path("a.heic")}).exit_code != 0)
    GTEST_SKIP() << "heif-enc lacks the coder";
  ProgramResult const result = Make({Out(), Path("a.heic")});
  ExpectProfile(result.err, form.profile);
}

// From 16 bits heif-enc makes 10, with loss.
TEST_F(MakeKept, HeicOf10BitsHas16) {
  if (!SORRELIN_TEST_HEIF) GTEST_SKIP() << "built without libheif";
  PngForm form = DeepPng(PNG_COLOR_TYPE_RGB);
  auto const tone = [](int x, int y, int) { return static_cast<unsigned>(x * 500 + y * 300); };
  WritePng(Path("a.png"), form, tone);
  if (RunProgram({"heif-enc", Path("a.png"), "-b", "10", "-q", "95", "-o", Path("a.heic")})
          .exit_code != 0)
    GTEST_SKIP() << "heif-enc lacks the coder";
  ProgramResult const result = Make({Out(), Path("a.heic")});
  EXPECT_THAT(result.err, ::testing::Not(HasSubstr("reduced")));
  EXPECT_TRUE(DocumentHas("/BitsPerComponent 16"));
  ExpectPage(
      72, 36, [](int x, int y) { return static_cast<DWORD>((x * 500 + y * 300) >> 8) * 0x10101; },
      3);
}

}  // namespace
}  // namespace test
