// The bytes of the document in hand, looked at by offset.
#ifndef SORRELIN_DOCUMENT_DOCUMENT_FILE_H_
#define SORRELIN_DOCUMENT_DOCUMENT_FILE_H_

#include <sorrelin/channel/file_channel.h>
#include <sorrelin/channel/read_window.h>
#include <sorrelin/document/work_budget.h>
#include <sorrelin/platform/types.h>

#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace sorrelin {

class DocumentFile {
 public:
  // A document that grows is written while it is read, so that its size is asked for each time.
  enum class Growth { kFixed, kGrows };

  // Takes another channel, which is not owned, and forgets what was remembered of the last one.
  void SetChannel(FileChannel* channel, Growth growth);
  FileChannel* channel() const { return channel_; }
  bool IsOpen() const { return IsUsableChannel(channel_); }
  // Forgets what was remembered of the bytes.
  void Forget();

  DWORD Size();
  // Looks that leave the channel's position alone; see ReadWindow.
  std::optional<std::span<BYTE const>> Look(DWORD offset, DWORD bytes) {
    return window_.Look(channel_, offset, bytes);
  }
  std::optional<DWORD> Read(DWORD offset, void* out, DWORD bytes) {
    return window_.Read(channel_, offset, out, bytes);
  }
  // The bytes from `offset` through the first "endobj"; nullopt if there is none from there on.
  // Moves the channel's position.
  std::optional<std::vector<BYTE>> ReadThroughEndobj(uint64_t offset);
  // Moves the channel's position. False where it cannot go.
  bool SeekTo(DWORD offset);

  // What reading may cost.
  WorkBudget& work() { return work_; }

  // A code that an operation leaves though it goes on: the last error takes it before the
  // outcome of the operation.
  void Note(DWORD code) { noted_ = code; }
  std::optional<DWORD> TakeNote() { return std::exchange(noted_, std::nullopt); }

 private:
  FileChannel* channel_ = nullptr;
  Growth growth_ = Growth::kGrows;
  ReadWindow window_;
  std::optional<DWORD> size_;
  uint64_t no_endobj_from_ = UINT64_MAX;  // from here on the document has no "endobj"
  WorkBudget work_;
  std::optional<DWORD> noted_;
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_DOCUMENT_FILE_H_
