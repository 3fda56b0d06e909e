// Programs of calculator functions.
#include "tools/extract/colour/calculator.h"

#include <gtest/gtest.h>

namespace sorrelin::tool {
namespace {

// The stack of 7 and 8 after the program.
std::vector<double> After(std::string_view program) {
  Calculator calculator;
  EXPECT_TRUE(calculator.Read(program)) << program;
  return calculator.Run({7, 8});
}

TEST(Calculator, WordsOfTheStackMoveItsValues) {
  EXPECT_EQ(After("{ 2 copy }"), (std::vector<double>{7, 8, 7, 8}));
  EXPECT_EQ(After("{ 1 index }"), (std::vector<double>{7, 8, 7}));
  EXPECT_EQ(After("{ 9 3 1 roll }"), (std::vector<double>{9, 7, 8}));
  EXPECT_EQ(After("{ 9 3 -1 roll }"), (std::vector<double>{8, 9, 7}));
}

// A run ends there and leaves what it has, whatever is left of the count in 32 bits.
TEST(Calculator, CountsBeyondTheStackEndTheRun) {
  for (double const count : {3.0, 4294967294.0, 4294967295.0, 4294967296.0, 4294967297.0, 9e14}) {
    std::string const digits = std::to_string(static_cast<long long>(count));
    EXPECT_EQ(After("{ " + digits + " copy }"), (std::vector<double>{7, 8, count}));
    EXPECT_EQ(After("{ " + digits + " index }"), (std::vector<double>{7, 8, count}));
    EXPECT_EQ(After("{ " + digits + " 1 roll }"), (std::vector<double>{7, 8, count, 1}));
  }
}

}  // namespace
}  // namespace sorrelin::tool
