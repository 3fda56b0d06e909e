// Documents opened by libqpdf, without its messages and with its exceptions turned into problems.
#include "tools/documents/qpdf_document.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <new>
#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFLogger.hh>
#include <set>
#include <system_error>

#include "tools/cli/messages.h"
#include "tools/cli/text.h"
#include "tools/documents/document_source.h"
#include "tools/documents/stream_reader.h"
#include "tools/system/names.h"

namespace sorrelin::tool {
namespace {

constexpr size_t kHeaderBytes = 1024;  // that may come before the header
// Far beyond what documents of pictures need.
constexpr uint64_t kWork = uint64_t{64} << 20;
constexpr uint64_t kWorkPerByte = 64;
constexpr long long kMaxStatedPages = 0xFFFFFFFF;

uint64_t MostWork(uint64_t bytes) { return kWork + bytes * kWorkPerByte; }

std::string SystemProblem(int error) {
  bool const missing = error == ENOENT || error == ENOTDIR;
  return std::generic_category().message(error) + (missing ? " (check the name)"
                                                   : error == EACCES
                                                       ? " (make it readable)"
                                                       : " (see that it can be read)");
}

// Some files have other bytes in front.
bool IsPdf(std::ifstream& file) {
  std::string head(kHeaderBytes, '\0');
  file.read(head.data(), static_cast<std::streamsize>(head.size()));
  head.resize(static_cast<size_t>(file.gcount()));
  return head.find("%PDF-") != std::string::npos;
}

std::string OpenProblem(QPDFExc const& error) {
  if (error.getErrorCode() == qpdf_e_password) {
    return "is encrypted, and the password is not the one (--password-file names a file with it)";
  }
  if (error.getErrorCode() == qpdf_e_unsupported) {
    return "cannot be opened: " + error.getMessageDetail() + " (choose another document)";
  }
  return std::string("cannot be opened: it is damaged beyond repair") + kMendRemedy;
}

DWORD StatedPages(QPDF& qpdf, size_t listed) {
  QPDFObjectHandle count = qpdf.getRoot().getKey("/Pages").getKeyIfDict("/Count");
  if (!count.isInteger() || count.getIntValue() <= 0) return static_cast<DWORD>(listed);
  return static_cast<DWORD>(std::min(count.getIntValue(), kMaxStatedPages));
}

}  // namespace

std::shared_ptr<QPDFLogger> SilentLogger() {
  auto logger = QPDFLogger::create();
  logger->setInfo(logger->discard());
  logger->setWarn(logger->discard());
  logger->setError(logger->discard());
  return logger;
}

bool CatchDamage(std::function<void()> const& work, std::string& problem) {
  try {
    work();
    return true;
  } catch (std::bad_alloc const&) {
    throw;
  } catch (std::exception const&) {
    problem = "cannot be read: its objects are damaged";
    return false;
  }
}

std::string NameProblem(std::string const& name) {
  if (!Utf16(name)) return "the name is not valid UTF-8 (rename it)";
  if (IsDeviceName(PathOf(name))) return kDeviceProblem;
  std::string const cannot = "cannot be opened: ";
  std::error_code ignored;
  auto const status = std::filesystem::status(PathOf(name), ignored);
  if (is_directory(status)) return cannot + "it is a directory (name a document)";
  if (!exists(status) && name == "-") {
    return cannot + "documents are not read from standard input (save it as a file)";
  }
  if (exists(status) && !is_regular_file(status)) {
    return cannot + "it is not a regular file (save it as one)";
  }
  errno = 0;
  std::ifstream file(name, std::ios::binary);
  if (!file) return cannot + SystemProblem(errno);
  return IsPdf(file) ? "" : cannot + "it is not a PDF document (name one)";
}

void QpdfDocument::BoundObjectStreams() {
  std::set<int> numbers;
  for (auto const& [object, entry] : qpdf_.getXRefTable()) {
    if (entry.getType() == 2) numbers.insert(entry.getObjStreamNumber());
  }
  for (int const number : numbers) BoundObjectStream(qpdf_.getObject(number, 0));
}

void QpdfDocument::Prepare() {
  // A static and no std::call_once, which ends the process if its function throws while memory is
  // short: the C library then loads the unwinder.
  static bool const registered = (RegisterStreamFilters(), true);
  static_cast<void>(registered);
  // Libqpdf holds what an object stream inflates to several times over.
  constexpr uint64_t kShare = 4;
  SetObjectStreamBound(most_work_ / kShare);
  qpdf_.setLogger(SilentLogger());
  qpdf_.setSuppressWarnings(true);
}

void QpdfDocument::List() {
  BoundObjectStreams();
  pages_ = qpdf_.getAllPages();
  stated_pages_ = StatedPages(qpdf_, pages_.size());
}

std::unique_ptr<QpdfDocument> QpdfDocument::Read(uint64_t bytes,
                                                 std::function<void(QPDF& qpdf)> const& process,
                                                 std::string& problem) {
  std::unique_ptr<QpdfDocument> document(new QpdfDocument(MostWork(bytes)));
  try {
    document->Prepare();
    process(document->qpdf_);
    document->List();
    return document;
  } catch (QPDFExc const& error) {
    problem = OpenProblem(error);
  } catch (std::bad_alloc const&) {
    throw;
  } catch (std::exception const&) {
    problem = std::string("cannot be opened: it is damaged beyond repair") + kMendRemedy;
  }
  return nullptr;
}

std::unique_ptr<QpdfDocument> QpdfDocument::Open(std::string const& name,
                                                 std::string const& password,
                                                 std::string& problem) {
  problem = NameProblem(name);
  if (!problem.empty()) return nullptr;
  std::error_code error;
  uint64_t const bytes = std::filesystem::file_size(PathOf(name), error);
  auto const process = [&](QPDF& qpdf) {
    qpdf.processInputSource(std::make_shared<DocumentSource>(name), password.c_str());
  };
  return Read(error ? 0 : bytes, process, problem);
}

std::unique_ptr<QpdfDocument> QpdfDocument::OpenMemory(std::string const& bytes,
                                                       std::string& problem) {
  auto const copy = std::make_shared<std::string>(bytes);
  auto document = Read(
      bytes.size(),
      [&](QPDF& qpdf) { qpdf.processMemoryFile("memory", copy->data(), copy->size()); }, problem);
  if (document != nullptr) document->memory_ = copy;
  return document;
}

std::string QpdfDocument::Text(std::string const& key) {
  QPDFObjectHandle text = qpdf_.getTrailer().getKey("/Info").getKeyIfDict("/" + key);
  return text.isString() ? text.getUTF8Value() : "";
}

}  // namespace sorrelin::tool
