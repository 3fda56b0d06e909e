// Temporary files on POSIX.
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/posix_support.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>

namespace sorrelin {
namespace {

constexpr int kAttempts = 10000;

// A number to try next, never 0. Uniqueness comes from the file system; the start only keeps
// processes apart.
UINT NextNumber() {
  static std::atomic<UINT> counter = [] {
    auto const now = std::chrono::system_clock::now().time_since_epoch().count();
    return static_cast<UINT>(now) ^ static_cast<UINT>(getpid()) << 16;
  }();
  UINT const number = counter.fetch_add(1);
  return number != 0 ? number : counter.fetch_add(1);
}

std::u16string HexOf(UINT number) {
  std::u16string digits;
  for (; number != 0; number >>= 4) digits.insert(digits.begin(), u"0123456789abcdef"[number & 15]);
  return digits;
}

// Makes the file. False with the system error, 80 if the name exists.
bool MakeFile(WCHAR const* name) {
  HANDLE const file = CreateFileW(name, GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_TEMPORARY, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  CloseHandle(file);
  return true;
}

// The number of a name that has been stored in `name`, and made unless `unique` gives the number.
UINT StoreName(std::u16string const& start, UINT unique, WCHAR* name) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    UINT const number = unique != 0 ? unique : NextNumber();
    std::u16string const path = start + HexOf(number) + u".tmp";
    if (path.size() >= MAX_PATH) return Fail(ERROR_FILENAME_EXCED_RANGE, 0u);
    if (unique != 0 || MakeFile(path.c_str())) {
      std::copy_n(path.c_str(), path.size() + 1, name);
      return number;
    }
    if (GetLastError() != ERROR_FILE_EXISTS) return 0;
  }
  return 0;
}

}  // namespace
}  // namespace sorrelin

DWORD GetTempPathW(DWORD capacity, WCHAR* buffer) {
  return sorrelin::Guarded(0u, [&] {
    char const* const variable = std::getenv("TMPDIR");
    std::string path = variable != nullptr && *variable != 0 ? variable : "/tmp";
    if (path.back() != '/') path += '/';
    auto const name = sorrelin::WidePath(path);
    if (!name) return sorrelin::Fail(ERROR_INVALID_NAME, 0u);
    auto const length = static_cast<DWORD>(name->size());
    if (buffer == nullptr || capacity <= length) return length + 1;
    std::copy_n(name->c_str(), name->size() + 1, buffer);
    return length;
  });
}

UINT GetTempFileNameW(WCHAR const* directory, WCHAR const* prefix, UINT unique, WCHAR* name) {
  if (directory == nullptr || *directory == 0 || name == nullptr) {
    return sorrelin::Fail(ERROR_INVALID_PARAMETER, 0u);
  }
  return sorrelin::Guarded(0u, [&] {
    std::u16string start = directory;
    if (start.back() != u'/') start += u'/';
    std::u16string const short_prefix =
        std::u16string(prefix != nullptr ? prefix : u"").substr(0, 3);
    if (short_prefix.find(u'/') != std::u16string::npos) {
      return sorrelin::Fail(ERROR_INVALID_NAME, 0u);
    }
    return sorrelin::StoreName(start + short_prefix, unique, name);
  });
}
