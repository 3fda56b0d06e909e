// Packed bitmaps coded by the library's coders, in the forms that the library reads back.
#ifndef TOOLS_MAKE_CODING_BITMAP_CODER_H_
#define TOOLS_MAKE_CODING_BITMAP_CODER_H_

#include <sorrelin/frame/session.h>
#include <sorrelin/platform/block.h>

#include <memory>
#include <span>
#include <string>

#include "tools/make/pages/page_style.h"

namespace sorrelin::tool {

// A locked block of bytes, and its size.
class LockedBytes {
 public:
  LockedBytes() = default;
  LockedBytes(OwnedBlock block, DWORD bytes);
  ~LockedBytes();
  LockedBytes(LockedBytes&& other) noexcept;
  LockedBytes& operator=(LockedBytes&& other) noexcept;

  std::span<BYTE const> bytes() const { return bytes_; }

 private:
  OwnedBlock block_;
  std::span<BYTE const> bytes_;
};

struct CodedBitmap {
  LockedBytes data;
  OwnedBlock palette;  // of 8 bits: red, green, blue triples
};

// The identifier that the library has for a coding.
DWORD IdentifierOf(Compression compression);

// For one thread at a time. The same bitmap gives the same bytes from every coder.
class BitmapCoder {
 public:
  BitmapCoder();

  // Codes a bitmap of `depth` bits. False with the reason in `problem`.
  bool Code(OwnedBlock const& dib, int depth, Compression compression, int quality,
            CodedBitmap& coded, std::string& problem);

  // The size of a page, in whole points, of a picture at its resolution.
  POINT PageSize(int width, int height, Resolution dpi);

 private:
  std::string Reason();

  // Without a document: only its coders are used. Large, as its tables are inside it.
  std::unique_ptr<CCreatePDF> session_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_CODING_BITMAP_CODER_H_
