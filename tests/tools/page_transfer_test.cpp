// Pages on their way from a child, which may die of them.
#include "tools/extract/page_transfer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/platform/process.h>

#include <numeric>

#include "tools/documents/child.h"

namespace sorrelin::tool {
namespace {

using ::testing::ElementsAre;

constexpr DWORD kPages = 6;
constexpr DWORD kHeight = 70'000;  // rows of 9 bytes: several messages

// Page 1 cannot be read, pages 2 and 4 end the process, page 4 in the midst of its rows.
class HostileSource : public PageSource {
 public:
  DWORD PageCount() override { return kPages; }

  bool Read(DWORD page, PictureSink& sink, std::string& problem) override {
    problem = "is damaged";
    if (page == 1) return false;
    if (page == 2) EndProcess("a line that the child drops");
    sink.Begin({3, kHeight, 24, {}, {300, 200}});
    std::vector<BYTE> row(9);
    for (DWORD y = 0; y < kHeight; ++y) {
      if (page == 4 && y == 60'000) EndProcess("a line that the child drops");
      std::iota(row.begin(), row.end(), static_cast<BYTE>(y + page));
      sink.Row(row);
    }
    return true;
  }
};

std::unique_ptr<PageSource> OpenHostile(std::string const&, std::string&) {
  return std::make_unique<HostileSource>();
}

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
  bool Begin(PictureForm const& form) override {
    rows = wrong_rows = 0;
    last_form = form;
    return !too_large;
  }
  bool Row(std::span<BYTE const> row) override {
    BYTE const first = row[0];
    for (size_t i = 0; i < row.size(); ++i) {
      if (row[i] != static_cast<BYTE>(first + i)) ++wrong_rows;
    }
    ++rows;
    return true;
  }
  void Finish(DWORD page) override {
    log.push_back(std::to_string(page) + (rows == kHeight && wrong_rows == 0 ? " whole" : " bad"));
  }
  void Fail(DWORD page, std::string const& problem) override {
    log.push_back(std::to_string(page) + " " + problem);
  }

  std::vector<std::string> log;
  PictureForm last_form;
  DWORD rows = 0, wrong_rows = 0;
  bool wanted = true, too_large = false;
};

TEST(PageTransfer, PagesThatEndTheirReaderFailAndTheOthersCome) {
  Target target;
  std::string problem;
  EXPECT_TRUE(TransferPages("", OpenHostile, target, problem)) << problem;
  std::string const ended = kEndedReader;
  EXPECT_THAT(target.log, ElementsAre("start 6", "0 whole", "1 is damaged", "2 " + ended, "3 whole",
                                      "4 " + ended, "5 whole"));
}

TEST(PageTransfer, FormArrives) {
  auto const open = [](std::string const&, std::string&) -> std::unique_ptr<PageSource> {
    struct Source : PageSource {
      DWORD PageCount() override { return 1; }
      bool Read(DWORD, PictureSink& sink, std::string&) override {
        return sink.Begin({7, 2, 8, {{1, 2, 3, 0}, {4, 5, 6, 0}}, {300, 200}});
      }
    };
    return std::make_unique<Source>();
  };
  Target target;
  std::string problem;
  EXPECT_TRUE(TransferPages("", open, target, problem));
  PictureForm const& form = target.last_form;
  EXPECT_EQ(form.width, 7u);
  EXPECT_EQ(form.height, 2u);
  EXPECT_EQ(form.depth, 8);
  EXPECT_EQ(form.dpi, (Resolution{300, 200}));
  ASSERT_EQ(form.palette.size(), 2u);
  EXPECT_EQ(form.palette[1].rgbRed, 6);
}

TEST(PageTransfer, DocumentThatDoesNotOpenIsTheProblem) {
  auto const open = [](std::string const& name, std::string& problem) {
    problem = name + " is no document";
    return std::unique_ptr<PageSource>();
  };
  Target target;
  std::string problem;
  EXPECT_FALSE(TransferPages("it", open, target, problem));
  EXPECT_EQ(problem, "it is no document");
  EXPECT_TRUE(target.log.empty());
}

TEST(PageTransfer, DocumentThatEndsTheReaderWhileItOpensIsTheProblem) {
  auto const open = [](std::string const&, std::string&) -> std::unique_ptr<PageSource> {
    EndProcess("a line that the child drops");
  };
  Target target;
  std::string problem;
  EXPECT_FALSE(TransferPages("", open, target, problem));
  EXPECT_EQ(problem, kEndedReader);
}

TEST(PageTransfer, NothingIsReadIfTheTargetWantsNothing) {
  Target target;
  target.wanted = false;
  std::string problem;
  EXPECT_TRUE(TransferPages("", OpenHostile, target, problem));
  EXPECT_THAT(target.log, ElementsAre("start 6"));
}

TEST(PageTransfer, PictureThatTheTargetRefusesFails) {
  Target target;
  target.too_large = true;
  std::string problem;
  EXPECT_TRUE(TransferPages("", OpenHostile, target, problem));
  EXPECT_EQ(target.log[1], "0 its picture is too large");
  EXPECT_EQ(target.log.back(), "5 its picture is too large");
}

TEST(PageTransfer, DocumentOfPagesThatAllEndTheirReaderIsGivenUp) {
  auto const open = [](std::string const&, std::string&) -> std::unique_ptr<PageSource> {
    struct Source : PageSource {
      DWORD PageCount() override { return 1000; }
      bool Read(DWORD, PictureSink&, std::string&) override { EndProcess("dropped"); }
    };
    return std::make_unique<Source>();
  };
  Target target;
  std::string problem;
  EXPECT_FALSE(TransferPages("", open, target, problem));
  EXPECT_EQ(target.log.size(), 101u);
  EXPECT_EQ(problem,
            "too many pages end their reader; further ones are left out (qpdf in.pdf out.pdf may "
            "mend it)");
}

}  // namespace
}  // namespace sorrelin::tool
