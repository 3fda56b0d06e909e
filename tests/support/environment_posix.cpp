// The process's surroundings on systems other than Windows.
#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <stdexcept>

#include "tests/support/environment.h"

namespace test {

char const* const kTempFolderVariable = "TMPDIR";
char const* const kFolderThatTakesNoFiles = "/sys";
char const* const kSystemLibrary = "libz.so.1";
char const* const kSystemEntryPoint = "zlibVersion";

struct NoLibraries::Before {
  rlimit files;
};

NoLibraries::NoLibraries() : before_(new Before) {
  ::getrlimit(RLIMIT_NOFILE, &before_->files);
  rlimit none = before_->files;
  none.rlim_cur = 0;
  ::setrlimit(RLIMIT_NOFILE, &none);
}

NoLibraries::~NoLibraries() {
  ::setrlimit(RLIMIT_NOFILE, &before_->files);
  delete before_;
}

namespace {

void LimitFileSize(rlim_t bytes) {
  rlimit limit{};
  ::getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = bytes < limit.rlim_max ? bytes : limit.rlim_max;
  ::setrlimit(RLIMIT_FSIZE, &limit);
}

void LiftLimit(int) { LimitFileSize(RLIM_INFINITY); }

}  // namespace

FileSizeLimit::FileSizeLimit(size_t bytes, Failures failures) {
  ::signal(SIGXFSZ, failures == Failures::kFirst ? LiftLimit : SIG_IGN);
  LimitFileSize(bytes);
}

FileSizeLimit::~FileSizeLimit() {
  LimitFileSize(RLIM_INFINITY);
  ::signal(SIGXFSZ, SIG_DFL);
}

MemoryLimit::MemoryLimit(size_t more) {
  rlim_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  rlimit limit{};
  ::getrlimit(RLIMIT_AS, &limit);
  limit.rlim_cur = pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE)) + more;
  ::setrlimit(RLIMIT_AS, &limit);
}

MemoryLimit::~MemoryLimit() {
  rlimit limit{};
  ::getrlimit(RLIMIT_AS, &limit);
  limit.rlim_cur = limit.rlim_max;
  ::setrlimit(RLIMIT_AS, &limit);
}

namespace {
constexpr uid_t kNobody = 65'534;
uid_t user_before = 0;
}  // namespace

OrdinaryUser::OrdinaryUser() {
  user_before = ::geteuid();
  if (user_before == 0 && ::seteuid(kNobody) != 0) std::abort();
}

OrdinaryUser::~OrdinaryUser() {
  if (::geteuid() != user_before && ::seteuid(user_before) != 0) std::abort();
}

struct Pipe::Ends {
  int reading, writing;
};

Pipe::Pipe() : ends_(new Ends) {
  int ends[2];
  if (::pipe(ends) != 0) std::abort();
  *ends_ = {ends[0], ends[1]};
  path_ = "/proc/self/fd/" + std::to_string(ends_->reading);
}

Pipe::~Pipe() {
  ::close(ends_->reading);
  ::close(ends_->writing);
  delete ends_;
}

// An open file can be removed.
LeftOpen::~LeftOpen() = default;

size_t OpenHandles() { return NamesIn("/proc/self/fd").size(); }

uint64_t BytesRead() {
  std::ifstream counters("/proc/self/io");
  std::string key;
  uint64_t value = 0;
  counters >> key >> value;
  if (key != "rchar:") throw std::runtime_error("no counter of the bytes read");
  return value;
}

size_t RoomOf(void* allocated) { return ::malloc_usable_size(allocated); }

size_t PeakBytes() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return static_cast<size_t>(usage.ru_maxrss) * 1024;
}

std::filesystem::path ProgramPath() { return std::filesystem::read_symlink("/proc/self/exe"); }

std::string LibraryFile(std::string const& stem) { return "lib" + stem + ".so"; }

}  // namespace test
