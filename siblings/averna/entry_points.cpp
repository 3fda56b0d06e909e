// The entry points of Averna: checks of what callers hand in, and the text that they get.
#include <siblings/averna/averna.h>
#include <siblings/averna/bitmap_pix.h>
#include <siblings/averna/recognizer.h>
#include <sorrelin/platform/text.h>

#include <cstdlib>
#include <exception>
#include <limits>
#include <new>
#include <string>

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
  PixPtr const pix = PixFromDib(dib);
  if (pix == nullptr) return AVERNA_BAD_BITMAP;
  std::string hocr;
  int const result = RecognizeHocr(pix.get(), languages, hocr);
  if (result != AVERNA_OK) return result;
  text = WideCopy(hocr);
  return text != nullptr ? AVERNA_OK : AVERNA_NO_MEMORY;
}

}  // namespace
}  // namespace sorrelin::averna

int OCRDIBExW(HDIB hDib, WCHAR** ppText, int64_t nLanguages, int32_t, int32_t, int32_t) {
  if (ppText == nullptr) return AVERNA_BAD_ARGUMENT;
  *ppText = nullptr;
  auto const* const languages =
      nLanguages == 0 ? "eng" : reinterpret_cast<char const*>(static_cast<intptr_t>(nLanguages));
  if (hDib == nullptr || *languages == '\0') return AVERNA_BAD_ARGUMENT;
  try {
    return sorrelin::averna::Recognize(hDib, *ppText, languages);
  } catch (std::bad_alloc const&) {
    return AVERNA_NO_MEMORY;
  } catch (std::exception const&) {
    return AVERNA_FAILED;
  }
}

int AvernaFreeTextW(WCHAR* szText) {
  std::free(szText);
  return 0;
}
