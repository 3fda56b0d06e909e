// The feed of coded pages: the thread that asks opens the files in turn, the workers only code.
#include "tools/make/pages/page_feed.h"

#include <new>
#include <utility>

namespace sorrelin::tool {
namespace {

// What `open` returns, or nullptr with the reason in `problem`.
template <typename Open>
auto WithinMemory(Open open, std::string& problem) -> decltype(open()) {
  try {
    return open();
  } catch (std::bad_alloc const&) {
    problem = kMemoryText;
    return nullptr;
  }
}

}  // namespace

PageFeed::PageFeed(std::vector<Input> const& inputs, PageStyle const& style, int jobs)
    : inputs_(inputs), workers_(style, jobs) {}

std::optional<FeedItem> PageFeed::Next() {
  while (steps_.size() < workers_.Window() && Advance()) {
  }
  if (steps_.empty()) return std::nullopt;
  Step step = std::move(steps_.front());
  steps_.pop_front();
  if (step.coding.valid()) step.item.result = step.coding.get();
  return std::move(step.item);
}

// Puts one more step under way; false if there is none.
bool PageFeed::Advance() {
  if (file_ == nullptr) return OpenNext();
  if (source_ == nullptr) return OpenSource();
  if (next_page_ < source_->PageCount()) {
    StartPage();
    return true;
  }
  std::string damage = source_->Damage();
  bool const last = file_->AtEnd();
  pages_before_ += source_->PageCount();
  source_.reset();
  if (last) file_.reset();
  if (!damage.empty()) AddProblem(std::move(damage), last);
  return damage.empty() ? Advance() : true;
}

// Whether nothing of the file comes after the source's pages.
bool PageFeed::SourceIsLast() { return source_->Damage().empty() && file_->AtEnd(); }

void PageFeed::StartPage() {
  int const page = next_page_++;
  bool const last_of_source = next_page_ == source_->PageCount();
  bool const last = last_of_source && SourceIsLast();
  int const more = last_of_source && !file_->AtEnd() ? 1 : 0;
  FeedItem item{next_input_ - 1,
                pages_before_ + next_page_,
                pages_before_ + source_->PageCount() + more,
                {},
                last};
  steps_.push_back({std::move(item), workers_.Start(source_, page)});
  if (!last) return;
  source_.reset();
  file_.reset();
}

// Opens the next file and puts its first page under way, or what is wrong with it.
bool PageFeed::OpenNext() {
  if (next_input_ == inputs_.size()) return false;
  Input const& input = inputs_[next_input_++];
  std::string problem = input.problem;
  pages_before_ = 0;
  if (problem.empty()) {
    file_ = WithinMemory([&] { return ImageFile::Open(input.name, problem); }, problem);
  }
  if (file_ != nullptr) return Advance();
  AddProblem(std::move(problem), true);
  return true;
}

// The same of the next source of the file.
bool PageFeed::OpenSource() {
  std::string problem;
  next_page_ = 0;
  source_ = WithinMemory([&] { return file_->Next(problem); }, problem);
  if (source_ != nullptr) return Advance();
  file_.reset();
  if (problem.empty()) return Advance();
  AddProblem(std::move(problem), true);
  return true;
}

void PageFeed::AddProblem(std::string problem, bool last) {
  steps_.push_back({{next_input_ - 1, 0, 0, {nullptr, std::move(problem)}, last}, {}});
}

}  // namespace sorrelin::tool
