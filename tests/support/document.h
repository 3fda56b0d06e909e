// A session on a document in memory, with its bytes at hand at any time.
#ifndef TESTS_SUPPORT_DOCUMENT_H_
#define TESTS_SUPPORT_DOCUMENT_H_

#include <sorrelin/frame/pdf.h>
#include <sorrelin/frame/session.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/session_probe.h"

namespace test {

inline constexpr WCHAR const* kNoLibrary = SORRELIN_TEXT("");

// A session is large; it lives on the heap.
class MemoryDocument {
 public:
  MemoryDocument() : session_(std::make_unique<CCreatePDF>()) {}
  ~MemoryDocument() { session_->ClosePDFFile(); }

  CCreatePDF& session() { return *session_; }
  CCreatePDF* operator->() { return session_.get(); }

  // Opens a channel without any document.
  MemoryDocument& OpenBare() {
    session_->CreatePDFFileInMemory(0, 0);
    return *this;
  }
  MemoryDocument& Create() {
    session_->CreatePDFInMemory(0, 0);
    return *this;
  }
  // What has been written so far.
  std::string Text() {
    sorrelin::MemoryBuffer const& buffer = SessionProbe::Channel(*session_)->buffer;
    return {reinterpret_cast<char const*>(buffer.pData), static_cast<size_t>(buffer.nSize)};
  }
  // What `write` adds to the document.
  template <typename Write>
  std::string Added(Write write) {
    size_t const before = Text().size();
    write(*session_);
    return Text().substr(before);
  }
  // Ends the document and returns it; empty on failure.
  std::string Finish() {
    int64_t data = 0;
    DWORD size = 0;
    if (session_->FinishPDFInMemory(&data, &size) == 0) return {};
    std::string const document(reinterpret_cast<char const*>(data), size);
    pdf_FreePDFInMemory(reinterpret_cast<void*>(data));
    return document;
  }

 private:
  std::unique_ptr<CCreatePDF> session_;
};

// The document with its creation date replaced by zeros, which is all that changes between runs.
inline std::string WithoutDate(std::string document) {
  size_t const date = document.find("(D:");
  if (date != std::string::npos) document.replace(date + 3, 14, 14, '0');
  return document;
}

}  // namespace test

#endif  // TESTS_SUPPORT_DOCUMENT_H_
