// Which pages are meant, and what their files are called.
#ifndef TOOLS_DOCUMENTS_PAGE_SELECTION_H_
#define TOOLS_DOCUMENTS_PAGE_SELECTION_H_

#include <sorrelin/platform/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sorrelin::tool {

// Pages as in "1-3,7,9-", where the last means all from 9 on. Without ranges, all pages.
class PageSelection {
 public:
  // Nothing if the text is no list of pages.
  static std::optional<PageSelection> Parse(std::string_view text);

  // The pages of a document that has `count`, counted from 0, in the order given, each once.
  std::vector<DWORD> Of(DWORD count) const;
  // Whether a page behind the first `count` is named.
  bool GoesBeyond(DWORD count) const;

 private:
  struct Range {
    DWORD first;
    std::optional<DWORD> last;
  };
  std::vector<Range> ranges_;
};

// A file's name with the place of the page's number: %d, or %3d or %03d for at least three digits;
// %% stands for a percent sign.
class NamePattern {
 public:
  // Nothing if there are several places, or a percent sign that means nothing.
  static std::optional<NamePattern> Parse(std::string_view text);

  bool HasNumber() const { return has_number_; }
  std::string NameOf(DWORD page) const;

 private:
  std::string before_;
  std::string behind_;
  size_t digits_ = 1;
  bool has_number_ = false;
};

// The text as a part of a pattern that stands for itself.
std::string PatternOf(std::string_view text);

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_PAGE_SELECTION_H_
