// Objects that are held in object streams. One of them is dressed up like an object of the file, so
// that every scan works on both alike.
#ifndef SORRELIN_DOCUMENT_OBJECT_STREAM_H_
#define SORRELIN_DOCUMENT_OBJECT_STREAM_H_

#include <sorrelin/document/document_file.h>
#include <sorrelin/document/object_bytes.h>
#include <sorrelin/platform/types.h>
#include <sorrelin/syntax/object_source.h>

#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct XrefProbe;

namespace sorrelin {

// One decoded object stream. A stream that cannot be read holds no objects.
class ObjectStreamReader {
 public:
  // Reads and decodes the stream object at `stream_offset`, as far as the work that is left allows.
  ObjectStreamReader(DocumentFile& file, ObjectSource& objects, uint64_t stream_offset);
  ~ObjectStreamReader() = default;
  ObjectStreamReader(ObjectStreamReader const&) = delete;
  ObjectStreamReader& operator=(ObjectStreamReader const&) = delete;

  // Bytes of object `number`, without what Serve puts around them.
  uint64_t SizeOf(DWORD number) const { return ExtentOf(number).value_or(Extent{}).bytes; }

  // Whether the stream lists the object, and its bytes have no such text.
  bool Lacks(DWORD number, std::string_view text) const;

  // The text of object `number`, empty and invalid if the stream does not list it.
  ObjectBytes Serve(DWORD number) const;

  // Bytes that the reader keeps in memory.
  uint64_t HeldBytes() const;

 private:
  friend struct ::XrefProbe;

  // Where an object begins after the header, and its number; ordered by offset.
  struct Place {
    DWORD nOffset;
    DWORD nNumber;
  };

  // An object's bytes in the decoded data, of which those that the data lack are 0.
  struct Extent {
    uint64_t begin = 0;
    uint64_t bytes = 0;
  };

  // nullopt if the stream does not list the object.
  std::optional<Extent> ExtentOf(DWORD number) const;
  // Those of the extent's bytes that the data do not lack.
  std::string_view HeldOf(Extent extent) const;
  void ReadDictionary(ObjectSource& objects, std::span<BYTE> text);
  void Decode(ObjectSource& objects, std::span<BYTE> text, uint64_t& work);
  bool Inflate(std::span<BYTE const> raw, uint64_t& work);
  void ReadIndex(WorkBudget& work);
  void KeepLastOfEachOffset();

  std::vector<std::string> filter_names_;
  DWORD object_count_ = 0;                          // /N, which nothing goes by
  DWORD first_offset_ = 0;                          // /First
  std::optional<std::pair<DWORD, DWORD>> extends_;  // /Extends, which nothing follows
  DWORD length_ = 0;                                // /Length
  std::vector<BYTE> decoded_;
  std::vector<Place> places_;
  std::vector<std::pair<DWORD, DWORD>> by_number_;  // number, position in places_
};

// The streams decoded last, at most 49 of them; the one that came first goes first.
class ObjectStreamList {
 public:
  ObjectStreamList(DocumentFile& file, ObjectSource& objects) : file_(file), objects_(objects) {}

  // Object `number` of the stream object at `stream_offset`. Empty and invalid also for a stream
  // that needs an object of its own to be read.
  ObjectBytes Fetch(uint64_t stream_offset, DWORD number);
  // Whether the text of that object is known to lack `key`, a name. True costs what a fetch does.
  bool Lacks(uint64_t stream_offset, DWORD number, std::string_view key);

 private:
  friend struct ::XrefProbe;

  ObjectStreamReader const* Open(uint64_t stream_offset);
  ObjectStreamReader const* Find(uint64_t stream_offset) const;
  ObjectStreamReader const* Build(uint64_t stream_offset);
  void Evict();

  DocumentFile& file_;
  ObjectSource& objects_;
  std::list<std::pair<uint64_t, std::unique_ptr<ObjectStreamReader>>> streams_;
  std::vector<uint64_t> in_progress_;  // offsets of the streams that are being built
  uint64_t held_bytes_ = 0;
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_OBJECT_STREAM_H_
