// The outcome of an operation, as every component reports it: success, a failure with its code, or
// a failure that leaves the session's last error as it was. The session's methods turn it into the
// last error and their result.
#ifndef SORRELIN_PLATFORM_STATUS_H_
#define SORRELIN_PLATFORM_STATUS_H_

#include <sorrelin/platform/codes.h>
#include <sorrelin/platform/types.h>

#include <optional>
#include <utility>

namespace sorrelin {

class [[nodiscard]] Status {
 public:
  static constexpr Status Ok() { return Status(true, std::nullopt); }
  // `code` is one of PDF_ERROR_*.
  static constexpr Status Failed(DWORD code) { return Status(false, code); }
  // The last error stays.
  static constexpr Status Failed() { return Status(false, std::nullopt); }
  // A success that leaves the code of something that failed on the way.
  static constexpr Status Noted(DWORD code) { return Status(true, code); }

  constexpr bool ok() const { return ok_; }
  // What the last error becomes, if anything.
  constexpr std::optional<DWORD> code() const { return code_; }
  // This outcome, with the code of an earlier one if it has none.
  constexpr Status After(Status earlier) const {
    return Status(ok_, code_ ? code_ : earlier.code_);
  }

 private:
  constexpr Status(bool ok, std::optional<DWORD> code) : ok_(ok), code_(code) {}

  bool ok_;
  std::optional<DWORD> code_;
};

// A value, or the status of the failure in its place. An operation that goes on after a failure
// gives both.
template <typename T>
class [[nodiscard]] Result {
 public:
  Result(T value) : value_(std::move(value)), status_(Status::Ok()) {}  // NOLINT: a value succeeds
  Result(Status status) : status_(status) {}                            // NOLINT: a failure fails
  Result(T value, Status status) : value_(std::move(value)), status_(status) {}

  constexpr bool ok() const { return status_.ok(); }
  constexpr Status status() const { return status_; }
  // T() after a failure that left no value.
  T& value() { return value_; }
  T const& value() const { return value_; }

 private:
  T value_{};
  Status status_;
};

}  // namespace sorrelin

#endif  // SORRELIN_PLATFORM_STATUS_H_
