// Looks at a channel's bytes by offset.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/channel/read_window.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>

#include <algorithm>
#include <cstring>

namespace sorrelin {

namespace {

// A look elsewhere costs a short read; looks that go on where the last one ended read further and
// further ahead.
constexpr DWORD kShortRead = 1024;
constexpr DWORD kLongRead = 64 * 1024;

std::span<BYTE const> InMemory(FileChannel const& channel, DWORD offset, DWORD bytes) {
  MemoryBuffer const& buffer = channel.buffer;
  if (offset > buffer.nSize) SetLastError(ERROR_HANDLE_EOF);
  if (offset >= buffer.nSize) return {};
  return {buffer.pData + offset,
          static_cast<size_t>(std::min<uint64_t>(bytes, buffer.nSize - offset))};
}

}  // namespace

std::optional<std::span<BYTE const>> ReadWindow::Look(FileChannel* channel, DWORD offset,
                                                      DWORD bytes) {
  if (!IsUsableChannel(channel)) return std::nullopt;
  if (channel->bMemory != 0) return InMemory(*channel, offset, bytes);
  if (!Holds(offset, bytes) && !Fill(channel, offset, bytes)) return std::nullopt;
  if (offset - begin_ >= size_) return std::span<BYTE const>{};
  return std::span<BYTE const>(bytes_).subspan(offset - begin_,
                                               std::min(bytes, size_ - (offset - begin_)));
}

std::optional<DWORD> ReadWindow::Read(FileChannel* channel, DWORD offset, void* out, DWORD bytes) {
  bool const in_place = IsUsableChannel(channel) && channel->bMemory == 0 &&
                        !Holds(offset, bytes) && bytes >= kLongRead;
  if (in_place) return ChannelReadFileAt(channel, offset, out, bytes);
  auto const seen = Look(channel, offset, bytes);
  if (!seen) return std::nullopt;
  if (!seen->empty()) std::memcpy(out, seen->data(), seen->size());
  return static_cast<DWORD>(seen->size());
}

void ReadWindow::Clear() { *this = ReadWindow(); }

bool ReadWindow::Holds(DWORD offset, DWORD bytes) const {
  return offset >= begin_ && uint64_t{offset} + bytes <= uint64_t{begin_} + size_;
}

bool ReadWindow::Fill(FileChannel* channel, DWORD offset, DWORD bytes) {
  ahead_ = AheadOf(offset);
  DWORD const wanted = std::max(bytes, ahead_);
  if (bytes_.size() < wanted) bytes_.resize(wanted);
  size_ = 0;
  begin_ = offset;
  auto const count = ChannelReadFileAt(channel, offset, bytes_.data(), wanted);
  size_ = count.value_or(0);
  return count.has_value();
}

DWORD ReadWindow::AheadOf(DWORD offset) const {
  uint64_t const end = uint64_t{begin_} + size_;
  bool const goes_on = size_ > 0 && offset >= begin_ && offset <= end + kShortRead;
  return goes_on ? std::min(2 * ahead_, kLongRead) : kShortRead;
}

}  // namespace sorrelin
