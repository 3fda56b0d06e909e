// Flate coding of samples, with PNG prediction where that makes them smaller.
#ifndef TOOLS_MAKE_CODING_FLATE_CODER_H_
#define TOOLS_MAKE_CODING_FLATE_CODER_H_

#include <sorrelin/platform/types.h>

#include <memory>
#include <span>
#include <vector>

#include "tools/formats/picture/samples.h"

struct libdeflate_compressor;

namespace sorrelin::tool {

struct FlateData {
  std::vector<BYTE> stream;  // of zlib; empty: memory was short
  bool predicted = false;    // each row starts with its filter type
};

// For one thread at a time. The same samples give the same bytes from every coder.
class FlateCoder {
 public:
  // Codes all rows. Large pictures are judged by some of their rows, small ones by their size.
  FlateData Code(Samples const& samples);

  // A zlib stream of the bytes; empty if memory is short.
  std::vector<BYTE> Compress(std::span<BYTE const> bytes);

  // About the size of the samples' stream, from a part of them, at a fraction of the time.
  size_t EstimatedBytes(Samples const& samples);

 private:
  struct Free {
    void operator()(libdeflate_compressor* compressor) const;
  };
  using Compressor = std::unique_ptr<libdeflate_compressor, Free>;

  size_t TrialBytes(std::span<BYTE const> bytes);

  Compressor compressor_;
  Compressor trial_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_CODING_FLATE_CODER_H_
