// The binding to an OCR engine in a sibling library: loaded on first use, never unloaded.
#ifndef SORRELIN_OCR_ENGINE_BINDING_H_
#define SORRELIN_OCR_ENGINE_BINDING_H_

#include <sorrelin/ocr/engine.h>
#include <sorrelin/platform/types.h>

#include <cstdint>

namespace sorrelin {

// A loaded engine, owned by the caller and for one thread. The module stays in the process when
// the binding goes.
struct OcrEngineBinding {
  HMODULE module = nullptr;
  OCRDIBExWFunction recognize = nullptr;
  AvernaFreeTextWFunction free_text = nullptr;
};

// Loads the engine from the sibling library `library`, beside the module or on the system's search
// path, unless the binding has one. 1; 0 with `error` set to PDF_ERROR_OCR_LIBRARY or, for an
// engine that lacks an entry point, PDF_ERROR_OCR_FUNCTIONS. `error` is untouched on success.
int EnsureOcrEngine(OcrEngineBinding& binding, WCHAR const* library, DWORD& error);

// The hOCR text of a bitmap, in a new zero-terminated string (free()). `option` goes to the engine;
// `unused` goes nowhere. Null with `error` set: PDF_ERROR_NULL_POINTER for a null bitmap, the codes
// of EnsureOcrEngine, PDF_ERROR_OCR if the engine fails or gives no text, PDF_ERROR_MEMORY.
WCHAR* RecognizeDIB(OcrEngineBinding& binding, HDIB dib, WCHAR const* library, int64_t option,
                    int64_t unused, DWORD& error);

}  // namespace sorrelin

#endif  // SORRELIN_OCR_ENGINE_BINDING_H_
