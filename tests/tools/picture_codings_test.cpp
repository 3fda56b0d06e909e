// The codings, colours and masks of pictures, by the pixels that come of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/judged_page.h"

namespace sorrelin::tool {
namespace {

using ::testing::HasSubstr;

// The rows of a picture and what is wrong with it.
std::string ShownBy(std::string const& keys, std::string const& data) {
  Outcome const page =
      ReadPage(test::OnePage{.image = "/Subtype/Image " + keys, .data = data}.Build());
  return page.pixels.hex + page.problem;
}

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

// LZW data that name each byte by itself. The reader's table grows all the same, to entry 256 + n
// with the n-th byte; codes get a bit longer at entry 511 and 1023, or one before.
std::string LzwOf(std::string const& bytes, unsigned early) {
  std::string bits;
  unsigned code_bits = 9;
  auto const put = [&](unsigned code) {
    for (unsigned bit = code_bits; bit-- > 0;) bits += (code >> bit & 1) != 0 ? '1' : '0';
  };
  put(256);
  for (size_t n = 1; n <= bytes.size(); ++n) {
    put(static_cast<unsigned char>(bytes[n - 1]));
    if (256 + n + early == (1u << code_bits) - 1) ++code_bits;
  }
  put(257);
  bits.resize((bits.size() + 7) / 8 * 8, '0');
  std::string data;
  for (size_t i = 0; i < bits.size(); i += 8) {
    data += static_cast<char>(std::stoi(bits.substr(i, 8), nullptr, 2));
  }
  return data;
}

TEST(PageJudge, LzwOfEitherChangeIsDecoded) {
  std::string bytes;
  for (int i = 0; i < 900; ++i) bytes += static_cast<char>(i * i / 7);
  std::string const plain = "/Width 900 /Height 1 /BitsPerComponent 8 /ColorSpace /DeviceGray";
  std::string const keys = plain + " /Filter /LZWDecode";
  std::string const rows = ShownBy(plain, bytes);
  ASSERT_EQ(rows.size(), 1801u);
  EXPECT_EQ(ShownBy(keys, LzwOf(bytes, 1)), rows);
  EXPECT_EQ(ShownBy(keys + " /DecodeParms <</EarlyChange 0>>", LzwOf(bytes, 0)), rows);
}

// Of an unencrypted document nothing is encrypted.
TEST(PageJudge, IdentityOfCryptFiltersChangesNothing) {
  EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray /Filter [/Crypt /FlateDecode] "
                     "/DecodeParms [<</Name /Identity>> null]",
                     test::Deflate(kFourBytes))
                .pixels.hex,
            "1020 3040 ");
}

TEST(PageJudge, PredictionOfTiffIsUndone) {
  EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray /Filter /FlateDecode "
                     "/DecodeParms <</Predictor 2 /Columns 2>>",
                     test::Deflate("\x10\x10\x30\x10"))
                .pixels.hex,
            "1020 3040 ");
}

// Each sample is the sum of the one before it and the difference, in its own bits.
TEST(PageJudge, PredictionOfTiffIsUndoneAtEveryDepth) {
  auto const shown = [](std::string const& size, int bits, std::string const& data) {
    std::string const depth = "/BitsPerComponent " + std::to_string(bits);
    return ShownBy("/Height 1 /ColorSpace /DeviceGray /Width " + size + depth +
                       " /Filter /FlateDecode /DecodeParms <</Predictor 2 /Columns " + size +
                       depth + ">>",
                   test::Deflate(data));
  };
  EXPECT_EQ(shown("2", 16, std::string("\x00\xFF\x00\x01", 4)), "00ff0100 ");
  EXPECT_EQ(shown("3", 4, "\x12\xF0"), "113322 ");
  EXPECT_EQ(shown("4", 2, "\x5E"), "55aa55ff ");
  // The bits are 11011110, of which those that are set are white.
  EXPECT_EQ(shown("8", 1, "\xB1"), "21 ");
  EXPECT_EQ(ShownBy("/Width 2 /Height 1 /BitsPerComponent 8 /ColorSpace /DeviceRGB "
                    "/Filter /FlateDecode /DecodeParms <</Predictor 2 /Columns 2 /Colors 3>>",
                    test::Deflate("abc\1\1\1")),
            "616263626364 ");
}

TEST(PageJudge, PredictionOfPngIsUndoneAtEveryDepth) {
  auto const shown = [](std::string const& size, int bits, std::string const& data) {
    std::string const depth = "/BitsPerComponent " + std::to_string(bits);
    return ShownBy("/Height 1 /ColorSpace /DeviceGray /Width " + size + depth +
                       " /Filter /FlateDecode /DecodeParms <</Predictor 11 /Columns " + size +
                       depth + ">>",
                   test::Deflate(data));
  };
  // Bytes are added to those of the pixel before, without carry.
  EXPECT_EQ(shown("2", 16, std::string("\x01\x01\xFF\x00\x01", 5)), "01ff0100 ");
  EXPECT_EQ(shown("3", 4, "\x01\x1F\x71"), "11ff99 ");
  EXPECT_EQ(shown("8", 2, "\x01\x1B\x01"), "0055aaff0055ff00 ");
  EXPECT_EQ(shown("16", 1, std::string("\x01\x80\x01", 3)), "7f7e ");
}

// The rows name their prediction themselves, average and Paeth here.
TEST(PageJudge, PredictorsFrom10To15AreOne) {
  for (int predictor = 10; predictor <= 15; ++predictor) {
    EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray /Filter /FlateDecode /DecodeParms <</Predictor " +
                           std::to_string(predictor) + " /Columns 2>>",
                       test::Deflate("\x03\x10\x18\x04\x20\x10"))
                  .pixels.hex,
              "1020 3040 ");
  }
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

TEST(PageJudge, AnyFlippedBitOfFlateDataIsNamed) {
  std::string bytes;
  for (int i = 0; i < 2500; ++i) bytes += static_cast<char>(i * i / 9);
  std::string const keys =
      "/Width 50 /Height 50 /BitsPerComponent 8 /ColorSpace /DeviceGray /Filter /FlateDecode";
  std::string const packed = test::Deflate(bytes);
  for (size_t i = 0; i < 20; ++i) {
    std::string flipped = packed;
    char& byte = flipped[i * packed.size() / 20];
    byte = static_cast<char>(byte ^ 1 << i % 8);
    EXPECT_THAT(ShownBy(keys, flipped), HasSubstr("its data")) << i;
  }
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

// Black bits are set, and show white. A damaged row is damage, whatever the data allow.
TEST(PageJudge, OtherKeysOfFaxDataCount) {
  std::string const keys =
      "/Width 8 /Height 2 /ColorSpace /DeviceGray /BitsPerComponent 1 /Filter /CCITTFaxDecode "
      "/DecodeParms <</Columns 8 /BlackIs1 true /EndOfBlock false /DamagedRowsBeforeError 3>>";
  EXPECT_EQ(ShownBy(keys, "\xB7\x6C"), "f0 f0 ");
  EXPECT_EQ(ShownBy(keys, std::string("\xB6\x00\x10", 3)), "f0 its data are damaged");
}

// ---- JBIG2 ----

// A page of 8 by 4 pixels and a generic region coded by T.6: four white rows.
std::string const kJbig2Page(
    "\0\0\0\1\x30\0\1\0\0\0\x13\0\0\0\x08\0\0\0\x04\0\0\0\0\0\0\0\0\0\0\0"
    "\0\0\0\2\x26\0\1\0\0\0\x16\0\0\0\x08\0\0\0\x04\0\0\0\0\0\0\0\0\0\1"
    "\xF0\x01\x00\x10",
    30 + 11 + 22);

std::string ShownWithGlobals(std::string const& globals) {
  auto pdf = test::OnePage{.image =
                               "/Subtype/Image /Width 8 /Height 4 /BitsPerComponent 1 "
                               "/ColorSpace /DeviceGray /Filter /JBIG2Decode "
                               "/DecodeParms <</JBIG2Globals 7 0 R>>",
                           .data = kJbig2Page}
                 .Build();
  pdf.Stream(7, "", globals);
  Outcome const page = ReadPage(pdf);
  return page.pixels.hex + page.problem;
}

// One has a comment, the other a dictionary of symbols that is cut.
TEST(PageJudge, GlobalsOfJbig2AreRead) {
  EXPECT_EQ(ShownWithGlobals(std::string("\0\0\0\0\x3E\0\0\0\0\0\x09\x20\0\0\0a\0b\0\0", 20)),
            "00 00 00 00 ");
  EXPECT_THAT(ShownWithGlobals(std::string("\0\0\0\0\0\0\0\0\0\0\2\0\0", 13)),
              HasSubstr("its JBIG2 data"));
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

// Samples of every corner, the first tint's first.
TEST(PageJudge, TintsGoThroughTables) {
  auto pdf = test::OnePage{.image =
                               "/Subtype/Image /Width 2 /Height 1 /BitsPerComponent 8 "
                               "/ColorSpace [/DeviceN [/A /B] /DeviceRGB 7 0 R]",
                           .data = "\x33\xCC\xFF\xFF"}
                 .Build();
  pdf.Stream(7,
             "/FunctionType 0 /Domain [0 1 0 1] /Range [0 1 0 1 0 1] /Size [2 2] /BitsPerSample 8",
             std::string("\0\0\0\xFF\0\0\0\xFF\0\xFF\xFF\x80", 12));
  // 0x33 is a fifth, 0xCC four fifths: blue is 0.2 * 0.8 * 0x80.
  EXPECT_EQ(ReadPage(pdf).pixels.hex, "33cc14ffff80 ");
}

// Black to red below a half, and from there on white back to red.
TEST(PageJudge, TintsGoThroughPieces) {
  Outcome const spot = ReadPage(test::OnePage{
      .image = "/Subtype/Image /Width 1 /Height 1 /BitsPerComponent 8 /ColorSpace [/Separation "
               "/Spot /DeviceRGB <</FunctionType 3 /Domain [0 1] /Bounds [0.5] /Encode [0 1 1 "
               "0] /Functions [<</FunctionType 2 /Domain [0 1] /N 1 /C0 [0 0 0] /C1 [1 0 0]>> "
               "<</FunctionType 2 /Domain [0 1] /N 1 /C0 [1 0 0] /C1 [1 1 1]>>]>>]",
      .data = "x"}
                                    .Build());
  ASSERT_EQ(spot.pixels.form.palette.size(), 256u) << spot.problem;
  EXPECT_EQ(spot.pixels.form.palette[51].rgbRed, 102);
  EXPECT_EQ(spot.pixels.form.palette[51].rgbGreen, 0);
  EXPECT_EQ(spot.pixels.form.palette[204].rgbRed, 255);
  EXPECT_EQ(spot.pixels.form.palette[204].rgbGreen, 102);
}

TEST(PageJudge, CalibratedColoursAreThoseOfTheDevice) {
  EXPECT_EQ(PixelOf("[/CalRGB <</WhitePoint [0.95 1 1.09] /Gamma [2.2 2.2 2.2]>>]", "abc"),
            "616263 ");
}

// The second entry of a palette over the space, as RRGGBB.
std::string EntryOver(std::string const& space, std::string const& table) {
  auto pdf = test::OnePage{.image =
                               "/Subtype/Image /Width 1 /Height 1 /BitsPerComponent 8 "
                               "/ColorSpace [/Indexed " +
                               space + " 1 <" + table + ">]",
                           .data = "\1"}
                 .Build();
  pdf.Stream(7, "/FunctionType 4 /Domain [0 1 0 1] /Range [0 1 0 1 0 1]", "{ 2 copy mul }");
  pdf.Stream(8, "/N 3", "profile");
  Outcome const page = ReadPage(pdf);
  if (page.pixels.form.palette.size() < 2) return page.problem;
  RGBQUAD const& entry = page.pixels.form.palette[1];
  char text[7];
  std::snprintf(text, sizeof text, "%02x%02x%02x", entry.rgbRed, entry.rgbGreen, entry.rgbBlue);
  return text;
}

TEST(PageJudge, PalettesAreOverAnySpace) {
  EXPECT_EQ(EntryOver("[/Lab <</WhitePoint [0.9642 1 0.8249] /Range [-128 127 -128 127]>>]",
                      "000000FF8080"),
            "ffffff");
  EXPECT_EQ(EntryOver("[/ICCBased 8 0 R]", "000000102030"), "102030");
  EXPECT_EQ(EntryOver("[/DeviceN [/A /B] /DeviceRGB 7 0 R]", "0000FF33"), "ff3333");
  EXPECT_EQ(EntryOver("[/Separation /Spot /DeviceRGB <</FunctionType 2 /Domain [0 1] /N 1 "
                      "/C0 [1 1 1] /C1 [0 1 1]>>]",
                      "00FF"),
            "00ffff");
  EXPECT_EQ(EntryOver("/DeviceCMYK", "00000000FFFFFFFF"), "000000");
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
TEST(PageJudge, StencilMaskOfAnotherSizeIsSpread) {
  EXPECT_EQ(ReadMasked("/Mask 7 0 R", "/Width 1 /Height 1 /ImageMask true", "\x80").pixels.hex,
            "1010100020202000 ");
}

TEST(PageJudge, DecodeOfAMaskTurnsItOver) {
  EXPECT_EQ(ReadMasked("/Mask 7 0 R", "/Width 2 /Height 1 /ImageMask true /Decode [1 0]", "\x40")
                .pixels.hex,
            "10101000202020ff ");
  EXPECT_EQ(ReadMasked("/SMask 7 0 R",
                       "/Width 2 /Height 1 /BitsPerComponent 8 /ColorSpace /DeviceGray "
                       "/Decode [1 0]",
                       "\x80\xFF")
                .pixels.hex,
            "1010107f20202000 ");
}

// A pixel is left out if each of its samples is within the range of its component.
TEST(PageJudge, KeyOfColoursCoversEveryComponent) {
  EXPECT_EQ(ShownBy("/Width 2 /Height 1 /BitsPerComponent 8 /ColorSpace /DeviceRGB "
                    "/Mask [97 97 98 98 90 99]",
                    "abcabd"),
            "61626300616264ff ");
}

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
