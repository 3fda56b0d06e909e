// Where a picture stands on a page of a given size. Measures are points, 72 an inch.
#ifndef TOOLS_MAKE_PAGE_LAYOUT_H_
#define TOOLS_MAKE_PAGE_LAYOUT_H_

#include <sorrelin/writer/encoded_page.h>

#include <optional>
#include <string_view>

namespace sorrelin::tool {

struct Paper {
  double width = 0;
  double height = 0;
  bool turns = false;  // lies on its side for a picture that is wider than high
};

enum class Fit {
  kWithin,  // as large as the page allows
  kShrink,  // of its own size, or smaller where the page is
  kFill,    // covers the page, which cuts off what is over
  kStretch  // takes the page's shape
};

// "a4", "letter" and others, which turn, or two numbers with a unit such as "210x297mm", "8.5x11in"
// and "595x842pt". Nothing for anything else, and for what is no page: below 3 or above 14,400
// points.
std::optional<Paper> ParsePaper(std::string_view text);

// A picture of a size of its own in the middle of the page.
PagePlacement PlaceOn(Paper paper, Fit fit, double width, double height);

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_PAGE_LAYOUT_H_
