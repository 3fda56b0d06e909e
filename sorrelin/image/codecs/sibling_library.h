// Finding a sibling library and its entry points. A sibling is loaded for the length of one call.
#ifndef SORRELIN_IMAGE_CODECS_SIBLING_LIBRARY_H_
#define SORRELIN_IMAGE_CODECS_SIBLING_LIBRARY_H_

#include <sorrelin/image/codecs/sibling.h>
#include <sorrelin/platform/module.h>
#include <sorrelin/platform/types.h>

namespace sorrelin {

// Loads the library `name` from beside the module, or else as the system searches it. Null when
// neither is found. Release it with FreeLibrary.
HMODULE LoadSibling(WCHAR const* name);

// An entry point of a loaded library, or null.
template <typename Function>
Function EntryPoint(HMODULE module, char const* name) {
  // By way of the one type that every function type may be cast from.
  return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

class SiblingLibrary {
 public:
  // A null name loads nothing.
  explicit SiblingLibrary(WCHAR const* name)
      : module_(name != nullptr ? LoadSibling(name) : nullptr) {}
  ~SiblingLibrary() { Free(); }
  SiblingLibrary(SiblingLibrary const&) = delete;
  SiblingLibrary& operator=(SiblingLibrary const&) = delete;

  bool IsLoaded() const { return module_ != nullptr; }
  // The entry point `name`, or null.
  template <typename Function>
  Function Entry(char const* name) const {
    return EntryPoint<Function>(module_, name);
  }
  void Free() {
    if (module_ != nullptr) FreeLibrary(module_);
    module_ = nullptr;
  }

 private:
  HMODULE module_;
};

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_CODECS_SIBLING_LIBRARY_H_
