// Entries of directories on Windows: hidden by an attribute, links and junctions.
#include "tools/system/entries.h"

#include <windows.h>

#include <iterator>

#include "tools/system/file_name_windows.h"

namespace sorrelin::tool {
namespace {

// The standard library takes the question mark of these for a pattern.
constexpr wchar_t kLongPrefix[] = L"\\\\?\\";
constexpr wchar_t kLongNetworkPrefix[] = L"\\\\?\\UNC\\";
constexpr wchar_t kNetworkPrefix[] = L"\\\\";

std::wstring WithoutPrefix(std::wstring const& name) {
  if (name.starts_with(kLongNetworkPrefix)) {
    return kNetworkPrefix + name.substr(std::size(kLongNetworkPrefix) - 1);
  }
  return name.starts_with(kLongPrefix) ? name.substr(std::size(kLongPrefix) - 1) : name;
}

}  // namespace

std::wstring NameOfFile(HANDLE file) {
  if (GetFileType(file) != FILE_TYPE_DISK) return {};
  std::wstring name(GetFinalPathNameByHandleW(file, nullptr, 0, FILE_NAME_NORMALIZED), L'\0');
  DWORD const size = static_cast<DWORD>(name.size());
  name.resize(GetFinalPathNameByHandleW(file, name.data(), size, FILE_NAME_NORMALIZED));
  return name;
}

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

// Wine does not mark links to files, so any file is asked for its name.
std::filesystem::path LinkTarget(std::filesystem::path const& path) {
  DWORD const share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  HANDLE const file =
      CreateFileW(path.c_str(), 0, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return path;
  std::wstring const name = NameOfFile(file);
  CloseHandle(file);
  return name.empty() ? path : std::filesystem::path(WithoutPrefix(name));
}

}  // namespace sorrelin::tool
