// What the POSIX sources share: errno as a system error number, names as UTF-8 paths, and the guard
// that keeps exceptions inside C functions. Not installed.
#ifndef SORRELIN_PLATFORM_POSIX_SUPPORT_H_
#define SORRELIN_PLATFORM_POSIX_SUPPORT_H_

#include <sorrelin/platform/error.h>
#include <sorrelin/platform/types.h>

#include <new>
#include <optional>
#include <string>
#include <string_view>

namespace sorrelin {

// The system error number for an errno value; ERROR_GEN_FAILURE if it has none of its own.
DWORD ErrorOfErrno(int error);

// UTF-8 of a name, or nullopt if it holds a lone surrogate: no file has such a name.
std::optional<std::string> Utf8Path(std::u16string_view name);

// UTF-16 of a path, or nullopt if it is not UTF-8.
std::optional<std::u16string> WidePath(std::string_view path);

// A value that destructors which run at exit may still use. It needs no memory of its own.
template <typename Value>
class NeverDestroyed {
 public:
  NeverDestroyed() { new (storage_) Value; }
  NeverDestroyed(NeverDestroyed const&) = delete;
  NeverDestroyed& operator=(NeverDestroyed const&) = delete;
  Value& value() { return *std::launder(reinterpret_cast<Value*>(storage_)); }

 private:
  alignas(Value) unsigned char storage_[sizeof(Value)];
};

// Sets the system error and returns `result`.
template <typename Result>
Result Fail(DWORD error, Result result) {
  SetLastError(error);
  return result;
}

// The result of `work`, or `failure` with ERROR_NOT_ENOUGH_MEMORY: no exception may cross a C
// function.
template <typename Result, typename Work>
Result Guarded(Result failure, Work work) {
  try {
    return work();
  } catch (std::bad_alloc const&) {
    return Fail(ERROR_NOT_ENOUGH_MEMORY, failure);
  }
}

}  // namespace sorrelin

#endif  // SORRELIN_PLATFORM_POSIX_SUPPORT_H_
