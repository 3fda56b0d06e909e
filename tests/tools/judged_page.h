// Pictures of handmade pages, judged and decoded in memory.
#ifndef TESTS_TOOLS_JUDGED_PAGE_H_
#define TESTS_TOOLS_JUDGED_PAGE_H_

#include <cstdio>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>

#include "tests/support/page_document.h"
#include "tools/extract/page/page_judge.h"

namespace sorrelin::tool {

// Rows as hexadecimal text.
struct Pixels : PictureSink {
  bool Begin(PictureForm const& given) override {
    form = given;
    return true;
  }
  bool Row(std::span<BYTE const> row) override {
    for (BYTE const byte : row) {
      char digits[3];
      std::snprintf(digits, sizeof digits, "%02x", byte);
      hex += digits;
    }
    hex += ' ';
    return true;
  }
  PictureForm form;
  std::string hex;
};

struct Outcome {
  PageFacts facts;
  Pixels pixels;
  std::string problem;
};

inline std::unique_ptr<QpdfDocument> Open(test::PdfBuilder pdf) {
  pdf.Classic();
  test::Bytes const bytes = pdf.Document();
  std::string problem;
  auto document = QpdfDocument::OpenMemory({bytes.begin(), bytes.end()}, problem);
  if (document == nullptr) throw std::runtime_error(problem);
  return document;
}

inline Outcome ReadPage(test::PdfBuilder const& pdf) {
  auto const document = Open(pdf);
  Outcome outcome;
  outcome.facts = JudgePage(*document, 0);
  outcome.problem = outcome.facts.problem;
  if (!outcome.problem.empty()) return outcome;
  PagePicture const picture = outcome.facts.whole[0];
  DecodePagePicture(picture, picture.orientation, outcome.pixels, outcome.problem);
  return outcome;
}

// A picture of 2 x 2 samples of 8 bits.
inline Outcome ReadGrey(std::string const& keys, std::string const& data) {
  return ReadPage(test::OnePage{
      .image = "/Subtype/Image /Width 2 /Height 2 /BitsPerComponent 8 " + keys, .data = data}
                      .Build());
}

inline std::string const kFourBytes = "\x10\x20\x30\x40";

}  // namespace sorrelin::tool

#endif  // TESTS_TOOLS_JUDGED_PAGE_H_
