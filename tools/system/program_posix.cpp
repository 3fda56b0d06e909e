// The program on POSIX, where streams are bytes and a crash ends a child alone.
#include "tools/system/program.h"

#include <system_error>

namespace sorrelin::tool {

void PrepareStreams() {}

void TidyUpOnCrash(void (*)(), int) {}

bool HasChildProcesses() { return true; }

bool IsDeviceName(std::filesystem::path const&) { return false; }

bool IsHeld(std::filesystem::path const&) { return false; }

bool RemoveFolder(std::filesystem::path const& directory) {
  std::error_code error;
  // Mostly its file has been moved away.
  if (std::filesystem::remove(directory, error)) return true;
  std::filesystem::remove_all(directory, error);
  return !error;
}

void CloseFilesIn(std::filesystem::path const&) {}

}  // namespace sorrelin::tool
