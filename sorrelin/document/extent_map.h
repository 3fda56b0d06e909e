// The extents of objects by number and generation.
#ifndef SORRELIN_DOCUMENT_EXTENT_MAP_H_
#define SORRELIN_DOCUMENT_EXTENT_MAP_H_

#include <sorrelin/platform/types.h>

#include <algorithm>
#include <compare>
#include <cstddef>
#include <deque>
#include <map>
#include <utility>

namespace sorrelin {

struct ObjectId {
  DWORD nNumber = 0;
  DWORD nGeneration = 0;
  auto operator<=>(ObjectId const&) const = default;
};

// Bytes of a plain object, half open. For one in an object stream nStart is the stream's number,
// and nEnd stays 0.
struct ObjectExtent {
  DWORD nStart = 0;
  DWORD nEnd = 0;
};

// Extents stay where they are in memory when others come. Sections mostly name objects in order, so
// that those are kept in a row, which takes a third of a tree's memory and time.
class ExtentMap {
 public:
  // A new extent is all zero.
  ObjectExtent& operator[](ObjectId id) {
    if (in_order_.empty() || in_order_.back().first < id) {
      return in_order_.emplace_back(id, ObjectExtent{}).second;
    }
    ObjectExtent* const known = FindInOrder(id);
    return known != nullptr ? *known : others_[id];
  }

  // Null if there is none.
  ObjectExtent* Find(ObjectId id) {
    if (ObjectExtent* const known = FindInOrder(id)) return known;
    auto const entry = others_.find(id);
    return entry != others_.end() ? &entry->second : nullptr;
  }

  size_t size() const { return in_order_.size() + others_.size(); }
  void swap(ExtentMap& other) noexcept {
    in_order_.swap(other.in_order_);
    others_.swap(other.others_);
  }

 private:
  ObjectExtent* FindInOrder(ObjectId id) {
    auto const entry = std::lower_bound(
        in_order_.begin(), in_order_.end(), id,
        [](auto const& element, ObjectId wanted) { return element.first < wanted; });
    return entry != in_order_.end() && entry->first == id ? &entry->second : nullptr;
  }

  std::deque<std::pair<ObjectId, ObjectExtent>> in_order_;  // ascending
  std::map<ObjectId, ObjectExtent> others_;                 // that came after a higher one
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_EXTENT_MAP_H_
