// The pictures of a page as they are recognised: upright as viewers show them.
#ifndef TOOLS_OCR_PAGE_SCAN_H_
#define TOOLS_OCR_PAGE_SCAN_H_

#include <memory>
#include <string>
#include <vector>

#include "tools/formats/picture/picture.h"
#include "tools/ocr/picture_place.h"

namespace sorrelin::tool {

struct ScannedPicture {
  Picture picture;
  Matrix place;     // from the unit square that the picture fills to the page, in points
  SheetSize shown;  // the size of the picture before it was turned or straightened
};

SheetSize SizeOf(Pix* pix);

class PageScanner {
 public:
  // Null with the reason in `problem`.
  static std::unique_ptr<PageScanner> Open(std::string const& name, std::string& problem);
  virtual ~PageScanner() = default;

  // The pictures that a page shows, counted from 0. Empty with the reason in `problem`.
  virtual std::vector<ScannedPicture> Scan(unsigned page, std::string& problem) = 0;
};

// The picture turned clockwise by so many quarters, in the same place. False when memory is short.
bool TurnQuarters(ScannedPicture& scanned, int quarters);

}  // namespace sorrelin::tool

#endif  // TOOLS_OCR_PAGE_SCAN_H_
