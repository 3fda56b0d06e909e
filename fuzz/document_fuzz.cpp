// Documents as they stand: the input is opened, and all that it holds is read.
#include "fuzz/fuzz_session.h"

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  fuzz::Data const document(bytes, size);
  if (fuzz::HoldsEndlessNumber(document)) return 0;
  fuzz::Guard([&] { fuzz::ReadEverything(document); });
  return 0;
}
