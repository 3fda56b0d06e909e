// /ID of a cross-reference stream.
#include <sorrelin/document/id_key.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/scanner.h>

#include <algorithm>
#include <optional>
#include <string_view>

namespace sorrelin {

namespace {

std::optional<std::string> TakeHexString(std::string_view& text) {
  size_t const end = text.find('>');
  if (end == std::string_view::npos) return std::nullopt;
  std::string digits(text.substr(0, end));
  std::erase_if(digits, [](char c) { return IsWhiteSpace(static_cast<BYTE>(c)); });
  std::string bytes;
  for (size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes += static_cast<char>(HexPairToByte(digits[i], digits[i + 1]));
  }
  text.remove_prefix(end + 1);
  return bytes;
}

char Unescaped(char c) {
  constexpr std::string_view kLetters = "bfnrt";
  constexpr std::string_view kValues = "\b\f\n\r\t";
  size_t const at = kLetters.find(c);
  return at == std::string_view::npos ? c : kValues[at];
}

std::optional<std::string> TakeLiteralString(std::string_view& text) {
  std::string bytes;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == ')') {
      text.remove_prefix(i + 1);
      return bytes;
    }
    if (text[i] != '\\') {
      bytes += text[i];
    } else if (++i < text.size()) {
      bytes += Unescaped(text[i]);
    }
  }
  return std::nullopt;
}

// The next string, whatever precedes it.
std::optional<std::string> TakeString(std::string_view& text) {
  size_t const begin = text.find_first_of("<(");
  if (begin == std::string_view::npos) return std::nullopt;
  bool const hex = text[begin] == '<';
  text.remove_prefix(begin + 1);
  return hex ? TakeHexString(text) : TakeLiteralString(text);
}

}  // namespace

int ReadIdKey(std::span<BYTE const> text, DocumentId& id) {
  std::string_view rest = ByteView{text.data(), text.size()}.Text();
  if (rest.find("ID") == std::string_view::npos) return 1;
  size_t const key = rest.find("/ID");
  if (key == std::string_view::npos) return 0;
  rest.remove_prefix(key + 3);
  auto permanent = TakeString(rest);
  auto changing = permanent ? TakeString(rest) : std::nullopt;
  if (changing) id = {*std::move(permanent), *std::move(changing)};
  return 1;
}

}  // namespace sorrelin
