// Files on POSIX: handles over descriptors, with advisory locks for sharing.
#include <fcntl.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/handle_table.h>
#include <sorrelin/platform/posix_support.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace sorrelin {
namespace {

struct FileRecord {
  int descriptor;
  bool readable;
  bool writable;
};

using FileTable = HandleTable<FileRecord, HandleKind::kFile>;

// Never destroyed: files may be closed by destructors that run at exit.
FileTable& Files() {
  static NeverDestroyed<FileTable> table;
  return table.value();
}

// A handle that becomes a file's, or goes again. Made before the file, so that no file is left
// where there is no memory for its handle.
class NewHandle {
 public:
  NewHandle() : handle_(Files().Insert({-1, false, false})) {}
  ~NewHandle() {
    if (handle_ != nullptr) Files().RemoveIf(handle_, [](FileRecord const&) { return true; });
  }
  NewHandle(NewHandle const&) = delete;
  NewHandle& operator=(NewHandle const&) = delete;

  HANDLE Take(FileRecord const& file) {
    Files().Visit(handle_, [&](FileRecord& record) { record = file; });
    return std::exchange(handle_, nullptr);
  }

 private:
  HANDLE handle_;
};

// Repeats a system call that a signal broke off.
template <typename Call>
auto Retry(Call call) {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

// Closes a descriptor unless it is released.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ != -1) close(number_);
  }
  Descriptor(Descriptor const&) = delete;
  Descriptor& operator=(Descriptor const&) = delete;
  int get() const { return number_; }
  int Release() { return std::exchange(number_, -1); }

 private:
  int number_;
};

bool IsDirectory(std::string const& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// The directory part of a path, with its final separator; "." for a bare name.
std::string ParentOf(std::string const& path) {
  size_t const separator = path.rfind('/');
  return separator == std::string::npos ? "." : path.substr(0, separator + 1);
}

// The error for a failed call on a name: a missing file differs from a missing directory.
DWORD ErrorOfPath(int error, std::string const& path) {
  bool const no_parent = error == ENOENT && !IsDirectory(ParentOf(path));
  return no_parent ? ERROR_PATH_NOT_FOUND : ErrorOfErrno(error);
}

// Calls use(path) with the UTF-8 path of a name, or returns `failure` with the system error.
template <typename Result, typename Use>
Result WithPath(WCHAR const* name, Result failure, Use use) {
  if (name == nullptr || *name == 0) return Fail(ERROR_PATH_NOT_FOUND, failure);
  return Guarded(failure, [&] {
    auto const path = Utf8Path(name);
    return path ? use(*path) : Fail(ERROR_INVALID_NAME, failure);
  });
}

struct OpenRequest {
  bool readable;
  bool writable;
  DWORD disposition;
  DWORD flags;
};

bool Truncates(OpenRequest const& request) {
  return request.disposition == CREATE_ALWAYS || request.disposition == TRUNCATE_EXISTING;
}

int OpenFlags(OpenRequest const& request) {
  int flags = O_CLOEXEC | O_NOCTTY;
  flags |= request.writable ? (request.readable ? O_RDWR : O_WRONLY) : O_RDONLY;
  if (request.disposition == CREATE_NEW) flags |= O_CREAT | O_EXCL;
  if (request.disposition == CREATE_ALWAYS) flags |= O_CREAT;
  if (request.disposition == OPEN_ALWAYS) flags |= O_CREAT;
  return flags;
}

// False, with error 32, if another open of the file conflicts with it. A file system without locks
// is used without.
bool TakeLock(int descriptor, bool exclusive) {
  int const operation = (exclusive ? LOCK_EX : LOCK_SH) | LOCK_NB;
  if (Retry([&] { return flock(descriptor, operation); }) == 0) return true;
  if (errno == EWOULDBLOCK) return Fail(ERROR_SHARING_VIOLATION, false);
  bool const no_locks =
      errno == ENOLCK || errno == ENOSYS || errno == EOPNOTSUPP || errno == EINVAL;
  return no_locks ? true : Fail(ErrorOfErrno(errno), false);
}

// Locks first and truncates after: a file that another session holds keeps its content.
bool Prepare(int descriptor, OpenRequest const& request) {
  struct stat status {};
  if (fstat(descriptor, &status) == -1) return Fail(ErrorOfErrno(errno), false);
  if (S_ISDIR(status.st_mode)) return Fail(ERROR_ACCESS_DENIED, false);
  if (!TakeLock(descriptor, request.writable)) return false;
  if (Truncates(request) && S_ISREG(status.st_mode)) {
    bool const failed = Retry([&] { return ftruncate(descriptor, 0); }) == -1;
    if (failed) return Fail(ErrorOfErrno(errno), false);
  }
#if defined(POSIX_FADV_SEQUENTIAL)
  if ((request.flags & FILE_FLAG_SEQUENTIAL_SCAN) != 0) {
    posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
  }
#endif
  return true;
}

// Whether the name has gone, or gone to another file, since the descriptor was opened by it.
bool IsReplaced(int descriptor, std::string const& path) {
  struct stat held {};
  struct stat named {};
  if (stat(path.c_str(), &named) == -1) return errno == ENOENT;
  return fstat(descriptor, &held) == 0 &&
         (held.st_dev != named.st_dev || held.st_ino != named.st_ino);
}

// A session that holds a file may replace it before it lets go, and then the lock is on a file that
// has lost its name.
HANDLE Open(std::string const& path, OpenRequest const& request) {
  bool const temporary = (request.flags & FILE_ATTRIBUTE_TEMPORARY) != 0;
  mode_t const mode = temporary ? 0600 : 0666;
  NewHandle handle;
  Descriptor descriptor(Retry([&] { return open(path.c_str(), OpenFlags(request), mode); }));
  if (descriptor.get() == -1) return Fail(ErrorOfPath(errno, path), INVALID_HANDLE_VALUE);
  if (!Prepare(descriptor.get(), request)) return INVALID_HANDLE_VALUE;
  if (request.writable && IsReplaced(descriptor.get(), path)) {
    return Fail(ERROR_SHARING_VIOLATION, INVALID_HANDLE_VALUE);
  }
  return handle.Take({descriptor.Release(), request.readable, request.writable});
}

bool IsServed(OpenRequest const& request) {
  if (Truncates(request) && !request.writable) return false;
  return (request.readable || request.writable) && request.disposition >= CREATE_NEW &&
         request.disposition <= TRUNCATE_EXISTING;
}

// The record of a file handle, or nothing with error 6.
std::optional<FileRecord> FileOf(HANDLE handle) {
  auto const file = Files().Get(handle);
  if (!file) SetLastError(ERROR_INVALID_HANDLE);
  return file;
}

// Transfers `bytes` bytes by call(offset, bytes), which may do less each time, until it yields 0.
// False with the system error if it fails; `count` holds what was transferred.
template <typename Call>
BOOL Transfer(DWORD bytes, DWORD& count, Call call) {
  while (count < bytes) {
    ssize_t const done = Retry([&] { return call(count, bytes - count); });
    if (done == -1) return Fail(ErrorOfErrno(errno), FALSE);
    if (done == 0) break;
    count += static_cast<DWORD>(done);
  }
  return TRUE;
}

// The low 32 bits of a position or size. One that reads like a failure sets error 0.
DWORD LowWord(off_t value) {
  DWORD const low = static_cast<DWORD>(value);
  return low == INVALID_SET_FILE_POINTER ? Fail(ERROR_SUCCESS, low) : low;
}

// Transfers bytes of a file that was opened with `right`, by call(descriptor, offset, bytes).
// `sound` is whether the other arguments are; else error 87. `count` may be null.
template <typename Call>
BOOL TransferOf(HANDLE handle, bool FileRecord::*right, bool sound, DWORD bytes, DWORD* count,
                Call call) {
  DWORD done = 0;
  DWORD& total = count != nullptr ? *count : done;
  total = 0;
  auto const file = FileOf(handle);
  if (!file) return FALSE;
  if (!sound) return Fail(ERROR_INVALID_PARAMETER, FALSE);
  if (!((*file).*right)) return Fail(ERROR_ACCESS_DENIED, FALSE);
  return Transfer(bytes, total,
                  [&](DWORD offset, DWORD size) { return call(file->descriptor, offset, size); });
}

}  // namespace
}  // namespace sorrelin

HANDLE CreateFileW(WCHAR const* name, DWORD access, DWORD, void* security, DWORD disposition,
                   DWORD flags, HANDLE template_file) {
  sorrelin::OpenRequest const request{(access & GENERIC_READ) != 0, (access & GENERIC_WRITE) != 0,
                                      disposition, flags};
  if (security != nullptr || template_file != nullptr || !sorrelin::IsServed(request)) {
    return sorrelin::Fail(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
  }
  return sorrelin::WithPath(name, INVALID_HANDLE_VALUE,
                            [&](std::string const& path) { return sorrelin::Open(path, request); });
}

BOOL ReadFile(HANDLE handle, void* buffer, DWORD bytes, DWORD* count, void* overlapped) {
  auto const take = [buffer](int descriptor, DWORD offset, DWORD size) {
    return read(descriptor, static_cast<char*>(buffer) + offset, size);
  };
  return sorrelin::TransferOf(handle, &sorrelin::FileRecord::readable, overlapped == nullptr, bytes,
                              count, take);
}

BOOL ReadFileAt(HANDLE handle, uint64_t offset, void* buffer, DWORD bytes, DWORD* count) {
  off_t const start = static_cast<off_t>(offset);
  auto const take = [buffer, start](int descriptor, DWORD at, DWORD size) {
    return pread(descriptor, static_cast<char*>(buffer) + at, size, start + at);
  };
  return sorrelin::TransferOf(handle, &sorrelin::FileRecord::readable, offset <= INT64_MAX, bytes,
                              count, take);
}

BOOL WriteFile(HANDLE handle, void const* buffer, DWORD bytes, DWORD* count, void* overlapped) {
  DWORD done = 0;
  DWORD& total = count != nullptr ? *count : done;
  auto const put = [buffer](int descriptor, DWORD offset, DWORD size) {
    return write(descriptor, static_cast<char const*>(buffer) + offset, size);
  };
  BOOL const written = sorrelin::TransferOf(handle, &sorrelin::FileRecord::writable,
                                            overlapped == nullptr, bytes, &total, put);
  if (written != FALSE && total < bytes) return sorrelin::Fail(ERROR_DISK_FULL, FALSE);
  return written;
}

DWORD SetFilePointer(HANDLE handle, LONG offset, LONG* high, DWORD origin) {
  auto const file = sorrelin::FileOf(handle);
  if (!file) return INVALID_SET_FILE_POINTER;
  int64_t distance = offset;
  if (high != nullptr) {
    uint64_t const joined = static_cast<uint64_t>(*high) << 32 | static_cast<DWORD>(offset);
    distance = static_cast<int64_t>(joined);
  }
  static_assert(FILE_BEGIN == SEEK_SET && FILE_CURRENT == SEEK_CUR && FILE_END == SEEK_END);
  if (origin > FILE_END) return sorrelin::Fail(ERROR_INVALID_PARAMETER, INVALID_SET_FILE_POINTER);
  off_t const position = lseek(file->descriptor, distance, static_cast<int>(origin));
  if (position == -1) {
    DWORD const error = errno == EINVAL ? ERROR_NEGATIVE_SEEK : sorrelin::ErrorOfErrno(errno);
    return sorrelin::Fail(error, INVALID_SET_FILE_POINTER);
  }
  if (high != nullptr) *high = static_cast<LONG>(position >> 32);
  return sorrelin::LowWord(position);
}

BOOL SetEndOfFile(HANDLE handle) {
  auto const file = sorrelin::FileOf(handle);
  if (!file) return FALSE;
  if (!file->writable) return sorrelin::Fail(ERROR_ACCESS_DENIED, FALSE);
  off_t const end = lseek(file->descriptor, 0, SEEK_CUR);
  bool const done =
      end != -1 && sorrelin::Retry([&] { return ftruncate(file->descriptor, end); }) == 0;
  return done ? TRUE : sorrelin::Fail(sorrelin::ErrorOfErrno(errno), FALSE);
}

DWORD GetFileSize(HANDLE handle, DWORD* high) {
  auto const file = sorrelin::FileOf(handle);
  if (!file) return INVALID_FILE_SIZE;
  struct stat status {};
  if (fstat(file->descriptor, &status) == -1) {
    return sorrelin::Fail(sorrelin::ErrorOfErrno(errno), INVALID_FILE_SIZE);
  }
  if (high != nullptr) *high = static_cast<DWORD>(status.st_size >> 32);
  return sorrelin::LowWord(status.st_size);
}

BOOL FlushFileBuffers(HANDLE handle) {
  auto const file = sorrelin::FileOf(handle);
  if (!file) return FALSE;
  if (!file->writable) return sorrelin::Fail(ERROR_ACCESS_DENIED, FALSE);
  bool const done = sorrelin::Retry([&] { return fsync(file->descriptor); }) == 0;
  return done ? TRUE : sorrelin::Fail(sorrelin::ErrorOfErrno(errno), FALSE);
}

BOOL CloseHandle(HANDLE handle) {
  auto const file =
      sorrelin::Files().RemoveIf(handle, [](sorrelin::FileRecord const&) { return true; });
  if (!file) return sorrelin::Fail(ERROR_INVALID_HANDLE, FALSE);
  // The descriptor is gone after EINTR too; a second close could hit another thread's file.
  if (close(file->descriptor) == 0 || errno == EINTR) return TRUE;
  return sorrelin::Fail(sorrelin::ErrorOfErrno(errno), FALSE);
}

BOOL DeleteFileW(WCHAR const* name) {
  return sorrelin::WithPath(name, FALSE, [](std::string const& path) {
    if (unlink(path.c_str()) == 0) return TRUE;
    return sorrelin::Fail(sorrelin::ErrorOfPath(errno, path), FALSE);
  });
}

DWORD GetFileAttributesW(WCHAR const* name) {
  return sorrelin::WithPath(name, INVALID_FILE_ATTRIBUTES, [](std::string const& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) == -1) {
      return sorrelin::Fail(sorrelin::ErrorOfPath(errno, path), INVALID_FILE_ATTRIBUTES);
    }
    return S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
  });
}
