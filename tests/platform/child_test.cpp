// Work in a process of its own.
#include <gtest/gtest.h>
#include <signal.h>
#include <sorrelin/platform/child.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/process.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

BOOL Append(void const* data, DWORD size, void* context) {
  static_cast<std::string*>(context)->append(static_cast<char const*>(data), size);
  return TRUE;
}

BOOL Refuse(void const*, DWORD, void*) { return FALSE; }

void SendText(CHILD_LINK* link, void*) { SendToParent(link, "abc", 3); }

void SendForever(CHILD_LINK* link, void*) {
  while (SendToParent(link, "abc", 3) != FALSE) continue;
  for (;;) pause();
}

void RunShortOfMemory(CHILD_LINK*, void*) { throw std::bad_alloc(); }

// No process of ours is left.
void ExpectNoChild() { EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1); }

TEST(ChildProcess, WhatItSendsArrivesInOrder) {
  std::string received;
  auto const send = [](CHILD_LINK* link, void*) {
    SendToParent(link, "one ", 4);
    SendToParent(link, "", 0);
    SendToParent(link, "two", 3);
  };
  EXPECT_TRUE(RunInChildProcess(send, Append, &received));
  EXPECT_EQ(received, "one two");
  ExpectNoChild();
}

// Far more than a pipe holds.
TEST(ChildProcess, MegabytesArriveWhole) {
  std::string received;
  auto const send = [](CHILD_LINK* link, void*) {
    std::string const data(9'999'999, 'x');
    SendToParent(link, data.data(), static_cast<DWORD>(data.size()));
  };
  EXPECT_TRUE(RunInChildProcess(send, Append, &received));
  EXPECT_EQ(received, std::string(9'999'999, 'x'));
}

// A child that lasts does not keep the pipe of another one open.
TEST(ChildProcess, SeveralThreadsHaveOneEach) {
  auto const last = [](CHILD_LINK* link, void*) {
    SendToParent(link, "x", 1);
    for (;;) pause();
  };
  std::atomic<bool> begun = false, over = false;
  auto const wait = [&] {
    struct Context {
      std::atomic<bool>&begun, &over;
    } context = {begun, over};
    auto const receive = [](void const*, DWORD, void* given) -> BOOL {
      auto const& flags = *static_cast<Context*>(given);
      flags.begun = true;
      while (!flags.over) std::this_thread::yield();
      return FALSE;
    };
    RunInChildProcess(last, receive, &context);
  };
  std::thread other(wait);
  while (!begun) std::this_thread::yield();
  std::string received;
  EXPECT_TRUE(RunInChildProcess(SendText, Append, &received));
  EXPECT_EQ(received, "abc");
  over = true;
  other.join();
  ExpectNoChild();
}

// What the parent holds is released by the parent alone.
TEST(ChildProcess, ExceptionEndsItAndNothingElse) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  struct Holder {
    ~Holder() { EXPECT_EQ(write(end, "x", 1), 1); }
    int end;
  };
  {
    Holder const holder = {ends[1]};
    std::string received;
    auto const fail = [](CHILD_LINK*, void*) { throw std::runtime_error("damaged"); };
    EXPECT_FALSE(RunInChildProcess(fail, Append, &received));
    EXPECT_EQ(GetLastError(), ERROR_PROCESS_ABORTED);
  }
  char marks[2];
  EXPECT_EQ(read(ends[0], marks, sizeof marks), 1);
  close(ends[0]);
  close(ends[1]);
  ExpectNoChild();
}

TEST(ChildProcess, ItsMemoryIsItsOwn) {
  std::string received = "untouched";
  auto const change = [](CHILD_LINK*, void* context) {
    *static_cast<std::string*>(context) = "changed";
  };
  EXPECT_TRUE(RunInChildProcess(change, Append, &received));
  EXPECT_EQ(received, "untouched");
}

TEST(ChildProcess, WhatWasSentBeforeTheProcessWasEndedArrives) {
  std::string received;
  auto const end = [](CHILD_LINK* link, void*) {
    SendToParent(link, "abc", 3);
    EndProcess("this line belongs to the test");
  };
  EXPECT_FALSE(RunInChildProcess(end, Append, &received));
  EXPECT_EQ(GetLastError(), ERROR_PROCESS_ABORTED);
  EXPECT_EQ(received, "abc");
  ExpectNoChild();
}

TEST(ChildProcess, CrashAndExitCodeAreError1067) {
  std::string received;
  EXPECT_FALSE(RunInChildProcess([](CHILD_LINK*, void*) { raise(SIGKILL); }, Append, &received));
  EXPECT_EQ(GetLastError(), 1067u);
  EXPECT_FALSE(RunInChildProcess([](CHILD_LINK*, void*) { _exit(3); }, Append, &received));
  EXPECT_EQ(GetLastError(), 1067u);
}

// Thrown where it may not be, it ends the process before anybody can catch it.
TEST(ChildProcess, ShortMemoryIsError8) {
  std::string received;
  EXPECT_FALSE(RunInChildProcess(RunShortOfMemory, Append, &received));
  EXPECT_EQ(GetLastError(), 8u);
  auto const guarded = [](CHILD_LINK* link, void*) noexcept { RunShortOfMemory(link, nullptr); };
  EXPECT_FALSE(RunInChildProcess(guarded, Append, &received));
  EXPECT_EQ(GetLastError(), 8u);
}

TEST(ChildProcess, RefusingReceiverEndsIt) {
  EXPECT_FALSE(RunInChildProcess(SendForever, Refuse, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_CANCELLED);
  ExpectNoChild();
}

TEST(ChildProcess, ThrowingReceiverEndsItToo) {
  auto const fail = [](void const*, DWORD, void*) -> BOOL { throw std::string("x"); };
  EXPECT_THROW(RunInChildProcess(SendForever, fail, nullptr), std::string);
  ExpectNoChild();
}

TEST(ChildProcess, ExitHandlersAreTheParents) {
  std::string received;
  auto const at_exit = [](CHILD_LINK* link, void*) {
    static CHILD_LINK* shared = nullptr;
    shared = link;
    std::atexit([] { SendToParent(shared, "handler", 7); });
    SendToParent(link, "work", 4);
  };
  EXPECT_TRUE(RunInChildProcess(at_exit, Append, &received));
  EXPECT_EQ(received, "work");
}

TEST(ChildProcess, RequestToEndReachesItThoughTheParentBlocksIt) {
  sigset_t set, before;
  sigemptyset(&set);
  sigaddset(&set, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &set, &before);
  std::string received;
  auto const raise_it = [](CHILD_LINK* link, void*) {
    raise(SIGTERM);
    SendToParent(link, "alive", 5);
  };
  EXPECT_FALSE(RunInChildProcess(raise_it, Append, &received));
  EXPECT_EQ(received, "");
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST(ChildProcess, NoDescriptorStaysOpen) {
  int const before = dup(STDERR_FILENO);
  close(before);
  std::string received;
  RunInChildProcess(SendText, Append, &received);
  RunInChildProcess(SendForever, Refuse, nullptr);
  int const after = dup(STDERR_FILENO);
  close(after);
  EXPECT_EQ(after, before);
}

TEST(ChildProcess, NullArgumentIsError87) {
  EXPECT_FALSE(RunInChildProcess(nullptr, Append, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_FALSE(RunInChildProcess(SendText, nullptr, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

}  // namespace
