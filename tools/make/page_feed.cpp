// Files are opened in turn by the thread that asks; only coding goes to the workers.
#include "tools/make/page_feed.h"

#include <new>
#include <utility>

namespace sorrelin::tool {
namespace {

std::shared_ptr<ImageSource> Open(std::string const& name, std::string& problem) {
  try {
    return OpenImage(name, problem);
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
  if (source_ == nullptr) return OpenNext();
  int const pages = source_->PageCount();
  if (next_page_ < pages) {
    int const page = next_page_++;
    bool const last = next_page_ == pages && source_->Damage().empty();
    steps_.push_back(
        {{next_input_ - 1, next_page_, pages, {}, last}, workers_.Start(source_, page)});
    if (last) source_.reset();
    return true;
  }
  AddProblem(source_->Damage());
  source_.reset();
  return true;
}

// Opens the next file and puts its first page under way, or what is wrong with it.
bool PageFeed::OpenNext() {
  if (next_input_ == inputs_.size()) return false;
  Input const& input = inputs_[next_input_++];
  std::string problem = input.problem;
  if (problem.empty()) source_ = Open(input.name, problem);
  next_page_ = 0;
  if (source_ != nullptr) return Advance();
  AddProblem(std::move(problem));
  return true;
}

void PageFeed::AddProblem(std::string problem) {
  steps_.push_back({{next_input_ - 1, 0, 0, {nullptr, std::move(problem)}, true}, {}});
}

}  // namespace sorrelin::tool
