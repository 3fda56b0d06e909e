// Values as bytes for another process of this program: numbers, and structures without a Fields
// function, as they are in memory; texts and lists with their length before them; of other
// structures, what their Fields function names:
//
//   template <typename Self>
//   static auto Fields(Self& self) { return std::tie(self.name, self.pages); }
#ifndef TOOLS_DOCUMENTS_PACKED_VALUES_H_
#define TOOLS_DOCUMENTS_PACKED_VALUES_H_

#include <cstddef>
#include <cstring>
#include <ranges>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

namespace sorrelin::tool {

template <typename Value>
concept HasFields = requires(Value& value) {
  Value::Fields(value);
};

// Addresses mean nothing in another process.
template <typename Value>
concept IsPlain = std::is_trivially_copyable_v<Value> && !std::is_pointer_v<Value> &&
                  !std::is_same_v<Value, std::string_view>;

// As they are in memory, one after the other.
template <typename Value>
concept IsPlainList =
    std::ranges::contiguous_range<Value> && IsPlain<std::ranges::range_value_t<Value>> &&
    !HasFields<std::ranges::range_value_t<Value> const>;

template <typename Value>
void Pack(std::string& bytes, Value const& value) {
  if constexpr (HasFields<Value const>) {
    std::apply([&](auto const&... fields) { (Pack(bytes, fields), ...); }, Value::Fields(value));
  } else if constexpr (IsPlain<Value>) {
    bytes.append(reinterpret_cast<char const*>(&value), sizeof value);
  } else if constexpr (IsPlainList<Value>) {
    Pack(bytes, value.size());
    bytes.append(reinterpret_cast<char const*>(value.data()), value.size() * sizeof *value.data());
  } else {
    Pack(bytes, value.size());
    for (auto const& element : value) Pack(bytes, element);
  }
}

// The bytes that are next. Throws std::length_error if there are not that many.
inline std::string_view TakePacked(std::string_view& bytes, size_t size) {
  if (size > bytes.size()) throw std::length_error("values are cut short");
  std::string_view const taken = bytes.substr(0, size);
  bytes.remove_prefix(size);
  return taken;
}

template <typename List>
void TakeElements(std::string_view& bytes, size_t count, List& list) {
  constexpr size_t kElementBytes = sizeof(std::ranges::range_value_t<List>);
  if (count > bytes.size() / kElementBytes) throw std::length_error("values are cut short");
  list.resize(count);
  std::string_view const taken = TakePacked(bytes, count * kElementBytes);
  if (count > 0) std::memcpy(list.data(), taken.data(), taken.size());
}

// Takes a value off the front of `bytes`. Throws as TakePacked does.
template <typename Value>
void Unpack(std::string_view& bytes, Value& value) {
  if constexpr (HasFields<Value>) {
    std::apply([&](auto&... fields) { (Unpack(bytes, fields), ...); }, Value::Fields(value));
  } else if constexpr (IsPlain<Value>) {
    std::memcpy(&value, TakePacked(bytes, sizeof value).data(), sizeof value);
  } else {
    size_t count = 0;
    Unpack(bytes, count);
    value.clear();
    if constexpr (IsPlainList<Value>) {
      TakeElements(bytes, count, value);
    } else {
      while (value.size() < count) Unpack(bytes, value.emplace_back());
    }
  }
}

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_PACKED_VALUES_H_
