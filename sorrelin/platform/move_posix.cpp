// Renaming of files on POSIX.
#include <fcntl.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/posix_support.h>
#include <sys/stat.h>
#include <unistd.h>
#if defined(__linux__)
#include <sys/xattr.h>
#endif

#include <cerrno>
#include <cstdio>
#include <vector>

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

constexpr mode_t kPermissions = 07777;

// The list of users and groups that may do more than the permissions say. A file without one, or a
// system without such lists, is no failure.
bool CopyAccessList([[maybe_unused]] std::string const& from,
                    [[maybe_unused]] std::string const& to) {
#if defined(__linux__)
  constexpr char kName[] = "system.posix_acl_access";
  ssize_t const size = getxattr(from.c_str(), kName, nullptr, 0);
  if (size <= 0) return size == 0 || errno == ENODATA || errno == EOPNOTSUPP;
  std::vector<char> list(static_cast<size_t>(size));
  ssize_t const read = getxattr(from.c_str(), kName, list.data(), list.size());
  return read >= 0 && setxattr(to.c_str(), kName, list.data(), static_cast<size_t>(read), 0) == 0;
#else
  return true;
#endif
}

// Owner first: a change of owner takes permissions away.
bool CopyAccess(std::string const& from, std::string const& to) {
  struct stat wanted {};
  struct stat own {};
  if (stat(from.c_str(), &wanted) == -1 || stat(to.c_str(), &own) == -1) return false;
  bool const same = own.st_uid == wanted.st_uid && own.st_gid == wanted.st_gid;
  if (!same && chown(to.c_str(), wanted.st_uid, wanted.st_gid) == -1) return false;
  return chmod(to.c_str(), wanted.st_mode & kPermissions) == 0 && CopyAccessList(from, to);
}

BOOL Replace(std::string const& replaced, std::string const& replacement) {
  if (!CopyAccess(replaced, replacement)) return Fail(ErrorOfErrno(errno), FALSE);
  return Move(replacement, replaced, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
}

// Calls use(first, second) with the paths of two names, or fails with the system error.
template <typename Use>
BOOL WithPaths(WCHAR const* first, WCHAR const* second, Use use) {
  if (first == nullptr || second == nullptr) return Fail(ERROR_INVALID_PARAMETER, FALSE);
  return Guarded(FALSE, [&] {
    auto const first_path = Utf8Path(first);
    auto const second_path = Utf8Path(second);
    if (!first_path || !second_path) return Fail(ERROR_INVALID_NAME, FALSE);
    return use(*first_path, *second_path);
  });
}

}  // namespace
}  // namespace sorrelin

BOOL MoveFileExW(WCHAR const* from, WCHAR const* to, DWORD flags) {
  if ((flags & ~(MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) != 0) {
    return sorrelin::Fail(ERROR_INVALID_PARAMETER, FALSE);
  }
  return sorrelin::WithPaths(from, to, [&](std::string const& source, std::string const& target) {
    return sorrelin::Move(source, target, flags);
  });
}

BOOL ReplaceFileW(WCHAR const* replaced, WCHAR const* replacement, WCHAR const* backup, DWORD flags,
                  void* exclude, void* reserved) {
  if (backup != nullptr || flags != 0 || exclude != nullptr || reserved != nullptr) {
    return sorrelin::Fail(ERROR_INVALID_PARAMETER, FALSE);
  }
  return sorrelin::WithPaths(replaced, replacement, sorrelin::Replace);
}
