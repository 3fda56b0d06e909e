// Typed dictionary values as values.
#include <sorrelin/syntax/typed_lookup.h>
#include <sorrelin/syntax/typed_value.h>

#include <cstdlib>
#include <cstring>

namespace sorrelin {

namespace {

constexpr char kFilterKey[] = "/Filter";

// Each name keeps what follows it up to the next one; nobody compares them.
std::vector<std::string> SplitNames(std::string const& text) {
  std::vector<std::string> names;
  for (size_t at = text.find('/'); at != std::string::npos;) {
    size_t const next = text.find('/', at + 1);
    names.push_back(text.substr(at, next - at));
    at = next;
  }
  return names;
}

}  // namespace

std::optional<std::string> FindTypedText(ObjectSource* objects, std::span<BYTE> text,
                                         char const* key, DWORD type) {
  void* value = nullptr;
  uint64_t size = 0;
  int const found = GetTypedValue(objects, text.data(), text.size(), key, &value, &size, type);
  std::optional<std::string> result;
  if (found != 0 && value != nullptr) {
    result.emplace(static_cast<char const*>(value), static_cast<size_t>(size));
  }
  std::free(value);
  return result;
}

std::optional<int32_t> FindTypedNumber(ObjectSource* objects, std::span<BYTE> text, char const* key,
                                       DWORD type) {
  auto const value = FindTypedText(objects, text, key, type);
  if (!value || value->size() < sizeof(int32_t)) return std::nullopt;
  int32_t number = 0;
  std::memcpy(&number, value->data(), sizeof number);
  return number;
}

std::vector<std::string> FindFilterNames(ObjectSource* objects, std::span<BYTE> text) {
  if (auto const array = FindTypedText(objects, text, kFilterKey, kTypeArray)) {
    return SplitNames(*array);
  }
  if (auto name = FindTypedText(objects, text, kFilterKey, kTypeName)) return {*std::move(name)};
  return {};
}

}  // namespace sorrelin
