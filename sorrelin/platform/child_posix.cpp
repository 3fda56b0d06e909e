// Work in a forked process, with a pipe back.
#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sorrelin/platform/child.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/posix_support.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#if defined(__linux__)
#include <sys/prctl.h>
#endif

#include <cstdlib>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

struct tagCHILD_LINK {
  int descriptor;
};

namespace sorrelin {
namespace {

constexpr size_t kPieceBytes = size_t{256} << 10;
constexpr int kExitShortOfMemory = 8;  // the exit status of a child that memory was short for

// Is asked to end with its parent where the system offers that, so that it can tidy up; elsewhere
// the next write to the pipe fails.
void EndWithParent(pid_t parent) {
#if defined(__linux__)
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != parent) _exit(EXIT_FAILURE);
#else
  static_cast<void>(parent);
#endif
}

// The parent may block these signals and take them on a thread that the child does not have.
void TakeSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (int const number : {SIGINT, SIGHUP, SIGTERM}) sigaddset(&set, number);
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

// A crash is reported to the parent; an image of the memory would only fill the user's disk.
void LeaveNoCore() {
  rlimit const none = {0, 0};
  setrlimit(RLIMIT_CORE, &none);
}

// A failed allocation where nothing may be thrown ends the child. Its exit status names the cause:
// a message might need memory.
[[noreturn]] void EndChild() {
  if (std::current_exception()) {
    try {
      throw;
    } catch (std::bad_alloc const&) {
      _exit(kExitShortOfMemory);
    } catch (...) {
    }
  }
  std::abort();
}

[[noreturn]] void RunChild(PCHILD_ROUTINE routine, void* context, int descriptor, pid_t parent) {
  EndWithParent(parent);
  TakeSignals();
  LeaveNoCore();
  std::set_terminate(EndChild);
  CHILD_LINK link = {descriptor};
  // Nothing may return past this call: the code after it is the parent's.
  try {
    routine(&link, context);
  } catch (std::bad_alloc const&) {
    _exit(kExitShortOfMemory);
  } catch (...) {
    _exit(EXIT_FAILURE);
  }
  _exit(EXIT_SUCCESS);
}

enum class Received { kAll, kRefused, kFailed };

Received ReceiveAll(int descriptor, PCHILD_RECEIVER receiver, void* context) {
  // Not zeroed: most messages are short, and pages that are not touched cost nothing.
  auto const piece = std::make_unique_for_overwrite<BYTE[]>(kPieceBytes);
  for (;;) {
    ssize_t const count = read(descriptor, piece.get(), kPieceBytes);
    if (count == 0) return Received::kAll;
    if (count == -1 && errno == EINTR) continue;
    if (count == -1) return Received::kFailed;
    if (receiver(piece.get(), static_cast<DWORD>(count), context) == FALSE) {
      return Received::kRefused;
    }
  }
}

// How the child ended: no error if it came to its end by itself.
DWORD WaitFor(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) == -1) {
    if (errno != EINTR) return ERROR_PROCESS_ABORTED;
  }
  if (!WIFEXITED(status)) return ERROR_PROCESS_ABORTED;
  if (WEXITSTATUS(status) == kExitShortOfMemory) return ERROR_NOT_ENOUGH_MEMORY;
  return WEXITSTATUS(status) == EXIT_SUCCESS ? ERROR_SUCCESS : ERROR_PROCESS_ABORTED;
}

// Takes the child to its end, also when the receiver throws.
class Child {
 public:
  Child(pid_t pid, int descriptor) : pid_(pid), descriptor_(descriptor) {}
  ~Child() {
    close(descriptor_);
    if (pid_ == -1) return;
    kill(pid_, SIGKILL);
    WaitFor(pid_);
  }
  Child(Child const&) = delete;
  Child& operator=(Child const&) = delete;

  DWORD Wait() { return WaitFor(std::exchange(pid_, -1)); }

 private:
  pid_t pid_;
  int descriptor_;
};

struct Started {
  pid_t pid = -1;
  int descriptor = -1;  // to read from
};

// Forks, and gives the error of the system if it cannot. One thread at a time: a child that was
// forked meanwhile would keep the writing end of this pipe open.
DWORD Start(PCHILD_ROUTINE routine, void* context, Started& started) {
  static std::mutex mutex;
  std::lock_guard const lock(mutex);
  int ends[2];
  if (pipe(ends) == -1) return ErrorOfErrno(errno);
  for (int const end : ends) fcntl(end, F_SETFD, FD_CLOEXEC);
  pid_t const parent = getpid();
  started = {fork(), ends[0]};
  if (started.pid == 0) {
    close(ends[0]);
    RunChild(routine, context, ends[1], parent);
  }
  DWORD const error = started.pid == -1 ? ErrorOfErrno(errno) : ERROR_SUCCESS;
  close(ends[1]);
  if (started.pid == -1) close(ends[0]);
  return error;
}

BOOL RunForked(PCHILD_ROUTINE routine, PCHILD_RECEIVER receiver, void* context) {
  Started started;
  if (DWORD const error = Start(routine, context, started); error != ERROR_SUCCESS) {
    return Fail(error, FALSE);
  }
  Child child(started.pid, started.descriptor);
  switch (ReceiveAll(started.descriptor, receiver, context)) {
    case Received::kAll: {
      DWORD const error = child.Wait();
      return error == ERROR_SUCCESS ? TRUE : Fail(error, FALSE);
    }
    case Received::kRefused:
      return Fail(ERROR_CANCELLED, FALSE);
    default:
      return Fail(ErrorOfErrno(errno), FALSE);
  }
}

}  // namespace
}  // namespace sorrelin

BOOL SendToParent(CHILD_LINK* link, void const* data, DWORD size) {
  BYTE const* bytes = static_cast<BYTE const*>(data);
  while (size != 0) {
    ssize_t const count = write(link->descriptor, bytes, size);
    if (count == -1 && errno == EINTR) continue;
    if (count == -1) return sorrelin::Fail(sorrelin::ErrorOfErrno(errno), FALSE);
    bytes += count;
    size -= static_cast<DWORD>(count);
  }
  return TRUE;
}

BOOL RunInChildProcess(PCHILD_ROUTINE routine, PCHILD_RECEIVER receiver, void* context) {
  if (routine == nullptr || receiver == nullptr) {
    return sorrelin::Fail(ERROR_INVALID_PARAMETER, FALSE);
  }
  return sorrelin::Guarded(FALSE, [&] { return sorrelin::RunForked(routine, receiver, context); });
}
