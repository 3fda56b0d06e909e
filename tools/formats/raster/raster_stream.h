// Pages of a print raster, read row by row.
#ifndef TOOLS_FORMATS_RASTER_RASTER_STREAM_H_
#define TOOLS_FORMATS_RASTER_RASTER_STREAM_H_

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tools/formats/byte_stream.h"
#include "tools/formats/raster/raster_header.h"

namespace sorrelin::tool {

// Holds one line of a page.
class RasterStream {
 public:
  // `stream` starts with what `kind` was found by, and outlives this.
  RasterStream(ByteStream& stream, RasterKind const& kind);

  // The next page; rows of the page before that were not read are passed over. nullopt at the end,
  // and with the reason in `problem` if there is none to be read.
  std::optional<RasterPage> NextPage(std::string& problem);

  // The next row of the page, RasterPage::RowBytes() bytes. False with the reason in `problem` if
  // the data are damaged or end early; then there are no more pages.
  bool ReadRow(std::span<BYTE> row, std::string& problem);

  // Whether there are no more pages, and none is missing that the stream announces.
  bool AtEnd() { return ended_ || (stream_.AtEnd() && pages_left_ == 0); }

 private:
  bool SkipRows(std::string& problem);
  bool ReadLine();
  bool UnpackLine();
  void Convert(std::span<BYTE> row) const;

  ByteStream& stream_;
  RasterKind kind_;
  unsigned pages_left_ = 0;  // that Apple's header announces; 0: no more, or not known
  RasterHeader header_;
  int rows_ = 0;          // read of the page
  unsigned repeats_ = 0;  // of the line, still to be read
  std::vector<BYTE> line_;
  bool ended_ = false;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_RASTER_RASTER_STREAM_H_
