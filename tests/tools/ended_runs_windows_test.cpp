// Runs of sorrelin.exe that are ended early: what is left of their children and files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>
// After the types that it needs.
#include <tlhelp32.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/temp_dir.h"
#include "tests/support/windows_program.h"

namespace test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr int kManyPages = 20000;  // long work for a batch
constexpr int kPagesToExtract = 1500;

bool WaitUntil(std::function<bool()> const& holds) {
  for (int i = 0; i < 1000 && !holds(); ++i) std::this_thread::sleep_for(20ms);
  return holds();
}

// The program at work in a directory, with its messages in a file there.
class RunningProgram {
 public:
  RunningProgram(fs::path const& directory, std::wstring const& arguments)
      : messages_(directory / "messages") {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE const file =
        CreateFileW(messages_.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                    &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = start.hStdError = file;
    std::wstring line = L"sorrelin " + arguments;
    EXPECT_NE(CreateProcessW(ProgramUnderTest().c_str(), line.data(), nullptr, nullptr, TRUE, 0,
                             nullptr, directory.c_str(), &start, &run_),
              FALSE)
        << GetLastError();
    CloseHandle(file);
  }
  // Returns when files that the run had open can be removed.
  ~RunningProgram() {
    Kill();
    EXPECT_TRUE(WaitUntil([this] { return HasEnded() && Children().empty(); }));
    CloseHandle(run_.hThread);
    CloseHandle(run_.hProcess);
  }
  RunningProgram(RunningProgram const&) = delete;
  RunningProgram& operator=(RunningProgram const&) = delete;

  void Kill() { TerminateProcess(run_.hProcess, 9); }

  bool HasEnded() const { return WaitForSingleObject(run_.hProcess, 0) == WAIT_OBJECT_0; }

  DWORD Wait() {
    DWORD code = STILL_ACTIVE;
    EXPECT_EQ(WaitForSingleObject(run_.hProcess, 60'000), DWORD{WAIT_OBJECT_0});
    GetExitCodeProcess(run_.hProcess, &code);
    return code;
  }
  std::string Messages() const {
    auto const bytes = ReadAll(messages_);
    return {bytes.begin(), bytes.end()};
  }
  std::vector<DWORD> Children() const {
    std::vector<DWORD> children;
    HANDLE const all = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(all, &entry); more != FALSE;
         more = Process32NextW(all, &entry)) {
      if (entry.th32ParentProcessID == run_.dwProcessId) children.push_back(entry.th32ProcessID);
    }
    CloseHandle(all);
    return children;
  }

 private:
  fs::path messages_;
  PROCESS_INFORMATION run_{};
};

class EndedRun : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { OpenConsoleForInterrupts(); }
  static void Interrupt() {
    EXPECT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0)) << GetLastError();
  }

  EndedRun() { WriteText("a.pbm", "P1 8 8 " + std::string(64, '1') + "\n"); }

  void WriteText(std::string const& name, std::string const& text) const {
    WriteAll(directory_ / name, {text.begin(), text.end()});
  }
  std::string Text(std::string const& name) const {
    auto const bytes = ReadAll(directory_ / name);
    return {bytes.begin(), bytes.end()};
  }
  static std::string Line(std::string const& output, int pages) {
    std::string pictures = "\"a.pbm\"";
    for (int page = 1; page < pages; ++page) pictures += ", \"a.pbm\"";
    return "{\"output\": \"" + output + "\", \"pictures\": [" + pictures + "]}\n";
  }
  std::unique_ptr<RunningProgram> Start(std::wstring const& arguments) const {
    return std::make_unique<RunningProgram>(directory_.path(), arguments);
  }
  // A batch whose first document takes long, when that has begun.
  std::unique_ptr<RunningProgram> StartBatch() const {
    WriteText("list", Line("slow.pdf", kManyPages) + Line("a.pdf", 1));
    auto run = Start(L"batch list --jobs 1");
    EXPECT_TRUE(WaitUntil([&] { return Hidden().size() == 2 && run->Children().size() == 1; }))
        << run->Messages();
    return run;
  }
  // An extraction by two readers, when both have written files.
  std::unique_ptr<RunningProgram> StartExtraction() const {
    WriteText("list", Line("many.pdf", kPagesToExtract));
    EXPECT_EQ(Start(L"batch list")->Wait(), 0u);
    auto run = Start(L"extract many.pdf --output x%d.png --jobs 2");
    auto const are_at_work = [&] {
      return fs::exists(directory_ / "x9.png") && fs::exists(directory_ / "x10.png");
    };
    EXPECT_TRUE(WaitUntil(are_at_work)) << run->Messages();
    return run;
  }
  std::vector<std::string> Hidden() const {
    std::vector<std::string> hidden;
    for (auto const& entry : fs::directory_iterator(directory_.path())) {
      std::string const name = entry.path().filename().string();
      if (name.starts_with('.')) hidden.push_back(name);
    }
    return hidden;
  }
  // Nothing of the document but the lock, which says that it was begun.
  void ExpectLockAlone(RunningProgram const& run) const {
    EXPECT_TRUE(WaitUntil([&] { return Hidden().size() == 1 && run.Children().empty(); }));
    EXPECT_THAT(Hidden(), ElementsAre(".slow.pdf.sorrelin-lock"));
    EXPECT_FALSE(fs::exists(directory_ / "slow.pdf"));
    EXPECT_FALSE(fs::exists(directory_ / "a.pdf"));
  }

  TempDir directory_;
};

TEST_F(EndedRun, KilledBatchTidiesUp) {
  auto const run = StartBatch();
  run->Kill();
  run->Wait();
  ExpectLockAlone(*run);
}

TEST_F(EndedRun, InterruptedBatchTidiesUp) {
  auto const run = StartBatch();
  Interrupt();
  EXPECT_EQ(run->Wait(), kExitInterrupted);
  ExpectLockAlone(*run);
  EXPECT_EQ(run->Messages(), "");
}

TEST_F(EndedRun, EndOfTheProcessOfADocumentEndsThatDocumentAlone) {
  auto const run = StartBatch();
  auto const children = run->Children();
  ASSERT_EQ(children.size(), 1u);
  HANDLE const child = OpenProcess(PROCESS_TERMINATE, FALSE, children[0]);
  EXPECT_NE(TerminateProcess(child, 9), FALSE);
  CloseHandle(child);
  EXPECT_EQ(run->Wait(), 1u);
  EXPECT_THAT(run->Messages(), HasSubstr("slow.pdf: its process has ended early ("));
  EXPECT_THAT(Text("list.results"), HasSubstr("\"failed\""));
  EXPECT_TRUE(fs::exists(directory_ / "a.pdf"));
}

TEST_F(EndedRun, SecondBatchLeavesADocumentThatIsBeingMade) {
  auto const first = StartBatch();
  auto const second = Start(L"batch list --results second");
  EXPECT_EQ(second->Wait(), 1u);
  EXPECT_THAT(second->Messages(), HasSubstr("slow.pdf: is being made by another worker ("));
  EXPECT_TRUE(fs::exists(directory_ / "a.pdf"));
}

TEST_F(EndedRun, ResultsOfAnotherBatchAreLeftToIt) {
  auto const first = StartBatch();
  auto const second = Start(L"batch list");
  EXPECT_EQ(second->Wait(), 1u);
  EXPECT_THAT(second->Messages(), HasSubstr("list.results: is held by another worker ("));
}

TEST_F(EndedRun, InterruptedExtractionLeavesWholeFilesAndNoReader) {
  auto const run = StartExtraction();
  Interrupt();
  EXPECT_EQ(run->Wait(), kExitInterrupted);
  EXPECT_TRUE(WaitUntil([&] { return run->Children().empty(); }));
  EXPECT_THAT(Hidden(), IsEmpty());
  EXPECT_EQ(run->Messages(), "");
  for (int page : {1, 2, 9, 10}) {
    EXPECT_THAT(Text("x" + std::to_string(page) + ".png"), HasSubstr("IEND")) << page;
  }
}

TEST_F(EndedRun, KilledExtractionLeavesNoReader) {
  auto const run = StartExtraction();
  run->Kill();
  run->Wait();
  EXPECT_TRUE(WaitUntil([&] { return run->Children().empty(); }));
}

}  // namespace
}  // namespace test
