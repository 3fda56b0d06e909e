// The parts of a document that is read, made without a session.
#ifndef TESTS_SUPPORT_READ_DOCUMENT_H_
#define TESTS_SUPPORT_READ_DOCUMENT_H_

#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/document_facts.h>
#include <sorrelin/document/loaded_object.h>
#include <sorrelin/document/object_loader.h>
#include <sorrelin/document/object_table.h>
#include <sorrelin/document/page_list.h>
#include <sorrelin/document/reader_state.h>
#include <tests/support/pdf_builder.h>

#include <memory>
#include <optional>
#include <string>

namespace test {

class ReadDocument {
 public:
  explicit ReadDocument(Bytes bytes) : bytes_(std::move(bytes)) {
    bytes_.reserve(1);  // an empty document has an address too
    channel_ =
        sorrelin::ChannelAttachMemory(bytes_.data(), static_cast<DWORD>(bytes_.size()), true);
    reader.file.SetChannel(channel_, sorrelin::DocumentFile::Growth::kFixed);
  }
  explicit ReadDocument(PdfBuilder const& pdf) : ReadDocument(pdf.Document()) {}
  ~ReadDocument() {
    sorrelin::ChannelClose(channel_);
    delete channel_;
  }
  ReadDocument(ReadDocument const&) = delete;
  ReadDocument& operator=(ReadDocument const&) = delete;

  // An object's text, or nothing.
  std::optional<std::string> Text(DWORD number) {
    sorrelin::LoadedObject const object = objects.Open(number);
    return object ? std::optional(std::string(object.Chars())) : std::nullopt;
  }

  sorrelin::ReaderState reader;
  std::unique_ptr<sorrelin::ObjectTable> const table = std::make_unique<sorrelin::ObjectTable>();
  std::unique_ptr<sorrelin::PageList> const pages = std::make_unique<sorrelin::PageList>();
  sorrelin::DocumentFacts facts;
  sorrelin::ObjectLoader objects{reader.file, reader.objects, *table};

 private:
  Bytes bytes_;
  sorrelin::FileChannel* channel_ = nullptr;
};

}  // namespace test

#endif  // TESTS_SUPPORT_READ_DOCUMENT_H_
