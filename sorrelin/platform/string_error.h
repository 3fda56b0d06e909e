// What the string operations of the reader throw: the one exception that can leave the library.
#ifndef SORRELIN_PLATFORM_STRING_ERROR_H_
#define SORRELIN_PLATFORM_STRING_ERROR_H_

#include <sorrelin/platform/export.h>
#include <sorrelin/platform/types.h>

#include <stdexcept>

// Thrown while a document is opened or an object is fetched; the library does not catch it. The
// session can be closed and released afterwards.
class SORRELIN_EXPORT SorrelinStringError : public std::runtime_error {
 public:
  static constexpr DWORD kInvalidArgument = 0x80070057;  // a bad format or text
  static constexpr DWORD kFailed = 0x80004005;           // memory is short

  // `code` is one of the two.
  explicit SorrelinStringError(DWORD code)
      : std::runtime_error(code == kInvalidArgument ? "string operation: invalid argument"
                                                    : "string operation: failed"),
        code_(code) {}

  // kInvalidArgument or kFailed.
  DWORD code() const noexcept { return code_; }

 private:
  DWORD code_;
};

#endif  // SORRELIN_PLATFORM_STRING_ERROR_H_
