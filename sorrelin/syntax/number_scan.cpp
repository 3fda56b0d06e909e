// The number scan.
#include <sorrelin/platform/process.h>
#include <sorrelin/syntax/decimal.h>
#include <sorrelin/syntax/number_scan.h>

#include <optional>

namespace sorrelin {
namespace {

constexpr uint64_t kNumberCharacters = 99;

}  // namespace

// Kept: positions count from the match, but the limit is the whole buffer's size; a number at the
// very end is read after a late match (the bytes past the end are NULs), and not after an early
// one.
NumberScan::Event NumberScan::Next() {
  std::optional<uint64_t> first;
  while (passed_ < buffer_.size) {
    uint64_t const at = start_ + passed_++;
    switch (rule_[buffer_[at]]) {
      case ByteRole::kNumeral:
        if (!first && armed_) first = at;
        armed_ = false;
        break;
      case ByteRole::kClosesArray:
        array_closed_ = true;
        [[fallthrough]];
      case ByteRole::kSeparates:
        armed_ = true;
        if (first) return Finish(*first, at - *first);
        break;
      case ByteRole::kEnds:
        armed_ = false;
        if (first) return Finish(*first, at - *first);
        break;
      case ByteRole::kDrops:
        armed_ = false;
        first.reset();
        break;
      case ByteRole::kStops:
        return Event::kStopped;
    }
  }
  return Event::kEnd;
}

NumberScan::Event NumberScan::Finish(uint64_t first, uint64_t length) {
  if (length > kNumberCharacters) EndProcess("a number in the document has 100 or more characters");
  std::string_view const text =
      buffer_.Chars().substr(static_cast<size_t>(first), static_cast<size_t>(length));
  if (text.front() == '.') return Event::kUnreadable;
  value_ = static_cast<DWORD>(DecimalValue(text));
  return Event::kNumber;
}

int ReadPair(NumberScan scan, DWORD* first, DWORD* second) {
  if (scan.Next() != NumberScan::Event::kNumber) return 0;
  *first = scan.value();
  return ReadSingle(scan, second);
}

int ReadSingle(NumberScan scan, DWORD* value) {
  if (scan.Next() != NumberScan::Event::kNumber) return 0;
  *value = scan.value();
  return 1;
}

}  // namespace sorrelin
