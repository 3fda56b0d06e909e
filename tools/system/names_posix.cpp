// Names on POSIX, which are bytes; shells expand patterns.
#include <system_error>

#include "tools/system/names.h"

namespace sorrelin::tool {

namespace fs = std::filesystem;

std::string NameOf(fs::path const& path) { return path.string(); }

fs::path FullName(fs::path const& path) {
  std::error_code error;
  fs::path const full = fs::absolute(path, error);
  return error ? path : full;
}

std::string NameToCompare(fs::path const& path) {
  std::error_code error;
  fs::path const plain = fs::weakly_canonical(path, error);
  return error ? path.string() : plain.string();
}

std::vector<std::string> NamesOf(std::string const& argument) { return {argument}; }

bool IsDeviceName(fs::path const&) { return false; }

std::string TemporaryVariable() { return "TMPDIR"; }

}  // namespace sorrelin::tool
