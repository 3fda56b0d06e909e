// A session over a document that is read, without the header test of the open operations: in
// memory, or in a file of its own.
#ifndef TESTS_SUPPORT_OPEN_DOCUMENT_H_
#define TESTS_SUPPORT_OPEN_DOCUMENT_H_

#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/object_bytes.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/wide_string.h>
#include <tests/support/pdf_builder.h>
#include <tests/support/session_probe.h>
#include <tests/support/temp_dir.h>

#include <memory>
#include <optional>
#include <string>

namespace test {

enum class Target { kMemory, kFile };

class OpenDocument {
 public:
  explicit OpenDocument(Bytes bytes, Target target = Target::kMemory)
      : bytes_(std::move(bytes)), session_(std::make_unique<CCreatePDF>()) {
    bytes_.reserve(1);  // an empty document has an address too
    channel_ = target == Target::kMemory ? OpenMemory() : OpenFile();
    SessionProbe::SetChannel(*session_, channel_);
    session_->PDF_SetLastError(PDF_ERROR_NONE);
  }
  explicit OpenDocument(PdfBuilder const& pdf, Target target = Target::kMemory)
      : OpenDocument(pdf.Document(), target) {}
  ~OpenDocument() {
    session_->ClosePDFFile();
    delete channel_;
  }
  OpenDocument(OpenDocument const&) = delete;
  OpenDocument& operator=(OpenDocument const&) = delete;

  // Reads the document; the number of object rows.
  DWORD Build() { return session_->BuildObjectListFromFile(); }

  CCreatePDF& operator*() { return *session_; }
  CCreatePDF* operator->() { return session_.get(); }
  sorrelin::ReaderState& reader() { return SessionProbe::Reader(*session_); }
  DWORD error() { return session_->PDF_GetLastError(); }
  sorrelin::ObjectEntry row(DWORD object) { return SessionProbe::Row(*session_, object); }

  // Position of the channel.
  DWORD Tell() { return sorrelin::ChannelSeek(channel_, 0, nullptr, FILE_CURRENT); }
  void Seek(DWORD offset) {
    sorrelin::ChannelSeek(channel_, static_cast<LONG>(offset), nullptr, FILE_BEGIN);
  }

  // What LoadObject gives, or nothing for null.
  std::optional<std::string> Load(DWORD object) {
    HGLOBAL const block = session_->LoadObject(object);
    if (block == nullptr) return std::nullopt;
    std::string const text(static_cast<char const*>(GlobalLock(block)), GlobalSize(block));
    GlobalUnlock(block);
    GlobalFree(block);
    return text;
  }

  // What the index gives.
  struct Fetched {
    std::string text;
    bool valid;
  };
  Fetched Fetch(DWORD object, DWORD generation = 0) {
    sorrelin::ObjectBytes bytes = reader().objects.Fetch(object, generation);
    sorrelin::LockedBlock const lock(bytes.block.get());
    return {std::string(lock.bytes().begin(), lock.bytes().end()), bytes.valid};
  }

 private:
  sorrelin::FileChannel* OpenMemory() {
    return sorrelin::ChannelAttachMemory(bytes_.data(), static_cast<DWORD>(bytes_.size()), true);
  }
  sorrelin::FileChannel* OpenFile() {
    directory_.emplace();
    std::string const name = (*directory_ / "document.pdf").string();
    WriteAll(name, bytes_);
    return sorrelin::ChannelOpenFile(sorrelin::ToWide(name.c_str()).c_str(), GENERIC_READ,
                                     FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  }

  Bytes bytes_;
  std::optional<TempDir> directory_;
  std::unique_ptr<CCreatePDF> session_;
  sorrelin::FileChannel* channel_ = nullptr;
};

}  // namespace test

#endif  // TESTS_SUPPORT_OPEN_DOCUMENT_H_
