// The data of stream objects.
#include <sorrelin/document/stream_object.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/char_class.h>
#include <sorrelin/syntax/key_search.h>
#include <sorrelin/syntax/text_integer.h>

#include <algorithm>
#include <string_view>

namespace sorrelin {

namespace {

constexpr std::string_view kStream = "stream";

ByteView View(std::span<BYTE const> text) { return {text.data(), text.size()}; }

}  // namespace

bool StartsWithTwoIntegers(std::span<BYTE const> text) {
  std::string_view rest = View(text).Text();
  return TakeInteger(rest) && TakeInteger(rest);
}

std::optional<std::span<BYTE const>> FindStreamData(std::span<BYTE const> text) {
  size_t const keyword = View(text).Text().find(kStream);
  if (keyword == std::string_view::npos) return std::nullopt;
  std::span<BYTE const> data = text.subspan(keyword + kStream.size());
  if (data.size() >= 2 && data[0] == '\r' && data[1] == '\n') return data.subspan(2);
  while (!data.empty() && IsWhiteSpace(data[0])) data = data.subspan(1);
  return data;
}

std::optional<std::span<BYTE const>> FindImageData(std::span<BYTE> text) {
  uint64_t const keyword = FindKey(text.data(), text.size(), kStream.data(), LastByte::kKept);
  if (keyword == kNotFound) return std::nullopt;
  size_t const data = static_cast<size_t>(keyword) + kStream.size() + 1;
  return text.subspan(std::min(data, text.size()));
}

}  // namespace sorrelin
