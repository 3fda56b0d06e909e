// sorrelin extract: the pictures of a document's pages as files.
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/cli/messages.h"
#include "tools/cli/output_file.h"
#include "tools/cli/progress.h"
#include "tools/cli/text.h"
#include "tools/documents/open_document.h"
#include "tools/documents/page_selection.h"
#include "tools/extract/page_transfer.h"
#include "tools/extract/picture_file.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

namespace fs = std::filesystem;

struct ExtractOptions {
  std::string document;
  PageSelection pages;
  std::string output;
  std::optional<FileFormat> format;
  bool force = false;
  bool quiet = false;
};

// In the child.
class DocumentPages : public PageSource {
 public:
  static std::unique_ptr<PageSource> Open(std::string const& name, std::string& problem) {
    auto document = OpenDocument::Open(name, problem);
    if (document == nullptr) return nullptr;
    problem = "is encrypted, which is not read (qpdf --decrypt in.pdf out.pdf)";
    if (document->IsEncrypted()) return nullptr;
    return std::unique_ptr<PageSource>(new DocumentPages(std::move(document)));
  }

  // The stated number may be any: what is not listed cannot be read.
  DWORD PageCount() override { return document_->ListedPages(); }

  bool Read(DWORD page, PictureSink& sink, std::string& problem) override {
    PageFacts const facts = document_->Judge(page);
    problem = facts.problem;
    bool const read = facts.image && document_->Decode(facts, sink, problem);
    if (!read) problem += kDrawRemedy;
    return read;
  }

 private:
  explicit DocumentPages(std::unique_ptr<OpenDocument> document) : document_(std::move(document)) {}

  std::unique_ptr<OpenDocument> document_;
};

// One run: pages come in, and files go out.
class Extract : public PageTarget {
 public:
  Extract(ExtractOptions const& options, FileFormat format, NamePattern const& pattern)
      : options_(options), format_(format), pattern_(pattern), progress_(!options.quiet) {}

  int Run() {
    std::string problem;
    if (!TransferPages(options_.document, DocumentPages::Open, *this, problem)) {
      Report(options_.document, problem);
    }
    if (shared_ != nullptr) FinishShared();
    return exit_code_;
  }

  std::vector<DWORD> Choose(DWORD count) const override { return options_.pages.Of(count); }

  bool Start(DWORD count) override {
    if (options_.pages.GoesBeyond(count)) {
      Report(options_.document,
             "has no more than " + std::to_string(count) + " pages to read (choose among them)");
    }
    wanted_ = Choose(count).size();
    if (wanted_ == 0 && count == 0)
      Report(options_.document, std::string("has no pages to read") + kMendRemedy);
    if (wanted_ == 0) return false;
    if (!IsShared()) return CheckNumber();
    shared_ = Open(pattern_.NameOf(0));
    if (shared_ != nullptr) shared_file_.emplace(shared_->path());
    return shared_ != nullptr;
  }

  bool Begin(PictureForm const& form) override {
    jpeg_.clear();
    return builder_.Begin(form);
  }
  bool Row(std::span<BYTE const> row) override { return builder_.Row(row); }
  bool TakesJpeg() const override { return format_ == FileFormat::kJpeg; }
  void Jpeg(std::span<BYTE const> file) override { jpeg_.assign(file.begin(), file.end()); }

  void Finish(DWORD page) override {
    if (!jpeg_.empty()) {
      std::vector<BYTE> const file = std::exchange(jpeg_, {});
      WriteOwn(page, [&](fs::path const& path, std::string& problem) {
        return WriteBytes(path, file, problem);
      });
      ShowProgress();
      return;
    }
    PixPtr const pix = builder_.Take();
    if (pix == nullptr) {
      Fail(page, "its picture has not come whole (close other programs)");
      return;
    }
    if (shared_ != nullptr) {
      AddToShared(page, pix.get());
    } else {
      WriteOwn(page, [&](fs::path const& path, std::string& problem) {
        return WritePicture(path, pix.get(), format_, problem);
      });
    }
    ShowProgress();
  }

  void Fail(DWORD page, std::string const& problem) override {
    jpeg_.clear();
    Report(options_.document, "page " + std::to_string(page + 1) + ": " + problem);
    ShowProgress();
  }

 private:
  // One file takes all pages.
  bool IsShared() const { return format_ == FileFormat::kTiff && !pattern_.HasNumber(); }

  bool CheckNumber() {
    if (pattern_.HasNumber() || wanted_ == 1) return true;
    Report(pattern_.NameOf(0), "is one name for " + std::to_string(wanted_) +
                                   " pages (%d in it stands for the page's number)");
    exit_code_ = kExitUsage;
    return false;
  }

  void Report(std::string const& name, std::string const& problem) {
    progress_.Clear();
    PrintProblem(name, problem);
    exit_code_ = kExitFailure;
  }

  void ShowProgress() {
    progress_.Update(static_cast<double>(++done_) / static_cast<double>(wanted_));
  }

  // Null, with the problem reported, if there can be no such file.
  std::unique_ptr<OutputFile> Open(std::string const& name) {
    std::string problem = "is the document itself (choose another name)";
    std::error_code error;
    bool const itself = fs::equivalent(name, options_.document, error) && !error;
    auto output = itself ? nullptr : OutputFile::Open(name, options_.force, problem);
    if (output == nullptr) Report(name, problem);
    return output;
  }

  // `write` takes the path and tells its problem.
  template <typename Write>
  void WriteOwn(DWORD page, Write write) {
    std::string const name = pattern_.NameOf(page + 1);
    auto const output = Open(name);
    if (output == nullptr) return;
    std::string problem;
    bool const written =
        write(output->path(), problem) && output->Commit(problem, Durability::kUsual);
    if (!written) Report(name, problem);
  }

  void AddToShared(DWORD page, Pix* pix) {
    std::string problem;
    if (AddTiffPage(*shared_file_, pix, problem)) {
      ++shared_pages_;
    } else {
      Fail(page, pattern_.NameOf(0) + ": " + problem);
    }
  }

  void FinishShared() {
    std::string problem =
        "is not written: it would have no pages (choose pages that hold one picture)";
    bool const written = shared_pages_ != 0 && shared_->Commit(problem, Durability::kUsual);
    if (!written) Report(pattern_.NameOf(0), problem);
  }

  ExtractOptions const& options_;
  FileFormat format_;
  NamePattern const& pattern_;
  Progress progress_;
  PictureBuilder builder_;
  std::vector<BYTE> jpeg_;  // the file that has come in place of rows
  std::unique_ptr<OutputFile> shared_;
  std::optional<TiffFile> shared_file_;
  size_t shared_pages_ = 0;
  size_t wanted_ = 0;
  size_t done_ = 0;
  int exit_code_ = kExitSuccess;
};

// A name that promises another kind of file gets no PNG.
FileFormat FormatOf(ExtractOptions const& options) {
  if (options.format) return *options.format;
  if (auto const format = FormatOfFile(options.output)) return *format;
  std::string const extension = fs::path(options.output).extension().string();
  if (extension.empty() || extension.find('%') != extension.npos) return FileFormat::kPng;
  throw UsageError("--output", extension + " is no format that is written: --format chooses one");
}

// Without a pattern, files get the document's name, in the current directory.
std::string PatternFor(ExtractOptions const& options, FileFormat format) {
  if (!options.output.empty()) return options.output;
  std::string const stem = PatternOf(fs::path(options.document).stem().string());
  return stem + (format == FileFormat::kTiff ? "" : "-%d") + ExtensionOf(format);
}

int RunExtract(ExtractOptions const& options) {
  FileFormat const format = FormatOf(options);
  auto const pattern = NamePattern::Parse(PatternFor(options, format));
  if (!pattern) {
    throw UsageError("--output", "takes %d once, for the page's number, and %% for a percent sign");
  }
  return Extract(options, format, *pattern).Run();
}

PageSelection ParsePages(std::string const& text) {
  auto const pages = PageSelection::Parse(text);
  if (!pages) throw UsageError("--pages", "takes pages as in 1-3,7 or 5-, not " + text);
  return *pages;
}

FileFormat ParseFormat(std::string const& text) {
  auto const format = FormatOfName(text);
  if (format) return *format;
  throw UsageError("--format", "takes png, tiff, bmp, pnm or jpeg, not " + text);
}

std::string ParsePattern(std::string const& text) {
  if (text.empty()) throw UsageError("--output", "is empty");
  if (!Utf16(text)) throw UsageError("--output", "is not valid UTF-8");
  if (text == "-") throw UsageError("--output", "standard output takes no pictures: name a file");
  return text;
}

constexpr char kFooter[] =
    R"(In a PATTERN, %d stands for the page's number, and %03d for three digits of it;
%% is a percent sign. The usual pattern is the document's name with -%d.png,
in the current directory. A TIFF file whose name has no number takes all pages,
as it does without a pattern. The pattern's extension tells the format, too.

Black and white stays black and white, a palette stays a palette, and the
resolution is kept. JPEG has neither 1 bit nor palettes; a picture that is
stored as JPEG comes as the file that it is. A page is read if it
consists of one picture, which comes as it is stored, without the turn of a
page that viewers show turned (info tells of it). What would come out wrong is
named and not written.

Exit status: 0 all is done; 1 a page or the document failed and was named, the
others are written; 2 the command line is wrong. Only a complete file gets its
name, and none is replaced without --force.

Examples:
  sorrelin extract scans.pdf
  sorrelin extract scans.pdf --pages 1-3,7 --output page%03d.tif
  sorrelin extract scans.pdf --format tiff --output all.tif)";

}  // namespace

void AddExtract(Program& program) {
  Verb verb = program.AddVerb("extract", "Write the pictures of a document's pages as files");
  auto const options = std::make_shared<ExtractOptions>();
  verb.Argument("FILE", options->document, "The document");
  verb.Option("--pages", "LIST", "Only these, as in 1-3,7",
              [options](std::string const& text) { options->pages = ParsePages(text); });
  verb.Option("--output", "PATTERN", "Names of the files",
              [options](std::string const& text) { options->output = ParsePattern(text); });
  verb.Option("--format", "KIND", "png, tiff, bmp, pnm or jpeg",
              [options](std::string const& text) { options->format = ParseFormat(text); });
  verb.Flag("--force", options->force, "Replace files that exist");
  verb.Flag("--quiet", options->quiet, "Show no progress bar");
  verb.Footer(kFooter);
  verb.Runs([options] { return RunExtract(*options); });
}

}  // namespace sorrelin::tool
