// The code words of Group 4 coding, written out once, and the tables for both directions that are
// made from them at compile time.
//
// Run lengths have the codes of ITU-T T.4: one terminating code (0..63 pixels), with a make-up code
// (a multiple of 64) before it from 64 pixels on, and as many codes for 2,560 as it takes before
// both. Modes have the codes of ITU-T T.6. Codes are sent with their leftmost digit first.
#ifndef SIBLINGS_CADWICK_GROUP4_TABLES_H_
#define SIBLINGS_CADWICK_GROUP4_TABLES_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string_view>

namespace sorrelin::cadwick {

// T.4, Table 2: terminating codes for 0 to 63 pixels.
inline constexpr std::array<std::string_view, 64> kWhiteTerminating = {
    "00110101", "000111",   "0111",     "1000",     "1011",     "1100",     "1110",     "1111",
    "10011",    "10100",    "00111",    "01000",    "001000",   "000011",   "110100",   "110101",
    "101010",   "101011",   "0100111",  "0001100",  "0001000",  "0010111",  "0000011",  "0000100",
    "0101000",  "0101011",  "0010011",  "0100100",  "0011000",  "00000010", "00000011", "00011010",
    "00011011", "00010010", "00010011", "00010100", "00010101", "00010110", "00010111", "00101000",
    "00101001", "00101010", "00101011", "00101100", "00101101", "00000100", "00000101", "00001010",
    "00001011", "01010010", "01010011", "01010100", "01010101", "00100100", "00100101", "01011000",
    "01011001", "01011010", "01011011", "01001010", "01001011", "00110010", "00110011", "00110100"};

inline constexpr std::array<std::string_view, 64> kBlackTerminating = {
    "0000110111",   "010",          "11",           "10",           "011",          "0011",
    "0010",         "00011",        "000101",       "000100",       "0000100",      "0000101",
    "0000111",      "00000100",     "00000111",     "000011000",    "0000010111",   "0000011000",
    "0000001000",   "00001100111",  "00001101000",  "00001101100",  "00000110111",  "00000101000",
    "00000010111",  "00000011000",  "000011001010", "000011001011", "000011001100", "000011001101",
    "000001101000", "000001101001", "000001101010", "000001101011", "000011010010", "000011010011",
    "000011010100", "000011010101", "000011010110", "000011010111", "000001101100", "000001101101",
    "000011011010", "000011011011", "000001010100", "000001010101", "000001010110", "000001010111",
    "000001100100", "000001100101", "000001010010", "000001010011", "000000100100", "000000110111",
    "000000111000", "000000100111", "000000101000", "000001011000", "000001011001", "000000101011",
    "000000101100", "000001011010", "000001100110", "000001100111"};

// T.4, Table 3a: make-up codes for 64, 128, ... 1728 pixels.
inline constexpr std::array<std::string_view, 27> kWhiteMakeUp = {
    "11011",     "10010",     "010111",    "0110111",   "00110110",  "00110111",  "01100100",
    "01100101",  "01101000",  "01100111",  "011001100", "011001101", "011010010", "011010011",
    "011010100", "011010101", "011010110", "011010111", "011011000", "011011001", "011011010",
    "011011011", "010011000", "010011001", "010011010", "011000",    "010011011"};

inline constexpr std::array<std::string_view, 27> kBlackMakeUp = {
    "0000001111",    "000011001000",  "000011001001",  "000001011011",  "000000110011",
    "000000110100",  "000000110101",  "0000001101100", "0000001101101", "0000001001010",
    "0000001001011", "0000001001100", "0000001001101", "0000001110010", "0000001110011",
    "0000001110100", "0000001110101", "0000001110110", "0000001110111", "0000001010010",
    "0000001010011", "0000001010100", "0000001010101", "0000001011010", "0000001011011",
    "0000001100100", "0000001100101"};

// T.4, Table 3b: make-up codes of both colours for 1792, 1856, ... 2560 pixels.
inline constexpr std::array<std::string_view, 13> kCommonMakeUp = {
    "00000001000",  "00000001100",  "00000001101",  "000000010010", "000000010011",
    "000000010100", "000000010101", "000000010110", "000000010111", "000000011100",
    "000000011101", "000000011110", "000000011111"};

// T.6, Table 1: the modes. The vertical ones are in the order of a1 - b1, from -3 (VL3) to 3
// (VR3).
inline constexpr std::string_view kPassMode = "0001";
inline constexpr std::string_view kHorizontalMode = "001";
inline constexpr std::array<std::string_view, 7> kVerticalModes = {
    "0000010", "000010", "010", "1", "011", "000011", "0000011"};
inline constexpr int kMaxVerticalDistance = 3;

// T.6: the end of the facsimile block.
inline constexpr std::string_view kEndOfBlock = "000000000001000000000001";

// A code, or several in a row: the low `length` bits of `bits`, the higher ones being 0.
struct Code {
  uint64_t bits = 0;
  uint32_t length = 0;
};

constexpr Code operator+(Code first, Code second) {
  return {first.bits << second.length | second.bits, first.length + second.length};
}

constexpr Code ParseCode(std::string_view digits) {
  Code code;
  for (char digit : digits) {
    code = code + Code{digit == '1' ? 1U : 0U, 1};
  }
  return code;
}

inline constexpr uint32_t kMakeUpUnit = 64;
inline constexpr uint32_t kLongestMakeUp = 2560;

// What is sent for the runs of one colour. `make_up[n]` codes 64 * n pixels and is empty for
// 0.
struct RunCodes {
  std::array<Code, kMakeUpUnit> terminating;
  std::array<Code, kLongestMakeUp / kMakeUpUnit + 1> make_up;
};

constexpr RunCodes MakeRunCodes(std::span<std::string_view const, 64> terminating,
                                std::span<std::string_view const, 27> make_up) {
  RunCodes codes{};
  for (size_t i = 0; i < terminating.size(); ++i) {
    codes.terminating[i] = ParseCode(terminating[i]);
  }
  size_t slot = 1;
  for (std::string_view digits : make_up) {
    codes.make_up[slot++] = ParseCode(digits);
  }
  for (std::string_view digits : kCommonMakeUp) {
    codes.make_up[slot++] = ParseCode(digits);
  }
  return codes;
}

// By colour: white, black.
inline constexpr std::array<RunCodes, 2> kRunCodes = {
    MakeRunCodes(kWhiteTerminating, kWhiteMakeUp), MakeRunCodes(kBlackTerminating, kBlackMakeUp)};

constexpr std::array<Code, kVerticalModes.size()> MakeVerticalCodes() {
  std::array<Code, kVerticalModes.size()> codes{};
  for (size_t i = 0; i < codes.size(); ++i) {
    codes[i] = ParseCode(kVerticalModes[i]);
  }
  return codes;
}

inline constexpr auto kVerticalCodes = MakeVerticalCodes();
inline constexpr Code kPassCode = ParseCode(kPassMode);
inline constexpr Code kHorizontalCode = ParseCode(kHorizontalMode);
inline constexpr Code kEndOfBlockCode = ParseCode(kEndOfBlock);

// ---- Lookup tables of the decoder, indexed by the next bits of the data ----

enum class Mode : uint8_t { kInvalid, kPass, kHorizontal, kVertical };

struct ModeEntry {
  int16_t distance = 0;  // a1 - b1 of a vertical mode
  Mode mode = Mode::kInvalid;
  uint8_t length = 0;  // of the code, in bits; 0: no code begins like this

  constexpr uint32_t Length() const { return length; }
};

// A run-length code in 16 bits, so that both tables fit the first-level cache beside the rows.
struct RunEntry {
  uint16_t packed = 0;  // pixels << 4 | length in bits; length 0: no code begins like this

  constexpr uint32_t Pixels() const { return packed >> 4; }
  constexpr uint32_t Length() const { return packed & 15U; }
};

// Enters `value` wherever the bits begin with `digits`. Two codes of which one begins like the
// other end the compilation.
template <typename Entry, size_t kEntries>
constexpr void EnterCode(std::array<Entry, kEntries>& table, std::string_view digits, Entry value) {
  size_t const span = kEntries >> digits.size();
  size_t const first = static_cast<size_t>(ParseCode(digits).bits) * span;
  for (size_t i = first; i < first + span; ++i) {
    if (table[i].Length() != 0) {
      throw std::logic_error("ambiguous code");
    }
    table[i] = value;
  }
}

inline constexpr uint32_t kModeBits = 7;
inline constexpr uint32_t kWhiteRunBits = 12;
inline constexpr uint32_t kBlackRunBits = 13;

constexpr std::array<ModeEntry, 1U << kModeBits> MakeModeTable() {
  std::array<ModeEntry, 1U << kModeBits> table{};
  auto const enter = [&table](std::string_view digits, Mode mode, int distance) {
    EnterCode(table, digits,
              ModeEntry{static_cast<int16_t>(distance), mode, static_cast<uint8_t>(digits.size())});
  };
  enter(kPassMode, Mode::kPass, 0);
  enter(kHorizontalMode, Mode::kHorizontal, 0);
  int distance = -kMaxVerticalDistance;
  for (std::string_view digits : kVerticalModes) {
    enter(digits, Mode::kVertical, distance++);
  }
  return table;
}

template <size_t kEntries>
constexpr std::array<RunEntry, kEntries> MakeRunTable(
    std::span<std::string_view const, 64> terminating,
    std::span<std::string_view const, 27> make_up) {
  std::array<RunEntry, kEntries> table{};
  auto const enter = [&table](std::string_view digits, size_t pixels) {
    EnterCode(table, digits, RunEntry{static_cast<uint16_t>(pixels << 4 | digits.size())});
  };
  size_t pixels = 0;
  for (std::string_view digits : terminating) {
    enter(digits, pixels++);
  }
  for (std::string_view digits : make_up) {
    enter(digits, pixels);
    pixels += kMakeUpUnit;
  }
  for (std::string_view digits : kCommonMakeUp) {
    enter(digits, pixels);
    pixels += kMakeUpUnit;
  }
  return table;
}

inline constexpr auto kModeTable = MakeModeTable();
inline constexpr auto kWhiteRunTable =
    MakeRunTable<1U << kWhiteRunBits>(kWhiteTerminating, kWhiteMakeUp);
inline constexpr auto kBlackRunTable =
    MakeRunTable<1U << kBlackRunBits>(kBlackTerminating, kBlackMakeUp);

}  // namespace sorrelin::cadwick

#endif  // SIBLINGS_CADWICK_GROUP4_TABLES_H_
