// A row of pixels and its changing elements, each made from the other by words of 64 pixels.
#include <siblings/cadwick/changing_elements.h>
#include <siblings/cadwick/pixel_words.h>

#include <algorithm>
#include <bit>

namespace sorrelin::cadwick {
namespace {

// Blackens pixels of a word; the leftmost is the highest bit of `pixels`.
void BlackenWord(uint8_t* word, uint64_t pixels) {
  StoreWord(word, LoadWord(word) | BigEndian(pixels));
}

// Blackens the pixels from column `from` to before column `to`.
void BlackenRun(uint8_t* row, uint32_t from, uint32_t to) {
  uint64_t const head = ~uint64_t{0} >> from % kWordPixels;
  uint64_t const tail = ~(~uint64_t{0} >> to % kWordPixels);
  uint8_t* const first = row + from / kWordPixels * kWordBytes;
  uint8_t* const last = row + to / kWordPixels * kWordBytes;
  if (first == last) {
    BlackenWord(first, head & tail);
    return;
  }
  BlackenWord(first, head);
  std::fill(first + kWordBytes, last, uint8_t{0xFF});
  if (tail != 0) BlackenWord(last, tail);
}

}  // namespace

ChangingElements::ChangingElements(uint32_t width)
    : width_(width), row_((size_t{width} + kWordPixels - 1) / kWordPixels * kWordBytes) {
  FindElements();
}

void ChangingElements::StartList() {
  list_[0] = 0;
  end_ = Begin();
  dropped_ = 0;
  next_byte_ = 0;
  left_pixel_ = 0;
}

void ChangingElements::FindElements() {
  size_t const row_bytes = (size_t{width_} + 7) / 8;
  if (width_ % 8 != 0) row_[row_bytes - 1] &= static_cast<uint8_t>(0xFF00U >> width_ % 8);
  std::fill(row_.begin() + static_cast<ptrdiff_t>(row_bytes), row_.end(), uint8_t{0});
  StartList();
  FillWindow();
}

void ChangingElements::Rewind() {
  if (IsCut()) FindElements();
}

void ChangingElements::FillWindow() {
  uint32_t* end = end_;
  uint32_t const* const full = Begin() + kCapacity - kWordPixels;
  uint64_t left = left_pixel_;
  size_t at = next_byte_;
  for (; at < row_.size() && end <= full; at += kWordBytes) {
    uint64_t const word = LoadWord(row_.data() + at);
    if (word == 0 - left) continue;  // all pixels are like the one to their left
    uint64_t const pixels = PixelsFromLeft(word);
    uint64_t changes = pixels ^ (pixels << 1 | left);
    left = pixels >> (kWordPixels - 1);
    for (; changes != 0; changes &= changes - 1) {
      *end++ = static_cast<uint32_t>(at * 8) + static_cast<uint32_t>(std::countr_zero(changes));
    }
  }
  left_pixel_ = left;
  next_byte_ = at;
  end_ = end;
  std::fill_n(end, kBehind, width_);
  limit_ = at < row_.size() ? end - 2 : end + kBehind;
}

// Moves the list so that one or two elements are left before `place`; returns by how many places.
ptrdiff_t ChangingElements::DropBefore(uint32_t const* place) {
  ptrdiff_t const count = (place - Begin() - 1) / 2 * 2;
  std::copy(list_.data() + count, end_, list_.data());
  end_ -= count;
  dropped_ += count;
  return count;
}

uint32_t const* ChangingElements::Advance(uint32_t const* place, uint32_t column) {
  while (place > limit_) {
    place -= DropBefore(place);
    FillWindow();
    while (*place <= column) place += 2;
  }
  return place;
}

void ChangingElements::Clear() {
  std::fill(row_.begin(), row_.end(), uint8_t{0});
  StartList();
}

// A row without empty runs has at most one element per pixel.
int64_t ChangingElements::MaxElements() const { return (int64_t{width_} + 31) / 32 * 32 * 2; }

uint32_t const* ChangingElements::WriteLimit() {
  return Begin() +
         static_cast<ptrdiff_t>(std::min<int64_t>(kCapacity - 2, MaxElements() - dropped_));
}

uint32_t* ChangingElements::MakeRoom(uint32_t* end) {
  if (end - Begin() + dropped_ > MaxElements()) return nullptr;
  end_ = end;
  for (uint32_t const* run = Begin(); end - run > 2; run += 2) {
    BlackenRun(row_.data(), run[0], run[1]);
  }
  return end - DropBefore(end);
}

void ChangingElements::Finish(uint32_t* end) {
  end_ = end;
  std::fill_n(end, kBehind, width_);
  limit_ = end + kBehind;
}

void ChangingElements::Paint() {
  uint8_t* const row = row_.data();
  uint32_t const width = width_;
  for (uint32_t const* run = Begin(); *run < width; run += 2) BlackenRun(row, run[0], run[1]);
}

}  // namespace sorrelin::cadwick
