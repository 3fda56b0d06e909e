// The place of a picture on a page of a given size. Measures are points, 72 an inch.
#ifndef TOOLS_MAKE_PAGES_PAGE_LAYOUT_H_
#define TOOLS_MAKE_PAGES_PAGE_LAYOUT_H_

#include <sorrelin/writer/encoded_page.h>

#include <optional>
#include <string_view>

#include "tools/formats/page_frame.h"

namespace sorrelin::tool {

struct Paper {
  double width = 0;
  double height = 0;
  bool turns = false;  // is on its side for a picture that is wider than high
};

enum class Fit {
  kWithin,  // as large as the page allows
  kShrink,  // of its own size, or smaller where the page is
  kFill,    // covers the page, which cuts off what is over
  kStretch  // takes the page's shape
};

// The longest side of a page that viewers accept (ISO 32000-1, annex C).
inline constexpr double kMostPoints = 14400;

// "a0" to "b10", "letter" and others, which turn, or two numbers with a unit after either or both,
// such as "210x297mm", "8.5inx11in" and "595ptx842". Letter case does not matter. nullopt for
// anything else, and for what is no page: below 3 or above 14,400 points.
std::optional<Paper> ParsePaper(std::string_view size);

// A number with a unit, such as "10mm", or 0. nullopt for anything else, and for more than half of
// the largest page.
std::optional<double> ParseLength(std::string_view length);

// A picture of a size of its own in the middle of the page, within a border.
PagePlacement PlaceOn(Paper paper, Fit fit, double border, double width, double height);

// A picture of its own size on the page that its file states.
PagePlacement PlaceInFrame(PageFrame const& frame, double width, double height);

// A picture of its own size on a page that is larger by the border.
PagePlacement PlaceWithBorder(double border, double width, double height);

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_PAGES_PAGE_LAYOUT_H_
