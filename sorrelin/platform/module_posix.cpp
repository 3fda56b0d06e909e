// Shared libraries on POSIX.
#include <dlfcn.h>
#include <link.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/module.h>
#include <sorrelin/platform/posix_support.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace sorrelin {
namespace {

// Modules that this layer has returned; no other value is passed to the loader.
struct ModuleUse {
  unsigned loads = 0;      // LoadLibraryW without its FreeLibrary
  bool looked_up = false;  // by GetModuleHandleW
};

class ModuleTable {
 public:
  void AddLoad(HMODULE module) {
    std::lock_guard const guard(mutex_);
    ++uses_[module].loads;
  }
  void AddLookup(HMODULE module) {
    std::lock_guard const guard(mutex_);
    uses_[module].looked_up = true;
  }
  bool Knows(HMODULE module) {
    std::lock_guard const guard(mutex_);
    return uses_.contains(module);
  }
  // False if no load is left.
  bool DropLoad(HMODULE module) {
    std::lock_guard const guard(mutex_);
    auto const use = uses_.find(module);
    if (use == uses_.end() || use->second.loads == 0) return false;
    if (--use->second.loads == 0 && !use->second.looked_up) uses_.erase(use);
    return true;
  }

 private:
  std::mutex mutex_;
  std::map<HMODULE, ModuleUse> uses_;
};

ModuleTable& Modules() {
  static NeverDestroyed<ModuleTable> table;
  return table.value();
}

// Under which spelling each bare name was found last. Looking all over the system for the others
// again costs as much as loading a small library.
class FoundSpellings {
 public:
  void Remember(std::string const& name, std::string const& spelling) {
    std::lock_guard const guard(mutex_);
    spellings_[name] = spelling;
  }
  // Moves it to the front.
  void Prefer(std::string const& name, std::vector<std::string>& spellings) {
    std::lock_guard const guard(mutex_);
    auto const known = spellings_.find(name);
    if (known == spellings_.end()) return;
    auto const place = std::find(spellings.begin(), spellings.end(), known->second);
    if (place != spellings.end()) std::rotate(spellings.begin(), place, place + 1);
  }

 private:
  std::mutex mutex_;
  std::map<std::string, std::string> spellings_;
};

FoundSpellings& Found() {
  static NeverDestroyed<FoundSpellings> found;
  return found.value();
}

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

// The names under which a library is tried, in order.
std::vector<std::string> Candidates(std::string const& name) {
  constexpr std::string_view kSuffix = ".dll";
  std::vector<std::string> names{name};
  size_t const start = name.rfind('/') + 1;
  std::string last = name.substr(start);
  std::transform(last.begin(), last.end(), last.begin(), LowerAscii);
  if (last.size() > kSuffix.size() && last.ends_with(kSuffix)) {
    last.resize(last.size() - kSuffix.size());
    names.push_back(name.substr(0, start) + "lib" + last + ".so");
  }
  return names;
}

constexpr char const* kPrivateFolder = "sorrelin/";

// The directory of the platform library with its final separator, or "".
std::string OwnDirectory() {
  static char anchor = 0;
  Dl_info info{};
  if (dladdr(&anchor, &info) == 0 || info.dli_fname == nullptr) return "";
  std::string const path = info.dli_fname;
  return path.substr(0, path.rfind('/') + 1);
}

// A bare name goes through the loader's search, which knows our run path. It does not where another
// library is between us and dlopen, as a sanitizer is, so our directory is tried by name too, and
// last the private folder in it, where packages keep what nobody links.
HMODULE OpenModule(std::string const& name, int flags) {
  void* module = dlopen(name.c_str(), flags);
  if (module != nullptr || name.find('/') != std::string::npos) return module;
  std::string const directory = OwnDirectory();
  if (directory.empty()) return nullptr;
  module = dlopen((directory + name).c_str(), flags);
  return module != nullptr ? module : dlopen((directory + kPrivateFolder + name).c_str(), flags);
}

// Whether the file of a loaded module is called `name`, optionally followed by a version.
bool IsFileOfLoadedModule(std::string_view name) {
  auto const compare = [](dl_phdr_info* info, size_t, void* wanted) {
    std::string_view const path = info->dlpi_name;
    std::string_view const file = path.substr(path.rfind('/') + 1);
    return file.starts_with(*static_cast<std::string_view const*>(wanted)) ? 1 : 0;
  };
  return dl_iterate_phdr(compare, &name) != 0;
}

// The first candidate that opens, or null with error 126.
HMODULE OpenFirst(WCHAR const* name, int flags) {
  return Guarded(HMODULE{}, [&] {
    auto const path = name != nullptr ? Utf8Path(name) : std::nullopt;
    if (!path || path->empty()) return Fail(ERROR_MOD_NOT_FOUND, HMODULE{});
    bool const bare = path->find('/') == std::string::npos;
    std::vector<std::string> candidates = Candidates(*path);
    if (bare) Found().Prefer(*path, candidates);
    for (std::string const& candidate : candidates) {
      // The loader finds a loaded library only by searching for its file everywhere.
      if (bare && (flags & RTLD_NOLOAD) != 0 && !IsFileOfLoadedModule(candidate)) continue;
      HMODULE const module = OpenModule(candidate, flags);
      if (module == nullptr) continue;
      if (bare) Found().Remember(*path, candidate);
      return module;
    }
    return Fail(ERROR_MOD_NOT_FOUND, HMODULE{});
  });
}

// The full path that a symbolic link leads to, or "" with the system error.
std::string ReadLink(char const* link) {
  std::string path(PATH_MAX, '\0');
  ssize_t const length = readlink(link, path.data(), path.size());
  if (length == -1) return Fail(ErrorOfErrno(errno), std::string());
  path.resize(static_cast<size_t>(length));
  return path;
}

// The path of a module's file, or "" with the system error.
std::string PathOf(HMODULE module) {
  link_map* map = nullptr;
  bool const host = module == nullptr;
  if (!host && dlinfo(module, RTLD_DI_LINKMAP, &map) != 0) {
    return Fail(ERROR_MOD_NOT_FOUND, std::string());
  }
  // The host program has no name in the loader's list.
  if (host || *map->l_name == 0) return ReadLink("/proc/self/exe");
  if (*map->l_name == '/') return map->l_name;
  std::unique_ptr<char, decltype(&std::free)> const path(realpath(map->l_name, nullptr),
                                                         &std::free);
  return path ? path.get() : Fail(ErrorOfErrno(errno), std::string());
}

// Stores a path with its terminator, cut to the capacity, which is not 0; returns the length.
DWORD StorePath(std::u16string const& path, WCHAR* buffer, DWORD capacity) {
  size_t const length = std::min<size_t>(path.size(), capacity - 1);
  std::copy_n(path.data(), length, buffer);
  buffer[length] = 0;
  auto const stored = static_cast<DWORD>(length);
  return length == path.size() ? stored : Fail(ERROR_INSUFFICIENT_BUFFER, stored);
}

}  // namespace
}  // namespace sorrelin

HMODULE GetModuleHandleW(WCHAR const* name) {
  HMODULE const module = name == nullptr ? dlopen(nullptr, RTLD_NOW)
                                         : sorrelin::OpenFirst(name, RTLD_NOW | RTLD_NOLOAD);
  if (module == nullptr) return sorrelin::Fail(ERROR_MOD_NOT_FOUND, HMODULE{});
  dlclose(module);
  return sorrelin::Guarded(HMODULE{}, [&] {
    sorrelin::Modules().AddLookup(module);
    return module;
  });
}

DWORD GetModuleFileNameW(HMODULE module, WCHAR* buffer, DWORD capacity) {
  if (module != nullptr && !sorrelin::Modules().Knows(module)) {
    return sorrelin::Fail(ERROR_MOD_NOT_FOUND, 0u);
  }
  if (buffer == nullptr || capacity == 0) return sorrelin::Fail(ERROR_INSUFFICIENT_BUFFER, 0u);
  return sorrelin::Guarded(0u, [&] {
    std::string const path = sorrelin::PathOf(module);
    if (path.empty()) return 0u;
    auto const name = sorrelin::WidePath(path);
    if (!name) return sorrelin::Fail(ERROR_INVALID_NAME, 0u);
    return sorrelin::StorePath(*name, buffer, capacity);
  });
}

HMODULE LoadLibraryW(WCHAR const* name) {
  HMODULE const module = sorrelin::OpenFirst(name, RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) return nullptr;
  bool const added = sorrelin::Guarded(false, [&] {
    sorrelin::Modules().AddLoad(module);
    return true;
  });
  if (added) return module;
  dlclose(module);
  return nullptr;
}

FARPROC GetProcAddress(HMODULE module, char const* name) {
  void* const address =
      name != nullptr && sorrelin::Modules().Knows(module) ? dlsym(module, name) : nullptr;
  if (address == nullptr) SetLastError(ERROR_PROC_NOT_FOUND);
  return reinterpret_cast<FARPROC>(address);
}

BOOL FreeLibrary(HMODULE module) {
  if (!sorrelin::Modules().DropLoad(module)) return sorrelin::Fail(ERROR_INVALID_HANDLE, FALSE);
  return dlclose(module) == 0 ? TRUE : sorrelin::Fail(ERROR_INVALID_HANDLE, FALSE);
}
