// Writers of picture files of one page each, row by row as a scanner sends it.
#ifndef TOOLS_SCAN_ROW_WRITER_H_
#define TOOLS_SCAN_ROW_WRITER_H_

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

namespace sorrelin::tool {

// Lines as a scanner sends them: grey or RGB of 8 or 16 bits in the machine's order, or bilevel, 1
// being black. Sizes in pixels, bits and bytes.
struct LineShape {
  bool colour = false;
  int depth = 8;
  int64_t width = 0;
  int64_t line_bytes = 0;  // padding included
  int64_t lines = -1;      // of the page; -1: it is not known before its end

  size_t RowBytes() const {
    return static_cast<size_t>((width * (colour ? 3 : 1) * depth + 7) / 8);
  }
};

class RowWriter {
 public:
  virtual ~RowWriter() = default;

  // Each is false with the system error if the file cannot be written.

  // The next row, of RowBytes.
  virtual bool Write(std::span<unsigned char const> row) = 0;
  // Completes the file after the last row.
  virtual bool Finish() = 0;
};

// Each returns nullptr with the system error if the file cannot be made. None holds more than a few
// rows in memory.

// A PNM file, for lines of any shape.
std::unique_ptr<RowWriter> MakePnmRows(std::filesystem::path const& path, LineShape const& shape);

// A TIFF file of one strip of Group 4 data, for bilevel lines.
std::unique_ptr<RowWriter> MakeGroup4Rows(std::filesystem::path const& path,
                                          LineShape const& shape);

// A JPEG file, for lines of 8 bits whose number is known. Rows that do not come are white.
// `quality` is from 1 to 100, or 0 for the coder's usual one.
std::unique_ptr<RowWriter> MakeJpegRows(std::filesystem::path const& path, LineShape const& shape,
                                        int quality);

}  // namespace sorrelin::tool

#endif  // TOOLS_SCAN_ROW_WRITER_H_
