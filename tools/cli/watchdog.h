// A limit on the time that a piece of work may take.
#ifndef TOOLS_CLI_WATCHDOG_H_
#define TOOLS_CLI_WATCHDOG_H_

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace sorrelin::tool {

class Watchdog {
 public:
  // Calls `bark`, which ends the process, on a thread of its own when this much time has passed
  // since the last call of Begin. A limit of 0 is none.
  Watchdog(std::chrono::seconds limit, std::function<void()> bark)
      : limit_(limit), bark_(std::move(bark)) {
    if (limit_.count() > 0) thread_ = std::thread([this] { Watch(); });
  }
  ~Watchdog() {
    {
      std::lock_guard const lock(mutex_);
      closing_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) thread_.join();
  }
  Watchdog(Watchdog const&) = delete;
  Watchdog& operator=(Watchdog const&) = delete;

  void Begin() {
    std::lock_guard const lock(mutex_);
    end_ = Clock::now() + limit_;
    changed_.notify_all();
  }

 private:
  using Clock = std::chrono::steady_clock;

  void Watch() {
    std::unique_lock lock(mutex_);
    while (!closing_) {
      if (Clock::now() >= end_) bark_();
      changed_.wait_until(lock, end_);
    }
  }

  std::chrono::seconds limit_;
  std::function<void()> bark_;
  std::mutex mutex_;
  std::condition_variable changed_;
  Clock::time_point end_ = Clock::time_point::max();
  bool closing_ = false;
  std::thread thread_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_CLI_WATCHDOG_H_
