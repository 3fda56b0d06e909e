// JPEG files that are cut, changed, made up or too large: a null result, quickly and silently.
// Sanitized builds see every access.
#include <gmock/gmock.h>
#include <tests/siblings/rennick_support.h>

#include <random>

using namespace test;

namespace {

// Runs with standard error caught, which must stay empty.
class JpegHostile : public testing::Test {
 protected:
  void SetUp() override { testing::internal::CaptureStderr(); }
  void TearDown() override { EXPECT_EQ(testing::internal::GetCapturedStderr(), ""); }
};

void UseProgression(jpeg_compress_struct& coder) { jpeg_simple_progression(&coder); }
void UseRestarts(jpeg_compress_struct& coder) { coder.restart_interval = 1; }

void UseScanPerComponent(jpeg_compress_struct& coder) {
  static jpeg_scan_info const kScans[] = {{1, {0, 0, 0, 0}, 0, 63, 0, 0},
                                          {1, {1, 0, 0, 0}, 0, 63, 0, 0},
                                          {1, {2, 0, 0, 0}, 0, 63, 0, 0}};
  coder.scan_info = kScans;
  coder.num_scans = 3;
}

std::vector<Bytes> SomeFiles() {
  return {Write(Gradient(29, 19, 1), {JCS_GRAYSCALE, JCS_GRAYSCALE}),
          Write(Gradient(29, 19, 3), {JCS_RGB, JCS_YCbCr}),
          Write(Gradient(29, 19, 3), {JCS_RGB, JCS_YCbCr, UseProgression}),
          Write(Gradient(29, 19, 3), {JCS_RGB, JCS_YCbCr, UseRestarts}),
          Write(Gradient(29, 19, 4), {JCS_CMYK, JCS_YCCK})};
}

// The place of a marker's two bytes.
size_t Find(Bytes const& file, BYTE marker, size_t from = 0) {
  for (size_t i = from; i + 1 < file.size(); ++i) {
    if (file[i] == 0xFF && file[i + 1] == marker) return i;
  }
  return file.size();
}

Bytes WithSize(Bytes file, WORD width, WORD height) {
  size_t const frame = std::min(Find(file, 0xC0), Find(file, 0xC2));
  file[frame + 5] = static_cast<BYTE>(height >> 8);
  file[frame + 6] = static_cast<BYTE>(height);
  file[frame + 7] = static_cast<BYTE>(width >> 8);
  file[frame + 8] = static_cast<BYTE>(width);
  return file;
}

// The last scan of the file `copies` more times.
Bytes WithScansRepeated(Bytes const& file, int copies) {
  size_t last = Find(file, 0xDA);
  for (size_t next = last; next < file.size(); next = Find(file, 0xDA, next + 2)) last = next;
  Bytes repeated(file.begin(), file.end() - 2);
  for (int i = 0; i < copies; ++i) {
    repeated.insert(repeated.end(), file.begin() + static_cast<std::ptrdiff_t>(last),
                    file.end() - 2);
  }
  repeated.insert(repeated.end(), {0xFF, 0xD9});
  return repeated;
}

}  // namespace

TEST_F(JpegHostile, FilesCutAtAnyByteGiveNull) {
  for (Bytes const& file : SomeFiles()) {
    EXPECT_NE(Load(file).get(), nullptr);
    for (size_t size = 0; size < file.size(); ++size) {
      Bytes const cut(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
      ASSERT_EQ(Load(cut).get(), nullptr) << size << " of " << file.size();
    }
  }
}

TEST_F(JpegHostile, ChangedBytesNeverBreakTheReader) {
  std::mt19937 random(3);
  for (Bytes const& file : SomeFiles()) {
    for (size_t at = 0; at < file.size(); ++at) {
      Bytes changed = file;
      changed[at] = static_cast<BYTE>(random());
      Block const dib = Load(changed);
      EXPECT_TRUE(dib.get() == nullptr || HeaderOf(dib).biWidth > 0);
    }
  }
}

TEST_F(JpegHostile, RandomBytesGiveNull) {
  std::mt19937 random(4);
  for (int turn = 0; turn < 2000; ++turn) {
    Bytes bytes(random() % 400);
    for (BYTE& value : bytes) value = static_cast<BYTE>(random());
    EXPECT_EQ(Load(bytes).get(), nullptr);
    bytes.insert(bytes.begin(), {0xFF, 0xD8, 0xFF});
    EXPECT_EQ(Load(bytes).get(), nullptr);
  }
}

TEST_F(JpegHostile, NoDataGiveNull) {
  EXPECT_EQ(LoadJPEGIntoDIBFromMemory(nullptr, 0), nullptr);
  EXPECT_EQ(LoadJPEGIntoDIBFromMemory(nullptr, 100), nullptr);
  EXPECT_EQ(LoadJPEGIntoDIBFromMemory("", 0), nullptr);
}

// 512 pixels for a byte are the most that a Huffman code of one bit for each block can hold.
TEST_F(JpegHostile, SizesThatTheFileCannotHoldGiveNull) {
  for (Bytes const& file : SomeFiles()) {
    EXPECT_EQ(Load(WithSize(file, 65500, 65500)).get(), nullptr);
    EXPECT_EQ(Load(WithSize(file, 65500, 100)).get(), nullptr);
    EXPECT_EQ(Load(WithSize(file, 0, 10)).get(), nullptr);
    EXPECT_EQ(Load(WithSize(file, 65535, 1)).get(), nullptr);
  }
}

TEST_F(JpegHostile, BitmapBeyondFourGibibytesGivesNull) {
  Bytes file = WithSize(Write(Gradient(29, 19, 3), {JCS_RGB, JCS_YCbCr}), 65500, 65500);
  file.resize(32 * 1024 * 1024);
  EXPECT_EQ(Load(file).get(), nullptr);
}

// A file so long that its blocks may be in it, but whose progression needs more than 4 GiB.
TEST_F(JpegHostile, ProgressionThatNeedsTooMuchMemoryGivesNull) {
  Bytes file =
      WithSize(Write(Gradient(29, 19, 3), {JCS_RGB, JCS_YCbCr, UseProgression}), 37000, 37000);
  file.resize(8 * 1024 * 1024 + 128 * 1024);
  EXPECT_EQ(Load(file).get(), nullptr);
}

TEST_F(JpegHostile, MoreThanFiveHundredScansGiveNull) {
  Bytes const file = Write(Gradient(29, 19, 3), {JCS_RGB, JCS_YCbCr, UseScanPerComponent});
  EXPECT_NE(Load(WithScansRepeated(file, 497)).get(), nullptr);
  EXPECT_EQ(Load(WithScansRepeated(file, 498)).get(), nullptr);
}

// 2048 x 2048 pixels are 65536 blocks in each of 3 components; 2^26 blocks of work are 341 scans.
TEST_F(JpegHostile, LargerPicturesMayHaveFewerScans) {
  Samples const flat{2048, 2048, 3, Bytes(size_t{2048} * 2048 * 3, 128)};
  Bytes const file = Write(flat, {JCS_RGB, JCS_YCbCr, UseScanPerComponent});
  EXPECT_NE(Load(WithScansRepeated(file, 338)).get(), nullptr);
  EXPECT_EQ(Load(WithScansRepeated(file, 339)).get(), nullptr);
}

TEST_F(JpegHostile, TwoComponentsGiveNull) {
  Samples const samples = Gradient(16, 16, 2);
  EXPECT_EQ(Load(Write(samples, {JCS_UNKNOWN, JCS_UNKNOWN})).get(), nullptr);
}

// Arithmetic codes may hold a picture of any size in a few bytes.
TEST_F(JpegHostile, ArithmeticCodingGivesNull) {
  auto const adjust = [](jpeg_compress_struct& coder) { coder.arith_code = TRUE; };
  Bytes const file = Write(Gradient(16, 16, 3), {JCS_RGB, JCS_YCbCr, adjust});
  EXPECT_LT(Find(file, 0xC9), file.size());
  EXPECT_EQ(Load(file).get(), nullptr);
}

TEST_F(JpegHostile, StuffingBetweenMarkersIsNoDamage) {
  Bytes file = Write(Gradient(16, 16, 3), {JCS_RGB, JCS_YCbCr});
  file.insert(file.begin() + static_cast<std::ptrdiff_t>(Find(file, 0xDB)), {0x00, 0x11, 0x22});
  EXPECT_NE(Load(file).get(), nullptr);
}

TEST_F(JpegHostile, MissingRestartMarkerIsDamage) {
  Bytes file = Write(Gradient(29, 19, 3), {JCS_RGB, JCS_YCbCr, UseRestarts});
  file[Find(file, 0xD1) + 1] = 0xD5;
  EXPECT_EQ(Load(file).get(), nullptr);
}
