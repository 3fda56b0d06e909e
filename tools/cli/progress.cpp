// The progress bar, redrawn in place.
#include "tools/cli/progress.h"

#include <sorrelin/platform/console.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <new>
#include <string_view>

#include "tools/system/program.h"

namespace sorrelin::tool {
namespace {

using namespace std::chrono_literals;

constexpr auto kQuietTime = 1s;
constexpr auto kBetweenUpdates = 100ms;
constexpr int kUsualColumns = 80;
constexpr int kMaxColumns = 100;
constexpr int kFrameColumns = 7;  // "[", "] " and "100%"

// How long the end of the process waits for a terminal that takes no output.
constexpr auto kLongestWait = 200ms;

// What is known of the terminal; the thread that watches for interrupts asks too.
struct Screen {
  std::timed_mutex mutex;
  bool bar = false;
};

// Never destroyed: the watching thread may outlive static objects. Of no memory that could be
// short, because destructors ask for it.
Screen& TheScreen() {
  alignas(Screen) static std::byte memory[sizeof(Screen)];
  static Screen& screen = *new (memory) Screen;
  return screen;
}

void Print(std::string const& text) {
  std::fputs(text.c_str(), stderr);
  std::fflush(stderr);
}

// With the mutex held. The cursor waits at the start of the bar. A terminal that becomes narrower
// may break the bar into lines, and the cursor stays where they begin.
void EraseBar(Screen& screen) {
  if (screen.bar) Print(EraseFromLine());
  screen.bar = false;
}

// Whether the terminal knows no sequences.
bool IsDumb() {
  char const* const kind = std::getenv("TERM");
  return kind != nullptr && std::string_view(kind) == "dumb";
}

// " 1:05 left".
std::string TimeText(std::chrono::seconds left) {
  constexpr int kSecondsPerMinute = 60;
  char text[48];
  auto const seconds = static_cast<long long>(left.count());
  std::snprintf(text, sizeof text, " %lld:%02lld left", seconds / kSecondsPerMinute,
                seconds % kSecondsPerMinute);
  return text;
}

}  // namespace

std::string ProgressBar(double share, int columns, std::optional<std::chrono::seconds> left) {
  std::string const time = left ? TimeText(*left) : "";
  int const cells = std::min(columns, kMaxColumns) - kFrameColumns - static_cast<int>(time.size());
  if (cells < 1) return {};
  double const done = std::clamp(share, 0.0, 1.0);
  size_t const full = static_cast<size_t>(done * cells);
  char percent[8];
  std::snprintf(percent, sizeof percent, "%3d%%", static_cast<int>(done * 100));
  std::string bar(static_cast<size_t>(cells), '.');
  bar.replace(0, full, full, '#');
  return std::string("[").append(bar).append("] ").append(percent).append(time);
}

Progress::Progress(bool wanted, bool shows_time)
    : wanted_(wanted && StandardErrorIsTerminal() != FALSE && !IsDumb()),
      shows_time_(shows_time),
      start_(Clock::now()),
      next_(start_ + kQuietTime) {}

void Progress::Update(double share) {
  if (!wanted_ || share >= 1 || Clock::now() < next_) return;
  int const columns = StandardErrorColumns();
  // The last column stays free: some terminals wrap when it is written.
  std::optional<std::chrono::seconds> left;
  if (shows_time_ && share > 0) {
    left = std::chrono::ceil<std::chrono::seconds>((Clock::now() - start_) * ((1 - share) / share));
  }
  std::string const bar = ProgressBar(share, (columns > 0 ? columns : kUsualColumns) - 1, left);
  Screen& screen = TheScreen();
  std::lock_guard const lock(screen.mutex);
  Print(EraseFromLine() + bar + "\r");
  screen.bar = true;
  next_ = Clock::now() + kBetweenUpdates;
}

void Progress::Clear() {
  Screen& screen = TheScreen();
  std::lock_guard const lock(screen.mutex);
  EraseBar(screen);
}

void RemoveBarForGood() {
  Screen& screen = TheScreen();
  if (screen.mutex.try_lock_for(kLongestWait)) EraseBar(screen);
}

}  // namespace sorrelin::tool
