// The words of a rendered text layer: their letters, and the boxes that they fill.
#ifndef TOOLS_OCR_LAYER_WORDS_H_
#define TOOLS_OCR_LAYER_WORDS_H_

#include <qpdf/QPDFObjectHandle.hh>
#include <string>
#include <vector>

#include "tools/extract/page/placement.h"

namespace sorrelin::tool {

struct LayerWord {
  std::u16string text;  // in the order in which it is read, without blanks
  // From the unit square to the page: along the line from left to right, or down for vertical
  // text, and from the line's foot to its head.
  Matrix box;
  bool from_right = false;  // it is read from right to left
};

// The words on a page of the engine's renderer, in its order. Exceptions of libqpdf pass through.
std::vector<LayerWord> WordsOfLayer(QPDFObjectHandle page);

// The words parted into lines; their order stays.
std::vector<std::vector<LayerWord>> LinesOf(std::vector<LayerWord> words);

// The letters in the order in which they are seen from left to right, where the word is read from
// right to left: numbers and foreign letters in it keep their order.
std::u16string SeenFromLeft(std::u16string const& text);

}  // namespace sorrelin::tool

#endif  // TOOLS_OCR_LAYER_WORDS_H_
