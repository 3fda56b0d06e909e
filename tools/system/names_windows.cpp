// Names on Windows: servers and drives, devices, letters of either case, and patterns.
#include <windows.h>

#include <algorithm>
#include <string_view>

#include "tools/system/entries.h"
#include "tools/system/names.h"

namespace sorrelin::tool {
namespace {

namespace fs = std::filesystem;

constexpr wchar_t kAnyText[] = L"*";
constexpr wchar_t kEveryName[] = L"*.*";  // with or without a dot
constexpr char kEndsOfFolders[] = "/\\:";

// What is no Unicode becomes the sign for that.
std::string Utf8(std::wstring_view text) {
  int const units = static_cast<int>(text.size());
  std::string bytes(3 * text.size(), '\0');
  int const size = WideCharToMultiByte(CP_UTF8, 0, text.data(), units, bytes.data(),
                                       static_cast<int>(bytes.size()), nullptr, nullptr);
  bytes.resize(static_cast<size_t>(size));
  return bytes;
}

fs::path PathOf(std::string const& name) { return std::u8string(name.begin(), name.end()); }

bool IsSameLetter(wchar_t a, wchar_t b) {
  return CompareStringOrdinal(&a, 1, &b, 1, TRUE) == CSTR_EQUAL;
}

// The star that has been passed last takes one character more whenever the rest does not fit.
bool Fits(std::wstring_view name, std::wstring_view pattern) {
  size_t at = 0, in_pattern = 0, star = std::wstring_view::npos, after_star = 0;
  while (at < name.size()) {
    if (in_pattern < pattern.size() && pattern[in_pattern] == L'*') {
      star = in_pattern++;
      after_star = at;
    } else if (in_pattern < pattern.size() &&
               (pattern[in_pattern] == L'?' || IsSameLetter(pattern[in_pattern], name[at]))) {
      ++in_pattern;
      ++at;
    } else if (star != std::wstring_view::npos) {
      in_pattern = star + 1;
      at = ++after_star;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of(L'*', in_pattern) == std::wstring_view::npos;
}

// The system's own search would find files by their short names too, as x.tiff by "*.tif".
std::vector<std::string> NamesIn(std::string const& folder, std::wstring_view pattern) {
  std::vector<std::string> names;
  WIN32_FIND_DATAW entry{};
  fs::path const at = PathOf(folder);
  HANDLE const search = FindFirstFileW((at.native() + kAnyText).c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return names;
  do {
    if (Fits(entry.cFileName, pattern) && !IsHidden(at / entry.cFileName)) {
      names.push_back(folder + Utf8(entry.cFileName));
    }
  } while (FindNextFileW(search, &entry) != FALSE);
  FindClose(search);
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

std::string NameOf(fs::path const& path) { return Utf8(path.native()); }

// The standard library's own takes the name of a server for that of a folder.
fs::path FullName(fs::path const& path) {
  DWORD const size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  std::wstring full(size, L'\0');
  full.resize(GetFullPathNameW(path.c_str(), size, full.data(), nullptr));
  return full.empty() ? path : fs::path(full);
}

std::string NameToCompare(fs::path const& path) {
  std::wstring name = FullName(path).native();
  int const units = static_cast<int>(name.size());
  LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, name.data(), units, name.data(), units,
                nullptr, nullptr, 0);
  return Utf8(name);
}

std::vector<std::string> NamesOf(std::string const& argument) {
  size_t const end = argument.find_last_of(kEndsOfFolders);
  size_t const last = end == std::string::npos ? 0 : end + 1;
  if (argument.find_first_of("*?", last) == std::string::npos) return {argument};
  std::wstring const pattern = PathOf(argument.substr(last)).native();
  auto const names = NamesIn(argument.substr(0, last), pattern == kEveryName ? kAnyText : pattern);
  return names.empty() ? std::vector<std::string>{argument} : names;
}

// The system itself knows which names it gives to devices.
bool IsDeviceName(fs::path const& path) { return FullName(path).native().starts_with(L"\\\\.\\"); }

std::string TemporaryVariable() { return "TMP"; }

}  // namespace sorrelin::tool
