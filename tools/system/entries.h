// Entries of directories that each system marks in its own way.
#ifndef TOOLS_SYSTEM_ENTRIES_H_
#define TOOLS_SYSTEM_ENTRIES_H_

#include <filesystem>

namespace sorrelin::tool {

// Whether users do not see the file in listings: its name begins with a dot, or on Windows an
// attribute hides it.
bool IsHidden(std::filesystem::path const& path);

// Whether an entry leads to another place, as symbolic links do and junctions on Windows.
bool IsLink(std::filesystem::directory_entry const& entry);

// The file that a path leads to by links. The path itself if it does not exist or is no link.
std::filesystem::path LinkTarget(std::filesystem::path const& path);

}  // namespace sorrelin::tool

#endif  // TOOLS_SYSTEM_ENTRIES_H_
