// sorrelin extract: JPEG 2000 data of the coder, and in boxes made by hand.
#include <png.h>

#include <cmath>

#include "tests/tools/read_fixture.h"

namespace test {
namespace {

using ::testing::HasSubstr;

// Numbers of a box have their highest byte first.
std::string Long(size_t value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
  return bytes;
}

std::string Box(std::string const& type, std::string const& contents) {
  return Long(8 + contents.size()) + type + contents;
}

// A file of 40 x 24 pixels and components of 8 bits; `space` is that of a colr box, and `more`
// comes after that.
std::string Jp2File(std::string const& codestream, char components, size_t space,
                    std::string const& more) {
  std::string const image =
      Long(24) + Long(40) + std::string(1, '\0') + components + std::string("\7\7\0\0", 4);
  std::string const colours = std::string("\1\0\0", 3) + Long(space);
  return Box("jP  ", "\r\n\x87\n") + Box("ftyp", "jp2 " + Long(0) + "jp2 ") +
         Box("jp2h", Box("ihdr", image) + Box("colr", colours) + more) + Box("jp2c", codestream);
}

class ExtractJpeg2000 : public ReadTest {
 protected:
  // in.pdf, a page of 40 x 24 pixels.
  void WritePage(std::string const& data, std::string const& keys = "") const {
    OnePage const page{.image = "/Subtype/Image /Width 40 /Height 24 /Filter/JPXDecode" + keys,
                       .data = data};
    WriteDocument("in.pdf", page.Build());
  }

  std::string Coded(std::vector<std::string> options, std::string const& name) const {
    options.insert(options.begin(), {"opj_compress", "-n", "2", "-o", Path(name), "-i"});
    EXPECT_EQ(RunProgram(options).exit_code, 0);
    return ToText(ReadAll(Path(name)));
  }

  void ExtractTo(std::string const& name) const {
    ProgramResult const result =
        Run({"extract", Path("in.pdf"), "--force", "--output", Path(name)});
    EXPECT_EQ(result.exit_code, 0) << result.err;
  }

  // x.png or the like of a page whose data are the coder's of this file.
  void ExtractCoded(std::vector<std::string> options, std::string const& name) const {
    WritePage(Coded(std::move(options), "in.jp2"));
    ExtractTo(name);
  }

  // Grey of 40 x 24 pixels with the tones 0, 1 and 2.
  std::string ThreeTones() const {
    std::string tones;
    for (int i = 0; i < 40 * 24; ++i) tones += static_cast<char>((i / 7 + i % 5) % 3);
    WriteAll(Path("in.pgm"), ToBytes("P5\n40 24\n255\n" + tones));
    return tones;
  }

  static std::string RandomBytes(size_t count) {
    std::minstd_rand random(7);
    std::string bytes(count, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random() >> 9);
    return bytes;
  }
};

TEST_F(ExtractJpeg2000, SixteenBitsStaySixteen) {
  for (std::string const head : {"P5\n40 24\n65535\n", "P6\n40 24\n65535\n"}) {
    auto const picture = ToBytes(head + RandomBytes(40 * 24 * (head[1] == '5' ? 2 : 6)));
    WriteAll(Path("in.ppm"), picture);
    ExtractCoded({Path("in.ppm")}, "x.pnm");
    EXPECT_EQ(ReadAll(Path("x.pnm")), picture) << head;
    std::filesystem::remove(Path("x.pnm"));
  }
}

// OpenJPEG's own program rounds the colours in another way.
TEST_F(ExtractJpeg2000, ComponentsOfFewerPixelsAreSpread) {
  WriteAll(Path("in.raw"), ToBytes(RandomBytes(40 * 24 + 2 * 20 * 12)));
  ExtractCoded({Path("in.raw"), "-F", "40,24,3,8,u@1x1:2x2:2x2"}, "x.png");
  RunProgram({"opj_decompress", "-upsample", "-i", Path("in.jp2"), "-o", Path("w.png")});
  PixPtr const ours = ReadPix("x.png");
  PixPtr const theirs = ReadPix("w.png");
  ASSERT_TRUE(ours != nullptr && theirs != nullptr);
  int largest = 0;
  for (int i = 0; i < 40 * 24; ++i) {
    l_int32 a[3];
    l_int32 b[3];
    pixGetRGBPixel(ours.get(), i % 40, i / 40, &a[0], &a[1], &a[2]);
    pixGetRGBPixel(theirs.get(), i % 40, i / 40, &b[0], &b[1], &b[2]);
    for (int c = 0; c < 3; ++c) largest = std::max(largest, std::abs(a[c] - b[c]));
  }
  EXPECT_LE(largest, 1);
}

TEST_F(ExtractJpeg2000, PaletteOfTheDataIsApplied) {
  constexpr std::string_view kPalette("\x10\x20\x30\xFF\x80\x00\x07\x06\xF5", 9);
  std::string const tones = ThreeTones();
  std::string const palette = Box("pclr", std::string("\0\3\3\7\7\7", 6) + std::string(kPalette)) +
                              Box("cmap", std::string("\0\0\1\0\0\0\1\1\0\0\1\2", 12));
  WritePage(Jp2File(Coded({Path("in.pgm")}, "in.j2k"), 1, 16, palette));
  ExtractTo("x.pnm");
  std::string expected = "P6\n40 24\n255\n";
  for (char const tone : tones) expected += kPalette.substr(3 * static_cast<size_t>(tone), 3);
  EXPECT_EQ(ToText(ReadAll(Path("x.pnm"))), expected);
}

// The document's own palette is for the indices as they are.
TEST_F(ExtractJpeg2000, PaletteOfTheDocumentCounts) {
  std::string const tones = ThreeTones();
  WritePage(Coded({Path("in.pgm")}, "in.jp2"),
            " /ColorSpace [/Indexed /DeviceRGB 2 <0102030405060708FF>]");
  ExtractTo("x.pnm");
  std::string const palette("\1\2\3\4\5\6\7\x08\xFF", 9);
  std::string expected = "P6\n40 24\n255\n";
  for (char const tone : tones) expected += palette.substr(3 * static_cast<size_t>(tone), 3);
  EXPECT_EQ(ToText(ReadAll(Path("x.pnm"))), expected);
}

// /SMaskInData is 0 for an opacity that does not count, and 2 where the colours are multiplied by
// it.
TEST_F(ExtractJpeg2000, OpacityOfTheDataIsAsTheDocumentSays) {
  auto const sample = [](int x, int y, int s) {
    return static_cast<unsigned>(s == 3 ? 6 * x + 1 : (5 * x + 9 * y + 70 * s) & 255);
  };
  WritePng(Path("in.png"), {.width = 40, .height = 24, .type = PNG_COLOR_TYPE_RGB_ALPHA}, sample);
  std::string const data = Coded({Path("in.png")}, "in.jp2");
  for (int const kind : {0, 1, 2}) {
    WritePage(data, " /SMaskInData " + std::to_string(kind));
    ExtractTo("x.png");
    PixPtr const shown = ReadPix("x.png");
    ASSERT_EQ(pixGetSpp(shown.get()), kind == 0 ? 3 : 4);
    for (int i = 0; i < 40 * 24; ++i) {
      int const x = i % 40, y = i / 40;
      double const opacity = sample(x, y, 3);
      l_uint32 pixel = 0;
      pixGetPixel(shown.get(), x, y, &pixel);
      for (int s = 0; s < 3; ++s) {
        double const stored = sample(x, y, s);
        double const colour = kind == 2 ? std::min(255.0, stored * 255 / opacity) : stored;
        ASSERT_EQ(pixel >> (24 - 8 * s) & 255, std::lround(colour)) << kind << " at " << i;
      }
      ASSERT_TRUE(kind == 0 || (pixel & 255) == opacity) << i;
    }
  }
}

// Opacity that comes first is found by its mark, and colours by theirs.
TEST_F(ExtractJpeg2000, MarksOfChannelsCount) {
  auto const sample = [](int x, int y, int s) {
    return static_cast<unsigned>(s == 0 ? 6 * x : (5 * x + 9 * y + 70 * s) & 255);
  };
  WritePng(Path("in.png"), {.width = 40, .height = 24, .type = PNG_COLOR_TYPE_RGB_ALPHA}, sample);
  std::string const marks("\0\4\0\0\0\1\0\0\0\1\0\0\0\1\0\2\0\0\0\2\0\3\0\0\0\3", 26);
  WritePage(Jp2File(Coded({Path("in.png")}, "in.j2k"), 4, 16, Box("cdef", marks)),
            " /SMaskInData 1");
  ExtractTo("x.png");
  PixPtr const shown = ReadPix("x.png");
  for (int i = 0; i < 40 * 24; ++i) {
    l_uint32 pixel = 0;
    pixGetPixel(shown.get(), i % 40, i / 40, &pixel);
    for (int s = 0; s < 4; ++s) {
      ASSERT_EQ(pixel >> (24 - 8 * s) & 255, sample(i % 40, i / 40, (s + 1) % 4)) << i;
    }
  }
}

// 14 is Lab.
TEST_F(ExtractJpeg2000, SpaceThatIsNotReadIsNamedUnlessTheDocumentHasOne) {
  WriteAll(Path("in.ppm"), ToBytes("P6\n40 24\n255\n" + RandomBytes(40 * 24 * 3)));
  std::string const data = Jp2File(Coded({Path("in.ppm")}, "in.j2k"), 3, 14, "");
  WritePage(data);
  ProgramResult const named = Run({"extract", Path("in.pdf"), "--output", Path("x.pnm")});
  EXPECT_EQ(named.exit_code, 1);
  EXPECT_THAT(named.err, HasSubstr("its colours are in a space of JPEG 2000 that is not read"));
  WritePage(data, " /ColorSpace /DeviceRGB");
  ExtractTo("x.pnm");
  EXPECT_EQ(ReadAll(Path("x.pnm")), ReadAll(Path("in.ppm")));
}

}  // namespace
}  // namespace test
