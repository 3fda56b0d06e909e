// The transfer of pages from a child, which may crash on them.
#include "tools/extract/page_transfer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sorrelin/platform/process.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <new>
#include <numeric>
#include <thread>

#include "tools/cli/messages.h"
#include "tools/documents/child.h"

namespace sorrelin::tool {
namespace {

using ::testing::ElementsAre;

constexpr DWORD kPages = 6;
constexpr size_t kFileBytes = 600'000;  // several messages

BYTE ByteAt(DWORD page, size_t place) { return static_cast<BYTE>(place / 3 + page); }

std::vector<BYTE> FileOf(DWORD page) {
  std::vector<BYTE> file(kFileBytes);
  for (size_t i = 0; i < file.size(); ++i) file[i] = ByteAt(page, i);
  return file;
}

// Page 1 cannot be read, pages 2 and 4 end the process, page 4 in the midst of its file.
class HostileSource : public PageSource {
 public:
  DWORD PageCount() override { return kPages; }

  void Read(DWORD page, PictureSender& sender) override {
    if (page == 1) return sender.Fail(0, "is damaged");
    if (page == 2) EndProcess("a line that the child drops");
    ByteOutput& output = sender.Begin({1, 3, 4, 24, {300, 200}, "flate", ".png"});
    std::vector<BYTE> const file = FileOf(page);
    constexpr size_t kPiece = 1000;
    for (size_t at = 0; at < file.size(); at += kPiece) {
      if (page == 4 && at > file.size() / 2) EndProcess("a line that the child drops");
      output.Write(std::span(file).subspan(at, kPiece));
    }
    sender.End();
  }
};

std::unique_ptr<PageSource> OpenHostile(std::string&) { return std::make_unique<HostileSource>(); }

class Target : public PageTarget {
 public:
  std::vector<DWORD> Choose(DWORD count) const override {
    std::vector<DWORD> pages(count);
    std::iota(pages.begin(), pages.end(), 0);
    return pages;
  }
  bool Start(DWORD count) override {
    log.push_back("start " + std::to_string(count));
    return wanted;
  }
  void Begin(DWORD begun, PictureHead const& given) override {
    page = begun;
    head = given;
    file.clear();
  }
  void Write(uint64_t place, std::span<BYTE const> bytes) override {
    file.resize(std::max<size_t>(file.size(), place + bytes.size()));
    std::copy(bytes.begin(), bytes.end(), file.begin() + static_cast<ptrdiff_t>(place));
  }
  void Finish() override {
    log.push_back(std::to_string(page) + (file == FileOf(page) ? " whole" : " bad"));
  }
  void Fail(DWORD failed, DWORD, std::string const& problem) override {
    log.push_back(std::to_string(failed) + " " + problem);
  }
  void EndPage(DWORD) override { ++ended; }

  std::vector<std::string> log;
  std::vector<BYTE> file;
  PictureHead head;
  DWORD page = 0;
  int ended = 0;
  bool wanted = true;
};

// A source of one page, which is read by `read`.
using ReadOne = void (*)(PictureSender& sender);
OpenSource One(ReadOne read) {
  struct Source : PageSource {
    explicit Source(ReadOne given) : read(given) {}
    DWORD PageCount() override { return 1; }
    void Read(DWORD, PictureSender& sender) override { read(sender); }
    ReadOne read;
  };
  return [read](std::string&) { return std::make_unique<Source>(read); };
}

bool TransferFrom(OpenSource const& open, Target& target, std::string& problem) {
  auto const reader = [&](ReadOrder const& order) {
    return ChildWork{[&](ParentLink& link) {
      SendPages(
          link, open, [&](DWORD count) { return target.Choose(count); }, order);
    }};
  };
  return TransferPages(reader, target, problem);
}

ChildWork Answering(ChildAnswer const& answer) {
  return {[answer](ParentLink& link) { SendAnswer(link, answer); }};
}

TEST(PageTransfer, PagesThatEndTheirReaderFailAndTheOthersCome) {
  Target target;
  std::string problem;
  EXPECT_TRUE(TransferFrom(OpenHostile, target, problem)) << problem;
  std::string const ended = kEndedReader;
  EXPECT_THAT(target.log, ElementsAre("start 6", "0 whole", "1 is damaged", "2 " + ended, "3 whole",
                                      "4 " + ended, "5 whole"));
}

TEST(PageTransfer, HeadArrives) {
  ReadOne const read = [](PictureSender& sender) {
    sender.Begin({7, 20, 30, 8, {300, 200}, "jbig2", ".jb2"});
    sender.End();
  };
  Target target;
  std::string problem;
  EXPECT_TRUE(TransferFrom(One(read), target, problem));
  EXPECT_EQ(target.head.picture, 7u);
  EXPECT_EQ(target.head.width, 20u);
  EXPECT_EQ(target.head.height, 30u);
  EXPECT_EQ(target.head.depth, 8);
  EXPECT_EQ(target.head.dpi, (Resolution{300, 200}));
  EXPECT_EQ(target.head.coding, "jbig2");
  EXPECT_EQ(target.head.extension, ".jb2");
}

TEST(PageTransfer, BytesOutOfOrderFindTheirPlaces) {
  ReadOne const read = [](PictureSender& sender) {
    ByteOutput& output = sender.Begin({});
    std::vector<BYTE> const file = FileOf(0);
    output.WriteAt(1000, std::span(file).subspan(1000));
    output.WriteAt(0, std::span(file).first(1000));
    sender.End();
  };
  Target target;
  std::string problem;
  EXPECT_TRUE(TransferFrom(One(read), target, problem));
  EXPECT_THAT(target.log, ElementsAre("start 1", "0 whole"));
}

// A child may end as if all were well with nothing, or not all, of what it had to say.
TEST(PageTransfer, ChildWithoutItsFinalMessageHasFailed) {
  ReadOne const leave = [](PictureSender& sender) {
    sender.Begin({});
    _exit(EXIT_SUCCESS);
  };
  Target target;
  std::string problem;
  EXPECT_TRUE(TransferFrom(One(leave), target, problem));
  EXPECT_THAT(target.log, ElementsAre("start 1", std::string("0 ") + kSilentReader));
}

struct EndOfChild {
  char const* name;
  void (*end)();
  char const* problem;
};

// Each later write of the child fails.
void CloseAllFiles() {
  constexpr int kFirst = 3;
  constexpr int kMost = 256;
  for (int descriptor = kFirst; descriptor < kMost; ++descriptor) close(descriptor);
}

void UseUpTime() {
  rlimit const second = {1, 1};
  setrlimit(RLIMIT_CPU, &second);
  for (std::atomic<unsigned> turns = 0;; ++turns) {
  }
}

constexpr EndOfChild kEnds[] = {
    {"Killed", [] { raise(SIGKILL); }, kEndedReader},
    {"Crashed", [] { raise(SIGSEGV); }, kEndedReader},
    {"Aborted", [] { std::abort(); }, kEndedReader},
    {"OutOfTime", UseUpTime, kEndedReader},
    {"Failed", [] { _exit(3); }, kEndedReader},
    {"OutOfMemory", [] { throw std::bad_alloc(); }, kMemoryProblem},
    {"Left", [] { _exit(EXIT_SUCCESS); }, kSilentReader},
    {"Unheard", CloseAllFiles, kSilentReader},
};

class ChildThatEnds : public ::testing::TestWithParam<EndOfChild> {
 protected:
  void SetUp() override { end = GetParam().end; }
  static void (*end)();
};
void (*ChildThatEnds::end)() = nullptr;

TEST_P(ChildThatEnds, FailsItsPageInTheMidstOfAPicture) {
  ReadOne const read = [](PictureSender& sender) {
    sender.Begin({}).Write(FileOf(0));
    end();
    sender.End();
  };
  Target target;
  std::string problem;
  TransferFrom(One(read), target, problem);
  EXPECT_THAT(target.log, ElementsAre("start 1", std::string("0 ") + GetParam().problem));
}

TEST_P(ChildThatEnds, AnswersNothing) {
  auto const answer = [](std::string&) {
    end();
    return std::optional<std::string>("yes");
  };
  std::string problem;
  EXPECT_EQ(AskChild(Answering(answer), problem), std::nullopt);
  EXPECT_EQ(problem, GetParam().problem);
}

INSTANTIATE_TEST_SUITE_P(Ends, ChildThatEnds, ::testing::ValuesIn(kEnds),
                         [](auto const& end) { return end.param.name; });

TEST(PageTransfer, ChildThatSaysNothingHasFailed) {
  auto const open = [](std::string&) -> std::unique_ptr<PageSource> { _exit(EXIT_SUCCESS); };
  Target target;
  std::string problem;
  EXPECT_FALSE(TransferFrom(open, target, problem));
  EXPECT_EQ(problem, kSilentReader);
}

TEST(PageTransfer, AnswerWithoutItsEndIsNone) {
  auto const leave = [](std::string&) -> std::optional<std::string> { _exit(EXIT_SUCCESS); };
  std::string problem;
  EXPECT_FALSE(AskChild(Answering(leave), problem).has_value());
  EXPECT_EQ(problem, kSilentReader);
  auto const answer = [](std::string&) { return std::optional<std::string>("yes"); };
  EXPECT_EQ(AskChild(Answering(answer), problem), "yes");
}

TEST(PageTransfer, DocumentThatDoesNotOpenIsTheProblem) {
  auto const open = [](std::string& problem) {
    problem = "it is no document";
    return std::unique_ptr<PageSource>();
  };
  Target target;
  std::string problem;
  EXPECT_FALSE(TransferFrom(open, target, problem));
  EXPECT_EQ(problem, "it is no document");
  EXPECT_TRUE(target.log.empty());
}

TEST(PageTransfer, DocumentThatEndsTheReaderWhileItOpensIsTheProblem) {
  auto const open = [](std::string&) -> std::unique_ptr<PageSource> {
    EndProcess("a line that the child drops");
  };
  Target target;
  std::string problem;
  EXPECT_FALSE(TransferFrom(open, target, problem));
  EXPECT_EQ(problem, kEndedReader);
}

TEST(PageTransfer, NothingIsReadIfTheTargetWantsNothing) {
  Target target;
  target.wanted = false;
  std::string problem;
  EXPECT_TRUE(TransferFrom(OpenHostile, target, problem));
  EXPECT_THAT(target.log, ElementsAre("start 6"));
}

TEST(PageTransfer, DocumentOfPagesThatAllEndTheirReaderIsGivenUp) {
  auto const open = [](std::string&) -> std::unique_ptr<PageSource> {
    struct Source : PageSource {
      DWORD PageCount() override { return 1000; }
      void Read(DWORD, PictureSender&) override { EndProcess("dropped"); }
    };
    return std::make_unique<Source>();
  };
  Target target;
  std::string problem;
  EXPECT_FALSE(TransferFrom(open, target, problem));
  EXPECT_EQ(target.log.size(), 101u);
  EXPECT_EQ(problem,
            "too many pages end their reader; further ones are left out (qpdf in.pdf out.pdf may "
            "mend it)");
}

// Each child reports how many threads were at work when it was forked.
TEST(SideBySide, ChildIsStartedWhileNoThreadWorks) {
  std::atomic<int> at_work = 0, seen = 0, children = 0;
  auto const work_a_while = [&] {
    ++at_work;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    --at_work;
  };
  auto const report = [&](ParentLink& link) {
    for (int i = 0; i < 3; ++i) {
      BYTE const number = static_cast<BYTE>(at_work);
      link.Send({&number, 1});
    }
  };
  auto const take = [&](std::span<BYTE const> numbers) {
    for (BYTE const number : numbers) seen += number;
    work_a_while();
    return true;
  };
  RunSideBySide(4, [&](size_t) {
    for (int i = 0; i < 20; ++i) {
      work_a_while();
      std::string problem;
      children += RunChild({report}, take, problem) ? 1 : 0;
    }
  });
  EXPECT_EQ(children, 80);
  EXPECT_EQ(seen, 0);
}

TEST(SideBySide, ChildThatIsEndedLetsTheOthersStart) {
  std::atomic<int> ended = 0;
  RunSideBySide(3, [&](size_t index) {
    for (int i = 0; i < 3; ++i) {
      std::string problem;
      auto const take = [](std::span<BYTE const>) { return true; };
      auto const work = [&](ParentLink&) {
        if (index == 1) EndProcess("dropped");
      };
      if (!RunChild({work}, take, problem)) ++ended;
    }
  });
  EXPECT_EQ(ended, 3);
}

}  // namespace
}  // namespace sorrelin::tool
