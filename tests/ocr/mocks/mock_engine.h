// What a mock OCR engine does in one call and what it saw. A test hands its address over as the
// engine's option.
#ifndef TESTS_OCR_MOCKS_MOCK_ENGINE_H_
#define TESTS_OCR_MOCKS_MOCK_ENGINE_H_

#include <sorrelin/platform/types.h>

#include <array>
#include <cstdint>
#include <string>

namespace test {

struct MockEngineCall {
  // What the engine does.
  int result = 0;
  bool gives_text = true;
  std::basic_string<WCHAR> text;

  // What it saw.
  int calls = 0;
  HDIB dib = nullptr;
  WCHAR* text_before = nullptr;  // in the text argument when the call came
  std::array<int32_t, 3> constants{};
  int freed = 0;  // AvernaFreeTextW with this text
};

}  // namespace test

#endif  // TESTS_OCR_MOCKS_MOCK_ENGINE_H_
