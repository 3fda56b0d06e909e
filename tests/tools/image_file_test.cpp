// Files of one picture and of many, and the samples of PNM pictures.
#include "tools/formats/image_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/pictures.h"
#include "tests/support/temp_dir.h"

namespace sorrelin::tool {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class ImageFileTest : public ::testing::Test {
 protected:
  void Write(std::string const& text) {
    test::WriteAll(directory_ / "a", std::vector<BYTE>(text.begin(), text.end()));
  }

  // Each picture's width, then what is wrong.
  std::vector<std::string> Found() {
    std::vector<std::string> found;
    std::string problem;
    auto const file = ImageFile::Open((directory_ / "a").string(), problem);
    while (auto const source = file->Next(problem)) {
      auto const picture = source->Decode(0, problem);
      if (!picture) break;
      auto const& samples = picture->samples;
      found.push_back(std::to_string(samples ? samples->width : pixGetWidth(picture->pix.get())) +
                      " " + (picture->damage.empty() ? "whole" : picture->damage));
      if (samples) AddPixels(*samples);
      for (int x = 0; x < pixGetWidth(picture->pix.get()); ++x) {
        l_uint32 value = 0;
        pixGetPixel(picture->pix.get(), x, 0, &value);
        pixels_.push_back(pixGetDepth(picture->pix.get()) == 32 ? value >> 8 : value);
      }
    }
    if (!problem.empty()) found.push_back(problem);
    return found;
  }

  void AddPixels(Samples const& samples) {
    size_t const step = static_cast<size_t>(samples.Components() * samples.bits / 8);
    for (size_t at = 0; at < samples.bytes.size(); at += step) {
      l_uint32 value = 0;
      for (size_t i = 0; i < step; ++i) value = value << 8 | samples.bytes[at + i];
      pixels_.push_back(value);
    }
  }

  static std::string PngOfWidth(int width) {
    test::TempDir directory;
    test::PngForm form;
    form.width = width;
    test::WritePng(directory / "p.png", form, [](int x, int, int) { return unsigned(x); });
    std::vector<BYTE> const bytes = test::ReadAll(directory / "p.png");
    return {bytes.begin(), bytes.end()};
  }
  static std::string JpegOfWidth(int width) {
    test::JpegForm form;
    form.width = width;
    auto const bytes = test::MakeJpeg(form, [](int x, int, int) { return unsigned(x); });
    return {bytes.begin(), bytes.end()};
  }

  test::TempDir directory_;
  std::vector<l_uint32> pixels_;
};

TEST_F(ImageFileTest, EveryKindOfPnmMayFollowEveryOther) {
  Write(
      "P1 3 1\n101\nP2\n# grey\n2 1 15\n0 15\nP3 1 1 255 1 2 3\nP4 9 1\n\xA5\x80"
      "P5 2 1 255\n\x10\x20P6 1 1 255\nabcP1 1 1 0"s);
  EXPECT_THAT(Found(), ElementsAre("3 whole", "2 whole", "1 whole", "9 whole", "2 whole", "1 whole",
                                   "1 whole"));
  EXPECT_THAT(pixels_, ElementsAre(1, 0, 1, 0, 255, 0x010203, 1, 0, 1, 0, 0, 1, 0, 1, 1, 0x10, 0x20,
                                   0x616263, 0));
}

TEST_F(ImageFileTest, SamplesAreScaledFromAnyMaxval) {
  Write("P5 3 1 100\n\x00\x32\x64P5 2 1 1000\n\x01\xF4\x03\xE8P2 2 1 65535\n256 65535"s);
  EXPECT_THAT(Found(), ElementsAre("3 whole", "2 whole", "2 whole"));
  EXPECT_THAT(pixels_, ElementsAre(0, 128, 255, 32768, 65535, 256, 65535));
}

TEST_F(ImageFileTest, CommentsMayStandBetweenAllWordsOfAHeader) {
  Write("P5# one\n# two\n2#three\n 1 # four\n255\nab");
  EXPECT_THAT(Found(), ElementsAre("2 whole"));
  EXPECT_THAT(pixels_, ElementsAre('a', 'b'));
}

TEST_F(ImageFileTest, PamWithOpacityIsLaidOnWhite) {
  Write(
      "P7\nWIDTH 2\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n"
      "\x01\x02\x03\xFF\x01\x02\x03\x00"s);
  EXPECT_THAT(Found(), ElementsAre("2 whole"));
  EXPECT_THAT(pixels_, ElementsAre(0x010203, 0xFFFFFF));
}

TEST_F(ImageFileTest, ShortDataAreDamage) {
  Write("P5 2 3 255\nabc");
  EXPECT_THAT(Found(), ElementsAre("2 the data end in row 2 of 3"));
  Write("P4 9 2\nab");
  EXPECT_THAT(Found(), ElementsAre("9 the data end in row 2 of 2"));
  Write("P3 1 2 255\n1 2 3 4 5");
  EXPECT_THAT(Found(), ElementsAre("1 the data end in row 2 of 2"));
}

TEST_F(ImageFileTest, SamplesAboveMaxvalAreDamage) {
  Write("P5 1 1 10\n\x0B");
  EXPECT_THAT(Found(), ElementsAre("1 samples are above its maxval"));
  Write("P2 1 1 255\n256\n");
  EXPECT_THAT(Found(), ElementsAre("1 samples are above its maxval"));
}

TEST_F(ImageFileTest, HeadersOfNoPictureAreNamed) {
  for (std::string const text :
       {"P5 0 1 255\nab12", "P5 1 1 0\nab1234", "P5 1 1 65536\nabcd", "P5 x 1 255\nabcd",
        "P5 1 1 255garbage", "P7\nWIDTH 1\nENDHDR\n"}) {
    Write(text);
    EXPECT_THAT(Found(), ElementsAre(HasSubstr("PNM header"))) << text;
  }
}

TEST_F(ImageFileTest, SizesThatNoMemoryHoldsAreRefused) {
  Write("P6 2000000000 2000000000 65535\nabc");
  EXPECT_THAT(Found(), ElementsAre(HasSubstr("too large")));
}

TEST_F(ImageFileTest, PngAndJpegMayFollowEachOtherToo) {
  Write(PngOfWidth(5) + JpegOfWidth(16) + PngOfWidth(7) + "P4 9 1\nab");
  EXPECT_THAT(Found(), ElementsAre("5 whole", "16 whole", "7 whole", "9 whole"));
}

TEST_F(ImageFileTest, BytesAfterTheLastPictureAreAProblem) {
  for (std::string const& picture :
       {PngOfWidth(5), JpegOfWidth(5), std::string("P5 5 1 255\nabcde")}) {
    Write(picture + "this is no picture");
    EXPECT_THAT(Found(), ElementsAre("5 whole", HasSubstr("no picture"))) << picture.substr(0, 2);
  }
}

TEST_F(ImageFileTest, BlanksAfterPnmAndZerosAfterJpegAreNoProblem) {
  Write("P5 2 1 255\nab \n\n");
  EXPECT_THAT(Found(), ElementsAre("2 whole"));
  Write(JpegOfWidth(8) + std::string(99, '\0'));
  EXPECT_THAT(Found(), ElementsAre("8 whole"));
}

TEST_F(ImageFileTest, FilmsAndRecordsOfCamerasAreLeftOutAndThatIsSaid) {
  for (std::string const& record : {"\0\0\0\x18"
                                    "ftypmp42 and so on"s,
                                    "records, and an index with its mark SEFT"s}) {
    Write(JpegOfWidth(8) + record);
    std::string problem;
    auto const file = ImageFile::Open((directory_ / "a").string(), problem);
    auto const source = file->Next(problem);
    ASSERT_NE(source, nullptr);
    EXPECT_TRUE(source->changes().Has(Change::kFirstPicture));
    EXPECT_TRUE(file->AtEnd());
  }
}

}  // namespace
}  // namespace sorrelin::tool
