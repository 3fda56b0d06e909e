// A handle that shares its file with readers alone.
#include "tools/documents/file_hold.h"

#include <sorrelin/platform/error.h>

#include "tools/cli/messages.h"
#include "tools/cli/text.h"
#include "tools/system/program.h"

namespace sorrelin::tool {

FileHold::FileHold(std::filesystem::path const& path) : file_(INVALID_HANDLE_VALUE) {
  // Some administrators may open even these.
  if (IsWriteProtected(path)) {
    SetLastError(ERROR_ACCESS_DENIED);
    return;
  }
  DWORD const share = FILE_SHARE_READ | (CanReplaceHeldFiles() ? FILE_SHARE_DELETE : 0);
  file_ = CreateFileW(WideName(path).c_str(), GENERIC_READ | GENERIC_WRITE, share, nullptr,
                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

void FileHold::Release() {
  if (IsHeld()) CloseHandle(file_);
  file_ = INVALID_HANDLE_VALUE;
}

void FileHold::ReleaseForReplacing() {
  if (!CanReplaceHeldFiles()) Release();
}

std::string FileHold::Problem() {
  switch (GetLastError()) {
    case ERROR_SHARING_VIOLATION:
      return "is held by another program (try again when that has let go of it)";
    case ERROR_ACCESS_DENIED:
      return "cannot be changed: " + LastSystemError() + " (make it writable)";
    default:
      return "cannot be changed: " + LastSystemError() + kRoomRemedy;
  }
}

}  // namespace sorrelin::tool
