// The font that all text layers of a document share.
#ifndef TOOLS_OCR_LAYER_FONT_H_
#define TOOLS_OCR_LAYER_FONT_H_

#include <map>
#include <qpdf/QPDF.hh>
#include <string>

namespace sorrelin::tool {

// The engine's font without shapes. Its codes are UTF-16 units; those of surrogates stand for whole
// letters of the other planes, which viewers cannot put together from two codes.
class LayerFont {
 public:
  explicit LayerFont(QPDF& document) : document_(document) {}

  // The font in the document, copied there once from a page that the engine has rendered.
  QPDFObjectHandle Copy(QPDF& rendered, QPDFObjectHandle rendered_page);

  // The codes of a text in hexadecimal digits, four each.
  std::string CodesOf(std::u16string const& text);

  // Says to viewers which letters the codes are. For a font whose layers are all laid.
  void Finish();

 private:
  char16_t CodeOf(std::u16string const& letter);

  QPDF& document_;
  QPDFObjectHandle font_;
  std::map<std::u16string, char16_t> pairs_;  // letters of the other planes, and their codes
};

}  // namespace sorrelin::tool

#endif  // TOOLS_OCR_LAYER_FONT_H_
