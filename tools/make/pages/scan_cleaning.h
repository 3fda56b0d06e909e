// What scanners leave on pages: tilted pages, specks, and empty pages.
#ifndef TOOLS_MAKE_PAGES_SCAN_CLEANING_H_
#define TOOLS_MAKE_PAGES_SCAN_CLEANING_H_

#include "tools/formats/picture/picture.h"

namespace sorrelin::tool {

struct ScanStyle {
  bool deskew = false;
  bool clean = false;
  bool skip_blank = false;

  bool ChangesPixels() const { return deskew || clean; }
};

// A page with at most this share of ink, in percent, counts as blank. A line of text on a page of
// A4 has more, and what dust and the holes of a binder leave is less.
inline constexpr double kBlankPercent = 0.05;

// The share of a picture, in percent, that is darker than its paper. What is smaller than half a
// millimetre does not count.
double InkPercent(Picture const& picture);

// Straightens and cleans a picture as `style` asks, and notes what has changed it. False when
// memory is short.
bool CleanScan(ScanStyle const& style, Picture& picture);

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_PAGES_SCAN_CLEANING_H_
