// An object's text, fetched and locked for the life of this object.
#ifndef SORRELIN_READER_LOADED_OBJECT_H_
#define SORRELIN_READER_LOADED_OBJECT_H_

#include <sorrelin/frame/session.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/types.h>

#include <string_view>
#include <utility>

namespace sorrelin {

class LoadedObject {
 public:
  LoadedObject(CCreatePDF& session, DWORD number) : block_(session.LoadObject(number)) {
    if (block_ != nullptr) data_ = static_cast<BYTE*>(GlobalLock(block_));
  }
  LoadedObject(LoadedObject&& other) noexcept
      : block_(std::exchange(other.block_, nullptr)), data_(std::exchange(other.data_, nullptr)) {}
  LoadedObject& operator=(LoadedObject&& other) noexcept {
    std::swap(block_, other.block_);
    std::swap(data_, other.data_);
    return *this;
  }
  ~LoadedObject() {
    if (data_ != nullptr) GlobalUnlock(block_);
    if (block_ != nullptr) GlobalFree(block_);
  }

  // False if there is no such object or its block is empty.
  explicit operator bool() const { return data_ != nullptr; }
  BYTE* data() const { return data_; }
  // What GetObjectSize gives, without another fetch.
  DWORD size() const { return data_ == nullptr ? 0 : static_cast<DWORD>(GlobalSize(block_)); }
  // The text up to its first NUL.
  std::string_view text() const {
    std::string_view const all(reinterpret_cast<char const*>(data_), size());
    return all.substr(0, all.find('\0'));
  }

 private:
  HGLOBAL block_;
  BYTE* data_ = nullptr;
};

// The number behind a key, direct or by reference.
inline bool ReadNumber(CCreatePDF& session, LoadedObject const& object, char const* key,
                       DWORD* value) {
  if (session.IsReference(object.data(), object.size(), key) == 0) {
    return session.GetValue(object.data(), object.size(), key, value) != 0;
  }
  DWORD number = 0;
  DWORD generation = 0;
  return session.GetValue(object.data(), object.size(), key, &number, &generation) != 0 &&
         session.GetValueFromReference(number, value) != 0;
}

}  // namespace sorrelin

#endif  // SORRELIN_READER_LOADED_OBJECT_H_
