// Changes of the process's surroundings that end with their scope.
#ifndef TESTS_SUPPORT_ENVIRONMENT_H_
#define TESTS_SUPPORT_ENVIRONMENT_H_

#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace test {

class EnvironmentValue {
 public:
  EnvironmentValue(char const* name, std::string const& value) : name_(name) {
    if (char const* const old = std::getenv(name)) old_ = old;
    ::setenv(name, value.c_str(), 1);
  }
  ~EnvironmentValue() {
    if (old_) {
      ::setenv(name_, old_->c_str(), 1);
    } else {
      ::unsetenv(name_);
    }
  }
  EnvironmentValue(EnvironmentValue const&) = delete;
  EnvironmentValue& operator=(EnvironmentValue const&) = delete;

 private:
  char const* name_;
  std::optional<std::string> old_;
};

// Runs `work` while no file can be opened, and so no library loaded, that is not open already. The
// sanitizers' check of virtual objects opens files too: `work` keeps away from those.
template <typename Work>
auto WithoutFiles(Work work) {
  rlimit old{};
  ::getrlimit(RLIMIT_NOFILE, &old);
  rlimit none = old;
  none.rlim_cur = 0;
  ::setrlimit(RLIMIT_NOFILE, &none);
  auto result = work();
  ::setrlimit(RLIMIT_NOFILE, &old);
  return result;
}

// No file grows past `bytes` bytes: a write after them fails.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(size_t bytes) : handler_(::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &old_);
    rlimit limit = old_;
    limit.rlim_cur = bytes;
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &old_);
    ::signal(SIGXFSZ, handler_);
  }
  FileSizeLimit(FileSizeLimit const&) = delete;
  FileSizeLimit& operator=(FileSizeLimit const&) = delete;

 private:
  rlimit old_{};
  sighandler_t handler_;
};

// Names of what a directory holds.
inline std::vector<std::string> NamesIn(std::filesystem::path const& directory) {
  std::vector<std::string> names;
  for (auto const& entry : std::filesystem::directory_iterator(directory)) {
    names.push_back(entry.path().filename().string());
  }
  return names;
}

}  // namespace test

#endif  // TESTS_SUPPORT_ENVIRONMENT_H_
