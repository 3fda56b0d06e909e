// An object's text in memory for the time of a look at it.
#ifndef SORRELIN_DOCUMENT_LOADED_OBJECT_H_
#define SORRELIN_DOCUMENT_LOADED_OBJECT_H_

#include <sorrelin/document/object_bytes.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/types.h>

#include <cstddef>
#include <span>
#include <string_view>
#include <utility>

namespace sorrelin {

// Takes an object's bytes, none included, locks them, and frees them at the end.
class LoadedObject {
 public:
  explicit LoadedObject(ObjectBytes object)
      : block_(std::move(object.block)),
        lock_(block_.get()),
        text_(WithoutLongTail(lock_.bytes(), object.held)) {}

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
  // An object whose extent reaches far past the end of the file ends in blanks or NULs. A piece of
  // them is as good as all to a scan, which would spend its time there.
  static std::span<BYTE> WithoutLongTail(std::span<BYTE> text, size_t held) {
    constexpr size_t kPieceBytes = 4096;
    return text.size() > held && text.size() - held > kPieceBytes ? text.first(held + kPieceBytes)
                                                                  : text;
  }

  OwnedBlock block_;
  LockedBlock lock_;
  std::span<BYTE> text_;
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_LOADED_OBJECT_H_
