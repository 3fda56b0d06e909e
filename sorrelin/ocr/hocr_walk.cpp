// The steps of the hOCR walk.
#include <sorrelin/ocr/hocr_walk.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace sorrelin {
namespace {

using WideView = std::basic_string_view<WCHAR>;

constexpr int32_t kDefaultFontSize = 10;

WideString Widen(std::string_view ascii) { return WideString(ascii.begin(), ascii.end()); }

bool Equals(WideView text, std::string_view ascii) {
  return std::equal(text.begin(), text.end(), ascii.begin(), ascii.end());
}

WideView RequiredAttribute(XmlNode const& node, std::string_view name) {
  for (XmlAttribute const* attribute = node.first_attribute(); attribute != nullptr;
       attribute = attribute->next_attribute()) {
    if (Equals({attribute->name(), attribute->name_size()}, name)) {
      return {attribute->value(), attribute->value_size()};
    }
  }
  throw std::invalid_argument("hOCR node without a required attribute");
}

bool IsBlank(WCHAR c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

int32_t Clamp(int64_t value) {
  return static_cast<int32_t>(std::clamp<int64_t>(value, std::numeric_limits<int32_t>::min(),
                                                  std::numeric_limits<int32_t>::max()));
}

// Blanks, a sign, digits up to the first other character; 0 without digits, the nearest bound for
// a number beyond 32 bits.
int32_t WideAtoi(WideView text) {
  size_t at = 0;
  while (at < text.size() && IsBlank(text[at])) ++at;
  bool const negative = at < text.size() && text[at] == '-';
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
  int64_t value = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    value = std::min<int64_t>(value * 10 + (text[at] - '0'), int64_t{1} << 40);
  }
  return Clamp(negative ? -value : value);
}

// The number in a token; 0 where the list has ended.
int32_t NumberAt(std::vector<WideString> const& tokens, size_t index) {
  return index < tokens.size() ? WideAtoi(tokens[index]) : 0;
}

// Kept: the text from 5 characters after the start of a keyword, whatever its length, and from
// character 4 if the keyword is missing; page values and sizes come out of this cut. Throws if the
// title is shorter than that.
WideView CutBehind(WideView title, std::string_view keyword) {
  size_t const found = title.find(Widen(keyword));
  return title.substr(found == WideView::npos ? 4 : found + 5);
}

// The extent between two edges. Kept: the origin is subtracted once more from the distance, which
// is the plain size for a box at the origin; the sizes in the maps are these.
int32_t PageExtent(int64_t from, int64_t to) {
  int64_t const distance = to < from ? from - to : to - from;
  return Clamp(distance - from);
}

void TakePage(HocrDocument& document, XmlNode const& node, int32_t& page) {
  WideView const title = RequiredAttribute(node, "title");
  std::vector<WideString> const box = SplitText(WideString(CutBehind(title, "bbox ")), ' ');
  document.width = PageExtent(NumberAt(box, 0), NumberAt(box, 2));
  document.height = PageExtent(NumberAt(box, 1), NumberAt(box, 3));
  // Kept: the cut begins with the letters "no", so every page of a well-formed document has the
  // value 0 and the resolution 0; the maps' one key is what callers look up.
  page = WideAtoi(CutBehind(title, "ppageno "));
  document.resolution = page;
  document.page_resolutions[page] = document.resolution;
  document.page_widths[page] = document.width;
  document.page_heights[page] = document.height;
  document.word_state = 0;
}

// Acts on the first attribute that holds a class, whatever its name.
void TakeAttributes(HocrDocument& document, XmlNode const& node, int32_t& page, uint32_t total) {
  for (XmlAttribute const* attribute = node.first_attribute(); attribute != nullptr;
       attribute = attribute->next_attribute()) {
    WideView const value(attribute->value(), attribute->value_size());
    if (Equals(value, "ocr_page")) return TakePage(document, node, page);
    if (Equals(value, "ocrx_word")) return AddHocrWord(document, node, page, total);
    if (Equals(value, "ocr_line") || Equals(value, "ocr_header") || Equals(value, "ocr_caption")) {
      return;
    }
    document.word_state = 0;
  }
}

void AppendNodeText(XmlNode const& node, WideString& text) {
  if (node.first_node() == nullptr) text.append(node.value(), node.value_size());
  for (XmlNode const* child = node.first_node(); child != nullptr; child = child->next_sibling()) {
    AppendNodeText(*child, text);
  }
}

// The index after the first token equal to `keyword`; 0 if there is none.
size_t BehindToken(std::vector<WideString> const& tokens, std::string_view keyword) {
  for (size_t i = 0; i < tokens.size(); ++i) {
    if (Equals(tokens[i], keyword)) return i + 1;
  }
  return 0;
}

}  // namespace

void WalkHocrNode(HocrDocument& document, XmlNode const& node, int32_t& page,
                  uint32_t const& total) {
  if (node.type() != rapidxml::node_element) return;
  TakeAttributes(document, node, page, total);
  for (XmlNode const* child = node.first_node(); child != nullptr; child = child->next_sibling()) {
    WalkHocrNode(document, *child, page, total);
  }
}

void AddHocrWord(HocrDocument& document, XmlNode const& node, int32_t page, uint32_t) {
  RequiredAttribute(node, "id");
  std::vector<WideString> const title =
      SplitText(WideString(RequiredAttribute(node, "title")), ' ');
  HocrWord word;
  word.page = page;
  if (size_t const box = BehindToken(title, "bbox"); box != 0) {
    word.left = NumberAt(title, box);
    word.top = NumberAt(title, box + 1);
    word.right = NumberAt(title, box + 2);
    word.bottom = NumberAt(title, box + 3);
  }
  size_t const size = BehindToken(title, "x_fsize");
  word.font_size = size != 0 ? NumberAt(title, size) : kDefaultFontSize;
  word.text = GatherNodeText(node);
  document.words.push_back(std::move(word));
}

std::vector<WideString> SplitText(WideString const& text, WCHAR delimiter) {
  std::vector<WideString> tokens;
  for (size_t start = 0; start < text.size();) {
    size_t const end = std::min(text.find(delimiter, start), text.size());
    tokens.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return tokens;
}

WideString GatherNodeText(XmlNode const& node) {
  WideString text;
  AppendNodeText(node, text);
  return text;
}

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
