// The engine is found and loaded by the library's binding; its optional entry points are looked up
// in the same module.
#include "tools/ocr/ocr_engine.h"

#include <sorrelin/ocr/engine_binding.h>
#include <sorrelin/platform/module.h>

#include <array>
#include <utility>

#include "tools/cli/entry_point.h"
#include "tools/formats/image_source.h"
#include "tools/ocr/languages.h"

namespace sorrelin::tool {

struct OcrEntries {
  decltype(&AvernaOpen) open = nullptr;
  decltype(&AvernaClose) close = nullptr;
  decltype(&AvernaRecognize) recognize = nullptr;
  decltype(&AvernaGetResult) get_result = nullptr;
  decltype(&AvernaFreeData) free_data = nullptr;
  decltype(&AvernaFindOrientation) find_orientation = nullptr;
  bool are_complete = false;
};

namespace {

constexpr WCHAR const* kEngine = SORRELIN_TEXT("Averna.dll");
constexpr int kMillisecondsPerSecond = 1000;
constexpr int kQuarter = 90;
constexpr uint64_t kMaxPixels = uint64_t{1} << 28;  // the engine spreads them to bytes
// Below it, a picture of few or odd letters is as likely to be turned the wrong way.
constexpr float kSureOfOrientation = 2.0F;

OcrEntries LoadEntries() {
  OcrEntries entries;
  OcrEngineBinding binding;
  DWORD error = 0;
  if (EnsureOcrEngine(binding, kEngine, error) == 0) return entries;
  HMODULE const module = binding.module;
  entries.are_complete = FindEntry(module, "AvernaOpen", entries.open) &&
                         FindEntry(module, "AvernaClose", entries.close) &&
                         FindEntry(module, "AvernaRecognize", entries.recognize) &&
                         FindEntry(module, "AvernaGetResult", entries.get_result) &&
                         FindEntry(module, "AvernaFreeData", entries.free_data) &&
                         FindEntry(module, "AvernaFindOrientation", entries.find_orientation);
  return entries;
}

// Loaded once in a process.
OcrEntries const& Entries() {
  static OcrEntries const entries = LoadEntries();
  return entries;
}

std::string ProblemOf(int code) {
  switch (code) {
    case AVERNA_BAD_BITMAP:
      return kTooLargeText;
    case AVERNA_NO_MEMORY:
      return kMemoryText;
    case AVERNA_STOPPED:
      return kTimeoutText;
    case AVERNA_NO_FONT:
      return "cannot get a text layer: pdf.ttf is not beside Tesseract's language data (set "
             "TESSDATA_PREFIX to the folder that has both)";
    default:
      return "cannot be recognised: Tesseract failed (see that it works on this picture)";
  }
}

std::string OpenProblem(int code, std::string const& language) {
  if (code == AVERNA_NO_LANGUAGE) return MissingLanguage(language);
  if (code == AVERNA_NO_MEMORY) return kMemoryText;
  return DamagedLanguage(language);
}

}  // namespace

bool FitsEngine(uint64_t width, uint64_t height, std::string& problem) {
  if (width * height <= kMaxPixels) return true;
  problem = "is too large to be recognised: " + std::to_string(width) + " x " +
            std::to_string(height) + " pixels (scale it down)";
  return false;
}

std::unique_ptr<OcrEngine> OcrEngine::Open(std::string const& languages, std::string& problem) {
  OcrEntries const& entries = Entries();
  if (!entries.are_complete) return problem = MissingEngine(), nullptr;
  AVERNA_ENGINE* engine = nullptr;
  std::array<char, 64> missing{};
  int const code = entries.open(languages.c_str(), &engine, missing.data(), missing.size());
  if (code != AVERNA_OK) return problem = OpenProblem(code, missing.data()), nullptr;
  return std::unique_ptr<OcrEngine>(new OcrEngine(entries, engine));
}

OcrEngine::~OcrEngine() { entries_.close(engine_); }

bool OcrEngine::Recognize(Picture picture, int segmentation, int timeout_seconds,
                          std::string& problem) {
  OwnedBlock const dib = PackedDib(picture.pix.get(), picture.dpi);
  picture.pix.reset();
  if (!dib.IsValid()) return problem = kMemoryText, false;
  AVERNA_PAGE const page = {segmentation, timeout_seconds * kMillisecondsPerSecond, nullptr,
                            nullptr};
  int const code = entries_.recognize(engine_, dib.get(), &page);
  if (code != AVERNA_OK) problem = ProblemOf(code);
  return code == AVERNA_OK;
}

std::optional<std::string> OcrEngine::Result(int format, int number, std::string& problem) {
  char* data = nullptr;
  uint64_t size = 0;
  int const code = entries_.get_result(engine_, format, number, &data, &size);
  if (code != AVERNA_OK) return problem = ProblemOf(code), std::nullopt;
  std::unique_ptr<char, decltype(entries_.free_data)> const owner(data, entries_.free_data);
  return std::string(data, static_cast<size_t>(size));
}

int OcrEngine::QuarterTurns(Picture const& picture) {
  OwnedBlock const dib = PackedDib(picture.pix.get(), picture.dpi);
  if (!dib.IsValid()) return 0;
  int32_t degrees = 0;
  float confidence = 0;
  int const code = entries_.find_orientation(engine_, dib.get(), &degrees, &confidence);
  return code == AVERNA_OK && confidence >= kSureOfOrientation ? degrees / kQuarter : 0;
}

}  // namespace sorrelin::tool
