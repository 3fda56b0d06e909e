// Files under test: a handle that closes itself, and work done in a process of its own.
#ifndef TESTS_PLATFORM_FILE_SUPPORT_H_
#define TESTS_PLATFORM_FILE_SUPPORT_H_

#include <sorrelin/platform/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <utility>

namespace test {

class File {
 public:
  explicit File(HANDLE handle) : handle_(handle) {}
  File(std::filesystem::path const& path, DWORD access, DWORD disposition, DWORD flags = 0)
      : File(CreateFileW(path.u16string().c_str(), access, FILE_SHARE_READ, nullptr, disposition,
                         flags, nullptr)) {}
  ~File() { Close(); }
  File(File const&) = delete;
  File& operator=(File const&) = delete;

  operator HANDLE() const { return handle_; }
  bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
  bool Close() {
    HANDLE const handle = std::exchange(handle_, INVALID_HANDLE_VALUE);
    return handle != INVALID_HANDLE_VALUE && CloseHandle(handle) != 0;
  }
  bool Write(std::string const& text) {
    DWORD count = 0;
    BOOL const written =
        WriteFile(handle_, text.data(), static_cast<DWORD>(text.size()), &count, nullptr);
    return written != 0 && count == text.size();
  }
  // Up to `size` bytes from the position on; "failed" if the read fails.
  std::string Read(DWORD size) {
    std::string text(size, '?');
    DWORD count = 0;
    if (ReadFile(handle_, text.data(), size, &count, nullptr) == 0) return "failed";
    text.resize(count);
    return text;
  }

 private:
  HANDLE handle_;
};

// The exit code of a child process that runs `work`, which returns it; -1 if a signal ended it.
template <typename Work>
int InChild(Work work) {
  pid_t const child = fork();
  if (child == 0) _exit(work());
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace test

#endif  // TESTS_PLATFORM_FILE_SUPPORT_H_
