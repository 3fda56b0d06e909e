// The judgement of pages, and the pixels of their pictures.
#include "tools/extract/page/page_judge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/judged_page.h"

namespace sorrelin::tool {
namespace {

using ::testing::HasSubstr;

TEST(PageJudge, GreyOf8BitsIsGrey) {
  Outcome const page = ReadGrey("/ColorSpace /DeviceGray", kFourBytes);
  EXPECT_EQ(page.problem, "");
  EXPECT_EQ(page.pixels.form.depth, 8);
  EXPECT_TRUE(page.pixels.form.palette.empty());
  EXPECT_EQ(page.pixels.hex, "1020 3040 ");
}

TEST(PageJudge, GreyOfOtherSpacesIsGreyToo) {
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

TEST(PageJudge, FlateAndRunLengthGreyIsGrey) {
  EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray /Filter /FlateDecode", test::Deflate(kFourBytes))
                .pixels.hex,
            "1020 3040 ");
  std::string const runs("\xFF\x10\xFF\x30\x80", 5);
  EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray /Filter [/RunLengthDecode]", runs).pixels.hex,
            "1010 3030 ");
}

// The library's decoder would take both wrongly.
TEST(PageJudge, LiteralRunsAndRunsAcrossRowsAreRight) {
  std::string const keys = "/ColorSpace /DeviceGray /Filter /RunLengthDecode";
  EXPECT_EQ(ReadGrey(keys, std::string("\x03\x10\x20\x30\x40\x80", 6)).pixels.hex, "1020 3040 ");
  EXPECT_EQ(ReadGrey(keys, std::string("\xFE\x10\x00\x20\x80", 5)).pixels.hex, "1010 1020 ");
  EXPECT_EQ(ReadGrey(keys, std::string("\xFD\x10", 2)).pixels.hex, "1010 1010 ");
}

TEST(PageJudge, RunsThatEndBeforeThePictureAreNamed) {
  std::string const keys = "/ColorSpace /DeviceGray /Filter /RunLengthDecode";
  for (std::string const data : {"\xFE\x10\x80", "\x03\x10\x20", "\x7F", "\x80"}) {
    EXPECT_THAT(ReadGrey(keys, data).problem, HasSubstr("end before"));
  }
}

// CR, LF, space and "[" at the start are bytes of the picture.
TEST(PageJudge, DataMayBeginWithBytesThatTheReaderSkips) {
  EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray", "\n\r [").pixels.hex, "0a0d 205b ");
  EXPECT_EQ(ReadPage(test::OnePage{.image = "/Subtype/Image /Width 2 /Height 2 "
                                            "/BitsPerComponent 8 /ColorSpace /DeviceGray",
                                   .data = "\n\r [",
                                   .eol = "\r\n"}
                         .Build())
                .pixels.hex,
            "0a0d 205b ");
}

TEST(PageJudge, ColourKeepsTheOrderOfItsChannels) {
  Outcome const page =
      ReadPage(test::OnePage{.image = "/Subtype/Image /Width 1 /Height 2 /BitsPerComponent 8 "
                                      "/ColorSpace /DeviceRGB",
                             .data = "abcdef"}
                   .Build());
  EXPECT_EQ(page.pixels.form.depth, 24);
  EXPECT_EQ(page.pixels.hex, "616263 646566 ");
}

TEST(PageJudge, IndexedPicturesKeepTheirPalette) {
  Outcome const page =
      ReadGrey("/ColorSpace [/Indexed /DeviceRGB 1 <010203 FF8040>]", std::string("\0\1\1\0", 4));
  EXPECT_EQ(page.pixels.hex, "0001 0100 ");
  ASSERT_EQ(page.pixels.form.palette.size(), 256u);
  EXPECT_EQ(page.pixels.form.palette[0].rgbRed, 1);
  EXPECT_EQ(page.pixels.form.palette[1].rgbRed, 255);
  EXPECT_EQ(page.pixels.form.palette[1].rgbGreen, 128);
  EXPECT_EQ(page.pixels.form.palette[1].rgbBlue, 64);
}

TEST(PageJudge, LookupMayBeADeflatedStreamAndTheBaseGrey) {
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
TEST(PageJudge, SamplesOf4And2BitsAreSpread) {
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
TEST(PageJudge, PolarityOf1BitFollowsDecode) {
  EXPECT_EQ(ReadBits("/ColorSpace /DeviceGray").pixels.hex, "7e 81 ");
  EXPECT_EQ(ReadBits("/ColorSpace /DeviceGray /Decode [1 0]").pixels.hex, "81 7e ");
  EXPECT_EQ(ReadBits("/ImageMask true").pixels.hex, "7e 81 ");
  EXPECT_EQ(ReadBits("/ColorSpace [/Indexed /DeviceRGB 1 <FFFFFF000000>]").pixels.hex, "81 7e ");
  EXPECT_TRUE(ReadBits("/ColorSpace /DeviceGray").pixels.form.palette.empty());
}

TEST(PageJudge, TwoColoursStayTwoColours) {
  Outcome const page = ReadBits("/ColorSpace [/Indexed /DeviceRGB 1 <FF000000FF00>]");
  EXPECT_EQ(page.pixels.form.depth, 1);
  EXPECT_EQ(page.pixels.hex, "81 7e ");
  ASSERT_EQ(page.pixels.form.palette.size(), 2u);
  EXPECT_EQ(page.pixels.form.palette[0].rgbRed, 255);
  EXPECT_EQ(page.pixels.form.palette[1].rgbGreen, 255);
}

TEST(PageJudge, InvertedGreyIsInverted) {
  EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray /Decode [1 0]", kFourBytes).pixels.hex, "efdf cfbf ");
}

TEST(PageJudge, UpsideDownPictureIsTurnedForEveryCoding) {
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

class PageJudgeRefuses : public ::testing::TestWithParam<WrongPicture> {};

TEST_P(PageJudgeRefuses, WhatWouldComeOutWrong) {
  Outcome const page = ReadGrey(GetParam().keys, std::string(64, 'a'));
  EXPECT_THAT(page.problem, HasSubstr(GetParam().reason));
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, PageJudgeRefuses,
    ::testing::Values(
        WrongPicture{"/ColorSpace [/Separation /Gold /DeviceCMYK 9 0 R]", "Separation"},
        WrongPicture{"/ColorSpace /Pattern", "Pattern"},
        WrongPicture{"/ColorSpace [/ICCBased 9 0 R]", "ICCBased"},
        WrongPicture{"/ColorSpace 9 0 R", "colour space cannot be read"},
        WrongPicture{"", "colour space cannot be read"},
        WrongPicture{"/ColorSpace [/Indexed /DeviceGray 256 <00>]", "palette"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter [/DCTDecode /FlateDecode]",
                     "in an order that is not read (DCTDecode+FlateDecode)"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter /JPXDecode", "JPEG 2000"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter /LZWDecode", "end before"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter /NoDecode", "coded in a way"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter 9 0 R", "longer than its picture"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter (x)", "filters cannot be read"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter /DCTDecode", "JPEG"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter /CCITTFaxDecode /DecodeParms <</K -1>>",
                     "fax data do not fit"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter /JBIG2Decode", "JBIG2 data do not fit"},
        WrongPicture{"/ColorSpace /DeviceGray /Filter /FlateDecode", "end before"},
        WrongPicture{"/ColorSpace /DeviceGray /Width 40", "end before"},
        WrongPicture{"/ColorSpace /DeviceGray /Width 2000000000 /Height 2000000000", "too large"},
        WrongPicture{"/ColorSpace /DeviceGray /Width 0", "no size"}));

TEST(PageJudge, OtherWidthsOfFaxDataAreNamed) {
  EXPECT_THAT(
      ReadBits("/ColorSpace /DeviceGray /Filter /CCITTFaxDecode /DecodeParms <</K -1>>").problem,
      HasSubstr("not as wide"));
}

TEST(PageJudge, ShortDataAreNamedAndNothingIsPassedOn) {
  EXPECT_THAT(ReadGrey("/ColorSpace /DeviceGray", "abc").problem, HasSubstr("end before"));
  EXPECT_THAT(
      ReadGrey("/ColorSpace /DeviceGray /Filter /FlateDecode", test::Deflate("abc")).problem,
      HasSubstr("end before"));
}

TEST(PageJudge, ByteMoreThanThePictureHasIsNoHarmToFlate) {
  EXPECT_EQ(
      ReadGrey("/ColorSpace /DeviceGray /Filter /FlateDecode", test::Deflate(kFourBytes + "\n"))
          .pixels.hex,
      "1020 3040 ");
}

// The data of PNG files are in documents as they are, tags and all.
TEST(PageJudge, PredictionOfPngIsUndone) {
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

TEST(PageJudge, TagThatPngDoesNotHaveIsDamage) {
  EXPECT_EQ(ReadGrey("/ColorSpace /DeviceGray /Filter /FlateDecode /DecodeParms <</Predictor 12 "
                     "/Columns 2>>",
                     test::Deflate("\x05"
                                   "ab\x05"
                                   "cd"))
                .problem,
            "its data are damaged");
}

TEST(PageJudge, LengthBeyondTheObjectIsMended) {
  EXPECT_EQ(ReadPage(test::OnePage{.image = "/Subtype/Image /Width 2 /Height 2 "
                                            "/BitsPerComponent 8 /ColorSpace /DeviceGray",
                                   .data = kFourBytes,
                                   .length = "400000000"}
                         .Build())
                .pixels.hex,
            "1020 3040 ");
}

TEST(PageJudge, PageWithoutAPictureSaysSo) {
  EXPECT_EQ(ReadPage(test::OnePage{.page = "/Resources <<>>"}.Build()).problem,
            "has no picture of its own");
}

TEST(PageJudge, OfSeveralPicturesTheOneThatIsDrawnCounts) {
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

TEST(PageJudge, FactsTellSizesAndResolutionOfAnInheritedBox) {
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
  EXPECT_EQ(facts.whole.at(0).Width(), 100u);
  EXPECT_EQ(facts.whole.at(0).Height(), 200u);
  EXPECT_EQ(facts.whole.at(0).Depth(), 24);
  EXPECT_EQ(facts.whole.at(0).compression, "none");
  EXPECT_EQ(facts.whole.at(0).dpi, (Resolution{200, 100}));
}

TEST(PageJudge, ResolutionIsThatOfThePictureAsItStandsOnThePage) {
  test::OnePage page;
  page.content = "q 50 0 0 25 25 30 cm /Im0 Do Q";
  EXPECT_EQ(ReadPage(page.Build()).facts.whole.at(0).dpi,
            (Resolution{12, 6}));  // 8 in 50 points, 2 in 25
  page.content = "q 50 0 0 25 25 30 cm /Other Do Q";
  EXPECT_EQ(ReadPage(page.Build()).facts.whole.at(0).dpi, (Resolution{6, 1}));  // 8 and 2 in 100
}

TEST(PageJudge, PagesInheritTheirPictureAndTheirTurn) {
  test::PdfBuilder pdf;
  std::string kids;
  for (DWORD i = 0; i < 2000; ++i) kids += std::to_string(10 + i) + " 0 R ";
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Type/Pages /Kids [" + kids + "] /Count 2000 /Rotate 450 /Resources 3 0 R >>");
  pdf.Object(3, "<</XObject <</A 4 0 R>> >>");
  pdf.Stream(4, "/Subtype/Image /Width 1 /Height 1 /BitsPerComponent 8 /ColorSpace /DeviceGray",
             "x");
  for (DWORD i = 0; i < 2000; ++i) pdf.Object(10 + i, "<</Type/Page /Parent 2 0 R >>");
  auto const document = Open(pdf);
  for (DWORD i = 0; i < 2000; ++i) {
    PageFacts const facts = JudgePage(*document, i);
    ASSERT_EQ(facts.problem, "") << i;
    ASSERT_EQ(facts.rotation, 90) << i;
  }
}

TEST(PageJudge, TurnsAreWholeQuarters) {
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

TEST(PageJudge, ParentThatLeadsBackToItselfEnds) {
  test::PdfBuilder pdf;
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Type/Pages /Kids [3 0 R ] /Count 1 >>");
  pdf.Object(3, "<</Type/Page /Parent 3 0 R /Resources 9 0 R /MediaBox 8 0 R >>");
  pdf.Object(8, "8 0 R");
  EXPECT_EQ(ReadPage(pdf).problem, "has no picture of its own");
}

// ---- Where pictures are ----

test::OnePage GreyPage(std::string const& content) {
  return {.image = "/Subtype/Image /Width 2 /Height 2 /BitsPerComponent 8 /ColorSpace /DeviceGray",
          .data = kFourBytes,
          .content = content};
}

TEST(PageJudge, PicturesInFormsAreFound) {
  auto pdf = GreyPage("q 2 0 0 2 0 0 cm /Fm Do Q").Build();
  pdf.Object(3,
             "<</Type/Page /Parent 2 0 R /MediaBox [0 0 9 9] /Contents 5 0 R "
             "/Resources <</XObject <</Fm 7 0 R>> >> >>");
  pdf.Stream(7, "/Subtype/Form /Matrix [1 0 0 -1 0 0] /Resources <</XObject <</Im0 4 0 R>> >>",
             "10 0 0 5 0 0 cm /Im0 Do");
  Outcome const page = ReadPage(pdf);
  EXPECT_EQ(page.pixels.hex, "3040 1020 ");
  EXPECT_EQ(page.facts.whole.at(0).dpi, (Resolution{7, 14}));  // 2 in 20 points, 2 in 10
}

TEST(PageJudge, FormsThatDrawThemselvesEnd) {
  auto pdf = GreyPage("/Fm Do /Im0 Do").Build();
  pdf.Object(3,
             "<</Type/Page /Parent 2 0 R /MediaBox [0 0 9 9] /Contents 5 0 R "
             "/Resources <</XObject <</Fm 7 0 R /Im0 4 0 R>> >> >>");
  pdf.Stream(7, "/Subtype/Form", "/Fm Do /Fm Do");
  EXPECT_EQ(ReadPage(pdf).pixels.hex, "1020 3040 ");
}

TEST(PageJudge, InlinePicturesAreRead) {
  EXPECT_EQ(ReadPage(test::OnePage{.page = "/MediaBox [0 0 9 9] /Resources <<>>",
                                   .content = "q 9 0 0 9 0 0 cm BI /W 2 /H 2 /BPC 8 /CS /G /F /AHx "
                                              "ID 10203040> EI Q"}
                         .Build())
                .pixels.hex,
            "1020 3040 ");
}

TEST(PageJudge, StripsAreJoinedFromTheTop) {
  auto pdf = GreyPage("q 2 0 0 2 0 0 cm /B Do Q q 2 0 0 2 0 2 cm /A Do Q").Build();
  pdf.Object(3,
             "<</Type/Page /Parent 2 0 R /MediaBox [0 0 2 4] /Contents 5 0 R "
             "/Resources <</XObject <</A 4 0 R /B 7 0 R>> >> >>");
  pdf.Stream(7, GreyPage("").image, "abcd");
  Outcome const page = ReadPage(pdf);
  EXPECT_EQ(page.problem, "");
  EXPECT_EQ(page.pixels.form.height, 4u);
  EXPECT_EQ(page.pixels.hex, "1020 3040 6162 6364 ");
}

TEST(PageJudge, PicturesApartAreSeveral) {
  auto pdf = GreyPage("q 2 0 0 2 0 0 cm /B Do Q q 2 0 0 2 0 9 cm /A Do Q").Build();
  pdf.Object(3,
             "<</Type/Page /Parent 2 0 R /MediaBox [0 0 2 20] /Contents 5 0 R "
             "/Resources <</XObject <</A 4 0 R /B 7 0 R>> >> >>");
  pdf.Stream(7, GreyPage("").image, "abcd");
  Outcome const page = ReadPage(pdf);
  EXPECT_EQ(page.problem, "is made of several pictures");
  EXPECT_EQ(page.facts.pictures.size(), 2u);
}

// The matrix and the turn of the page that bring each picture onto the page, and its pixels then.
TEST(PageJudge, EveryOrientationIsShownAsViewersDo) {
  struct Turn {
    char const* matrix;
    int rotate;
    char const* shown;
  };
  for (Turn const& turn : {Turn{"2 0 0 2 0 0", 0, "1020 3040 "},
                           {"-2 0 0 2 2 0", 0, "2010 4030 "},
                           {"-2 0 0 -2 2 2", 0, "4030 2010 "},
                           {"2 0 0 -2 0 2", 0, "3040 1020 "},
                           {"0 -2 -2 0 2 2", 0, "1030 2040 "},
                           {"0 -2 2 0 0 2", 0, "3010 4020 "},
                           {"0 2 2 0 0 0", 0, "4020 3010 "},
                           {"0 2 -2 0 2 0", 0, "2040 1030 "},
                           {"2 0 0 2 0 0", 90, "3010 4020 "},
                           {"2 0 0 2 0 0", 180, "4030 2010 "},
                           {"2 0 0 2 0 0", 270, "2040 1030 "},
                           {"0 2 -2 0 2 0", 90, "1020 3040 "}}) {
    test::OnePage page = GreyPage(std::string("q ") + turn.matrix + " cm /Im0 Do Q");
    page.page += " /Rotate " + std::to_string(turn.rotate);
    EXPECT_EQ(ReadPage(page.Build()).pixels.hex, turn.shown) << turn.matrix << " " << turn.rotate;
  }
}

TEST(PageJudge, WordsInStringsDrawNothing) {
  EXPECT_EQ(ReadPage(GreyPage("(1 0 0 -1 0 0 cm /Im0 Do) Tj q 2 0 0 2 0 0 cm /Im0 Do Q").Build())
                .pixels.hex,
            "1020 3040 ");
}

}  // namespace
}  // namespace sorrelin::tool
