// Entries of directories on Windows: hidden by an attribute, links and junctions.
#include <windows.h>

#include "tools/system/entries.h"

namespace sorrelin::tool {

bool IsHidden(std::filesystem::path const& path) {
  if (path.filename().native().starts_with(L'.')) return true;
  DWORD const attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_HIDDEN) != 0;
}

// Files that are kept in the cloud are reparse points too, of other kinds. Wine gives links no
// kind.
bool IsLink(std::filesystem::directory_entry const& entry) {
  WIN32_FIND_DATAW found{};
  HANDLE const search = FindFirstFileW(entry.path().c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return false;
  FindClose(search);
  return (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
         (found.dwReserved0 == 0 || IsReparseTagNameSurrogate(found.dwReserved0));
}

}  // namespace sorrelin::tool
