// Renaming of files on POSIX.
#include <fcntl.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/posix_support.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace sorrelin {
namespace {

// Renames unless the new name exists. Where the file system cannot do this in one call, a second
// link that must be new, and then the removal of the first, give the same.
bool RenameToNewName(char const* from, char const* to) {
#if defined(RENAME_NOREPLACE)
  if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
#endif
  return link(from, to) == 0 && unlink(from) == 0;
}

bool FlushDirectoryOf(std::string const& path) {
  size_t const separator = path.rfind('/');
  std::string const directory =
      separator == std::string::npos ? "." : path.substr(0, separator + 1);
  int const descriptor = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor == -1) return false;
  // A file system that cannot flush a directory says so with EINVAL and keeps names by itself.
  bool const flushed = fsync(descriptor) == 0 || errno == EINVAL;
  int const error = errno;
  close(descriptor);
  errno = error;
  return flushed;
}

BOOL Move(std::string const& from, std::string const& to, DWORD flags) {
  bool const moved = (flags & MOVEFILE_REPLACE_EXISTING) != 0
                         ? rename(from.c_str(), to.c_str()) == 0
                         : RenameToNewName(from.c_str(), to.c_str());
  if (!moved) return Fail(errno == EEXIST ? ERROR_ALREADY_EXISTS : ErrorOfErrno(errno), FALSE);
  if ((flags & MOVEFILE_WRITE_THROUGH) != 0 && !FlushDirectoryOf(to)) {
    return Fail(ErrorOfErrno(errno), FALSE);
  }
  return TRUE;
}

}  // namespace
}  // namespace sorrelin

BOOL MoveFileExW(WCHAR const* from, WCHAR const* to, DWORD flags) {
  if (from == nullptr || to == nullptr) return sorrelin::Fail(ERROR_INVALID_PARAMETER, FALSE);
  if ((flags & ~(MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) != 0) {
    return sorrelin::Fail(ERROR_INVALID_PARAMETER, FALSE);
  }
  return sorrelin::Guarded(FALSE, [&] {
    auto const source = sorrelin::Utf8Path(from);
    auto const target = sorrelin::Utf8Path(to);
    if (!source || !target) return sorrelin::Fail(ERROR_INVALID_NAME, FALSE);
    return sorrelin::Move(*source, *target, flags);
  });
}
