// A TIFF file that takes one page after the other, each at the same cost however many there are.
#ifndef TOOLS_FORMATS_TIFF_TIFF_FILE_H_
#define TOOLS_FORMATS_TIFF_TIFF_FILE_H_

#include <sorrelin/platform/types.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>

namespace sorrelin::tool {

class TiffFile {
 public:
  // Makes the file; it has no page yet.
  explicit TiffFile(std::filesystem::path const& path);

  // Adds the page of `file`, a whole TIFF file of one page in one strip, in this machine's byte
  // order. False with the reason in `problem`; the pages before stand then, unless writing failed.
  bool Add(std::span<BYTE const> file, std::string& problem);

 private:
  bool Write(uint64_t at, std::span<BYTE const> bytes);

  std::ofstream out_;
  int open_error_;  // errno, 0 if the file could be made
  uint64_t size_ = 0;
  uint64_t link_ = 0;  // where the offset of the next page's directory belongs; 0: no page yet
};

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_TIFF_TIFF_FILE_H_
