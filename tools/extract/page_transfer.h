// Pictures of a document's pages, read and coded in a child process and passed on here as files.
#ifndef TOOLS_EXTRACT_PAGE_TRANSFER_H_
#define TOOLS_EXTRACT_PAGE_TRANSFER_H_

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/extract/output/byte_output.h"
#include "tools/formats/picture/resolution.h"
#include "tools/system/child_process.h"

namespace sorrelin::tool {

// What a picture file holds.
struct PictureHead {
  DWORD picture = 1;  // its number on the page
  DWORD width = 0;    // pixels, as in the file
  DWORD height = 0;
  int depth = 0;  // bits per pixel, as stored
  Resolution dpi;
  std::string coding;     // as info names it
  std::string extension;  // the usual one of the file's format, with its point
};

// The way of pictures out of the child.
class PictureSender {
 public:
  virtual ~PictureSender() = default;
  // Begins a file, whose bytes go to the output that comes back.
  virtual ByteOutput& Begin(PictureHead const& head) = 0;
  // The file is complete.
  virtual void End() = 0;
  // A picture, or with 0 the page, cannot be read or written; ends a file that is begun.
  virtual void Fail(DWORD picture, std::string const& problem) = 0;
};

// Where pages come from; lives in the child. A page's number counts from 0.
class PageSource {
 public:
  virtual ~PageSource() = default;
  // Pages that may be asked for.
  virtual DWORD PageCount() = 0;
  virtual void Read(DWORD page, PictureSender& sender) = 0;
};

// Null, with the reason in `problem`, if there is nothing to read.
using OpenSource = std::function<std::unique_ptr<PageSource>(std::string& problem)>;

// The pages that are wanted of a document that has `count`, in their order.
using PageChoice = std::function<std::vector<DWORD>(DWORD count)>;

// What a reader is asked for.
struct ReadOrder {
  std::optional<DWORD> count;  // the document's pages, where an earlier reader has counted them
  size_t first = 0;            // the place of the first page to read among those that are wanted
};

// In the child: reads pages.
void SendPages(ParentLink& link, OpenSource const& open, PageChoice const& choose,
               ReadOrder const& order);

// The work of a reader, which calls SendPages. `order` outlives the work.
using ReaderWork = std::function<ChildWork(ReadOrder const& order)>;

// Takes what was read, here.
class PageTarget {
 public:
  virtual ~PageTarget() = default;
  // The pages that the readers choose.
  virtual std::vector<DWORD> Choose(DWORD count) const = 0;
  // The document is open. False if nothing is to be read after all. Called once.
  virtual bool Start(DWORD count) = 0;
  // A file begins; its bytes follow, and then Finish, unless Fail comes first.
  virtual void Begin(DWORD page, PictureHead const& head) = 0;
  virtual void Write(uint64_t place, std::span<BYTE const> bytes) = 0;
  virtual void Finish() = 0;
  virtual void Fail(DWORD page, DWORD picture, std::string const& problem) = 0;
  // All of a page has come.
  virtual void EndPage(DWORD page) = 0;
};

// Reads the chosen pages. A page that ends its reader fails, and the next ones are read by another.
// False with the reason in `problem` if the document cannot be read.
bool TransferPages(ReaderWork const& reader, PageTarget& target, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_PAGE_TRANSFER_H_
