// Loading and calling the OCR engine.
#include <sorrelin/image/codecs/sibling_library.h>
#include <sorrelin/ocr/engine_binding.h>
#include <sorrelin/platform/codes.h>
#include <sorrelin/platform/module.h>

#include <algorithm>
#include <cstdlib>
#include <string>

namespace sorrelin {
namespace {

// A copy with its terminator, or null when memory is short.
WCHAR* DuplicateText(WCHAR const* text) {
  size_t const units = std::char_traits<WCHAR>::length(text) + 1;
  auto* const copy = static_cast<WCHAR*>(std::calloc(units, sizeof(WCHAR)));
  if (copy != nullptr) std::copy_n(text, units, copy);
  return copy;
}

// The engine's own text, or null.
WCHAR* AskEngine(OcrEngineBinding const& binding, HDIB dib, int64_t option) {
  WCHAR* text = nullptr;
  if (binding.recognize == nullptr || binding.free_text == nullptr) return nullptr;
  // Kept: a text that comes with a failure is not released; it is the engine's to look after.
  return binding.recognize(dib, &text, option, 0, 1, 0) == 0 ? text : nullptr;
}

}  // namespace

int EnsureOcrEngine(OcrEngineBinding& binding, WCHAR const* library, DWORD& error) {
  if (binding.module != nullptr) return 1;
  binding.module = library != nullptr ? LoadSibling(library) : nullptr;
  if (binding.module == nullptr) {
    error = PDF_ERROR_OCR_LIBRARY;
    return 0;
  }
  binding.recognize = EntryPoint<OCRDIBExWFunction>(binding.module, "OCRDIBExW");
  binding.free_text = EntryPoint<AvernaFreeTextWFunction>(binding.module, "AvernaFreeTextW");
  if (binding.recognize != nullptr && binding.free_text != nullptr) return 1;
  // Kept: the module's handle stays, so a later call reports a ready engine; callers see
  // PDF_ERROR_OCR_FUNCTIONS once. Its entry points are gone with the library.
  FreeLibrary(binding.module);
  binding.recognize = nullptr;
  binding.free_text = nullptr;
  error = PDF_ERROR_OCR_FUNCTIONS;
  return 0;
}

WCHAR* RecognizeDIB(OcrEngineBinding& binding, HDIB dib, WCHAR const* library, int64_t option,
                    int64_t, DWORD& error) {
  if (dib == nullptr) {
    error = PDF_ERROR_NULL_POINTER;
    return nullptr;
  }
  if (EnsureOcrEngine(binding, library, error) == 0) return nullptr;
  WCHAR* const text = AskEngine(binding, dib, option);
  if (text == nullptr) {
    error = PDF_ERROR_OCR;
    return nullptr;
  }
  WCHAR* const copy = DuplicateText(text);
  binding.free_text(text);
  if (copy == nullptr) error = PDF_ERROR_MEMORY;
  return copy;
}

}  // namespace sorrelin
