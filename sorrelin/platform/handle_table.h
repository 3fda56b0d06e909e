// Handles that are numbers, not addresses: a table of live records, looked up on every use, so that
// a foreign or stale value is recognised instead of followed. Not installed.
#ifndef SORRELIN_PLATFORM_HANDLE_TABLE_H_
#define SORRELIN_PLATFORM_HANDLE_TABLE_H_

#include <sorrelin/platform/types.h>

#include <cstdint>
#include <mutex>
#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace sorrelin {

// What a handle begins with. All values leave the highest bits mixed, which no 64-bit address does.
enum class HandleKind : uint64_t { kBlock = 0xB5A, kFile = 0xD25, kMemoryFile = 0xCA9 };

// The bits of a handle from the highest down: the kind or, in 32 bits, its first digit; the
// generation; the slot; and a 1, which no aligned address has. In 32 bits there is room for a
// thousand records at a time, as memory files have no more.
struct HandleBits {
  int kind;
  int generation;
  int slot;
};
inline constexpr int kWholeKindBits = 12;
inline constexpr HandleBits kHandleBits =
    sizeof(HANDLE) == 8 ? HandleBits{kWholeKindBits, 28, 23} : HandleBits{4, 17, 10};

// A slot counts a generation per record and is retired after the last, so a handle is never given
// twice.
template <typename Record, HandleKind kKind,
          uint64_t kLastGeneration = (uint64_t{1} << kHandleBits.generation) - 1>
class HandleTable {
 public:
  // Throws std::bad_alloc when the table cannot grow.
  HANDLE Insert(Record const& record) {
    std::lock_guard const guard(mutex_);
    if (free_.empty()) AddSlot();
    size_t const index = free_.back();
    free_.pop_back();
    slots_[index].record = record;
    return HandleOf(index, slots_[index].generation);
  }

  // Calls use(record) with the table locked. False for a handle that is not live.
  template <typename Use>
  bool Visit(HANDLE handle, Use use) {
    std::lock_guard const guard(mutex_);
    Slot* const slot = Find(handle);
    if (slot == nullptr) return false;
    use(*slot->record);
    return true;
  }

  // A copy of the record.
  std::optional<Record> Get(HANDLE handle) {
    std::lock_guard const guard(mutex_);
    Slot const* const slot = Find(handle);
    return slot == nullptr ? std::nullopt : slot->record;
  }

  // Ends the handle and returns its record, if the handle is live and test(record) holds.
  template <typename Test>
  std::optional<Record> RemoveIf(HANDLE handle, Test test) {
    std::lock_guard const guard(mutex_);
    Slot* const slot = Find(handle);
    if (slot == nullptr || !test(*slot->record)) return std::nullopt;
    std::optional<Record> const record = std::exchange(slot->record, std::nullopt);
    if (++slot->generation <= kLastGeneration) {
      free_.push_back(static_cast<size_t>(slot - slots_.data()));
    }
    return record;
  }

 private:
  static_assert(kHandleBits.kind + kHandleBits.generation + kHandleBits.slot + 1 ==
                8 * sizeof(HANDLE));
  static_assert(kLastGeneration < uint64_t{1} << kHandleBits.generation);
  static constexpr uint64_t kLastSlot = (uint64_t{1} << kHandleBits.slot) - 1;

  struct Slot {
    uint64_t generation = 1;
    std::optional<Record> record;
  };

  static HANDLE HandleOf(uint64_t index, uint64_t generation) {
    uint64_t const kind = static_cast<uint64_t>(kKind) >> (kWholeKindBits - kHandleBits.kind);
    uint64_t const place = generation << kHandleBits.slot | index;
    uint64_t const value = kind << (8 * sizeof(HANDLE) - kHandleBits.kind) | place << 1 | 1;
    return reinterpret_cast<HANDLE>(static_cast<uintptr_t>(value));
  }

  Slot* Find(HANDLE handle) {
    size_t const index = reinterpret_cast<uintptr_t>(handle) >> 1 & kLastSlot;
    if (index >= slots_.size()) return nullptr;
    Slot& slot = slots_[index];
    bool const live = slot.record.has_value() && HandleOf(index, slot.generation) == handle;
    return live ? &slot : nullptr;
  }

  // Room for every index in the free list is taken here, so that RemoveIf cannot fail.
  void AddSlot() {
    if (slots_.size() > kLastSlot) throw std::bad_alloc();
    slots_.emplace_back();
    try {
      free_.reserve(slots_.capacity());
      free_.push_back(slots_.size() - 1);
    } catch (...) {
      slots_.pop_back();
      throw;
    }
  }

  std::mutex mutex_;
  std::vector<Slot> slots_;
  std::vector<size_t> free_;
};

}  // namespace sorrelin

#endif  // SORRELIN_PLATFORM_HANDLE_TABLE_H_
