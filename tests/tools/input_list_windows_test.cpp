// Directories of inputs where the system is Windows.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include "tests/support/temp_dir.h"
#include "tools/make/input_list.h"

namespace sorrelin::tool {
namespace {

TEST(WindowsInputs, FilesWithTheAttributeHiddenAreLeftOut) {
  test::TempDir directory;
  for (char const* const name : {"a.png", "b.png", "Thumbs.db"}) {
    test::WriteAll(directory / name, {});
  }
  SetFileAttributesW((directory / "b.png").c_str(), FILE_ATTRIBUTE_HIDDEN);
  SetFileAttributesW((directory / "Thumbs.db").c_str(),
                     FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
  std::vector<std::string> ignored;
  auto const inputs = ListInputs({directory.path().string()}, Sort::kNone, false, &ignored);
  ASSERT_EQ(inputs.size(), 1u);
  EXPECT_EQ(inputs[0].name, (directory / "a.png").string());
  EXPECT_THAT(ignored, ::testing::IsEmpty());
}

}  // namespace
}  // namespace sorrelin::tool
