// Print rasters of every kind, and those that are damaged or made to harm.
#include "tools/formats/raster/raster_stream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/pdf_builder.h"
#include "tests/support/raster_builder.h"
#include "tests/support/temp_dir.h"

namespace sorrelin::tool {
namespace {

using namespace std::string_literals;
using test::AppleHeaderBytes;
using test::RasterHeaderBytes;
using test::RasterHeaderForm;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class RasterStreamTest : public ::testing::Test {
 protected:
  // Every page's rows as hexadecimal digits, and what is wrong.
  std::vector<std::string> Read(std::string const& text) {
    test::WriteAll(directory_ / "a", test::ToBytes(text));
    std::string problem;
    auto const bytes = ByteStream::Open((directory_ / "a").string(), problem);
    auto const kind = RasterKindOf(bytes->Peek(12));
    if (!kind) return {"unknown"};
    RasterStream stream(*bytes, *kind);
    std::vector<std::string> found;
    while (auto const page = stream.NextPage(problem)) {
      page_ = *page;
      std::vector<BYTE> row(page->RowBytes());
      std::string damage;
      for (int y = 0; y < page->height && stream.ReadRow(row, damage); ++y) {
        found.push_back(Digits(row));
      }
      if (!damage.empty()) found.push_back(damage);
    }
    if (!problem.empty()) found.push_back(problem);
    return found;
  }

  static std::string Digits(std::vector<BYTE> const& row) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string digits;
    for (BYTE const byte : row) {
      digits += kDigits[byte >> 4];
      digits += kDigits[byte & 15];
    }
    return digits;
  }

  // The problem of a page with such a header.
  std::string Refusal(RasterHeaderForm const& form) {
    auto const found = Read("RaS3" + RasterHeaderBytes(form) + std::string(64, '\0'));
    return found.size() == 1 ? found[0] : "read";
  }

  test::TempDir directory_;
  RasterPage page_;
};

RasterHeaderForm Form(uint32_t width, uint32_t height, uint32_t colours = 1, uint32_t bits = 8,
                      uint32_t space = 18) {
  RasterHeaderForm form;
  form.width = width;
  form.height = height;
  form.bits_per_colour = bits;
  form.bits_per_pixel = bits * colours;
  form.line_bytes = (width * form.bits_per_pixel + 7) / 8;
  form.colour_space = space;
  return form;
}

TEST_F(RasterStreamTest, VersionsWithPlainLinesAreReadInBothByteOrders) {
  auto const rows = ElementsAre("4142", "4344");
  EXPECT_THAT(Read("RaSt" + RasterHeaderBytes(Form(2, 2), false, 420) + "ABCD"), rows);
  EXPECT_THAT(Read("tSaR" + RasterHeaderBytes(Form(2, 2), true, 420) + "ABCD"), rows);
  EXPECT_THAT(Read("RaS3" + RasterHeaderBytes(Form(2, 2)) + "ABCD"), rows);
  EXPECT_THAT(Read("3SaR" + RasterHeaderBytes(Form(2, 2), true) + "ABCD"), rows);
}

// Two rows of three B, then one of C, D and blank.
TEST_F(RasterStreamTest, PackedLinesAreUnpackedInBothByteOrders) {
  auto const rows = ElementsAre("424242", "424242", "4344FF");
  std::string const packed =
      "\x01\x02"s
      "B"
      "\0\xFF"s
      "CD"
      "\x80"s;
  EXPECT_THAT(Read("RaS2" + RasterHeaderBytes(Form(3, 3)) + packed), rows);
  EXPECT_THAT(Read("2SaR" + RasterHeaderBytes(Form(3, 3), true) + packed), rows);
}

TEST_F(RasterStreamTest, RunsOfColourRepeatWholePixels) {
  std::string const packed =
      "\0\x01"s
      "abc"s;
  EXPECT_THAT(Read("RaS2" + RasterHeaderBytes(Form(2, 1, 3, 8, 19)) + packed),
              ElementsAre("616263616263"));
  EXPECT_EQ(page_.colours, ImageColours::kRgb);
}

TEST_F(RasterStreamTest, AppleRasterHasSizeAndColoursInItsShortHeader) {
  EXPECT_THAT(Read("UNIRAST\0"s + test::Number(1) + AppleHeaderBytes(24, 1, 2, 1, 300) +
                   "\0\x01"s
                   "abc"s),
              ElementsAre("616263616263"));
  EXPECT_EQ(page_.dpi.x, 300);
}

TEST_F(RasterStreamTest, AppleRasterNamesPagesThatAreMissing) {
  EXPECT_THAT(Read("UNIRAST\0"s + test::Number(3) + AppleHeaderBytes(8, 0, 1, 1, 72) + "\0\0a"s),
              ElementsAre("61", StartsWith("lacks 2 of the pages")));
}

TEST_F(RasterStreamTest, AppleRasterMayLeaveTheNumberOfPagesOut) {
  EXPECT_THAT(Read("UNIRAST\0"s + test::Number(0) + AppleHeaderBytes(8, 0, 1, 1, 72) + "\0\0a"s),
              ElementsAre("61"));
}

TEST_F(RasterStreamTest, InkIsTurnedIntoTone) {
  EXPECT_THAT(Read("RaS3" + RasterHeaderBytes(Form(8, 1, 1, 1, 3)) + "\xF0"), ElementsAre("0F"));
  EXPECT_THAT(Read("RaS3" + RasterHeaderBytes(Form(1, 1, 3, 8, 4)) + "\x01\x02\xFF"),
              ElementsAre("FEFD00"));
}

TEST_F(RasterStreamTest, InksOfFourColoursStay) {
  EXPECT_THAT(Read("RaS3" + RasterHeaderBytes(Form(1, 1, 4, 8, 6)) + "abcd"),
              ElementsAre("61626364"));
  EXPECT_EQ(page_.colours, ImageColours::kCmyk);
}

TEST_F(RasterStreamTest, DeepSamplesHaveTheirHighByteFirst) {
  EXPECT_THAT(Read("RaS3" + RasterHeaderBytes(Form(1, 1, 1, 16)) + "ab"), ElementsAre("6162"));
  EXPECT_THAT(Read("3SaR" + RasterHeaderBytes(Form(1, 1, 1, 16), true) + "ab"),
              ElementsAre("6261"));
}

TEST_F(RasterStreamTest, PaddingOfLinesIsPassedOver) {
  RasterHeaderForm form = Form(1, 2);
  form.line_bytes = 4;
  EXPECT_THAT(Read("RaS3" + RasterHeaderBytes(form) + "A...B..."), ElementsAre("41", "42"));
}

TEST_F(RasterStreamTest, DriverSaysHowToCodeExceptInPwgRaster) {
  RasterHeaderForm form = Form(1, 1);
  form.compression = 2;
  form.row_count = 60;
  Read("RaS3" + RasterHeaderBytes(form) + "a");
  EXPECT_EQ(page_.coding, RasterCoding::kJpeg);
  EXPECT_EQ(page_.quality, 60);
  form.media_class = "PwgRaster";
  Read("RaS2" + RasterHeaderBytes(form) + std::string("\0\0a", 3));
  EXPECT_EQ(page_.coding, RasterCoding::kAuto);
}

TEST_F(RasterStreamTest, MarginsMakeAFrame) {
  RasterHeaderForm form = Form(36, 1);
  form.page[0] = form.page[1] = 100;
  form.corner[0] = 18;
  form.corner[1] = 20;
  Read("RaS3" + RasterHeaderBytes(form) + std::string(36, 'a'));
  ASSERT_TRUE(page_.frame);
  EXPECT_EQ(page_.frame->width, 100);
  EXPECT_EQ(page_.frame->left, 18);
  EXPECT_EQ(page_.frame->bottom, 20);
}

TEST_F(RasterStreamTest, FrameThatDoesNotHoldThePictureIsIgnored) {
  RasterHeaderForm form = Form(36, 1);
  form.page[0] = form.page[1] = 100;
  form.corner[0] = 90;
  Read("RaS3" + RasterHeaderBytes(form) + std::string(36, 'a'));
  EXPECT_FALSE(page_.frame);
}

TEST_F(RasterStreamTest, DataThatEndAreNamedByRow) {
  EXPECT_THAT(Read("RaS3" + RasterHeaderBytes(Form(2, 3)) + "ABC"),
              ElementsAre("4142", HasSubstr("in row 2 of 3")));
  EXPECT_THAT(Read("RaS2" + RasterHeaderBytes(Form(2, 3)) + "\0\x01"s),
              ElementsAre(HasSubstr("in row 1 of 3")));
}

TEST_F(RasterStreamTest, StreamThatEndsInAHeaderIsNamed) {
  EXPECT_THAT(Read("RaS3" + RasterHeaderBytes(Form(1, 1)) + "ABC"),
              ElementsAre("41", StartsWith("ends within the header of a page")));
}

TEST_F(RasterStreamTest, RunsBeyondTheLineAreDamage) {
  EXPECT_THAT(Read("RaS2" + RasterHeaderBytes(Form(2, 1)) +
                   "\0\x02"s
                   "A"),
              ElementsAre(HasSubstr("in row 1 of 1")));
  EXPECT_THAT(Read("RaS2" + RasterHeaderBytes(Form(2, 1)) + "\0\x81"s + std::string(128, 'A')),
              ElementsAre(HasSubstr("in row 1 of 1")));
}

TEST_F(RasterStreamTest, LinesRepeatedBeyondThePageAreDamage) {
  EXPECT_THAT(Read("RaS2" + RasterHeaderBytes(Form(1, 2)) + "\x02\0A"s),
              ElementsAre(HasSubstr("in row 1 of 2")));
}

TEST_F(RasterStreamTest, HostileSizesAreRefused) {
  EXPECT_THAT(Refusal(Form(0, 1)), HasSubstr("0 by 1 pixels"));
  EXPECT_THAT(Refusal(Form(1, 0)), HasSubstr("1 by 0 pixels"));
  EXPECT_THAT(Refusal(Form(0xFFFFFFFF, 0xFFFFFFFF)), HasSubstr("4294967295 by 4294967295"));
  EXPECT_THAT(Refusal(Form(1000000, 1000000)), HasSubstr("4 GiB"));
  RasterHeaderForm form = Form(1, 1);
  form.dpi = 0xFFFFFFFF;
  EXPECT_THAT(Refusal(form), HasSubstr("4294967295 dots per inch"));
}

TEST_F(RasterStreamTest, LinesThatDoNotFitTheirPixelsAreRefused) {
  RasterHeaderForm form = Form(100, 1);
  form.line_bytes = 99;
  EXPECT_THAT(Refusal(form), HasSubstr("lines of 99 bytes for 100 pixels"));
  form.line_bytes = 0xFFFFFFFF;
  EXPECT_THAT(Refusal(form), HasSubstr("lines of 4294967295 bytes"));
}

TEST_F(RasterStreamTest, PixelsOfUnknownKindsAreRefused) {
  EXPECT_THAT(Refusal(Form(1, 1, 1, 8, 62)), HasSubstr("colour space 62"));
  EXPECT_THAT(Refusal(Form(1, 1, 1, 7)), HasSubstr("7 bits"));
  EXPECT_THAT(Refusal(Form(1, 1, 1, 0)), HasSubstr("0 bits"));
  EXPECT_THAT(Refusal(Form(1, 1, 2, 8, 19)), HasSubstr("16 bits of a pixel"));
  RasterHeaderForm form = Form(1, 1, 3, 8, 19);
  form.colour_order = 1;
  EXPECT_THAT(Refusal(form), HasSubstr("colours apart"));
}

TEST_F(RasterStreamTest, OtherFilesAreNoRasters) {
  EXPECT_THAT(Read("RaS4" + RasterHeaderBytes(Form(1, 1))), ElementsAre("unknown"));
  EXPECT_THAT(Read("Ra"), ElementsAre("unknown"));
  EXPECT_THAT(Read("UNIRASTX...."), ElementsAre("unknown"));
}

}  // namespace
}  // namespace sorrelin::tool
