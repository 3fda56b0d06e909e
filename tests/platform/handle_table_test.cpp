// Handles as numbers: which values are live, and that none is given twice.
#include <gtest/gtest.h>
#include <sorrelin/platform/handle_table.h>

#include <cstdint>
#include <set>

namespace {

using sorrelin::HandleKind;
using Table = sorrelin::HandleTable<int, HandleKind::kBlock>;

constexpr int kBits = 8 * sizeof(HANDLE);

bool Always(int) { return true; }

uintptr_t ValueOf(HANDLE handle) { return reinterpret_cast<uintptr_t>(handle); }

TEST(HandleTable, HandleLeadsToItsRecord) {
  Table table;
  HANDLE const first = table.Insert(1);
  HANDLE const second = table.Insert(2);
  EXPECT_NE(first, second);
  EXPECT_EQ(table.Get(first), 1);
  EXPECT_EQ(table.Get(second), 2);
}

TEST(HandleTable, HandleIsNoAddress) {
  Table table;
  auto const value = ValueOf(table.Insert(1));
  EXPECT_EQ(value & 1, 1u);
  // The highest bits of an address are all equal, in 64 bits, and never those of -1.
  EXPECT_NE(value >> (kBits - 8), 0u);
  EXPECT_NE(value >> (kBits - 8), 0xFFu);
}

TEST(HandleTable, VisitChangesTheRecord) {
  Table table;
  HANDLE const handle = table.Insert(1);
  EXPECT_TRUE(table.Visit(handle, [](int& record) { record = 7; }));
  EXPECT_EQ(table.Get(handle), 7);
}

TEST(HandleTable, RemovedHandleStaysDeadWhenItsSlotIsUsedAgain) {
  Table table;
  HANDLE const stale = table.Insert(1);
  EXPECT_EQ(table.RemoveIf(stale, Always), 1);
  HANDLE const fresh = table.Insert(2);
  EXPECT_NE(fresh, stale);
  EXPECT_FALSE(table.Get(stale));
  EXPECT_FALSE(table.RemoveIf(stale, Always));
  EXPECT_FALSE(table.Visit(stale, [](int&) { FAIL(); }));
  EXPECT_EQ(table.Get(fresh), 2);
}

TEST(HandleTable, RemoveIfKeepsARecordThatFailsTheTest) {
  Table table;
  HANDLE const handle = table.Insert(1);
  EXPECT_FALSE(table.RemoveIf(handle, [](int record) { return record == 2; }));
  EXPECT_EQ(table.Get(handle), 1);
}

TEST(HandleTable, EveryChangedBitMakesAForeignValue) {
  Table table;
  auto const value = ValueOf(table.Insert(1));
  for (int bit = 0; bit < kBits; ++bit) {
    EXPECT_FALSE(table.Get(reinterpret_cast<HANDLE>(value ^ uintptr_t{1} << bit))) << bit;
  }
}

TEST(HandleTable, KindsDoNotMix) {
  Table blocks;
  sorrelin::HandleTable<int, HandleKind::kFile> files;
  HANDLE const block = blocks.Insert(1);
  HANDLE const file = files.Insert(2);
  EXPECT_NE(block, file);
  EXPECT_FALSE(files.Get(block));
  EXPECT_FALSE(blocks.Get(file));
}

TEST(HandleTable, SlotIsRetiredAfterItsLastGeneration) {
  sorrelin::HandleTable<int, HandleKind::kBlock, 3> table;
  std::set<HANDLE> given;
  for (int i = 0; i < 100; ++i) {
    HANDLE const handle = table.Insert(i);
    EXPECT_TRUE(given.insert(handle).second) << i;
    uintptr_t const below_the_kind = ValueOf(handle) << sorrelin::kHandleBits.kind;
    EXPECT_LE(below_the_kind >> (kBits - sorrelin::kHandleBits.generation), 3u);
    EXPECT_EQ(table.RemoveIf(handle, Always), i);
  }
  for (HANDLE const handle : given) EXPECT_FALSE(table.Get(handle));
}

}  // namespace
