// Terminal and interruption on POSIX.
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sorrelin/platform/console.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/posix_support.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <semaphore>
#include <system_error>
#include <thread>

namespace sorrelin {
namespace {

struct SignalEvent {
  int signal;
  DWORD event;
};

constexpr SignalEvent kEvents[] = {
    {SIGINT, CTRL_C_EVENT}, {SIGHUP, CTRL_CLOSE_EVENT}, {SIGTERM, CTRL_SHUTDOWN_EVENT}};

PHANDLER_ROUTINE handler_in_use = nullptr;

bool IsIgnored(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

sigset_t WatchedSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (SignalEvent const& row : kEvents) {
    if (!IsIgnored(row.signal)) sigaddset(&set, row.signal);
  }
  return set;
}

// Ends the process as the signal would have done, so that the parent sees it.
void EndBySignal(int number) {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, number);
  signal(number, SIG_DFL);
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
  raise(number);
}

// Whether the watching thread has come to where it holds no lock any more.
std::binary_semaphore is_watching(0);

void Watch(sigset_t signals) {
  is_watching.release();
  for (;;) {
    int number = 0;
    if (sigwait(&signals, &number) != 0) continue;
    for (SignalEvent const& row : kEvents) {
      if (row.signal == number && handler_in_use(row.event) == FALSE) EndBySignal(number);
    }
  }
}

// The watching thread takes signals by waiting for them; every other thread inherits their being
// blocked. It has started when this returns: a lock that it held while the process forks would be
// held in the child for ever.
BOOL StartWatching() {
  sigset_t const signals = WatchedSignals();
  if (pthread_sigmask(SIG_BLOCK, &signals, nullptr) != 0) return Fail(ERROR_GEN_FAILURE, FALSE);
  try {
    std::thread(Watch, signals).detach();
  } catch (std::system_error const&) {
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    return Fail(ERROR_NOT_ENOUGH_MEMORY, FALSE);
  }
  is_watching.acquire();
  return TRUE;
}

}  // namespace
}  // namespace sorrelin

BOOL SetConsoleCtrlHandler(PHANDLER_ROUTINE handler, BOOL add) {
  if (handler == nullptr || add == FALSE) return sorrelin::Fail(ERROR_INVALID_PARAMETER, FALSE);
  if (sorrelin::handler_in_use != nullptr) return sorrelin::Fail(ERROR_ALREADY_EXISTS, FALSE);
  sorrelin::handler_in_use = handler;
  // A copy of the process has no thread that watches.
  pthread_atfork(nullptr, nullptr, [] { sorrelin::handler_in_use = nullptr; });
  return sorrelin::StartWatching();
}

BOOL StandardErrorIsTerminal(void) { return isatty(STDERR_FILENO) == 1 ? TRUE : FALSE; }

BOOL StandardOutputIsTerminal(void) { return isatty(STDOUT_FILENO) == 1 ? TRUE : FALSE; }

int StandardErrorColumns(void) {
  struct winsize size {};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

int MuteStandardError(void) {
  std::fflush(stderr);
  int const nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere == -1) return -1;
  int const saved = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
  bool const muted = saved != -1 && dup2(nowhere, STDERR_FILENO) != -1;
  close(nowhere);
  if (!muted && saved != -1) close(saved);
  return muted ? saved : -1;
}

void RestoreStandardError(int muted) {
  if (muted == -1) return;
  std::fflush(stderr);
  dup2(muted, STDERR_FILENO);
  close(muted);
}

void FailPastFileSizeLimit(void) { signal(SIGXFSZ, SIG_IGN); }

void FailOnClosedPipe(void) { signal(SIGPIPE, SIG_IGN); }
