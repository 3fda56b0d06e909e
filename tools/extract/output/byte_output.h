// Where the bytes of a picture file go.
#ifndef TOOLS_EXTRACT_OUTPUT_BYTE_OUTPUT_H_
#define TOOLS_EXTRACT_OUTPUT_BYTE_OUTPUT_H_

#include <sorrelin/platform/types.h>

#include <cstdint>
#include <span>

namespace sorrelin::tool {

class ByteOutput {
 public:
  virtual ~ByteOutput() = default;

  // Bytes at a place of the file, which may be written out of order. False if writing fails, and
  // from then on.
  virtual bool WriteAt(uint64_t place, std::span<BYTE const> bytes) = 0;

  // Bytes after those that Write has written before.
  bool Write(std::span<BYTE const> bytes) {
    uint64_t const place = end_;
    end_ += bytes.size();
    return WriteAt(place, bytes);
  }
  uint64_t end() const { return end_; }

 protected:
  // For the next file.
  void Restart() { end_ = 0; }

 private:
  uint64_t end_ = 0;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_OUTPUT_BYTE_OUTPUT_H_
