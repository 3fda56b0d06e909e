// Children and what they send. A child's first byte says that it has started; the receiver does not
// see it.
//
// An answer goes over the pipe as a mark, "+" for a result and "-" for a problem, the text, and a
// full stop, without which it counts as no answer.
#include "tools/documents/child.h"

#include <sorrelin/platform/console.h>
#include <sorrelin/platform/error.h>

#include <barrier>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <new>
#include <string_view>
#include <thread>
#include <vector>

#include "tools/cli/messages.h"
#include "tools/cli/text.h"
#include "tools/system/program.h"

namespace sorrelin::tool {
namespace {

constexpr char kFullStop = '.';

constexpr char kGreeting = '!';

// Threads that run children side by side. Each works, waits for its child, or starts one; while one
// starts, no other works.
class ForkGate {
 public:
  void Enter() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !forking_; });
    ++working_;
  }
  void Leave() {
    std::lock_guard const lock(mutex_);
    --working_;
    changed_.notify_all();
  }
  void BeginFork() {
    Leave();
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !forking_; });
    forking_ = true;
    changed_.wait(lock, [this] { return working_ == 0; });
  }
  void EndFork() {
    std::lock_guard const lock(mutex_);
    forking_ = false;
    changed_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int working_ = 0;
  bool forking_ = false;
};

ForkGate gate;
thread_local bool is_beside_others = false;

// A thread's time at work.
class AtWork {
 public:
  AtWork() { gate.Enter(); }
  ~AtWork() { gate.Leave(); }
  AtWork(AtWork const&) = delete;
  AtWork& operator=(AtWork const&) = delete;
};

class Run {
 public:
  Run(ChildWork const& work, ChildReceiver const& receiver) : work_(work), receiver_(receiver) {}

  bool InChild() {
    if (is_beside_others) gate.BeginFork();
    bool const ended = RunInChildProcess(Work, Receive, this) != FALSE;
    if (is_beside_others && !has_started_) gate.EndFork();
    if (is_beside_others) gate.Enter();
    return ended;
  }

 private:
  static void Work(CHILD_LINK* link, void* context) {
    if (HasChildProcesses()) BeginChild();
    SendToParent(link, &kGreeting, sizeof kGreeting);
    static_cast<Run*>(context)->work_(link);
  }

  // The threads that are counted by the gate are not in the child.
  static void BeginChild() {
    is_beside_others = false;
    std::construct_at(&gate);
    MuteStandardError();
  }

  static BOOL Receive(void const* data, DWORD size, void* context) {
    std::span<BYTE const> const bytes(static_cast<BYTE const*>(data), size);
    return static_cast<Run*>(context)->Take(bytes) ? TRUE : FALSE;
  }

  bool Take(std::span<BYTE const> bytes) {
    if (!has_started_) {
      has_started_ = true;
      if (is_beside_others) gate.EndFork();
      bytes = bytes.subspan(sizeof kGreeting);
    }
    if (bytes.empty()) return true;
    std::optional<AtWork> at_work;
    if (is_beside_others) at_work.emplace();
    return receiver_(bytes);
  }

  ChildWork const& work_;
  ChildReceiver const& receiver_;
  bool has_started_ = false;
};

// Why a child did not come to its end, by the system's error.
std::string ProblemOf(DWORD error) {
  if (error == ERROR_PROCESS_ABORTED) return kEndedReader;
  if (error == ERROR_NOT_ENOUGH_MEMORY) return kMemoryProblem;
  return LastSystemError();
}

}  // namespace

bool RunChild(ChildWork const& work, ChildReceiver const& receiver, std::string& problem) {
  if (Run(work, receiver).InChild()) return true;
  problem = ProblemOf(GetLastError());
  return false;
}

void RunSideBySide(size_t count, std::function<void(size_t index)> const& work) {
  // Without processes of their own, readers would share what they do not lock.
  if (count == 1 || !HasChildProcesses()) {
    for (size_t i = 0; i < count; ++i) work(i);
    return;
  }
  // Threads take locks as they begin and end, too: none works before all have begun, and none ends
  // before all are done.
  std::barrier together(static_cast<ptrdiff_t>(count) + 1);
  auto const run = [&](size_t index) {
    is_beside_others = true;
    {
      AtWork const at_work;
      together.arrive_and_wait();
      work(index);
    }
    together.arrive_and_wait();
  };
  std::vector<std::jthread> threads;
  for (size_t i = 0; i < count; ++i) threads.emplace_back(run, i);
  together.arrive_and_wait();
  together.arrive_and_wait();
}

std::optional<std::string> AskChild(ChildAnswer const& work, std::string& problem) {
  auto const answer = [&](CHILD_LINK* link) {
    std::optional<std::string> result;
    std::string reason;
    std::string_view text = kMemoryProblem;
    try {
      reason = kMemoryProblem;
      result = work(reason);
      text = result ? *result : reason;
    } catch (std::bad_alloc const&) {
    }
    SendToParent(link, result ? "+" : "-", 1);
    SendToParent(link, text.data(), static_cast<DWORD>(text.size()));
    SendToParent(link, &kFullStop, sizeof kFullStop);
  };
  std::string received;
  auto const append = [&](std::span<BYTE const> bytes) {
    received.append(reinterpret_cast<char const*>(bytes.data()), bytes.size());
    return true;
  };
  if (!RunChild(answer, append, problem)) return std::nullopt;
  if (received.size() < 2 || received.back() != kFullStop) {
    problem = kSilentReader;
    return std::nullopt;
  }
  std::string const text = received.substr(1, received.size() - 2);
  if (received.starts_with('+')) return text;
  problem = text;
  return std::nullopt;
}

}  // namespace sorrelin::tool
