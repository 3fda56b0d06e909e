// Text of pages, recognised by several processes at a time.
#ifndef TOOLS_OCR_PAGE_TEXTS_H_
#define TOOLS_OCR_PAGE_TEXTS_H_

#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "tools/ocr/ocr_options.h"
#include "tools/ocr/page_scan.h"
#include "tools/ocr/picture_place.h"

namespace sorrelin::tool {

// The recognised text of a picture.
struct PictureText {
  std::string data;  // in the form asked for; as AVERNA_PDF, a page that covers the picture
  // From the unit square that the recognised picture fills: as AVERNA_PDF to the page, in points;
  // in other forms to the pixels of the page's picture as viewers show it.
  Matrix place;
  SheetSize shown;  // the size of that picture

  template <typename Self>
  static auto Fields(Self& self) {
    return std::tie(self.data, self.place, self.shown);
  }
};

struct PageText {
  unsigned page = 0;                  // from 0
  std::vector<PictureText> pictures;  // as a document: those with words
  int quarter_turns = 0;              // clockwise, that bring the text upright
  std::string problem;                // why there is no text; empty where there is
  bool has_begun = true;              // false if no process could recognise anything

  template <typename Self>
  static auto Fields(Self& self) {
    return std::tie(self.page, self.pictures, self.quarter_turns, self.problem, self.has_begun);
  }
};

// Called for each page as it is done, in any order but one at a time.
using PageTextSink = std::function<void(PageText const& text)>;

// Recognises pages, whose files nobody changes meanwhile. `jobs` processes share the
// pages; one that is ended by a page, or by the time that the page takes, is replaced. Every page
// has an element of the result, in the order of `pages`.
std::vector<PageText> RecognizePages(ScannedPages const& scanned,
                                     std::vector<unsigned> const& pages, OcrOptions const& options,
                                     int jobs, PageTextSink const& done);

// Whether the engine and its language data are there. False with the reason in `problem`.
bool CheckOcr(OcrOptions const& options, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_OCR_PAGE_TEXTS_H_
