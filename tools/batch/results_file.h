// The results of a batch, a line of JSON for each document, and what they say of earlier runs.
#ifndef TOOLS_BATCH_RESULTS_FILE_H_
#define TOOLS_BATCH_RESULTS_FILE_H_

#include <sorrelin/platform/file.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace sorrelin::tool {

// States of a result.
inline constexpr char kMade[] = "made";              // without a problem
inline constexpr char kIncomplete[] = "incomplete";  // some picture has no page
inline constexpr char kFailed[] = "failed";          // no document was written
inline constexpr char kBusy[] = "busy";              // another worker is at the document
inline constexpr char kBroken[] = "broken";          // the line says no document

struct Result {
  uint64_t line = 0;   // of the list
  std::string output;  // empty: the line is broken
  std::string_view state = kFailed;
  unsigned pages = 0;
  uint64_t bytes = 0;
  std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
  double seconds = 0;  // since then
  std::string signature;
  std::vector<std::string> problems;
};

// What is known of a document that has been written.
struct WrittenBefore {
  bool whole = false;  // without a problem
  uint64_t bytes = 0;
  std::string signature;
};

class ResultsFile {
 public:
  // Opens the file or makes it, and keeps other workers from it. Waits some seconds for one that is
  // about to end. nullptr with the reason in `problem`.
  static std::unique_ptr<ResultsFile> Open(std::string const& name, std::string& problem);
  ~ResultsFile();
  ResultsFile(ResultsFile const&) = delete;
  ResultsFile& operator=(ResultsFile const&) = delete;

  // What the last line about a document says, if it was written.
  std::optional<WrittenBefore> Find(std::string const& output) const;

  // Adds a line. False with the reason in `problem`.
  bool Add(Result const& result, std::string& problem);

 private:
  explicit ResultsFile(HANDLE file) : file_(file) {}

  bool Read(std::string const& name, std::string& problem);
  bool TakeLine(std::string const& line);

  HANDLE file_;
  std::unordered_map<std::string, WrittenBefore> written_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_BATCH_RESULTS_FILE_H_
