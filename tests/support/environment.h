// Changes of the process's surroundings that end with their scope, and what the system counts for
// the process. One source for each system.
#ifndef TESTS_SUPPORT_ENVIRONMENT_H_
#define TESTS_SUPPORT_ENVIRONMENT_H_

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace test {

// The environment variable that names the folder of temporary files.
extern char const* const kTempFolderVariable;

// A folder that is there and in which nobody may create files.
extern char const* const kFolderThatTakesNoFiles;

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

// No library can be loaded by its name alone that is not loaded already. Where that means that no
// file can be opened, the sanitizers' check of virtual objects cannot open any either: keep away
// from those meanwhile.
class NoLibraries {
 public:
  NoLibraries();
  ~NoLibraries();
  NoLibraries(NoLibraries const&) = delete;
  NoLibraries& operator=(NoLibraries const&) = delete;

 private:
  struct Before;
  Before* before_;
};

template <typename Work>
auto WithoutLibraries(Work work) {
  NoLibraries const none;
  return work();
}

// No file that the test program itself writes grows past `bytes` bytes: a write after them fails.
class FileSizeLimit {
 public:
  enum class Failures { kAll, kFirst };

  // With `kFirst` the limit is gone once a write has failed.
  explicit FileSizeLimit(size_t bytes, Failures failures = Failures::kAll);
  ~FileSizeLimit();
  FileSizeLimit(FileSizeLimit const&) = delete;
  FileSizeLimit& operator=(FileSizeLimit const&) = delete;
};

// The process gets no more memory than it has now and `more` bytes.
class MemoryLimit {
 public:
  explicit MemoryLimit(size_t more);
  ~MemoryLimit();
  MemoryLimit(MemoryLimit const&) = delete;
  MemoryLimit& operator=(MemoryLimit const&) = delete;
};

// The process has no more rights than any user's; an administrator's come back with the end.
class OrdinaryUser {
 public:
  OrdinaryUser();
  ~OrdinaryUser();
  OrdinaryUser(OrdinaryUser const&) = delete;
  OrdinaryUser& operator=(OrdinaryUser const&) = delete;
};

// A pipe without data whose end for readers has a name.
class Pipe {
 public:
  Pipe();
  ~Pipe();
  Pipe(Pipe const&) = delete;
  Pipe& operator=(Pipe const&) = delete;

  std::filesystem::path const& path() const { return path_; }

 private:
  struct Ends;
  Ends* ends_;
  std::filesystem::path path_;
};

// Files in a folder that the process leaves open are closed at the end of this object, where an
// open file could not be removed.
class LeftOpen {
 public:
  explicit LeftOpen(std::filesystem::path const& folder) : folder_(folder) {}
  ~LeftOpen();
  LeftOpen(LeftOpen const&) = delete;
  LeftOpen& operator=(LeftOpen const&) = delete;

 private:
  std::filesystem::path folder_;
};

// Files that the process has open.
size_t OpenHandles();

// Bytes that the process has read from files.
uint64_t BytesRead();

// Bytes that there is room for in what malloc gave.
size_t RoomOf(void* allocated);

// The most memory that the process ever had in use, in bytes.
size_t PeakBytes();

// The file of the test program.
std::filesystem::path ProgramPath();

// A library that the system finds by its name, and an entry point of it.
extern char const* const kSystemLibrary;
extern char const* const kSystemEntryPoint;

// The system's name for the file of a library.
std::string LibraryFile(std::string const& stem);

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
