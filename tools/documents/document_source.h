// The file of a document, as libqpdf reads it.
#ifndef TOOLS_DOCUMENTS_DOCUMENT_SOURCE_H_
#define TOOLS_DOCUMENTS_DOCUMENT_SOURCE_H_

#include <fstream>
#include <qpdf/InputSource.hh>
#include <span>
#include <string>
#include <vector>

namespace sorrelin::tool {

// Keeps a window of the file: libqpdf seeks before each object, for which its own source asks the
// system every time. Throws QPDFExc where the file cannot be read.
class DocumentSource : public InputSource {
 public:
  explicit DocumentSource(std::string const& name);

  qpdf_offset_t findAndSkipNextEOL() override;
  std::string const& getName() const override { return name_; }
  qpdf_offset_t tell() override { return offset_; }
  void seek(qpdf_offset_t offset, int whence) override;
  void rewind() override { offset_ = 0; }
  size_t read(char* out, size_t length) override;
  void unreadCh(char) override { --offset_; }

 private:
  // Bytes of the window from the offset on; none at the end of the file.
  std::span<char const> Ahead();

  std::string name_;
  std::ifstream file_;
  qpdf_offset_t size_ = 0;
  qpdf_offset_t offset_ = 0;
  std::vector<char> window_;
  qpdf_offset_t window_start_ = 0;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_DOCUMENT_SOURCE_H_
