// Looks at a channel's bytes by offset. The position of the channel stays where it is, and looks
// that are close together share one read.
#ifndef SORRELIN_CHANNEL_READ_WINDOW_H_
#define SORRELIN_CHANNEL_READ_WINDOW_H_

#include <sorrelin/platform/types.h>

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace sorrelin {

struct FileChannel;

// The window keeps bytes of a file from one look to the next: Clear it when they may have changed,
// and when another channel takes the place. Bytes of a memory channel are seen in place.
class ReadWindow {
 public:
  // The bytes from `offset` on: `bytes` of them, or as many as there are. Valid until the next call
  // and until the channel is written. nullopt if the channel cannot be positioned there.
  std::optional<std::span<BYTE const>> Look(FileChannel* channel, DWORD offset, DWORD bytes);

  // Copies bytes to `out`, past the window where they are many. The number copied, or nothing as
  // above.
  std::optional<DWORD> Read(FileChannel* channel, DWORD offset, void* out, DWORD bytes);

  void Clear();

 private:
  bool Holds(DWORD offset, DWORD bytes) const;
  bool Fill(FileChannel* channel, DWORD offset, DWORD bytes);
  DWORD AheadOf(DWORD offset) const;

  std::vector<BYTE> bytes_;
  DWORD begin_ = 0;  // offset of the first byte
  DWORD size_ = 0;   // bytes held
  DWORD ahead_ = 0;  // bytes that the last fill asked for
};

}  // namespace sorrelin

#endif  // SORRELIN_CHANNEL_READ_WINDOW_H_
