// Locks the names of documents. The lock is the system's and ends with the process; the file may
// outlive it.
#include "tools/batch/output_lock.h"

#include <sorrelin/platform/error.h>

#include <system_error>

#include "tools/cli/messages.h"
#include "tools/cli/text.h"

namespace sorrelin::tool {
namespace {

namespace fs = std::filesystem;

fs::path LockName(fs::path const& output) {
  fs::path name = ".";
  name += output.filename();
  name += ".sorrelin-lock";
  return output.parent_path() / name;
}

bool Exists(fs::path const& path) {
  std::error_code error;
  return fs::exists(path, error);
}

}  // namespace

OutputLock::OutputLock(std::string const& output)
    : path_(LockName(PathOf(output))), was_there_(Exists(path_)) {}

OutputLock::~OutputLock() {
  if (file_ != INVALID_HANDLE_VALUE) CloseHandle(file_);
}

OutputLock::Taken OutputLock::Take(std::string& problem) {
  file_ = CreateFileW(WideName(path_).c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                      FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file_ != INVALID_HANDLE_VALUE) return Taken::kYes;
  if (GetLastError() == ERROR_SHARING_VIOLATION) {
    problem = "is being made by another worker (run this again when that has ended)";
    return Taken::kBusy;
  }
  problem = "cannot be locked: " + LastSystemError() +
            " (choose a directory that exists and may be written to)";
  return Taken::kFailed;
}

void OutputLock::Remove() {
  if (file_ == INVALID_HANDLE_VALUE) return;
  // Removed while it is held, so that nobody takes a lock that is about to lose its name; not every
  // system removes a file that is open.
  bool const removed = DeleteFileW(WideName(path_).c_str()) != FALSE;
  CloseHandle(file_);
  file_ = INVALID_HANDLE_VALUE;
  if (!removed) DeleteFileW(WideName(path_).c_str());
}

}  // namespace sorrelin::tool
