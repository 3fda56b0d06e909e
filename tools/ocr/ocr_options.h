// Command-line options of text recognition, shared by make, append and ocr.
#ifndef TOOLS_OCR_OCR_OPTIONS_H_
#define TOOLS_OCR_OCR_OPTIONS_H_

#include <string>
#include <tuple>

#include "tools/cli/command_line.h"
#include "tools/ocr/ocr_engine.h"

namespace sorrelin::tool {

inline constexpr int kUsualTimeout = 300;

struct OcrOptions {
  std::string languages;  // as in "eng+deu"; empty: no text is recognised
  bool turn = false;      // pages are turned so that their text is upright
  bool must_turn = true;  // nothing is recognised where the data for that are missing
  int segmentation = kUsualSegmentation;
  int form = AVERNA_PDF;        // of the engine's result
  bool straighten = true;       // tilted pictures are recognised in a straight copy
  int first_number = 0;         // of the first page, where the form has numbers
  int timeout = kUsualTimeout;  // seconds a page; 0: none

  bool IsWanted() const { return !languages.empty() || turn; }

  template <typename Self>
  static auto Fields(Self& self) {
    return std::tie(self.languages, self.turn, self.must_turn, self.segmentation, self.form,
                    self.straighten, self.first_number, self.timeout);
  }
};

// Adds --ocr, for verbs that do more than recognise.
void AddOcr(Verb& verb, OcrOptions& options);

// Adds --language, with English as the usual one.
void AddLanguage(Verb& verb, std::string& languages);

// Adds --orientation and --timeout.
void AddRecognition(Verb& verb, OcrOptions& options);

// Adds --psm.
void AddSegmentation(Verb& verb, int& segmentation);

// What the help says of these options.
inline constexpr char kOcrHelp[] =
    R"(
--ocr lays invisible text on each new page, where its words are seen, so that
viewers find, mark and copy them; the pictures stay as they are. LANG is as
Tesseract names it, several joined as in eng+deu; auto takes those of the
locale. With --orientation auto pages whose text lies on its side or upside
down are shown turned, by the page's /Rotate. A page without words, or one that
takes longer than --timeout seconds, is kept without text and named, and the
exit status is 1.

--deskew straightens tilted pages and --clean removes specks; both change
pixels, and the pages are named. --skip-blank leaves out pages with at most 0.05
percent of ink, and names each.
)";

}  // namespace sorrelin::tool

#endif  // TOOLS_OCR_OCR_OPTIONS_H_
