// The numbers of an array, as they are read from /MediaBox.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/syntax/scanner.h>
#include <tests/support/scan_buffer.h>

#include <string>
#include <vector>

namespace {

using sorrelin::GetNumericArray;
using test::ScanBuffer;
using testing::ElementsAreArray;

constexpr DWORD kUnset = 0xDEADBEEF;

struct Row {
  char const* what;
  std::string text;
  int result;
  std::vector<DWORD> values;  // four slots
};

Row const kRows[] = {
    {"plain", "/MediaBox [0 1 612 792]/X ", 1, {0, 1, 612, 792}},
    {"bracket at the name", "/MediaBox[0 1 612 792]", 1, {0, 1, 612, 792}},
    {"point and digits are cut", "/MediaBox [0 0 612.5 792.9]", 1, {0, 0, 612, 792}},
    {"second point is cut with them", "/MediaBox [1.2.3 4 5 6]", 1, {1, 4, 5, 6}},
    {"point first", "/MediaBox [.5 4 5 6]", 0, {kUnset, kUnset, kUnset, kUnset}},
    {"one short, touched by the bracket", "/MediaBox [0 0 612]", 1, {0, 0, 612, kUnset}},
    {"two short", "/MediaBox [7 8] 1 2 ", 0, {7, 8, kUnset, kUnset}},
    {"negative entries are dropped", "/MediaBox [-5 -5 612 792]", 0, {612, 792, kUnset, kUnset}},
    {"free bracket: one more number lands", "/MediaBox [0 0 612 ]/R 90 ", 1, {0, 0, 612, 90}},
    {"free bracket, not enough", "/MediaBox [7 ] 8 9 1 ", 0, {7, 8, kUnset, kUnset}},
    {"free bracket, one short", "/MediaBox [7 5 ] 8 9 ", 1, {7, 5, 8, kUnset}},
    {"closing bracket arms", "/MediaBox [ ]7 8 9 ", 0, {7, kUnset, kUnset, kUnset}},
    {"stops behind the fourth", "/MediaBox [1 2 3 4 5]", 1, {1, 2, 3, 4}},
    {"slash drops", "/MediaBox [1 2/3 4 5 6]", 1, {1, 4, 5, 6}},
    {"longer name does not match", "/MediaBoxes [1 2 3 4] ", 0, {kUnset, kUnset, kUnset, kUnset}},
    {"end of the buffer", "/MediaBox [1 2 3 4", 0, {1, 2, 3, kUnset}},
};

TEST(NumericArray, FourNumbersOfABox) {
  for (Row const& row : kRows) {
    ScanBuffer buffer(row.text);
    std::vector<DWORD> values(4, kUnset);
    EXPECT_EQ(GetNumericArray(buffer.data(), buffer.size(), "MediaBox", values.data(), 4),
              row.result)
        << row.what;
    EXPECT_THAT(values, ElementsAreArray(row.values)) << row.what;
  }
}

TEST(NumericArray, NullKeyReadsFromTheStart) {
  ScanBuffer buffer("[3 4]");
  DWORD values[2] = {};
  EXPECT_EQ(GetNumericArray(buffer.data(), buffer.size(), nullptr, values, 2), 1);
  EXPECT_EQ(values[0], 3u);
  EXPECT_EQ(values[1], 4u);
}

TEST(NumericArray, MissingArgumentsGiveZero) {
  ScanBuffer buffer("[3 4]");
  DWORD values[2] = {};
  EXPECT_EQ(GetNumericArray(nullptr, 5, nullptr, values, 2), 0);
  EXPECT_EQ(GetNumericArray(buffer.data(), 0, nullptr, values, 2), 0);
  EXPECT_EQ(GetNumericArray(buffer.data(), buffer.size(), nullptr, nullptr, 2), 0);
  EXPECT_EQ(GetNumericArray(buffer.data(), buffer.size(), nullptr, values, 0), 0);
}

}  // namespace
