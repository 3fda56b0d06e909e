// Stream objects that are read as text from a known offset: cross-reference sections and object
// streams.
#ifndef SORRELIN_DOCUMENT_STREAM_OBJECT_H_
#define SORRELIN_DOCUMENT_STREAM_OBJECT_H_

#include <sorrelin/platform/types.h>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace sorrelin {

struct ReaderState;

// The bytes from `offset` through the first "endobj". Nothing if the channel has none from there
// on.
std::optional<std::vector<BYTE>> ReadThroughEndobj(ReaderState& state, uint64_t offset);

// Whether two integers stand at the text's start, as in an object's header.
bool StartsWithTwoIntegers(std::span<BYTE const> text);

// The bytes behind "stream" and its line end, up to the text's end; nothing without the keyword.
// Kept: without CR LF every CR, LF and blank in a row is taken for the line end, data bytes
// included; zlib data never begin so.
std::optional<std::span<BYTE const>> FindStreamData(std::span<BYTE const> text);

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_STREAM_OBJECT_H_
