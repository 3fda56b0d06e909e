// Conversions by the platform layer, which replaces what it cannot read.
#include "tools/cli/text.h"

#include <sorrelin/platform/error.h>
#include <sorrelin/platform/text.h>

namespace sorrelin::tool {

std::optional<std::u16string> Utf16(std::string const& text) {
  if (text.empty()) return std::u16string{};
  int const length = static_cast<int>(text.size());
  int const units = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
  std::u16string wide(static_cast<size_t>(units), u'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), units);
  if (Utf8(wide) != text) return std::nullopt;
  return wide;
}

std::string Utf8(std::u16string const& text) {
  if (text.empty()) return {};
  int const length = static_cast<int>(text.size());
  int const bytes =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<size_t>(bytes), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), length, narrow.data(), bytes, nullptr, nullptr);
  return narrow;
}

std::string LastSystemError() {
  char* text = nullptr;
  DWORD const flags =
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  DWORD const error = GetLastError();
  if (FormatMessageA(flags, nullptr, error, 0, reinterpret_cast<char*>(&text), 0, nullptr) == 0) {
    return "system error " + std::to_string(error);
  }
  std::string message = text;
  LocalFree(text);
  return message;
}

}  // namespace sorrelin::tool
