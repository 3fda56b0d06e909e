// Draws the bar over itself with a carriage return.
#include "tools/progress.h"

#include <sorrelin/platform/console.h>

#include <algorithm>
#include <cstdio>

namespace sorrelin::tool {
namespace {

using namespace std::chrono_literals;

constexpr auto kQuietTime = 1s;
constexpr auto kBetweenUpdates = 100ms;
constexpr int kUsualColumns = 80;
constexpr int kMaxColumns = 100;
constexpr int kFrameColumns = 7;  // "[", "] " and "100%"

}  // namespace

std::string ProgressBar(double share, int columns) {
  int const cells = std::min(columns, kMaxColumns) - kFrameColumns;
  if (cells < 1) return {};
  double const done = std::clamp(share, 0.0, 1.0);
  size_t const full = static_cast<size_t>(done * cells);
  char percent[8];
  std::snprintf(percent, sizeof percent, "%3d%%", static_cast<int>(done * 100));
  std::string bar(static_cast<size_t>(cells), '.');
  bar.replace(0, full, full, '#');
  return std::string("[").append(bar).append("] ").append(percent);
}

Progress::Progress(bool wanted)
    : wanted_(wanted && StandardErrorIsTerminal() != FALSE), next_(Clock::now() + kQuietTime) {}

void Progress::Update(double share) {
  if (!wanted_ || share >= 1 || Clock::now() < next_) return;
  int const columns = StandardErrorColumns();
  // The last column stays free: some terminals wrap when it is written.
  std::string const bar = ProgressBar(share, (columns > 0 ? columns : kUsualColumns) - 1);
  std::fprintf(stderr, "\r%s", bar.c_str());
  std::fflush(stderr);
  shown_ = true;
  next_ = Clock::now() + kBetweenUpdates;
}

void Progress::Clear() {
  if (!shown_) return;
  std::fputs("\r\x1B[K", stderr);
  std::fflush(stderr);
  shown_ = false;
}

}  // namespace sorrelin::tool
