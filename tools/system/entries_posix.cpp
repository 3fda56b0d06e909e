// Entries of directories on POSIX: hidden by their names, and symbolic links.
#include <system_error>

#include "tools/system/entries.h"

namespace sorrelin::tool {

bool IsHidden(std::filesystem::path const& path) {
  return path.filename().native().starts_with('.');
}

bool IsLink(std::filesystem::directory_entry const& entry) {
  std::error_code error;
  return entry.is_symlink(error);
}

std::filesystem::path LinkTarget(std::filesystem::path const& path) {
  std::error_code error;
  if (!std::filesystem::is_symlink(path, error)) return path;
  std::filesystem::path const target = std::filesystem::canonical(path, error);
  return error ? path : target;
}

}  // namespace sorrelin::tool
