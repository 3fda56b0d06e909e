// The library adds pages without a look at what else the document holds, so the document is judged
// before and after.
#include "tools/make/update_document.h"

#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

#include "tools/cli/messages.h"
#include "tools/cli/output_file.h"
#include "tools/cli/text.h"
#include "tools/documents/child.h"
#include "tools/documents/file_hold.h"
#include "tools/documents/open_document.h"
#include "tools/make/add_texts.h"
#include "tools/make/page_adder.h"

namespace sorrelin::tool {
namespace {

namespace fs = std::filesystem;

struct Judgement {
  unsigned pages = 0;   // as the document states it
  unsigned listed = 0;  // that can be reached
  unsigned whole_trailer = 0;
};

std::optional<std::string> JudgeHere(std::string const& name, std::string& problem) {
  auto const document = OpenDocument::Open(name, problem);
  if (document == nullptr) {
    problem += kRewriteHint;
    return std::nullopt;
  }
  if (document->IsEncrypted()) {
    problem = "is encrypted, and takes no pages (qpdf --decrypt in.pdf out.pdf)";
    return std::nullopt;
  }
  return std::to_string(document->PageCount()) + " " + std::to_string(document->ListedPages()) +
         " " + std::to_string(document->HasWholeTrailer() ? 1 : 0);
}

// Nothing with the reason in `problem` if the document cannot be read.
std::optional<Judgement> Judge(fs::path const& path, std::string& problem) {
  auto const answer =
      AskChild([&](std::string& reason) { return JudgeHere(path.string(), reason); }, problem);
  Judgement found;
  if (!answer || std::sscanf(answer->c_str(), "%u %u %u", &found.pages, &found.listed,
                             &found.whole_trailer) != 3) {
    return std::nullopt;
  }
  return found;
}

class Update {
 public:
  explicit Update(UpdateOptions const& options) : options_(options), adder_(options.pages) {}

  int Run() {
    std::string problem;
    bool const changed = CheckTexts(options_.pages, adder_) &&
                         (options_.in_place ? ChangeInPlace(problem) : ChangeCopy(problem));
    if (!changed && !problem.empty()) adder_.ReportDocument(problem);
    if (changed) NoteWritten();
    adder_.Finish();
    return changed && !adder_.failed() ? kExitSuccess : kExitFailure;
  }

 private:
  // Each of these tells in `problem` why it failed, unless that has been reported.

  bool ChangeCopy(std::string& problem) {
    FileHold const hold(options_.pages.output);
    if (!hold.IsHeld()) return problem = FileHold::Problem(), false;
    auto const output = OutputFile::OpenCopy(options_.pages.output, problem);
    if (output != nullptr && !AddPages(output->path(), problem)) return false;
    if (output != nullptr &&
        !AddTexts(output->path(), pages_ - added_, pages_, options_.pages, adder_, problem)) {
      return false;
    }
    if (output != nullptr && output->Commit(problem)) return true;
    problem = "is as it was, because its copy " + problem + " (--in-place needs no copy)";
    return false;
  }

  bool ChangeInPlace(std::string& problem) {
    fs::path const path = options_.pages.output;
    FileHold hold(path);
    if (!hold.IsHeld()) return problem = FileHold::Problem(), false;
    std::error_code error;
    uintmax_t const size = fs::file_size(path, error);
    if (error) return problem = "cannot be changed: " + error.message() + kRoomRemedy, false;
    hold.Release();
    if (AddPages(path, problem)) {
      if (FlushFile(path)) return true;
      problem = "cannot be written: " + LastSystemError() + kRoomRemedy;
    }
    // Pages go behind the old bytes and change none of them.
    if (begun_) fs::resize_file(path, size, error);
    return false;
  }

  bool AddPages(fs::path const& path, std::string& problem) {
    auto const before = Judge(path, problem);
    if (!before || !WritePages(path, problem)) return false;
    auto const after = Judge(path, problem);
    if (!after) return false;
    pages_ = after->pages;
    bool const listed =
        after->pages == before->pages + added_ && after->listed == before->listed + added_;
    if (listed && after->whole_trailer != 0) return true;
    problem = std::string(listed ? "has a trailer that a change would damage"
                                 : "has a page tree that takes no pages") +
              kRewriteHint;
    return false;
  }

  bool WritePages(fs::path const& path, std::string& problem) {
    Document document;
    if (!document.Update(path, problem)) return false;
    begun_ = true;
    unsigned const old = document.PageCount();
    if (!adder_.AddImages(document)) return false;
    added_ = document.PageCount() - old;
    if (added_ == 0)
      return problem = "is as it was: there is no page to add (name pictures)", false;
    return document.Finish(problem);
  }

  void NoteWritten() {
    std::error_code ignored;
    adder_.NoteWritten(pages_, fs::file_size(options_.pages.output, ignored));
  }

  UpdateOptions const& options_;
  PageAdder adder_;
  unsigned pages_ = 0;  // of the document, the old ones included
  unsigned added_ = 0;
  bool begun_ = false;  // the document may have been written to
};

}  // namespace

int UpdateDocument(UpdateOptions const& options) { return Update(options).Run(); }

}  // namespace sorrelin::tool
