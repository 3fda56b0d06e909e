// A row of pixels and its changing elements (T.6): the pixels that differ in colour from the
// one to their left, white standing before the first.
#ifndef SIBLINGS_CADWICK_CHANGING_ELEMENTS_H_
#define SIBLINGS_CADWICK_CHANGING_ELEMENTS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace sorrelin::cadwick {

// The list holds the columns of the elements from left to right: those at even places turn to
// black, those at odd places to white. After the last it goes on with the row's width, and a 0
// precedes the first.
//
// The list is bounded, whatever the width. Of a row with more elements it shows a window, which
// Advance and MakeRoom move on by an even number of places, so that a place keeps its colour.
class ChangingElements {
 public:
  // How far past its place a reader may look at once, if the place is kLookAhead before the limit.
  static constexpr ptrdiff_t kLookAhead = 9;

  // A white row. The width is from 1 to 2^31 - 1 pixels.
  explicit ChangingElements(uint32_t width);
  ChangingElements(ChangingElements const&) = delete;
  ChangingElements& operator=(ChangingElements const&) = delete;

  // The row's bytes, padded to a multiple of eight.
  std::span<uint8_t> Row() { return row_; }

  // The first place of the list.
  uint32_t* Begin() { return list_.data() + kFront; }

  // ---- From the pixels to the list ----

  // Makes the pixels of Row() past the width white and lists the elements.
  void FindElements();

  // Brings the list back to the row's first element, if its window was moved.
  void Rewind();

  // The last place from which that element and the next one can be seen.
  uint32_t const* Limit() const { return limit_; }

  // For a place past the limit: moves the window, and steps on by twos to the first element right
  // of `column`, until the place is within the limit. Returns where it is now.
  uint32_t const* Advance(uint32_t const* place, uint32_t column);

  // ---- From the list to the pixels ----

  // Makes the row white, for elements to be written from Begin() on. They may be equal, which makes
  // empty runs, but never fall.
  void Clear();

  // The last place at which two elements may be written.
  uint32_t const* WriteLimit();

  // For `end`, the place after the last element written, past the limit: blackens the runs before
  // it and gives them up. Returns where `end` is now, with at least one element before it; null if
  // the row has had twice as many elements as pixels.
  uint32_t* MakeRoom(uint32_t* end);

  // Ends the list at `end`.
  void Finish(uint32_t* end);

  // Blackens the runs of the list, which complete the row's pixels.
  void Paint();

  // Whether the list lacks elements of the row, so that Rewind needs the pixels.
  bool IsCut() const { return dropped_ != 0; }

 private:
  static constexpr size_t kFront = 1;
  static constexpr size_t kCapacity = 4096;
  // A reader steps at most two places past the last element and looks kLookAhead further.
  static constexpr size_t kBehind = 3 + kLookAhead;

  void StartList();
  void FillWindow();
  ptrdiff_t DropBefore(uint32_t const* place);
  int64_t MaxElements() const;

  uint32_t const width_;
  std::vector<uint8_t> row_;
  std::array<uint32_t, kFront + kCapacity + kBehind> list_;
  uint32_t* end_;  // after the last element of the window
  uint32_t const* limit_;
  int64_t dropped_;      // elements of the row before the window
  size_t next_byte_;     // of the row, the elements from there on not being in the list yet
  uint64_t left_pixel_;  // the pixel before it: 1 for black
};

// The place that serves when the colour changes at `column`, which `place` was near: the next one,
// unless the one before is still right of the column.
inline uint32_t const* OtherColour(uint32_t const* place, uint32_t column) {
  if (place[-1] > column) [[unlikely]]
    return place - 1;
  return place + 1;
}

}  // namespace sorrelin::cadwick

#endif  // SIBLINGS_CADWICK_CHANGING_ELEMENTS_H_
