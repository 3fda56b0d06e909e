// The words of a recognised page, as the program prints them.
#ifndef TOOLS_OCR_RECOGNIZED_WORDS_H_
#define TOOLS_OCR_RECOGNIZED_WORDS_H_

#include <sorrelin/ocr/hocr.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/ocr/picture_place.h"

namespace sorrelin::tool {

// The words of a page in the engine's hOCR, in reading order. Their boxes are those around the
// words in the picture that is `shown`, where `place` leads from the one that was recognised, which
// may have been turned and straightened. nullopt if the text cannot be read.
std::optional<std::vector<HocrWord>> WordsOfPage(std::string const& hocr, Matrix const& place,
                                                 SheetSize const& shown);

// One line of JSON without its end. Pages count from 1.
std::string WordJson(std::string const& file, int page, HocrWord const& word);

// The words as lines of text, each with its end: a word below the one before, or one that starts
// further left, begins a line.
std::string WordText(std::vector<HocrWord> const& words);

// How words are printed.
enum class WordForm { kJson, kText, kHocr, kTsv, kAlto };

std::optional<WordForm> WordFormOfName(std::string_view name);

// The form of the engine's result that a form is made of.
int EngineFormOf(WordForm form);

// What comes before the first page and after the last one.
char const* HeadOf(WordForm form);
char const* TailOf(WordForm form);

}  // namespace sorrelin::tool

#endif  // TOOLS_OCR_RECOGNIZED_WORDS_H_
