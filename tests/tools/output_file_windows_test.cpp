// Output files where the system is Windows: held targets, devices, long names and open files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include "tests/support/environment.h"
#include "tests/support/temp_dir.h"
#include "tools/cli/output_file.h"
#include "tools/cli/text.h"
#include "tools/system/names.h"
#include "tools/system/program.h"

namespace sorrelin::tool {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

std::vector<BYTE> BytesOf(std::string const& text) { return {text.begin(), text.end()}; }

std::ptrdiff_t EntriesOf(fs::path const& directory) {
  return std::distance(fs::directory_iterator(directory), {});
}

// A file that another program has open, as viewers do.
class HeldFile {
 public:
  HeldFile(fs::path const& path, DWORD share)
      : file_(CreateFileW(path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING,
                          FILE_ATTRIBUTE_NORMAL, nullptr)) {}
  ~HeldFile() { CloseHandle(file_); }
  HeldFile(HeldFile const&) = delete;
  HeldFile& operator=(HeldFile const&) = delete;

 private:
  HANDLE file_;
};

// Of a document "old" that a viewer holds, written anew through what `open` gives.
void ExpectHeldTargetStays(
    std::function<std::unique_ptr<OutputFile>(std::string const& target, std::string& problem)>
        open) {
  test::TempDir directory;
  fs::path const target = directory / "a.pdf";
  test::WriteAll(target, BytesOf("old"));
  std::string problem;
  {
    auto const output = open(target.string(), problem);
    ASSERT_NE(output, nullptr) << problem;
    test::WriteAll(output->path(), BytesOf("new"));
    HeldFile const held(target, FILE_SHARE_READ);
    EXPECT_FALSE(output->Commit(problem));
  }
  EXPECT_THAT(problem, HasSubstr("held by another program"));
  EXPECT_EQ(test::ReadAll(target), BytesOf("old"));
  EXPECT_EQ(EntriesOf(directory.path()), 1);
}

TEST(WindowsFiles, TargetThatAViewerHoldsIsReportedAndStaysAsItIs) {
  ExpectHeldTargetStays([](std::string const& target, std::string& problem) {
    return OutputFile::Open(target, true, problem);
  });
}

TEST(WindowsFiles, ChangedCopyDoesNotReplaceAHeldTarget) {
  ExpectHeldTargetStays(OutputFile::OpenCopy);
}

TEST(WindowsFiles, NamesOfDevicesAreRefused) {
  test::TempDir directory;
  for (std::string const name : {"CON", "nul", "con.pdf", "COM1.pdf"}) {
    std::string problem;
    EXPECT_EQ(OutputFile::Open((directory / name).string(), true, problem), nullptr) << name;
    EXPECT_THAT(problem, HasSubstr("is the name of a device")) << name;
  }
  EXPECT_FALSE(IsDeviceName(directory / "console.pdf"));
  EXPECT_EQ(EntriesOf(directory.path()), 0);
}

TEST(WindowsFiles, NameOf300CharactersInEveryScriptIsWritten) {
  test::TempDir directory;
  fs::path const folder = directory / std::string(150, 'a') / std::string(150, 'b');
  fs::create_directories(folder);
  std::string const name = folder.string() + "\\" + Utf8(L"\u00E4\u0416\u6F22.pdf");
  std::string problem;
  auto const output = OutputFile::Open(name, false, problem);
  ASSERT_NE(output, nullptr) << problem;
  test::WriteAll(output->path(), BytesOf("new"));
  EXPECT_TRUE(output->Commit(problem)) << problem;
  EXPECT_EQ(test::ReadAll(folder / L"\u00E4\u0416\u6F22.pdf"), BytesOf("new"));
  // Nothing but that file is in the directory.
  EXPECT_TRUE(fs::remove(folder / L"\u00E4\u0416\u6F22.pdf"));
  EXPECT_TRUE(fs::remove(folder));
}

TEST(WindowsFiles, MissingDirectoryForTemporaryFilesIsNamedByItsVariable) {
  test::TempDir directory;
  test::EnvironmentValue const variable("TMP", (directory / "none").string());
  std::string problem;
  EXPECT_EQ(OutputFile::Temporary(problem), nullptr);
  EXPECT_THAT(problem, HasSubstr("(TMP names the directory for temporary files)"));
}

TEST(WindowsFiles, DirectoryThatTakesNoTemporaryFilesIsNamedByItsVariable) {
  test::EnvironmentValue const variable("TMP", test::kFolderThatTakesNoFiles);
  std::string problem;
  EXPECT_EQ(OutputFile::Temporary(problem), nullptr);
  EXPECT_THAT(problem, HasSubstr("(TMP names the directory for temporary files)"));
}

// A process that is interrupted has its output open, and has to remove it.
TEST(WindowsFiles, OpenFilesAreClosedSoThatTheirDirectoryCanBeRemoved) {
  test::TempDir directory;
  fs::path const inner = directory / "inner";
  fs::create_directory(inner);
  HANDLE const file = CreateFileW((inner / "a").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  CloseFilesIn(inner);
  std::error_code error;
  fs::remove_all(inner, error);
  EXPECT_FALSE(fs::exists(inner)) << error.message();
}

}  // namespace
}  // namespace sorrelin::tool
