// Children of the program: what reaches them, what comes back, and how they may end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/process.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tools/cli/messages.h"
#include "tools/documents/child_function.h"
#include "tools/system/program.h"

namespace sorrelin::tool {
namespace {

using Text = std::string;

struct Part {
  Text name;
  std::optional<int> number;

  template <typename Self>
  static auto Fields(Self& self) {
    return std::tie(self.name, self.number);
  }
};

std::optional<Text> Join(Text const& first, bool const& marked, std::vector<Part> const& parts,
                         Text&) {
  Text text = first + (marked ? "!" : "?");
  for (Part const& part : parts) {
    text += part.name + (part.number ? std::to_string(*part.number) : "-");
  }
  return text;
}
ChildFunction<Text, bool, std::vector<Part>> const kJoin("join", Join);

std::optional<Text> Refuse(Text const& reason, Text& problem) {
  problem = reason;
  return std::nullopt;
}
ChildFunction<Text> const kRefuse("refuse", Refuse);

enum class Way { kAbort, kCrash, kEndProcess, kExit3, kExit0, kShort, kShortAtEnd, kThrow };

void RunShort() { throw std::bad_alloc(); }

void RunShortWhereNothingMayThrow() noexcept { RunShort(); }

void Crash() {
  int* volatile nowhere = nullptr;
  *nowhere = 1;
}

std::optional<Text> End(Way const& way, Text&) {
  if (way == Way::kAbort) std::abort();
  if (way == Way::kCrash) Crash();
  if (way == Way::kEndProcess) EndProcess("a line that nobody sees");
  if (way == Way::kExit3) std::_Exit(3);
  if (way == Way::kExit0) std::_Exit(0);
  if (way == Way::kShort) RunShort();
  if (way == Way::kShortAtEnd) RunShortWhereNothingMayThrow();
  throw 1;
}
ChildFunction<Way> const kEnd("end", End);

void SendForever(ParentLink& link) {
  while (link.SendText(Text(1000, 'x'))) {
  }
}
ChildFunction<> const kSendForever("send for ever", SendForever);

void PrintAndSend(ParentLink& link) {
  std::fputs("printed by a child\n", stderr);
  std::fflush(stderr);
  link.SendText("sent");
}
ChildFunction<> const kPrint("print", PrintAndSend);

Text ProblemOf(ChildWork const& work) {
  Text problem;
  EXPECT_EQ(AskChild(work, problem), std::nullopt);
  return problem;
}

TEST(ChildProcess, ValuesReachTheChildAndItsAnswerComesBack) {
  Text problem;
  EXPECT_EQ(AskChild(kJoin.With(Text("a\0b", 3), true, {{"x", 7}, {"", {}}}), problem),
            Text("a\0b!x7-", 7));
}

// Longer than any pipe holds, both ways.
TEST(ChildProcess, ValuesAndAnswersMayBeLong) {
  Text text;
  text.resize(20'000'000, 'y');
  Text problem;
  EXPECT_EQ(AskChild(kJoin.With(text, false, {}), problem), text + "?");
}

TEST(ChildProcess, ProblemOfAChildIsThatOfItsParent) {
  EXPECT_EQ(ProblemOf(kRefuse.With("is not wanted (leave it)")), "is not wanted (leave it)");
}

TEST(ChildProcess, ChildThatEndsEarlyIsNamed) {
  for (Way const way : {Way::kAbort, Way::kCrash, Way::kEndProcess, Way::kExit3}) {
    EXPECT_EQ(ProblemOf(kEnd.With(way)), kEndedReader) << static_cast<int>(way);
  }
}

TEST(ChildProcess, ChildThatLeavesWithoutAWordIsNamed) {
  EXPECT_EQ(ProblemOf(kEnd.With(Way::kExit0)), kSilentReader);
}

TEST(ChildProcess, ShortMemoryOfAChildIsNamed) {
  EXPECT_EQ(ProblemOf(kEnd.With(Way::kShort)), kMemoryProblem);
  EXPECT_EQ(ProblemOf(kEnd.With(Way::kShortAtEnd)), kMemoryProblem);
}

TEST(ChildProcess, ReceiverMayStopTheChild) {
  auto const refuse = [](std::span<BYTE const>) { return false; };
  EXPECT_FALSE(RunInChild(kSendForever.With(), refuse));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_CANCELLED});
}

TEST(ChildProcess, ReceiverThatThrowsStopsTheChild) {
  auto const fail = [](std::span<BYTE const>) -> bool { throw Text("enough"); };
  EXPECT_THROW(RunInChild(kSendForever.With(), fail), Text);
}

TEST(ChildProcess, StandardErrorOfAChildIsDropped) {
  Text sent;
  auto const take = [&](std::span<BYTE const> bytes) {
    sent.append(bytes.begin(), bytes.end());
    return true;
  };
  ::testing::internal::CaptureStderr();
  EXPECT_TRUE(RunInChild(kPrint.With(), take));
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(sent, "sent");
}

TEST(ChildProcess, ChildrenRunSideBySideAndOneThatEndsLeavesTheOthers) {
  std::atomic<int> answered = 0, ended = 0;
  RunSideBySide(4, [&](size_t index) {
    for (int i = 0; i < 3; ++i) {
      Text problem;
      bool const has_answered = index == 1 ? AskChild(kEnd.With(Way::kAbort), problem).has_value()
                                           : AskChild(kJoin.With("z", true, {}), problem) == "z!";
      ++(has_answered ? answered : ended);
    }
  });
  EXPECT_EQ(answered, 9);
  EXPECT_EQ(ended, 3);
}

TEST(PackedValues, ValuesThatAreCutShortAreRefused) {
  Text packed;
  Pack(packed, std::vector<Text>{"abc", "def"});
  for (size_t size = 0; size < packed.size(); ++size) {
    std::string_view rest = std::string_view(packed).substr(0, size);
    std::vector<Text> texts;
    EXPECT_THROW(Unpack(rest, texts), std::length_error) << size;
  }
}

TEST(PackedValues, NumbersThatAreCutShortOrTooManyAreRefused) {
  Text packed;
  Pack(packed, std::vector<unsigned>{7, 8});
  std::string_view rest = packed;
  std::vector<unsigned> numbers;
  Unpack(rest, numbers);
  EXPECT_EQ(numbers, (std::vector<unsigned>{7, 8}));
  EXPECT_TRUE(rest.empty());
  for (size_t size = 0; size < packed.size(); ++size) {
    rest = std::string_view(packed).substr(0, size);
    EXPECT_THROW(Unpack(rest, numbers), std::length_error) << size;
  }
  size_t const beyond_memory = SIZE_MAX / sizeof(unsigned) + 2;  // whose bytes would come round
  std::memcpy(packed.data(), &beyond_memory, sizeof beyond_memory);
  rest = packed;
  EXPECT_THROW(Unpack(rest, numbers), std::length_error);
}

}  // namespace
}  // namespace sorrelin::tool

// A child may be this program started again.
int main(int argc, char** argv) {
  using namespace sorrelin::tool;
  TidyUpOnCrash([] {}, EXIT_FAILURE);
  auto const child =
      RunAsChild(std::span(argv, static_cast<size_t>(argc)), NamedFunction::CallByName, [] {});
  if (child) return *child;
  ::testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
