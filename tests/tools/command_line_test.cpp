// What the program says to command lines that are not quite right, and to calls for help.
#include "tests/tools/make_fixture.h"

namespace test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

ProgramResult Call(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), SORRELIN_TOOL);
  return RunProgram(arguments);
}

TEST(CommandLine, HelpShowsTheOrderOfArgumentsExamplesAndHowToGoOn) {
  ProgramResult const result = Call({"--help"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_THAT(result.out, AllOf(HasSubstr("Usage: sorrelin VERB DOCUMENT [PICTURE]... [OPTIONS]"),
                                HasSubstr("The verb comes first, then the document"),
                                HasSubstr("sorrelin make "), HasSubstr("sorrelin extract "),
                                HasSubstr("sorrelin help VERB")));
  EXPECT_EQ(Call({"help"}).out, result.out);
}

TEST(CommandLine, HelpOfAVerbShowsItsArgumentsInTheOrderOfTheExamples) {
  EXPECT_THAT(Call({"make", "--help"}).out,
              HasSubstr("Usage: sorrelin make OUT IMAGE... [OPTIONS]\n"));
  EXPECT_THAT(Call({"count", "--help"}).out,
              HasSubstr("Usage: sorrelin count FILE... [OPTIONS]\n"));
}

TEST(CommandLine, HelpOfAVerbIsThatOfItsOption) {
  for (std::string const verb : {"make", "append", "count", "info", "extract", "words"}) {
    ProgramResult const result = Call({"help", verb});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.out, Call({verb, "--help"}).out);
  }
}

TEST(CommandLine, UnknownVerbsAreNamedWithThoseThatThereAre) {
  for (std::vector<std::string> const& words :
       {std::vector<std::string>{"mkae", "a.pdf"}, {"help", "mkae"}}) {
    ProgramResult const result = Call(words);
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_THAT(result.err, HasSubstr("mkae: is no verb; there are make, append"));
  }
  EXPECT_THAT(Call({}).err, HasSubstr("A verb is required"));
}

class FileNames : public MakeTest {};

TEST_F(FileNames, FileThatStartsWithADashGetsTheHint) {
  std::string const command = "cd \"$1\" && : >-dash.jpg && \"$0\" make out.pdf -dash.jpg";
  ProgramResult const result =
      RunProgram({"sh", "-c", command, SORRELIN_TOOL, directory_.path().string()});
  EXPECT_EQ(result.exit_code, 2);
  EXPECT_THAT(result.err, HasSubstr("write ./-dash.jpg for the file of that name"));
}

}  // namespace
}  // namespace test
