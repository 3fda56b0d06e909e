// The channels that documents are written to.
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/writer/target.h>

#include <new>

namespace sorrelin {

namespace {

constexpr DWORD kFlags = FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN;

// A name that cannot be looked up must not be taken for one that is free.
bool NameExists(WCHAR const* name) {
  if (GetFileAttributesW(name) != INVALID_FILE_ATTRIBUTES) return true;
  if (GetLastError() == ERROR_NOT_ENOUGH_MEMORY) throw std::bad_alloc();
  return false;
}

}  // namespace

Target OpenFileTarget(WCHAR const* name) {
  bool const exists = NameExists(name);
  DWORD const access = exists ? GENERIC_READ | GENERIC_WRITE : GENERIC_WRITE;
  DWORD const disposition = exists ? OPEN_EXISTING : CREATE_ALWAYS;
  return {ChannelOpenFile(name, access, FILE_SHARE_READ, nullptr, disposition, kFlags, nullptr),
          exists};
}

Target OpenMemoryTarget(void const* document, DWORD size) {
  if (document == nullptr) return {ChannelOpenMemory(size), false};
  return {ChannelAttachMemory(document, size, false), true};
}

}  // namespace sorrelin
