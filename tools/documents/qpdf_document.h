// A document that libqpdf has open for reading.
#ifndef TOOLS_DOCUMENTS_QPDF_DOCUMENT_H_
#define TOOLS_DOCUMENTS_QPDF_DOCUMENT_H_

#include <sorrelin/platform/types.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <qpdf/QPDF.hh>
#include <string>
#include <vector>

namespace sorrelin::tool {

// Work that may be spent on the parts of a document that pages share, in bytes; documents made to
// waste time use it up, others never come near.
class WorkBudget {
 public:
  explicit WorkBudget(uint64_t bytes) : left_(bytes) {}
  void Spend(uint64_t bytes) { left_ -= bytes < left_ ? bytes : left_; }
  bool IsExhausted() const { return left_ == 0; }

 private:
  uint64_t left_;
};

class QpdfDocument {
 public:
  // Null with the reason in `problem` if there is no document to read. The password may be empty.
  static std::unique_ptr<QpdfDocument> Open(std::string const& name, std::string const& password,
                                            std::string& problem);
  // The same for a document in memory, which is copied.
  static std::unique_ptr<QpdfDocument> OpenMemory(std::string const& bytes, std::string& problem);
  QpdfDocument(QpdfDocument const&) = delete;
  QpdfDocument& operator=(QpdfDocument const&) = delete;

  // As the document states it; or those that there are, if it states none.
  DWORD PageCount() const { return stated_pages_; }
  DWORD ListedPages() const { return static_cast<DWORD>(pages_.size()); }
  bool IsEncrypted() const { return qpdf_.isEncrypted(); }

  // Pages count from 0.
  QPDFObjectHandle Page(DWORD page) const { return pages_.at(page); }

  // A text of the description such as "Title", as UTF-8; empty if there is none.
  std::string Text(std::string const& key);

  QPDF& qpdf() { return qpdf_; }
  WorkBudget& budget() { return budget_; }

 private:
  explicit QpdfDocument(uint64_t bytes) : most_work_(bytes), budget_(bytes) {}
  // `process` makes libqpdf read the document.
  static std::unique_ptr<QpdfDocument> Read(uint64_t bytes,
                                            std::function<void(QPDF& qpdf)> const& process,
                                            std::string& problem);
  void Prepare();
  void List();
  void BoundObjectStreams();

  std::shared_ptr<std::string const> memory_;  // of a document there, which libqpdf goes on reading
  uint64_t most_work_;
  QPDF qpdf_;
  WorkBudget budget_;
  std::vector<QPDFObjectHandle> pages_;
  DWORD stated_pages_ = 0;
};

// Does `work`, which may use libqpdf. False with the reason in `problem` if it throws; memory
// problems pass through.
bool CatchDamage(std::function<void()> const& work, std::string& problem);

// Drops libqpdf's messages.
std::shared_ptr<QPDFLogger> SilentLogger();

// Why a name cannot be that of a document, with a remedy; empty if it can.
std::string NameProblem(std::string const& name);

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_QPDF_DOCUMENT_H_
