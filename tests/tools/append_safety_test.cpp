// Whatever ends a run that adds pages: the document is the old one or the new one, whole.
#include <fcntl.h>
#include <sys/stat.h>

#include <chrono>
#include <memory>
#include <thread>

#include "tests/tools/append_fixture.h"

namespace test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Clock = std::chrono::steady_clock;

class AppendSafety : public AppendTest {
 protected:
  void SetUp() override {
    MakeDocument(3);
    WritePicture("new.png", 60);
  }
  // A run whose end the test decides.
  std::unique_ptr<RunningProgram> Start(std::vector<std::string> const& options = {}) {
    std::vector<std::string> arguments = {SORRELIN_TOOL, "append", Out(), Path("new.png")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return std::make_unique<RunningProgram>(arguments, std::vector<std::string>{}, null_.get());
  }
  // What a killed run has no time to remove.
  void RemoveLeftovers() const {
    for (std::string const& name : Names()) {
      if (name.starts_with(".sorrelin-")) std::filesystem::remove_all(Path(name));
    }
  }

 private:
  struct Null {
    Null() : file(open("/dev/null", O_RDONLY | O_CLOEXEC)) {}
    ~Null() { close(file); }
    int get() const { return file; }
    int file;
  };
  Null null_;
};

class KilledAppend : public AppendSafety, public ::testing::WithParamInterface<unsigned> {};

INSTANTIATE_TEST_SUITE_P(Seeds, KilledAppend, ::testing::Values(1, 2, 3));

TEST_P(KilledAppend, LeavesTheOldDocumentOrTheNewOne) {
  Bytes const old = Document();
  auto const start = Clock::now();
  ASSERT_EQ(Start()->Wait().exit_code, 0);
  // How long a run takes; it follows what the runs show.
  auto length = std::chrono::duration<double>(Clock::now() - start);
  Bytes const whole = Document();
  std::minstd_rand random(GetParam());
  std::uniform_real_distribution<double> share(0.0, 1.1);
  int killed = 0, finished = 0;
  for (int run = 0; run < 200 && (killed < 7 || finished < 3); ++run) {
    WriteAll(Out(), old);
    auto const program = Start();
    std::this_thread::sleep_for(length * share(random));
    program->Signal(SIGKILL);
    bool const was_killed = program->Wait().signal == SIGKILL;
    ++(was_killed ? killed : finished);
    length *= was_killed ? 1.01 : 0.95;
    Bytes const now = Document();
    ASSERT_TRUE(now == whole || (was_killed && now == old)) << "run " << run;
    RemoveLeftovers();
  }
  EXPECT_GE(killed, 7);
  EXPECT_GE(finished, 3);
}

TEST_P(KilledAppend, FirstRunMakesAWholeDocumentOrNone) {
  std::minstd_rand random(GetParam());
  std::uniform_int_distribution<int> delay(0, 60);
  for (int run = 0; run < 20; ++run) {
    std::filesystem::remove(Out());
    auto const program = Start();
    std::this_thread::sleep_for(std::chrono::milliseconds(delay(random)));
    program->Signal(SIGKILL);
    program->Wait();
    if (std::filesystem::exists(Out())) {
      EXPECT_EQ(CountPages(), "1\n");
    }
    RemoveLeftovers();
  }
}

TEST_F(AppendSafety, InterruptedRunLeavesTheOldDocumentAndNothingElse) {
  Bytes const old = Document();
  int pipe_ends[2];
  ASSERT_EQ(pipe(pipe_ends), 0);
  fcntl(pipe_ends[1], F_SETFD, FD_CLOEXEC);
  RunningProgram program({SORRELIN_TOOL, "append", Out(), "-"}, {}, pipe_ends[0]);
  for (int i = 0; i < 1000 && Names().size() < 3; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  program.Signal(SIGTERM);
  EXPECT_EQ(program.Wait().signal, SIGTERM);
  close(pipe_ends[0]);
  close(pipe_ends[1]);
  EXPECT_EQ(Document(), old);
  EXPECT_THAT(Names(), ElementsAre("new.png", "out.pdf"));
}

// Only one of runs that start together can hold the document; none of its pages may be lost.
TEST_F(AppendSafety, RunsAtTheSameTimeLoseNoPage) {
  std::vector<std::unique_ptr<RunningProgram>> programs;
  for (int i = 0; i < 8; ++i) programs.push_back(Start());
  int added = 0;
  for (auto const& program : programs) {
    ProgramResult const result = program->Wait();
    added += result.exit_code == 0 ? 1 : 0;
    if (result.exit_code != 0) {
      EXPECT_THAT(result.err, HasSubstr("is held by another program"));
    }
  }
  EXPECT_GT(added, 0);
  EXPECT_EQ(CountPages(), std::to_string(3 + added) + "\n");
  EXPECT_THAT(Names(), ElementsAre("new.png", "out.pdf"));
}

TEST_F(AppendSafety, FileSizeLimitLeavesTheOldDocument) {
  WritePix("new.png", Noise(400, 300, 8));
  Bytes const old = Document();
  for (std::string const option : {"--quiet", "--in-place"}) {
    ProgramResult const result =
        RunProgram({"sh", "-c", "ulimit -f 64; exec \"$0\" \"$@\"", SORRELIN_TOOL, "append", Out(),
                    Path("new.png"), "--compression", "none", option});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, HasSubstr(Out() + ": cannot be written: " +
                                      SystemText("File too large", "General failure")));
    EXPECT_EQ(Document(), old);
    EXPECT_THAT(Names(), ElementsAre("new.png", "out.pdf"));
  }
}

// In a file system of 96 KiB that only the run sees; who may not make one has a limit on the size
// of files, which is all that can be had then.
constexpr char kOnFullDisk[] =
    "mount -t tmpfs -o size=96k none \"$1\" && cp \"$2\" \"$1/out.pdf\" || exit 99\n"
    "\"$0\" append \"$1/out.pdf\" \"$3\" --compression none $4\n"
    "code=$?; cp \"$1/out.pdf\" \"$1/../kept.pdf\"; ls -A \"$1\"; exit $code";

TEST_F(AppendSafety, FullDiskLeavesTheOldDocument) {
  WritePix("new.png", Noise(400, 300, 8));
  std::filesystem::create_directory(Path("disk"));
  std::string const user = geteuid() == 0 ? "-m" : "-rm";
  for (std::string const option : {"--quiet", "--in-place"}) {
    ProgramResult const result =
        RunProgram({"unshare", user, "sh", "-c", kOnFullDisk, SORRELIN_TOOL, Path("disk"), Out(),
                    Path("new.png"), option});
    if (result.exit_code == 99 || result.err.starts_with("unshare")) return;
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, HasSubstr("No space left on device"));
    EXPECT_EQ(ReadAll(Path("kept.pdf")), Document());
    EXPECT_EQ(result.out, "out.pdf\n");
  }
}

TEST_F(AppendSafety, DirectoryThatCannotBeWrittenToLeavesInPlaceAsTheWay) {
  Bytes const old = Document();
  ASSERT_EQ(chmod(directory_.path().c_str(), 0555), 0);
  ProgramResult const result = AppendAsUser({Out(), Path("new.png")});
  ProgramResult const in_place = AppendAsUser({Out(), Path("new.png"), "--in-place"});
  chmod(directory_.path().c_str(), 0755);
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("is as it was, because its copy cannot be created: Permission "
                                    "denied ("));
  EXPECT_THAT(result.err, HasSubstr("(--in-place needs no copy)"));
  EXPECT_EQ(in_place.exit_code, 0) << in_place.err;
  EXPECT_EQ(CountPages(), "4\n");
  EXPECT_TRUE(GrewFrom(old));
}

TEST_F(AppendSafety, ReadOnlyDocumentIsLeftAlone) {
  Bytes const old = Document();
  ASSERT_EQ(chmod(Out().c_str(), 0444), 0);
  for (std::string const option : {"--quiet", "--in-place"}) {
    ProgramResult const result = AppendAsUser({Out(), Path("new.png"), option});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err,
                HasSubstr("cannot be changed: " + SystemText("Permission denied", "Access denied") +
                          " (make it writable)"));
    EXPECT_EQ(Document(), old);
  }
}

}  // namespace
}  // namespace test
