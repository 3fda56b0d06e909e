// Bitmaps to JPEG files: quality, subsampling, components, density, and what is refused.
#include <gmock/gmock.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/wide_string.h>
#include <tests/siblings/rennick_support.h>

#include <thread>

using namespace test;

namespace {

int FirstStep(int quality) {
  return Read(Save(DibOf(Gradient(16, 16, 3)), {.quality = quality})).first_step;
}

// Horizontal and vertical sampling of luma, in two digits.
int LumaSampling(int quality) {
  ReadJpeg const read = Read(Save(DibOf(Gradient(40, 40, 3)), {.quality = quality}));
  return 10 * read.h_samp + read.v_samp;
}

int StatusOf(HDIB dib) {
  int status = 0;
  EXPECT_EQ(Save(dib, {}, &status), Bytes{});
  return status;
}

}  // namespace

// The first step of libjpeg's luma table is 16 at quality 50, 200 - 2 * quality percent of that
// above, 5000 / quality percent below.
TEST(JpegSave, QualityScalesTheTables) {
  EXPECT_EQ(FirstStep(50), 16);
  EXPECT_EQ(FirstStep(25), 32);
  EXPECT_EQ(FirstStep(75), 8);
  EXPECT_EQ(FirstStep(1), 255);
  EXPECT_EQ(FirstStep(100), 1);
}

TEST(JpegSave, QualityOfZeroOrLessIsTheDefault) {
  EXPECT_EQ(FirstStep(0), 8);
  EXPECT_EQ(FirstStep(-1), 8);
  EXPECT_EQ(FirstStep(-32768), 8);
}

TEST(JpegSave, QualityAboveHundredIsHundred) {
  EXPECT_EQ(FirstStep(101), 1);
  EXPECT_EQ(FirstStep(32767), 1);
}

TEST(JpegSave, ChromaIsHalvedBelowQualityNinety) {
  EXPECT_EQ(LumaSampling(1), 22);
  EXPECT_EQ(LumaSampling(89), 22);
  EXPECT_EQ(LumaSampling(90), 11);
  EXPECT_EQ(LumaSampling(100), 11);
}

TEST(JpegSave, ColourBitmapsAreCodedAsYCbCr) {
  Samples const samples = Gradient(37, 23, 3);
  ReadJpeg const read = Read(Save(DibOf(samples), {.quality = 100}), JCS_RGB);
  EXPECT_EQ(read.space, JCS_YCbCr);
  EXPECT_LE(Distance(read.samples, samples), 4);
}

TEST(JpegSave, IndicesAreTheOneComponentWhateverTheirColours) {
  Samples const indices = Gradient(37, 23, 1);
  DibSpec spec;
  for (int i = 0; i < 256; ++i) spec.palette.push_back({static_cast<BYTE>(255 - i), 7, 99, 0});
  ReadJpeg const read = Read(Save(DibOf(indices, spec), {.quality = 100}));
  EXPECT_EQ(read.space, JCS_GRAYSCALE);
  EXPECT_LE(Distance(read.samples, indices), 2);
}

TEST(JpegSave, RowsOfASmallPaletteAreFound) {
  Samples const indices = Gradient(20, 12, 1);
  DibSpec const spec{.palette = std::vector<RGBQUAD>(16, kWhite), .colors_used = 16};
  EXPECT_LE(Distance(Read(Save(DibOf(indices, spec), {.quality = 100})).samples, indices), 2);
}

TEST(JpegSave, EveryWidthAroundABlockIsCoded) {
  for (JDIMENSION width = 1; width <= 35; ++width) {
    for (int const components : {1, 3}) {
      Samples const samples = Gradient(width, 19, components);
      J_COLOR_SPACE const out = components == 1 ? JCS_GRAYSCALE : JCS_RGB;
      EXPECT_LE(Distance(Read(Save(DibOf(samples), {.quality = 100}), out).samples, samples), 4);
    }
  }
}

TEST(JpegSave, PixelsPerMetreBecomeTheDensity) {
  ReadJpeg const inch = Read(Save(DibOf(Gradient(8, 8, 1)), {75, 11811, 7874, 0, 0}));
  EXPECT_TRUE(inch.jfif);
  EXPECT_EQ(inch.unit, 1);
  EXPECT_EQ(inch.x_density, 300);
  EXPECT_EQ(inch.y_density, 200);
  EXPECT_EQ(Read(Save(DibOf(Gradient(8, 8, 3)), {75, 300, 300, 0, 0})).unit, 2);
  EXPECT_EQ(Read(Save(DibOf(Gradient(8, 8, 3)), {75, 0, 0, 0, 0})).unit, 0);
}

// The record's 16 bits cannot hold sizes from 65536 on.
TEST(JpegSave, SizesComeFromTheBitmap) {
  Samples const read = Read(Save(DibOf(Gradient(30, 20, 3)), {.width = 3, .height = 1000})).samples;
  EXPECT_EQ(read.width, 30u);
  EXPECT_EQ(read.height, 20u);
}

TEST(JpegSave, WhatTheBlockLacksIsCodedAsZeros) {
  Block const dib =
      MakeDib({.width = 16, .height = 48, .bits = 24}, [](LONG, LONG) { return 0xFFFFFF; });
  GlobalReAlloc(dib, 40 + 16 * 48, GMEM_MOVEABLE);
  Samples const read = Read(Save(dib, {.quality = 100}), JCS_RGB).samples;
  EXPECT_EQ(read.At(8, 47, 0), 255);
  EXPECT_EQ(read.At(8, 32, 0), 255);
  EXPECT_EQ(read.At(8, 31, 0), 0);
  EXPECT_EQ(read.At(8, 0, 2), 0);
}

TEST(JpegSave, LargeFileFillsItsBlockExactly) {
  std::srand(5);
  Block const dib = MakeDib({.width = 900, .height = 700, .bits = 24},
                            [](LONG, LONG) { return static_cast<DWORD>(std::rand()); });
  Bytes const file = Save(dib, {.quality = 100});
  EXPECT_GT(file.size(), 500000u);
  EXPECT_THAT(Bytes(file.end() - 2, file.end()), testing::ElementsAre(0xFF, 0xD9));
  EXPECT_EQ(Read(file).samples.width, 900u);
}

TEST(JpegSave, BitmapIsUnlockedAndUnchangedAfterwards) {
  Block const dib = DibOf(Gradient(30, 20, 3));
  Bytes const before = dib.Content();
  Save(dib, {});
  EXPECT_EQ(dib.Content(), before);
  EXPECT_FALSE(GlobalUnlock(dib));
  EXPECT_EQ(GetLastError(), ERROR_NOT_LOCKED);
}

TEST(JpegSave, OtherDepthsFail) {
  for (WORD const bits : {WORD{1}, WORD{4}, WORD{16}, WORD{32}}) {
    EXPECT_EQ(
        StatusOf(MakeDib({.width = 8, .height = 8, .bits = bits}, [](LONG, LONG) { return 0; })),
        RENNICK_BAD_BITMAP);
  }
}

TEST(JpegSave, NegativeHeightFails) {
  Block const dib = DibOf(Gradient(8, 8, 3));
  BITMAPINFOHEADER header = HeaderOf(dib);
  header.biHeight = -8;
  std::memcpy(GlobalLock(dib), &header, sizeof header);
  GlobalUnlock(dib);
  EXPECT_EQ(StatusOf(dib), RENNICK_BAD_BITMAP);
}

TEST(JpegSave, ValuesThatAreNoBlockFail) {
  int local = 0;
  EXPECT_EQ(StatusOf(nullptr), RENNICK_BAD_ARGUMENT);
  EXPECT_EQ(StatusOf(INVALID_HANDLE_VALUE), RENNICK_BAD_ARGUMENT);
  EXPECT_EQ(StatusOf(&local), RENNICK_BAD_ARGUMENT);
}

TEST(JpegSave, RecordIsNeededAndStatusIsNot) {
  Block const dib = DibOf(Gradient(8, 8, 3));
  int status = 0;
  EXPECT_EQ(SaveDIBAsJPEGToMemoryEx(dib, nullptr, &status), nullptr);
  EXPECT_EQ(status, RENNICK_BAD_ARGUMENT);
  EXPECT_NE(Block(SaveDIBAsJPEGToMemoryEx(dib, MakeRecord({}).data(), nullptr)).get(), nullptr);
}

TEST(JpegSave, FileHoldsWhatMemoryWouldHold) {
  TempDir const folder;
  Block const dib = DibOf(Gradient(100, 80, 3));
  WriteAll(folder / "a.jpg", Bytes(100000, 1));
  EXPECT_EQ(
      SaveDIBInJPEGFileExW((folder / "a.jpg").string<WCHAR>().c_str(), dib, MakeRecord({}).data()),
      0);
  EXPECT_EQ(ReadAll(folder / "a.jpg"), Save(dib, {}));
}

TEST(JpegSave, FileThatCannotBeMadeFails) {
  TempDir const folder;
  Block const dib = DibOf(Gradient(8, 8, 3));
  sorrelin::WideString const path = (folder / "none/a.jpg").string<WCHAR>();
  EXPECT_EQ(SaveDIBInJPEGFileExW(path.c_str(), dib, MakeRecord({}).data()), RENNICK_FILE_FAILED);
  EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
  EXPECT_EQ(SaveDIBInJPEGFileExW(nullptr, dib, MakeRecord({}).data()), RENNICK_BAD_ARGUMENT);
}

TEST(JpegSave, BitmapThatCannotBeCodedLeavesTheFileAlone) {
  TempDir const folder;
  WriteAll(folder / "a.jpg", {1, 2, 3});
  Block const dib = MakeDib({.width = 8, .height = 8, .bits = 1}, [](LONG, LONG) { return 0; });
  EXPECT_EQ(
      SaveDIBInJPEGFileExW((folder / "a.jpg").string<WCHAR>().c_str(), dib, MakeRecord({}).data()),
      RENNICK_BAD_BITMAP);
  EXPECT_EQ(ReadAll(folder / "a.jpg"), (Bytes{1, 2, 3}));
}

TEST(JpegSave, ThreadsDoNotMeet) {
  std::vector<std::thread> threads;
  std::vector<int> good(4);
  for (JDIMENSION t = 0; t < 4; ++t) {
    threads.emplace_back([t, &good] {
      Samples const samples = Gradient(30 + t, 30, t % 2 == 0 ? 1 : 3);
      for (int turn = 0; turn < 20; ++turn) {
        Bytes const file = Save(DibOf(samples), {.quality = 100});
        bool const back = Distance(PixelsOf(Load(file)), samples) <= 4;
        bool const fails = Load(Bytes(file.begin(), file.begin() + 40)).get() == nullptr;
        good[t] += back && fails ? 1 : 0;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_THAT(good, testing::Each(20));
}
