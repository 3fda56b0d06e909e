// The map from codes to letters (ISO 32000-1, 9.10.3).
#include "tools/ocr/layer_font.h"

#include <cstdio>

namespace sorrelin::tool {
namespace {

constexpr char kRenderedFont[] = "/f-0-0";
constexpr char16_t kFirstSurrogate = 0xD800;
constexpr char16_t kLowSurrogate = 0xDC00;
constexpr char16_t kLastSurrogate = 0xDFFF;
constexpr char16_t kUnknownLetter = 0xFFFD;

constexpr char kMapHead[] =
    "/CIDInit /ProcSet findresource begin\n"
    "12 dict begin\n"
    "begincmap\n"
    "/CIDSystemInfo << /Registry (Adobe) /Ordering (UCS) /Supplement 0 >> def\n"
    "/CMapName /Adobe-Identity-UCS def\n"
    "/CMapType 2 def\n"
    "1 begincodespacerange\n"
    "<0000> <FFFF>\n"
    "endcodespacerange\n"
    "2 beginbfrange\n"
    "<0000> <D7FF> <0000>\n"
    "<E000> <FFFF> <E000>\n"
    "endbfrange\n";
constexpr char kMapTail[] =
    "endcmap\n"
    "CMapName currentdict /CMap defineresource pop\n"
    "end\n"
    "end\n";

bool IsIn(char16_t unit, char16_t first, char16_t last) { return unit >= first && unit <= last; }

std::string Hex(char16_t unit) {
  char digits[8];
  std::snprintf(digits, sizeof digits, "%04x", static_cast<unsigned>(unit));
  return digits;
}

}  // namespace

QPDFObjectHandle LayerFont::Copy(QPDF& rendered, QPDFObjectHandle rendered_page) {
  if (font_.isInitialized()) return font_;
  rendered.setImmediateCopyFrom(true);
  QPDFObjectHandle fonts = rendered_page.getKey("/Resources").getKey("/Font");
  font_ = document_.copyForeignObject(fonts.getKey(kRenderedFont));
  return font_;
}

std::string LayerFont::CodesOf(std::u16string const& text) {
  std::string codes;
  for (size_t i = 0; i < text.size(); ++i) {
    bool const is_pair = i + 1 < text.size() && IsIn(text[i], kFirstSurrogate, kLowSurrogate - 1) &&
                         IsIn(text[i + 1], kLowSurrogate, kLastSurrogate);
    codes += Hex(CodeOf(text.substr(i, is_pair ? 2 : 1)));
    i += is_pair ? 1 : 0;
  }
  return codes;
}

char16_t LayerFont::CodeOf(std::u16string const& letter) {
  constexpr size_t kMaxPairs = kLastSurrogate - kFirstSurrogate + 1;
  if (letter.size() == 1) {
    bool const is_half = IsIn(letter[0], kFirstSurrogate, kLastSurrogate);
    return is_half ? kUnknownLetter : letter[0];
  }
  if (auto const known = pairs_.find(letter); known != pairs_.end()) return known->second;
  if (pairs_.size() == kMaxPairs) return kUnknownLetter;
  auto const code = static_cast<char16_t>(kFirstSurrogate + pairs_.size());
  return pairs_[letter] = code;
}

void LayerFont::Finish() {
  if (pairs_.empty()) return;
  std::string map = kMapHead;
  for (auto const& [letter, code] : pairs_) {
    map +=
        "1 beginbfchar\n<" + Hex(code) + "> <" + Hex(letter[0]) + Hex(letter[1]) + ">\nendbfchar\n";
  }
  font_.replaceKey("/ToUnicode", QPDFObjectHandle::newStream(&document_, map + kMapTail));
}

}  // namespace sorrelin::tool
