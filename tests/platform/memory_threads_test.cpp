// Global memory blocks on several threads, and blocks that nobody frees.
#include <gtest/gtest.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/memory.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <thread>
#include <vector>

#if defined(SORRELIN_SANITIZED)
#include <sanitizer/lsan_interface.h>
#endif

namespace {

void OnThreads(int count, std::function<void(int)> const& work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) threads.emplace_back(work, i);
  for (std::thread& thread : threads) thread.join();
}

bool Holds(HGLOBAL block, int value, size_t size) {
  auto const* const bytes = static_cast<unsigned char const*>(GlobalLock(block));
  bool const held = bytes != nullptr && GlobalSize(block) == size && bytes[0] == value &&
                    bytes[size - 1] == value;
  GlobalUnlock(block);
  return held;
}

// Allocates, fills, grows and frees blocks, a hundred alive at a time.
int CountMistakes(int thread) {
  std::mt19937 random(static_cast<unsigned>(thread));
  std::vector<std::pair<HGLOBAL, size_t>> blocks(100);
  int mistakes = 0;
  for (int round = 0; round < 20'000; ++round) {
    auto& [block, size] = blocks[random() % blocks.size()];
    if (block != nullptr) {
      if (!Holds(block, thread, size)) ++mistakes;
      if (GlobalFree(block) != nullptr) ++mistakes;
    }
    size = 1 + random() % 500;
    block = GlobalAlloc(GMEM_MOVEABLE, size / 2);
    if (GlobalReAlloc(block, size, GMEM_MOVEABLE) != block) ++mistakes;
    std::memset(GlobalLock(block), thread, size);
    GlobalUnlock(block);
  }
  for (auto const& [block, size] : blocks) GlobalFree(block);
  return mistakes;
}

TEST(GlobalMemoryThreads, BlocksOfDifferentThreadsDoNotMeet) {
  std::atomic<int> mistakes = 0;
  OnThreads(4, [&](int thread) { mistakes += CountMistakes(thread + 1); });
  EXPECT_EQ(mistakes, 0);
}

// A misuse, but one that must not touch freed memory: each call works as a whole or is refused.
TEST(GlobalMemoryThreads, CallsOnOneBlockAreWholeOrRefused) {
  std::atomic<int> mistakes = 0;
  for (int round = 0; round < 50; ++round) {
    HGLOBAL const block = GlobalAlloc(GHND, 1000);
    std::atomic<int> freed = 0;
    OnThreads(4, [&](int thread) {
      for (size_t size = 1; size < 200; ++size) {
        GlobalReAlloc(block, size * 1000, GHND);
        if (GlobalSize(block) % 1000 != 0) ++mistakes;
        if (GlobalLock(block) != nullptr) GlobalUnlock(block);
        if (thread == 0 && size == 50 && GlobalFree(block) == nullptr) ++freed;
      }
    });
    if (freed == 0 && GlobalFree(block) != nullptr) ++mistakes;
    if (GlobalFree(block) != block) ++mistakes;
  }
  EXPECT_EQ(mistakes, 0);
}

TEST(GlobalMemoryThreads, OneOfManyFreesSucceeds) {
  for (int round = 0; round < 200; ++round) {
    HGLOBAL const block = GlobalAlloc(GHND, 10);
    std::atomic<int> freed = 0;
    OnThreads(4, [&](int) {
      if (GlobalFree(block) == nullptr) ++freed;
    });
    EXPECT_EQ(freed, 1);
  }
}

#if defined(SORRELIN_SANITIZED)
// The table of live handles must not hide blocks from the search for leaks.
TEST(GlobalMemoryLeaks, BlockThatNobodyFreesIsFound) {
  EXPECT_EXIT(
      {
        for (int i = 0; i < 10; ++i) GlobalAlloc(GHND, 12'345);
        std::_Exit(__lsan_do_recoverable_leak_check() != 0 ? 3 : 0);
      },
      testing::ExitedWithCode(3), "");
}
#endif

}  // namespace
