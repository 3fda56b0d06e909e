// The frame of an hOCR document, around the page that the engine gives.
#include <siblings/averna/averna.h>
#include <siblings/averna/page_engine.h>
#include <siblings/averna/recognizer.h>

#include <utility>

namespace sorrelin::averna {
namespace {

constexpr char kHead[] =
    "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Transitional//EN\" "
    "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-transitional.dtd\">\n"
    "<html xmlns=\"http://www.w3.org/1999/xhtml\">\n"
    "<head>\n"
    "<title></title>\n"
    "<meta name='ocr-system' content='averna'/>\n"
    "<meta name='ocr-capabilities' content='ocr_page ocr_carea ocr_par ocr_line ocrx_word'/>\n"
    "</head>\n"
    "<body>\n";
constexpr char kTail[] = "</body>\n</html>\n";
constexpr AVERNA_PAGE kUsualPage = {tesseract::PSM_AUTO, 0, nullptr, nullptr};

}  // namespace

int RecognizeHocr(PixPtr pix, std::string const& languages, std::string& hocr) {
  PageEngine engine;
  std::string missing;
  if (engine.Open(languages, missing) != AVERNA_OK) return AVERNA_NO_LANGUAGE;
  int const recognized = engine.Recognize(std::move(pix), kUsualPage);
  if (recognized != AVERNA_OK) return recognized;
  std::string page;
  int const result = engine.GetResult(AVERNA_HOCR, 0, page);
  if (result == AVERNA_OK) hocr = kHead + page + kTail;
  return result;
}

}  // namespace sorrelin::averna
