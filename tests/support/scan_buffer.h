// A writable buffer of exactly the bytes given, as the scanner takes them: the sanitizer sees every
// access outside it.
#ifndef TESTS_SUPPORT_SCAN_BUFFER_H_
#define TESTS_SUPPORT_SCAN_BUFFER_H_

#include <sorrelin/platform/types.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

namespace test {

class ScanBuffer {
 public:
  explicit ScanBuffer(std::string_view text)
      : bytes_(new BYTE[text.size()]), size_(static_cast<DWORD>(text.size())) {
    std::copy(text.begin(), text.end(), bytes_.get());
  }

  BYTE* data() { return bytes_.get(); }
  DWORD size() const { return size_; }
  // The buffer as it is now.
  std::string Now() const { return {bytes_.get(), bytes_.get() + size_}; }

 private:
  std::unique_ptr<BYTE[]> bytes_;
  DWORD size_;
};

// `text` with a NUL for its last byte.
inline std::string Cut(std::string_view text) {
  std::string cut(text);
  cut.back() = '\0';
  return cut;
}

// A text with NUL bytes in it, from a literal.
template <size_t kSize>
std::string WithNuls(char const (&literal)[kSize]) {
  return {literal, kSize - 1};
}

}  // namespace test

#endif  // TESTS_SUPPORT_SCAN_BUFFER_H_
