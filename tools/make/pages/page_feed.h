// The pages of many files, coded and in order, with as few of them in memory as keep the workers
// busy.
#ifndef TOOLS_MAKE_PAGES_PAGE_FEED_H_
#define TOOLS_MAKE_PAGES_PAGE_FEED_H_

#include <deque>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/formats/image_file.h"
#include "tools/make/input_list.h"
#include "tools/make/pages/page_workers.h"

namespace sorrelin::tool {

// A page, or something that is wrong with a file or one of its pages.
struct FeedItem {
  size_t input = 0;     // index of the file
  int page = 0;         // counted from 1; 0: the problem is the file's
  int pages = 0;        // that the file is known to have by now
  CodingResult result;  // no page: a problem
  bool last = false;    // nothing of the file comes after it
};

class PageFeed {
 public:
  // `inputs` and `style` outlive the feed.
  PageFeed(std::vector<Input> const& inputs, PageStyle const& style, int jobs);

  // The next item, or nothing after the last. Problems come in their place between the pages, for
  // any number of jobs.
  std::optional<FeedItem> Next();

 private:
  // What is under way.
  struct Step {
    FeedItem item;
    std::future<CodingResult> coding;  // not valid: the item is whole
  };

  bool Advance();
  bool OpenNext();
  bool OpenSource();
  void StartPage();
  bool SourceIsLast();
  void AddProblem(std::string problem, bool last);

  std::vector<Input> const& inputs_;
  PageWorkers workers_;
  size_t next_input_ = 0;
  std::unique_ptr<ImageFile> file_;      // the one that is being taken apart
  std::shared_ptr<ImageSource> source_;  // what its next pages come from
  int next_page_ = 0;                    // of the source
  int pages_before_ = 0;                 // of the file's sources before this one
  std::deque<Step> steps_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_PAGES_PAGE_FEED_H_
