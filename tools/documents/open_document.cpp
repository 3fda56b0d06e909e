// Opens by the library, and looks into the trailer for what the library does not tell.
#include "tools/documents/open_document.h"

#include <sorrelin/frame/string_error.h>
#include <sorrelin/platform/error.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tools/cli/messages.h"
#include "tools/cli/text.h"

namespace sorrelin::tool {
namespace {

using Kind = PdfValue::Kind;

constexpr DWORD kMaxListedPages = 30'000;
constexpr size_t kHeaderBytes = 1024;  // may stand before the header
constexpr std::streamoff kTailBytes = 2048;
constexpr size_t kSectionBytes = size_t{1} << 16;
constexpr size_t kPieceBytes = size_t{1} << 16;
// Of judging the pages, in bytes: far beyond what documents of pictures need.
constexpr uint64_t kWork = uint64_t{64} << 20;
constexpr uint64_t kWorkPerByte = 64;
constexpr size_t kMaxTableBytes = size_t{4} << 20;

std::string ReadAt(std::ifstream& file, std::streamoff offset, size_t most) {
  std::string text(most, '\0');
  file.clear();
  file.seekg(offset);
  file.read(text.data(), static_cast<std::streamsize>(most));
  text.resize(static_cast<size_t>(std::max<std::streamsize>(file.gcount(), 0)));
  return text;
}

// The offset behind the last "startxref".
std::optional<std::streamoff> LastSection(std::ifstream& file) {
  file.seekg(0, std::ios::end);
  std::streamoff const size = file.tellg();
  std::string const tail =
      ReadAt(file, std::max<std::streamoff>(size - kTailBytes, 0), static_cast<size_t>(kTailBytes));
  size_t const at = tail.rfind("startxref");
  if (at == tail.npos) return std::nullopt;
  PdfValueReader reader(std::string_view(tail).substr(at + 9));
  auto const offset = reader.Read();
  if (!offset || offset->number < 0 || offset->number >= static_cast<double>(size)) {
    return std::nullopt;
  }
  return static_cast<std::streamoff>(offset->number);
}

// The trailer behind a table, or the dictionary of a cross-reference stream.
PdfValue TrailerOf(std::ifstream& file, std::streamoff section) {
  std::string text = ReadAt(file, section, kSectionBytes);
  if (!PdfValueReader(text).Skip("xref")) return ParseObject(text).value;
  size_t at = text.find("trailer");
  if (at == text.npos) {
    text = ReadAt(file, section, kMaxTableBytes);
    at = text.find("trailer");
  }
  if (at == text.npos) return {};
  return PdfValueReader(std::string_view(text).substr(at + 7)).Read().value_or(PdfValue{});
}

// Null if it cannot be read.
PdfValue LastTrailer(std::string const& name) {
  std::ifstream file(name, std::ios::binary);
  auto const section = LastSection(file);
  return section ? TrailerOf(file, *section) : PdfValue{};
}

// Whether the key stands anywhere in the file.
bool Mentions(std::ifstream& file, std::string_view key) {
  std::string text;
  for (std::streamoff at = 0;; at += static_cast<std::streamoff>(kPieceBytes)) {
    text = ReadAt(file, at, kPieceBytes + key.size());
    if (text.find(key) != text.npos) return true;
    if (text.size() <= kPieceBytes) return false;
  }
}

// The library finds its way in some documents whose trailer cannot be read strictly. What they say
// of encryption cannot be told then, so any mention of it counts.
bool HasEncryption(std::string const& name, PdfValue const& trailer) {
  std::ifstream file(name, std::ios::binary);
  if (trailer["Root"].Is(Kind::kNull)) return Mentions(file, "/Encrypt");
  return !trailer["Encrypt"].Is(Kind::kNull);
}

uint64_t MostWork(std::string const& name) {
  std::error_code error;
  uint64_t const size = std::filesystem::file_size(name, error);
  return kWork + (error ? 0 : size) * kWorkPerByte;
}

// The library throws on some damaged documents.
bool OpenFile(CCreatePDF& session, std::u16string const& name) {
  try {
    return session.OpenPDFFileW(name.c_str()) != 0;
  } catch (SorrelinStringError const&) {
    return false;
  }
}

std::string ErrorText(CCreatePDF& session) {
  char text[4096] = {};
  session.GetLastPDFErrorText(text);
  return text;
}

std::string SystemProblem() {
  DWORD const error = GetLastError();
  bool const missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
  return LastSystemError() + (missing                        ? " (check the name)"
                              : error == ERROR_ACCESS_DENIED ? " (make it readable)"
                                                             : " (see that it can be read)");
}

// Some files have other bytes in front.
bool IsPdf(std::string const& name) {
  std::ifstream file(name, std::ios::binary);
  return ReadAt(file, 0, kHeaderBytes).find("%PDF-") != std::string::npos;
}

// What is wrong with a name before anything is read; empty if nothing is. A document is read back
// and forth, and a pipe would be waited for.
std::string NameProblem(std::string const& name) {
  std::error_code ignored;
  auto const status = std::filesystem::status(name, ignored);
  if (is_directory(status)) return "it is a directory (name a document)";
  if (!exists(status)) {
    return name == "-" ? "documents are not read from standard input (save it as a file)" : "";
  }
  return is_regular_file(status) ? "" : "it is not a regular file (save it as one)";
}

// Why a document could not be opened, and what to do about it.
std::string OpenProblem(CCreatePDF& session, std::string const& name) {
  DWORD const error = session.PDF_GetLastError();
  if (error == PDF_ERROR_OPEN) return SystemProblem();
  if (!IsPdf(name)) return "it is not a PDF document (name one)";
  if (error == PDF_ERROR_VERSION) {
    return ErrorText(session) + " (qpdf --force-version=1.7 in.pdf out.pdf)";
  }
  bool const unclear = error == PDF_ERROR_NONE || error == PDF_ERROR_SYSTEM;
  return (unclear ? "it is damaged, or of a form that is not read" : ErrorText(session)) +
         kMendRemedy;
}

}  // namespace

std::unique_ptr<OpenDocument> OpenDocument::Open(std::string const& name, std::string& problem) {
  std::unique_ptr<OpenDocument> document(new OpenDocument);
  CCreatePDF& session = *document->session_;
  auto const wide = Utf16(name);
  if (!wide) {
    problem = "the name is not valid UTF-8 (rename it)";
    return nullptr;
  }
  if (std::string const unfit = NameProblem(name); !unfit.empty()) {
    problem = "cannot be opened: " + unfit;
    return nullptr;
  }
  session.PDF_SetLastError(PDF_ERROR_NONE);
  if (!OpenFile(session, *wide)) {
    problem = "cannot be opened: " + OpenProblem(session, name);
    return nullptr;
  }
  PdfValue const trailer = LastTrailer(name);
  document->encrypted_ = HasEncryption(name, trailer);
  document->whole_trailer_ = !trailer["Root"].Is(Kind::kNull);
  document->judge_ = std::make_unique<PageJudge>(session, MostWork(name));
  return document;
}

DWORD OpenDocument::ListedPages() const {
  DWORD pages = std::min(PageCount(), kMaxListedPages);
  while (pages > 0 && session_->GetPageObjectNumber(pages - 1) == 0) --pages;
  return pages;
}

PageFacts OpenDocument::Judge(DWORD page) const {
  try {
    return judge_->Judge(session_->GetPageObjectNumber(page));
  } catch (SorrelinStringError const&) {
    PageFacts facts;
    facts.problem = "cannot be read: its objects are damaged";
    return facts;
  }
}

std::string OpenDocument::Text(Getter getter) const {
  if (encrypted_) return {};
  DWORD units = 0;
  (session_.get()->*getter)(nullptr, &units);
  std::u16string text(units, u'\0');
  if (units == 0 || (session_.get()->*getter)(text.data(), &units) == 0) return {};
  text.resize(std::min(text.find(u'\0'), text.size()));
  return Utf8(text);
}

std::string OpenDocument::Title() const { return Text(&CCreatePDF::GetTitleW); }
std::string OpenDocument::Author() const { return Text(&CCreatePDF::GetAuthorW); }
std::string OpenDocument::Subject() const { return Text(&CCreatePDF::GetSubjectW); }
std::string OpenDocument::Keywords() const { return Text(&CCreatePDF::GetKeywordsW); }

}  // namespace sorrelin::tool
