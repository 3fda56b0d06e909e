// A session over a memory document whose objects are given by number: its object table is filled
// by hand, as the classic route would leave it.
#ifndef TESTS_SUPPORT_OBJECT_SESSION_H_
#define TESTS_SUPPORT_OBJECT_SESSION_H_

#include <sorrelin/channel/file_channel.h>
#include <sorrelin/frame/session.h>
#include <tests/support/session_probe.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>

namespace test {

class ObjectSession {
 public:
  // `bodies` are the texts between "N 0 obj" and "endobj".
  explicit ObjectSession(std::map<DWORD, std::string> const& bodies)
      : session_(std::make_unique<CCreatePDF>()), document_("%PDF-1.4\n") {
    DWORD rows = 1;
    for (auto const& [number, body] : bodies) {
      SessionProbe::Row(*session_, number) = {static_cast<DWORD>(document_.size()), 0, 1};
      document_ += ObjectText(number, body);
      rows = std::max(rows, number + 1);
    }
    SessionProbe::SetObjectsInFile(*session_, rows);
    channel_ =
        sorrelin::ChannelAttachMemory(document_.data(), static_cast<DWORD>(document_.size()), true);
    SessionProbe::SetChannel(*session_, channel_);
    session_->PDF_SetLastError(PDF_ERROR_NONE);
  }
  ~ObjectSession() {
    sorrelin::ChannelClose(channel_);
    delete channel_;
  }
  ObjectSession(ObjectSession const&) = delete;
  ObjectSession& operator=(ObjectSession const&) = delete;

  CCreatePDF& operator*() const { return *session_; }
  CCreatePDF* operator->() const { return session_.get(); }

  static std::string ObjectText(DWORD number, std::string const& body) {
    return std::to_string(number) + " 0 obj\n" + body + "\nendobj\n";
  }

 private:
  std::unique_ptr<CCreatePDF> session_;
  std::string document_;
  sorrelin::FileChannel* channel_ = nullptr;
};

}  // namespace test

#endif  // TESTS_SUPPORT_OBJECT_SESSION_H_
