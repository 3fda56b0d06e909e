// The walk from the XML nodes of an hOCR text to pages and words. A missing attribute and a title
// that is too short to be cut throw; ParseHocr turns that into its result.
#ifndef SORRELIN_OCR_HOCR_WALK_H_
#define SORRELIN_OCR_HOCR_WALK_H_

#include <sorrelin/ocr/hocr.h>
#include <sorrelin/ocr/wide_xml.h>

#include <cstdint>
#include <vector>

namespace sorrelin {

// Takes a node with everything below it. `page` is the current page value; the total is passed on
// and not used.
void WalkHocrNode(HocrDocument& document, XmlNode const& node, int32_t& page,
                  uint32_t const& total);

// Appends the word that a node describes. The total is not used.
void AddHocrWord(HocrDocument& document, XmlNode const& node, int32_t page, uint32_t total);

// One token per delimiter: two in a row make an empty token, one at the end makes none.
std::vector<WideString> SplitText(WideString const& text, WCHAR delimiter);

// The value of a node without children; otherwise the text of its children in order, depth first.
WideString GatherNodeText(XmlNode const& node);

}  // namespace sorrelin

#endif  // SORRELIN_OCR_HOCR_WALK_H_
