// Where the engine looks for its trained data on Windows.
#include <gtest/gtest.h>
#include <siblings/averna/averna.h>
#include <tests/support/dib.h>
#include <windows.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;

test::Block BlankDib() {
  test::DibSpec spec;
  spec.width = spec.height = 50;
  spec.bits = 8;
  return test::MakeDib(spec, [](LONG, LONG) { return 255u; });
}

// A folder of each test's own, which its next run empties: the library stays loaded and in it.
class AvernaData : public testing::Test {
 protected:
  AvernaData() {
    fs::remove_all(folder_);
    fs::create_directories(folder_);
    char const* const prefix = std::getenv("TESSDATA_PREFIX");
    installed_ = prefix != nullptr ? prefix : "";
    unsetenv("TESSDATA_PREFIX");
  }
  ~AvernaData() override { setenv("TESSDATA_PREFIX", installed_.c_str(), 1); }

  void CopyDataTo(fs::path const& folder) const {
    fs::create_directories(folder);
    fs::copy_file(fs::path(installed_) / "eng.traineddata", folder / "eng.traineddata");
  }

  // What a copy of the library in a folder says to a blank page.
  static int AskIn(fs::path const& folder) {
    fs::create_directories(folder);
    fs::copy_file(AVERNA, folder / "Averna.dll");
    HMODULE const library = LoadLibraryW((folder / "Averna.dll").c_str());
    auto const recognize = reinterpret_cast<decltype(&OCRDIBExW)>(
        reinterpret_cast<void (*)()>(GetProcAddress(library, "OCRDIBExW")));
    if (recognize == nullptr) return -1;
    WCHAR* text = nullptr;
    return recognize(BlankDib(), &text, 0, 0, 1, 0);
  }

  fs::path const folder_ =
      fs::path(DATA_FOLDER) / testing::UnitTest::GetInstance()->current_test_info()->name();
  std::string installed_;
};

TEST_F(AvernaData, AreInTheFolderTessdataBesideTheLibrary) {
  CopyDataTo(folder_ / "tessdata");
  EXPECT_EQ(AskIn(folder_), AVERNA_OK);
}

// No code page has both letters.
TEST_F(AvernaData, AreFoundInAFolderWithLettersOfNoCodePage) {
  fs::path const folder = folder_ / L"\u00fc\u6587";
  CopyDataTo(folder / "tessdata");
  EXPECT_EQ(AskIn(folder), AVERNA_OK);
}

TEST_F(AvernaData, AreWhereTheVariableSays) {
  CopyDataTo(folder_ / "elsewhere");
  setenv("TESSDATA_PREFIX", (folder_ / "elsewhere").string().c_str(), 1);
  EXPECT_EQ(AskIn(folder_), AVERNA_OK);
}

TEST_F(AvernaData, OfTheCurrentFolderAreNotTaken) {
  CopyDataTo(folder_);
  fs::path const old = fs::current_path();
  fs::current_path(folder_);
  EXPECT_EQ(AskIn(folder_ / "library"), AVERNA_NO_LANGUAGE);
  fs::current_path(old);
}

}  // namespace
