// The outcome of an operation, as every component reports it: success, a failure with its code, or
// a failure that leaves the session's last error as it was. The session's methods turn it into the
// last error and their result.
#ifndef SORRELIN_PLATFORM_STATUS_H_
#define SORRELIN_PLATFORM_STATUS_H_

#include <sorrelin/platform/codes.h>
#include <sorrelin/platform/types.h>

#include <cstdint>
#include <optional>
#include <utility>

namespace sorrelin {

class [[nodiscard]] Status {
 public:
  static constexpr Status Ok() { return Status(kOk); }
  // `code` is one of PDF_ERROR_*.
  static constexpr Status Failed(DWORD code) { return Status(kCoded | code); }
  // The last error stays.
  static constexpr Status Failed() { return Status(0); }
  // A success that leaves the code of something that failed on the way.
  static constexpr Status Noted(DWORD code) { return Status(kOk | kCoded | code); }

  constexpr bool ok() const { return (bits_ & kOk) != 0; }
  // What the last error becomes, if anything.
  constexpr std::optional<DWORD> code() const {
    return has_code() ? std::optional(static_cast<DWORD>(bits_)) : std::nullopt;
  }
  // This outcome, with the code of an earlier one if it has none.
  constexpr Status After(Status earlier) const {
    return has_code() ? *this : Status((bits_ & kOk) | (earlier.bits_ & ~kOk));
  }

 private:
  // One integer, so that an outcome is returned in a register: put together from members it slows
  // down the reading of each entry of a table.
  static constexpr uint64_t kOk = uint64_t{1} << 32;
  static constexpr uint64_t kCoded = uint64_t{1} << 33;

  constexpr explicit Status(uint64_t bits) : bits_(bits) {}
  constexpr bool has_code() const { return (bits_ & kCoded) != 0; }

  uint64_t bits_;  // the code in the low 32
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
