// hOCR texts. The input is UTF-8, or UTF-16 units after a first byte of 0xFF.
#include <sorrelin/ocr/hocr.h>
#include <sorrelin/platform/wide_string.h>

#include "fuzz/fuzz_input.h"

namespace {

sorrelin::WideString TextOf(fuzz::Data data) {
  if (data.empty() || data[0] != 0xFF)
    return sorrelin::ToWide(std::string(fuzz::TextOf(data)).c_str());
  sorrelin::WideString text;
  for (size_t i = 1; i + 1 < data.size(); i += 2) {
    text += static_cast<WCHAR>(data[i] | data[i + 1] << 8);
  }
  return text;
}

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  sorrelin::WideString const text = TextOf({bytes, size});
  // On the heap, with nothing after its NUL.
  std::unique_ptr<WCHAR[]> const copy(new WCHAR[text.size() + 1]);
  std::copy(text.begin(), text.end(), copy.get());
  copy[text.size()] = 0;
  sorrelin::HocrDocument document;
  sorrelin::ParseHocr(document, copy.get());
  return 0;
}
