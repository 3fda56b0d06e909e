// The strict reader of the command-line program on an object's text.
#include <tools/documents/pdf_objects.h>

#include "fuzz/fuzz_input.h"

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  fuzz::Copy copy({bytes, size});
  auto const* const text = reinterpret_cast<char const*>(copy.data());
  auto const object = sorrelin::tool::ParseObject({text, size});
  fuzz::Require(object.behind_stream.size() <= size, "a stream larger than its object");
  sorrelin::tool::PdfValueReader reader({text, size});
  while (reader.Read()) {
  }
  fuzz::Require(reader.position() <= size, "the reader passes the end");
  return 0;
}
