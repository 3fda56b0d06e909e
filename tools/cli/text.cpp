// Conversions by the platform layer, which replaces what it cannot read.
#include "tools/cli/text.h"

#include <sorrelin/platform/error.h>
#include <sorrelin/platform/text.h>

#include <utility>

namespace sorrelin::tool {

std::optional<WideText> Utf16(std::string const& text) {
  if (text.empty()) return WideText{};
  int const length = static_cast<int>(text.size());
  int const units = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
  WideText wide(static_cast<size_t>(units), WCHAR{});
  MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), units);
  if (Utf8(wide) != text) return std::nullopt;
  return wide;
}

std::string Utf8(WideText const& text) {
  if (text.empty()) return {};
  int const length = static_cast<int>(text.size());
  int const bytes =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<size_t>(bytes), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), length, narrow.data(), bytes, nullptr, nullptr);
  return narrow;
}

std::filesystem::path PathOf(std::string const& name) {
  return std::u8string(name.begin(), name.end());
}

WideText WideName(std::filesystem::path const& path) { return path.string<WCHAR>(); }

std::string WithoutLineEnd(std::string message) {
  message.erase(message.find_last_not_of(" .\r\n") + 1);
  return message;
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
  return WithoutLineEnd(std::move(message));
}

}  // namespace sorrelin::tool
