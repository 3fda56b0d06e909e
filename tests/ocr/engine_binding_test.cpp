// The binding to an OCR engine, against mock engines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/frame/pdf.h>
#include <sorrelin/ocr/engine_binding.h>
#include <sorrelin/platform/module.h>
#include <sorrelin/platform/wide_string.h>
#include <tests/ocr/mocks/mock_engine.h>
#include <tests/support/dib.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace {

using sorrelin::EnsureOcrEngine;
using sorrelin::OcrEngineBinding;
using sorrelin::RecognizeDIB;
using test::MockEngineCall;
using testing::ElementsAre;

constexpr DWORD kUntouched = 999;

struct FreeText {
  void operator()(WCHAR* text) const { std::free(text); }
};

struct Answer {
  std::unique_ptr<WCHAR, FreeText> text;
  DWORD error = kUntouched;
};

// Calls the binding with a script for the engine.
Answer Recognize(OcrEngineBinding& binding, MockEngineCall& call, HDIB dib,
                 WCHAR const* library = SORRELIN_TEXT("MockEngine.dll")) {
  Answer answer;
  auto const option = static_cast<int64_t>(reinterpret_cast<intptr_t>(&call));
  answer.text.reset(RecognizeDIB(binding, dib, library, option, 4711, answer.error));
  return answer;
}

// The binding never looks into a bitmap, so any address will do.
HDIB AnyDib() {
  static int dib = 0;
  return &dib;
}

TEST(RecognizeDIB, GivesACopyOfTheEnginesTextAndReleasesIt) {
  OcrEngineBinding binding;
  MockEngineCall call;
  call.text = SORRELIN_TEXT("<html>\u043C</html>");
  Answer const answer = Recognize(binding, call, AnyDib());
  ASSERT_NE(answer.text, nullptr);
  EXPECT_EQ(sorrelin::WideString(answer.text.get()), call.text);
  EXPECT_NE(answer.text.get(), call.text.data());
  EXPECT_EQ(call.freed, 1);
  EXPECT_EQ(answer.error, kUntouched);
}

TEST(RecognizeDIB, CallsTheEngineWithBitmapOptionAndConstants) {
  OcrEngineBinding binding;
  MockEngineCall call;
  Recognize(binding, call, AnyDib());
  EXPECT_EQ(call.calls, 1);
  EXPECT_EQ(call.dib, AnyDib());
  EXPECT_EQ(call.text_before, nullptr);
  EXPECT_THAT(call.constants, ElementsAre(0, 1, 0));
}

TEST(RecognizeDIB, EmptyTextIsABlockOfOneZeroUnit) {
  OcrEngineBinding binding;
  MockEngineCall call;
  Answer const answer = Recognize(binding, call, AnyDib());
  ASSERT_NE(answer.text, nullptr);
  EXPECT_EQ(answer.text.get()[0], 0);
  EXPECT_EQ(call.freed, 1);
  EXPECT_EQ(answer.error, kUntouched);
}

TEST(RecognizeDIB, NullBitmapIsRefusedBeforeTheEngineIsLoaded) {
  OcrEngineBinding binding;
  MockEngineCall call;
  Answer const answer = Recognize(binding, call, nullptr);
  EXPECT_EQ(answer.text, nullptr);
  EXPECT_EQ(answer.error, 7u);
  EXPECT_EQ(binding.module, nullptr);
}

TEST(RecognizeDIB, FailureOfTheEngineIs47AndItsTextIsNotReleased) {
  OcrEngineBinding binding;
  MockEngineCall call;
  call.result = 3;
  call.text = SORRELIN_TEXT("text");
  Answer const answer = Recognize(binding, call, AnyDib());
  EXPECT_EQ(answer.text, nullptr);
  EXPECT_EQ(answer.error, 47u);
  EXPECT_EQ(call.freed, 0);
}

TEST(RecognizeDIB, NullTextIs47) {
  OcrEngineBinding binding;
  MockEngineCall call;
  call.gives_text = false;
  Answer const answer = Recognize(binding, call, AnyDib());
  EXPECT_EQ(answer.text, nullptr);
  EXPECT_EQ(answer.error, 47u);
}

TEST(RecognizeDIB, SecondCallReusesTheEngineAndIgnoresTheName) {
  OcrEngineBinding binding;
  MockEngineCall call;
  Recognize(binding, call, AnyDib());
  HMODULE const module = binding.module;
  Answer const answer = Recognize(binding, call, AnyDib(), SORRELIN_TEXT("NoSuchEngine.dll"));
  EXPECT_NE(answer.text, nullptr);
  EXPECT_EQ(call.calls, 2);
  EXPECT_EQ(binding.module, module);
}

TEST(RecognizeDIB, MissingEngineIs45) {
  OcrEngineBinding binding;
  MockEngineCall call;
  Answer const answer = Recognize(binding, call, AnyDib(), SORRELIN_TEXT("NoSuchEngine.dll"));
  EXPECT_EQ(answer.text, nullptr);
  EXPECT_EQ(answer.error, 45u);
}

// The stale module of a failed load counts as an engine, which then cannot recognise anything.
TEST(RecognizeDIB, EngineWithoutAnEntryPointIs46AndFromThenOn47) {
  for (WCHAR const* library :
       {SORRELIN_TEXT("MockEngineOnlyFree.dll"), SORRELIN_TEXT("MockEngineOnlyRecognize.dll")}) {
    OcrEngineBinding binding;
    MockEngineCall call;
    EXPECT_EQ(Recognize(binding, call, AnyDib(), library).error, 46u);
    EXPECT_EQ(Recognize(binding, call, AnyDib(), library).error, 47u);
    EXPECT_EQ(call.calls, 0);
  }
}

TEST(EnsureOcrEngine, LoadsOnce) {
  OcrEngineBinding binding;
  DWORD error = kUntouched;
  EXPECT_EQ(EnsureOcrEngine(binding, SORRELIN_TEXT("MockEngine.dll"), error), 1);
  EXPECT_NE(binding.module, nullptr);
  EXPECT_NE(binding.recognize, nullptr);
  EXPECT_NE(binding.free_text, nullptr);
  EXPECT_EQ(EnsureOcrEngine(binding, nullptr, error), 1);
  EXPECT_EQ(error, kUntouched);
}

TEST(EnsureOcrEngine, MissingEngineIs45AndCanBeTriedAgain) {
  OcrEngineBinding binding;
  for (WCHAR const* library :
       {SORRELIN_TEXT("NoSuchEngine.dll"), SORRELIN_TEXT(""), static_cast<WCHAR const*>(nullptr)}) {
    DWORD error = kUntouched;
    EXPECT_EQ(EnsureOcrEngine(binding, library, error), 0);
    EXPECT_EQ(error, 45u);
    EXPECT_EQ(binding.module, nullptr);
  }
  DWORD error = kUntouched;
  EXPECT_EQ(EnsureOcrEngine(binding, SORRELIN_TEXT("MockEngine.dll"), error), 1);
}

TEST(EnsureOcrEngine, MissingEntryPointLeavesAStaleHandleThatReportsReady) {
  for (WCHAR const* library :
       {SORRELIN_TEXT("MockEngineOnlyFree.dll"), SORRELIN_TEXT("MockEngineOnlyRecognize.dll")}) {
    OcrEngineBinding binding;
    DWORD error = kUntouched;
    EXPECT_EQ(EnsureOcrEngine(binding, library, error), 0);
    EXPECT_EQ(error, 46u);
    EXPECT_NE(binding.module, nullptr);
    error = kUntouched;
    EXPECT_EQ(EnsureOcrEngine(binding, library, error), 1);
    EXPECT_EQ(error, kUntouched);
    EXPECT_EQ(binding.recognize, nullptr);
    EXPECT_EQ(binding.free_text, nullptr);
  }
}

TEST(EnsureOcrEngine, LibraryWithoutEntryPointsIsUnloadedAgain) {
  OcrEngineBinding binding;
  DWORD error = kUntouched;
  EXPECT_EQ(EnsureOcrEngine(binding, SORRELIN_TEXT("MockEngineOnlyFree.dll"), error), 0);
  EXPECT_EQ(FreeLibrary(binding.module), FALSE);
}

}  // namespace
