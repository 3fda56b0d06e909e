// Puts a mock in the place of a sibling library: a library that is loaded already under the
// sibling's file name is what a search by that name finds.
#ifndef TESTS_SUPPORT_PRELOADED_SIBLING_H_
#define TESTS_SUPPORT_PRELOADED_SIBLING_H_

#include <sorrelin/platform/module.h>
#include <sorrelin/platform/wide_string.h>

#include <stdexcept>
#include <string>

namespace test {

// For the life of this object. `State` is what the mock's entry point Mock() addresses.
template <typename State>
class PreloadedSibling {
 public:
  explicit PreloadedSibling(std::string const& path)
      : module_(LoadLibraryW(sorrelin::ToWide(path.c_str()).c_str())) {
    if (module_ == nullptr) throw std::runtime_error(path);
    auto const entry = reinterpret_cast<void (*)()>(GetProcAddress(module_, "Mock"));
    state_ = reinterpret_cast<State* (*)()>(entry)();
    *state_ = State{};
  }
  ~PreloadedSibling() { FreeLibrary(module_); }
  PreloadedSibling(PreloadedSibling const&) = delete;
  PreloadedSibling& operator=(PreloadedSibling const&) = delete;

  State* operator->() const { return state_; }

 private:
  HMODULE module_;
  State* state_;
};

}  // namespace test

#endif  // TESTS_SUPPORT_PRELOADED_SIBLING_H_
