// An OCR engine with results set by the test. Built with either entry point left out, too.
#include <sorrelin/ocr/engine.h>
#include <tests/ocr/mocks/mock_engine.h>

#define MOCK_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

test::MockEngineCall* current_call = nullptr;

}  // namespace

#if !defined(MOCK_WITHOUT_RECOGNIZE)
MOCK_EXPORT int OCRDIBExW(HDIB dib, WCHAR** text, int64_t option, int32_t zero, int32_t one,
                          int32_t last_zero) {
  current_call = reinterpret_cast<test::MockEngineCall*>(static_cast<intptr_t>(option));
  ++current_call->calls;
  current_call->dib = dib;
  current_call->text_before = *text;
  current_call->constants = {zero, one, last_zero};
  if (current_call->gives_text) *text = current_call->text.data();
  return current_call->result;
}
#endif

#if !defined(MOCK_WITHOUT_FREE)
MOCK_EXPORT int AvernaFreeTextW(WCHAR* text) {
  if (text == current_call->text.data()) ++current_call->freed;
  return 0;
}
#endif
