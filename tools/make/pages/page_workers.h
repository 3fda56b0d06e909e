// Codes pages on threads of its own, so that several are under way while one is written.
#ifndef TOOLS_MAKE_PAGES_PAGE_WORKERS_H_
#define TOOLS_MAKE_PAGES_PAGE_WORKERS_H_

#include <condition_variable>
#include <deque>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tools/make/pages/page_coder.h"

namespace sorrelin::tool {

// A page, or why there is none.
struct CodingResult {
  std::unique_ptr<CodedPage> page;
  std::string problem;
};

class PageWorkers {
 public:
  // With one job there is no thread: a page is coded when its result is asked for. `style` outlives
  // the workers.
  PageWorkers(PageStyle const& style, int jobs);
  // Drops what has not been begun.
  ~PageWorkers();
  PageWorkers(PageWorkers const&) = delete;
  PageWorkers& operator=(PageWorkers const&) = delete;

  // Pages that should be under way at a time. More keep no more threads busy, and cost memory.
  size_t Window() const { return threads_.empty() ? 1 : 2 * threads_.size(); }

  // Takes page `page` of a file. The results may be asked for in any order, once each.
  std::future<CodingResult> Start(std::shared_ptr<ImageSource> source, int page);

 private:
  using Task = std::packaged_task<CodingResult(PageCoder&)>;

  void Work();

  PageStyle const& style_;
  PageCoder own_coder_;
  std::mutex mutex_;  // of the two below
  std::deque<Task> tasks_;
  bool closing_ = false;
  std::condition_variable changed_;
  std::vector<std::thread> threads_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_PAGES_PAGE_WORKERS_H_
