// System error numbers on POSIX: one per thread, in Windows numbering, with the system's texts.
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/posix_support.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace sorrelin {
namespace {

thread_local DWORD last_error = ERROR_SUCCESS;

struct ErrnoRow {
  int number;
  DWORD error;
};

// The first row of an errno gives its number; the first row of a number is the errno that it maps
// for, which for a missing directory is the one of a missing file.
constexpr ErrnoRow kErrnoRows[] = {
    {0, ERROR_SUCCESS},
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {ENOENT, ERROR_PATH_NOT_FOUND},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
    {EACCES, ERROR_ACCESS_DENIED},
    {EPERM, ERROR_ACCESS_DENIED},
    {EISDIR, ERROR_ACCESS_DENIED},
    {EBADF, ERROR_INVALID_HANDLE},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {EROFS, ERROR_WRITE_PROTECT},
    {EWOULDBLOCK, ERROR_SHARING_VIOLATION},
    {EBUSY, ERROR_SHARING_VIOLATION},
    {ETXTBSY, ERROR_SHARING_VIOLATION},
    {EOPNOTSUPP, ERROR_NOT_SUPPORTED},
    {ENOSYS, ERROR_NOT_SUPPORTED},
    {EEXIST, ERROR_FILE_EXISTS},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {EFAULT, ERROR_INVALID_PARAMETER},
    {EOVERFLOW, ERROR_INVALID_PARAMETER},
    {EPIPE, ERROR_BROKEN_PIPE},
    {ENOSPC, ERROR_DISK_FULL},
    {EDQUOT, ERROR_DISK_FULL},
    {EILSEQ, ERROR_INVALID_NAME},
    {ELOOP, ERROR_INVALID_NAME},
    {ESPIPE, ERROR_SEEK_ON_DEVICE},
    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
    {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
    {EFBIG, ERROR_FILE_TOO_LARGE},
    {EIO, ERROR_IO_DEVICE},
};

struct TextRow {
  DWORD error;
  char const* text;
};

// Numbers that map to no errno, or to one whose text would mislead.
constexpr TextRow kTextRows[] = {
    {ERROR_INVALID_HANDLE, "Invalid handle"},
    {ERROR_GEN_FAILURE, "General system failure"},
    {ERROR_SHARING_VIOLATION, "The file is in use"},
    {ERROR_HANDLE_EOF, "The end of the file was reached"},
    {ERROR_INSUFFICIENT_BUFFER, "The buffer is too small"},
    {ERROR_INVALID_NAME, "Invalid file name"},
    {ERROR_MOD_NOT_FOUND, "The shared library was not found"},
    {ERROR_PROC_NOT_FOUND, "The shared library has no such entry point"},
    {ERROR_NEGATIVE_SEEK, "The position is before the start of the file"},
    {ERROR_DISCARDED, "The memory block is empty"},
    {ERROR_NOT_LOCKED, "The memory block is not locked"},
    {ERROR_ALREADY_EXISTS, "The file exists already"},
    {ERROR_PROCESS_ABORTED, "The process ended unexpectedly"},
    {ERROR_NOT_FOUND, "Not found"},
    {ERROR_CANCELLED, "The operation was cancelled"},
    {ERROR_FILE_READ_ONLY, "The document is read-only"},
};

// strerror_r has two forms, which differ in their results.
[[maybe_unused]] char const* StrerrorText(int result, char const* buffer) {
  return result == 0 ? buffer : "Unknown error";
}
[[maybe_unused]] char const* StrerrorText(char const* result, char const*) { return result; }

std::string SystemText(DWORD error) {
  for (TextRow const& row : kTextRows) {
    if (row.error == error) return row.text;
  }
  for (ErrnoRow const& row : kErrnoRows) {
    if (row.error != error) continue;
    char buffer[256] = "";
    return StrerrorText(strerror_r(row.number, buffer, sizeof buffer), buffer);
  }
  return "System error " + std::to_string(error);
}

}  // namespace

DWORD ErrorOfErrno(int error) {
  for (ErrnoRow const& row : kErrnoRows) {
    if (row.number == error) return row.error;
  }
  return ERROR_GEN_FAILURE;
}

}  // namespace sorrelin

void SetLastError(DWORD error) { sorrelin::last_error = error; }

DWORD GetLastError() { return sorrelin::last_error; }

DWORD FormatMessageA(DWORD flags, void const*, DWORD id, DWORD, char* buffer, DWORD, void*) {
  constexpr DWORD kServed =
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;
  if (flags != kServed || buffer == nullptr) return sorrelin::Fail(ERROR_INVALID_PARAMETER, 0u);
  char* text = nullptr;
  std::memcpy(buffer, &text, sizeof text);
  return sorrelin::Guarded(0u, [&] {
    std::string const content = sorrelin::SystemText(id);
    text = static_cast<char*>(std::malloc(content.size() + 1));
    if (text == nullptr) throw std::bad_alloc();
    std::memcpy(text, content.c_str(), content.size() + 1);
    std::memcpy(buffer, &text, sizeof text);
    return static_cast<DWORD>(content.size());
  });
}

void* LocalFree(void* memory) {
  std::free(memory);
  return nullptr;
}
