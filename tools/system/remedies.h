// What users do about parts and data that are missing, in the way their system is given software.
#ifndef TOOLS_SYSTEM_REMEDIES_H_
#define TOOLS_SYSTEM_REMEDIES_H_

#include <string>

namespace sorrelin::tool {

// The file that LoadLibraryW finds under a name such as "Cadwick.dll".
std::string LibraryFile(std::string const& name);

// How to get a library of the program that is in a package of this name, where there are packages.
std::string InstallRemedy(std::string const& package);

// How to get Tesseract's data for a language, also in place of those that are damaged.
std::string LanguageRemedy(std::string const& language, bool damaged);

// The user's locale as in LANG; empty where environment variables alone say it.
std::string UserLocale();

}  // namespace sorrelin::tool

#endif  // TOOLS_SYSTEM_REMEDIES_H_
