// The selected pages, and the names of their files.
#ifndef TOOLS_DOCUMENTS_PAGE_SELECTION_H_
#define TOOLS_DOCUMENTS_PAGE_SELECTION_H_

#include <sorrelin/platform/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace sorrelin::tool {

// Pages as in "1-3,7,9-", where the last means all from 9 on. Without ranges, all pages.
class PageSelection {
 public:
  // nullopt if the text is no list of pages.
  static std::optional<PageSelection> Parse(std::string_view text);

  // The pages of a document that has `count`, counted from 0, in the order given, each once.
  std::vector<DWORD> Of(DWORD count) const;
  // Whether a page after the first `count` is named.
  bool GoesBeyond(DWORD count) const;

  template <typename Self>
  static auto Fields(Self& self) {
    return std::tie(self.ranges_);
  }

 private:
  struct Range {
    DWORD first;
    std::optional<DWORD> last;
  };
  std::vector<Range> ranges_;
};

// A file's name with the places of numbers: %d for the page's and %i for the picture's on its page;
// %3d or %03d for at least three digits; %% stands for a percent sign.
class NamePattern {
 public:
  // nullopt if a number has several places, or a percent sign means nothing.
  static std::optional<NamePattern> Parse(std::string_view text);

  bool HasPage() const { return pages_ != 0; }
  bool HasPicture() const { return pictures_ != 0; }
  std::string NameOf(DWORD page, DWORD picture = 1) const;

 private:
  struct Part {
    std::string text;    // before the number
    char number = '\0';  // 'd', 'i', or none at the end
    size_t digits = 1;
  };
  std::vector<Part> parts_;
  int pages_ = 0, pictures_ = 0;
};

// The text as a part of a pattern that stands for itself.
std::string PatternOf(std::string_view text);

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_PAGE_SELECTION_H_
