// Text layers on the pages of a document, laid there by libqpdf.
#ifndef TOOLS_OCR_TEXT_LAYERS_H_
#define TOOLS_OCR_TEXT_LAYERS_H_

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tools/ocr/page_texts.h"

namespace sorrelin::tool {

// What a document has of text before the program changes it.
struct TextSurvey {
  unsigned pages = 0;
  std::vector<unsigned> with_text;   // pages, from 0, with text that is not the program's
  std::vector<unsigned> with_layer;  // pages with a layer of the program
};

// nullopt with the reason in `problem` if the document cannot be read, or may not be changed
// because it is encrypted or signed.
std::optional<TextSurvey> SurveyText(std::string const& name, std::string& problem);

// Writes a copy of the document `from` with the layers and turns of `texts`. Earlier layers of the
// program on these pages go. All streams but page contents stay as they are, byte for byte. False
// with the reason in `problem`; the copy has been read back otherwise.
bool LayTexts(std::filesystem::path const& from, std::filesystem::path const& to,
              std::vector<PageText> const& texts, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_OCR_TEXT_LAYERS_H_
