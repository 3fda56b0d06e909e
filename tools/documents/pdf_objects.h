// Objects of an open document, fetched by the library and read strictly.
#ifndef TOOLS_DOCUMENTS_PDF_OBJECTS_H_
#define TOOLS_DOCUMENTS_PDF_OBJECTS_H_

#include <sorrelin/document/loaded_object.h>
#include <sorrelin/frame/session.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "tools/documents/pdf_value.h"

namespace sorrelin::tool {

// An object in memory.
struct PdfObject {
  PdfValue value;
  bool is_stream = false;
  // From the true start of the data to the end of the object, which may lie behind that of the
  // data.
  std::span<BYTE const> behind_stream;
  std::unique_ptr<LoadedObject> block;  // what the span is of
};

// An object's text, from its number on, or from its value on where there is none.
PdfObject ParseObject(std::string_view text);

class PdfObjects {
 public:
  // The session outlives this object. `most_work` is in bytes: those of the objects that are
  // loaded, and those that come of inflating.
  PdfObjects(CCreatePDF& session, uint64_t most_work) : session_(session), work_left_(most_work) {}

  // An object that cannot be had or read has a null value.
  PdfObject Load(DWORD number) const;
  // The object that a reference leads to; of another value, a copy.
  PdfObject Follow(PdfValue const& value) const;
  PdfValue Resolve(PdfValue const& value) const { return Follow(value).value; }

  // The coded bytes of a stream, by its /Length. Nothing if they are not all there.
  std::optional<std::span<BYTE const>> DataOf(PdfObject const& stream) const;

  // Takes work off what may be done. No object is loaded any more once nothing is left.
  void Spend(uint64_t bytes) const { work_left_ -= std::min(bytes, work_left_); }
  bool IsExhausted() const { return work_left_ == 0; }

 private:
  CCreatePDF& session_;
  mutable uint64_t work_left_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_PDF_OBJECTS_H_
