// One recognition by Tesseract.
#ifndef SIBLINGS_AVERNA_RECOGNIZER_H_
#define SIBLINGS_AVERNA_RECOGNIZER_H_

#include <allheaders.h>

#include <string>

namespace sorrelin::averna {

// The words of a picture as a whole XHTML document in hOCR, UTF-8. `languages` is a list such as
// "eng+deu". An AVERNA_* code; `hocr` is set on success. Calls from several threads take turns, as
// the engine's settings are global.
int RecognizeHocr(PIX* pix, std::string const& languages, std::string& hocr);

}  // namespace sorrelin::averna

#endif  // SIBLINGS_AVERNA_RECOGNIZER_H_
