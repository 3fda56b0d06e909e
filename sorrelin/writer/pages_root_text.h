// The text of a pages root with further pages in it.
#ifndef SORRELIN_WRITER_PAGES_ROOT_TEXT_H_
#define SORRELIN_WRITER_PAGES_ROOT_TEXT_H_

#include <sorrelin/platform/types.h>

#include <optional>
#include <string>
#include <vector>

namespace sorrelin {

// Whether "/Count" and "/Kids" follow the object's "obj".
bool HasPagesKeys(std::string const& old_text);

// `old_text` is the object from its number on, ending in NUL. The result is what follows its
// "obj", with `count` for the old count and an entry " N 0 R" CR for each of `pages` before the
// bracket that closes the array. Nothing where "/Count", "/Kids" or a usable bracket is missing.
std::optional<std::string> PagesRootWithPages(std::string const& old_text, DWORD count,
                                              std::vector<DWORD> const& pages);

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_PAGES_ROOT_TEXT_H_
