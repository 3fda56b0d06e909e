// Bitmaps to the engine, its hOCR text to words, words to JSON or text.
#include "tools/ocr/recognized_words.h"

#include <sorrelin/frame/pdf.h>

#include <cstdlib>
#include <memory>

#include "tools/cli/json.h"
#include "tools/cli/text.h"
#include "tools/formats/image_source.h"

namespace sorrelin::tool {
namespace {

constexpr WCHAR const* kEngine = u"Averna.dll";

struct Free {
  void operator()(WCHAR* text) const { std::free(text); }
};

bool StartsLine(HocrWord const& word, HocrWord const& before) {
  return word.left < before.left || word.top >= before.bottom || word.bottom <= before.top;
}

}  // namespace

std::optional<std::vector<HocrWord>> WordReader::Read(Picture picture, std::string& problem) {
  OwnedBlock const dib = PackedDib(picture.pix.get(), picture.dpi);
  picture.pix.reset();
  if (!dib.IsValid()) return problem = kMemoryText, std::nullopt;
  auto const option = static_cast<int64_t>(reinterpret_cast<intptr_t>(language_.c_str()));
  DWORD error = PDF_ERROR_NONE;
  std::unique_ptr<WCHAR, Free> const hocr(
      RecognizeDIB(engine_, dib.get(), kEngine, option, 0, error));
  HocrDocument document;
  if (hocr != nullptr && ParseHocr(document, hocr.get()) != 0) return std::move(document.words);
  problem = Reason(hocr != nullptr ? DWORD{PDF_ERROR_HOCR} : error);
  return std::nullopt;
}

std::string WordReader::Reason(DWORD error) const {
  switch (error) {
    case PDF_ERROR_OCR_LIBRARY:
    case PDF_ERROR_OCR_FUNCTIONS:
      return "the OCR engine libaverna.so is missing or unusable: install the package "
             "sorrelin-ocr";
    case PDF_ERROR_MEMORY:
      return kMemoryText;
    case PDF_ERROR_HOCR:
      return "the OCR engine's answer cannot be read (see that Tesseract works)";
    default:
      return "cannot be recognised: it is too large, or Tesseract's data for \"" + language_ +
             "\" are not installed (install them, or scale it down)";
  }
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

}  // namespace sorrelin::tool
