// A file or pipe, read forward, with a look at what comes next.
#ifndef TOOLS_FORMATS_BYTE_STREAM_H_
#define TOOLS_FORMATS_BYTE_STREAM_H_

#include <sorrelin/platform/types.h>

#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace sorrelin::tool {

// The name that stands for standard input.
inline constexpr char kStandardInput[] = "-";

class ByteStream {
 public:
  // Opens a file by name, or standard input. nullptr with the reason in `problem`.
  static std::unique_ptr<ByteStream> Open(std::string const& name, std::string& problem);

  // Reads ahead to `count` bytes, if there are so many. Returns the bytes at hand, which may be
  // more, and stay until the next call of a function that is not const.
  std::span<BYTE const> Peek(size_t count);

  // Removes the next `count` bytes, or all that are left if there are fewer.
  std::vector<BYTE> Take(size_t count);
  std::vector<BYTE> TakeRest() { return Take(SIZE_MAX); }
  // Removes the next bytes.size() bytes and stores them. False if there are fewer.
  bool TakeInto(std::span<BYTE> bytes);
  // The next byte, removed, or -1 at the end.
  int Get();

  bool AtEnd() { return Peek(1).empty(); }

  // Why reading failed; empty if it did not. The bytes end there.
  std::string const& problem() const { return problem_; }

 private:
  struct Closer {
    void operator()(std::FILE* file) const {
      if (file != stdin) std::fclose(file);
    }
  };

  explicit ByteStream(std::FILE* file) : file_(file) {}
  void ReadAhead(size_t count);
  // Appends at most `most` bytes; false if there are no more.
  bool Read(std::vector<BYTE>& bytes, size_t most);

  std::unique_ptr<std::FILE, Closer> file_;
  std::vector<BYTE> buffer_;
  size_t position_ = 0;  // of the next byte in the buffer
  std::string problem_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_BYTE_STREAM_H_
