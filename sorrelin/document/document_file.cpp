// The bytes of the document in hand.
#include <sorrelin/document/document_file.h>
#include <sorrelin/platform/file.h>

#include <algorithm>
#include <string_view>

namespace sorrelin {

namespace {

constexpr std::string_view kEndobj = "endobj";
constexpr size_t kFirstRead = 4096;
constexpr size_t kMostRead = 1024 * 1024;

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

void DocumentFile::SetChannel(FileChannel* channel, Growth growth) {
  channel_ = channel;
  growth_ = growth;
  Forget();
}

void DocumentFile::Forget() {
  window_.Clear();
  size_.reset();
  no_endobj_from_ = UINT64_MAX;
}

DWORD DocumentFile::Size() {
  if (growth_ == Growth::kGrows) return ChannelGetSize(channel_, nullptr);
  if (!size_) size_ = ChannelGetSize(channel_, nullptr);
  return *size_;
}

std::optional<std::vector<BYTE>> DocumentFile::ReadThroughEndobj(uint64_t offset) {
  if (!IsOpen() || offset >= no_endobj_from_ || !SeekTo(static_cast<DWORD>(offset))) {
    return std::nullopt;
  }
  std::vector<BYTE> text;
  for (size_t searched = 0;; searched = text.size() - std::min(text.size(), kEndobj.size() - 1)) {
    if (!Append(channel_, text, std::clamp(text.size(), kFirstRead, kMostRead))) break;
    std::string_view const chars(reinterpret_cast<char const*>(text.data()), text.size());
    size_t const found = chars.find(kEndobj, searched);
    if (found == std::string_view::npos) continue;
    text.resize(found + kEndobj.size());
    text.shrink_to_fit();
    return text;
  }
  no_endobj_from_ = std::min(no_endobj_from_, offset);
  return std::nullopt;
}

bool DocumentFile::SeekTo(DWORD offset) {
  LONG const target = static_cast<LONG>(offset);
  return ChannelSeek(channel_, target, nullptr, FILE_BEGIN) != INVALID_SET_FILE_POINTER;
}

}  // namespace sorrelin
