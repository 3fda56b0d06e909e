// Documents made from a seed: the same seed must give the same bytes on every system.
#ifndef TESTS_COMPARISON_WRITTEN_H_
#define TESTS_COMPARISON_WRITTEN_H_

#include <sorrelin/platform/types.h>

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace comparison {

using Bytes = std::vector<BYTE>;

// Raw numbers alone: the distributions of the standard library may differ between systems.
class Dice {
 public:
  explicit Dice(uint32_t seed) : engine_(seed) {}
  // 0 to `count` - 1.
  uint32_t Below(uint32_t count) { return static_cast<uint32_t>(engine_()) % count; }
  bool OneIn(uint32_t count) { return Below(count) == 0; }

 private:
  std::mt19937 engine_;
};

struct Written {
  std::string codes;  // of every call, in order
  Bytes document;     // its creation date is all zeros; empty if it could not be finished
};

// Pages of random depths, codings and sizes, with strings, either line end, in memory or in a file
// in `folder`, sometimes with an update.
Written WriteDocument(Dice& dice, std::filesystem::path const& folder);

}  // namespace comparison

#endif  // TESTS_COMPARISON_WRITTEN_H_
