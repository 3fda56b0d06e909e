// sorrelin batch: the documents of a list.
#include "tools/batch/batch_run.h"

#include <memory>
#include <string>

#include "tools/cli/jobs.h"
#include "tools/cli/text.h"
#include "tools/formats/byte_stream.h"
#include "tools/make/pages/page_options.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

Shard ParseShard(std::string const& text) {
  if (auto const shard = Shard::Parse(text)) return *shard;
  throw UsageError("--shard", "takes K/N as in 3/100, K from 1 to N, not " + text);
}

std::string ParseResults(std::string const& text) {
  if (!text.empty() && text != kStandardOutput && Utf16(text)) return text;
  throw UsageError("--results", "takes the name of a file");
}

// Shards of a list have results of their own.
std::string UsualResults(BatchOptions const& options) {
  if (options.list == kStandardInput) {
    throw UsageError("--results", "is missing: a list on standard input has no name for them");
  }
  Shard const shard = options.shard;
  std::string name = options.list;
  if (shard.count > 1) {
    name.append(".").append(std::to_string(shard.index));
    name.append("-of-").append(std::to_string(shard.count));
  }
  return name + ".results";
}

constexpr char kFooter[] =
    R"(
A line of LIST is a JSON object for one document:

  {"output": "a.pdf", "pictures": ["1.tif", "2.tif"], "options": ["--page", "a4"]}

Options are those of make, and may be left out. Names are as for make: seen from
the current directory, and a directory stands for the pictures in it.

Each document has a line of JSON in the file of results, with the keys line,
output, state (made; incomplete, without some picture; failed; busy, with
another worker; broken, the line), pages, bytes, seconds, signature and
problems. The last line about a document counts. The usual file is LIST.results,
or LIST.K-of-N.results for a shard.

A run may be stopped at any moment and started again. A document is kept if its
last result is "made", its size is the one recorded, and its options and the
names, sizes and times of its pictures are the same as then; otherwise it is
made again. Times only have to be the same, so clocks may differ. A document
that no result names, or that was changed since, is left alone without --force.

Shard K of N is every N-th line from line K on. One worker at a time may use a
file of results, and one may make a document; the other says so and goes on.

Exit status: 0 all documents are there; 1 one is not and was named, or results
could not be written; 2 the command line is wrong.

Examples:
  sorrelin batch list.jsonl
  sorrelin batch list.jsonl --shard 3/100 --jobs 2 --results shard3.jsonl)";

}  // namespace

void AddBatch(Program& program) {
  Verb verb = program.AddVerb("batch", "Make the documents of a list");
  auto const options = std::make_shared<BatchOptions>();
  options->jobs = UsualJobs();
  verb.Argument("LIST", options->list, "The list, a line of JSON for each document");
  verb.Number("--jobs", options->jobs, 1, kMaxJobs,
              "Documents to make at a time (processors, up to 4)");
  verb.Option("--results", "FILE", "A line of JSON for each document that was made",
              [options](std::string const& text) { options->results = ParseResults(text); });
  verb.Option("--shard", "K/N", "Only this part of the list, as in 3/100",
              [options](std::string const& text) { options->shard = ParseShard(text); });
  verb.Flag("--force", options->force, "Make all documents, and replace those that exist");
  verb.Flag("--quiet", options->quiet, "Print problems only: no progress bar, no summary");
  verb.Footer(kFooter);
  verb.Runs([options] {
    if (options->results.empty()) options->results = UsualResults(*options);
    return RunBatch(*options);
  });
}

}  // namespace sorrelin::tool
