// Pictures of a document's pages, read in a child process and passed on here.
#ifndef TOOLS_EXTRACT_PAGE_TRANSFER_H_
#define TOOLS_EXTRACT_PAGE_TRANSFER_H_

#include <memory>
#include <string>
#include <vector>

#include "tools/extract/page_picture.h"

namespace sorrelin::tool {

// Where pages come from; lives in the child. A page's number counts from 0.
class PageSource {
 public:
  virtual ~PageSource() = default;
  // Pages that may be asked for.
  virtual DWORD PageCount() = 0;
  // False with the reason in `problem`.
  virtual bool Read(DWORD page, PictureSink& sink, std::string& problem) = 0;
};

// Null, with the reason in `problem`, if there is nothing to read.
using OpenSource = std::unique_ptr<PageSource> (*)(std::string const& name, std::string& problem);

// Takes what was read, here.
class PageTarget : public PictureSink {
 public:
  // The pages that are wanted of `count`, in their order. Called on both sides.
  virtual std::vector<DWORD> Choose(DWORD count) const = 0;
  // The document is open. False if nothing is to be read after all. Called once.
  virtual bool Start(DWORD count) = 0;
  // A picture has come whole: Begin and Row have been called.
  virtual void Finish(DWORD page) = 0;
  virtual void Fail(DWORD page, std::string const& problem) = 0;
};

// Reads the chosen pages. A page that ends its reader fails, and the next ones are read by another.
// False with the reason in `problem` if the document cannot be read.
bool TransferPages(std::string const& name, OpenSource open, PageTarget& target,
                   std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_PAGE_TRANSFER_H_
