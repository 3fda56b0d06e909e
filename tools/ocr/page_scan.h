// The pictures of pages as they are recognised: upright as viewers show them.
#ifndef TOOLS_OCR_PAGE_SCAN_H_
#define TOOLS_OCR_PAGE_SCAN_H_

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tools/formats/image_source.h"
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
  virtual ~PageScanner() = default;

  // The pictures that a page shows, counted from 0. Empty with the reason in `problem`.
  virtual std::vector<ScannedPicture> Scan(unsigned page, std::string& problem) = 0;
};

// Opens a scanner. Null with the reason in `problem`. Each process that recognises pages calls it
// for itself, because processes that share an open file disturb each other's position in it.
using ScannerMaker = std::function<std::unique_ptr<PageScanner>(std::string& problem)>;

// The pages of the document `name`.
ScannerMaker ScannerOfDocument(std::string const& name);

// A page of a picture file on disk.
struct FilePage {
  std::string file;
  int source = 0;  // of the file, from 0
  int page = 0;    // of the source, from 0
};

// Pages of files, in the order of `pages`; those of a file come in their order.
ScannerMaker ScannerOfFiles(std::vector<FilePage> const& pages);

// The pages of a source that cannot be opened again, which outlives the scanner: for one process at
// a time.
ScannerMaker ScannerOfSource(ImageSource& source);

// The picture turned clockwise by so many quarters, in the same place. False when memory is short.
bool TurnQuarters(ScannedPicture& scanned, int quarters);

}  // namespace sorrelin::tool

#endif  // TOOLS_OCR_PAGE_SCAN_H_
