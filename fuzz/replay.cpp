// Runs a fuzz target over files, without libFuzzer: replay FOLDER...
// An input that breaks the target ends the program; without any input it fails.
#include "fuzz/fuzz_input.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

bool Run(std::filesystem::path const& name) {
  std::ifstream file(name, std::ios::binary);
  std::vector<char> const bytes{std::istreambuf_iterator<char>(file), {}};
  // An exact block, so that the sanitizer sees every access past the input.
  fuzz::Copy input({reinterpret_cast<uint8_t const*>(bytes.data()), bytes.size()});
  std::fprintf(stderr, "%s\n", name.c_str());
  LLVMFuzzerTestOneInput(input.data(), input.size());
  return file.good() || file.eof();
}

}  // namespace

int main(int count, char** arguments) {
  int inputs = 0;
  for (int i = 1; i < count; ++i) {
    if (!std::filesystem::is_directory(arguments[i])) continue;
    for (auto const& entry : std::filesystem::directory_iterator(arguments[i])) {
      if (!Run(entry.path())) return EXIT_FAILURE;
      ++inputs;
    }
  }
  std::printf("%d inputs\n", inputs);
  return inputs != 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
