/* The contract between the library and the sibling library that holds the OCR engine: the entry
 * points, found by name at run time. Whoever writes an engine exports these names with C linkage.
 * Valid C11 and C++. */
#ifndef SORRELIN_OCR_ENGINE_H_
#define SORRELIN_OCR_ENGINE_H_

#include <sorrelin/platform/types.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Recognises a bitmap and stores its text, zero-terminated hOCR that belongs to the engine, in
 * `*ppText`. `nOption` is the caller's, whose meaning is the engine's own; the last three arguments
 * are always 0, 1 and 0. 0 for success. */
typedef int (*OCRDIBExWFunction)(HDIB hDib, WCHAR** ppText, int64_t nOption, int32_t nZero,
                                 int32_t nOne, int32_t nLastZero);

/* Releases a text of OCRDIBExW. The result is not looked at. */
typedef int (*AvernaFreeTextWFunction)(WCHAR* szText);

#ifdef __cplusplus
}
#endif

#endif /* SORRELIN_OCR_ENGINE_H_ */
