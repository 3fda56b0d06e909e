// A page on its way from a scanner into a picture file, coded as its lines come.
#ifndef TOOLS_SCAN_PAGE_FILE_H_
#define TOOLS_SCAN_PAGE_FILE_H_

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "tools/make/pages/page_style.h"
#include "tools/scan/row_writer.h"

namespace sorrelin::tool {

class PageFile {
 public:
  // The file holds Group 4 or JPEG data where pages of this style take them as they are, and PNM
  // otherwise. nullptr with the reason in `problem` if lines of this shape are not known, or the
  // file cannot be made.
  static std::unique_ptr<PageFile> Create(std::filesystem::path const& path, LineShape const& shape,
                                          PageStyle const& style, std::string& problem);

  // Takes bytes of lines, of any number. False with the reason in `problem`.
  bool Add(std::span<unsigned char const> bytes, std::string& problem);

  // Drops a line that is not whole and completes the file. False with the reason in `problem`, also
  // for a page without lines.
  bool Finish(std::string& problem);

  // Whether fewer lines have come than were announced.
  bool IsShort() const { return rows_ < shape_.lines; }

 private:
  PageFile(std::unique_ptr<RowWriter> writer, LineShape const& shape);

  std::unique_ptr<RowWriter> writer_;
  LineShape shape_;
  std::vector<unsigned char> line_;  // the part of it that has come
  int64_t rows_ = 0;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_SCAN_PAGE_FILE_H_
