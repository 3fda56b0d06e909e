// Global memory blocks: what a handle is, locks, sizes and resizing.
#include <gtest/gtest.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/memory.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "tests/support/dib.h"
#include "tests/support/environment.h"
#include "tests/support/temp_dir.h"

namespace {

using test::Block;

Block Make(UINT flags, size_t bytes) { return Block(GlobalAlloc(flags, bytes)); }

void Fill(HGLOBAL handle, int value) {
  std::memset(GlobalLock(handle), value, GlobalSize(handle));
  GlobalUnlock(handle);
}

HGLOBAL HandleOf(uint64_t value) { return reinterpret_cast<HGLOBAL>(value); }

// Every operation on `handle` fails with error 6.
void ExpectRefused(HGLOBAL handle) {
  auto const error = [] {
    DWORD const number = GetLastError();
    SetLastError(0);
    return number;
  };
  SetLastError(0);
  EXPECT_EQ(GlobalLock(handle), nullptr);
  EXPECT_EQ(error(), 6u);
  EXPECT_EQ(GlobalUnlock(handle), 0);
  EXPECT_EQ(error(), 6u);
  EXPECT_EQ(GlobalSize(handle), 0u);
  EXPECT_EQ(error(), 6u);
  EXPECT_EQ(GlobalReAlloc(handle, 10, GMEM_MOVEABLE), nullptr);
  EXPECT_EQ(error(), 6u);
  if (handle == nullptr) return;
  EXPECT_EQ(GlobalFree(handle), handle);
  EXPECT_EQ(error(), 6u);
}

TEST(GlobalMemory, HandleIsNotTheAddress) {
  for (UINT const flags : std::initializer_list<UINT>{GMEM_MOVEABLE, GHND, GMEM_FIXED, GPTR}) {
    Block const block = Make(flags, 100);
    ASSERT_NE(block.get(), nullptr);
    EXPECT_NE(block.get(), INVALID_HANDLE_VALUE);
    EXPECT_NE(GlobalLock(block), block.get());
    GlobalUnlock(block);
  }
}

TEST(GlobalMemory, ForeignValuesAreRefused) {
  Block const block = Make(GHND, 100);
  void* const address = GlobalLock(block);
  int local = 0;
  for (HGLOBAL const handle : {HandleOf(0), HandleOf(~uint64_t{0}), HandleOf(1), HandleOf(0x1234),
                               HandleOf(0xB5A0000000000001), address, static_cast<void*>(&local)}) {
    ExpectRefused(handle);
  }
  EXPECT_EQ(GlobalSize(block), 100u);
}

TEST(GlobalMemory, FreedHandleIsRefused) {
  HGLOBAL const handle = GlobalAlloc(GHND, 100);
  EXPECT_EQ(GlobalFree(handle), nullptr);
  ExpectRefused(handle);
}

TEST(GlobalMemory, FreedHandleIsRefusedWhileNewBlocksLive) {
  HGLOBAL const stale = GlobalAlloc(GHND, 100);
  GlobalFree(stale);
  std::vector<Block> blocks;
  for (int i = 0; i < 100; ++i) blocks.push_back(Make(GHND, 100));
  ExpectRefused(stale);
  for (Block const& block : blocks) EXPECT_EQ(GlobalSize(block), 100u);
}

TEST(GlobalMemory, FileHandleIsRefused) {
  test::TempDir const dir;
  HANDLE const file = CreateFileW((dir / "file").string<WCHAR>().c_str(), GENERIC_WRITE, 0, nullptr,
                                  CREATE_NEW, 0, nullptr);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  ExpectRefused(file);
  EXPECT_NE(CloseHandle(file), 0);
}

TEST(GlobalMemory, FreeOfZeroIsHarmless) {
  SetLastError(77);
  EXPECT_EQ(GlobalFree(nullptr), nullptr);
  EXPECT_EQ(GetLastError(), 77u);
}

TEST(GlobalMemory, SizeIsTheRequestedSize) {
  for (size_t const size : {0u, 1u, 2u, 7u, 8u, 23u, 24u, 25u, 4095u, 4096u, 4097u, 1'000'003u}) {
    EXPECT_EQ(GlobalSize(Make(GMEM_MOVEABLE, size)), size);
    EXPECT_EQ(GlobalSize(Make(GPTR, size)), size);
  }
}

TEST(GlobalMemory, LocksNest) {
  Block const block = Make(GHND, 10);
  void* const address = GlobalLock(block);
  EXPECT_EQ(GlobalLock(block), address);
  EXPECT_NE(GlobalUnlock(block), 0);
  SetLastError(77);
  EXPECT_EQ(GlobalUnlock(block), 0);
  EXPECT_EQ(GetLastError(), 0u);
  EXPECT_EQ(GlobalUnlock(block), 0);
  EXPECT_EQ(GetLastError(), 158u);
}

TEST(GlobalMemory, UnlockOfABlockNeverLockedIsError158) {
  Block const block = Make(GPTR, 10);
  EXPECT_EQ(GlobalUnlock(block), 0);
  EXPECT_EQ(GetLastError(), 158u);
}

TEST(GlobalMemory, LockedBlockCanBeFreed) {
  HGLOBAL const handle = GlobalAlloc(GHND, 10);
  ASSERT_NE(GlobalLock(handle), nullptr);
  EXPECT_EQ(GlobalFree(handle), nullptr);
  ExpectRefused(handle);
}

TEST(GlobalMemory, EmptyMovableBlockCannotBeLocked) {
  Block const block = Make(GHND, 0);
  ASSERT_NE(block.get(), nullptr);
  EXPECT_EQ(GlobalLock(block), nullptr);
  EXPECT_EQ(GetLastError(), 157u);
  EXPECT_EQ(GlobalUnlock(block), 0);
  EXPECT_EQ(GetLastError(), 158u);
}

TEST(GlobalMemory, EmptyFixedBlockCanBeLocked) {
  Block const block = Make(GPTR, 0);
  EXPECT_NE(GlobalLock(block), nullptr);
  EXPECT_EQ(GlobalUnlock(block), 0);
  EXPECT_EQ(GetLastError(), 0u);
}

TEST(GlobalMemory, ZeroedBlockIsZeroWhereDirtyMemoryWasFreed) {
  for (int round = 0; round < 20; ++round) {
    Block block = Make(GMEM_MOVEABLE, 1000);
    Fill(block, 0xAA);
    block = Block();
    EXPECT_EQ(Make(GHND, 1000).Content(), test::Bytes(1000, 0));
    EXPECT_EQ(Make(GPTR, 1000).Content(), test::Bytes(1000, 0));
  }
}

// Much, and less than addresses of 32 bits have in one piece.
constexpr size_t kManyBytes = size_t{1} << (sizeof(void*) == 8 ? 30 : 28);

// A quarter of the size is the bound: a sanitizer keeps an eighth beside each block.
TEST(GlobalMemory, UntouchedZeroPagesCostNothing) {
  size_t const before = test::PeakBytes();
  Block const block = Make(GHND, kManyBytes);
  ASSERT_NE(block.get(), nullptr);
  static_cast<char*>(GlobalLock(block))[kManyBytes / 2] = 1;
  EXPECT_LT(test::PeakBytes() - before, kManyBytes / 4);
}

TEST(GlobalMemory, UntouchedZeroGrowthCostsNothing) {
  Block const block = Make(GHND, 10);
  size_t const before = test::PeakBytes();
  ASSERT_EQ(GlobalReAlloc(block, kManyBytes, GHND), block.get());
  EXPECT_LT(test::PeakBytes() - before, kManyBytes / 4);
}

TEST(GlobalMemory, SizesBeyondMemoryAreError8) {
  for (size_t const size : {SIZE_MAX, SIZE_MAX / 2 + 1, SIZE_MAX / 2, SIZE_MAX / 4}) {
    for (UINT const flags : std::initializer_list<UINT>{GMEM_MOVEABLE, GHND, GPTR}) {
      SetLastError(0);
      EXPECT_EQ(GlobalAlloc(flags, size), nullptr);
      EXPECT_EQ(GetLastError(), 8u);
    }
  }
}

TEST(GlobalMemory, CompactDoesNothing) { EXPECT_EQ(GlobalCompact(0xFFFFFFFF), 0u); }

TEST(GlobalReAlloc, GrowthKeepsTheContentAndTheHandle) {
  Block const block = Make(GMEM_MOVEABLE, 100);
  Fill(block, 0x5A);
  for (size_t const size : {101u, 5000u, 3'000'000u}) {
    EXPECT_EQ(GlobalReAlloc(block, size, GMEM_MOVEABLE), block.get());
    EXPECT_EQ(GlobalSize(block), size);
    EXPECT_EQ(block.Content(100), test::Bytes(100, 0x5A));
  }
}

TEST(GlobalReAlloc, GrowthIsZeroedOnRequest) {
  for (size_t const growth : {size_t{1}, size_t{3000}, size_t{3} << 20}) {
    Block const block = Make(GMEM_MOVEABLE, 100);
    Fill(block, 0x5A);
    ASSERT_EQ(GlobalReAlloc(block, 100 + growth, GHND), block.get());
    test::Bytes expected(100, 0x5A);
    expected.resize(100 + growth);
    EXPECT_EQ(block.Content(), expected);
  }
}

TEST(GlobalReAlloc, GrowthBehindAShrinkIsZeroedOnRequest) {
  for (UINT const flags : std::initializer_list<UINT>{GMEM_MOVEABLE, GMEM_FIXED}) {
    Block const block = Make(flags, 100);
    Fill(block, 0x5A);
    ASSERT_EQ(GlobalReAlloc(block, 10, 0), block.get());
    ASSERT_EQ(GlobalReAlloc(block, 100, GHND), block.get());
    test::Bytes expected(10, 0x5A);
    expected.resize(100);
    EXPECT_EQ(block.Content(), expected);
  }
}

TEST(GlobalReAlloc, ShrinkKeepsTheStart) {
  Block const block = Make(GMEM_MOVEABLE, 1000);
  Fill(block, 0x5A);
  EXPECT_EQ(GlobalReAlloc(block, 10, GMEM_MOVEABLE), block.get());
  EXPECT_EQ(block.Content(), test::Bytes(10, 0x5A));
}

TEST(GlobalReAlloc, LockedBlockStaysInPlaceWhenItShrinks) {
  for (UINT const flags : std::initializer_list<UINT>{0, GMEM_MOVEABLE}) {
    Block const block = Make(GHND, 100'000);
    void* const address = GlobalLock(block);
    EXPECT_EQ(GlobalReAlloc(block, 10, flags), block.get());
    EXPECT_EQ(GlobalSize(block), 10u);
    EXPECT_EQ(GlobalLock(block), address);
  }
}

// Without GMEM_MOVEABLE a block that somebody may look at must not move.
TEST(GlobalReAlloc, HeldBlockGrowsOnlyWithLeaveToMove) {
  for (UINT const flags : std::initializer_list<UINT>{GHND, GPTR}) {
    Block const block = Make(flags, 10);
    auto* const address = static_cast<char*>(GlobalLock(block));
    *address = 7;
    EXPECT_EQ(GlobalReAlloc(block, 100'000, GMEM_ZEROINIT), nullptr);
    EXPECT_EQ(GetLastError(), 8u);
    EXPECT_EQ(GlobalSize(block), 10u);
    EXPECT_EQ(*address, 7);
    EXPECT_EQ(GlobalReAlloc(block, 100'000, GMEM_MOVEABLE), block.get());
    EXPECT_EQ(GlobalSize(block), 100'000u);
    EXPECT_EQ(block.Content(1), test::Bytes{7});
  }
}

TEST(GlobalReAlloc, LocksOutliveAMove) {
  Block const block = Make(GHND, 10);
  GlobalLock(block);
  ASSERT_EQ(GlobalReAlloc(block, 100'000, GMEM_MOVEABLE), block.get());
  GlobalLock(block);
  EXPECT_NE(GlobalUnlock(block), 0);
  EXPECT_EQ(GlobalUnlock(block), 0);
  EXPECT_EQ(GetLastError(), 0u);
}

TEST(GlobalReAlloc, ToZeroBytesAndBack) {
  Block const block = Make(GHND, 10);
  EXPECT_EQ(GlobalReAlloc(block, 0, GMEM_MOVEABLE), block.get());
  EXPECT_EQ(GlobalSize(block), 0u);
  EXPECT_EQ(GlobalLock(block), nullptr);
  EXPECT_EQ(GetLastError(), 157u);
  EXPECT_EQ(GlobalReAlloc(block, 5, GHND), block.get());
  EXPECT_EQ(block.Content(), test::Bytes(5, 0));
}

TEST(GlobalReAlloc, SizesBeyondMemoryLeaveTheBlock) {
  for (size_t const size : {SIZE_MAX, SIZE_MAX / 2 + 1, SIZE_MAX / 2, SIZE_MAX / 4}) {
    Block const block = Make(GMEM_MOVEABLE, 10);
    Fill(block, 0x5A);
    for (UINT const flags : std::initializer_list<UINT>{GMEM_MOVEABLE, GHND}) {
      EXPECT_EQ(GlobalReAlloc(block, size, flags), nullptr);
      EXPECT_EQ(GetLastError(), 8u);
      EXPECT_EQ(block.Content(), test::Bytes(10, 0x5A));
    }
  }
}

// The run-length encoder grows its block row by row.
TEST(GlobalReAlloc, ManySmallStepsKeepEveryByte) {
  Block const block = Make(GMEM_MOVEABLE, 0);
  for (size_t size = 0; size < 5000; ++size) {
    ASSERT_EQ(GlobalReAlloc(block, size + 1, GMEM_MOVEABLE), block.get());
    static_cast<BYTE*>(GlobalLock(block))[size] = static_cast<BYTE>(size);
    GlobalUnlock(block);
  }
  test::Bytes const content = block.Content();
  for (size_t i = 0; i < content.size(); ++i) ASSERT_EQ(content[i], static_cast<BYTE>(i));
}

}  // namespace
