// Runs a batch: each thread takes the next line, decides what is to be done, and has a child do it.
#include "tools/batch/batch_run.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <sstream>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "tools/batch/list_line.h"
#include "tools/batch/output_lock.h"
#include "tools/batch/results_file.h"
#include "tools/cli/command_line.h"
#include "tools/cli/interrupt.h"
#include "tools/cli/messages.h"
#include "tools/cli/progress.h"
#include "tools/cli/text.h"
#include "tools/documents/child_function.h"
#include "tools/make/make_document.h"
#include "tools/system/names.h"

namespace sorrelin::tool {
namespace {

namespace fs = std::filesystem;

using Clock = std::chrono::steady_clock;

constexpr char kKept[] = "kept";  // done by an earlier run; has no line of results

// What a child reports: pages and bytes, and then the problems, each with its end.
constexpr char kEnd = '\0';

std::string TextOf(RunReport::Problem const& problem) {
  std::string const page = problem.page > 0 ? "page " + std::to_string(problem.page) + ": " : "";
  return problem.name + ": " + page + problem.text;
}

std::string Packed(RunReport const& report) {
  auto const written = report.written().value_or(RunReport::Written{});
  std::string text = std::to_string(written.pages) + " " + std::to_string(written.bytes) + kEnd;
  for (RunReport::Problem const& problem : report.problems()) text += TextOf(problem) + kEnd;
  return text;
}

void Unpack(std::string const& text, Result& result) {
  std::istringstream lines(text);
  std::string numbers;
  std::getline(lines, numbers, kEnd);
  std::istringstream(numbers) >> result.pages >> result.bytes;
  for (std::string line; std::getline(lines, line, kEnd);) result.problems.push_back(line);
  result.state = result.pages == 0 ? kFailed : result.problems.empty() ? kMade : kIncomplete;
}

std::optional<std::string> MakeHere(MakeOptions const& options) {
  TidyUpOnInterrupt();
  RunReport report;
  MakeDocument(options, &report);
  return Packed(report);
}

std::optional<std::string> MakeLine(std::string const& line, bool const& force, std::string&) {
  MakeOptions options = LineParser().Parse(line).options;
  options.force = force;
  return MakeHere(options);
}

ChildFunction<std::string, bool> const kMakeLine("make the document of a line", MakeLine);

// Makes the document of this line.
void MakeInChild(std::string const& line, MakeOptions const& options, Result& result) {
  ChildWork work = kMakeLine.With(line, options.force);
  // A copy of this process knows the options already.
  work.run = [&](ParentLink& link) {
    SendAnswer(link, [&](std::string&) { return MakeHere(options); });
  };
  std::string problem;
  auto const answer = AskChild(work, problem);
  if (answer) return Unpack(*answer, result);
  bool const ended = problem == kEndedReader || problem == kSilentReader;
  result.problems.push_back(options.pages.output + ": " +
                            (ended ? "its process has ended early (sorrelin make says more of it)"
                                   : "cannot be made: " + problem + " (run this again)"));
}

std::optional<uint64_t> SizeOf(std::string const& name) {
  std::error_code error;
  auto const size = fs::file_size(PathOf(name), error);
  return error ? std::nullopt : std::optional<uint64_t>(size);
}

class Batch {
 public:
  Batch(BatchOptions const& options, ListFile& list, ResultsFile& results)
      : options_(options),
        list_bytes_(SizeOf(options.list).value_or(0)),
        list_(list),
        results_(results),
        progress_(!options.quiet, true) {}

  int Run() {
    RunSideBySide(static_cast<size_t>(options_.jobs), [this](size_t) {
      LineParser parser;
      while (auto const line = Next()) Work(*line, parser);
    });
    progress_.Clear();
    if (!list_.problem().empty()) PrintProblem(options_.list, list_.problem());
    if (!options_.quiet) PrintNote(Summary());
    return AllIsDone() ? kExitSuccess : kExitFailure;
  }

 private:
  std::optional<ListLine> Next() {
    std::lock_guard const lock(mutex_);
    if (stopped_) return std::nullopt;
    if (list_bytes_ > 0) {
      progress_.Update(static_cast<double>(list_.position()) / static_cast<double>(list_bytes_));
    }
    return list_.Next();
  }

  void Work(ListLine const& line, LineParser& parser) {
    Result result;
    result.line = line.number;
    try {
      if (!line.problem.empty()) throw UsageError(line.problem);
      ListDocument document = parser.Parse(line.text);
      result.output = document.options.pages.output;
      result.signature = document.signature;
      ClaimName(result);
      Make(line.text, document.options, result);
    } catch (UsageError const& error) {
      result.state = kBroken;
      result.output.clear();
      result.problems.push_back(options_.list + ": line " + std::to_string(line.number) + ": " +
                                error.what() + " (mend the line and run this again)");
      Record(result);
    }
  }

  // Two lines of a list cannot make one document.
  void ClaimName(Result const& result) {
    std::lock_guard const lock(mutex_);
    auto const [place, is_new] =
        claimed_.emplace(NameToCompare(PathOf(result.output)), result.line);
    if (is_new) return;
    throw UsageError(result.output, "is the output of line " + std::to_string(place->second));
  }

  void Make(std::string const& line, MakeOptions& options, Result& result) {
    OutputLock lock(result.output);
    auto const before = results_.Find(result.output);
    auto const size = SizeOf(result.output);
    bool const force = options.force || options_.force;
    bool const is_as_recorded = before && size == before->bytes;
    bool const is_current = is_as_recorded && !lock.WasThere() && before->whole &&
                            before->signature == result.signature;
    if (is_current && !force) return Count(kKept);
    std::string problem;
    if (size && !force && !is_as_recorded && !lock.WasThere()) {
      problem = before ? "has been changed since it was made (--force replaces it)"
                       : "exists already, and no result names it (--force replaces it)";
    } else if (auto const taken = lock.Take(problem); taken == OutputLock::Taken::kYes) {
      options.force = size.has_value();
      MakeInChild(line, options, result);
    } else if (taken == OutputLock::Taken::kBusy) {
      result.state = kBusy;
    }
    if (!problem.empty()) result.problems.push_back(result.output + ": " + problem);
    if (Record(result)) lock.Remove();
  }

  // False if nothing can be recorded any more: no further document is begun then.
  bool Record(Result& result) {
    std::chrono::duration<double> const time = Clock::now() - result.start;
    result.seconds = time.count();
    std::string problem;
    std::lock_guard const lock(mutex_);
    ++counts_[std::string(result.state)];
    if (!result.problems.empty()) progress_.Clear();
    for (std::string const& text : result.problems) PrintNote(text);
    if (stopped_) return false;
    stopped_ = !results_.Add(result, problem);
    if (stopped_) PrintProblem(options_.results, problem);
    return !stopped_;
  }

  void Count(char const* state) {
    std::lock_guard const lock(mutex_);
    ++counts_[state];
  }

  // "list.jsonl: 120 made, 3 kept, 1 failed".
  std::string Summary() const {
    std::string text;
    for (char const* const state : {kMade, kKept, kIncomplete, kFailed, kBusy, kBroken}) {
      auto const found = counts_.find(state);
      if (found == counts_.end()) continue;
      text += (text.empty() ? "" : ", ") + std::to_string(found->second) + " " + state;
    }
    return options_.list + ": " + (text.empty() ? "no documents" : text);
  }

  bool AllIsDone() const {
    auto const is_done = [](auto const& count) {
      return count.first == kMade || count.first == kKept;
    };
    return !stopped_ && list_.problem().empty() && std::ranges::all_of(counts_, is_done);
  }

  BatchOptions const& options_;
  uint64_t list_bytes_;
  std::mutex mutex_;  // of what is below
  ListFile& list_;
  ResultsFile& results_;
  Progress progress_;
  bool stopped_ = false;
  std::map<std::string, uint64_t> counts_;             // of documents by their state
  std::unordered_map<std::string, uint64_t> claimed_;  // lines of outputs
};

// Why the file of results cannot be used; empty if it can.
std::string ProblemOfResults(BatchOptions const& options) {
  if (!Utf16(options.results)) return "the name is not valid UTF-8 (name a file by --results)";
  std::error_code error;
  if (fs::equivalent(PathOf(options.results), PathOf(options.list), error))
    return "is the list (name another file)";
  auto const status = fs::status(PathOf(options.results), error);
  bool const is_other = fs::exists(status) && !fs::is_regular_file(status);
  return is_other ? "is not a regular file (name another one)" : "";
}

}  // namespace

int RunBatch(BatchOptions const& options) {
  std::string problem;
  auto const list = ListFile::Open(options.list, options.shard, problem);
  if (list == nullptr) {
    PrintProblem(options.list, problem);
    return kExitFailure;
  }
  problem = ProblemOfResults(options);
  auto const results = problem.empty() ? ResultsFile::Open(options.results, problem) : nullptr;
  if (results != nullptr) return Batch(options, *list, *results).Run();
  PrintProblem(options.results, problem);
  return kExitFailure;
}

}  // namespace sorrelin::tool
