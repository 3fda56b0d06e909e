// The content stream of a text layer.
#ifndef TOOLS_OCR_LAYER_CONTENT_H_
#define TOOLS_OCR_LAYER_CONTENT_H_

#include <functional>
#include <string>
#include <vector>

#include "tools/ocr/layer_words.h"

namespace sorrelin::tool {

struct LayerStyle {
  std::string font;                                              // its name in the page's resources
  std::function<std::string(std::u16string const& text)> codes;  // of the font, in hexadecimal
};

// A word's box as it is laid: on a line that is tilted by a few degrees, a level one about the same
// middle, because viewers take words of tilted lines to pieces.
Matrix LevelBox(Matrix const& box);

// Operators that lay words as invisible text. `place` goes from the words' page to the one that
// they are laid on.
std::string LayerContent(std::vector<LayerWord> words, Matrix const& place,
                         LayerStyle const& style);

}  // namespace sorrelin::tool

#endif  // TOOLS_OCR_LAYER_CONTENT_H_
