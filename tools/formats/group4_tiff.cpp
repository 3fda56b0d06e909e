// The file (TIFF 6.0): header, resolution, directory, and the strip last.
#include "tools/formats/group4_tiff.h"

#include <sorrelin/frame/session.h>
#include <sorrelin/platform/memory.h>

#include <bit>
#include <cstring>
#include <memory>
#include <span>

namespace sorrelin::tool {
namespace {

constexpr WCHAR const* kGroup4Library = u"Cadwick.dll";
constexpr size_t kHeaderBytes = 8;
constexpr size_t kRationalBytes = 8;
constexpr size_t kEntryBytes = 12;

enum Type : uint16_t { kShort = 3, kLong = 4, kRational = 5 };

struct Entry {
  uint16_t tag;
  Type type;
  uint32_t value;  // of a rational, its offset
};

class FileBytes {
 public:
  explicit FileBytes(size_t room) { bytes_.reserve(room); }

  template <typename Number>
  void Put(Number number) {
    BYTE bytes[sizeof number];
    std::memcpy(bytes, &number, sizeof number);
    bytes_.insert(bytes_.end(), bytes, bytes + sizeof number);
  }

  // A value of fewer bytes than its field stands at the field's start.
  void Put(Entry const& entry) {
    Put(entry.tag);
    Put<uint16_t>(entry.type);
    Put<uint32_t>(1);
    if (entry.type != kShort) return Put(entry.value);
    Put(static_cast<uint16_t>(entry.value));
    Put<uint16_t>(0);
  }

  void Put(std::span<BYTE const> bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }

  std::vector<BYTE> Take() { return std::move(bytes_); }

 private:
  std::vector<BYTE> bytes_;
};

// Tags in ascending order, as the format wants them.
std::vector<Entry> EntriesOf(Pix* pix, size_t data_bytes) {
  uint32_t const height = static_cast<uint32_t>(pixGetHeight(pix));
  std::vector<Entry> entries = {{256, kLong, static_cast<uint32_t>(pixGetWidth(pix))},
                                {257, kLong, height},
                                {258, kShort, 1},  // bits of a sample
                                {259, kShort, 4},  // Group 4
                                {262, kShort, 0},  // a set bit is black
                                {266, kShort, 1},  // the highest bit is the first
                                {273, kLong, 0},   // the strip's offset, set below
                                {277, kShort, 1},  // samples of a pixel
                                {278, kLong, height},
                                {279, kLong, static_cast<uint32_t>(data_bytes)}};
  if (pixGetXRes(pix) > 0 && pixGetYRes(pix) > 0) {
    entries.push_back({282, kRational, kHeaderBytes});
    entries.push_back({283, kRational, kHeaderBytes + kRationalBytes});
  }
  entries.push_back({284, kShort, 1});  // samples stand side by side
  entries.push_back({293, kLong, 0});   // nothing is uncompressed
  entries.push_back({296, kShort, 2});  // inches
  return entries;
}

std::vector<BYTE> FileOf(Pix* pix, std::span<BYTE const> data) {
  constexpr size_t kDirectory = kHeaderBytes + 2 * kRationalBytes;
  std::vector<Entry> entries = EntriesOf(pix, data.size());
  size_t const strip = kDirectory + 2 + entries.size() * kEntryBytes + 4;
  for (Entry& entry : entries) {
    if (entry.tag == 273) entry.value = static_cast<uint32_t>(strip);
  }
  FileBytes file(strip + data.size());
  bool const little = std::endian::native == std::endian::little;
  file.Put<uint16_t>(little ? 0x4949 : 0x4D4D);
  file.Put<uint16_t>(42);
  file.Put<uint32_t>(kDirectory);
  for (int const dots : {pixGetXRes(pix), pixGetYRes(pix)}) {
    file.Put(static_cast<uint32_t>(dots));
    file.Put<uint32_t>(1);
  }
  file.Put(static_cast<uint16_t>(entries.size()));
  for (Entry const& entry : entries) file.Put(entry);
  file.Put<uint32_t>(0);
  file.Put(data);
  return file.Take();
}

}  // namespace

std::vector<BYTE> Group4Tiff(Pix* pix) {
  if (pixGetDepth(pix) != 1 || pixGetColormap(pix) != nullptr) return {};
  // Large, as its tables are inside it; it is used by one thread.
  static auto const session = std::make_unique<CCreatePDF>();
  OwnedBlock const bitmap = PackedDib(pix, {});
  DWORD size = 0;
  OwnedBlock const coded(
      bitmap.IsValid() ? session->ConvertDIB2CcittPDFImageW(bitmap.get(), size, kGroup4Library)
                       : nullptr);
  if (!coded.IsValid()) return {};
  BYTE const* const data = static_cast<BYTE const*>(GlobalLock(coded.get()));
  if (data == nullptr) return {};
  std::vector<BYTE> file = FileOf(pix, {data, size});
  GlobalUnlock(coded.get());
  return file;
}

}  // namespace sorrelin::tool
