// What is judged of pages' pictures, and the pixels that come of it.
#include "tools/extract/page_image.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/page_document.h"
#include "tools/extract/page_picture.h"

namespace sorrelin::tool {
namespace {

using ::testing::HasSubstr;

// Rows as hexadecimal text.
struct Pixels : PictureSink {
  bool Begin(PictureForm const& given) override {
    form = given;
    return true;
  }
  bool Row(std::span<BYTE const> row) override {
    for (BYTE const byte : row) {
      char digits[3];
      std::snprintf(digits, sizeof digits, "%02x", byte);
      hex += digits;
    }
    hex += ' ';
    return true;
  }
  PictureForm form;
  std::string hex;
};

struct Outcome {
  PageFacts facts;
  Pixels pixels;
  std::string problem;
};

constexpr uint64_t kMuchWork = uint64_t{1} << 40;

Outcome ReadPage(test::PdfBuilder pdf) {
  test::PageDocument document(pdf);
  Outcome outcome;
  DWORD const page = document->GetPageObjectNumber(0);
  outcome.facts = PageJudge(*document, kMuchWork).Judge(page);
  outcome.problem = outcome.facts.problem;
  if (!outcome.facts.image) return outcome;
  DecodePicture(*document, *outcome.facts.image, outcome.facts.dpi, outcome.pixels,
                outcome.problem);
  outcome.facts.image.reset();
  return outcome;
}

// A picture of 2 x 2 samples of 8 bits.
Outcome ReadGrey(std::string const& keys, std::string const& data) {
  return ReadPage(test::OnePage{
      .image = "/Subtype/Image /Width 2 /Height 2 /BitsPerComponent 8 " + keys, .data = data}
                      .Build());
}

std::string const kFourBytes = "\x10\x20\x30\x40";

TEST(PageImage, GreyOf8BitsIsGrey) {
  Outcome const page = ReadGrey("/ColorSpace /DeviceGray", kFourBytes);
  EXPECT_EQ(page.problem, "");
  EXPECT_EQ(page.pixels.form.depth, 8);
  EXPECT_TRUE(page.pixels.form.palette.empty());
  EXPECT_EQ(page.pixels.hex, "1020 3040 ");
}

TEST(PageImage, GreyOfOtherSpacesIsGreyToo) {
  EXPECT_EQ(ReadGrey("/ColorSpace [/CalGray <</WhitePoint [1 1 1]>>]", kFourBytes).pixels.hex,
            "1020 3040 ");
  auto pdf = test::OnePage{.image =
                               "/Subtype/Image /Width 2 /Height 2 /BitsPerComponent 8 "
                               "/ColorSpace 7 0 R",
                           .data = kFourBytes}
                 .Build();
  pdf.Object(7, "[/ICCBased 8 0 R]");
  pdf.Stream(8, "/N 1", "profile");
  EXPECT_EQ(ReadPage(pdf).pixels.hex, "1020 3040 ");
}

TEST(PageImage, FlateAndRunLengthGreyIsGrey) {
  EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray /Filter /FlateDecode", test::Deflate(kFourBytes))
                .pixels.hex,
            "1020 3040 ");
  std::string const runs("\xFF\x10\xFF\x30\x80", 5);
  EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray /Filter [/RunLengthDecode]", runs).pixels.hex,
            "1010 3030 ");
}

// The library's decoder would take both wrongly.
TEST(PageImage, LiteralRunsAndRunsAcrossRowsAreRight) {
  std::string const keys = "/ColorSpace /DeviceGray /Filter /RunLengthDecode";
  EXPECT_EQ(ReadGrey(keys, std::string("\x03\x10\x20\x30\x40\x80", 6)).pixels.hex, "1020 3040 ");
  EXPECT_EQ(ReadGrey(keys, std::string("\xFE\x10\x00\x20\x80", 5)).pixels.hex, "1010 1020 ");
  EXPECT_EQ(ReadGrey(keys, std::string("\xFD\x10", 2)).pixels.hex, "1010 1010 ");
}

TEST(PageImage, RunsThatEndBeforeThePictureAreNamed) {
  std::string const keys = "/ColorSpace /DeviceGray /Filter /RunLengthDecode";
  for (std::string const data : {"\xFE\x10\x80", "\x03\x10\x20", "\x7F", "\x80"}) {
    EXPECT_THAT(ReadGrey(keys, data).problem, HasSubstr("end before"));
  }
}

// CR, LF, space and "[" at the start are bytes of the picture.
TEST(PageImage, DataMayBeginWithBytesThatTheReaderSkips) {
  EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray", "\n\r [").pixels.hex, "0a0d 205b ");
  EXPECT_EQ(ReadPage(test::OnePage{.image = "/Subtype/Image /Width 2 /Height 2 "
                                            "/BitsPerComponent 8 /ColorSpace /DeviceGray",
                                   .data = "\n\r [",
                                   .eol = "\r\n"}
                         .Build())
                .pixels.hex,
            "0a0d 205b ");
}

TEST(PageImage, ColourKeepsTheOrderOfItsChannels) {
  Outcome const page =
      ReadPage(test::OnePage{.image = "/Subtype/Image /Width 1 /Height 2 /BitsPerComponent 8 "
                                      "/ColorSpace /DeviceRGB",
                             .data = "abcdef"}
                   .Build());
  EXPECT_EQ(page.pixels.form.depth, 24);
  EXPECT_EQ(page.pixels.hex, "616263 646566 ");
}

TEST(PageImage, IndexedPicturesKeepTheirPalette) {
  Outcome const page =
      ReadGrey("/ColorSpace [/Indexed /DeviceRGB 1 <010203 FF8040>]", std::string("\0\1\1\0", 4));
  EXPECT_EQ(page.pixels.hex, "0001 0100 ");
  ASSERT_EQ(page.pixels.form.palette.size(), 256u);
  EXPECT_EQ(page.pixels.form.palette[0].rgbRed, 1);
  EXPECT_EQ(page.pixels.form.palette[1].rgbRed, 255);
  EXPECT_EQ(page.pixels.form.palette[1].rgbGreen, 128);
  EXPECT_EQ(page.pixels.form.palette[1].rgbBlue, 64);
}

TEST(PageImage, LookupMayBeADeflatedStreamAndTheBaseGrey) {
  auto pdf = test::OnePage{.image =
                               "/Subtype/Image /Width 2 /Height 2 /BitsPerComponent 8 "
                               "/ColorSpace [/Indexed /DeviceGray 1 7 0 R]",
                           .data = std::string("\0\1\1\0", 4)}
                 .Build();
  pdf.Stream(7, "/Filter /FlateDecode", test::Deflate("\x11\x77"));
  Outcome const page = ReadPage(pdf);
  ASSERT_EQ(page.problem, "");
  EXPECT_EQ(page.pixels.form.palette[1].rgbGreen, 0x77);
}

// A row of 3 samples of 4 bits takes 2 bytes.
TEST(PageImage, SamplesOf4And2BitsAreSpread) {
  Outcome const four =
      ReadPage(test::OnePage{.image = "/Subtype/Image /Width 3 /Height 1 /BitsPerComponent 4 "
                                      "/ColorSpace /DeviceGray",
                             .data = "\x1F\x80"}
                   .Build());
  EXPECT_EQ(four.pixels.hex, "11ff88 ");
  Outcome const two =
      ReadPage(test::OnePage{.image = "/Subtype/Image /Width 4 /Height 1 /BitsPerComponent 2 "
                                      "/ColorSpace [/Indexed /DeviceRGB 3 7 0 R]",
                             .data = "\x1B"}
                   .Build());
  EXPECT_EQ(two.problem, "its palette cannot be read");
}

Outcome ReadBits(std::string const& keys, std::string const& data = "\x81\x7E") {
  return ReadPage(test::OnePage{
      .image = "/Subtype/Image /Width 8 /Height 2 /BitsPerComponent 1 " + keys, .data = data}
                      .Build());
}

// A set bit of the sink is black; a set sample of DeviceGray is white.
TEST(PageImage, PolarityOf1BitFollowsDecode) {
  EXPECT_EQ(ReadBits("/ColorSpace /DeviceGray").pixels.hex, "7e 81 ");
  EXPECT_EQ(ReadBits("/ColorSpace /DeviceGray /Decode [1 0]").pixels.hex, "81 7e ");
  EXPECT_EQ(ReadBits("/ImageMask true").pixels.hex, "7e 81 ");
  EXPECT_EQ(ReadBits("/ColorSpace [/Indexed /DeviceRGB 1 <FFFFFF000000>]").pixels.hex, "81 7e ");
  EXPECT_TRUE(ReadBits("/ColorSpace /DeviceGray").pixels.form.palette.empty());
}

TEST(PageImage, TwoColoursStayTwoColours) {
  Outcome const page = ReadBits("/ColorSpace [/Indexed /DeviceRGB 1 <FF000000FF00>]");
  EXPECT_EQ(page.pixels.form.depth, 1);
  EXPECT_EQ(page.pixels.hex, "81 7e ");
  ASSERT_EQ(page.pixels.form.palette.size(), 2u);
  EXPECT_EQ(page.pixels.form.palette[0].rgbRed, 255);
  EXPECT_EQ(page.pixels.form.palette[1].rgbGreen, 255);
}

TEST(PageImage, InvertedGreyIsInverted) {
  EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray /Decode [1 0]", kFourBytes).pixels.hex, "efdf cfbf ");
}

TEST(PageImage, UpsideDownPictureIsTurnedForEveryCoding) {
  test::OnePage page = {.image =
                            "/Subtype/Image /Width 2 /Height 2 /BitsPerComponent 8 "
                            "/ColorSpace /DeviceGray",
                        .data = kFourBytes,
                        .content = "q 100 0 0 -100 0 100 cm /Im0 Do Q"};
  EXPECT_EQ(ReadPage(page.Build()).pixels.hex, "3040 1020 ");
  page.image += " /Filter /RunLengthDecode";
  page.data = std::string("\xFF\x10\xFF\x30\x80", 5);
  EXPECT_EQ(ReadPage(page.Build()).pixels.hex, "3030 1010 ");
}

struct WrongPicture {
  char const* keys;
  char const* reason;
};

void PrintTo(WrongPicture const& picture, std::ostream* out) { *out << picture.reason; }

class PageImageRefuses : public ::testing::TestWithParam<WrongPicture> {};

TEST_P(PageImageRefuses, WhatWouldComeOutWrong) {
  Outcome const page = ReadGrey(GetParam().keys, std::string(64, 'a'));
  EXPECT_THAT(page.problem, HasSubstr(GetParam().reason));
  EXPECT_EQ(page.pixels.hex, "");
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, PageImageRefuses,
    ::testing::Values(
        WrongPicture{"/ColorSpace /DeviceCMYK", "DeviceCMYK"},
        WrongPicture{"/ColorSpace [/Separation /Gold /DeviceCMYK 9 0 R]", "Separation"},
        WrongPicture{"/ColorSpace [/Lab <<>>]", "Lab"},
        WrongPicture{"/ColorSpace [/ICCBased 9 0 R]", "ICCBased"},
        WrongPicture{"/ColorSpace 9 0 R", "colour space cannot be read"},
        WrongPicture{"", "colour space cannot be read"},
        WrongPicture{"/ColorSpace [/Indexed /DeviceCMYK 1 <0000000000000000>]", "palette"},
        WrongPicture{"/ColorSpace /DeviceGray /SMask 9 0 R", "soft mask"},
        WrongPicture{"/ColorSpace /DeviceGray /Mask [0 1]", "mask"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter /FlateDecode "
                     "/DecodeParms <</Predictor 15 /Columns 3>>",
                     "predictor of another shape"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter [/FlateDecode] "
                     "/DecodeParms [<</Predictor 2 /Columns 2>>]",
                     "predictor"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter [/FlateDecode /DCTDecode]",
                     "FlateDecode+DCTDecode"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter [/ASCII85Decode /FlateDecode]",
                     "ASCII85Decode+FlateDecode"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter /JPXDecode", "JPXDecode"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter /LZWDecode", "LZWDecode"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter 9 0 R", "filters cannot be read"},
        WrongPicture{"/ColorSpace /DeviceRGB /Decode [1 0 1 0 1 0]", "/Decode"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter /DCTDecode", "JPEG"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter /CCITTFaxDecode /DecodeParms <</K -1>>",
                     "Group 4 data do not fit"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter /FlateDecode", "end before"},
        WrongPicture{"/ColorSpace /DeviceGray /BitsPerComponent 16", "16 bits"},
        WrongPicture{"/ColorSpace /DeviceGray /Width 40", "end before"},
        WrongPicture{"/ColorSpace /DeviceGray /Width 2000000000 /Height 2000000000", "too large"},
        WrongPicture{"/ColorSpace /DeviceGray /Width 0", "no size"}));

TEST(PageImage, Group3AndOtherWidthsOfGroup4AreNamed) {
  EXPECT_THAT(ReadBits("/ColorSpace /DeviceGray /Filter /CCITTFaxDecode").problem,
              HasSubstr("Group 3"));
  EXPECT_THAT(
      ReadBits("/ColorSpace /DeviceGray /Filter /CCITTFaxDecode /DecodeParms <</K -1>>").problem,
      HasSubstr("not as wide"));
}

TEST(PageImage, ShortDataAreNamedAndNothingIsPassedOn) {
  EXPECT_THAT(ReadGrey("/ColorSpace /DeviceGray", "abc").problem, HasSubstr("end before"));
  EXPECT_THAT(
      ReadGrey("/ColorSpace /DeviceGray /Filter /FlateDecode", test::Deflate("abc")).problem,
      HasSubstr("end before"));
}

TEST(PageImage, ByteMoreThanThePictureHasIsNoHarmToFlate) {
  EXPECT_EQ(
      ReadGrey("/ColorSpace /DeviceGray /Filter /FlateDecode", test::Deflate(kFourBytes + "\n"))
          .pixels.hex,
      "1020 3040 ");
}

// The data of PNG files stand in documents as they are, tags and all.
TEST(PageImage, PredictionOfPngIsUndone) {
  std::string const parms = "/Filter /FlateDecode /DecodeParms <</Predictor 15 /Columns 2";
  for (int const tag : {0, 1, 2}) {
    EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray " + parms + ">>",
                       test::Deflate(test::PngRows(kFourBytes, 2, tag)))
                  .pixels.hex,
              "1020 3040 ");
  }
  EXPECT_EQ(ReadPage(test::OnePage{.image = "/Subtype/Image /Width 2 /Height 1 "
                                            "/BitsPerComponent 8 /ColorSpace /DeviceRGB " +
                                            parms + " /Colors 3>>",
                                   .data = test::Deflate("\x01"
                                                         "abc\1\1\1")}
                         .Build())
                .pixels.hex,
            "616263626364 ");
}

TEST(PageImage, TagThatPngDoesNotHaveIsDamage) {
  EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray /Filter /FlateDecode /DecodeParms <</Predictor 12 "
                     "/Columns 2>>",
                     test::Deflate("\x05"
                                   "ab\x05"
                                   "cd"))
                .problem,
            "its data are damaged");
}

TEST(PageImage, LengthBeyondTheObjectIsNamed) {
  EXPECT_THAT(ReadPage(test::OnePage{.image = "/Subtype/Image /Width 2 /Height 2 "
                                              "/BitsPerComponent 8 /ColorSpace /DeviceGray",
                                     .data = kFourBytes,
                                     .length = "400000000"}
                           .Build())
                  .problem,
              HasSubstr("not all there"));
}

TEST(PageImage, PageWithoutAPictureSaysSo) {
  EXPECT_EQ(ReadPage(test::OnePage{.page = "/Resources <<>>"}.Build()).problem,
            "has no picture of its own");
}

TEST(PageImage, OfSeveralPicturesTheOneThatIsDrawnCounts) {
  test::OnePage page = {
      .page = "/Resources <</XObject <</A 7 0 R /Im0 4 0 R >> >>",
      .image = "/Subtype/Image /Width 2 /Height 2 /BitsPerComponent 8 /ColorSpace /DeviceGray",
      .data = kFourBytes,
      .content = "q 9 0 0 9 0 0 cm /Im0 Do Q"};
  auto pdf = page.Build();
  pdf.Stream(7, page.image, "abcd");
  EXPECT_EQ(ReadPage(pdf).pixels.hex, "1020 3040 ");
  page.content = "/Im0 Do /A Do";
  auto both = page.Build();
  both.Stream(7, page.image, "abcd");
  EXPECT_EQ(ReadPage(both).problem, "is made of several pictures");
}

TEST(PageImage, FactsTellSizesAndResolutionOfAnInheritedBox) {
  test::PdfBuilder pdf;
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2,
             "<</Type/Pages /Kids [3 0 R ] /Count 1 /MediaBox [-10 20 26 164] "
             "/Resources <</XObject <</A 4 0 R>> >> >>");
  pdf.Object(3, "<</Type/Page /Parent 2 0 R >>");
  pdf.Stream(4, "/Subtype/Image /Width 100 /Height 200 /BitsPerComponent 8 /ColorSpace /DeviceRGB",
             std::string(60'000, 'x'));
  PageFacts const facts = ReadPage(pdf).facts;
  EXPECT_EQ(facts.width, 36);
  EXPECT_EQ(facts.height, 144);
  EXPECT_EQ(facts.pixel_width, 100u);
  EXPECT_EQ(facts.pixel_height, 200u);
  EXPECT_EQ(facts.depth, 24);
  EXPECT_EQ(facts.compression, "none");
  EXPECT_EQ(facts.dpi, (Resolution{200, 100}));
}

TEST(PageImage, ResolutionIsThatOfThePictureAsItStandsOnThePage) {
  test::OnePage page;
  page.content = "q 50 0 0 25 25 30 cm /Im0 Do Q";
  EXPECT_EQ(ReadPage(page.Build()).facts.dpi, (Resolution{12, 6}));  // 8 in 50 points, 2 in 25
  page.content = "q 50 0 0 25 25 30 cm /Other Do Q";
  EXPECT_EQ(ReadPage(page.Build()).facts.dpi, (Resolution{6, 1}));  // 8 and 2 in 100
}

// Pages above are read once for all pages, so that the cost of a page does not grow with them.
TEST(PageImage, WhatPagesInheritIsReadOnce) {
  test::PdfBuilder pdf;
  std::string kids;
  for (DWORD i = 0; i < 2000; ++i) kids += std::to_string(10 + i) + " 0 R ";
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Type/Pages /Kids [" + kids + "] /Count 2000 /Rotate 450 /Resources 3 0 R >>");
  pdf.Object(3, "<</XObject <</A 4 0 R>> >>");
  pdf.Stream(4, "/Subtype/Image /Width 1 /Height 1 /BitsPerComponent 8 /ColorSpace /DeviceGray",
             "x");
  for (DWORD i = 0; i < 2000; ++i) pdf.Object(10 + i, "<</Type/Page /Parent 2 0 R >>");
  test::PageDocument document(pdf);
  PageJudge judge(*document, uint64_t{16} << 20);
  for (DWORD i = 0; i < 2000; ++i) {
    PageFacts const facts = judge.Judge(document->GetPageObjectNumber(i));
    ASSERT_EQ(facts.problem, "") << i;
    ASSERT_EQ(facts.rotation, 90) << i;
  }
}

TEST(PageImage, WorkHasABound) {
  auto pdf = test::OnePage{.image =
                               "/Subtype/Image /Width 2 /Height 2 /BitsPerComponent 8 "
                               "/ColorSpace /DeviceGray",
                           .data = kFourBytes}
                 .Build();
  test::PageDocument document(pdf);
  PageJudge judge(*document, 10'000);
  DWORD const page = document->GetPageObjectNumber(0);
  EXPECT_EQ(judge.Judge(page).problem, "");
  for (int i = 0; i < 10; ++i) judge.Judge(page);
  EXPECT_EQ(judge.Judge(page).problem, "is left out: the document takes too much work to read");
}

TEST(PageImage, TurnsAreWholeQuarters) {
  struct Turn {
    char const* text;
    int degrees;
  };
  for (auto const& [text, degrees] : {Turn{"90", 90},
                                      {"-90", 270},
                                      {"720", 0},
                                      {"45", 0},
                                      {"180.0", 180},
                                      {"99999999999", 0},
                                      {"/A", 0}}) {
    test::OnePage page;
    page.page += std::string(" /Rotate ") + text;
    EXPECT_EQ(ReadPage(page.Build()).facts.rotation, degrees) << text;
  }
}

TEST(PageImage, ParentThatLeadsBackToItselfEnds) {
  test::PdfBuilder pdf;
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Type/Pages /Kids [3 0 R ] /Count 1 >>");
  pdf.Object(3, "<</Type/Page /Parent 3 0 R /Resources 9 0 R /MediaBox 8 0 R >>");
  pdf.Object(8, "8 0 R");
  EXPECT_EQ(ReadPage(pdf).problem, "has no picture of its own");
}

}  // namespace
}  // namespace sorrelin::tool
