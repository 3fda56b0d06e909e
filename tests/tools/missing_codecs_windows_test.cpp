// sorrelin.exe where the files of its codecs are missing, or are none.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/temp_dir.h"
#include "tests/support/windows_program.h"

namespace test {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

constexpr char kGrey[] = "P2 2 1 255 10 200\n";

// Programs of the test find libraries in the system's folders and in that of the test.
class MissingCodecs : public ::testing::Test {
 protected:
  MissingCodecs() : path_(std::getenv("PATH")) {
    WritePicture("P1 8 2 0101010110101010\n");
    for (fs::path const folder : Folders()) {
      if (fs::exists(folder / "Rennick.dll")) rennick_ = folder / "Rennick.dll";
    }
    setenv("PATH", directory_.path().string().c_str(), 1);
  }
  ~MissingCodecs() override { setenv("PATH", path_.c_str(), 1); }

  void WritePicture(std::string const& picture) const {
    WriteAll(directory_ / "a.pnm", {picture.begin(), picture.end()});
  }

  void ExpectFailure(std::wstring const& compression, std::string const& library) const {
    WindowsProgram program(Make(compression));
    EXPECT_EQ(program.Wait(), 1u);
    EXPECT_THAT(program.Messages(), HasSubstr(library + " is missing or unusable: put it beside"));
    EXPECT_FALSE(fs::exists(directory_ / "a.pdf"));
  }

  std::vector<std::wstring> Make(std::wstring const& compression) const {
    return {L"make", (directory_ / "a.pdf").native(), (directory_ / "a.pnm").native(),
            L"--compression", compression};
  }

  TempDir directory_;
  fs::path rennick_;  // empty if the test's own surroundings have none

 private:
  std::vector<std::string> Folders() const {
    std::vector<std::string> folders;
    for (size_t at = 0, end = 0; end != std::string::npos; at = end + 1) {
      end = path_.find(';', at);
      folders.push_back(path_.substr(at, end - at));
    }
    return folders;
  }

  std::string path_;
};

TEST_F(MissingCodecs, AreNamedAndNoDocumentIsLeft) {
  ExpectFailure(L"g4", "Cadwick.dll");
  WritePicture(kGrey);
  ExpectFailure(L"jpeg", "Rennick.dll");
}

TEST_F(MissingCodecs, FileThatIsNoLibraryIsNamed) {
  WriteAll(directory_ / "Cadwick.dll", {'n', 'o', ' ', 'l', 'i', 'b', 'r', 'a', 'r', 'y'});
  ExpectFailure(L"g4", "Cadwick.dll");
}

TEST_F(MissingCodecs, LibraryWithoutTheFunctionsOfTheCodecIsNamed) {
  ASSERT_FALSE(rennick_.empty());
  fs::copy_file(rennick_, directory_ / "Cadwick.dll");
  ExpectFailure(L"g4", "Cadwick.dll");
}

TEST_F(MissingCodecs, AreNotNeededForFlate) {
  WindowsProgram program(Make(L"flate"));
  EXPECT_EQ(program.Wait(), 0u) << program.Messages();
  EXPECT_TRUE(fs::exists(directory_ / "a.pdf"));
}

TEST_F(MissingCodecs, OneThatIsThereIsUsedWithoutTheOther) {
  ASSERT_FALSE(rennick_.empty());
  fs::copy_file(rennick_, directory_ / "Rennick.dll");
  WritePicture(kGrey);
  WindowsProgram program(Make(L"jpeg"));
  EXPECT_EQ(program.Wait(), 0u) << program.Messages();
}

}  // namespace
}  // namespace test
