// Sessions on hostile documents in memory: everything is read, or a page is added.
#ifndef FUZZ_FUZZ_SESSION_H_
#define FUZZ_FUZZ_SESSION_H_

#include <sorrelin/channel/file_channel.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/string_error.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>

#include "fuzz/fuzz_input.h"

namespace fuzz {

// Closed at the end. No operation frees the record of a channel; here it goes too, since libFuzzer
// looks for leaks after each run that leaves a block. The memory of one session serves the next,
// which saves half of the time.
class Session {
 public:
  Session();
  ~Session();
  Session(Session const&) = delete;
  Session& operator=(Session const&) = delete;

  CCreatePDF& operator*() const { return *session_; }
  CCreatePDF* operator->() const { return session_; }

  // `document` outlives the session. One without a header that the library takes is not tried.
  bool Open(Data document);
  bool Create(std::filesystem::path const& name);
  bool CreateInMemory(Data document);

 private:
  struct Storage {
    alignas(CCreatePDF) std::byte bytes[sizeof(CCreatePDF)];
  };

  static std::unique_ptr<Storage>& Spare();
  static std::unique_ptr<Storage> TakeStorage();
  // Finishing a document forgets the channel.
  void RememberChannel();

  std::unique_ptr<Storage> storage_ = TakeStorage();
  CCreatePDF* session_;
  sorrelin::FileChannel* channel_ = nullptr;
};

// Runs `work`. The exception that the library is known for is no finding.
template <typename Work>
void Guard(Work work) {
  try {
    work();
  } catch (SorrelinStringError const&) {
  }
}

// Opens a document and reads pages, images, objects and strings, then closes it.
void ReadEverything(Data document);

// Adds a small page.
bool AddPage(CCreatePDF& session);

// Adds a page to a document in memory and gives what comes of it; empty if that is refused.
std::string AppendPage(Data document);

// An unlocked bitmap has the size that its header gives, and its colours are in the block.
void RequireWholeBitmap(void* bitmap);

}  // namespace fuzz

#endif  // FUZZ_FUZZ_SESSION_H_
