// The codings, colours and masks of pictures, by the pixels that come of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/judged_page.h"

namespace sorrelin::tool {
namespace {

using ::testing::HasSubstr;

// ---- Codings in a row ----

std::string Hex(std::string const& bytes) {
  std::string hex;
  for (char const byte : bytes) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(byte));
    hex += digits;
  }
  return hex + ">";
}

TEST(PageJudge, FiltersAreUndoneOneAfterTheOther) {
  std::string const packed = test::Deflate(kFourBytes);
  EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray /Filter [/ASCIIHexDecode /FlateDecode]", Hex(packed))
                .pixels.hex,
            "1020 3040 ");
  EXPECT_EQ(
      ReadGrey("/ColorSpace /DeviceGray /Filter [/ASCIIHexDecode]", Hex(kFourBytes)).pixels.hex,
      "1020 3040 ");
  // Four bytes of 0 are "z"; 10 20 30 40 are these digits of 85.
  EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray /Filter /ASCII85Decode", "z~>").pixels.hex,
            "0000 0000 ");
  EXPECT_EQ(
      ReadGrey("/ColorSpace /DeviceGray /Filter [/FlateDecode /FlateDecode]", test::Deflate(packed))
          .pixels.hex,
      "1020 3040 ");
}

// ISO 32000-1, 7.4.4.2: these nine bits at a time are 45 45 45 45 45 65 45 45 45 66.
TEST(PageJudge, LzwIsDecoded) {
  Outcome const page =
      ReadPage(test::OnePage{.image = "/Subtype/Image /Width 9 /Height 1 /BitsPerComponent 8 "
                                      "/ColorSpace /DeviceGray /Filter /LZWDecode",
                             .data = std::string("\x80\x0B\x60\x50\x22\x0C\x0C\x85\x01", 9)}
                   .Build());
  EXPECT_EQ(page.pixels.hex, "2d2d2d2d2d412d2d2d ");
}

TEST(PageJudge, PredictionOfTiffIsUndone) {
  EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray /Filter /FlateDecode "
                     "/DecodeParms <</Predictor 2 /Columns 2>>",
                     test::Deflate("\x10\x10\x30\x10"))
                .pixels.hex,
            "1020 3040 ");
}

// ---- Damage ----

TEST(PageJudge, FlateDataWithAWrongChecksumAreNamed) {
  std::string packed = test::Deflate(kFourBytes);
  packed.back() = static_cast<char>(packed.back() ^ 1);
  EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray /Filter /FlateDecode", packed).problem,
            "its data are damaged");
  std::string rows = test::Deflate(test::PngRows(kFourBytes, 2, 2));
  rows.back() = static_cast<char>(rows.back() ^ 1);
  EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray /Filter /FlateDecode "
                     "/DecodeParms <</Predictor 15 /Columns 2>>",
                     rows)
                .problem,
            "its data are damaged");
}

TEST(PageJudge, FlateDataWithoutTheirEndAreNamed) {
  std::string const packed = test::Deflate(kFourBytes);
  for (size_t cut = 1; cut <= 4; ++cut) {
    EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray /Filter /FlateDecode",
                       packed.substr(0, packed.size() - cut))
                  .problem,
              "its data are damaged");
  }
}

// Four white rows of 8 take a bit each (V0), and the data have two.
TEST(PageJudge, Group4DataThatLackRowsAreNamed) {
  test::OnePage page = {.image =
                            "/Subtype/Image /Width 8 /Height 4 /ColorSpace /DeviceGray "
                            "/BitsPerComponent 1 /Filter /CCITTFaxDecode "
                            "/DecodeParms <</K -1 /Columns 8>>",
                        .data = std::string("\xC0\x04\x00\x40", 4)};
  EXPECT_EQ(ReadPage(page.Build()).problem, "its data end before its picture does");
  page.data = std::string("\xF0\x01\x00\x10", 4);
  EXPECT_EQ(ReadPage(page.Build()).pixels.hex, "00 00 00 00 ");
}

// ---- Fax ----

// T.4: white 4 is 1011, black 4 is 011; a mark is 000000000001.
TEST(PageJudge, Group3OfOneDimensionIsDecoded) {
  test::OnePage page = {.image =
                            "/Subtype/Image /Width 8 /Height 2 /ColorSpace /DeviceGray "
                            "/BitsPerComponent 1 /Filter /CCITTFaxDecode "
                            "/DecodeParms <</Columns 8>>",
                        .data = std::string("\xB7\x6E", 2)};  // 1011 011 1011 011 00
  page.data = std::string("\xB7\x6C", 2);
  EXPECT_EQ(ReadPage(page.Build()).pixels.hex, "0f 0f ");
  page.image =
      "/Subtype/Image /Width 8 /Height 2 /ColorSpace /DeviceGray /BitsPerComponent 1 "
      "/Filter /CCITTFaxDecode /DecodeParms <</Columns 8 /EncodedByteAlign true>>";
  page.data = std::string("\xB6\xB6", 2);
  EXPECT_EQ(ReadPage(page.Build()).pixels.hex, "0f 0f ");
  page.image =
      "/Subtype/Image /Width 8 /Height 2 /ColorSpace /DeviceGray /BitsPerComponent 1 "
      "/Filter /CCITTFaxDecode /DecodeParms <</Columns 8 /EndOfLine true>>";
  page.data = std::string("\x00\x1B\x60\x01\xB6", 5);
  EXPECT_EQ(ReadPage(page.Build()).pixels.hex, "0f 0f ");
}

// A tag of 1 after the mark: one dimension; of 0: two, here twice V0.
TEST(PageJudge, Group3OfTwoDimensionsIsDecoded) {
  test::OnePage const page = {.image =
                                  "/Subtype/Image /Width 8 /Height 2 /ColorSpace /DeviceGray "
                                  "/BitsPerComponent 1 /Filter /CCITTFaxDecode "
                                  "/DecodeParms <</Columns 8 /K 4 /EndOfLine true>>",
                              // 000000000001 1 1011 011, 000000000001 0 1 1
                              .data = std::string("\x00\x1D\xB0\x01\x60", 5)};
  EXPECT_EQ(ReadPage(page.Build()).pixels.hex, "0f 0f ");
}

// ---- Colours ----

// One pixel of 3 or 4 samples.
std::string PixelOf(std::string const& space, std::string const& data,
                    std::string const& more = "") {
  Outcome const page = ReadPage(test::OnePage{
      .image = "/Subtype/Image /Width 1 /Height 1 /BitsPerComponent 8 /ColorSpace " + space + more,
      .data = data}
                                    .Build());
  return page.problem + page.pixels.hex;
}

TEST(PageJudge, InksBecomeColoursAsOnPaper) {
  EXPECT_EQ(PixelOf("/DeviceCMYK", std::string(4, '\0')), "ffffff ");
  EXPECT_EQ(PixelOf("/DeviceCMYK", "\xFF\xFF\xFF\xFF"), "000000 ");
  EXPECT_EQ(PixelOf("/DeviceCMYK", std::string("\xFF\0\0\0", 4)), "00adef ");
  EXPECT_EQ(
      PixelOf("/DeviceCMYK", std::string("\xFF\xFF\xFF\xFF", 4), " /Decode [1 0 1 0 1 0 1 0]"),
      "ffffff ");
}

TEST(PageJudge, LabBecomesColours) {
  std::string const lab = "[/Lab <</WhitePoint [0.9642 1 0.8249] /Range [-128 127 -128 127]>>]";
  EXPECT_EQ(PixelOf(lab, "\xFF\x80\x80"), "ffffff ");
  EXPECT_EQ(PixelOf(lab, std::string("\0\x80\x80", 3)), "000000 ");
}

// The tint is taken out of the red.
TEST(PageJudge, TintsGoThroughTheirFunctions) {
  std::string const tint = "<</FunctionType 2 /Domain [0 1] /N 1 /C0 [1 1 1] /C1 [0 1 1]>>";
  Outcome const spot =
      ReadPage(test::OnePage{.image = "/Subtype/Image /Width 1 /Height 1 /BitsPerComponent 8 "
                                      "/ColorSpace [/Separation /Spot /DeviceRGB " +
                                      tint + "]",
                             .data = "\xFF"}
                   .Build());
  EXPECT_EQ(spot.pixels.hex, "ff ");
  ASSERT_EQ(spot.pixels.form.palette.size(), 256u);
  EXPECT_EQ(spot.pixels.form.palette[255].rgbRed, 0);
  EXPECT_EQ(spot.pixels.form.palette[255].rgbGreen, 255);
  EXPECT_EQ(spot.pixels.form.palette[51].rgbRed, 204);
  auto pdf = test::OnePage{.image =
                               "/Subtype/Image /Width 1 /Height 1 /BitsPerComponent 8 "
                               "/ColorSpace [/DeviceN [/A /B] /DeviceRGB 7 0 R]",
                           .data = "\xFF\x33"}
                 .Build();
  pdf.Stream(7, "/FunctionType 4 /Domain [0 1 0 1] /Range [0 1 0 1 0 1]", "{ 2 copy mul }");
  EXPECT_EQ(ReadPage(pdf).pixels.hex, "ff3333 ");
}

TEST(PageJudge, ReversedColoursAreReversed) {
  EXPECT_EQ(PixelOf("/DeviceRGB", std::string("\0\x10\xFF", 3), " /Decode [1 0 1 0 0 1]"),
            "ffefff ");
}

TEST(PageJudge, SixteenBitsKeepTheirDepth) {
  Outcome const grey =
      ReadPage(test::OnePage{.image = "/Subtype/Image /Width 1 /Height 1 /BitsPerComponent 16 "
                                      "/ColorSpace /DeviceGray",
                             .data = "\x12\x34"}
                   .Build());
  EXPECT_EQ(grey.pixels.form.depth, 16);
  EXPECT_EQ(grey.pixels.hex, "1234 ");
  Outcome const colour =
      ReadPage(test::OnePage{.image = "/Subtype/Image /Width 1 /Height 1 /BitsPerComponent 16 "
                                      "/ColorSpace /DeviceRGB",
                             .data = "abcdef"}
                   .Build());
  EXPECT_EQ(colour.pixels.form.depth, 48);
  EXPECT_EQ(colour.pixels.hex, "616263646566 ");
}

TEST(PageJudge, ColoursOf4BitsAreSpread) {
  Outcome const page =
      ReadPage(test::OnePage{.image = "/Subtype/Image /Width 1 /Height 1 /BitsPerComponent 4 "
                                      "/ColorSpace /DeviceRGB",
                             .data = "\x1F\x80"}
                   .Build());
  EXPECT_EQ(page.pixels.hex, "11ff88 ");
}

// ---- Masks ----

Outcome ReadMasked(std::string const& keys, std::string const& mask, std::string const& data) {
  auto pdf = test::OnePage{.image =
                               "/Subtype/Image /Width 2 /Height 1 /BitsPerComponent 8 "
                               "/ColorSpace /DeviceGray " +
                               keys,
                           .data = "\x10\x20"}
                 .Build();
  pdf.Stream(7, "/Subtype/Image " + mask, data);
  return ReadPage(pdf);
}

TEST(PageJudge, MasksBecomeOpacity) {
  std::string const soft = "/Width 2 /Height 1 /BitsPerComponent 8 /ColorSpace /DeviceGray";
  Outcome const page = ReadMasked("/SMask 7 0 R", soft, "\x80\xFF");
  EXPECT_EQ(page.pixels.form.depth, 32);
  EXPECT_EQ(page.pixels.hex, "10101080202020ff ");
  // 0 paints.
  EXPECT_EQ(ReadMasked("/Mask 7 0 R", "/Width 2 /Height 1 /ImageMask true", "\x40").pixels.hex,
            "101010ff20202000 ");
  EXPECT_EQ(ReadMasked("/Mask [32 40]", "", "").pixels.hex, "101010ff20202000 ");
}

TEST(PageJudge, MaskOfAnotherSizeIsSpread) {
  std::string const soft = "/Width 1 /Height 1 /BitsPerComponent 8 /ColorSpace /DeviceGray";
  EXPECT_EQ(ReadMasked("/SMask 7 0 R", soft, "\x80").pixels.hex, "1010108020202080 ");
}

// The stored colour was blended with black: 0x10 at half the opacity was 0x20.
TEST(PageJudge, MatteIsTakenOut) {
  std::string const soft =
      "/Width 2 /Height 1 /BitsPerComponent 8 /ColorSpace /DeviceGray /Matte [0]";
  EXPECT_EQ(ReadMasked("/SMask 7 0 R", soft, "\x80\xFF").pixels.hex, "20202080202020ff ");
}

TEST(PageJudge, MaskThatCannotBeReadIsNamed) {
  EXPECT_THAT(ReadMasked("/SMask 7 0 R", "/Width 2", "").problem,
              HasSubstr("its mask cannot be read"));
}

}  // namespace
}  // namespace sorrelin::tool
