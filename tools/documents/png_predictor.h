// Rows that were predicted as PNG does it (ISO 32000-1, 7.4.4.4; PNG, clause 9).
#ifndef TOOLS_DOCUMENTS_PNG_PREDICTOR_H_
#define TOOLS_DOCUMENTS_PNG_PREDICTOR_H_

#include <sorrelin/platform/types.h>

#include <span>

namespace sorrelin::tool {

// Undoes the prediction of one row. `tag` is the byte before it, `above` the undone row above, of
// the same size (zeros for the first), and `pixel_bytes` the bytes of a pixel, at least 1. False
// for a tag that means nothing.
bool UndoPngRow(BYTE tag, std::span<BYTE> row, std::span<BYTE const> above, size_t pixel_bytes);

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_PNG_PREDICTOR_H_
