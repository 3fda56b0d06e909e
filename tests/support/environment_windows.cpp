// The process's surroundings on Windows.
#include <windows.h>
// Needs windows.h before it.
#include <malloc.h>
#include <psapi.h>

#include <utility>

#include "tests/support/environment.h"

namespace test {

// The first that the system looks at.
char const* const kTempFolderVariable = "TMP";
// Wine shows the other system's folders on this drive.
char const* const kFolderThatTakesNoFiles = "Z:\\sys";
char const* const kSystemLibrary = "version.dll";
char const* const kSystemEntryPoint = "GetFileVersionInfoW";

struct NoLibraries::Before {
  EnvironmentValue const no_search_path{"PATH", ""};
};

NoLibraries::NoLibraries() : before_(new Before) {}

NoLibraries::~NoLibraries() { delete before_; }

namespace {

PROCESS_MEMORY_COUNTERS MemoryCounters() {
  PROCESS_MEMORY_COUNTERS counters{};
  GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return counters;
}

// The job of this process, with a limit of its memory, or without one for 0.
void LimitMemory(size_t bytes) {
  static HANDLE const job = [] {
    HANDLE const made = CreateJobObjectW(nullptr, nullptr);
    AssignProcessToJobObject(made, GetCurrentProcess());
    return made;
  }();
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
  limits.BasicLimitInformation.LimitFlags = bytes != 0 ? JOB_OBJECT_LIMIT_PROCESS_MEMORY : 0;
  limits.ProcessMemoryLimit = bytes;
  SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
}

}  // namespace

MemoryLimit::MemoryLimit(size_t more) { LimitMemory(MemoryCounters().PagefileUsage + more); }

MemoryLimit::~MemoryLimit() { LimitMemory(0); }

// No user of Windows may write a file that is marked as read-only.
OrdinaryUser::OrdinaryUser() = default;

OrdinaryUser::~OrdinaryUser() = default;

struct Pipe::Ends {
  HANDLE writing;
};

Pipe::Pipe() : ends_(new Ends) {
  path_ = L"\\\\.\\pipe\\sorrelin-test-" + std::to_wstring(GetCurrentProcessId());
  ends_->writing =
      CreateNamedPipeW(path_.c_str(), PIPE_ACCESS_OUTBOUND, PIPE_TYPE_BYTE, 1, 0, 0, 0, nullptr);
  if (ends_->writing == INVALID_HANDLE_VALUE) std::abort();
}

Pipe::~Pipe() {
  CloseHandle(ends_->writing);
  delete ends_;
}

namespace {

// Handles of the files that the process has open, each with its path.
std::vector<std::pair<HANDLE, std::filesystem::path>> OpenFiles() {
  constexpr uintptr_t kStep = 4, kEnd = 0x2000;
  std::vector<std::pair<HANDLE, std::filesystem::path>> files;
  for (uintptr_t value = kStep; value < kEnd; value += kStep) {
    HANDLE const file = reinterpret_cast<HANDLE>(value);
    if (GetFileType(file) != FILE_TYPE_DISK) continue;
    wchar_t path[1024] = L"";
    GetFinalPathNameByHandleW(file, path, static_cast<DWORD>(std::size(path)),
                              FILE_NAME_NORMALIZED);
    files.emplace_back(file, path);
  }
  return files;
}

}  // namespace

LeftOpen::~LeftOpen() {
  for (auto const& [file, path] : OpenFiles()) {
    // Folders of tests have names of their own; what comes before may be written in several ways.
    if (path.parent_path().filename() == folder_.filename()) CloseHandle(file);
  }
}

size_t OpenHandles() { return OpenFiles().size(); }

size_t RoomOf(void* allocated) { return _msize(allocated); }

size_t PeakBytes() { return MemoryCounters().PeakWorkingSetSize; }

std::filesystem::path ProgramPath() {
  constexpr DWORD kUnits = 32'768;  // the longest path
  std::wstring path(kUnits, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), kUnits));
  return path;
}

std::string LibraryFile(std::string const& stem) { return stem + ".dll"; }

}  // namespace test
