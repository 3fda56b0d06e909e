// A cross-reference object over a memory document, to call its steps one by one.
#ifndef TESTS_SUPPORT_XREF_DOCUMENT_H_
#define TESTS_SUPPORT_XREF_DOCUMENT_H_

#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/cxref_stm.h>
#include <sorrelin/document/document_file.h>
#include <tests/support/pdf_builder.h>
#include <tests/support/xref_probe.h>

#include <memory>
#include <string>
#include <string_view>

namespace test {

class XrefDocument {
 public:
  explicit XrefDocument(std::string_view content) : bytes_(ToBytes(content)) {
    bytes_.reserve(1);  // an empty document has an address too
    channel_ =
        sorrelin::ChannelAttachMemory(bytes_.data(), static_cast<DWORD>(bytes_.size()), true);
    file_.SetChannel(channel_, sorrelin::DocumentFile::Growth::kFixed);
    xref_ = std::make_unique<sorrelin::CXRefStm>(file_, nullptr);
  }
  ~XrefDocument() {
    sorrelin::ChannelClose(channel_);
    delete channel_;
  }
  XrefDocument(XrefDocument const&) = delete;
  XrefDocument& operator=(XrefDocument const&) = delete;

  sorrelin::CXRefStm& operator*() { return *xref_; }
  sorrelin::CXRefStm* operator->() { return xref_.get(); }
  sorrelin::FileChannel* channel() { return channel_; }

 private:
  Bytes bytes_;
  sorrelin::DocumentFile file_;
  sorrelin::FileChannel* channel_ = nullptr;
  std::unique_ptr<sorrelin::CXRefStm> xref_;
};

}  // namespace test

#endif  // TESTS_SUPPORT_XREF_DOCUMENT_H_
