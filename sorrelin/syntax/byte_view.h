// The bytes of a buffer that is scanned: bytes outside read as 0, so that no scan, whatever
// limit it keeps, reads memory that is not the buffer's.
#ifndef SORRELIN_SYNTAX_BYTE_VIEW_H_
#define SORRELIN_SYNTAX_BYTE_VIEW_H_

#include <sorrelin/platform/types.h>

#include <cstdint>
#include <string_view>

namespace sorrelin {

struct ByteView {
  BYTE const* data = nullptr;
  uint64_t size = 0;

  BYTE operator[](uint64_t at) const { return at < size ? data[at] : BYTE{0}; }

  // The bytes from `at` on; empty past the end.
  ByteView From(uint64_t at) const {
    return at < size ? ByteView{data + at, size - at} : ByteView{};
  }

  // All bytes as characters.
  std::string_view Chars() const {
    return {reinterpret_cast<char const*>(data), static_cast<size_t>(size)};
  }

  // The bytes before the first NUL, or all of them.
  std::string_view Text() const {
    std::string_view const chars = Chars();
    return chars.substr(0, chars.find('\0'));
  }
};

inline ByteView ViewOf(std::string_view text) {
  return {reinterpret_cast<BYTE const*>(text.data()), text.size()};
}

}  // namespace sorrelin

#endif  // SORRELIN_SYNTAX_BYTE_VIEW_H_
