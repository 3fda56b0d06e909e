// Files in several hands: locks between sessions and processes, interrupted and short transfers.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include "tests/platform/file_support.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using test::File;
using test::InChild;
using test::TempDir;

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;

class FileSharing : public testing::Test {
 protected:
  FileSharing() { test::WriteAll(path_, {'t', 'e', 'x', 't'}); }

  // 0 if the file opens, or the error.
  DWORD Try(DWORD access, DWORD disposition = OPEN_EXISTING) const {
    SetLastError(0);
    return File(path_, access, disposition).IsOpen() ? 0 : GetLastError();
  }
  int TryInChild(DWORD access) const {
    return InChild([&] { return static_cast<int>(Try(access)); });
  }

  TempDir const dir_;
  fs::path const path_ = dir_ / "file";
};

// Four threads take a lock file and remove it before they let go: who holds it holds its name.
TEST_F(FileSharing, NameThatGoesWhileItIsOpenedIsBusy) {
  fs::path const lock = dir_ / "lock";
  std::atomic<bool> nameless = false;
  auto const work = [&] {
    for (int turn = 0; turn != 4000; ++turn) {
      File const held(lock, GENERIC_WRITE, OPEN_ALWAYS);
      if (!held.IsOpen()) continue;
      if (!fs::exists(lock)) nameless = true;
      fs::remove(lock);
    }
  };
  std::array<std::jthread, 4> threads;
  for (auto& thread : threads) thread = std::jthread(work);
  for (auto& thread : threads) thread.join();
  EXPECT_FALSE(nameless);
}

TEST_F(FileSharing, ReadersShare) {
  File const reader(path_, GENERIC_READ, OPEN_EXISTING);
  ASSERT_TRUE(reader.IsOpen());
  EXPECT_EQ(Try(GENERIC_READ), 0u);
  EXPECT_EQ(TryInChild(GENERIC_READ), 0);
}

TEST_F(FileSharing, ReaderKeepsWritersOut) {
  File const reader(path_, GENERIC_READ, OPEN_EXISTING);
  EXPECT_EQ(Try(GENERIC_WRITE), 32u);
  EXPECT_EQ(Try(kReadWrite), 32u);
  EXPECT_EQ(TryInChild(kReadWrite), 32);
}

TEST_F(FileSharing, WriterKeepsAllOthersOut) {
  for (DWORD const access : {GENERIC_WRITE, kReadWrite}) {
    File const writer(path_, access, OPEN_EXISTING);
    ASSERT_TRUE(writer.IsOpen());
    EXPECT_EQ(Try(GENERIC_READ), 32u);
    EXPECT_EQ(Try(kReadWrite), 32u);
    EXPECT_EQ(TryInChild(GENERIC_READ), 32);
  }
}

TEST_F(FileSharing, CloseLetsTheNextIn) {
  File writer(path_, kReadWrite, OPEN_EXISTING);
  EXPECT_TRUE(writer.Close());
  EXPECT_EQ(Try(GENERIC_READ), 0u);
  EXPECT_EQ(Try(kReadWrite), 0u);
}

TEST_F(FileSharing, HeldFileKeepsItsContentFromCreateAlways) {
  for (DWORD const access : {GENERIC_READ, kReadWrite}) {
    File const holder(path_, access, OPEN_EXISTING);
    ASSERT_TRUE(holder.IsOpen());
    EXPECT_EQ(Try(GENERIC_WRITE, CREATE_ALWAYS), 32u);
    EXPECT_EQ(Try(GENERIC_WRITE, TRUNCATE_EXISTING), 32u);
    EXPECT_EQ(fs::file_size(path_), 4u);
  }
}

TEST_F(FileSharing, FileHeldByAnotherProcessIsInUse) {
  int ready[2];
  int done[2];
  ASSERT_EQ(pipe(ready) + pipe(done), 0);
  pid_t const child = fork();
  if (child == 0) {
    File const writer(path_, kReadWrite, OPEN_EXISTING);
    char byte = writer.IsOpen() ? 'y' : 'n';
    bool const told = write(ready[1], &byte, 1) == 1 && read(done[0], &byte, 1) == 1;
    _exit(told ? 0 : 1);
  }
  char byte = 0;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  EXPECT_EQ(byte, 'y');
  EXPECT_EQ(Try(GENERIC_READ), 32u);
  EXPECT_EQ(Try(GENERIC_WRITE, CREATE_ALWAYS), 32u);
  ASSERT_EQ(write(done[1], &byte, 1), 1);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(Try(GENERIC_READ), 0u);
  for (int const end : {ready[0], ready[1], done[0], done[1]}) close(end);
}

void Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(20)); }

// A named pipe, where reads and writes come in pieces, and a signal that breaks system calls off.
class SlowFile : public testing::Test {
 protected:
  SlowFile() {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, &old_action_);
    EXPECT_EQ(mkfifo(path_.c_str(), 0600), 0);
  }
  ~SlowFile() override { sigaction(SIGUSR1, &old_action_, nullptr); }

  TempDir const dir_;
  fs::path const path_ = dir_ / "pipe";
  struct sigaction old_action_ {};
};

TEST_F(SlowFile, ReadGathersPiecesAcrossSignals) {
  pthread_t const reader = pthread_self();
  std::thread writer([&] {
    int const end = open(path_.c_str(), O_WRONLY);
    for (char const* const piece : {"one ", "two ", "three"}) {
      Pause();
      pthread_kill(reader, SIGUSR1);
      Pause();
      EXPECT_GT(write(end, piece, std::strlen(piece)), 0);
    }
    close(end);
  });
  File file(path_, GENERIC_READ, OPEN_EXISTING);
  EXPECT_EQ(file.Read(11), "one two thr");
  EXPECT_EQ(file.Read(100), "ee");
  EXPECT_EQ(file.Read(100), "");
  writer.join();
}

// A pipe holds 64 KiB, so the write waits, and each signal ends it short.
TEST_F(SlowFile, WriteGoesOnBehindSignals) {
  pthread_t const writer = pthread_self();
  std::string text(1 << 20, '?');
  for (size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>('a' + i % 23);
  std::string received;
  std::thread reader([&] {
    int const end = open(path_.c_str(), O_RDONLY);
    std::string buffer(100'000, '?');
    for (ssize_t size = 1; size > 0;) {
      if (received.size() < 500'000) pthread_kill(writer, SIGUSR1);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      size = read(end, buffer.data(), buffer.size());
      if (size > 0) received.append(buffer, 0, static_cast<size_t>(size));
    }
    close(end);
  });
  File file(path_, GENERIC_WRITE, OPEN_EXISTING);
  EXPECT_TRUE(file.Write(text));
  EXPECT_TRUE(file.Close());
  reader.join();
  EXPECT_TRUE(received == text);
}

TEST_F(SlowFile, HasNoPositions) {
  std::thread writer([&] { close(open(path_.c_str(), O_WRONLY)); });
  File const file(path_, GENERIC_READ, OPEN_EXISTING);
  EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), 132u);
  writer.join();
}

TEST_F(SlowFile, WriterIsToldWhenNobodyReads) {
  int const exit_code = InChild([&] {
    std::signal(SIGPIPE, SIG_IGN);
    std::thread reader([&] { close(open(path_.c_str(), O_RDONLY)); });
    File file(path_, GENERIC_WRITE, OPEN_EXISTING);
    reader.join();
    return file.Write("text") ? 1 : static_cast<int>(GetLastError());
  });
  EXPECT_EQ(exit_code, 109);
}

}  // namespace
