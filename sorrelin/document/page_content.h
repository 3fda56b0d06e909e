// Whether a page is drawn upside down, as its first content stream says.
#ifndef SORRELIN_DOCUMENT_PAGE_CONTENT_H_
#define SORRELIN_DOCUMENT_PAGE_CONTENT_H_

#include <sorrelin/platform/types.h>

#include <cstddef>
#include <optional>
#include <span>

namespace sorrelin {

class ObjectLoader;

// Zeros in place of the data that a /Length promises beyond its object: decoders see the end of
// the data far before them, and a /Length of gigabytes costs nothing.
inline constexpr size_t kMostMissingBytes = size_t{16} << 20;

// Looks at the first stream that "Contents" names in the page's text. nullopt if the stream's
// /Length cannot be read.
std::optional<bool> IsPageFlipped(ObjectLoader& objects, std::span<BYTE> page);

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_PAGE_CONTENT_H_
