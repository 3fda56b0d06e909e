// The engine's hOCR to words, words to JSON or text, and the frames of other forms.
#include "tools/ocr/recognized_words.h"

#include <siblings/averna/averna.h>

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

#include "tools/cli/json.h"
#include "tools/cli/text.h"

namespace sorrelin::tool {
namespace {

constexpr char kHocrHead[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Transitional//EN\" "
    "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-transitional.dtd\">\n"
    "<html xmlns=\"http://www.w3.org/1999/xhtml\" xml:lang=\"en\" lang=\"en\">\n"
    "<head>\n"
    "<title></title>\n"
    "<meta http-equiv=\"Content-Type\" content=\"text/html;charset=utf-8\"/>\n"
    "<meta name='ocr-system' content='averna'/>\n"
    "<meta name='ocr-capabilities' content='ocr_page ocr_carea ocr_par ocr_line ocrx_word'/>\n"
    "</head>\n"
    "<body>\n";
constexpr char kHocrTail[] = "</body>\n</html>\n";
constexpr char kTsvHead[] =
    "level\tpage_num\tblock_num\tpar_num\tline_num\tword_"
    "num\tleft\ttop\twidth\theight\tconf\ttext\n";
constexpr char kAltoHead[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<alto xmlns=\"http://www.loc.gov/standards/alto/ns-v3#\" "
    "xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
    "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
    "xsi:schemaLocation=\"http://www.loc.gov/standards/alto/ns-v3# "
    "http://www.loc.gov/alto/v3/alto-3-0.xsd\">\n"
    "<Description>\n"
    "<MeasurementUnit>pixel</MeasurementUnit>\n"
    "</Description>\n"
    "<Layout>\n";
constexpr char kAltoTail[] = "</Layout>\n</alto>\n";

bool StartsLine(HocrWord const& word, HocrWord const& before) {
  return word.left < before.left || word.top >= before.bottom || word.bottom <= before.top;
}

// The pixels from `middle` - `half` to `middle` + `half`, within a side of the picture.
std::pair<int32_t, int32_t> Pixels(double middle, double half, double side) {
  auto const within = [side](double at) {
    return static_cast<int32_t>(std::lround(std::clamp(at, 0.0, side)));
  };
  return {within(middle - half), within(middle + half)};
}

// Takes a word's box from the picture that was recognised, of this size, to the one that is shown.
void PutBack(HocrWord& word, SheetSize const& recognized, Matrix const& place,
             SheetSize const& shown) {
  Matrix const box = Matrix{(word.right - word.left) / recognized.width,
                            0,
                            0,
                            (word.bottom - word.top) / recognized.height,
                            word.left / recognized.width,
                            1 - word.bottom / recognized.height}
                         .Then(place);
  double const across = (std::abs(box.a) + std::abs(box.c)) / 2;
  double const down = (std::abs(box.b) + std::abs(box.d)) / 2;
  std::tie(word.left, word.right) = Pixels(box.e + (box.a + box.c) / 2, across, shown.width);
  std::tie(word.top, word.bottom) = Pixels(box.f + (box.b + box.d) / 2, down, shown.height);
}

}  // namespace

std::optional<std::vector<HocrWord>> WordsOfPage(std::string const& hocr, Matrix const& place,
                                                 SheetSize const& shown) {
  auto const text = Utf16(kHocrHead + hocr + kHocrTail);
  HocrDocument document;
  if (!text || ParseHocr(document, text->c_str()) == 0) return std::nullopt;
  SheetSize const recognized = {std::max(document.width, 1) * 1.0,
                                std::max(document.height, 1) * 1.0};
  for (HocrWord& word : document.words) PutBack(word, recognized, place, shown);
  return std::move(document.words);
}

std::string WordJson(std::string const& file, int page, HocrWord const& word) {
  return "{\"file\": " + JsonString(file) + ", \"page\": " + std::to_string(page) +
         ", \"text\": " + JsonString(Utf8(word.text)) + ", \"box\": [" + std::to_string(word.left) +
         ", " + std::to_string(word.top) + ", " + std::to_string(word.right) + ", " +
         std::to_string(word.bottom) + "], \"font_size\": " + std::to_string(word.font_size) + "}";
}

std::string WordText(std::vector<HocrWord> const& words) {
  std::string text;
  HocrWord const* before = nullptr;
  for (HocrWord const& word : words) {
    if (before != nullptr) text += StartsLine(word, *before) ? '\n' : ' ';
    text += Utf8(word.text);
    before = &word;
  }
  return before != nullptr ? text + "\n" : text;
}

std::optional<WordForm> WordFormOfName(std::string_view name) {
  constexpr std::pair<std::string_view, WordForm> kForms[] = {{"json", WordForm::kJson},
                                                              {"text", WordForm::kText},
                                                              {"hocr", WordForm::kHocr},
                                                              {"tsv", WordForm::kTsv},
                                                              {"alto", WordForm::kAlto}};
  for (auto const& [known, form] : kForms) {
    if (known == name) return form;
  }
  return std::nullopt;
}

int EngineFormOf(WordForm form) {
  if (form == WordForm::kTsv) return AVERNA_TSV;
  return form == WordForm::kAlto ? AVERNA_ALTO : AVERNA_HOCR;
}

char const* HeadOf(WordForm form) {
  switch (form) {
    case WordForm::kHocr:
      return kHocrHead;
    case WordForm::kTsv:
      return kTsvHead;
    case WordForm::kAlto:
      return kAltoHead;
    default:
      return "";
  }
}

char const* TailOf(WordForm form) {
  if (form == WordForm::kAlto) return kAltoTail;
  return form == WordForm::kHocr ? kHocrTail : "";
}

}  // namespace sorrelin::tool
