// The program on POSIX, where streams are bytes and files have any name.
#include "tools/system/program.h"

#include <sorrelin/platform/file.h>

#include <cerrno>
#include <system_error>

namespace sorrelin::tool {

void PrepareStreams() {}

void TrustOwnLibraries() {}

std::string EraseFromLine() { return "\r\x1B[J"; }

void TidyUpOnCrash(void (*)(), int) {}

void EndInterrupted() {}

int WriteErrorOfStream() { return errno; }

bool ReplaceKeepingAccess(std::filesystem::path const& to, std::filesystem::path const& from) {
  return ReplaceFileW(to.string<WCHAR>().c_str(), from.string<WCHAR>().c_str(), nullptr, 0, nullptr,
                      nullptr) != FALSE;
}

bool CanReplaceHeldFiles() { return true; }

bool IsHeld(std::filesystem::path const&) { return false; }

bool IsWriteProtected(std::filesystem::path const&) { return false; }

bool RemoveFolder(std::filesystem::path const& directory) {
  std::error_code error;
  // Mostly its file has been moved away.
  if (std::filesystem::remove(directory, error)) return true;
  std::filesystem::remove_all(directory, error);
  return !error;
}

void CloseFilesIn(std::filesystem::path const&) {}

}  // namespace sorrelin::tool
