// Where a sibling library is looked for.
#include <gtest/gtest.h>
#include <sorrelin/image/codecs/sibling_library.h>
#include <sorrelin/platform/wide_string.h>

#include <filesystem>
#include <string>

#include "tests/support/environment.h"

namespace sorrelin {
namespace {

std::filesystem::path BesideTheProgram() { return test::ProgramPath().parent_path(); }

std::filesystem::path ModulePath(HMODULE module) {
  WCHAR path[MAX_PATH] = {};
  GetModuleFileNameW(module, path, MAX_PATH);
  return path;
}

// A copy of a mock beside the host program, removed afterwards.
class CopyBesideTheProgram {
 public:
  explicit CopyBesideTheProgram(std::string const& name) : path_(BesideTheProgram() / name) {
    std::filesystem::copy_file(
        std::filesystem::path(MOCKS_DIR) / "full" / test::LibraryFile("cadwick"), path_,
        std::filesystem::copy_options::overwrite_existing);
  }
  ~CopyBesideTheProgram() { std::filesystem::remove(path_); }

 private:
  std::filesystem::path path_;
};

TEST(SiblingLibrary, IsFoundBesideTheHostProgramByItsWindowsName) {
  std::string const file = test::LibraryFile("sibling-beside");
  CopyBesideTheProgram const copy(file);
  HMODULE const module = LoadSibling(SORRELIN_TEXT("Sibling-Beside.dll"));
  ASSERT_NE(module, nullptr);
  EXPECT_TRUE(std::filesystem::equivalent(ModulePath(module), BesideTheProgram() / file));
  FreeLibrary(module);
}

TEST(SiblingLibrary, IsElseFoundOnTheSystemsSearchPath) {
  HMODULE const module = LoadSibling(ToWide(test::kSystemLibrary).c_str());
  ASSERT_NE(module, nullptr);
  EXPECT_NE(GetProcAddress(module, test::kSystemEntryPoint), nullptr);
  FreeLibrary(module);
}

TEST(SiblingLibrary, EmptyAndUnknownNamesFail) {
  EXPECT_EQ(LoadSibling(SORRELIN_TEXT("")), nullptr);
  EXPECT_EQ(LoadSibling(SORRELIN_TEXT("nowhere.dll")), nullptr);
  EXPECT_FALSE(SiblingLibrary(nullptr).IsLoaded());
}

// Kept: the part of the name after the folder is cut to half the room left in 260 characters.
TEST(SiblingLibrary, LongNameIsNotFoundBesideTheHostProgram) {
  size_t const folder = BesideTheProgram().string().size() + 1;
  ASSERT_LT(folder, 200u);
  size_t const half = (MAX_PATH - folder) / 2;
  for (bool const fits : {true, false}) {
    size_t const length = fits ? half - 1 : half;  // without its terminator
    std::string const name = std::string(length - 3, 'x') + ".so";
    CopyBesideTheProgram const copy(name);
    HMODULE const module = LoadSibling(ToWide(name.c_str()).c_str());
    EXPECT_EQ(module != nullptr, fits) << length;
    if (module != nullptr) FreeLibrary(module);
  }
}

TEST(SiblingLibrary, EndlessNameFailsWithoutHarm) {
  WideString const endless(100000, WCHAR{'x'});
  EXPECT_EQ(LoadSibling(endless.c_str()), nullptr);
}

TEST(SiblingLibrary, MissingEntryPointIsNull) {
  SiblingLibrary const library(ToWide(test::kSystemLibrary).c_str());
  EXPECT_EQ(library.Entry<mOpenFunction>("mOpen"), nullptr);
}

}  // namespace
}  // namespace sorrelin
