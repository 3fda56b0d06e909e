// Reads a file forward in large pieces.
#include "tools/formats/byte_stream.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "tools/cli/messages.h"
#include "tools/cli/text.h"
#include "tools/system/names.h"

namespace sorrelin::tool {
namespace {

constexpr size_t kReadBytes = 1 << 16;

// The system's reason why a file cannot be read, and what to do about it.
std::string SystemText(int error) {
  char const* const remedy = error == ENOENT || error == EINVAL ? " (check the name)"
                             : error == EACCES                  ? " (make it readable)"
                             : error == EISDIR                  ? " (name the files in it)"
                                                                : " (see that it can be read)";
  return std::generic_category().message(error) + remedy;
}

}  // namespace

std::unique_ptr<ByteStream> ByteStream::Open(std::string const& name, std::string& problem) {
  if (IsDeviceName(PathOf(name))) return problem = kDeviceProblem, nullptr;
  std::FILE* const file = name == kStandardInput ? stdin : std::fopen(name.c_str(), "rb");
  if (file != nullptr) return std::unique_ptr<ByteStream>(new ByteStream(file));
  int const error = errno;
  std::error_code unknown;
  // Systems that do not open directories speak of permissions.
  problem = SystemText(std::filesystem::is_directory(name, unknown) ? EISDIR : error);
  return nullptr;
}

std::span<BYTE const> ByteStream::Peek(size_t count) {
  ReadAhead(count);
  return std::span<BYTE const>(buffer_).subspan(position_);
}

std::vector<BYTE> ByteStream::Take(size_t count) {
  std::vector<BYTE> bytes = std::exchange(buffer_, {});
  size_t const ahead = bytes.size() - position_;
  if (count < ahead) {
    auto const from = bytes.begin() + static_cast<ptrdiff_t>(position_);
    std::vector<BYTE> taken(from, from + static_cast<ptrdiff_t>(count));
    buffer_ = std::move(bytes);
    position_ += count;
    return taken;
  }
  bytes.erase(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(position_));
  position_ = 0;
  while (bytes.size() < count && Read(bytes, count - bytes.size())) {
  }
  return bytes;
}

bool ByteStream::TakeInto(std::span<BYTE> bytes) {
  while (!bytes.empty()) {
    auto const ahead = Peek(1);
    if (ahead.empty()) return false;
    size_t const count = std::min(ahead.size(), bytes.size());
    std::copy_n(ahead.begin(), count, bytes.begin());
    position_ += count;
    bytes = bytes.subspan(count);
  }
  return true;
}

int ByteStream::Get() {
  if (position_ == buffer_.size()) ReadAhead(1);
  return position_ < buffer_.size() ? buffer_[position_++] : -1;
}

void ByteStream::ReadAhead(size_t count) {
  if (buffer_.size() - position_ >= count) return;
  buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<ptrdiff_t>(position_));
  position_ = 0;
  while (buffer_.size() < count && Read(buffer_, std::max(kReadBytes, count - buffer_.size()))) {
  }
}

// A length that only a header states is not believed before the bytes are there: the buffer no
// more than doubles.
bool ByteStream::Read(std::vector<BYTE>& bytes, size_t most) {
  if (!problem_.empty()) return false;
  size_t const old = bytes.size();
  size_t const piece = std::min(most, std::max(kReadBytes, old));
  bytes.resize(old + piece);
  errno = 0;
  size_t const got = std::fread(bytes.data() + old, 1, piece, file_.get());
  bytes.resize(old + got);
  if (std::ferror(file_.get()) != 0) problem_ = SystemText(errno);
  return got != 0;
}

}  // namespace sorrelin::tool
