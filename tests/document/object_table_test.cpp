// The object table and the page list, which writer and reader share.
#include <gtest/gtest.h>
#include <sorrelin/document/object_table.h>
#include <sorrelin/document/page_list.h>

#include <algorithm>
#include <memory>
#include <new>

namespace {

using sorrelin::ObjectTable;
using sorrelin::PageList;

TEST(ObjectTable, NumbersBeyondItHaveAFreeRow) {
  auto const table = std::make_unique<ObjectTable>();
  table->Change(ObjectTable::kRows - 1).nOffset = 5;
  EXPECT_TRUE(table->IsTaken(ObjectTable::kRows - 1));
  EXPECT_FALSE(table->IsTaken(ObjectTable::kRows));
  EXPECT_EQ((*table)[0xFFFFFFFF].nOffset, 0u);
}

TEST(ObjectTable, NextOffsetFollowsEachChangeOfARow) {
  auto const table = std::make_unique<ObjectTable>();
  table->SetRowsInDocument(3);
  table->Change(1).nOffset = 10;
  table->Change(2).nOffset = 50;
  EXPECT_EQ(table->NextOffsetAbove(10, 100), 50u);
  table->Change(2).nOffset = 30;
  EXPECT_EQ(table->NextOffsetAbove(10, 100), 30u);
  EXPECT_EQ(table->NextOffsetAbove(30, 100), 100u);
}

TEST(ObjectTable, RowsAfterThoseOfTheDocumentEndNoObject) {
  auto const table = std::make_unique<ObjectTable>();
  table->Change(5).nOffset = 40;
  table->SetRowsInDocument(5);
  EXPECT_EQ(table->NextOffsetAbove(10, 100), 100u);
  table->SetRowsInDocument(6);
  EXPECT_EQ(table->NextOffsetAbove(10, 100), 40u);
}

TEST(ObjectTable, MoreRowsThanItHasAreThoseItHas) {
  auto const table = std::make_unique<ObjectTable>();
  table->Change(ObjectTable::kRows - 1).nOffset = 40;
  table->SetRowsInDocument(0xFFFFFFFF);
  EXPECT_EQ(table->NextOffsetAbove(10, 100), 40u);
}

TEST(ObjectTable, RowsAreZeroAgainAfterClear) {
  auto const table = std::make_unique<ObjectTable>();
  table->Change(3) = {10, 1, 1};
  table->Clear();
  EXPECT_EQ((*table)[3].nOffset, 0u);
  table->Change(4).nOffset = 20;
  EXPECT_EQ((*table)[3].nOffset, 0u);
  EXPECT_EQ((*table)[3].nGeneration, 0u);
}

// A table is made in the memory of an earlier one, whose rows it must not show.
TEST(ObjectTable, RowsOfANewTableAreZero) {
  auto const memory = std::make_unique<BYTE[]>(sizeof(ObjectTable));
  std::fill_n(memory.get(), sizeof(ObjectTable), BYTE{0xFF});
  auto* const table = new (memory.get()) ObjectTable;
  EXPECT_FALSE(table->IsTaken(7));
  table->Change(8).nOffset = 20;
  EXPECT_FALSE(table->IsTaken(7));
  EXPECT_EQ((*table)[8].bInUse, 0u);
  EXPECT_FALSE(table->IsTaken(9));
  std::destroy_at(table);
}

TEST(ObjectTable, CopyHasTheRowsAndNoOthers) {
  auto const table = std::make_unique<ObjectTable>();
  table->Change(3).nOffset = 10;
  auto const other = std::make_unique<ObjectTable>();
  other->Change(5).nOffset = 20;
  *other = *table;
  EXPECT_EQ((*other)[3].nOffset, 10u);
  EXPECT_FALSE(other->IsTaken(5));
}

// Kept: the page count is in the slot after the last.
TEST(PageList, Slot30000IsThePageCount) {
  auto const pages = std::make_unique<PageList>();
  pages->Set(29999, 7);
  pages->Set(30000, 12);
  pages->Set(30001, 13);
  EXPECT_EQ((*pages)[29999], 7u);
  EXPECT_EQ((*pages)[30000], 12u);
  EXPECT_EQ((*pages)[30001], 0u);
  EXPECT_EQ(pages->count(), 12u);
  pages->Clear();
  EXPECT_EQ((*pages)[29999], 0u);
  EXPECT_EQ(pages->count(), 12u);
}

}  // namespace
