// The search for a sibling library: beside the module first, then wherever the system looks.
#include <sorrelin/image/codecs/sibling_library.h>
#include <sorrelin/platform/wide_string.h>

#include <algorithm>

namespace sorrelin {

namespace {

// Kept: the module is looked for under this name; under any other name the sibling is looked for
// beside the host program.
constexpr WCHAR kModuleName[] = SORRELIN_TEXT("Tessalinex.dll");

// The sibling's path beside the module, or empty when the module's path has no folder. Kept: the
// name is cut to half the room left in the path's buffer.
WideString PathBesideModule(WCHAR const* name) {
  WCHAR path[MAX_PATH];
  DWORD const length = GetModuleFileNameW(GetModuleHandleW(kModuleName), path, MAX_PATH);
  WideString folder(path, length);
  size_t const separator = folder.rfind(SORRELIN_PATH_SEPARATOR);
  if (separator == WideString::npos) return WideString();
  folder.resize(separator + 1);
  size_t const room = (MAX_PATH - folder.size()) / 2;
  WideString const sibling(name);
  return folder + sibling.substr(0, std::max<size_t>(room, 1) - 1);
}

}  // namespace

HMODULE LoadSibling(WCHAR const* name) {
  WideString const path = PathBesideModule(name);
  HMODULE const module = path.empty() ? nullptr : LoadLibraryW(path.c_str());
  return module != nullptr ? module : LoadLibraryW(name);
}

}  // namespace sorrelin
