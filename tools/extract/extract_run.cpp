// The readers of one run. Reader j of n takes every n-th page from the j-th on; what they share is
// guarded by one mutex.
#include "tools/extract/extract_run.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <optional>
#include <set>
#include <system_error>
#include <tuple>

#include "tools/cli/command_line.h"
#include "tools/cli/messages.h"
#include "tools/cli/output_file.h"
#include "tools/cli/progress.h"
#include "tools/cli/text.h"
#include "tools/documents/child_function.h"
#include "tools/extract/extract_report.h"
#include "tools/formats/tiff/tiff_file.h"

namespace sorrelin::tool {
namespace {

namespace fs = std::filesystem;

// What all readers write to.
class ExtractRun {
 public:
  explicit ExtractRun(ExtractOptions const& options)
      : options_(options), progress_(!options.quiet) {
    report_.document = options.files.document;
  }

  ExtractOptions const& options() const { return options_; }
  // One file takes all pages.
  bool IsShared() const {
    return options_.files.format == FileFormat::kTiff && !options_.pattern.HasPage() &&
           !options_.pattern.HasPicture();
  }

  // False if nothing is to be read. The first reader that asks settles it.
  bool Start(DWORD count) {
    std::lock_guard const lock(mutex_);
    if (!started_) started_ = Prepare(count);
    return *started_;
  }

  void Report(std::string const& name, DWORD page, std::string const& problem) {
    std::lock_guard const lock(mutex_);
    ReportHere(name, page, problem);
  }

  void NoteWritten(WrittenFile const& file) {
    std::lock_guard const lock(mutex_);
    report_.files.push_back(file);
  }

  void NotePage() {
    std::lock_guard const lock(mutex_);
    progress_.Update(static_cast<double>(++done_) / static_cast<double>(wanted_));
  }

  // Null, with the problem reported, if there can be no such file.
  std::unique_ptr<OutputFile> Open(std::string const& name) {
    std::string problem;
    auto output = TryOpen(name, problem);
    if (output == nullptr) Report(name, 0, problem);
    return output;
  }

  // Adds a page to the file that takes all of them.
  bool AddShared(std::span<BYTE const> page, std::string& problem) {
    bool const added = shared_file_->Add(page, problem);
    if (added) ++shared_pages_;
    return added;
  }

  int Finish() {
    if (shared_ != nullptr) FinishShared();
    progress_.Clear();
    if (options_.json) std::fputs(JsonOf(report_).c_str(), stdout);
    return exit_code_;
  }

 private:
  bool Prepare(DWORD count) {
    std::string const& document = options_.files.document;
    if (options_.pages.GoesBeyond(count)) {
      ReportHere(
          document, 0,
          "has no more than " + std::to_string(count) + " pages to read (choose among them)");
    }
    wanted_ = options_.pages.Of(count).size();
    if (wanted_ == 0 && count == 0) {
      ReportHere(document, 0, std::string("has no pages to read") + kMendRemedy);
    }
    if (wanted_ == 0) return false;
    return IsShared() ? OpenShared() : CheckNumbers();
  }

  std::unique_ptr<OutputFile> TryOpen(std::string const& name, std::string& problem) const {
    problem = "is the document itself (choose another name)";
    std::error_code error;
    bool const itself =
        fs::equivalent(PathOf(name), PathOf(options_.files.document), error) && !error;
    return itself ? nullptr : OutputFile::Open(name, options_.force, problem);
  }

  // With the mutex held.
  bool OpenShared() {
    std::string problem;
    shared_ = TryOpen(options_.pattern.NameOf(0), problem);
    if (shared_ == nullptr) {
      ReportHere(options_.pattern.NameOf(0), 0, problem);
    } else {
      shared_file_.emplace(shared_->path());
    }
    return shared_ != nullptr;
  }

  bool CheckNumbers() {
    if (options_.pattern.HasPage() || wanted_ == 1) return true;
    ReportHere(options_.pattern.NameOf(0), 0,
               "is one name for " + std::to_string(wanted_) +
                   " pages (%d in it stands for the page's number)");
    exit_code_ = kExitUsage;
    return false;
  }

  // With the mutex held.
  void ReportHere(std::string const& name, DWORD page, std::string const& problem) {
    progress_.Clear();
    std::string const place = page == 0 ? "" : "page " + std::to_string(page) + ": ";
    PrintProblem(name, place + problem);
    report_.problems.push_back({name, page, problem});
    exit_code_ = kExitFailure;
  }

  void FinishShared() {
    // Some systems give open files no other name.
    shared_file_.reset();
    std::string problem =
        "is not written: it would have no pages (choose pages that hold one picture)";
    bool const written = shared_pages_ != 0 && shared_->Commit(problem, Durability::kUsual);
    if (written) return;
    report_.files.clear();
    ReportHere(options_.pattern.NameOf(0), 0, problem);
  }

  ExtractOptions const& options_;
  std::mutex mutex_;
  Progress progress_;
  ExtractReport report_;
  std::optional<bool> started_;
  std::unique_ptr<OutputFile> shared_;
  std::optional<TiffFile> shared_file_;
  size_t shared_pages_ = 0;
  size_t wanted_ = 0;
  size_t done_ = 0;
  int exit_code_ = kExitSuccess;
};

// A file that takes bytes at their places.
class PlacedFile {
 public:
  explicit PlacedFile(fs::path const& path) { file_.open(path, std::ios::binary | std::ios::out); }

  void Write(uint64_t place, std::span<BYTE const> bytes) {
    errno = 0;
    if (place != place_) file_.seekp(static_cast<std::streamoff>(place));
    file_.write(reinterpret_cast<char const*>(bytes.data()),
                static_cast<std::streamsize>(bytes.size()));
    place_ = place + bytes.size();
    size_ = std::max(size_, place_);
    if (!file_ && error_ == 0) error_ = errno != 0 ? errno : EIO;
  }

  // False with the reason in `problem`.
  bool Close(std::string& problem) {
    errno = 0;
    file_.close();
    if (!file_ && error_ == 0) error_ = errno != 0 ? errno : EIO;
    if (error_ == 0) return true;
    problem = "cannot be written: " + std::generic_category().message(error_) + kRoomRemedy;
    return false;
  }

  uint64_t size() const { return size_; }

 private:
  std::ofstream file_;
  uint64_t place_ = 0, size_ = 0;
  int error_ = 0;
};

// The pages of one reader.
struct Share {
  PageSelection pages;
  size_t job = 0;
  size_t jobs = 1;

  std::vector<DWORD> Of(DWORD count) const {
    std::vector<DWORD> const all = pages.Of(count);
    std::vector<DWORD> own;
    for (size_t i = job; i < all.size(); i += jobs) own.push_back(all[i]);
    return own;
  }

  template <typename Self>
  static auto Fields(Self& self) {
    return std::tie(self.pages, self.job, self.jobs);
  }
};

void ReadPages(ParentLink& link, FileOptions const& files, Share const& share,
               ReadOrder const& order) {
  auto const open = [&](std::string& problem) { return PageFiles::Open(files, problem); };
  SendPages(
      link, open, [&](DWORD count) { return share.Of(count); }, order);
}

ChildFunction<FileOptions, Share, ReadOrder> const kReadPages("read pages", ReadPages);

// One reader's share of the pages: pictures come in, and files go out.
class ExtractJob : public PageTarget {
 public:
  ExtractJob(ExtractRun& run, size_t job, size_t jobs)
      : run_(run), share_{run.options().pages, job, jobs} {}

  void Run() {
    auto const reader = [this](ReadOrder const& order) {
      return kReadPages.With(run_.options().files, share_, order);
    };
    std::string problem;
    if (!TransferPages(reader, *this, problem)) problem_ = problem;
  }
  std::string const& problem() const { return problem_; }

  std::vector<DWORD> Choose(DWORD count) const override { return share_.Of(count); }

  bool Start(DWORD count) override { return run_.Start(count); }

  void Begin(DWORD page, PictureHead const& head) override {
    Drop();
    written_ = {run_.options().pattern.NameOf(page + 1, head.picture), page + 1, head, 0};
    if (run_.options().files.format == FileFormat::kKeep) written_.name += head.extension;
    if (run_.IsShared()) return;
    output_ = run_.Open(written_.name);
    if (output_ != nullptr) file_.emplace(output_->path());
  }

  void Write(uint64_t place, std::span<BYTE const> bytes) override {
    if (file_) file_->Write(place, bytes);
    if (!run_.IsShared()) return;
    if (page_.size() < place + bytes.size())
      page_.resize(static_cast<size_t>(place) + bytes.size());
    std::copy(bytes.begin(), bytes.end(), page_.begin() + static_cast<ptrdiff_t>(place));
  }

  void Finish() override {
    std::string problem;
    if (run_.IsShared()) {
      written_.bytes = page_.size();
      if (run_.AddShared(page_, problem)) {
        run_.NoteWritten(written_);
      } else {
        run_.Report(run_.options().files.document, written_.page, written_.name + ": " + problem);
      }
    } else if (output_ != nullptr) {
      written_.bytes = file_->size();
      bool const kept = file_->Close(problem) && output_->Commit(problem, Durability::kUsual);
      if (kept) {
        run_.NoteWritten(written_);
      } else {
        run_.Report(written_.name, 0, problem);
      }
    }
    Drop();
  }

  void Fail(DWORD page, DWORD picture, std::string const& problem) override {
    Drop();
    std::string const place = picture == 0 ? "" : "picture " + std::to_string(picture) + ": ";
    run_.Report(run_.options().files.document, page + 1, place + problem);
  }

  void EndPage(DWORD) override { run_.NotePage(); }

 private:
  void Drop() {
    file_.reset();
    output_.reset();
    page_.clear();
  }

  ExtractRun& run_;
  Share share_;
  WrittenFile written_;
  std::unique_ptr<OutputFile> output_;
  std::optional<PlacedFile> file_;
  std::vector<BYTE> page_;  // of the file that takes all pages
  std::string problem_;     // of the document
};

}  // namespace

int ExtractPictures(ExtractOptions const& options) {
  ExtractRun run(options);
  size_t const count = run.IsShared() ? 1 : static_cast<size_t>(options.jobs);
  std::vector<std::unique_ptr<ExtractJob>> jobs;
  for (size_t i = 0; i < count; ++i) jobs.push_back(std::make_unique<ExtractJob>(run, i, count));
  RunSideBySide(count, [&](size_t i) { jobs[i]->Run(); });
  // What is wrong with the document, each reader has found.
  std::set<std::string> problems;
  for (auto const& job : jobs) {
    if (!job->problem().empty()) problems.insert(job->problem());
  }
  for (std::string const& problem : problems) run.Report(options.files.document, 0, problem);
  return run.Finish();
}

}  // namespace sorrelin::tool
