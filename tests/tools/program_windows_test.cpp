// The program as programs and users of Windows start it: held and protected files, interrupts,
// names beyond Unicode.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"
#include "tests/support/windows_program.h"

namespace test {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class ProgramOnWindows : public ::testing::Test {
 protected:
  ProgramOnWindows() {
    std::string const picture = "P6\n2 1\n255\nabcdef";
    WriteAll(directory_ / "page.ppm", {picture.begin(), picture.end()});
  }

  std::wstring Name(std::wstring const& name) const { return (directory_.path() / name).native(); }
  std::wstring Picture() const { return Name(L"page.ppm"); }
  std::wstring Target() const { return Name(L"a.pdf"); }

  void MakeTarget() const {
    ASSERT_EQ(WindowsProgram({L"make", Target(), Picture(), L"--quiet"}).Wait(), 0u);
  }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (auto const& entry : fs::directory_iterator(directory_.path())) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  // Leaves the target as it is, whose bytes are `old`, and nothing else, and says `reason`.
  void ExpectRefused(std::vector<std::wstring> const& arguments, std::vector<BYTE> const& old,
                     std::string const& reason) const {
    WindowsProgram program(arguments);
    EXPECT_EQ(program.Wait(), 1u);
    EXPECT_THAT(program.Messages(), HasSubstr(reason));
    EXPECT_EQ(ReadAll(Target()), old);
    EXPECT_THAT(Names(), ElementsAre("a.pdf", "page.ppm"));
  }

  TempDir directory_;
};

std::vector<std::vector<std::wstring>> ChangesOf(std::wstring const& target,
                                                 std::wstring const& picture) {
  return {{L"make", target, picture, L"--force", L"--quiet"},
          {L"append", target, picture, L"--quiet"},
          {L"append", target, picture, L"--quiet", L"--in-place"}};
}

// A viewer that lets others do what `share` says.
class Viewer {
 public:
  Viewer(std::wstring const& name, DWORD share)
      : file_(CreateFileW(name.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING,
                          FILE_ATTRIBUTE_NORMAL, nullptr)) {
    EXPECT_NE(file_, INVALID_HANDLE_VALUE);
  }
  ~Viewer() { CloseHandle(file_); }
  Viewer(Viewer const&) = delete;
  Viewer& operator=(Viewer const&) = delete;

 private:
  HANDLE file_;
};

class ViewedTarget : public ProgramOnWindows, public ::testing::WithParamInterface<DWORD> {};

INSTANTIATE_TEST_SUITE_P(Sharing, ViewedTarget,
                         ::testing::Values(0, FILE_SHARE_READ, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE));

TEST_P(ViewedTarget, StaysAsItIsAndIsNamedUnlessTheViewerLetsItChange) {
  MakeTarget();
  for (auto const& change : ChangesOf(Target(), Picture())) {
    SCOPED_TRACE(fs::path(change.back()));
    auto const old = ReadAll(Target());
    auto viewer = std::make_unique<Viewer>(Target(), GetParam());
    WindowsProgram program(change);
    DWORD const code = program.Wait();
    viewer.reset();
    bool const may_grow = change.back() == L"--in-place" && (GetParam() & FILE_SHARE_WRITE) != 0;
    EXPECT_EQ(code, may_grow ? 0u : 1u) << program.Messages();
    if (!may_grow) {
      EXPECT_THAT(program.Messages(), HasSubstr("held by another program"));
      EXPECT_EQ(ReadAll(Target()), old);
    }
    EXPECT_EQ(WindowsProgram({L"count", Target()}).Wait(), 0u);
    EXPECT_THAT(Names(), ElementsAre("a.pdf", "page.ppm"));
  }
}

TEST_F(ProgramOnWindows, ReadOnlyTargetStaysAsItIs) {
  MakeTarget();
  auto const old = ReadAll(Target());
  SetFileAttributesW(Target().c_str(), FILE_ATTRIBUTE_READONLY);
  for (auto const& change : ChangesOf(Target(), Picture())) {
    ExpectRefused(change, old, "make it writable");
  }
  SetFileAttributesW(Target().c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(ProgramOnWindows, HalfASurrogatePairInANameIsAMissingFile) {
  MakeTarget();
  ExpectRefused({L"append", Target(), Name(L"\xD83D.png")}, ReadAll(Target()), "(check the name)");
}

TEST_F(ProgramOnWindows, DevicesAreNeitherPicturesNorDocuments) {
  MakeTarget();
  auto const old = ReadAll(Target());
  ExpectRefused({L"append", Target(), L"CON"}, old, "CON: is the name of a device");
  ExpectRefused({L"count", L"con"}, old, "con: is the name of a device");
  ExpectRefused({L"info", L"NUL"}, old, "NUL: is the name of a device");
}

TEST_F(ProgramOnWindows, PatternsAreExpandedInNamesAndNotInOptions) {
  CopyFileW(Picture().c_str(), Name(L"page2.ppm").c_str(), TRUE);
  WindowsProgram make({L"make", Target(), Name(L"*.PPM"), L"--quiet", L"--title", L"*"});
  EXPECT_EQ(make.Wait(), 0u) << make.Messages();
  WindowsProgram count({L"count", Name(L"?.pdf")});
  EXPECT_EQ(count.Wait(), 0u);
  EXPECT_EQ(count.Output(), "2\n");
  auto const bytes = ReadAll(Target());
  EXPECT_THAT(std::string(bytes.begin(), bytes.end()), HasSubstr("/Title"));
}

TEST_F(ProgramOnWindows, PatternsInListsOfBatchAreExpandedAnewByEachRun) {
  std::string const folder = directory_.path().generic_string();
  std::string const line =
      R"({"output": ")" + folder + R"(/a.pdf", "pictures": [")" + folder + R"(/*.ppm"]})" + "\n";
  WriteAll(directory_ / "list.jsonl", {line.begin(), line.end()});
  for (int const pictures : {2, 3}) {
    std::wstring const last = L"page" + std::to_wstring(pictures) + L".ppm";
    CopyFileW(Picture().c_str(), Name(last).c_str(), TRUE);
    WindowsProgram batch({L"batch", Name(L"list.jsonl"), L"--quiet"});
    EXPECT_EQ(batch.Wait(), 0u) << batch.Messages();
    WindowsProgram count({L"count", Target()});
    EXPECT_EQ(count.Wait(), 0u);
    EXPECT_EQ(count.Output(), std::to_string(pictures) + "\n");
  }
}

// A console, which interrupts reach a process by.
class InterruptedProgram : public ProgramOnWindows {
 protected:
  static void SetUpTestSuite() { OpenConsoleForInterrupts(); }

  // A run that has read `arguments`, waits for a picture on standard input and has a file of its
  // own in the directory, and the interrupt key then.
  DWORD Interrupted(std::vector<std::wstring> const& arguments) const {
    size_t const names = Names().size();
    WindowsProgram program(arguments);
    for (int i = 0; i < 1000 && Names().size() == names && !program.HasEnded(); ++i) Sleep(10);
    EXPECT_EQ(Names().size(), names + 1) << program.Messages();
    EXPECT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0)) << GetLastError();
    return program.Wait();
  }
};

TEST_F(InterruptedProgram, LeavesNoNewDocument) {
  EXPECT_EQ(Interrupted({L"make", Target(), L"-"}), kExitInterrupted);
  EXPECT_THAT(Names(), ElementsAre("page.ppm"));
}

TEST_F(InterruptedProgram, LeavesTheOldDocument) {
  MakeTarget();
  auto const old = ReadAll(Target());
  EXPECT_EQ(Interrupted({L"append", Target(), L"-"}), kExitInterrupted);
  EXPECT_EQ(Interrupted({L"make", Target(), L"-", L"--force"}), kExitInterrupted);
  EXPECT_EQ(ReadAll(Target()), old);
  EXPECT_THAT(Names(), ElementsAre("a.pdf", "page.ppm"));
}

}  // namespace
}  // namespace test
