// Children that are copies of this process. A child's first byte says that it has started; the
// receiver does not see it.
#include <sorrelin/platform/child.h>
#include <sorrelin/platform/console.h>

#include <barrier>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "tools/system/child_process.h"

namespace sorrelin::tool {
namespace {

constexpr BYTE kGreeting = '!';

class PipeToParent : public ParentLink {
 public:
  explicit PipeToParent(CHILD_LINK* link) : link_(link) {}
  bool Send(std::span<BYTE const> bytes) override {
    return SendToParent(link_, bytes.data(), static_cast<DWORD>(bytes.size())) != FALSE;
  }

 private:
  CHILD_LINK* link_;
};

// Threads that run children side by side. Each works, waits for its child, or starts one; while one
// starts, no other works: a child that is forked while another thread holds a lock waits for that
// lock for ever.
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
  // The threads that are counted by the gate are not in the child.
  static void Work(CHILD_LINK* link, void* context) {
    is_beside_others = false;
    std::construct_at(&gate);
    MuteStandardError();
    PipeToParent parent(link);
    parent.Send({&kGreeting, sizeof kGreeting});
    static_cast<Run*>(context)->work_.run(parent);
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

}  // namespace

bool RunInChild(ChildWork const& work, ChildReceiver const& receiver) {
  return Run(work, receiver).InChild();
}

void RunSideBySide(size_t count, std::function<void(size_t index)> const& work) {
  if (count == 1) return work(0);
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

std::optional<int> RunAsChild(std::span<char* const>, NamedWork, void (*)()) {
  return std::nullopt;
}

}  // namespace sorrelin::tool
