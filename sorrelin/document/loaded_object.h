// An object's text in memory for the time of a look at it.
#ifndef SORRELIN_DOCUMENT_LOADED_OBJECT_H_
#define SORRELIN_DOCUMENT_LOADED_OBJECT_H_

#include <sorrelin/platform/block.h>
#include <sorrelin/platform/types.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <string_view>

namespace sorrelin {

// Takes a block that holds an object, null included, locks it, and frees it at the end.
class LoadedObject {
 public:
  explicit LoadedObject(HGLOBAL block)
      : block_(block), lock_(block), text_(WithoutLongTail(lock_.bytes())) {}

  // False if there is no object, or it is empty.
  explicit operator bool() const { return !text_.empty(); }
  std::span<BYTE> text() const { return text_; }
  // The text as characters, and those of it before the first NUL.
  std::string_view Chars() const {
    return {reinterpret_cast<char const*>(text_.data()), text_.size()};
  }
  std::string_view Front() const { return Chars().substr(0, Chars().find('\0')); }

  // Null if there is no object.
  BYTE* data() const { return text_.data(); }
  DWORD size() const { return static_cast<DWORD>(text_.size()); }

 private:
  // An object whose extent reaches far past the end of the file ends in blanks or NULs, and two
  // NULs. A piece of them is as good as all to a scan, which would spend its time there.
  static std::span<BYTE> WithoutLongTail(std::span<BYTE> text) {
    constexpr size_t kPieceBytes = 4096;
    if (text.size() < 3 * kPieceBytes) return text;
    size_t kept = text.size() - 2;
    while (kept >= 2 * kPieceBytes && IsBlank(text.subspan(kept - kPieceBytes, kPieceBytes))) {
      kept -= kPieceBytes;
    }
    return text.first(std::min(kept + kPieceBytes, text.size()));
  }
  static bool IsBlank(std::span<BYTE const> piece) {
    bool const begins = piece.front() == ' ' || piece.front() == 0;
    return begins && std::memcmp(piece.data(), piece.data() + 1, piece.size() - 1) == 0;
  }

  OwnedBlock block_;
  LockedBlock lock_;
  std::span<BYTE> text_;
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_LOADED_OBJECT_H_
