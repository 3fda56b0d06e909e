// The page of invisible text that Tesseract's own renderer makes.
#ifndef SIBLINGS_AVERNA_TEXT_LAYER_H_
#define SIBLINGS_AVERNA_TEXT_LAYER_H_

#include <tesseract/baseapi.h>

#include <string>

namespace sorrelin::averna {

// The words that `api` has recognised as a document of one page without a picture. An AVERNA_*
// code; `pdf` is set on success.
int RenderTextLayer(tesseract::TessBaseAPI& api, std::string& pdf);

}  // namespace sorrelin::averna

#endif  // SIBLINGS_AVERNA_TEXT_LAYER_H_
