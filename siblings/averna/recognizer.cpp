// Calls of Tesseract, which is kept from writing to standard error.
#include <siblings/averna/averna.h>
#include <siblings/averna/recognizer.h>
#include <tesseract/baseapi.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <vector>

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

// Leptonica's messages are off while this lives. One at a time.
class QuietLeptonica {
 public:
  QuietLeptonica() : severity_(setMsgSeverity(L_SEVERITY_NONE)) {}
  ~QuietLeptonica() { setMsgSeverity(severity_); }
  QuietLeptonica(QuietLeptonica const&) = delete;
  QuietLeptonica& operator=(QuietLeptonica const&) = delete;

 private:
  l_int32 severity_;
};

// The engine goes on without a language that it lacks, so what it has loaded is compared.
bool HasLanguages(tesseract::TessBaseAPI const& engine, std::string const& languages) {
  std::vector<std::string> loaded;
  engine.GetLoadedLanguagesAsVector(&loaded);
  for (size_t start = 0; start <= languages.size();) {
    size_t const end = std::min(languages.find('+', start), languages.size());
    std::string const language = languages.substr(start, end - start);
    bool const wanted = !language.empty() && language[0] != '~';
    if (wanted && std::find(loaded.begin(), loaded.end(), language) == loaded.end()) return false;
    start = end + 1;
  }
  return true;
}

bool Start(tesseract::TessBaseAPI& engine, std::string const& languages) {
  // Before Init, which writes already.
  engine.SetVariable("debug_file", "/dev/null");
  if (engine.Init(nullptr, languages.c_str()) != 0) return false;
  engine.SetVariable("hocr_font_info", "1");
  engine.SetPageSegMode(tesseract::PSM_AUTO);
  return HasLanguages(engine, languages);
}

}  // namespace

int RecognizeHocr(PIX* pix, std::string const& languages, std::string& hocr) {
  static std::mutex turn;
  std::lock_guard const guard(turn);
  QuietLeptonica const quiet;
  tesseract::TessBaseAPI engine;
  if (!Start(engine, languages)) return AVERNA_NO_LANGUAGE;
  engine.SetImage(pix);
  if (engine.Recognize(nullptr) != 0) return AVERNA_FAILED;
  std::unique_ptr<char[]> const page(engine.GetHOCRText(0));
  if (page == nullptr) return AVERNA_FAILED;
  hocr = std::string(kHead) + page.get() + kTail;
  return AVERNA_OK;
}

}  // namespace sorrelin::averna
