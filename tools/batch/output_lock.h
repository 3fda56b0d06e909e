// The lock on the name of a document that is being made.
#ifndef TOOLS_BATCH_OUTPUT_LOCK_H_
#define TOOLS_BATCH_OUTPUT_LOCK_H_

#include <sorrelin/platform/file.h>

#include <filesystem>
#include <string>

namespace sorrelin::tool {

// An empty hidden file beside the document, locked. It outlives a run that is killed, and then says
// that the document, if there is one, was made by that run and not recorded.
class OutputLock {
 public:
  explicit OutputLock(std::string const& output);
  // Lets go, and leaves the file unless Remove was called.
  ~OutputLock();
  OutputLock(OutputLock const&) = delete;
  OutputLock& operator=(OutputLock const&) = delete;

  // Whether there was a lock file when this object was made.
  bool WasThere() const { return was_there_; }

  enum class Taken { kYes, kBusy, kFailed };
  // Fails with the reason in `problem`.
  Taken Take(std::string& problem);

  // The document is recorded, or was not made.
  void Remove();

 private:
  std::filesystem::path path_;
  bool was_there_;
  HANDLE file_ = INVALID_HANDLE_VALUE;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_BATCH_OUTPUT_LOCK_H_
