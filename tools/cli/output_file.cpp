// Output under a temporary name, and its removal on every way out of the process.
#include "tools/cli/output_file.h"

#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <mutex>
#include <new>
#include <random>
#include <set>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "tools/cli/messages.h"
#include "tools/cli/text.h"
#include "tools/system/entries.h"
#include "tools/system/names.h"
#include "tools/system/program.h"

namespace sorrelin::tool {
namespace {

namespace fs = std::filesystem;

constexpr char kDocumentName[] = "document.pdf";
constexpr int kNameTries = 16;
constexpr char kPlaceRemedy[] = " (choose a directory that exists and may be written to)";
constexpr char kProtected[] = "is read-only (make it writable, or choose another name)";
constexpr char kHeld[] = "is held by another program (close it there, and run this again)";
constexpr DWORD kShareReaders = FILE_SHARE_READ | FILE_SHARE_DELETE;
constexpr size_t kCopyBytes = 1 << 16;
constexpr size_t kMarkWithin = 1024;  // bytes of a document

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// The temporary directories in use. The watching thread reads them; the mutex also keeps that
// thread from acting between the steps of a commit.
struct ActiveOutput {
  std::mutex mutex;
  std::set<fs::path> directories;
};

// Never destroyed: the watching thread may outlive static objects.
ActiveOutput& Active() {
  static ActiveOutput& active = *new ActiveOutput;
  return active;
}

// Memory may be short for a moment; and where open files cannot be removed, another thread may have
// opened one just now, or a program that looks into new files.
constexpr int kRemovalTries = 20;
constexpr std::chrono::milliseconds kBetweenTries{10};

bool Remove(fs::path const& directory, bool close_files) {
  try {
    if (close_files) CloseFilesIn(directory);
    return RemoveFolder(directory);
  } catch (std::bad_alloc const&) {
    return false;
  }
}

// With the mutex held.
void RemoveActive(ActiveOutput& active, fs::path const& directory, bool close_files = false) {
  if (active.directories.erase(directory) == 0) return;
  for (int i = 0; i < kRemovalTries && !Remove(directory, close_files); ++i) {
    std::this_thread::sleep_for(kBetweenTries);
  }
}

// With the mutex held. The device asks the processor what it can do each time it is made.
fs::path TemporaryName(fs::path const& target) {
  static std::random_device random;
  char name[40];
  std::snprintf(name, sizeof name, ".sorrelin-%08x%08x.tmp", random(), random());
  return target.parent_path() / name;
}

// Makes a directory that was not there, readable by its owner only. It is noted before it is made,
// so that it is removed on every way out. Empty with the reason if it cannot be made.
fs::path MakeDirectory(fs::path const& target, std::string& reason) {
  ActiveOutput& active = Active();
  std::lock_guard const lock(active.mutex);
  for (int i = 0; i < kNameTries; ++i) {
    fs::path directory = TemporaryName(target);
    auto const [noted, is_new] = active.directories.insert(directory);
    if (!is_new) continue;
    std::error_code error;
    if (fs::create_directory(directory, error)) {
      fs::permissions(directory, fs::perms::owner_all, error);
      return directory;
    }
    active.directories.erase(noted);
    if (error) return reason = error.message(), fs::path{};
  }
  return reason = "no temporary name is free", fs::path{};
}

bool MayWrite(fs::path const& target, fs::file_status const& status, bool replace,
              std::string& problem) {
  if (status.type() == fs::file_type::not_found) return true;
  if (!replace) return problem = "exists already (--force replaces it)", false;
  if (status.type() != fs::file_type::regular)
    return problem = "is not a regular file (choose another name)", false;
  return !IsWriteProtected(target) || (problem = kProtected, false);
}

// Why a file did not get its name, by the system's error.
std::string MoveProblem() {
  DWORD const error = GetLastError();
  if (error == ERROR_ALREADY_EXISTS) {
    return "exists already: it has come into being in the meantime (run this again)";
  }
  if (error == ERROR_SHARING_VIOLATION) return kHeld;
  return "cannot be written: " + LastSystemError() + kRoomRemedy;
}

// A replaced file keeps who may read it.
void KeepPermissions(fs::path const& target, fs::path const& path) {
  std::error_code error;
  fs::file_status const status = fs::status(target, error);
  if (fs::is_regular_file(status)) fs::permissions(path, status.permissions(), error);
}

}  // namespace

std::unique_ptr<OutputFile> OutputFile::Open(std::string const& target, bool replace,
                                             std::string& problem) {
  if (IsDeviceName(PathOf(target))) return problem = kDeviceProblem, nullptr;
  // A replaced link stays a link: what it names is replaced.
  fs::path const resolved = LinkTarget(PathOf(target));
  std::error_code error;
  fs::file_status status = fs::symlink_status(resolved, error);
  if (status.type() == fs::file_type::none) {
    problem = "cannot be created: " + error.message() + kPlaceRemedy;
    return nullptr;
  }
  if (!MayWrite(resolved, status, replace, problem)) return nullptr;
  std::string reason;
  auto output = Made(resolved, replace, resolved, reason);
  if (output == nullptr) problem = "cannot be created: " + reason + kPlaceRemedy;
  return output;
}

std::unique_ptr<OutputFile> OutputFile::Made(fs::path const& target, bool replace,
                                             fs::path const& beside, std::string& reason) {
  std::unique_ptr<OutputFile> output(new OutputFile(target, replace));
  output->directory_ = MakeDirectory(beside, reason);
  if (output->directory_.empty()) return nullptr;
  output->path_ = output->directory_ / kDocumentName;
  return output;
}

std::unique_ptr<OutputFile> OutputFile::OpenCopy(std::string const& target, std::string& problem) {
  auto output = Open(target, true, problem);
  if (output == nullptr) return nullptr;
  output->keep_owner_ = true;
  std::error_code error;
  if (fs::copy_file(output->target_, output->path_, error)) return output;
  problem = "cannot be copied: " + error.message() + kRoomRemedy;
  return nullptr;
}

std::unique_ptr<OutputFile> OutputFile::Temporary(std::string& problem) {
  std::error_code error;
  fs::path const temporary = fs::temp_directory_path(error);
  std::string reason = error.message();
  if (!error) {
    if (auto output = Made({}, false, temporary / kDocumentName, reason)) return output;
  }
  problem = reason + " (" + TemporaryVariable() + " names the directory for temporary files)";
  return nullptr;
}

OutputFile::OutputFile(fs::path target, bool replace)
    : target_(std::move(target)), replace_(replace) {}

OutputFile::~OutputFile() {
  ActiveOutput& active = Active();
  std::lock_guard const lock(active.mutex);
  RemoveActive(active, directory_);
}

bool OutputFile::Commit(std::string& problem, Durability durability) {
  return target_.empty() ? Copy(problem) : Rename(problem, durability);
}

bool OutputFile::Copy(std::string& problem) const {
  std::unique_ptr<std::FILE, FileCloser> const file(std::fopen(path_.string().c_str(), "rb"));
  bool copied = file != nullptr;
  std::vector<char> buffer(kCopyBytes);
  while (copied && std::feof(file.get()) == 0) {
    size_t const bytes = std::fread(buffer.data(), 1, buffer.size(), file.get());
    copied = std::ferror(file.get()) == 0 && std::fwrite(buffer.data(), 1, bytes, stdout) == bytes;
  }
  copied = copied && std::fflush(stdout) == 0;
  int const error = copied ? 0 : WriteErrorOfStream();
  if (!copied && error != EPIPE) {
    problem = "cannot be written: " + std::generic_category().message(error) + kRoomRemedy;
  }
  // The caller knows by now, and nothing else is said of it.
  if (!copied) std::clearerr(stdout);
  return copied;
}

bool IsOtherFile(std::string const& name) {
  std::error_code error;
  if (!fs::is_regular_file(PathOf(name), error)) return false;
  std::unique_ptr<std::FILE, FileCloser> const file(std::fopen(name.c_str(), "rb"));
  if (file == nullptr) return false;
  // Readers of documents accept some bytes before the mark.
  std::string start(kMarkWithin, '\0');
  start.resize(std::fread(start.data(), 1, start.size(), file.get()));
  return !start.empty() && start.find("%PDF-") == std::string::npos;
}

bool OutputFile::Rename(std::string& problem, Durability durability) {
  ActiveOutput& active = Active();
  bool const on_disk = durability == Durability::kOnDisk;
  if (on_disk && !FlushFile(path_)) {
    return problem = "cannot be written: " + LastSystemError() + kRoomRemedy, false;
  }
  std::lock_guard const lock(active.mutex);
  bool const moved = Move(on_disk);
  if (!moved) problem = MoveProblem();
  RemoveActive(active, directory_);
  return moved;
}

bool OutputFile::Move(bool on_disk) const {
  bool const moved = keep_owner_ ? ReplaceKeepingAccess(target_, path_) : MoveToTarget(on_disk);
  if (moved) return true;
  DWORD const error = GetLastError();
  SetLastError(replace_ && IsHeld(target_) ? ERROR_SHARING_VIOLATION : error);
  return false;
}

bool OutputFile::MoveToTarget(bool on_disk) const {
  if (replace_) KeepPermissions(target_, path_);
  // Some systems move files by their full names only.
  WideText const from = WideName(FullName(path_));
  WideText const to = WideName(FullName(target_));
  DWORD const flags =
      (on_disk ? MOVEFILE_WRITE_THROUGH : 0) | (replace_ ? MOVEFILE_REPLACE_EXISTING : 0);
  return MoveFileExW(from.c_str(), to.c_str(), flags) != FALSE;
}

bool FlushFile(fs::path const& path) {
  HANDLE const file = CreateFileW(WideName(path).c_str(), GENERIC_WRITE, kShareReaders, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  bool const flushed = FlushFileBuffers(file) != FALSE;
  DWORD const error = GetLastError();
  CloseHandle(file);
  SetLastError(error);
  return flushed;
}

void RemoveOutputForGood() {
  ActiveOutput& active = Active();
  active.mutex.lock();
  while (!active.directories.empty()) {
    fs::path const directory = *active.directories.begin();
    RemoveActive(active, directory, true);
  }
}

}  // namespace sorrelin::tool
