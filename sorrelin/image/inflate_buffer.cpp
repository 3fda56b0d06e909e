// The inflation of a whole zlib stream, piece by piece into a growing output.
#include <sorrelin/image/inflate_buffer.h>
#include <zlib.h>

#include <algorithm>
#include <limits>

namespace sorrelin {

namespace {

constexpr uint64_t kFirstOutput = 16384;  // most object streams fit in that
constexpr uint64_t kMostInput = std::numeric_limits<uInt>::max();
constexpr BYTE kZeros[4096] = {};

class Inflater {
 public:
  Inflater(std::span<BYTE const> source, uint64_t source_size, std::vector<BYTE>& output,
           uint64_t limit)
      : source_(source.first(static_cast<size_t>(std::min<uint64_t>(source.size(), source_size)))),
        zeros_(source_size - source_.size()),
        limit_(limit),
        first_output_(std::min(limit_, std::max(kFirstOutput, 2 * uint64_t{source_.size()}))),
        output_(output) {}
  ~Inflater() { inflateEnd(&stream_); }
  Inflater(Inflater const&) = delete;
  Inflater& operator=(Inflater const&) = delete;

  InflateResult Run() {
    if (inflateInit(&stream_) != Z_OK) return kInflateNoMemory;
    for (;;) {
      if (stream_.avail_in == 0) FeedInput();
      if (stream_.avail_out == 0 && !GrowOutput()) return kInflateNoMemory;
      // As if all were there: zlib makes no window for data that end in this output.
      int const result = inflate(&stream_, Z_FINISH);
      if (result == Z_STREAM_END) return kInflated;
      bool const lacks_input = stream_.avail_in == 0 && stream_.avail_out != 0;
      if (result == Z_BUF_ERROR && lacks_input && !HasInput()) return kInflateDamaged;
      if (result != Z_OK && result != Z_BUF_ERROR) return kInflateDamaged;
    }
  }
  // Bytes that came out.
  uint64_t Written() const { return output_.size() - stream_.avail_out; }

 private:
  bool HasInput() const { return !source_.empty() || zeros_ > 0; }

  void FeedInput() {
    if (!source_.empty()) {
      size_t const piece = static_cast<size_t>(std::min<uint64_t>(source_.size(), kMostInput));
      stream_.next_in = const_cast<BYTE*>(source_.data());
      stream_.avail_in = static_cast<uInt>(piece);
      source_ = source_.subspan(piece);
    } else if (zeros_ > 0) {
      uint64_t const piece = std::min<uint64_t>(zeros_, sizeof kZeros);
      stream_.next_in = const_cast<BYTE*>(kZeros);
      stream_.avail_in = static_cast<uInt>(piece);
      zeros_ -= piece;
    }
  }

  bool GrowOutput() {
    uint64_t const used = output_.size();
    uint64_t const size = std::min(std::max(first_output_, 2 * used), limit_);
    if (size == used) return false;
    output_.resize(static_cast<size_t>(size));
    stream_.next_out = output_.data() + used;
    stream_.avail_out = static_cast<uInt>(size - used);
    return true;
  }

  std::span<BYTE const> source_;  // not yet given to zlib
  uint64_t zeros_;                // virtual input after the source
  uint64_t limit_;
  uint64_t first_output_;
  std::vector<BYTE>& output_;
  z_stream stream_{};
};

}  // namespace

InflateResult InflateBuffer(std::span<BYTE const> source, uint64_t source_size,
                            std::vector<BYTE>& output, uint64_t& work) {
  output.clear();
  if (source_size == 0) return kInflated;
  uint64_t const limit = std::min(kMostInflated, work);
  Inflater inflater(source, source_size, output, limit + 1);
  InflateResult result = inflater.Run();
  if (inflater.Written() > limit) result = kInflateNoMemory;
  work -= std::min(work, inflater.Written());
  output.resize(result == kInflated ? static_cast<size_t>(inflater.Written()) : 0);
  if (result != kInflated) output.shrink_to_fit();
  return result;
}

}  // namespace sorrelin
