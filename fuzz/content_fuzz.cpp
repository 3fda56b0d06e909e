// The flip test of a page's content: a text that comes in pieces gets the answer of the whole.
//
// The input is the size of the first piece and of all others, then the text.
#include <sorrelin/syntax/page_flip.h>

#include "fuzz/fuzz_input.h"

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  fuzz::Cursor input({bytes, size});
  size_t piece = input.Byte();
  size_t const others = 1 + size_t{input.Byte()};
  fuzz::Data rest = input.Rest();
  // On the heap, with nothing after its NUL.
  std::unique_ptr<char[]> const text(new char[rest.size() + 1]);
  std::copy(rest.begin(), rest.end(), text.get());
  text[rest.size()] = 0;
  int const whole = sorrelin::IsPageContentFlipped(text.get());

  sorrelin::PageFlipTest test;
  while (test.Feed(rest.first(std::min(piece, rest.size()))) && !rest.empty()) {
    rest = rest.subspan(std::min(piece, rest.size()));
    piece = others;
  }
  fuzz::Require(test.Finish() == whole, "pieces change the answer");
  return 0;
}
