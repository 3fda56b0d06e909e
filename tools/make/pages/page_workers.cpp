// Threads that take pages from one queue, each with a coder of its own.
#include "tools/make/pages/page_workers.h"

#include <new>
#include <system_error>
#include <utility>

namespace sorrelin::tool {
namespace {

CodingResult CodePage(PageCoder& coder, ImageSource& source, int page) {
  CodingResult result;
  try {
    result.page = coder.Code(source, page, result.problem);
  } catch (std::bad_alloc const&) {
    result.problem = kMemoryText;
  }
  return result;
}

}  // namespace

// Without memory or threads for all of them there are fewer, which is slower and no more.
PageWorkers::PageWorkers(PageStyle const& style, int jobs) : style_(style), own_coder_(style) {
  if (jobs < 2) return;
  size_t const count = static_cast<size_t>(jobs);
  threads_.reserve(count);
  try {
    while (threads_.size() < count) threads_.emplace_back([this] { Work(); });
  } catch (std::system_error const&) {
  } catch (std::bad_alloc const&) {
  }
}

PageWorkers::~PageWorkers() {
  {
    std::lock_guard const lock(mutex_);
    closing_ = true;
    tasks_.clear();
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

std::future<CodingResult> PageWorkers::Start(std::shared_ptr<ImageSource> source, int page) {
  if (threads_.empty()) {
    return std::async(std::launch::deferred, [this, source = std::move(source), page] {
      return CodePage(own_coder_, *source, page);
    });
  }
  Task task([source = std::move(source), page](PageCoder& coder) {
    return CodePage(coder, *source, page);
  });
  auto result = task.get_future();
  {
    std::lock_guard const lock(mutex_);
    tasks_.push_back(std::move(task));
  }
  changed_.notify_one();
  return result;
}

void PageWorkers::Work() {
  PageCoder coder(style_);
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return closing_ || !tasks_.empty(); });
    if (tasks_.empty()) return;
    Task task = std::move(tasks_.front());
    tasks_.pop_front();
    lock.unlock();
    task(coder);
    task = {};
    lock.lock();
  }
}

}  // namespace sorrelin::tool
