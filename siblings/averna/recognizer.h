// One recognition from a picture to a document in hOCR.
#ifndef SIBLINGS_AVERNA_RECOGNIZER_H_
#define SIBLINGS_AVERNA_RECOGNIZER_H_

#include <siblings/averna/bitmap_pix.h>

#include <string>

namespace sorrelin::averna {

// The words of a picture as a whole XHTML document in hOCR, UTF-8. `languages` is a list such as
// "eng+deu". An AVERNA_* code; `hocr` is set on success.
int RecognizeHocr(PixPtr pix, std::string const& languages, std::string& hocr);

}  // namespace sorrelin::averna

#endif  // SIBLINGS_AVERNA_RECOGNIZER_H_
