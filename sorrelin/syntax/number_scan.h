// The one loop that reads decimal numbers after a key, and the rules in which its users differ.
//
// A number is a run of digits with a separator before and after. Digits that touch anything else
// start no number ("/Im0"), so the scan passes them and takes the next clean number: "-5 7" is 7.
#ifndef SORRELIN_SYNTAX_NUMBER_SCAN_H_
#define SORRELIN_SYNTAX_NUMBER_SCAN_H_

#include <sorrelin/platform/types.h>
#include <sorrelin/syntax/byte_view.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace sorrelin {

// What a byte does to the scan.
enum class ByteRole : BYTE {
  kDrops,        // drops an open number; digits that touch it start none
  kEnds,         // ends an open number; digits that touch it start none
  kNumeral,      // starts a number after a separator, or belongs to the open one
  kSeparates,    // ends an open number, and a number may start after it
  kClosesArray,  // separates, and the array that is read ends
  kStops,        // ends the scan, open number or not
};

using NumberRule = std::array<ByteRole, 256>;

// `other` is the role of the bytes that no argument names, `bracket` that of "]".
constexpr NumberRule MakeNumberRule(std::string_view separators, std::string_view numerals,
                                    ByteRole bracket, ByteRole other) {
  NumberRule rule{};
  rule.fill(other);
  rule[']'] = bracket;
  for (char const c : numerals) rule[static_cast<BYTE>(c)] = ByteRole::kNumeral;
  for (char const c : separators) rule[static_cast<BYTE>(c)] = ByteRole::kSeparates;
  return rule;
}

inline constexpr std::string_view kDigits = "0123456789";

// Two numbers after a key; also two numbers after the first name.
inline constexpr NumberRule kPairRule =
    MakeNumberRule("\r\n [", kDigits, ByteRole::kDrops, ByteRole::kDrops);
// One number after a key.
inline constexpr NumberRule kSingleRule =
    MakeNumberRule({"\r\n [\0/>", 7}, kDigits, ByteRole::kDrops, ByteRole::kDrops);
// The first two numbers of an array.
inline constexpr NumberRule kArrayPairRule =
    MakeNumberRule("\r\n [", kDigits, ByteRole::kSeparates, ByteRole::kDrops);
// All numbers of an array, of which only the part before "." counts.
inline constexpr NumberRule kArrayRule =
    MakeNumberRule("\r\n [", "0123456789.", ByteRole::kClosesArray, ByteRole::kDrops);
// Two numbers, and one, as the cross-reference code reads them.
inline constexpr NumberRule kXrefPairRule =
    MakeNumberRule("\r\n ", kDigits, ByteRole::kEnds, ByteRole::kEnds);
inline constexpr NumberRule kXrefSingleRule =
    MakeNumberRule({"\r\n \0/", 5}, kDigits, ByteRole::kEnds, ByteRole::kEnds);
// The references of a page tree node.
inline constexpr NumberRule kKidsRule =
    MakeNumberRule("\r\n [", kDigits, ByteRole::kStops, ByteRole::kDrops);

class NumberScan {
 public:
  enum class Event {
    kNumber,      // value() is the next number
    kUnreadable,  // a number's text begins with "."
    kStopped,     // a byte that stops the scan
    kEnd,         // as many bytes as the buffer has were passed
  };

  // Scans from offset `start`. `rule` and the buffer outlive the scan.
  NumberScan(ByteView buffer, uint64_t start, NumberRule const& rule)
      : buffer_(buffer), start_(start), rule_(rule) {}

  // A number of 100 or more characters ends the process.
  Event Next();

  DWORD value() const { return value_; }
  bool array_closed() const { return array_closed_; }

 private:
  Event Finish(uint64_t first, uint64_t length);

  ByteView buffer_;
  uint64_t start_;
  NumberRule const& rule_;
  uint64_t passed_ = 0;  // bytes scanned, counted from start_
  bool armed_ = true;    // a number may begin here
  bool array_closed_ = false;
  DWORD value_ = 0;
};

// The next two numbers, or one. The first of two is stored even if there is no second. 1 or 0.
int ReadPair(NumberScan scan, DWORD* first, DWORD* second);
int ReadSingle(NumberScan scan, DWORD* value);

}  // namespace sorrelin

#endif  // SORRELIN_SYNTAX_NUMBER_SCAN_H_
