// A Tesseract engine that stays loaded from page to page.
#ifndef SIBLINGS_AVERNA_PAGE_ENGINE_H_
#define SIBLINGS_AVERNA_PAGE_ENGINE_H_

#include <siblings/averna/averna.h>
#include <siblings/averna/bitmap_pix.h>
#include <tesseract/baseapi.h>

#include <string>

namespace sorrelin::averna {

// Each function returns an AVERNA_* code and sets its results on success only. Calls from several
// threads take turns, as the engine's settings are global; one object is for one thread.
class PageEngine {
 public:
  // `languages` is a list such as "eng+deu". After AVERNA_NO_LANGUAGE, `missing` is the first
  // language without data.
  int Open(std::string const& languages, std::string& missing);

  int Recognize(PixPtr pix, AVERNA_PAGE const& page);

  // A form of what was last recognised; `number` counts pages from 0.
  int GetResult(int format, int number, std::string& data);

  // The clockwise turn that brings the text upright.
  int FindOrientation(PixPtr pix, int& degrees, float& confidence);

 private:
  int GetText(int format, int number, std::string& data);

  tesseract::TessBaseAPI api_;
  bool recognized_ = false;
};

}  // namespace sorrelin::averna

#endif  // SIBLINGS_AVERNA_PAGE_ENGINE_H_
