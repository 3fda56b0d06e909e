// Standard error and requests to end. Ends of the process happen in children.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sorrelin/platform/console.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "tests/support/temp_dir.h"

namespace {

// Standard error goes to a file while this lives.
class CapturedError {
 public:
  explicit CapturedError(std::filesystem::path const& path) : saved_(dup(STDERR_FILENO)) {
    int const file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    dup2(file, STDERR_FILENO);
    close(file);
  }
  ~CapturedError() {
    std::fflush(stderr);
    dup2(saved_, STDERR_FILENO);
    close(saved_);
  }

 private:
  int saved_;
};

TEST(StandardError, MutedTextIsDroppedAndTheRestStays) {
  test::TempDir directory;
  {
    CapturedError const captured(directory / "err");
    std::fputs("a", stderr);
    int const muted = MuteStandardError();
    EXPECT_NE(muted, -1);
    std::fputs("b", stderr);
    RestoreStandardError(muted);
    std::fputs("c", stderr);
  }
  EXPECT_EQ(test::ReadAll(directory / "err"), (std::vector<BYTE>{'a', 'c'}));
}

TEST(StandardError, MutingLeavesNoDescriptorOpen) {
  int const before = dup(STDERR_FILENO);
  close(before);
  RestoreStandardError(MuteStandardError());
  int const after = dup(STDERR_FILENO);
  close(after);
  EXPECT_EQ(after, before);
}

TEST(StandardError, FailedMutingIsRestoredWithoutHarm) {
  test::TempDir directory;
  {
    CapturedError const captured(directory / "err");
    RestoreStandardError(-1);
    std::fputs("a", stderr);
  }
  EXPECT_EQ(test::ReadAll(directory / "err"), std::vector<BYTE>{'a'});
}

TEST(StandardError, FileIsNoTerminalAndHasNoColumns) {
  test::TempDir directory;
  CapturedError const captured(directory / "err");
  EXPECT_FALSE(StandardErrorIsTerminal());
  EXPECT_EQ(StandardErrorColumns(), 0);
}

TEST(StandardError, TerminalIsOneOfItsColumns) {
  int const master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_EQ(grantpt(master), 0);
  ASSERT_EQ(unlockpt(master), 0);
  {
    CapturedError const captured(ptsname(master));
    winsize size{};
    size.ws_col = 77;
    ioctl(STDERR_FILENO, TIOCSWINSZ, &size);
    EXPECT_TRUE(StandardErrorIsTerminal());
    EXPECT_EQ(StandardErrorColumns(), 77);
  }
  close(master);
}

// Descriptor 1 is exchanged, not the stream: the test's own output waits in its buffer meanwhile.
TEST(StandardOutput, TerminalIsOneAndAFileIsNot) {
  test::TempDir directory;
  std::fflush(stdout);
  int const saved = dup(STDOUT_FILENO);
  int const file = open((directory / "out").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  dup2(file, STDOUT_FILENO);
  BOOL const of_file = StandardOutputIsTerminal();
  int const terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  dup2(terminal, STDOUT_FILENO);
  BOOL const of_terminal = StandardOutputIsTerminal();
  dup2(saved, STDOUT_FILENO);
  for (int const descriptor : {saved, file, terminal}) close(descriptor);
  EXPECT_FALSE(of_file);
  EXPECT_TRUE(of_terminal);
}

TEST(ConsoleCtrlHandler, NullHandlerAndRemovalAreError87) {
  EXPECT_FALSE(SetConsoleCtrlHandler(nullptr, TRUE));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_FALSE(SetConsoleCtrlHandler([](DWORD) -> BOOL { return FALSE; }, FALSE));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

// Each child is a new process: threads do not survive a fork.
class ConsoleCtrlHandlerDeathTest : public ::testing::Test {
 protected:
  ConsoleCtrlHandlerDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

BOOL TellAndEnd(DWORD event) {
  std::fprintf(stderr, "event %u\n", event);
  return FALSE;
}

BOOL TellAndExit(DWORD event) {
  std::fprintf(stderr, "event %u\n", event);
  std::_Exit(7);
}

void SetAndRaise(PHANDLER_ROUTINE handler, int number) {
  SetConsoleCtrlHandler(handler, TRUE);
  kill(getpid(), number);
  for (;;) pause();
}

TEST_F(ConsoleCtrlHandlerDeathTest, ProcessEndsByTheSignalBehindTheHandler) {
  EXPECT_EXIT(SetAndRaise(TellAndEnd, SIGINT), ::testing::KilledBySignal(SIGINT), "event 0");
  EXPECT_EXIT(SetAndRaise(TellAndEnd, SIGHUP), ::testing::KilledBySignal(SIGHUP), "event 2");
  EXPECT_EXIT(SetAndRaise(TellAndEnd, SIGTERM), ::testing::KilledBySignal(SIGTERM), "event 6");
}

TEST_F(ConsoleCtrlHandlerDeathTest, HandlerMayLetTheProcessLiveOn) {
  auto const live_on = [] {
    static volatile sig_atomic_t calls = 0;
    SetConsoleCtrlHandler(
        [](DWORD) -> BOOL {
          calls = calls + 1;
          return TRUE;
        },
        TRUE);
    kill(getpid(), SIGTERM);
    while (calls == 0) usleep(1000);
    std::_Exit(3);
  };
  EXPECT_EXIT(live_on(), ::testing::ExitedWithCode(3), "");
}

TEST_F(ConsoleCtrlHandlerDeathTest, SecondHandlerIsError183) {
  auto const set_twice = [] {
    SetConsoleCtrlHandler(TellAndExit, TRUE);
    BOOL const second = SetConsoleCtrlHandler(TellAndEnd, TRUE);
    std::_Exit(second == FALSE && GetLastError() == 183 ? 0 : 1);
  };
  EXPECT_EXIT(set_twice(), ::testing::ExitedWithCode(0), "");
}

TEST_F(ConsoleCtrlHandlerDeathTest, SignalIgnoredFromTheStartStaysIgnored) {
  auto const ignore_and_raise = [] {
    signal(SIGHUP, SIG_IGN);
    SetConsoleCtrlHandler(TellAndExit, TRUE);
    kill(getpid(), SIGHUP);
    kill(getpid(), SIGTERM);
    for (;;) pause();
  };
  EXPECT_EXIT(ignore_and_raise(), ::testing::ExitedWithCode(7), "^event 6");
}

TEST_F(ConsoleCtrlHandlerDeathTest, WritePastTheSizeLimitFailsWithError223) {
  test::TempDir directory;
  auto const write_too_much = [&] {
    FailPastFileSizeLimit();
    rlimit const limit = {4, 4};
    setrlimit(RLIMIT_FSIZE, &limit);
    HANDLE const file = CreateFileW((directory / "a").u16string().c_str(), GENERIC_WRITE, 0,
                                    nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    BOOL const done = WriteFile(file, "12345678", 8, &written, nullptr);
    std::_Exit(done == FALSE && GetLastError() == ERROR_FILE_TOO_LARGE && written == 4 ? 0 : 1);
  };
  EXPECT_EXIT(write_too_much(), ::testing::ExitedWithCode(0), "");
}

TEST_F(ConsoleCtrlHandlerDeathTest, WriteIntoAClosedPipeFailsWithError109) {
  auto const write_to_nobody = [] {
    FailOnClosedPipe();
    int ends[2];
    if (pipe(ends) != 0 || close(ends[0]) != 0) std::_Exit(2);
    HANDLE const file =
        CreateFileW(std::filesystem::path("/dev/fd/" + std::to_string(ends[1])).u16string().c_str(),
                    GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    BOOL const done = WriteFile(file, "1", 1, &written, nullptr);
    std::_Exit(done == FALSE && GetLastError() == ERROR_BROKEN_PIPE ? 0 : 1);
  };
  EXPECT_EXIT(write_to_nobody(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
