// An object's text in memory for the time of a look at it.
#ifndef SORRELIN_DOCUMENT_LOADED_OBJECT_H_
#define SORRELIN_DOCUMENT_LOADED_OBJECT_H_

#include <sorrelin/platform/block.h>
#include <sorrelin/platform/types.h>

#include <span>
#include <string_view>

namespace sorrelin {

// Takes a block that holds an object, null included, locks it, and frees it at the end.
class LoadedObject {
 public:
  explicit LoadedObject(HGLOBAL block) : block_(block), lock_(block), text_(lock_.bytes()) {}

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
  OwnedBlock block_;
  LockedBlock lock_;
  std::span<BYTE> text_;
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_LOADED_OBJECT_H_
