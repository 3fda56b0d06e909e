// Pages in order and the same bytes, however many threads code them.
#include "tools/make/pages/page_feed.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/pictures.h"
#include "tests/support/temp_dir.h"

namespace sorrelin::tool {
namespace {

using ::testing::HasSubstr;

class PageFeedTest : public ::testing::Test {
 protected:
  PageFeedTest() { style_.compression = Compression::kFlate; }

  // A grey picture of its own width for each number.
  void AddPicture(int number) {
    test::PngForm form;
    form.width = 50 + number;
    std::string const name = "p" + std::to_string(number) + ".png";
    test::WritePng(directory_ / name, form, [number](int x, int y, int) {
      return static_cast<unsigned>(x * number + y * y) & 0xFF;
    });
    inputs_.push_back({(directory_ / name).string(), {}});
  }

  // One line for each item: the file, the page of it, and its bytes or what is wrong.
  std::vector<std::string> Items(int jobs) {
    PageFeed feed(inputs_, style_, jobs);
    std::vector<std::string> lines;
    while (auto const item = feed.Next()) {
      std::string line = std::to_string(item->input) + " " + std::to_string(item->page) + "/" +
                         std::to_string(item->pages) + (item->last ? " last: " : ": ");
      if (item->result.page == nullptr) {
        line += item->result.problem;
      } else {
        EncodedPage const& page = item->result.page->page();
        line += std::to_string(page.width) + " " +
                std::string(reinterpret_cast<char const*>(page.data), page.size);
      }
      lines.push_back(line);
    }
    return lines;
  }

  test::TempDir directory_;
  std::vector<Input> inputs_;
  PageStyle style_;
};

TEST_F(PageFeedTest, AnyNumberOfJobsGivesTheSameItemsInOrder) {
  for (int number = 1; number <= 20; ++number) AddPicture(number);
  auto const one = Items(1);
  ASSERT_EQ(one.size(), 20u);
  for (size_t i = 0; i < one.size(); ++i) {
    EXPECT_THAT(one[i], ::testing::StartsWith(std::to_string(i) +
                                              " 1/1 last: " + std::to_string(51 + i) + " "));
  }
  for (int const jobs : {2, 3, 16}) EXPECT_EQ(Items(jobs), one);
}

TEST_F(PageFeedTest, ProblemsKeepTheirPlaces) {
  AddPicture(1);
  inputs_.push_back({(directory_ / "missing.png").string(), {}});
  inputs_.push_back({"folder", "is given up"});
  AddPicture(2);
  auto const one = Items(1);
  ASSERT_EQ(one.size(), 4u);
  EXPECT_THAT(one[1], HasSubstr("1 0/0 last: No such file"));
  EXPECT_EQ(one[2], "2 0/0 last: is given up");
  EXPECT_THAT(one[3], HasSubstr("3 1/1 last: 52 "));
  EXPECT_EQ(Items(4), one);
}

TEST_F(PageFeedTest, PagesOfOneFileAreCodedByAllWorkers) {
  std::vector<test::TiffPage> pages(9);
  for (test::TiffPage& page : pages) page.compression = 1;
  test::WriteTiff(directory_ / "a.tif", pages, [](int page, int x, int y, int) {
    return static_cast<unsigned>(x * (page + 1) + y) & 1;
  });
  inputs_.push_back({(directory_ / "a.tif").string(), {}});
  auto const one = Items(1);
  ASSERT_EQ(one.size(), 9u);
  EXPECT_THAT(one[4], ::testing::StartsWith("0 5/9: 72 "));
  EXPECT_THAT(one[8], ::testing::StartsWith("0 9/9 last: 72 "));
  EXPECT_EQ(Items(3), one);
}

TEST_F(PageFeedTest, FeedThatIsDroppedHalfwayEnds) {
  for (int number = 1; number <= 12; ++number) AddPicture(number);
  for (int const jobs : {1, 3}) {
    PageFeed feed(inputs_, style_, jobs);
    EXPECT_TRUE(feed.Next());
  }
}

TEST_F(PageFeedTest, NoInputsGiveNoItems) { EXPECT_TRUE(Items(2).empty()); }

TEST(PageWorkers, WindowIsOneWithoutThreadsAndTwoForEach) {
  PageStyle const style;
  EXPECT_EQ(PageWorkers(style, 1).Window(), 1u);
  EXPECT_EQ(PageWorkers(style, 3).Window(), 6u);
}

}  // namespace
}  // namespace sorrelin::tool
