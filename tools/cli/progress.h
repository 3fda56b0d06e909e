// The bar on standard error that shows how far a long run has come.
#ifndef TOOLS_CLI_PROGRESS_H_
#define TOOLS_CLI_PROGRESS_H_

#include <chrono>
#include <optional>
#include <string>

namespace sorrelin::tool {

// The bar for a share of the work from 0 to 1, at most `columns` wide, with the time that is left
// if that is known.
std::string ProgressBar(double share, int columns,
                        std::optional<std::chrono::seconds> left = std::nullopt);

// Shows the bar where standard error is a terminal, once a second of work has passed and more is
// ahead, and takes it away at the end. There is one at a time.
class Progress {
 public:
  // Never shows anything unless `wanted`. A bar of steps that take about as long each shows the
  // time that is left.
  explicit Progress(bool wanted, bool shows_time = false);
  ~Progress() { Clear(); }
  Progress(Progress const&) = delete;
  Progress& operator=(Progress const&) = delete;

  // The share of the work that is done, from 0 to 1.
  void Update(double share);

  // Takes the bar away, so that a line may be written; the next update brings it back.
  void Clear();

 private:
  using Clock = std::chrono::steady_clock;

  bool wanted_;
  bool shows_time_;
  Clock::time_point start_;
  Clock::time_point next_;
};

// Takes away a bar that is shown; none is shown from then on, and whoever would show one waits for
// ever. For a process that is about to end.
void RemoveBarForGood();

}  // namespace sorrelin::tool

#endif  // TOOLS_CLI_PROGRESS_H_
