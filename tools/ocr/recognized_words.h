// Words of pictures, by the OCR engine that the library binds.
#ifndef TOOLS_OCR_RECOGNIZED_WORDS_H_
#define TOOLS_OCR_RECOGNIZED_WORDS_H_

#include <sorrelin/ocr/engine_binding.h>
#include <sorrelin/ocr/hocr.h>

#include <optional>
#include <string>
#include <vector>

#include "tools/formats/picture.h"

namespace sorrelin::tool {

// The engine stays loaded from the first picture on.
class WordReader {
 public:
  // `language` is a list as in "eng+deu".
  explicit WordReader(std::string language) : language_(std::move(language)) {}

  // The words in reading order, their boxes in pixels of the picture. Nothing with the reason in
  // `problem` if there was no recognition.
  std::optional<std::vector<HocrWord>> Read(Picture picture, std::string& problem);

 private:
  std::string Reason(DWORD error) const;

  std::string language_;
  OcrEngineBinding engine_;
};

// One line of JSON without its end. Pages count from 1.
std::string WordJson(std::string const& file, int page, HocrWord const& word);

// The words as lines of text, each with its end: a word that lies below the one before, or starts
// further left, begins a line.
std::string WordText(std::vector<HocrWord> const& words);

}  // namespace sorrelin::tool

#endif  // TOOLS_OCR_RECOGNIZED_WORDS_H_
