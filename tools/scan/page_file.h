// A page on its way from a scanner into a PNM file, whose height may be known at the end alone.
//
// PNM: "P4", "P5" or "P6", width, height and the largest sample as decimal numbers, and rows
// without padding between them; samples of 16 bits have the high byte first.
#ifndef TOOLS_SCAN_PAGE_FILE_H_
#define TOOLS_SCAN_PAGE_FILE_H_

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace sorrelin::tool {

// Lines as a scanner sends them: grey or RGB of 8 or 16 bits in the machine's order, or bilevel, 1
// being black. Sizes in pixels, bits and bytes.
struct LineShape {
  bool colour = false;
  int depth = 8;
  int64_t width = 0;
  int64_t line_bytes = 0;  // padding included
};

class PageFile {
 public:
  // nullptr with the reason in `problem` if lines of this shape are not known, or the file cannot
  // be made.
  static std::unique_ptr<PageFile> Create(std::filesystem::path const& path, LineShape const& shape,
                                          std::string& problem);

  // Takes bytes of lines, of any number. False with the reason in `problem`.
  bool Add(std::span<unsigned char const> bytes, std::string& problem);

  // Drops a line that is not whole and completes the file. False with the reason in `problem`, also
  // for a page without lines.
  bool Finish(std::string& problem);

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  PageFile(std::FILE* file, LineShape const& shape);

  size_t RowBytes() const;
  bool WriteHeader();
  bool WriteRow(std::span<unsigned char const> line);

  std::unique_ptr<std::FILE, Closer> file_;
  LineShape shape_;
  std::vector<unsigned char> line_;  // the part of it that has come
  std::vector<unsigned char> row_;
  int64_t rows_ = 0;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_SCAN_PAGE_FILE_H_
