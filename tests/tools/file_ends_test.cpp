// Where picture files end, by headers and directories that nobody would write.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/temp_dir.h"
#include "tools/formats/ends/file_end.h"
#include "tools/formats/ends/tiff_end.h"

namespace sorrelin::tool {
namespace {

void Put(std::vector<BYTE>& file, size_t at, uint64_t number, size_t bytes) {
  for (size_t i = 0; i < bytes; ++i) file[at + i] = static_cast<BYTE>(number >> (8 * i));
}

// Rows of 2^34 bytes, 2^30 of them: their product is 0 in 64 bits.
TEST(FileEnds, RowsOfABmpFileBeyondAllMemoryReachToItsEnd) {
  std::vector<BYTE> file(100, 1);
  std::fill_n(file.begin(), 54, BYTE{0});
  Put(file, 10, 54, 4);
  Put(file, 14, 40, 4);
  Put(file, 18, uint64_t{1} << 31, 4);
  Put(file, 22, uint64_t{1} << 30, 4);
  Put(file, 28, 64, 2);
  EXPECT_EQ(BmpEnd(file), file.size());
}

// Directories without entries, of 6 bytes, each leading to the next.
std::vector<BYTE> EmptyDirectories(size_t count) {
  std::vector<BYTE> file(8 + 6 * count);
  Put(file, 0, 'I' | 'I' << 8 | 42 << 16, 4);
  Put(file, 4, 8, 4);
  for (size_t i = 0; i + 1 < count; ++i) Put(file, 8 + 6 * i + 2, 8 + 6 * (i + 1), 4);
  return file;
}

TEST(FileEnds, DirectoriesOfATiffFileAreFollowedUpToALimit) {
  test::TempDir const directory;
  auto const path = directory / "a.tif";
  auto const few = EmptyDirectories(100);
  test::WriteAll(path, few);
  EXPECT_EQ(TiffEnd(path.string()), few.size());
  test::WriteAll(path, EmptyDirectories(70'000));
  EXPECT_EQ(TiffEnd(path.string()), std::nullopt);
}

}  // namespace
}  // namespace sorrelin::tool
