// Calls of Tesseract, which is kept from writing to standard error.
#include <siblings/averna/engine_system.h>
#include <siblings/averna/page_engine.h>
#include <siblings/averna/text_layer.h>
#include <tesseract/ocrclass.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

namespace sorrelin::averna {
namespace {

constexpr int kFullTurn = 360;

// One call at a time; Leptonica's messages are off meanwhile. The engine keeps to one thread: its
// own gain little, and cost the processes that recognise other pages far more.
class Turn {
 public:
  Turn() : lock_(Mutex()), severity_(setMsgSeverity(L_SEVERITY_NONE)), levels_(ParallelLevels()) {
    SetParallelLevels(0);
  }
  ~Turn() {
    SetParallelLevels(levels_);
    setMsgSeverity(severity_);
  }
  Turn(Turn const&) = delete;
  Turn& operator=(Turn const&) = delete;

 private:
  static std::mutex& Mutex() {
    static std::mutex mutex;
    return mutex;
  }

  std::lock_guard<std::mutex> lock_;
  l_int32 severity_;
  int levels_;
};

// The languages of a list; those with a tilde are not wanted.
std::vector<std::string> WantedLanguages(std::string const& list) {
  std::vector<std::string> wanted;
  for (size_t start = 0; start <= list.size();) {
    size_t const end = std::min(list.find('+', start), list.size());
    if (end > start && list[start] != '~') wanted.push_back(list.substr(start, end - start));
    start = end + 1;
  }
  return wanted;
}

// The engine goes on without a language that it lacks, so what it has loaded is compared.
std::string FirstMissing(tesseract::TessBaseAPI const& api, std::string const& languages) {
  std::vector<std::string> loaded;
  api.GetLoadedLanguagesAsVector(&loaded);
  for (std::string const& language : WantedLanguages(languages)) {
    if (std::find(loaded.begin(), loaded.end(), language) == loaded.end()) return language;
  }
  return {};
}

bool HasData(tesseract::TessBaseAPI& api, std::string const& language) {
  char const* const folder = api.GetDatapath();
  std::error_code ignored;
  return folder != nullptr &&
         std::filesystem::exists(std::filesystem::path(folder) / (language + ".traineddata"),
                                 ignored);
}

// Says when the engine is to stop.
class Monitor {
 public:
  explicit Monitor(AVERNA_PAGE const& page) : page_(page) {
    description_.set_deadline_msecs(page.timeout_ms);
    description_.cancel = Cancelled;
    description_.cancel_this = this;
  }
  Monitor(Monitor const&) = delete;
  Monitor& operator=(Monitor const&) = delete;

  tesseract::ETEXT_DESC* description() { return &description_; }
  bool HasStopped() const { return cancelled_ || description_.deadline_exceeded(); }

 private:
  static bool Cancelled(void* self, int) {
    auto* const monitor = static_cast<Monitor*>(self);
    AVERNA_PAGE const& page = monitor->page_;
    monitor->cancelled_ = page.cancelled != nullptr && page.cancelled(page.context) != 0;
    return monitor->cancelled_;
  }

  AVERNA_PAGE const& page_;
  tesseract::ETEXT_DESC description_;
  bool cancelled_ = false;
};

}  // namespace

int PageEngine::Open(std::string const& languages, std::string& missing) {
  Turn const turn;
  // Before Init, which writes already.
  api_.SetVariable("debug_file", "/dev/null");
  std::string const folder = DataFolder();
  bool const loaded = api_.Init(folder.empty() ? nullptr : folder.c_str(), languages.c_str()) == 0;
  std::string const lacking = loaded ? FirstMissing(api_, languages) : std::string();
  if (loaded && lacking.empty()) {
    api_.SetVariable("hocr_font_info", "1");
    return AVERNA_OK;
  }
  for (std::string const& language : WantedLanguages(languages)) {
    if (HasData(api_, language)) continue;
    missing = language;
    return AVERNA_NO_LANGUAGE;
  }
  missing = lacking.empty() ? languages : lacking;
  return AVERNA_BAD_LANGUAGE;
}

int PageEngine::Recognize(PixPtr pix, AVERNA_PAGE const& page) {
  Turn const turn;
  recognized_ = false;
  api_.SetPageSegMode(static_cast<tesseract::PageSegMode>(page.segmentation));
  api_.SetImage(pix.get());
  pix.reset();
  Monitor monitor(page);
  int const failed = api_.Recognize(monitor.description());
  if (monitor.HasStopped()) return AVERNA_STOPPED;
  if (failed != 0) return AVERNA_FAILED;
  recognized_ = true;
  return AVERNA_OK;
}

int PageEngine::GetResult(int format, int number, std::string& data) {
  Turn const turn;
  if (!recognized_) return AVERNA_BAD_ARGUMENT;
  return format == AVERNA_PDF ? RenderTextLayer(api_, data) : GetText(format, number, data);
}

int PageEngine::GetText(int format, int number, std::string& data) {
  std::unique_ptr<char[]> text;
  switch (format) {
    case AVERNA_HOCR:
      text.reset(api_.GetHOCRText(number));
      break;
    case AVERNA_TSV:
      text.reset(api_.GetTSVText(number));
      break;
    case AVERNA_ALTO:
      text.reset(api_.GetAltoText(number));
      break;
    case AVERNA_TEXT:
      text.reset(api_.GetUTF8Text());
      break;
    default:
      return AVERNA_BAD_ARGUMENT;
  }
  if (text == nullptr) return AVERNA_FAILED;
  data = text.get();
  return AVERNA_OK;
}

int PageEngine::FindOrientation(PixPtr pix, int& degrees, float& confidence) {
  Turn const turn;
  recognized_ = false;
  degrees = 0;
  confidence = 0;
  api_.SetPageSegMode(tesseract::PSM_OSD_ONLY);
  api_.SetImage(pix.get());
  pix.reset();
  int lies = 0;
  char const* script = nullptr;
  float script_confidence = 0;
  if (api_.DetectOrientationScript(&lies, &confidence, &script, &script_confidence)) {
    degrees = (kFullTurn - lies) % kFullTurn;
  } else {
    confidence = 0;
  }
  return AVERNA_OK;
}

}  // namespace sorrelin::averna
