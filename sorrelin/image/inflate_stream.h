// Inflates zlib data piece by piece, with the bytes and the outcome of one `uncompress` call into a
// buffer that nobody has to hold.
#ifndef SORRELIN_IMAGE_INFLATE_STREAM_H_
#define SORRELIN_IMAGE_INFLATE_STREAM_H_

#include <sorrelin/platform/types.h>
#include <zlib.h>

#include <cstddef>
#include <span>

namespace sorrelin {

class InflateStream {
 public:
  // `data` outlives this object.
  explicit InflateStream(std::span<BYTE const> data);
  ~InflateStream();
  InflateStream(InflateStream const&) = delete;
  InflateStream& operator=(InflateStream const&) = delete;

  // Fills `out` as far as the data go and returns the bytes written: fewer than asked for once the
  // data have ended or turned out to be damaged.
  size_t Read(std::span<BYTE> out);

  // Whether the stream wants to go on after what was read: where `uncompress`, with a buffer that
  // is full now, reports Z_BUF_ERROR.
  bool WantsMoreRoom();

 private:
  void Step();

  z_stream stream_{};
  std::span<BYTE const> rest_;  // not yet given to zlib, which counts in 32 bits
  int status_;
};

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_INFLATE_STREAM_H_
