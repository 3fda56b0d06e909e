// Output that is renamed when it is complete.
#include "tools/cli/output_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/platform/error.h>

#include <fstream>

#include "tests/support/temp_dir.h"
#include "tools/cli/text.h"

namespace sorrelin::tool {
namespace {

namespace fs = std::filesystem;

std::vector<BYTE> BytesOf(std::string const& text) { return {text.begin(), text.end()}; }

size_t EntriesOf(fs::path const& directory) {
  return static_cast<size_t>(std::distance(fs::directory_iterator(directory), {}));
}

TEST(OutputFile, CommittedFileHasTheTargetsNameAndNothingElseIsLeft) {
  test::TempDir directory;
  std::string problem;
  auto output = OutputFile::Open((directory / "a.pdf").string(), false, problem);
  ASSERT_NE(output, nullptr) << problem;
  EXPECT_FALSE(fs::exists(output->path()));
  test::WriteAll(output->path(), BytesOf("new"));
  EXPECT_TRUE(output->Commit(problem)) << problem;
  output.reset();
  EXPECT_EQ(test::ReadAll(directory / "a.pdf"), BytesOf("new"));
  EXPECT_EQ(EntriesOf(directory.path()), 1u);
}

TEST(OutputFile, UncommittedFileIsRemoved) {
  test::TempDir directory;
  std::string problem;
  auto output = OutputFile::Open((directory / "a.pdf").string(), false, problem);
  ASSERT_NE(output, nullptr) << problem;
  test::WriteAll(output->path(), BytesOf("half"));
  output.reset();
  EXPECT_EQ(EntriesOf(directory.path()), 0u);
}

TEST(OutputFile, BareNameIsInTheCurrentDirectory) {
  test::TempDir directory;
  fs::path const before = fs::current_path();
  fs::current_path(directory.path());
  std::string problem;
  auto output = OutputFile::Open("a.pdf", false, problem);
  ASSERT_NE(output, nullptr) << problem;
  test::WriteAll(output->path(), BytesOf("new"));
  EXPECT_TRUE(output->Commit(problem)) << problem;
  fs::current_path(before);
  EXPECT_TRUE(fs::exists(directory / "a.pdf"));
}

TEST(OutputFile, DirectoryOfTheUnfinishedFileIsItsOwnersOnly) {
  test::TempDir directory;
  std::string problem;
  auto output = OutputFile::Open((directory / "a.pdf").string(), false, problem);
  ASSERT_NE(output, nullptr) << problem;
  EXPECT_EQ(fs::status(output->path().parent_path()).permissions(), fs::perms::owner_all);
}

TEST(OutputFile, TargetMadeMeanwhileIsKeptAndReported) {
  test::TempDir directory;
  std::string problem;
  auto output = OutputFile::Open((directory / "a.pdf").string(), false, problem);
  ASSERT_NE(output, nullptr) << problem;
  test::WriteAll(output->path(), BytesOf("new"));
  test::WriteAll(directory / "a.pdf", BytesOf("precious"));
  EXPECT_FALSE(output->Commit(problem));
  EXPECT_THAT(problem, ::testing::HasSubstr("exists already"));
  EXPECT_EQ(test::ReadAll(directory / "a.pdf"), BytesOf("precious"));
  EXPECT_EQ(EntriesOf(directory.path()), 1u);
}

TEST(OutputFile, CommitWithoutAFileFails) {
  test::TempDir directory;
  std::string problem;
  auto output = OutputFile::Open((directory / "a.pdf").string(), false, problem);
  ASSERT_NE(output, nullptr) << problem;
  EXPECT_FALSE(output->Commit(problem));
  EXPECT_THAT(problem, ::testing::HasSubstr("cannot be written"));
}

TEST(OutputFile, DanglingLinkCountsAsExisting) {
  test::TempDir directory;
  fs::create_symlink("nowhere", directory / "a.pdf");
  std::string problem;
  EXPECT_EQ(OutputFile::Open((directory / "a.pdf").string(), false, problem), nullptr);
  EXPECT_THAT(problem, ::testing::HasSubstr("exists already"));
}

TEST(OutputFile, CopyHoldsTheTargetsBytesAndTheTargetStaysUntilTheCommit) {
  test::TempDir directory;
  test::WriteAll(directory / "a.pdf", BytesOf("old"));
  fs::permissions(directory / "a.pdf", fs::perms::owner_read | fs::perms::owner_write);
  std::string problem;
  auto output = OutputFile::OpenCopy((directory / "a.pdf").string(), problem);
  ASSERT_NE(output, nullptr) << problem;
  EXPECT_EQ(test::ReadAll(output->path()), BytesOf("old"));
  test::WriteAll(output->path(), BytesOf("new"));
  EXPECT_EQ(test::ReadAll(directory / "a.pdf"), BytesOf("old"));
  EXPECT_TRUE(output->Commit(problem)) << problem;
  EXPECT_EQ(test::ReadAll(directory / "a.pdf"), BytesOf("new"));
  EXPECT_EQ(EntriesOf(directory.path()), 1u);
}

TEST(OutputFile, CopyWhoseTargetIsGoneIsNotCommitted) {
  test::TempDir directory;
  test::WriteAll(directory / "a.pdf", BytesOf("old"));
  std::string problem;
  auto output = OutputFile::OpenCopy((directory / "a.pdf").string(), problem);
  ASSERT_NE(output, nullptr) << problem;
  fs::remove(directory / "a.pdf");
  EXPECT_FALSE(output->Commit(problem));
  SetLastError(ERROR_FILE_NOT_FOUND);
  EXPECT_THAT(problem, testing::StartsWith("cannot be written: " + LastSystemError() + " ("));
  EXPECT_EQ(EntriesOf(directory.path()), 0u);
}

TEST(OutputFile, CopyOfWhatDoesNotExistIsRefused) {
  test::TempDir directory;
  std::string problem;
  EXPECT_EQ(OutputFile::OpenCopy((directory / "a.pdf").string(), problem), nullptr);
  EXPECT_THAT(problem, testing::StartsWith("cannot be copied: No such file or directory"));
  EXPECT_EQ(EntriesOf(directory.path()), 0u);
}

}  // namespace
}  // namespace sorrelin::tool
