// Copies that callers of the reader own: blocks from the heap allocator, released with free().
#ifndef SORRELIN_SYNTAX_HEAP_COPY_H_
#define SORRELIN_SYNTAX_HEAP_COPY_H_

#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

namespace sorrelin {

// The bytes with a NUL after them.
inline char* HeapCopy(std::string_view bytes) {
  char* const copy = static_cast<char*>(std::calloc(bytes.size() + 1, 1));
  if (copy == nullptr) throw std::bad_alloc();
  if (!bytes.empty()) std::memcpy(copy, bytes.data(), bytes.size());
  return copy;
}

}  // namespace sorrelin

#endif  // SORRELIN_SYNTAX_HEAP_COPY_H_
