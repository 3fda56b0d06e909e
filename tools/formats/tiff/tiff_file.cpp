// Appends pages to a TIFF file, which is a chain of directories (TIFF 6.0, section 2):
//
//   header     byte order (2 bytes), 42 (2), offset of the first directory (4)
//   directory  count of entries (2), entries (12 each), offset of the next directory or 0 (4)
//   entry      tag (2), type (2), count (4), value, or its offset if it takes more than 4 bytes (4)
//
// A page is put after the others as the file that it is, and its offsets are moved by where it
// is. Libraries that write TIFF walk the whole chain for every page that they add.
#include "tools/formats/tiff/tiff_file.h"

#include <cerrno>
#include <cstring>
#include <limits>
#include <optional>
#include <system_error>
#include <vector>

#include "tools/cli/messages.h"

namespace sorrelin::tool {
namespace {

constexpr uint16_t kMagic = 42;
constexpr uint64_t kFirstDirectory = 4;
constexpr uint64_t kEntryBytes = 12;
constexpr uint16_t kStripOffsets = 273;
constexpr uint16_t kLong = 4;

// Bytes of one value, by type from 0 on.
constexpr uint64_t kTypeBytes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};

// The bytes of a file of one page, whose offsets can be moved. What is outside reads as 0.
class OnePage {
 public:
  explicit OnePage(std::span<BYTE const> file) : bytes_(file.begin(), file.end()) {}

  // Where the offset of the next directory is; nullopt if this is no file that can be moved.
  std::optional<uint64_t> MoveBy(uint32_t distance) {
    if (Get<uint16_t>(2) != kMagic) return std::nullopt;
    uint64_t const directory = Get<uint32_t>(kFirstDirectory);
    uint64_t const entries = Get<uint16_t>(directory);
    uint64_t const link = directory + 2 + entries * kEntryBytes;
    if (directory % 2 != 0 || entries == 0 || link + 4 > bytes_.size()) return std::nullopt;
    if (Get<uint32_t>(link) != 0) return std::nullopt;
    Put(kFirstDirectory, static_cast<uint32_t>(directory + distance));
    for (uint64_t at = directory + 2; at < link; at += kEntryBytes) {
      if (!MoveEntry(at, distance)) return std::nullopt;
    }
    return link;
  }

  std::span<BYTE const> bytes() const { return bytes_; }

 private:
  bool MoveEntry(uint64_t at, uint32_t distance) {
    uint16_t const type = Get<uint16_t>(at + 2);
    uint32_t const count = Get<uint32_t>(at + 4);
    if (type >= std::size(kTypeBytes)) return false;
    bool const strips = Get<uint16_t>(at) == kStripOffsets;
    if (strips && (type != kLong || count != 1)) return false;
    if (strips || kTypeBytes[type] * count > 4) Put(at + 8, Get<uint32_t>(at + 8) + distance);
    return true;
  }

  template <typename Number>
  Number Get(uint64_t at) const {
    Number value = 0;
    if (at + sizeof value <= bytes_.size()) std::memcpy(&value, bytes_.data() + at, sizeof value);
    return value;
  }

  void Put(uint64_t at, uint32_t value) { std::memcpy(bytes_.data() + at, &value, sizeof value); }

  std::vector<BYTE> bytes_;
};

}  // namespace

TiffFile::TiffFile(std::filesystem::path const& path)
    : out_(path, std::ios::binary | std::ios::trunc), open_error_(out_ ? 0 : errno) {}

bool TiffFile::Write(uint64_t at, std::span<BYTE const> bytes) {
  out_.seekp(static_cast<std::streamoff>(at));
  out_.write(reinterpret_cast<char const*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  return out_.flush().good();
}

bool TiffFile::Add(std::span<BYTE const> file, std::string& problem) {
  uint64_t const place = size_ + size_ % 2;
  problem = "is full: TIFF files end at 4 GiB (%d in the name makes a file for each page)";
  if (place + file.size() > std::numeric_limits<uint32_t>::max()) return false;
  OnePage page(file);
  auto const link = page.MoveBy(static_cast<uint32_t>(place));
  problem = "cannot be made: the picture does not fit this format (choose another --format)";
  if (!link) return false;
  errno = open_error_;
  bool written = Write(place, page.bytes());
  if (written && link_ != 0) written = Write(link_, page.bytes().subspan(kFirstDirectory, 4));
  problem = "cannot be written: " + std::generic_category().message(errno) + kRoomRemedy;
  size_ = place + file.size();
  link_ = place + *link;
  return written;
}

}  // namespace sorrelin::tool
