// Programs of calculator functions.
#include <tools/extract/colour/calculator.h>

#include "fuzz/fuzz_input.h"

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  sorrelin::tool::Calculator calculator;
  if (!calculator.Read({reinterpret_cast<char const*>(bytes), size})) return 0;
  for (double const value : {0.0, 0.25, 1.0, -7.0}) calculator.Run({value, 1 - value, value});
  return 0;
}
