// sorrelin batch: lists of documents, made, kept, stopped and taken up.
#include <sys/file.h>
#include <sys/stat.h>

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

#include "tests/tools/make_fixture.h"
#include "tools/batch/list_file.h"

namespace test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using sorrelin::tool::ListFile;
using sorrelin::tool::Shard;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

std::vector<std::string> const kDate = {"SOURCE_DATE_EPOCH=86400"};

class BatchTest : public MakeTest {
 protected:
  void WriteText(std::string const& name, std::string const& text) const {
    WriteAll(Path(name), {text.begin(), text.end()});
  }
  std::string Text(std::string const& name) const {
    auto const bytes = ReadAll(Path(name));
    return {bytes.begin(), bytes.end()};
  }
  // A picture of 8 x 8 points, black from point `n` on.
  void WritePicture(std::string const& name, size_t n = 0) const {
    WriteText(name, "P1 8 8 " + std::string(n, '0') + std::string(64 - n, '1') + "\n");
  }
  std::string Quoted(std::string const& name) const { return "\"" + Path(name) + "\""; }
  // A line of a list; `more` is what follows the pictures.
  std::string Line(std::string const& output, std::string const& picture,
                   std::string const& more = "") const {
    return "{\"output\": " + Quoted(output) + ", \"pictures\": [" + Quoted(picture) + "]" + more +
           "}\n";
  }
  // A list of documents 0.pdf, 1.pdf, ... of pictures 0.pbm, 1.pbm, ...
  void WriteList(size_t count) const {
    std::string list;
    for (size_t n = 0; n < count; ++n) {
      WritePicture(std::to_string(n) + ".pbm", n);
      list += Line(std::to_string(n) + ".pdf", std::to_string(n) + ".pbm");
    }
    WriteText("list", list);
  }

  std::vector<std::string> Arguments(std::vector<std::string> const& options) const {
    std::vector<std::string> all = {SORRELIN_TOOL, "batch", Path("list")};
    all.insert(all.end(), options.begin(), options.end());
    return all;
  }
  ProgramResult Batch(std::vector<std::string> const& options = {}) const {
    return RunProgram(Arguments(options), {}, kDate);
  }
  std::unique_ptr<RunningProgram> Start(std::vector<std::string> const& options = {}) const {
    return std::make_unique<RunningProgram>(Arguments(options), kDate, null_.get());
  }

  // Numbers of lines of results whose state is `state`.
  size_t Results(std::string const& state, std::string const& file = "list.results") const {
    std::istringstream lines(Text(file));
    size_t count = 0;
    for (std::string line; std::getline(lines, line);) {
      count += line.find("\"state\": \"" + state + "\"") != std::string::npos ? 1u : 0u;
    }
    return count;
  }
  std::vector<std::string> HiddenNames() const {
    std::vector<std::string> hidden;
    for (std::string const& name : Names()) {
      if (name.starts_with('.')) hidden.push_back(name);
    }
    return hidden;
  }
  // A file number that a document has only until it is made again.
  ino_t FileNumber(std::string const& name) const {
    struct stat status {};
    EXPECT_EQ(stat(Path(name).c_str(), &status), 0);
    return status.st_ino;
  }
  bool WaitUntil(std::function<bool()> const& holds) const {
    for (int i = 0; i < 2000 && !holds(); ++i) std::this_thread::sleep_for(5ms);
    return holds();
  }

 private:
  class Null {
   public:
    ~Null() { close(descriptor_); }
    int get() const { return descriptor_; }

   private:
    int descriptor_ = open("/dev/null", O_RDONLY | O_CLOEXEC);
  };
  Null null_;
};

TEST_F(BatchTest, DocumentsAreThoseOfMakeByteForByte) {
  WritePicture("a.pbm");
  WritePicture("b.pbm", 40);
  WriteText("list", "{\"options\": [\"--page\", \"a4\", \"--title=T\"], \"pictures\": [" +
                        Quoted("a.pbm") + ", " + Quoted("b.pbm") + "], \"output\": " +
                        Quoted("list.pdf") + "}\n" + Line("second.pdf", "b.pbm"));
  EXPECT_EQ(Batch().exit_code, 0);
  Make({Out(), Path("a.pbm"), Path("b.pbm"), "--page", "a4", "--title", "T"}, {}, kDate);
  EXPECT_EQ(ReadAll(Path("list.pdf")), Document());
  Make({Out(), Path("b.pbm"), "--force"}, {}, kDate);
  EXPECT_EQ(ReadAll(Path("second.pdf")), Document());
}

TEST_F(BatchTest, OptionsOfALineEndWithIt) {
  WritePicture("a.pbm");
  WriteText("list", Line("a.pdf", "a.pbm",
                         ", \"options\": [\"--page\", \"a4\", \"--plain\", "
                         "\"--title\", \"T\", \"--rotate\", \"90\"]") +
                        Line("b.pdf", "a.pbm"));
  EXPECT_EQ(Batch({"--jobs", "1"}).exit_code, 0);
  Make({Out(), Path("a.pbm")}, {}, kDate);
  EXPECT_EQ(ReadAll(Path("b.pdf")), Document());
}

TEST_F(BatchTest, ResultHasPagesBytesAndNoProblem) {
  WriteList(1);
  Batch();
  EXPECT_THAT(
      Text("list.results"),
      ::testing::MatchesRegex(
          "\\{\"line\": 1, \"output\": \"[^\"]*/0.pdf\", \"state\": \"made\", \"pages\": 1, "
          "\"bytes\": " +
          std::to_string(fs::file_size(Path("0.pdf"))) +
          ", \"seconds\": [0-9.]+, \"signature\": \"[0-9a-f]+\", \"problems\": \\[\\]\\}\n"));
}

TEST_F(BatchTest, DocumentThatIsDoneIsKept) {
  WriteList(3);
  EXPECT_THAT(Batch().err, HasSubstr("list: 3 made\n"));
  ino_t const before = FileNumber("1.pdf");
  std::string const results = Text("list.results");
  EXPECT_THAT(Batch().err, HasSubstr("list: 3 kept\n"));
  EXPECT_EQ(FileNumber("1.pdf"), before);
  EXPECT_EQ(Text("list.results"), results);
}

TEST_F(BatchTest, DocumentOfAChangedPictureIsMadeAgain) {
  WriteList(3);
  Batch();
  WriteText("1.pbm", "P1 1 2 01\n");
  EXPECT_THAT(Batch().err, HasSubstr("list: 1 made, 2 kept\n"));
  Make({Out(), Path("1.pbm")}, {}, kDate);
  EXPECT_EQ(ReadAll(Path("1.pdf")), Document());
}

TEST_F(BatchTest, DocumentOfChangedOptionsIsMadeAgain) {
  WriteList(1);
  Batch();
  WriteText("list", Line("0.pdf", "0.pbm", ", \"options\": [\"--page\", \"a5\"]"));
  EXPECT_THAT(Batch().err, HasSubstr("list: 1 made\n"));
  EXPECT_THAT(Batch().err, HasSubstr("list: 1 kept\n"));
}

TEST_F(BatchTest, DocumentThatIsGoneIsMadeAgain) {
  WriteList(2);
  Batch();
  fs::remove(Path("0.pdf"));
  EXPECT_THAT(Batch().err, HasSubstr("list: 1 made, 1 kept\n"));
}

// Of two machines, one may be a year late; only equal times are compared.
TEST_F(BatchTest, ClocksOfOtherMachinesDoNotMatter) {
  WriteList(1);
  auto const now = fs::last_write_time(Path("0.pbm"));
  fs::last_write_time(Path("0.pbm"), now + 10000h);
  Batch();
  fs::last_write_time(Path("0.pdf"), now - 10000h);
  fs::last_write_time(Path("list.results"), now - 20000h);
  EXPECT_THAT(Batch().err, HasSubstr("list: 1 kept\n"));
  fs::last_write_time(Path("0.pbm"), now - 30000h);
  EXPECT_THAT(Batch().err, HasSubstr("list: 1 made\n"));
}

TEST_F(BatchTest, BrokenLineIsNamedAndTheRestGoesOn) {
  WritePicture("a.pbm");
  WriteText("list", "{\"output\": \n\n[]\n{\"outputs\": 1}\n" + Line("a.pdf", "a.pbm") +
                        Line("b.pdf", "a.pbm", ", \"options\": [\"--nonsense\"]") +
                        Line("c.pdf", "a.pbm", ", \"options\": [\"--dpi\", \"many\"]"));
  ProgramResult const result = Batch();
  EXPECT_EQ(result.exit_code, 1);
  for (char const* const line : {"line 1: is no JSON", "line 3: is no JSON object",
                                 "line 4: outputs: is no key", "line 6: ", "line 7: --dpi: "}) {
    EXPECT_THAT(result.err, HasSubstr(line));
  }
  EXPECT_EQ(Results("broken"), 5u);
  EXPECT_THAT(Names(), ElementsAre("a.pbm", "a.pdf", "list", "list.results"));
}

TEST_F(BatchTest, LineCannotNameStandardStreamsOrSecondNames) {
  WritePicture("a.pbm");
  std::string const picture = ", \"pictures\": [" + Quoted("a.pbm") + "]";
  WriteText("list", "{\"output\": \"-\"" + picture + "}\n" +
                        "{\"output\": \"/x.pdf\", \"pictures\": [\"-\"]}\n" +
                        Line("b.pdf", "a.pbm", ", \"options\": [\"c.pdf\"]") +
                        Line("c.pdf", "a.pbm", ", \"options\": [" + Quoted("c.pdf") + "]") +
                        Line("d.pdf", "a.pbm", ", \"options\": [\"--json\"]") +
                        "{\"output\": \"a\\u0000b\"" + picture + "}\n" +
                        Line("e.pdf", "a.pbm", ", \"options\": [\"--help\"]"));
  Batch();
  EXPECT_EQ(Results("broken"), 7u);
  EXPECT_THAT(Names(), ElementsAre("a.pbm", "list", "list.results"));
}

TEST_F(BatchTest, OptionWithoutItsValueIsNamed) {
  WritePicture("a.pbm");
  WriteText("list", Line("a.pdf", "a.pbm", ", \"options\": [\"--plain\", \"--title\"]") +
                        Line("b.pdf", "a.pbm", ", \"options\": [\"--title\", \"T\"]") +
                        Line("c.pdf", "a.pbm", ", \"options\": [\"--title=T\"]"));
  EXPECT_THAT(Batch().err, HasSubstr("line 1: --title: takes a value ("));
  EXPECT_EQ(Results("broken"), 1u);
  EXPECT_EQ(Results("made"), 2u);
}

TEST_F(BatchTest, NameThatBeginsAsAnOptionDoes) {
  WritePicture("a.pbm");
  WriteText("list", "{\"output\": \"--title\", \"pictures\": [" + Quoted("a.pbm") + "]}\n");
  ProgramResult const result = RunProgram({"sh", "-c", "cd \"$0\" && exec \"$1\" batch list",
                                           directory_.path().string(), SORRELIN_TOOL});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_TRUE(fs::exists(Path("--title")));
}

TEST_F(BatchTest, SecondLineForADocumentIsNamed) {
  WriteList(1);
  WritePicture("other.pbm", 9);
  std::string const first = Text("list");
  for (std::string const name : {"0.pdf", "./0.pdf", "nowhere/../0.pdf"}) {
    WriteText("list", first + Line(name, "other.pbm"));
    EXPECT_THAT(Batch({"--jobs", "1", "--force"}).err,
                HasSubstr("line 2: " + Path(name) + ": is the output of line 1"));
  }
}

TEST_F(BatchTest, MissingPictureLeavesAnIncompleteDocumentThatIsTriedAgain) {
  WriteList(1);
  WriteText("list", "{\"output\": " + Quoted("0.pdf") + ", \"pictures\": [" + Quoted("0.pbm") +
                        ", " + Quoted("late.pbm") + "]}\n");
  EXPECT_EQ(Batch().exit_code, 1);
  EXPECT_EQ(Results("incomplete"), 1u);
  WritePicture("late.pbm");
  EXPECT_THAT(Batch().err, HasSubstr("list: 1 made\n"));
}

TEST_F(BatchTest, DocumentOfOthersIsLeftAloneWithoutForce) {
  WriteList(1);
  WriteText("0.pdf", "%PDF-1.4 of others");
  EXPECT_THAT(Batch().err, HasSubstr("exists already, and no result names it (--force"));
  EXPECT_EQ(Text("0.pdf"), "%PDF-1.4 of others");
  EXPECT_EQ(Batch({"--force"}).exit_code, 0);
  WriteText("0.pdf", Text("0.pdf") + "% changed");
  EXPECT_THAT(Batch().err, HasSubstr("has been changed since it was made (--force"));
}

TEST_F(BatchTest, ShardsTogetherMakeEachDocumentOnce) {
  WriteList(10);
  for (int k = 1; k <= 4; ++k) {
    std::string const shard = std::to_string(k) + "/4";
    EXPECT_EQ(Batch({"--shard", shard}).exit_code, 0);
  }
  EXPECT_EQ(Results("made", "list.1-of-4.results"), 3u);
  EXPECT_EQ(Results("made", "list.2-of-4.results"), 3u);
  EXPECT_EQ(Results("made", "list.3-of-4.results"), 2u);
  EXPECT_EQ(Results("made", "list.4-of-4.results"), 2u);
  for (int n = 0; n < 10; ++n) EXPECT_TRUE(fs::exists(Path(std::to_string(n) + ".pdf"))) << n;
}

TEST_F(BatchTest, WrongShardIsAUsageError) {
  WriteList(1);
  for (char const* const shard : {"0/4", "5/4", "1", "1/0", "a/b", "1/2/3", "-1/4", ""}) {
    EXPECT_EQ(Batch({"--shard", shard}).exit_code, 2) << shard;
  }
}

// However often it is killed: in the end each document is there, whole, once in the results.
TEST_F(BatchTest, RunThatIsKilledIsTakenUp) {
  constexpr size_t kDocuments = 20;
  WriteList(kDocuments);
  for (auto delay = 10ms; delay < 600ms; delay += 90ms) {
    auto const run = Start({"--jobs", "2"});
    std::this_thread::sleep_for(delay);
    run->Signal(SIGKILL);
    run->Wait();
  }
  EXPECT_EQ(Batch().exit_code, 0);
  EXPECT_EQ(Results("made"), kDocuments);
  EXPECT_THAT(HiddenNames(), IsEmpty());
  for (size_t n = 0; n < kDocuments; ++n) {
    Make({Out(), Path(std::to_string(n) + ".pbm"), "--force"}, {}, kDate);
    EXPECT_EQ(ReadAll(Path(std::to_string(n) + ".pdf")), Document()) << n;
  }
}

// A document whose picture is a pipe that nobody fills stays under way.
class SlowBatch : public BatchTest {
 protected:
  SlowBatch() {
    mkfifo(Path("slow.pbm").c_str(), 0600);
    WritePicture("a.pbm");
    WriteText("list", Line("slow.pdf", "slow.pbm") + Line("a.pdf", "a.pbm"));
  }
  bool IsUnderWay() const {
    return WaitUntil([&] {
      auto const names = HiddenNames();
      return names.size() == 2 && fs::exists(Path(names[1] + "/document.pdf"));
    });
  }
  void FillPipe() const { WritePicture("slow.pbm"); }
};

TEST_F(SlowBatch, InterruptedRunLeavesNoDocumentAndEndsByTheSignal) {
  for (int const number : {SIGINT, SIGTERM}) {
    auto const run = Start({"--jobs", "1"});
    ASSERT_TRUE(IsUnderWay());
    run->Signal(number);
    EXPECT_EQ(run->Wait().signal, number);
    // The lock says that the document was begun.
    EXPECT_TRUE(WaitUntil([&] { return HiddenNames().size() == 1; }));
    EXPECT_THAT(HiddenNames(), ElementsAre(".slow.pdf.sorrelin-lock"));
    EXPECT_FALSE(fs::exists(Path("slow.pdf")));
  }
}

TEST_F(SlowBatch, KilledRunTidiesUp) {
  auto const run = Start({"--jobs", "1"});
  ASSERT_TRUE(IsUnderWay());
  run->Signal(SIGKILL);
  run->Wait();
  EXPECT_TRUE(WaitUntil([&] { return HiddenNames().size() == 1; }));
}

TEST_F(SlowBatch, SecondWorkerSaysSoAndGoesOn) {
  auto const first = Start({"--jobs", "1", "--results", Path("first")});
  ASSERT_TRUE(IsUnderWay());
  ProgramResult const second = Batch({"--results", Path("second")});
  EXPECT_EQ(second.exit_code, 1);
  EXPECT_THAT(second.err, HasSubstr("slow.pdf: is being made by another worker ("));
  EXPECT_EQ(Results("busy", "second"), 1u);
  EXPECT_EQ(Results("made", "second"), 1u);
  FillPipe();
  first->Wait();
  EXPECT_EQ(Results("made", "first"), 1u);
  EXPECT_TRUE(fs::exists(Path("slow.pdf")));
}

TEST_F(SlowBatch, ResultsOfAnotherWorkerAreLeftToIt) {
  auto const first = Start({"--jobs", "1"});
  ASSERT_TRUE(IsUnderWay());
  ProgramResult const second = Batch();
  EXPECT_EQ(second.exit_code, 1);
  EXPECT_THAT(second.err, HasSubstr("list.results: is held by another worker ("));
  EXPECT_FALSE(fs::exists(Path("a.pdf")));
}

TEST_F(SlowBatch, EndOfTheProcessOfADocumentEndsThatDocumentAlone) {
  auto const run = Start({"--jobs", "1"});
  ASSERT_TRUE(IsUnderWay());
  std::string const pid = std::to_string(run->pid());
  std::ifstream file("/proc/" + pid + "/task/" + pid + "/children");
  pid_t child = 0;
  ASSERT_TRUE(file >> child);
  kill(child, SIGKILL);
  ProgramResult const result = run->Wait();
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("slow.pdf: its process has ended early ("));
  EXPECT_EQ(Results("failed"), 1u);
  EXPECT_TRUE(fs::exists(Path("a.pdf")));
}

// As a kill leaves it between the document and its result.
TEST_F(BatchTest, DocumentThatWasNotRecordedIsMadeAgain) {
  WriteList(1);
  WriteText("0.pdf", "%PDF-1.4 of the run that was killed");
  WriteText(".0.pdf.sorrelin-lock", "");
  EXPECT_THAT(Batch().err, HasSubstr("list: 1 made\n"));
  EXPECT_THAT(HiddenNames(), IsEmpty());
}

TEST_F(BatchTest, ResultThatWasCutIsRemoved) {
  WriteList(2);
  Batch({"--jobs", "1"});
  std::string const results = Text("list.results");
  WriteText("list.results", results.substr(0, results.size() - 20));
  WriteText(".1.pdf.sorrelin-lock", "");
  EXPECT_THAT(Batch().err, HasSubstr("list: 1 made, 1 kept\n"));
  EXPECT_EQ(Results("made"), 2u);
}

TEST_F(BatchTest, ResultsThatCannotBeWrittenEndTheRunBeforeItBegins) {
  WriteList(1);
  for (std::string const& name : {Path("nowhere/results"), Path("list"), Path("")}) {
    ProgramResult const result = Batch({"--results", name});
    EXPECT_EQ(result.exit_code, 1) << name;
    EXPECT_THAT(result.err, HasSubstr(name + ": ")) << name;
  }
  EXPECT_THAT(Names(), ElementsAre("0.pbm", "list"));
}

TEST_F(BatchTest, ResultsMustBeAFileOfAProperName) {
  WriteList(1);
  mkfifo(Path("pipe").c_str(), 0600);
  EXPECT_THAT(Batch({"--results", Path("pipe")}).err, HasSubstr("pipe: is not a regular file ("));
  EXPECT_EQ(Batch({"--results", "-"}).exit_code, 2);
  EXPECT_EQ(RunProgram({SORRELIN_TOOL, "batch", "-"}).exit_code, 2);
  fs::copy(Path("list"), Path("list\xFF"));
  ProgramResult const result = RunProgram({SORRELIN_TOOL, "batch", Path("list\xFF")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr(".results: the name is not valid UTF-8 ("));
  EXPECT_FALSE(fs::exists(Path("0.pdf")));
}

TEST_F(BatchTest, FullDiskOfTheResultsEndsTheRun) {
  WriteList(3);
  std::vector<std::string> arguments = {"sh", "-c", "ulimit -f 1; exec \"$0\" \"$@\""};
  // The limit is 512 or 1,024 bytes, as the shell counts.
  std::string const before(1020, ' ');
  WriteText("results", "{\"line\": 0, \"state\": \"failed\"" + before + "}\n");
  for (std::string const& argument : Arguments({"--results", Path("results"), "--jobs", "1"})) {
    arguments.push_back(argument);
  }
  ProgramResult const result = RunProgram(arguments, {}, kDate);
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("results: cannot be written: "));
  EXPECT_FALSE(fs::exists(Path("1.pdf")));
  EXPECT_EQ(Batch({"--results", Path("results")}).exit_code, 0);
}

TEST_F(BatchTest, FileOfOtherThingsIsNotTakenForResults) {
  WriteList(1);
  for (std::string const text : {"precious\n", "precious", "{\"line\": 1}\n"}) {
    WriteText("results", text);
    EXPECT_THAT(Batch({"--results", Path("results")}).err, HasSubstr("other things than results"));
    EXPECT_EQ(Text("results"), text);
  }
}

TEST_F(BatchTest, ListThatCannotBeReadIsNamed) {
  EXPECT_THAT(Batch().err, HasSubstr(Path("list") + ": No such file"));
  fs::create_directory(Path("list"));
  ProgramResult const result = Batch();
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr(Path("list") + ": "));
}

TEST_F(BatchTest, ListWithoutTheLastLineEndIsWhole) {
  WriteList(2);
  WriteText("list", Text("list").substr(0, Text("list").size() - 1));
  EXPECT_THAT(Batch().err, HasSubstr("list: 2 made\n"));
}

TEST_F(BatchTest, QuietPrintsProblemsOnly) {
  WriteList(1);
  EXPECT_EQ(Batch({"--quiet"}).err, "");
}

TEST(ShardTest, LinesAreDealtOut) {
  auto const shard = Shard::Parse("2/3");
  ASSERT_TRUE(shard);
  EXPECT_FALSE(shard->Has(1));
  EXPECT_TRUE(shard->Has(2));
  EXPECT_FALSE(shard->Has(3));
  EXPECT_TRUE(shard->Has(5));
}

TEST(ListFileTest, BlankLinesCountAndAreNotReturned) {
  TempDir directory;
  std::string const text = "\n \t\r\nthird\r\n";
  WriteAll(directory / "list", {text.begin(), text.end()});
  std::string problem;
  auto const list = ListFile::Open(directory / "list", {}, problem);
  ASSERT_NE(list, nullptr);
  auto const line = list->Next();
  ASSERT_TRUE(line);
  EXPECT_EQ(line->number, 3u);
  EXPECT_EQ(line->text, "third\r");
  EXPECT_FALSE(list->Next());
}

TEST(ListFileTest, LineBeyondTheLimitHasAProblemAndTheNextIsRead) {
  TempDir directory;
  std::string const text = std::string((16 << 20) + 1, 'x') + "\nnext\n";
  WriteAll(directory / "list", {text.begin(), text.end()});
  std::string problem;
  auto const list = ListFile::Open(directory / "list", {}, problem);
  ASSERT_NE(list, nullptr);
  EXPECT_THAT(list->Next()->problem, HasSubstr("longer than 16 MiB"));
  EXPECT_EQ(list->Next()->text, "next");
}

}  // namespace
}  // namespace test
