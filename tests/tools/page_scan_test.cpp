// Pages of pictures on their way to a process that recognises them.
#include "tools/ocr/page_scan.h"

#include <gtest/gtest.h>

#include "tests/support/pictures.h"
#include "tests/support/temp_dir.h"
#include "tools/documents/packed_values.h"
#include "tools/formats/image_file.h"
#include "tools/ocr/ocr_engine.h"

namespace sorrelin::tool {
namespace {

constexpr int kWidth = 800;
constexpr int kHeight = 600;  // 60,000 bytes of bits
constexpr size_t kMuch = size_t{1} << 30;

PixPtr Bits(l_uint32 seed) {
  PixPtr pix(pixCreate(kWidth, kHeight, 1));
  for (int y = 0; y < kHeight; ++y) pixSetPixel(pix.get(), static_cast<int>(seed) + y, y, 1);
  return pix;
}

PixPtr Palette() {
  PixPtr pix(pixCreate(30, 20, 8));
  PIXCMAP* const colours = pixcmapCreate(8);
  for (int i = 0; i < 200; ++i) pixcmapAddColor(colours, i, 255 - i, 7);
  pixSetColormap(pix.get(), colours);
  for (int x = 0; x < 30; ++x) pixSetPixel(pix.get(), x, x / 2, static_cast<l_uint32>(6 * x));
  return pix;
}

PixPtr Colours() {
  PixPtr pix(pixCreate(31, 17, 32));
  for (int x = 0; x < 31; ++x) pixSetRGBPixel(pix.get(), x, x / 2, x, 200, 8 * x);
  return pix;
}

class DecodedPages : public ::testing::Test {
 protected:
  void Open(std::vector<PixPtr> const& pages) {
    std::string const name = (directory_ / "in.tif").string();
    for (PixPtr const& pix : pages) {
      pixSetResolution(pix.get(), 200, 100);
      pixWriteTiff(name.c_str(), pix.get(), IFF_TIFF_LZW, pix == pages.front() ? "w" : "a");
    }
    std::string problem;
    file_ = ImageFile::Open(name, problem);
    ASSERT_NE(file_, nullptr) << problem;
    source_ = file_->Next(problem);
    ASSERT_NE(source_, nullptr) << problem;
  }

  // What another process has of them.
  static ScannedPages Received(ScannedPages const& pages) {
    std::string bytes;
    Pack(bytes, pages);
    std::string_view rest = bytes;
    ScannedPages received;
    Unpack(rest, received);
    EXPECT_TRUE(rest.empty());
    return received;
  }

  static std::vector<ScannedPicture> Scan(ScannedPages const& pages, unsigned page,
                                          std::string& problem) {
    auto const scanner = OpenScanner(pages, problem);
    return scanner == nullptr ? std::vector<ScannedPicture>() : scanner->Scan(page, problem);
  }

  test::TempDir directory_;
  std::unique_ptr<ImageFile> file_;
  std::unique_ptr<ImageSource> source_;
};

TEST_F(DecodedPages, ComeToAnotherProcessAsTheyAreInThisOne) {
  std::vector<PixPtr> pages;
  pages.push_back(Bits(0));
  pages.push_back(Palette());
  pages.push_back(Colours());
  Open(pages);
  ScannedPages here;
  here.source = source_.get();
  ScannedPages const there = Received(Decoded(*source_, std::vector<unsigned>{0, 1, 2}, kMuch));
  for (unsigned page = 0; page < 3; ++page) {
    std::string problem;
    auto const expected = Scan(here, page, problem);
    auto const scanned = Scan(there, page, problem);
    ASSERT_EQ(expected.size(), 1u) << problem;
    ASSERT_EQ(scanned.size(), 1u) << problem;
    l_int32 same = 0;
    pixEqual(scanned[0].picture.pix.get(), expected[0].picture.pix.get(), &same);
    EXPECT_EQ(same, 1) << page;
    EXPECT_EQ(scanned[0].picture.dpi, expected[0].picture.dpi);
    EXPECT_EQ(scanned[0].shown.width, expected[0].shown.width);
    EXPECT_EQ(scanned[0].place.Width(), expected[0].place.Width());
  }
}

TEST_F(DecodedPages, AreTheFirstOnesUntilThereIsEnough) {
  std::vector<PixPtr> pages;
  for (l_uint32 i = 0; i < 4; ++i) pages.push_back(Bits(i));
  Open(pages);
  std::vector<unsigned> const wanted = {1, 2, 3};
  EXPECT_EQ(Decoded(*source_, wanted, 1).decoded.size(), 1u);
  ScannedPages const two = Decoded(*source_, wanted, 70'000);
  ASSERT_EQ(two.decoded.size(), 2u);
  EXPECT_EQ(two.decoded[0].page, 1u);
  EXPECT_EQ(two.decoded[1].page, 2u);
  EXPECT_EQ(Decoded(*source_, wanted, kMuch).decoded.size(), 3u);
}

TEST_F(DecodedPages, KeepWhyAPageIsNotThere) {
  std::vector<PixPtr> pages;
  pages.push_back(Bits(0));
  Open(pages);
  std::string const name = (directory_ / "in.tif").string();
  std::filesystem::resize_file(name, 1000);
  ScannedPages here;
  here.source = source_.get();
  std::string expected;
  EXPECT_TRUE(Scan(here, 0, expected).empty());
  EXPECT_NE(expected, "");
  ScannedPages const there = Received(Decoded(*source_, std::vector<unsigned>{0}, kMuch));
  std::string problem;
  EXPECT_TRUE(Scan(there, 0, problem).empty());
  EXPECT_EQ(problem, expected);
}

// Wider than the image library packs.
TEST_F(DecodedPages, PictureThatCannotBeSentIsNamed) {
  std::vector<PixPtr> pages;
  pages.emplace_back(pixCreate(1'200'000, 2, 1));
  Open(pages);
  ScannedPages const there = Received(Decoded(*source_, std::vector<unsigned>{0}, kMuch));
  std::string problem;
  EXPECT_TRUE(Scan(there, 0, problem).empty());
  EXPECT_EQ(problem, kTooLargeText);
}

}  // namespace
}  // namespace sorrelin::tool
