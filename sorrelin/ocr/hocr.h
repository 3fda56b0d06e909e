// hOCR, the XHTML in which OCR engines deliver their result, as pages and words. Class names and
// layout values come from attributes; the names of the elements do not matter.
#ifndef SORRELIN_OCR_HOCR_H_
#define SORRELIN_OCR_HOCR_H_

#include <sorrelin/platform/types.h>
#include <sorrelin/platform/wide_string.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace sorrelin {

// One recognised word; the box is in pixels of the picture, the origin at its top left corner.
struct HocrWord {
  int32_t page = 0;  // the page value when the word was met; -1 before any page
  WideString text;
  int32_t left = 0;  // 0, with the other three, for a word without "bbox"
  int32_t top = 0;
  int32_t right = 0;
  int32_t bottom = 0;
  int32_t font_size = 10;  // points, from "x_fsize"
};

// What ParseHocr has collected. The maps go by page value.
struct HocrDocument {
  uint64_t unused = 0;          // holds nothing
  uint32_t total_step = 0;      // added to a running total that nobody reads
  uint64_t word_state = 0;      // set to 0 by each page and each attribute that names no class
  std::vector<HocrWord> words;  // in document order
  std::map<int32_t, int32_t> page_widths;   // pixels
  std::map<int32_t, int32_t> page_heights;  // pixels
  std::map<int32_t, int32_t> page_resolutions;
  int32_t width = 0;  // of the page last met
  int32_t height = 0;
  int32_t resolution = 0;
};

// Reads a zero-terminated hOCR text into `document`, after what it already holds. 1; 0 if the text
// is null, is no XML or is nested deeper than 1,000 elements, if a page or word has no title or a
// word has no id, or if memory runs short. Pages and words met before the failure stay.
int ParseHocr(HocrDocument& document, WCHAR const* text);

}  // namespace sorrelin

#endif  // SORRELIN_OCR_HOCR_H_
