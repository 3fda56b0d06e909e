// Adds pages to a document. The library does so whatever else the document holds, so it is judged
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
#include "tools/documents/child_function.h"
#include "tools/documents/document_form.h"
#include "tools/documents/file_hold.h"
#include "tools/documents/open_document.h"
#include "tools/make/add_texts.h"
#include "tools/make/make_document.h"
#include "tools/make/pages/page_adder.h"

namespace sorrelin::tool {
namespace {

namespace fs = std::filesystem;

struct Judgement {
  unsigned pages = 0;   // as the document states it
  unsigned listed = 0;  // that can be reached
};

// What children do.

std::optional<std::string> JudgeHere(std::string const& name, std::string& problem) {
  auto const document = OpenDocument::Open(name, problem);
  if (document == nullptr) {
    problem += kRewriteHint;
    return std::nullopt;
  }
  return std::to_string(document->PageCount()) + " " + std::to_string(document->ListedPages());
}

std::optional<std::string> FormHere(std::string const& name, std::string& problem) {
  auto const form = ReadForm(name, problem);
  if (!form) return std::nullopt;
  return std::string(form->encrypted ? "e" : "-") + (form->has_signatures ? "s" : "-") +
         form->obstacle + "\n" + form->catalog_keys;
}

std::optional<std::string> DoneIf(bool done) {
  return done ? std::optional<std::string>("") : std::nullopt;
}

std::optional<std::string> CheckHere(std::string const& name, unsigned const& pages, std::string&) {
  return DoneIf(IsSound(name, pages));
}

std::optional<std::string> RewriteHere(std::string const& from, std::string const& to,
                                       std::string& problem) {
  return DoneIf(RewriteDocument(from, to, problem));
}

std::optional<std::string> RestoreHere(std::string const& from, std::string const& catalog_keys,
                                       std::string const& to, std::string& problem) {
  return DoneIf(RestoreCatalog(from, catalog_keys, to, problem));
}

using Text = std::string;
ChildFunction<Text> const kJudge("judge", JudgeHere);
ChildFunction<Text> const kReadForm("read form", FormHere);
ChildFunction<Text, unsigned> const kCheck("check", CheckHere);
ChildFunction<Text, Text> const kRewrite("rewrite", RewriteHere);
ChildFunction<Text, Text, Text> const kRestore("restore catalog", RestoreHere);

// nullopt with the reason in `problem` if the library cannot read the document.
std::optional<Judgement> Judge(fs::path const& path, std::string& problem) {
  auto const answer = AskChild(kJudge.With(path.string()), problem);
  Judgement found;
  if (!answer || std::sscanf(answer->c_str(), "%u %u", &found.pages, &found.listed) != 2) {
    return std::nullopt;
  }
  return found;
}

// What libqpdf says of a document; nothing is known against one that it cannot read.
DocumentForm FormOf(fs::path const& path) {
  std::string ignored;
  auto const answer = AskChild(kReadForm.With(path.string()), ignored);
  DocumentForm form;
  if (!answer || answer->size() < 3) return form;
  size_t const line_end = answer->find('\n');
  form.encrypted = (*answer)[0] == 'e';
  form.has_signatures = (*answer)[1] == 's';
  form.obstacle = answer->substr(2, line_end - 2);
  form.catalog_keys = answer->substr(line_end + 1);
  return form;
}

// Why pages are not added, whatever is done; empty if they can be.
std::string RefusalOf(DocumentForm const& form) {
  if (form.encrypted) return "is encrypted, and takes no pages (qpdf --decrypt in.pdf out.pdf)";
  if (form.has_signatures) {
    return "is signed, and a change would void the signature (append to an unsigned copy)";
  }
  return "";
}

class Update {
 public:
  explicit Update(UpdateOptions const& options) : options_(options) {
    adder_.emplace(options.pages);
  }

  int Run() {
    std::string problem;
    bool const changed = CheckTexts(options_.pages, *adder_) &&
                         (options_.in_place ? ChangeInPlace(problem) : ChangeCopy(problem));
    if (!changed && !problem.empty()) adder_->ReportDocument(problem);
    if (changed) NoteWritten();
    adder_->Finish();
    bool const done = changed || adder_->IsAllBlank();
    return done && !adder_->failed() ? kExitSuccess : kExitFailure;
  }

 private:
  // Each of these says in `problem` why it failed, unless that has been reported, or all pages are
  // blank.

  bool ChangeCopy(std::string& problem) {
    FileHold hold(PathOf(options_.pages.output));
    if (!hold.IsHeld()) return problem = FileHold::Problem(), false;
    auto output = OutputFile::OpenCopy(options_.pages.output, problem);
    if (output != nullptr && !AddPages(output->path(), problem)) {
      std::string const obstacle = problem;
      if (!MayRewrite()) return false;
      adder_.emplace(options_.pages);
      output.reset();
      output = OutputFile::OpenCopy(options_.pages.output, problem);
      if (output != nullptr && !AddToRewritten(output->path(), problem)) return false;
      if (output != nullptr) SayRewritten(obstacle);
    }
    if (output != nullptr &&
        !AddTexts(output->path(), pages_ - added_, pages_, options_.pages, *adder_, problem)) {
      return false;
    }
    hold.ReleaseForReplacing();
    if (output != nullptr && output->Commit(problem)) return true;
    problem = "is as it was, because its copy " + problem + " (--in-place needs no copy)";
    return false;
  }

  bool ChangeInPlace(std::string& problem) {
    fs::path const path = PathOf(options_.pages.output);
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
    // Pages go after the old bytes and change none of them.
    if (begun_) fs::resize_file(path, size, error);
    return false;
  }

  // Whether the form of the document was in the way, and may be changed. Pictures that have failed
  // would be reported twice.
  bool MayRewrite() const { return form_is_unfit_ && !options_.no_rewrite && !adder_->failed(); }

  bool AddPages(fs::path const& path, std::string& problem) {
    DocumentForm const form = FormOf(path);
    problem = RefusalOf(form);
    if (!problem.empty()) return false;
    form_is_unfit_ = true;
    if (!form.obstacle.empty()) return problem = form.obstacle, false;
    return AddByLibrary(path, problem);
  }

  bool AddByLibrary(fs::path const& path, std::string& problem) {
    auto const before = Judge(path, problem);
    if (!before || !WritePages(path, problem)) return false;
    auto const after = Judge(path, problem);
    if (!after) return false;
    pages_ = after->pages;
    bool const listed =
        after->pages == before->pages + added_ && after->listed == before->listed + added_;
    std::string ignored;
    if (listed && AskChild(kCheck.With(path.string(), pages_), ignored)) return true;
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
    form_is_unfit_ = false;
    if (!adder_->AddImages(document)) return false;
    added_ = document.PageCount() - old;
    if (added_ == 0 && adder_->IsAllBlank()) return false;
    if (added_ == 0) {
      return problem = "is as it was: there is no page to add (name pictures)", false;
    }
    form_is_unfit_ = true;
    return document.Finish(problem);
  }

  bool AddToRewritten(fs::path const& path, std::string& problem) {
    fs::path const other = path.parent_path() / kSecondCopy;
    auto const exchange = [&](ChildWork const& write) {
      bool const written = AskChild(write, problem).has_value();
      std::error_code error;
      if (written) fs::rename(other, path, error);
      if (!written || error) fs::remove(other, error);
      return written && !error;
    };
    std::string const from = path.string();
    std::string const to = other.string();
    if (!exchange(kRewrite.With(from, to))) return false;
    DocumentForm const form = FormOf(path);
    if (!AddByLibrary(path, problem)) return false;
    return exchange(kRestore.With(from, form.catalog_keys, to));
  }

  // The run says why the document is not its old bytes with others after them.
  void SayRewritten(std::string const& obstacle) const {
    if (options_.pages.quiet) return;
    std::string const reason =
        obstacle.substr(0, obstacle.find(" (")).substr(0, obstacle.find(','));
    PrintProblem(options_.pages.output, "was rewritten for the new pages: it " + reason);
  }

  void NoteWritten() {
    std::error_code ignored;
    adder_->NoteWritten(pages_, fs::file_size(PathOf(options_.pages.output), ignored));
  }

  static constexpr char kSecondCopy[] = "rewritten.pdf";

  UpdateOptions const& options_;
  std::optional<PageAdder> adder_;
  unsigned pages_ = 0;  // of the document, the old ones included
  unsigned added_ = 0;
  bool begun_ = false;          // the document may have been written to
  bool form_is_unfit_ = false;  // what failed, failed for the document's form
};

}  // namespace

int UpdateDocument(UpdateOptions const& options) { return Update(options).Run(); }

int AppendPages(UpdateOptions const& options) {
  std::string const& name = options.pages.output;
  fs::path const path = PathOf(name);
  std::error_code error;
  fs::file_status const status = fs::status(path, error);
  if (fs::is_symlink(fs::symlink_status(path, error)) && !fs::exists(status)) {
    PrintProblem(name, "is a link to a file that does not exist (remove it, or name the file)");
    return kExitFailure;
  }
  if (status.type() == fs::file_type::not_found) {
    return MakeDocument({options.pages, options.description, false, true});
  }
  if (fs::exists(status) && status.type() != fs::file_type::regular) {
    PrintProblem(name, "is not a regular file (choose another name)");
    return kExitFailure;
  }
  return UpdateDocument(options);
}

}  // namespace sorrelin::tool
