// Follows the directories of a TIFF file (TIFF 6.0, 2). Classic files have offsets of 4 bytes:
//
//   header     byte order (2), 42 (2), offset of the first directory (4)
//   directory  count (2), entries of 12 bytes, offset of the next directory (4)
//   entry      tag (2), type (2), count (4), values or their offset (4)
//
// BigTIFF has offsets of 8: header 43 (2), 8 (2), 0 (2), offset (8); counts of 8 and entries of 20.
#include "tools/formats/ends/tiff_end.h"

#include <sorrelin/platform/types.h>
#include <tiff.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <set>
#include <span>
#include <vector>

namespace sorrelin::tool {
namespace {

constexpr size_t kMostValues = size_t{1} << 22;  // entries, and values that are looked at
constexpr uint64_t kValuesOfADirectory = 64;     // what an empty one counts for
constexpr uint64_t kMostBytes = uint64_t{1} << 40;
constexpr uint16_t kBigVersion = 43;

// Bytes of a value of each type; 0: there is no such type.
constexpr std::array<uint64_t, 19> kTypeBytes = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4,
                                                 8, 4, 8, 4, 0, 0, 8, 8, 8};

struct Entry {
  uint16_t tag = 0;
  uint64_t value_bytes = 0;
  uint64_t count = 0;
  uint64_t values_at = 0;
};

// The places and sizes of coded data.
struct Pieces {
  std::vector<uint64_t> places;
  std::vector<uint64_t> sizes;
};

class Walker {
 public:
  explicit Walker(std::string const& name) : file_(name, std::ios::binary | std::ios::ate) {
    if (file_) size_ = static_cast<uint64_t>(file_.tellg());
  }

  std::optional<uint64_t> End() {
    if (!TakeHeader()) return std::nullopt;
    while (!pending_.empty()) {
      uint64_t const at = pending_.back();
      pending_.pop_back();
      bool const is_new = at != 0 && seen_.insert(at).second;
      if (is_new && !TakeDirectory(at)) return std::nullopt;
    }
    return end_;
  }

 private:
  bool Read(uint64_t at, uint64_t bytes) {
    if (at > size_ || bytes > size_ - at) return false;
    buffer_.resize(static_cast<size_t>(bytes));
    file_.seekg(static_cast<std::streamoff>(at));
    return static_cast<bool>(
        file_.read(reinterpret_cast<char*>(buffer_.data()), static_cast<std::streamsize>(bytes)));
  }

  // Of 1 to 8 bytes of the buffer.
  uint64_t Number(size_t at, size_t bytes) const {
    uint64_t number = 0;
    for (size_t i = 0; i < bytes; ++i) {
      number = number << 8 | buffer_[at + (big_endian_ ? i : bytes - 1 - i)];
    }
    return number;
  }

  void Extend(uint64_t at, uint64_t bytes) { end_ = std::max(end_, at + bytes); }

  bool Spend(uint64_t values) {
    if (values > kMostValues - spent_) return false;
    spent_ += values;
    return true;
  }

  bool TakeHeader() {
    if (!Read(0, 16) && !Read(0, 8)) return false;
    big_endian_ = buffer_[0] == 'M';
    is_big_ = Number(2, 2) == kBigVersion;
    if (is_big_ && buffer_.size() < 16) return false;
    pending_.push_back(is_big_ ? Number(8, 8) : Number(4, 4));
    Extend(0, is_big_ ? 16 : 8);
    return true;
  }

  size_t OffsetBytes() const { return is_big_ ? 8 : 4; }

  bool TakeDirectory(uint64_t at) {
    size_t const count_bytes = is_big_ ? 8 : 2, entry_bytes = is_big_ ? 20 : 12;
    if (!Read(at, count_bytes)) return false;
    uint64_t const count = Number(0, count_bytes);
    if (!Spend(kValuesOfADirectory) || !Spend(count)) return false;
    uint64_t const bytes = count_bytes + count * entry_bytes + OffsetBytes();
    if (!Read(at, bytes)) return false;
    Extend(at, bytes);
    pending_.push_back(Number(static_cast<size_t>(bytes) - OffsetBytes(), OffsetBytes()));
    std::vector<Entry> entries;
    for (size_t i = 0; i < count; ++i) {
      size_t const start = count_bytes + i * entry_bytes;
      if (!AddEntry(at + start, start, entries)) return false;
    }
    return TakeEntries(entries);
  }

  // The entry at `start` in the buffer, and at `at` in the file.
  bool AddEntry(uint64_t at, size_t start, std::vector<Entry>& entries) {
    size_t const type = static_cast<size_t>(Number(start + 2, 2));
    if (type >= kTypeBytes.size() || kTypeBytes[type] == 0) return false;
    Entry entry;
    entry.tag = static_cast<uint16_t>(Number(start, 2));
    entry.value_bytes = kTypeBytes[type];
    entry.count = Number(start + 4, OffsetBytes());
    if (entry.count > kMostBytes) return false;
    uint64_t const bytes = entry.count * entry.value_bytes;
    size_t const values = start + 4 + OffsetBytes();
    entry.values_at =
        bytes <= OffsetBytes() ? at + 4 + OffsetBytes() : Number(values, OffsetBytes());
    if (entry.values_at > kMostBytes) return false;
    Extend(entry.values_at, bytes);
    entries.push_back(entry);
    return true;
  }

  bool TakeEntries(std::vector<Entry> const& entries) {
    Pieces data, preview;
    for (Entry const& entry : entries) {
      bool taken = true;
      switch (entry.tag) {
        case TIFFTAG_STRIPOFFSETS:
        case TIFFTAG_TILEOFFSETS:
          taken = Append(entry, data.places);
          break;
        case TIFFTAG_STRIPBYTECOUNTS:
        case TIFFTAG_TILEBYTECOUNTS:
          taken = Append(entry, data.sizes);
          break;
        case TIFFTAG_JPEGIFOFFSET:
          taken = Append(entry, preview.places);
          break;
        case TIFFTAG_JPEGIFBYTECOUNT:
          taken = Append(entry, preview.sizes);
          break;
        case TIFFTAG_SUBIFD:
        case TIFFTAG_EXIFIFD:
        case TIFFTAG_GPSIFD:
        case TIFFTAG_INTEROPERABILITYIFD:
          taken = Append(entry, pending_);
          break;
        default:
          break;
      }
      if (!taken) return false;
    }
    return TakePieces(data) && TakePieces(preview);
  }

  bool Append(Entry const& entry, std::vector<uint64_t>& values) {
    if (!Spend(entry.count) || !Read(entry.values_at, entry.count * entry.value_bytes))
      return false;
    for (size_t i = 0; i < entry.count; ++i) {
      size_t const bytes = static_cast<size_t>(entry.value_bytes);
      values.push_back(Number(i * bytes, bytes));
    }
    return true;
  }

  bool TakePieces(Pieces const& pieces) {
    if (pieces.places.size() != pieces.sizes.size()) return false;
    for (size_t i = 0; i < pieces.places.size(); ++i) {
      if (pieces.places[i] > kMostBytes || pieces.sizes[i] > kMostBytes) return false;
      Extend(pieces.places[i], pieces.sizes[i]);
    }
    return true;
  }

  std::ifstream file_;
  uint64_t size_ = 0;
  std::vector<BYTE> buffer_;
  std::vector<uint64_t> pending_;  // places of directories
  std::set<uint64_t> seen_;
  uint64_t end_ = 0;
  uint64_t spent_ = 0;
  bool big_endian_ = false;
  bool is_big_ = false;
};

}  // namespace

std::optional<uint64_t> TiffEnd(std::string const& name) { return Walker(name).End(); }

bool HasBytesAfter(std::string const& name, uint64_t end) {
  std::ifstream file(name, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(end));
  std::array<char, 1 << 16> piece;
  while (file) {
    file.read(piece.data(), piece.size());
    auto const read = piece.begin() + file.gcount();
    if (std::any_of(piece.begin(), read, [](char byte) { return byte != 0; })) return true;
  }
  return false;
}

}  // namespace sorrelin::tool
