// Chunks of PNG files, and data that go into a document as they are.
#include "tools/formats/png/png_chunks.h"

#include <gtest/gtest.h>
#include <png.h>

#include "tests/support/pdf_builder.h"
#include "tests/support/pictures.h"
#include "tests/support/temp_dir.h"

namespace sorrelin::tool {
namespace {

using test::PngForm;

unsigned ValueAt(int x, int y, int s) { return static_cast<unsigned>(x * 5 + y * 3 + s * 7); }

PngForm Form(int bits, int type) {
  PngForm form;
  form.bits = bits;
  form.type = type;
  if (type == PNG_COLOR_TYPE_PALETTE) form.palette = {0x102030, 0x405060};
  return form;
}

std::vector<BYTE> FileOf(PngForm const& form) {
  test::TempDir directory;
  test::WritePng(directory / "a.png", form, [&form](int x, int y, int s) {
    return ValueAt(x, y, s) % (form.palette.empty() ? 1u << form.bits : 2u);
  });
  return test::ReadAll(directory / "a.png");
}

// The data of a type of chunk, all of them together, found by its name.
std::vector<BYTE> DataOf(std::vector<BYTE> const& file, std::string const& type) {
  std::vector<BYTE> data;
  for (size_t at = 8; at + 12 <= file.size();) {
    size_t const length = static_cast<size_t>(file[at]) << 24 |
                          static_cast<size_t>(file[at + 1]) << 16 |
                          static_cast<size_t>(file[at + 2]) << 8 | file[at + 3];
    if (std::equal(type.begin(), type.end(), file.begin() + static_cast<long>(at) + 4)) {
      auto const start = file.begin() + static_cast<long>(at) + 8;
      data.insert(data.end(), start, start + static_cast<long>(length));
    }
    at += length + 12;
  }
  return data;
}

TEST(PngChunks, DataOfEachDepthAndTypeAreStoredAsTheyAre) {
  struct {
    int bits;
    int type;
  } const kForms[] = {{1, 0},  {2, 0}, {4, 0}, {8, 0}, {16, 0}, {8, 2},
                      {16, 2}, {1, 3}, {2, 3}, {4, 3}, {8, 3}};
  for (auto const& [bits, type] : kForms) {
    std::vector<BYTE> const file = FileOf(Form(bits, type));
    auto const chunks = ReadPngChunks(file);
    ASSERT_TRUE(chunks) << bits << " " << type;
    auto const image = StoredPng(*chunks);
    ASSERT_TRUE(image) << bits << " " << type;
    EXPECT_EQ(std::vector<BYTE>(image->bytes.begin(), image->bytes.end()), DataOf(file, "IDAT"));
    EXPECT_EQ(image->form.bits_per_component, bits);
    EXPECT_EQ(image->form.Components(), type == 2 ? 3 : 1);
    EXPECT_TRUE(image->form.predicted);
    EXPECT_EQ(image->width, 72);
    EXPECT_EQ(image->height, 36);
  }
}

TEST(PngChunks, IndicesWithoutAColourAreBlack) {
  auto const image = StoredPng(*ReadPngChunks(FileOf(Form(2, PNG_COLOR_TYPE_PALETTE))));
  ASSERT_TRUE(image);
  EXPECT_EQ(image->form.palette,
            (std::vector<BYTE>{0x10, 0x20, 0x30, 0x40, 0x50, 0x60, 0, 0, 0, 0, 0, 0}));
}

TEST(PngChunks, TransparentAndInterlacedFilesAreNotStored) {
  EXPECT_FALSE(StoredPng(*ReadPngChunks(FileOf(Form(8, PNG_COLOR_TYPE_RGB_ALPHA)))));
  PngForm keyed = Form(8, PNG_COLOR_TYPE_GRAY);
  keyed.key = {3};
  EXPECT_FALSE(StoredPng(*ReadPngChunks(FileOf(keyed))));
  PngForm interlaced = Form(8, PNG_COLOR_TYPE_GRAY);
  interlaced.interlaced = true;
  EXPECT_FALSE(StoredPng(*ReadPngChunks(FileOf(interlaced))));
}

// 11811 pixels a metre are 300 dots per inch.
TEST(PngChunks, DensityAndProfileAreRead) {
  PngForm form = Form(8, PNG_COLOR_TYPE_RGB);
  form.x_per_metre = 11811;
  form.y_per_metre = 5906;
  form.profile = test::MakeProfile(3);
  std::vector<BYTE> const file = FileOf(form);
  auto const chunks = ReadPngChunks(file);
  EXPECT_EQ(chunks->dpi, (Resolution{300, 150}));
  ASSERT_NE(chunks->profile, nullptr);
  EXPECT_EQ(*chunks->profile, form.profile);
  EXPECT_EQ(StoredPng(*chunks)->profile, chunks->profile);
}

TEST(PngChunks, EveryFlippedByteOfTheFileIsSeen) {
  std::vector<BYTE> const file = FileOf(Form(8, PNG_COLOR_TYPE_GRAY));
  for (size_t i = 0; i < file.size(); ++i) {
    std::vector<BYTE> damaged = file;
    damaged[i] ^= 0x10;
    EXPECT_FALSE(ReadPngChunks(damaged)) << i;
  }
}

TEST(PngChunks, CutFilesAreSeen) {
  std::vector<BYTE> const file = FileOf(Form(8, PNG_COLOR_TYPE_GRAY));
  for (size_t i = 0; i < file.size(); ++i) EXPECT_FALSE(ReadPngChunks(std::span(file).first(i)));
}

// The stream of `rows` is stored as the only data of a picture of 72 by 36 greys.
std::optional<StoredImage> StoredWith(std::vector<BYTE> const& rows) {
  std::vector<BYTE> const stream = test::ToBytes(test::Deflate(test::ToText(rows)));
  PngChunks chunks;
  chunks.width = 72;
  chunks.height = 36;
  chunks.bits = 8;
  chunks.data = {std::span<BYTE const>(stream)};
  return StoredPng(chunks);
}

TEST(PngChunks, DataOfTooFewOrTooManyRowsAreNotStored) {
  constexpr size_t kBytes = 73 * 36;
  EXPECT_TRUE(StoredWith(std::vector<BYTE>(kBytes)));
  EXPECT_FALSE(StoredWith(std::vector<BYTE>(kBytes - 1)));
  EXPECT_FALSE(StoredWith(std::vector<BYTE>(kBytes + 1)));
}

TEST(PngChunks, UnknownFilterTypesAreNotStored) {
  std::vector<BYTE> rows(73 * 36);
  rows[73 * 35] = 4;
  EXPECT_TRUE(StoredWith(rows));
  rows[73 * 35] = 5;
  EXPECT_FALSE(StoredWith(rows));
}

// A header that claims more than its data could hold costs no memory.
TEST(PngChunks, ImpossibleSizesAreRefusedAtOnce) {
  std::vector<BYTE> const stream(100);
  PngChunks chunks;
  chunks.width = chunks.height = 0x7FFFFFFF;
  chunks.bits = 16;
  chunks.type = PNG_COLOR_TYPE_RGB;
  chunks.data = {stream};
  EXPECT_FALSE(StoredPng(chunks));
}

}  // namespace
}  // namespace sorrelin::tool
