// Mode codes by the group: a table of what the next ten bits of Group 4 data hold, and the columns
// that a group of vertical codes comes to, worked out side by side.
//
// On pages of text nine of ten codes are vertical (T.6), mostly of one to three bits and many in a
// row, so that a group saves most of the steps that single codes take.
#ifndef SIBLINGS_CADWICK_MODE_GROUPS_H_
#define SIBLINGS_CADWICK_MODE_GROUPS_H_

#include <siblings/cadwick/group4_tables.h>

#include <array>
#include <cstddef>
#include <cstdint>
#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#endif

namespace sorrelin::cadwick {

inline constexpr uint32_t kGroupBits = 10;
inline constexpr uint32_t kGroupCodes = 8;

// a1 - b1 of the vertical codes of a group; 0 after the last.
using Distances = std::array<int8_t, kGroupCodes>;

// The codes that some bits hold whole: vertical ones, and the code after them if it is of another
// mode.
struct ModeGroup {
  Distances distances{};
  uint32_t ends = 0;   // of the vertical codes but the last: bits up to their end, 4 for each code
  uint8_t length = 0;  // of the whole group in bits
  uint8_t count = 0;   // of vertical codes
  uint8_t mask = 0;    // a bit for each of them
  Mode last = Mode::kVertical;  // kInvalid if the bits begin with no code

  // Bits of the first `codes` vertical ones: more than none, fewer than all.
  uint32_t LengthOf(uint32_t codes) const { return ends >> 4 * (codes - 1) & 15; }
};

constexpr ModeEntry ModeAt(uint32_t bits, uint32_t position) {
  uint32_t const rest = bits << position & ((1U << kGroupBits) - 1);
  return kModeTable[rest >> (kGroupBits - kModeBits)];
}

constexpr ModeGroup MakeModeGroup(uint32_t bits) {
  ModeGroup group;
  for (;;) {
    ModeEntry const code = ModeAt(bits, group.length);
    bool const whole = code.length != 0 && group.length + code.length <= kGroupBits;
    bool const vertical = code.mode == Mode::kVertical;
    if (!whole || (vertical && group.count == kGroupCodes)) break;
    group.length = static_cast<uint8_t>(group.length + code.length);
    if (!vertical) {
      group.last = code.mode;
      break;
    }
    if (group.count < kGroupCodes - 1) group.ends |= uint32_t{group.length} << 4 * group.count;
    group.mask = static_cast<uint8_t>(group.mask << 1 | 1);
    group.distances[group.count++] = static_cast<int8_t>(code.distance);
  }
  if (group.length == 0) group.last = Mode::kInvalid;
  return group;
}

constexpr std::array<ModeGroup, 1U << kGroupBits> MakeModeGroups() {
  std::array<ModeGroup, 1U << kGroupBits> groups{};
  for (uint32_t bits = 0; bits < groups.size(); ++bits) groups[bits] = MakeModeGroup(bits);
  return groups;
}

inline constexpr auto kModeGroups = MakeModeGroups();

// Writes the columns that vertical codes lead to: `a1[i]` becomes b1[i] plus a distance. A bit of
// the result is 1 if nothing but the next changing element of the row above serves the code after
// it: the column lies neither before the last one (`a0` for the first) nor before the element that
// precedes b1[i], and before the element that follows. Such a column is within the row and not its
// end. Reads b1[-1] to b1[8] and writes a1[0] to a1[7], all columns below 2^31.
inline uint32_t PlaceOneByOne(uint32_t const* b1, Distances const& distances, uint32_t a0,
                              uint32_t* a1) {
  uint32_t fitting = 0;
  auto before = static_cast<int64_t>(a0);
  for (size_t i = 0; i < kGroupCodes; ++i) {
    int64_t const column = int64_t{b1[i]} + distances[i];
    bool const fits =
        column >= before && column >= b1[static_cast<ptrdiff_t>(i) - 1] && column < b1[i + 1];
    fitting |= uint32_t{fits} << i;
    a1[i] = static_cast<uint32_t>(column);
    before = column;
  }
  return fitting;
}

#if defined(__SSE2__) || defined(_M_X64)

// PlaceOneByOne, by four columns at a time.
inline uint32_t PlaceSideBySide(uint32_t const* b1, Distances const& distances, uint32_t a0,
                                uint32_t* a1) {
  auto const load = [](uint32_t const* columns) {
    return _mm_loadu_si128(reinterpret_cast<__m128i const*>(columns));
  };
  auto const store = [](uint32_t* columns, __m128i values) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(columns), values);
  };
  __m128i const bytes = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(distances.data()));
  __m128i const words = _mm_srai_epi16(_mm_unpacklo_epi8(bytes, bytes), 8);
  __m128i const low = _mm_add_epi32(load(b1), _mm_srai_epi32(_mm_unpacklo_epi16(words, words), 16));
  __m128i const high =
      _mm_add_epi32(load(b1 + 4), _mm_srai_epi32(_mm_unpackhi_epi16(words, words), 16));
  store(a1, low);
  store(a1 + 4, high);
  __m128i const before_low =
      _mm_or_si128(_mm_slli_si128(low, 4), _mm_cvtsi32_si128(static_cast<int>(a0)));
  __m128i const before_high = _mm_or_si128(_mm_slli_si128(high, 4), _mm_srli_si128(low, 12));
  auto const fits = [](__m128i columns, __m128i before, __m128i preceding, __m128i following) {
    return _mm_andnot_si128(
        _mm_or_si128(_mm_cmpgt_epi32(before, columns), _mm_cmpgt_epi32(preceding, columns)),
        _mm_cmpgt_epi32(following, columns));
  };
  __m128i const fitting = _mm_packs_epi32(fits(low, before_low, load(b1 - 1), load(b1 + 1)),
                                          fits(high, before_high, load(b1 + 3), load(b1 + 5)));
  return static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(fitting, _mm_setzero_si128())));
}

#else

inline uint32_t PlaceSideBySide(uint32_t const* b1, Distances const& distances, uint32_t a0,
                                uint32_t* a1) {
  return PlaceOneByOne(b1, distances, a0, a1);
}

#endif

}  // namespace sorrelin::cadwick

#endif  // SIBLINGS_CADWICK_MODE_GROUPS_H_
