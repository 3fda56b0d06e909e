// The handlers of libtiff's messages, one pair for the process. The thread on which they are called
// says which collection a message belongs to.
#include "tools/formats/tiff/tiff_messages.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <mutex>
#include <string_view>

namespace sorrelin::tool {
namespace {

thread_local TiffMessages* collection = nullptr;

// The functions that read tags. What they warn of takes nothing from the pixels, and after an error
// of theirs there is no page, or only the next one is lost.
bool IsAboutTags(std::string_view function) {
  constexpr std::array<std::string_view, 11> kStarts = {
      "TIFFReadDirectory", "TIFFReadCustomDirectory", "TIFFReadEXIF",  "TIFFFetch",
      "TIFFAdvance",       "TIFFSetDirectory",        "EstimateStrip", "ChopUp",
      "_TIFFVSetField",    "MissingRequired",         "JPEGFixup"};
  return std::any_of(kStarts.begin(), kStarts.end(),
                     [&](std::string_view start) { return function.starts_with(start); });
}

void Collect(char const* format, va_list values) {
  if (collection == nullptr) return;
  char text[500];
  std::vsnprintf(text, sizeof text, format, values);
  collection->Add(text);
}

void Take(thandle_t, char const* function, char const* format, va_list values) {
  if (function == nullptr || !IsAboutTags(function)) Collect(format, values);
}

}  // namespace

TiffMessages::TiffMessages() : outer_(collection) {
  KeepTiffQuiet();
  collection = this;
}

TiffMessages::~TiffMessages() { collection = outer_; }

void TiffMessages::Add(std::string const& message) {
  if (damage_.empty()) damage_ = message;
}

void KeepTiffQuiet() {
  static std::once_flag once;
  std::call_once(once, [] {
    TIFFSetErrorHandler(nullptr);
    TIFFSetWarningHandler(nullptr);
    TIFFSetErrorHandlerExt(Take);
    TIFFSetWarningHandlerExt(Take);
  });
}

}  // namespace sorrelin::tool
