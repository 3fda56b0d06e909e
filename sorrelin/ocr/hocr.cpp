// The entry to the hOCR walk: the text's copy, its XML document and the failures of both.
#include <sorrelin/ocr/hocr.h>
#include <sorrelin/ocr/hocr_walk.h>
#include <sorrelin/ocr/wide_xml.h>

#include <memory>

namespace sorrelin {

int ParseHocr(HocrDocument& document, WCHAR const* text) {
  if (text == nullptr) return 0;
  try {
    WideString copy(text[0] == 0xFEFF ? text + 1 : text);
    auto const xml = std::make_unique<XmlDocument>();
    xml->parse<rapidxml::parse_default>(copy.data());
    int32_t page = -1;
    uint32_t total = 0;
    for (XmlNode const* node = xml->first_node(); node != nullptr; node = node->next_sibling()) {
      WalkHocrNode(document, *node, page, total);
      total += document.total_step;
    }
    return 1;
  } catch (...) {
    // Kept: whatever goes wrong is a result of 0 without a code; callers set PDF_ERROR_HOCR.
    return 0;
  }
}

}  // namespace sorrelin
