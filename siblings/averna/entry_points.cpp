// The entry points of Averna: checks of what callers pass, and the results that they get.
#include <siblings/averna/averna.h>
#include <siblings/averna/bitmap_pix.h>
#include <siblings/averna/page_engine.h>
#include <siblings/averna/recognizer.h>
#include <sorrelin/platform/text.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <utility>

struct AVERNA_ENGINE {
  sorrelin::averna::PageEngine engine;
};

namespace sorrelin::averna {
namespace {

// A new zero-terminated text (free()), or null when memory is short.
WCHAR* WideCopy(std::string const& utf8) {
  if (utf8.size() >= static_cast<size_t>(std::numeric_limits<int>::max())) return nullptr;
  int const units = MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), -1, nullptr, 0);
  if (units == 0) return nullptr;
  auto* const text = static_cast<WCHAR*>(std::calloc(static_cast<size_t>(units), sizeof(WCHAR)));
  if (text != nullptr) MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), -1, text, units);
  return text;
}

int Recognize(HDIB dib, WCHAR*& text, char const* languages) {
  PixPtr pix = PixFromDib(dib);
  if (pix == nullptr) return AVERNA_BAD_BITMAP;
  std::string hocr;
  int const result = RecognizeHocr(std::move(pix), languages, hocr);
  if (result != AVERNA_OK) return result;
  text = WideCopy(hocr);
  return text != nullptr ? AVERNA_OK : AVERNA_NO_MEMORY;
}

// Does `work`, which gives an AVERNA_* code, and turns what it throws into one.
template <typename Work>
int Guarded(Work work) {
  try {
    return work();
  } catch (std::bad_alloc const&) {
    return AVERNA_NO_MEMORY;
  } catch (std::exception const&) {
    return AVERNA_FAILED;
  }
}

void CopyName(std::string const& name, char* room, uint32_t size) {
  if (room == nullptr || size == 0) return;
  size_t const length = std::min<size_t>(name.size(), size - 1);
  std::memcpy(room, name.data(), length);
  room[length] = '\0';
}

int Open(char const* languages, AVERNA_ENGINE*& engine, char* missing, uint32_t room) {
  auto opened = std::make_unique<AVERNA_ENGINE>();
  std::string name;
  int const result = opened->engine.Open(languages, name);
  CopyName(name, missing, room);
  if (result == AVERNA_OK) engine = opened.release();
  return result;
}

bool IsSegmentation(int32_t mode) {
  return mode >= tesseract::PSM_AUTO && mode <= tesseract::PSM_RAW_LINE;
}

int CopyData(std::string const& result, char*& data, uint64_t& size) {
  data = static_cast<char*>(std::malloc(result.size() + 1));
  if (data == nullptr) return AVERNA_NO_MEMORY;
  std::memcpy(data, result.c_str(), result.size() + 1);
  size = result.size();
  return AVERNA_OK;
}

}  // namespace
}  // namespace sorrelin::averna

int OCRDIBExW(HDIB hDib, WCHAR** ppText, int64_t nLanguages, int32_t, int32_t, int32_t) {
  if (ppText == nullptr) return AVERNA_BAD_ARGUMENT;
  *ppText = nullptr;
  auto const* const languages =
      nLanguages == 0 ? "eng" : reinterpret_cast<char const*>(static_cast<intptr_t>(nLanguages));
  if (hDib == nullptr || *languages == '\0') return AVERNA_BAD_ARGUMENT;
  return sorrelin::averna::Guarded(
      [&] { return sorrelin::averna::Recognize(hDib, *ppText, languages); });
}

int AvernaFreeTextW(WCHAR* szText) {
  std::free(szText);
  return 0;
}

int AvernaOpen(char const* languages, AVERNA_ENGINE** engine, char* missing, uint32_t room) {
  if (engine == nullptr) return AVERNA_BAD_ARGUMENT;
  *engine = nullptr;
  if (languages == nullptr || *languages == '\0') return AVERNA_BAD_ARGUMENT;
  return sorrelin::averna::Guarded(
      [&] { return sorrelin::averna::Open(languages, *engine, missing, room); });
}

int AvernaClose(AVERNA_ENGINE* engine) {
  delete engine;
  return 0;
}

int AvernaRecognize(AVERNA_ENGINE* engine, HDIB dib, AVERNA_PAGE const* page) {
  if (engine == nullptr || dib == nullptr || page == nullptr) return AVERNA_BAD_ARGUMENT;
  if (!sorrelin::averna::IsSegmentation(page->segmentation)) return AVERNA_BAD_ARGUMENT;
  return sorrelin::averna::Guarded([&] {
    auto pix = sorrelin::averna::PixFromDib(dib);
    return pix != nullptr ? engine->engine.Recognize(std::move(pix), *page) : AVERNA_BAD_BITMAP;
  });
}

int AvernaGetResult(AVERNA_ENGINE* engine, int32_t format, int32_t number, char** data,
                    uint64_t* size) {
  if (engine == nullptr || data == nullptr || size == nullptr) return AVERNA_BAD_ARGUMENT;
  *data = nullptr;
  return sorrelin::averna::Guarded([&] {
    std::string result;
    int const code = engine->engine.GetResult(format, number, result);
    return code == AVERNA_OK ? sorrelin::averna::CopyData(result, *data, *size) : code;
  });
}

int AvernaFreeData(char* data) {
  std::free(data);
  return 0;
}

int AvernaFindOrientation(AVERNA_ENGINE* engine, HDIB dib, int32_t* degrees, float* confidence) {
  if (engine == nullptr || dib == nullptr || degrees == nullptr || confidence == nullptr) {
    return AVERNA_BAD_ARGUMENT;
  }
  return sorrelin::averna::Guarded([&] {
    auto pix = sorrelin::averna::PixFromDib(dib);
    if (pix == nullptr) return int{AVERNA_BAD_BITMAP};
    return engine->engine.FindOrientation(std::move(pix), *degrees, *confidence);
  });
}
