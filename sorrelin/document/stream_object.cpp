// Stream objects that are read as text.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/stream_object.h>
#include <sorrelin/frame/reader_state.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/scanner.h>
#include <sorrelin/syntax/text_integer.h>

#include <algorithm>
#include <string_view>

namespace sorrelin {

namespace {

constexpr std::string_view kEndobj = "endobj";
constexpr std::string_view kStream = "stream";
constexpr size_t kFirstRead = 4096;
constexpr size_t kMostRead = 1024 * 1024;

ByteView View(std::span<BYTE const> text) { return {text.data(), text.size()}; }

// Appends up to `bytes` bytes from the channel's position; false at its end.
bool Append(FileChannel* channel, std::vector<BYTE>& text, size_t bytes) {
  size_t const size = text.size();
  text.resize(size + bytes);
  DWORD count = 0;
  bool const read =
      ChannelRead(channel, text.data() + size, static_cast<DWORD>(bytes), &count, nullptr) != 0;
  text.resize(size + (read ? count : 0));
  return text.size() > size;
}

}  // namespace

std::optional<std::vector<BYTE>> ReadThroughEndobj(ReaderState& state, uint64_t offset) {
  FileChannel* const channel = state.m_pChannel;
  if (!IsUsableChannel(channel) || offset >= state.m_nNoEndobjFrom) return std::nullopt;
  LONG const target = static_cast<LONG>(offset);
  if (ChannelSeek(channel, target, nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER) {
    return std::nullopt;
  }
  std::vector<BYTE> text;
  for (size_t searched = 0;; searched = text.size() - std::min(text.size(), kEndobj.size() - 1)) {
    if (!Append(channel, text, std::clamp(text.size(), kFirstRead, kMostRead))) break;
    size_t const found = View(text).Chars().find(kEndobj, searched);
    if (found == std::string_view::npos) continue;
    text.resize(found + kEndobj.size());
    text.shrink_to_fit();
    return text;
  }
  state.m_nNoEndobjFrom = std::min(state.m_nNoEndobjFrom, offset);
  return std::nullopt;
}

bool StartsWithTwoIntegers(std::span<BYTE const> text) {
  std::string_view rest = View(text).Text();
  return TakeInteger(rest) && TakeInteger(rest);
}

std::optional<std::span<BYTE const>> FindStreamData(std::span<BYTE const> text) {
  size_t const keyword = View(text).Text().find(kStream);
  if (keyword == std::string_view::npos) return std::nullopt;
  std::span<BYTE const> data = text.subspan(keyword + kStream.size());
  if (data.size() >= 2 && data[0] == '\r' && data[1] == '\n') return data.subspan(2);
  while (!data.empty() && IsWhiteSpace(data[0])) data = data.subspan(1);
  return data;
}

}  // namespace sorrelin
