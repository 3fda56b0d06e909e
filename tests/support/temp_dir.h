// A directory of its own for each test, removed with everything in it.
#ifndef TESTS_SUPPORT_TEMP_DIR_H_
#define TESTS_SUPPORT_TEMP_DIR_H_

#include <sorrelin/platform/types.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace test {

class TempDir {
 public:
  TempDir() {
    std::string name = (std::filesystem::temp_directory_path() / "sorrelin-test-XXXXXX").string();
    path_ = ::mkdtemp(name.data());
  }
  ~TempDir() { std::filesystem::remove_all(path_); }
  TempDir(TempDir const&) = delete;
  TempDir& operator=(TempDir const&) = delete;

  std::filesystem::path const& path() const { return path_; }
  std::filesystem::path operator/(std::string const& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

inline std::vector<BYTE> ReadAll(std::filesystem::path const& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void WriteAll(std::filesystem::path const& path, std::vector<BYTE> const& bytes) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<char const*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

}  // namespace test

#endif  // TESTS_SUPPORT_TEMP_DIR_H_
