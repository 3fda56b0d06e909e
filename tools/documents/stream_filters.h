// The filters of a stream, in the order in which they are undone.
#ifndef TOOLS_DOCUMENTS_STREAM_FILTERS_H_
#define TOOLS_DOCUMENTS_STREAM_FILTERS_H_

#include <optional>
#include <string>
#include <vector>

#include "tools/documents/pdf_objects.h"

namespace sorrelin::tool {

struct StreamFilter {
  std::string name;
  PdfValue parms;  // a dictionary or null
};

// Nothing if the filters cannot be told.
std::optional<std::vector<StreamFilter>> FiltersOf(PdfObjects const& objects,
                                                   PdfValue const& dictionary);

// Whether a predictor stands behind a Flate or LZW filter.
bool HasPredictor(PdfObjects const& objects, StreamFilter const& filter);

// The first `most` decoded bytes of a stream that has no filter or Flate alone. Nothing for other
// filters and for a stream that cannot be had.
std::optional<std::string> DecodedText(PdfObjects const& objects, PdfObject const& stream,
                                       size_t most);

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_STREAM_FILTERS_H_
