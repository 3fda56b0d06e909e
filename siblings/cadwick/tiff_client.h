// libtiff on memory: a TIFF file that exists only as the callbacks of TIFFClientOpenExt. libtiff
// codes strips of files, not bare data; here the file's head is made up on reading and dropped on
// writing.
#ifndef SIBLINGS_CADWICK_TIFF_CLIENT_H_
#define SIBLINGS_CADWICK_TIFF_CLIENT_H_

#include <siblings/cadwick/group4.h>
#include <tiffio.h>

#include <array>
#include <cstdarg>
#include <cstdint>
#include <memory>
#include <span>

namespace sorrelin::cadwick {

// What libtiff has complained about since the last Clear. Its Group 4 decoder fills a row that it
// cannot read and goes on, so that the complaint alone tells the row from a good one.
class Complaints {
 public:
  void Add(char const* format, va_list arguments);
  void Clear() { *this = {}; }
  bool Any() const { return any_; }
  // All of them mean that the data were too short or held an end mark.
  bool OnlyEndOfData() const { return end_of_input_ || !damage_; }
  // The first one's text, which names the row and the column.
  using Text = std::array<char, 160>;
  Text const& First() const { return first_; }

 private:
  Text first_{};
  bool any_ = false;
  bool end_of_input_ = false;  // a code was needed where no bit was left
  bool damage_ = false;
};

// The bytes of the made-up file.
class TiffClient {
 public:
  virtual ~TiffClient() = default;
  virtual tmsize_t Read(void* buffer, tmsize_t bytes) = 0;
  virtual tmsize_t Write(void const* buffer, tmsize_t bytes) = 0;
  virtual uint64_t Size() const = 0;

  uint64_t Seek(uint64_t offset, int origin);
  Complaints& complaints() { return complaints_; }

 protected:
  uint64_t position_ = 0;

 private:
  Complaints complaints_;
};

// Reads: head, data, tail, one after another. The head describes one strip that holds the data and
// the tail.
class TiffReadClient final : public TiffClient {
 public:
  TiffReadClient(Picture picture, std::span<BYTE const> data, std::span<BYTE const> tail);
  tmsize_t Read(void* buffer, tmsize_t bytes) override;
  tmsize_t Write(void const*, tmsize_t) override { return -1; }
  uint64_t Size() const override { return kHeadBytes + data_.size() + tail_.size(); }

 private:
  static constexpr size_t kEntries = 9;
  static constexpr size_t kHeadBytes = 8 + 2 + kEntries * 12 + 4;

  std::array<BYTE, kHeadBytes> head_{};
  std::span<BYTE const> data_;
  std::span<BYTE const> tail_;
};

// Writes: what comes between Arm and Disarm is the strip and goes to the sink; before it comes the
// file's head, behind it the directory that libtiff writes on closing, and both are only counted.
class TiffWriteClient final : public TiffClient {
 public:
  explicit TiffWriteClient(ByteSink& sink) : sink_(sink) {}
  void Arm() { armed_ = true; }
  void Disarm() { armed_ = false; }
  bool failed() const { return failed_; }
  tmsize_t Read(void*, tmsize_t) override { return -1; }
  tmsize_t Write(void const* buffer, tmsize_t bytes) override;
  uint64_t Size() const override { return size_; }

 private:
  ByteSink& sink_;
  uint64_t size_ = 0;
  bool armed_ = false;
  bool failed_ = false;
};

struct TiffCleaner {
  void operator()(TIFF* tiff) const { TIFFCleanup(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, TiffCleaner>;

// `client` outlives the handle and takes its complaints. Null if libtiff refuses.
TiffHandle OpenTiff(TiffClient& client, char const* mode);

}  // namespace sorrelin::cadwick

#endif  // SIBLINGS_CADWICK_TIFF_CLIENT_H_
