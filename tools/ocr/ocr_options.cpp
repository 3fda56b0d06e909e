// Parses languages and numbers of the command line and reports wrong ones.
#include "tools/ocr/ocr_options.h"

#include "tools/ocr/languages.h"

namespace sorrelin::tool {
namespace {

constexpr int kMaxTimeout = 86400;
constexpr int kLastSegmentation = 13;

std::string ParseLanguages(std::string const& option, std::string const& text) {
  if (text.empty()) throw UsageError(option, "is empty");
  return ResolvedLanguages(text);
}

bool ParseOrientation(std::string const& text) {
  if (text == "auto") return true;
  if (text == "keep") return false;
  throw UsageError("--orientation", "takes auto or keep, not " + text);
}

}  // namespace

void AddOcr(Verb& verb, OcrOptions& options) {
  verb.Option(
      "--ocr", "LANG", "Lay invisible text in this language on pages",
      [&options](std::string const& text) { options.languages = ParseLanguages("--ocr", text); });
}

void AddLanguage(Verb& verb, std::string& languages) {
  languages = "eng";
  verb.Option(
      "--language", "LANG", "Of the text, as Tesseract names it (eng)",
      [&languages](std::string const& text) { languages = ParseLanguages("--language", text); });
}

void AddRecognition(Verb& verb, OcrOptions& options) {
  verb.Option("--orientation", "KIND", "auto turns pages by their text, keep does not",
              [&options](std::string const& text) { options.turn = ParseOrientation(text); });
  verb.Number("--timeout", options.timeout, 0, kMaxTimeout, "Seconds for a page, 0: no end (300)");
}

void AddSegmentation(Verb& verb, int& segmentation) {
  verb.Number("--psm", segmentation, kUsualSegmentation, kLastSegmentation,
              "Tesseract's page segmentation mode (3)");
}

}  // namespace sorrelin::tool
