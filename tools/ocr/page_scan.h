// The pictures of pages as they are recognised: upright as viewers show them.
#ifndef TOOLS_OCR_PAGE_SCAN_H_
#define TOOLS_OCR_PAGE_SCAN_H_

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <tuple>
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

// A page of a picture file on disk.
struct FilePage {
  std::string file;
  int source = 0;  // of the file, from 0
  int page = 0;    // of the source, from 0

  template <typename Self>
  static auto Fields(Self& self) {
    return std::tie(self.file, self.source, self.page);
  }
};

// A page of a source as another process takes it.
struct DecodedPage {
  unsigned page = 0;              // from 0
  std::vector<l_uint32> picture;  // as Leptonica serialises it
  Resolution dpi;
  std::string problem;  // why there is none

  template <typename Self>
  static auto Fields(Self& self) {
    return std::tie(self.page, self.picture, self.dpi, self.problem);
  }
};

// Where pages come from: one of four.
struct ScannedPages {
  std::string document = {};
  std::vector<FilePage> files = {};  // those of a file come in their order
  std::vector<DecodedPage> decoded = {};
  // One that cannot be opened again, and that only copies of this process can read: for one process
  // at a time.
  ImageSource* source = nullptr;

  template <typename Self>
  static auto Fields(Self& self) {
    return std::tie(self.document, self.files, self.decoded);
  }
};

// Pages of a source for a process that is no copy of this one: the first one, and those after it
// until `enough` bytes are decoded.
ScannedPages Decoded(ImageSource& source, std::span<unsigned const> pages, size_t enough);

// Null with the reason in `problem`. `pages` outlive the scanner. Each process that recognises
// pages opens its own, because processes that share an open file disturb each other's position in
// it.
std::unique_ptr<PageScanner> OpenScanner(ScannedPages const& pages, std::string& problem);

// The picture turned clockwise by so many quarters, in the same place. False when memory is short.
bool TurnQuarters(ScannedPicture& scanned, int quarters);

}  // namespace sorrelin::tool

#endif  // TOOLS_OCR_PAGE_SCAN_H_
