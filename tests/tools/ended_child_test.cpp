// The verbs that read documents in a child that ends before it has said all.
#include "tests/tools/read_fixture.h"

namespace test {
namespace {

struct EndedVerb {
  char const* name;
  std::vector<std::string> arguments;  // after the document
};

class EndedChild : public ReadTest,
                   public ::testing::WithParamInterface<std::tuple<EndedVerb, char const*>> {
 protected:
  // The verb with its children ended after so many writes; nullopt: undisturbed.
  ProgramResult RunVerb(std::optional<int> writes) const {
    auto const& [verb, end] = GetParam();
    std::vector<std::string> arguments = {SORRELIN_TOOL, verb.name, Out()};
    for (std::string const& argument : verb.arguments) {
      arguments.push_back(argument.starts_with('-') ? argument : Path(argument));
    }
    if (!writes) return RunProgram(arguments);
    return RunProgram(arguments, {},
                      {"LD_PRELOAD=" ENDED_CHILD, std::string("ENDED_CHILD=") + end,
                       "ENDED_CHILD_AFTER=" + std::to_string(*writes),
                       "ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=0"});
  }
};

TEST_P(EndedChild, HasFailedUnlessItHasSaidAll) {
  constexpr int kMostWrites = 60;
  WritePix("1.png", Noise(72, 36, 8));
  ASSERT_EQ(Make({Out(), Path("1.png")}).exit_code, 0);
  ProgramResult const whole = RunVerb(std::nullopt);
  ASSERT_EQ(whole.exit_code, 0) << whole.err;
  bool const writes_file = std::filesystem::exists(Path("x1.png"));
  auto const file = writes_file ? ReadAll(Path("x1.png")) : Bytes{};
  int writes = 0;
  for (; writes < kMostWrites; ++writes) {
    std::filesystem::remove(Path("x1.png"));
    ProgramResult const ended = RunVerb(writes);
    if (ended.exit_code == 0) {
      EXPECT_EQ(ended.out, whole.out) << writes;
      break;
    }
    EXPECT_EQ(ended.exit_code, 1) << writes;
    EXPECT_TRUE(ended.err.starts_with("sorrelin: " + Out() + ": ")) << ended.err;
    EXPECT_TRUE(!std::filesystem::exists(Path("x1.png")) || ReadAll(Path("x1.png")) == file);
    EXPECT_EQ(ended.out, "") << writes;
  }
  EXPECT_GT(writes, 1);
  EXPECT_LT(writes, kMostWrites);
  EXPECT_TRUE(!writes_file || ReadAll(Path("x1.png")) == file);
}

INSTANTIATE_TEST_SUITE_P(
    All, EndedChild,
    ::testing::Combine(::testing::Values(EndedVerb{"count", {}}, EndedVerb{"info", {}},
                                         EndedVerb{"extract", {"--output", "x%d.png"}}),
                       ::testing::Values("exit", "kill", "fail")),
    [](auto const& run) {
      return std::string(std::get<0>(run.param).name) + "_" + std::get<1>(run.param);
    });

}  // namespace
}  // namespace test
