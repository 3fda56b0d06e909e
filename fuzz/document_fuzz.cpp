// Whole documents: the input is opened and everything in it is read.
#include "fuzz/fuzz_session.h"

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  fuzz::Data const document(bytes, size);
  if (fuzz::HoldsEndlessNumber(document)) return 0;
  fuzz::Guard([&] { fuzz::ReadEverything(document); });
  return 0;
}
