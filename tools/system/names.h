// Names of files, where systems differ in what they mean and in which of them are one file.
#ifndef TOOLS_SYSTEM_NAMES_H_
#define TOOLS_SYSTEM_NAMES_H_

#include <filesystem>
#include <string>
#include <vector>

namespace sorrelin::tool {

// The name of a file as messages show it, in UTF-8. What is no Unicode is replaced where the system
// has such names.
std::string NameOf(std::filesystem::path const& path);

// The name from the root of its file system on, with what it says of a server or a drive.
std::filesystem::path FullName(std::filesystem::path const& path);

// The same text for all names of one file, whether it exists or not.
std::string NameToCompare(std::filesystem::path const& path);

// The files that an argument names where shells leave "*" and "?" to programs, in the order of
// their names; otherwise the argument itself. Only the last part of a name may have a pattern.
std::vector<std::string> NamesOf(std::string const& argument);

// Whether a file cannot have this name since a device has it, as CON and NUL.pdf on Windows.
bool IsDeviceName(std::filesystem::path const& path);

// The variable that names the directory for temporary files.
std::string TemporaryVariable();

}  // namespace sorrelin::tool

#endif  // TOOLS_SYSTEM_NAMES_H_
