// JPEG 2000 files on their way into a document.
#include "tools/formats/jpeg2000/jp2_file.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/pictures.h"
#include "tests/support/temp_dir.h"

namespace sorrelin::tool {
namespace {

constexpr int kWidth = 24;
constexpr int kHeight = 16;

// A file of Leptonica's.
std::vector<BYTE> Compressed(int channels) {
  constexpr int kLossless = 100, kLevels = 2;
  test::PixPtr const pix(pixCreate(kWidth, kHeight, channels == 1 ? 8 : 32));
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      DWORD const colour = test::Motley(x, y);
      pixSetPixel(pix.get(), x, y, channels == 1 ? colour & 0xFF : colour << 8);
    }
  }
  test::TempDir directory;
  std::string const name = (directory / "a.jp2").string();
  EXPECT_EQ(pixWriteJp2k(name.c_str(), pix.get(), kLossless, kLevels, 0, 0), 0);
  return test::ReadAll(name);
}

size_t PlaceOf(std::vector<BYTE> const& file, std::string const& text) {
  auto const at = std::search(file.begin(), file.end(), text.begin(), text.end());
  if (at == file.end()) throw std::runtime_error("no " + text);
  return static_cast<size_t>(at - file.begin());
}

// The codestream of a file without its boxes, of which it is the last.
std::vector<BYTE> CodestreamOf(std::vector<BYTE> const& file) {
  return {file.begin() + static_cast<long>(PlaceOf(file, "jp2c") + 4), file.end()};
}

// Puts a box into the header box, which is found by its first inner box.
void AddToHeader(std::vector<BYTE>& file, std::string const& type, std::vector<BYTE> contents) {
  size_t const header = PlaceOf(file, "jp2h") - 4;
  std::vector<BYTE> box = {0, 0, 0, static_cast<BYTE>(contents.size() + 8)};
  box.insert(box.end(), type.begin(), type.end());
  box.insert(box.end(), contents.begin(), contents.end());
  size_t const end = header + file[header + 3];
  file[header + 3] = static_cast<BYTE>(file[header + 3] + box.size());
  file.insert(file.begin() + static_cast<long>(end), box.begin(), box.end());
}

std::vector<BYTE> BytesOf(StoredImage const& image) {
  return {image.bytes.begin(), image.bytes.end()};
}

TEST(Jp2File, GreyAndColourFilesAreStoredAsTheyAre) {
  for (int const channels : {1, 3}) {
    std::vector<BYTE> const file = Compressed(channels);
    auto const image = StoredJp2(file);
    ASSERT_TRUE(image);
    EXPECT_EQ(BytesOf(*image), file);
    EXPECT_EQ(image->width, kWidth);
    EXPECT_EQ(image->height, kHeight);
    EXPECT_EQ(image->form.colours, ImageColours::kInData);
    EXPECT_EQ(image->form.filter, ImageFilter::kJpeg2000);
  }
}

// Another decoder reads the boxed stream as the file that it came from.
TEST(Jp2File, BareCodestreamsGetTheBoxesOfAFile) {
  for (int const channels : {1, 3}) {
    std::vector<BYTE> const whole = Compressed(channels), stream = CodestreamOf(whole);
    auto const image = StoredJp2(stream);
    ASSERT_TRUE(image);
    std::vector<BYTE> const file = BytesOf(*image);
    ASSERT_GT(file.size(), stream.size());
    EXPECT_TRUE(std::equal(stream.rbegin(), stream.rend(), file.rbegin()));
    test::PixPtr const before(pixReadMem(whole.data(), whole.size()));
    test::PixPtr const after(pixReadMem(file.data(), file.size()));
    l_int32 same = 0;
    EXPECT_EQ(pixEqual(before.get(), after.get(), &same), 0);
    EXPECT_EQ(same, 1);
  }
}

// 11811.02 pixels a metre are 300 dots per inch; 15000 / 127 * 10^2 is that number.
TEST(Jp2File, ResolutionOfTheCaptureIsRead) {
  std::vector<BYTE> file = Compressed(1);
  std::vector<BYTE> box = {0, 0, 0, 18, 'r', 'e', 's', 'c'};
  for (int const byte : {0x1D, 0x4C, 0, 127, 0x3A, 0x98, 0, 127, 2, 2}) {
    box.push_back(static_cast<BYTE>(byte));
  }
  AddToHeader(file, "res ", box);
  auto const image = StoredJp2(file);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->dpi, (Resolution{300, 150}));
}

// cdef: one channel, number 0, of type 1 (opacity), for the whole picture.
TEST(Jp2File, FilesWithOpacityAreNotStored) {
  std::vector<BYTE> file = Compressed(1);
  AddToHeader(file, "cdef", {0, 1, 0, 0, 0, 1, 0, 0});
  EXPECT_FALSE(StoredJp2(file));
}

TEST(Jp2File, ColoursThatReadersNeedNotKnowAreNotStored) {
  std::vector<BYTE> file = Compressed(3);
  size_t const space = PlaceOf(file, "colr") + 4 + 3 + 3;
  ASSERT_EQ(file[space], 16);
  file[space] = 14;  // CIELab
  EXPECT_FALSE(StoredJp2(file));
  file[space] = 17;  // grey, of three components
  EXPECT_FALSE(StoredJp2(file));
}

TEST(Jp2File, FilesCutWithinTheirHeadersAreNotStored) {
  std::vector<BYTE> const file = Compressed(3);
  size_t const data = PlaceOf(file, "jp2c");
  for (size_t i = 0; i < data; ++i) EXPECT_FALSE(StoredJp2(std::span(file).first(i))) << i;
}

TEST(Jp2File, CodestreamsOfSubsampledColoursAreNotStored) {
  std::vector<BYTE> stream = CodestreamOf(Compressed(3));
  stream[42 + 3 + 1] = 2;
  EXPECT_FALSE(StoredJp2(stream));
}

}  // namespace
}  // namespace sorrelin::tool
