// The file that a document is written to: it comes into being whole or not at all.
#ifndef TOOLS_CLI_OUTPUT_FILE_H_
#define TOOLS_CLI_OUTPUT_FILE_H_

#include <filesystem>
#include <memory>
#include <string>

namespace sorrelin::tool {

// Whether a committed file must outlive the failure of the machine. Waiting for the disk takes
// longer than most pictures take to write.
enum class Durability { kOnDisk, kUsual };

// The document is written inside a directory of its own beside the target, which no other process
// can have a file in, and is renamed when it is complete. What goes to standard output is written
// in the directory for temporary files first. Threads may each have files of their own.
class OutputFile {
 public:
  // Makes the directory. Null with the reason in `problem`: the target exists and `replace` is not
  // set, or is no regular file, or its directory cannot be written to.
  static std::unique_ptr<OutputFile> Open(std::string const& target, bool replace,
                                          std::string& problem);

  // The same for a change of a file that exists: path() has a copy of it, and Commit keeps who owns
  // the target and who may do what with it, or fails.
  static std::unique_ptr<OutputFile> OpenCopy(std::string const& target, std::string& problem);

  // A file in the directory for temporary files, which Commit copies to standard output. Null with
  // the reason in `problem`.
  static std::unique_ptr<OutputFile> Temporary(std::string& problem);

  // Removes what was not committed.
  ~OutputFile();
  OutputFile(OutputFile const&) = delete;
  OutputFile& operator=(OutputFile const&) = delete;

  // The name to write to; there is no such file yet, or a copy of the target.
  std::filesystem::path const& path() const { return path_; }

  // Brings the file to the disk, if that is wanted, and gives it the target's name, or copies it to
  // standard output. Without `replace`, a target that has come into being in the meantime is left
  // alone. False with the reason in `problem`, which stays empty if the reader of standard output
  // has gone.
  bool Commit(std::string& problem, Durability durability = Durability::kOnDisk);

 private:
  OutputFile(std::filesystem::path target, bool replace);
  // With its directory in that of `beside`; nullptr with the reason if that cannot be made.
  static std::unique_ptr<OutputFile> Made(std::filesystem::path const& target, bool replace,
                                          std::filesystem::path const& beside, std::string& reason);

  bool Rename(std::string& problem, Durability durability);
  // With the mutex held.
  bool Move(bool on_disk) const;
  bool MoveToTarget(bool on_disk) const;
  bool Copy(std::string& problem) const;

  std::filesystem::path target_;  // empty: standard output
  std::filesystem::path directory_;
  std::filesystem::path path_;
  bool replace_;
  bool keep_owner_ = false;
};

// Brings a file's bytes to the disk. False with the system error.
bool FlushFile(std::filesystem::path const& path);

// Whether a name is that of a file that exists, is not empty, and is no PDF document.
bool IsOtherFile(std::string const& name);

// Removes what was not committed; nothing can be made or committed any more, and whoever tries
// waits for ever. For a process that is about to end.
void RemoveOutputForGood();

}  // namespace sorrelin::tool

#endif  // TOOLS_CLI_OUTPUT_FILE_H_
