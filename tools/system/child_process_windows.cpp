// Children that are this program started again, as
//
//   sorrelin.exe --child ORDER ANSWER PARENT
//
// with three handles that it inherits: the pipe that its order comes from, the pipe that its bytes
// go to, and its parent. The order is the length of the work's name (32 bits), that name, and the
// work's packed values. A child has no console: the requests that users make there go to its parent
// alone.
#include <windows.h>

#include <atomic>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <thread>
#include <utility>
#include <vector>

#include "tools/system/child_process.h"

namespace sorrelin::tool {
namespace {

constexpr std::string_view kChildArgument = "--child";
constexpr size_t kChildArguments = 5;
constexpr DWORD kPieceBytes = DWORD{256} << 10;
constexpr UINT kExitShortOfMemory = 8;  // the exit code of a child that memory was short for
constexpr DWORD kLongestPath = 32'768;  // units

class Handle {
 public:
  explicit Handle(HANDLE handle = nullptr) : handle_(handle) {}
  ~Handle() { Close(); }
  Handle(Handle const&) = delete;
  Handle& operator=(Handle const&) = delete;

  HANDLE get() const { return handle_; }
  HANDLE* Place() { return &handle_; }
  bool IsOpen() const { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }
  void Close() {
    if (IsOpen()) CloseHandle(handle_);
    handle_ = nullptr;
  }

 private:
  HANDLE handle_;
};

SECURITY_ATTRIBUTES Inherited() { return {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE}; }

// A name that no other pipe of this machine has.
std::wstring PipeName() {
  static std::atomic<unsigned> number = 0;
  LARGE_INTEGER time{};
  QueryPerformanceCounter(&time);
  return L"\\\\.\\pipe\\sorrelin-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
         std::to_wstring(++number) + L"-" + std::to_wstring(time.QuadPart);
}

// What one child inherits, and this process's ends of it.
struct Streams {
  Handle order, child_order;
  Handle answer, child_answer;
  Handle parent;   // for the child
  Handle nowhere;  // for the child
};

// False with the system's error. The answer is read in such a way that other threads may ask what
// kind of handle it is while this one waits.
bool OpenStreams(Streams& streams) {
  SECURITY_ATTRIBUTES inherited = Inherited();
  std::wstring const name = PipeName();
  if (CreatePipe(streams.child_order.Place(), streams.order.Place(), nullptr, 0) == FALSE ||
      SetHandleInformation(streams.child_order.get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT) ==
          FALSE) {
    return false;
  }
  *streams.answer.Place() = CreateNamedPipeW(
      name.c_str(), PIPE_ACCESS_INBOUND | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
      PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS, 1, 0, kPieceBytes, 0, nullptr);
  if (!streams.answer.IsOpen()) return false;
  *streams.child_answer.Place() =
      CreateFileW(name.c_str(), GENERIC_WRITE, 0, &inherited, OPEN_EXISTING, 0, nullptr);
  *streams.nowhere.Place() =
      CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                  &inherited, OPEN_EXISTING, 0, nullptr);
  return streams.child_answer.IsOpen() && streams.nowhere.IsOpen() &&
         DuplicateHandle(GetCurrentProcess(), GetCurrentProcess(), GetCurrentProcess(),
                         streams.parent.Place(), SYNCHRONIZE, TRUE, 0) != FALSE;
}

std::wstring ProgramPath() {
  std::wstring path(kLongestPath, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), kLongestPath));
  return path;
}

std::wstring TextOf(HANDLE handle) { return std::to_wstring(reinterpret_cast<uintptr_t>(handle)); }

// Ends a child with this process while that starts it, when the child itself does not know yet that
// it has a parent.
class StartingJob {
 public:
  StartingJob() : job_(CreateJobObjectW(nullptr, nullptr)) {
    if (IsOpen()) Limit(JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE);
  }
  ~StartingJob() {
    if (IsOpen()) Limit(0);
  }
  StartingJob(StartingJob const&) = delete;
  StartingJob& operator=(StartingJob const&) = delete;

  bool IsOpen() const { return job_.IsOpen(); }
  HANDLE get() const { return job_.get(); }

 private:
  void Limit(DWORD flags) {
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = flags;
    SetInformationJobObject(job_.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
  }

  Handle job_;
};

// What a child begins with: these handles, nothing else that is open, and a job.
class ChildAttributes {
 public:
  ChildAttributes(std::vector<HANDLE> handles, HANDLE job)
      : handles_(std::move(handles)), job_(job) {
    SIZE_T bytes = 0;
    InitializeProcThreadAttributeList(nullptr, 2, 0, &bytes);
    room_ = std::make_unique<BYTE[]>(bytes);
    is_made_ = InitializeProcThreadAttributeList(get(), 2, 0, &bytes) != FALSE;
    is_set_ = is_made_ &&
              Set(PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles_.data(), handles_.size()) &&
              Set(PROC_THREAD_ATTRIBUTE_JOB_LIST, &job_, 1);
  }
  ~ChildAttributes() {
    if (is_made_) DeleteProcThreadAttributeList(get());
  }
  ChildAttributes(ChildAttributes const&) = delete;
  ChildAttributes& operator=(ChildAttributes const&) = delete;

  bool IsSet() const { return is_set_; }
  LPPROC_THREAD_ATTRIBUTE_LIST get() const {
    return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(room_.get());
  }

 private:
  bool Set(DWORD_PTR attribute, HANDLE* handles, size_t count) {
    return UpdateProcThreadAttribute(get(), 0, attribute, handles, count * sizeof(HANDLE), nullptr,
                                     nullptr) != FALSE;
  }

  std::vector<HANDLE> handles_;
  HANDLE job_;
  std::unique_ptr<BYTE[]> room_;
  bool is_made_ = false;
  bool is_set_ = false;
};

// False with the system's error.
bool StartProgram(Streams const& streams, Handle& process) {
  HANDLE const order = streams.child_order.get();
  HANDLE const answer = streams.child_answer.get();
  HANDLE const parent = streams.parent.get();
  HANDLE const nowhere = streams.nowhere.get();
  StartingJob const job;
  if (!job.IsOpen()) return false;
  ChildAttributes const attributes({order, answer, parent, nowhere}, job.get());
  if (!attributes.IsSet()) return false;
  std::wstring const path = ProgramPath();
  std::wstring line =
      L"sorrelin --child " + TextOf(order) + L" " + TextOf(answer) + L" " + TextOf(parent);
  STARTUPINFOEXW start{};
  start.StartupInfo.cb = sizeof start;
  start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
  start.StartupInfo.hStdInput = nowhere;
  start.StartupInfo.hStdOutput = nowhere;
  start.StartupInfo.hStdError = nowhere;
  start.lpAttributeList = attributes.get();
  PROCESS_INFORMATION started{};
  if (CreateProcessW(path.c_str(), line.data(), nullptr, nullptr, TRUE,
                     DETACHED_PROCESS | EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr,
                     &start.StartupInfo, &started) == FALSE) {
    return false;
  }
  CloseHandle(started.hThread);
  *process.Place() = started.hProcess;
  return true;
}

bool WriteAll(HANDLE pipe, std::span<BYTE const> bytes) {
  while (!bytes.empty()) {
    DWORD count = 0;
    DWORD const size = static_cast<DWORD>(std::min<size_t>(bytes.size(), kPieceBytes));
    if (WriteFile(pipe, bytes.data(), size, &count, nullptr) == FALSE) return false;
    bytes = bytes.subspan(count);
  }
  return true;
}

// A child that has been started, which is ended unless it was waited for.
class Child {
 public:
  ~Child() {
    if (!process_.IsOpen()) return;
    DWORD const error = GetLastError();
    TerminateProcess(process_.get(), EXIT_FAILURE);
    WaitForSingleObject(process_.get(), INFINITE);
    SetLastError(error);
  }

  bool Start(ChildWork const& work) {
    if (!OpenStreams(streams_) || !StartProgram(streams_, process_)) return false;
    // An end that stayed open here would hide that the child has closed its own.
    for (Handle* const end : {&streams_.child_order, &streams_.child_answer}) end->Close();
    DWORD const name_bytes = static_cast<DWORD>(work.name.size());
    std::string order(reinterpret_cast<char const*>(&name_bytes), sizeof name_bytes);
    order.append(work.name);
    work.pack(order);
    // A child that does not take it says more by its end.
    WriteAll(streams_.order.get(), {reinterpret_cast<BYTE const*>(order.data()), order.size()});
    streams_.order.Close();
    return true;
  }

  // Whether everything was received; false with the error.
  bool Receive(ChildReceiver const& receiver) {
    auto const piece = std::make_unique_for_overwrite<BYTE[]>(kPieceBytes);
    for (;;) {
      DWORD count = 0;
      if (!Read(piece.get(), count)) return GetLastError() == ERROR_BROKEN_PIPE;
      if (receiver({piece.get(), count})) continue;
      SetLastError(ERROR_CANCELLED);
      return false;
    }
  }

  // Whether the child came to its end by itself; false with the error.
  bool Wait() {
    WaitForSingleObject(process_.get(), INFINITE);
    DWORD code = EXIT_FAILURE;
    GetExitCodeProcess(process_.get(), &code);
    process_.Close();
    if (code == EXIT_SUCCESS) return true;
    SetLastError(code == kExitShortOfMemory ? ERROR_NOT_ENOUGH_MEMORY : ERROR_PROCESS_ABORTED);
    return false;
  }

 private:
  bool Read(BYTE* piece, DWORD& count) {
    OVERLAPPED place{};
    Handle const event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (!event.IsOpen()) return false;
    place.hEvent = event.get();
    HANDLE const answer = streams_.answer.get();
    if (ReadFile(answer, piece, kPieceBytes, nullptr, &place) == FALSE &&
        GetLastError() != ERROR_IO_PENDING) {
      return false;
    }
    return GetOverlappedResult(answer, &place, &count, TRUE) != FALSE;
  }

  Streams streams_;
  Handle process_;
};

class PipeToParent : public ParentLink {
 public:
  explicit PipeToParent(HANDLE pipe) : pipe_(pipe) {}
  bool Send(std::span<BYTE const> bytes) override { return WriteAll(pipe_, bytes); }

 private:
  HANDLE pipe_;
};

// Null for a text that is no number.
HANDLE HandleOf(std::string_view text) {
  uintptr_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return reinterpret_cast<HANDLE>(value);
}

// Everything that the pipe holds, up to its end.
std::string ReadOrder(HANDLE pipe) {
  std::string order;
  auto const piece = std::make_unique_for_overwrite<char[]>(kPieceBytes);
  DWORD count = 0;
  while (ReadFile(pipe, piece.get(), kPieceBytes, &count, nullptr) != FALSE) {
    order.append(piece.get(), count);
  }
  return order;
}

// Ends this process with its parent, as long as it lives. Its thread is gone when it is: Wine
// prints errors of a process that ends while one of its threads begins.
class ParentWatch {
 public:
  ParentWatch(HANDLE parent, void (*tidy_up)())
      : done_(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
        thread_([this, parent, tidy_up] { Watch(parent, tidy_up); }) {}
  ~ParentWatch() {
    SetEvent(done_.get());
    thread_.join();
  }
  ParentWatch(ParentWatch const&) = delete;
  ParentWatch& operator=(ParentWatch const&) = delete;

 private:
  void Watch(HANDLE parent, void (*tidy_up)()) const {
    HANDLE const ends[] = {parent, done_.get()};
    if (WaitForMultipleObjects(2, ends, FALSE, INFINITE) != WAIT_OBJECT_0) return;
    tidy_up();
    TerminateProcess(GetCurrentProcess(), EXIT_FAILURE);
  }

  Handle done_;
  std::thread thread_;
};

// A failed allocation where nothing may be thrown ends the child. Its exit code names the cause.
[[noreturn]] void EndChild() {
  if (std::current_exception()) {
    try {
      throw;
    } catch (std::bad_alloc const&) {
      std::_Exit(kExitShortOfMemory);
    } catch (...) {
    }
  }
  std::abort();
}

// Whether the order is whole.
bool FollowOrder(std::string_view order, HANDLE answer, NamedWork work) {
  DWORD name_bytes = 0;
  if (order.size() < sizeof name_bytes) return false;
  std::memcpy(&name_bytes, order.data(), sizeof name_bytes);
  order.remove_prefix(sizeof name_bytes);
  std::string_view const name = order.substr(0, name_bytes);
  PipeToParent link(answer);
  work(link, name, order.substr(name.size()));
  return true;
}

// The exit code of the child.
int Work(HANDLE order, HANDLE answer, NamedWork work) {
  try {
    return FollowOrder(ReadOrder(order), answer, work) ? EXIT_SUCCESS : EXIT_FAILURE;
  } catch (std::bad_alloc const&) {
    return kExitShortOfMemory;
  } catch (...) {
    return EXIT_FAILURE;
  }
}

}  // namespace

bool RunInChild(ChildWork const& work, ChildReceiver const& receiver) {
  Child child;
  return child.Start(work) && child.Receive(receiver) && child.Wait();
}

void RunSideBySide(size_t count, std::function<void(size_t index)> const& work) {
  if (count == 1) return work(0);
  std::vector<std::jthread> threads;
  for (size_t i = 0; i < count; ++i) threads.emplace_back(work, i);
}

std::optional<int> RunAsChild(std::span<char* const> arguments, NamedWork work, void (*tidy_up)()) {
  if (arguments.size() != kChildArguments || arguments[1] != kChildArgument) return std::nullopt;
  HANDLE const order = HandleOf(arguments[2]);
  HANDLE const answer = HandleOf(arguments[3]);
  if (GetFileType(order) != FILE_TYPE_PIPE || GetFileType(answer) != FILE_TYPE_PIPE) {
    return std::nullopt;
  }
  std::set_terminate(EndChild);
  int code = EXIT_FAILURE;
  {
    ParentWatch const watch(HandleOf(arguments[4]), tidy_up);
    code = Work(order, answer, work);
  }
  // What is static is not destroyed; the system takes it back faster.
  std::_Exit(code);
}

}  // namespace sorrelin::tool
