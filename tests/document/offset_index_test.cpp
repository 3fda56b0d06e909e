// The sorted offsets of the object table against a walk over it.
#include <gtest/gtest.h>
#include <sorrelin/document/object_entry.h>
#include <sorrelin/document/offset_index.h>
#include <sorrelin/frame/session.h>

#include <algorithm>
#include <vector>

namespace {

using Rows = std::vector<sorrelin::ObjectEntry>;

// The answer as a walk over the table finds it.
DWORD Walk(Rows const& rows, DWORD offset, DWORD size) {
  DWORD next = size;
  for (sorrelin::ObjectEntry const& row : rows) {
    if (row.nOffset > offset && row.nOffset < size) next = std::min(next, row.nOffset);
  }
  return next;
}

TEST(OffsetIndex, AgreesWithAWalkOverTheTable) {
  Rows rows;
  uint32_t state = 7;
  for (int i = 0; i < 500; ++i) {
    state = state * 1664525 + 1013904223;
    rows.push_back({(state >> 16) % 1000, 0, 1});
  }
  sorrelin::OffsetIndex index;
  for (DWORD offset = 0; offset < 1100; ++offset) {
    for (DWORD const size : {1u, 400u, 999u, 2000u}) {
      EXPECT_EQ(index.NextAbove(rows, offset, size), Walk(rows, offset, size));
    }
  }
}

TEST(OffsetIndex, RowZeroTakesPart) {
  Rows const rows{{50, 0, 0}, {10, 0, 1}};
  EXPECT_EQ(sorrelin::OffsetIndex().NextAbove(rows, 10, 100), 50u);
}

TEST(OffsetIndex, WithoutRowsTheSizeIsNext) {
  EXPECT_EQ(sorrelin::OffsetIndex().NextAbove({}, 10, 100), 100u);
}

TEST(OffsetIndex, SeesChangedRowsAfterClear) {
  Rows rows{{50, 0, 0}, {10, 0, 1}};
  sorrelin::OffsetIndex index;
  EXPECT_EQ(index.NextAbove(rows, 10, 100), 50u);
  rows[0].nOffset = 30;
  index.Clear();
  EXPECT_EQ(index.NextAbove(rows, 10, 100), 30u);
}

}  // namespace
