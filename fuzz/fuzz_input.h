// What a fuzz target takes out of its input.
#ifndef FUZZ_FUZZ_INPUT_H_
#define FUZZ_FUZZ_INPUT_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>
#include <string_view>

// The name by which libFuzzer, and replay.cpp, call a target.
extern "C" int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size);

namespace fuzz {

using Data = std::span<uint8_t const>;

// A finding, where the sanitizers see none.
inline void Require(bool holds, char const* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

inline std::string_view TextOf(Data data) {
  return {reinterpret_cast<char const*>(data.data()), data.size()};
}

// The front of an input taken off piece by piece; what is missing reads as 0.
class Cursor {
 public:
  explicit Cursor(Data data) : data_(data) {}

  uint8_t Byte() {
    if (data_.empty()) return 0;
    uint8_t const byte = data_.front();
    data_ = data_.subspan(1);
    return byte;
  }
  unsigned Word() {
    unsigned const low = Byte();
    return low | static_cast<unsigned>(Byte()) << 8;
  }
  // Up to the next line feed, which is passed. NUL bytes end the result, as in a C string.
  std::string Line() {
    std::string_view const text = TextOf(data_);
    size_t const end = std::min(text.find('\n'), text.size());
    data_ = data_.subspan(std::min(end + 1, text.size()));
    return std::string(text.substr(0, end)).c_str();
  }
  Data Rest() const { return data_; }

 private:
  Data data_;
};

// A number of 100 characters ends the process, which is no finding. This test rejects an
// input that holds one openly; end_process.cpp is for those that hide it.
inline bool HoldsEndlessNumber(Data data) {
  constexpr int kEndless = 100;
  int run = 0;
  for (uint8_t const byte : data) {
    run = (byte >= '0' && byte <= '9') || byte == '.' ? run + 1 : 0;
    if (run == kEndless) return true;
  }
  return false;
}

// A writable copy of exactly the bytes given: the sanitizer sees every access outside it.
class Copy {
 public:
  explicit Copy(Data data) : bytes_(new uint8_t[data.size()]), size_(data.size()) {
    std::copy(data.begin(), data.end(), bytes_.get());
  }
  uint8_t* data() { return bytes_.get(); }
  uint32_t size() const { return static_cast<uint32_t>(size_); }

 private:
  std::unique_ptr<uint8_t[]> bytes_;
  size_t size_;
};

}  // namespace fuzz

#endif  // FUZZ_FUZZ_INPUT_H_
