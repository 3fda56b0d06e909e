// Terminal on Windows, as far as the system has no operation of the same name.
#include <io.h>
#include <sorrelin/platform/console.h>

#include <cstdio>

namespace {
constexpr int kStandardOutput = 1;
constexpr int kStandardError = 2;
}  // namespace

BOOL StandardErrorIsTerminal(void) { return _isatty(kStandardError) != 0 ? TRUE : FALSE; }

BOOL StandardOutputIsTerminal(void) { return _isatty(kStandardOutput) != 0 ? TRUE : FALSE; }

int StandardErrorColumns(void) {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info) == 0) return 0;
  return info.srWindow.Right - info.srWindow.Left + 1;
}

int MuteStandardError(void) {
  std::fflush(stderr);
  int const saved = _dup(kStandardError);
  std::FILE* const nowhere = std::fopen("NUL", "w");
  bool const muted =
      saved != -1 && nowhere != nullptr && _dup2(_fileno(nowhere), kStandardError) == 0;
  if (nowhere != nullptr) std::fclose(nowhere);
  if (!muted && saved != -1) _close(saved);
  return muted ? saved : -1;
}

void RestoreStandardError(int muted) {
  if (muted == -1) return;
  std::fflush(stderr);
  _dup2(muted, kStandardError);
  _close(muted);
}

void FailPastFileSizeLimit(void) {}

void FailOnClosedPipe(void) {}
