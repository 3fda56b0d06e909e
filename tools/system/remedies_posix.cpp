// Packages are Debian's, and of the names there.
#include <cctype>

#include "tools/system/remedies.h"

namespace sorrelin::tool {
namespace {

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

std::string LanguagePackage(std::string const& language) {
  std::string name = "tesseract-ocr-" + Lower(language);
  for (char& c : name) c = c == '_' || c == '/' ? '-' : c;
  return name;
}

}  // namespace

std::string LibraryFile(std::string const& name) {
  return "lib" + Lower(name.substr(0, name.rfind('.'))) + ".so";
}

std::string InstallRemedy(std::string const& package) { return "install the package " + package; }

std::string LanguageRemedy(std::string const& language, bool damaged) {
  return (damaged ? "apt install --reinstall " : "apt install ") + LanguagePackage(language);
}

std::string UserLocale() { return {}; }

}  // namespace sorrelin::tool
