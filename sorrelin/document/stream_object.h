// The data of stream objects whose text is at hand.
#ifndef SORRELIN_DOCUMENT_STREAM_OBJECT_H_
#define SORRELIN_DOCUMENT_STREAM_OBJECT_H_

#include <sorrelin/platform/types.h>

#include <optional>
#include <span>

namespace sorrelin {

// Whether two integers are at the text's start, as in an object's header.
bool StartsWithTwoIntegers(std::span<BYTE const> text);

// The bytes after "stream" and its line end, up to the text's end; nothing without the keyword.
// Kept: without CR LF every CR, LF and blank in a row is taken for the line end, data bytes
// included; zlib data never begin so.
std::optional<std::span<BYTE const>> FindStreamData(std::span<BYTE const> text);

// The same for images and palettes, whose keyword is searched by the rule of FindKey.
// Kept: one byte for the line end, whatever line end the file has; of a file with CR LF the LF
// counts as data.
std::optional<std::span<BYTE const>> FindImageData(std::span<BYTE> text);

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_STREAM_OBJECT_H_
