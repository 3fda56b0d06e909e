// Everything is beside the program, as in its zip.
#include <windows.h>

#include <array>
#include <filesystem>

#include "tools/system/remedies.h"

namespace sorrelin::tool {

std::string LibraryFile(std::string const& name) { return name; }

std::string InstallRemedy(std::string const&) { return "put it beside sorrelin.exe"; }

std::string LanguageRemedy(std::string const& language, bool damaged) {
  return std::string(damaged ? "put a whole " : "put ") + language +
         ".traineddata into the folder tessdata beside sorrelin.exe, or into the one that "
         "TESSDATA_PREFIX names";
}

std::string UserLocale() {
  std::array<wchar_t, LOCALE_NAME_MAX_LENGTH> name{};
  if (GetUserDefaultLocaleName(name.data(), static_cast<int>(name.size())) == 0) return {};
  std::string locale = std::filesystem::path(name.data()).string();
  for (char& c : locale) c = c == '-' ? '_' : c;
  return locale;
}

}  // namespace sorrelin::tool
