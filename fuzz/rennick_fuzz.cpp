// JPEG files by way of the sibling's entry point; what was decoded is coded again.
#include <siblings/rennick/rennick.h>
#include <sorrelin/platform/memory.h>
#include <tests/siblings/rennick_support.h>

#include "fuzz/fuzz_session.h"

namespace {

// Coding large pictures takes most of the time and finds nothing new.
constexpr size_t kMostBytes = 1 << 16;

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  test::Block const bitmap(LoadJPEGIntoDIBFromMemory(bytes, static_cast<DWORD>(size)));
  fuzz::RequireWholeBitmap(bitmap.get());
  if (bitmap.get() == nullptr || GlobalSize(bitmap) > kMostBytes) return 0;
  fuzz::Require(!test::Save(bitmap, {}).empty(), "a decoded bitmap cannot be coded");
  return 0;
}
