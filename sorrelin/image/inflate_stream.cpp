// Inflates zlib data piece by piece.
#include <sorrelin/image/inflate_stream.h>

#include <algorithm>

namespace sorrelin {
namespace {

constexpr size_t kLargestPiece = size_t{1} << 30;  // bytes given to or asked of zlib at a time

}  // namespace

// A checksum that is wrong changes neither the bytes nor the outcome, so it is not computed.
InflateStream::InflateStream(std::span<BYTE const> data)
    : rest_(data), status_(inflateInit(&stream_)) {
  inflateValidate(&stream_, 0);
}

InflateStream::~InflateStream() { inflateEnd(&stream_); }

size_t InflateStream::Read(std::span<BYTE> out) {
  size_t written = 0;
  while (written < out.size() && status_ == Z_OK) {
    size_t const room = std::min(out.size() - written, kLargestPiece);
    stream_.next_out = out.data() + written;
    stream_.avail_out = static_cast<uInt>(room);
    Step();
    written += room - stream_.avail_out;
  }
  return written;
}

bool InflateStream::WantsMoreRoom() {
  BYTE unused;
  while (status_ == Z_OK) {
    stream_.next_out = &unused;
    stream_.avail_out = 0;
    Step();
  }
  return status_ == Z_BUF_ERROR;
}

void InflateStream::Step() {
  if (stream_.avail_in == 0) {
    std::span<BYTE const> const piece = rest_.first(std::min(rest_.size(), kLargestPiece));
    stream_.next_in = const_cast<BYTE*>(piece.data());
    stream_.avail_in = static_cast<uInt>(piece.size());
    rest_ = rest_.subspan(piece.size());
  }
  status_ = inflate(&stream_, Z_NO_FLUSH);
}

}  // namespace sorrelin
