// How much memory coding takes: less than 64 KiB and eight rows, whatever is in the rows. A program
// of its own, since it counts what operator new gives out.
#include <gtest/gtest.h>
#include <tests/siblings/group4_support.h>

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

size_t held_bytes = 0;
size_t most_held_bytes = 0;

// The size of each piece comes before it.
constexpr size_t kHead = alignof(std::max_align_t);

}  // namespace

void* operator new(size_t size) {
  void* const piece = std::malloc(size + kHead);
  if (piece == nullptr) throw std::bad_alloc();
  *static_cast<size_t*>(piece) = size;
  held_bytes += size;
  most_held_bytes = std::max(most_held_bytes, held_bytes);
  return static_cast<std::byte*>(piece) + kHead;
}

void operator delete(void* place) noexcept {
  if (place == nullptr) return;
  void* const piece = static_cast<std::byte*>(place) - kHead;
  held_bytes -= *static_cast<size_t*>(piece);
  std::free(piece);
}

void operator delete(void* place, size_t) noexcept { operator delete(place); }

using namespace test;

namespace {

class NoSink final : public cadwick::ByteSink {
 public:
  bool Write(std::span<BYTE const>) override { return true; }
};

// The most that `work` holds at a time beyond what was held before it.
template <typename Work>
size_t MostHeld(Work const& work) {
  size_t const before = held_bytes;
  most_held_bytes = before;
  work();
  return most_held_bytes - before;
}

size_t Allowed(Bilevel const& bitmap) { return 64 * 1024 + 8 * bitmap.Payload(); }

void ExpectAllowed(Bilevel bitmap) {
  NoSink sink;
  EXPECT_LT(MostHeld([&] {
              cadwick::EncodeGroup4(SizeOf(bitmap), {GiveRow, &bitmap}, sink);
            }),
            Allowed(bitmap));
  Data const data = Encode(bitmap);
  auto const take = [](BYTE*, int32_t, void*) { return 0; };
  Outcome outcome{};
  EXPECT_LT(MostHeld([&] {
              outcome = cadwick::DecodeGroup4(data, SizeOf(bitmap), {take, nullptr}).outcome;
            }),
            Allowed(bitmap));
  EXPECT_EQ(outcome, Outcome::kDone);
}

}  // namespace

TEST(Group4Memory, CountSeesWhatIsHeld) {
  EXPECT_EQ(MostHeld([] { std::vector<uint8_t>(1000).swap(*std::make_unique<Data>(5)); }),
            1000 + 5 + sizeof(Data));
}

TEST(Group4Memory, StaysBelowTheLimitForEveryWidth) {
  for (int32_t const width : {1, 100, 2480, 4960, 8000, 20000, 100000, 1000000}) {
    ExpectAllowed(Checkerboard(width, 3, 0));
    ExpectAllowed(Bilevel(width, 3));
  }
}
