// A lock that keeps other sessions from changing a file.
#ifndef TOOLS_DOCUMENTS_FILE_HOLD_H_
#define TOOLS_DOCUMENTS_FILE_HOLD_H_

#include <sorrelin/platform/file.h>

#include <filesystem>
#include <string>

namespace sorrelin::tool {

class FileHold {
 public:
  // Holds a file that exists and may be written to.
  explicit FileHold(std::filesystem::path const& path);
  ~FileHold() { Release(); }
  FileHold(FileHold const&) = delete;
  FileHold& operator=(FileHold const&) = delete;

  bool IsHeld() const { return file_ != INVALID_HANDLE_VALUE; }
  void Release();
  // Has the file be one that can be replaced: still held, where the system allows it.
  void ReleaseForReplacing();

  // Why the last file on this thread could not be held, with a remedy.
  static std::string Problem();

 private:
  HANDLE file_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_FILE_HOLD_H_
