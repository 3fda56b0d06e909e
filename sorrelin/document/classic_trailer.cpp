// Trailers of the classic route: the first 300 bytes from the word "trailer" on, searched as text.
#include <sorrelin/document/classic_route.h>
#include <sorrelin/document/document_file.h>
#include <sorrelin/document/object_loader.h>
#include <sorrelin/platform/codes.h>
#include <sorrelin/syntax/value_scan.h>

#include <algorithm>
#include <set>
#include <span>
#include <string_view>

namespace sorrelin {

namespace {

constexpr DWORD kTrailerBytes = 300;

class TrailerText {
 public:
  // Reads from the channel's position.
  explicit TrailerText(FileChannel* channel) {
    if (ChannelRead(channel, bytes_, kTrailerBytes, &size_, nullptr) == 0) size_ = 0;
  }
  bool empty() const { return size_ == 0; }
  std::span<BYTE> text() { return {bytes_, size_}; }

 private:
  BYTE bytes_[kTrailerBytes];
  DWORD size_ = 0;
};

}  // namespace

// Newest section first; older ones fill the rows that it leaves free.
Status ClassicRoute::ReadSections(DWORD start) {
  DWORD prev = 0;
  Status status = ReadTable(start, false);
  if (status.ok()) status = ReadTrailer(&prev);
  for (std::set<DWORD> seen{start}; status.ok() && prev != 0 && seen.insert(prev).second;) {
    status = ReadTable(prev, true);
    if (status.ok()) status = ReadPrev(&prev);
  }
  return status;
}

Status ClassicRoute::ReadTrailer(DWORD* prev) {
  TrailerText trailer(objects_.file().channel());
  if (trailer.empty()) return Status::Failed(PDF_ERROR_SYSTEM);
  std::span<BYTE> const text = trailer.text();
  facts_.info = 0;
  facts_.info_generation = 0;
  DWORD found = 0;
  if (FindNumber(text, "Prev", &found) && prev != nullptr) *prev = found;
  DWORD number = 0;
  DWORD generation = 0;
  if (!FindNumber(text, "Size", &facts_.trailer_size) ||
      !FindPair(text, "Root", &number, &generation)) {
    return Status::Failed(PDF_ERROR_SYSTEM);
  }
  facts_.catalog = number;
  facts_.catalog_generation = generation;
  // Kept: without the key Info is what Root is; updates write that pair back.
  FindPair(text, "Info", &number, &generation);
  facts_.info = number;
  facts_.info_generation = generation;
  // Kept: an /ID whose text cannot be cut out leaves the old text and is no failure.
  TakeTrailerText(text, "/ID", facts_.trailer_id);
  return TakeTrailerText(text, "/Encrypt", facts_.trailer_encrypt) ? Status::Ok()
                                                                   : Status::Failed();
}

// The key with its value as text, all zeros where the trailer does not mention it. False if it does
// and the text cannot be cut out, or is too long.
bool ClassicRoute::TakeTrailerText(std::span<BYTE> trailer, char const* key,
                                   char (&target)[DocumentFacts::kTrailerTextBytes]) {
  if (!HoldsKey(trailer, key + 1)) {
    std::fill(std::begin(target), std::end(target), '\0');
    return true;
  }
  std::string_view const text = FindKeyWithValue(trailer, key).value_or(std::string_view());
  if (text.empty() || text.size() >= sizeof target) return false;
  *std::copy(text.begin(), text.end(), target) = '\0';
  return true;
}

Status ClassicRoute::ReadPrev(DWORD* prev) {
  TrailerText trailer(objects_.file().channel());
  if (trailer.empty()) return Status::Failed(PDF_ERROR_SYSTEM);
  std::span<BYTE> const text = trailer.text();
  DWORD const entered = *prev;
  DWORD value = 0;
  if (IsReferenceAfter(text, "Prev")) {
    DWORD number = 0;
    if (!FindNumber(text, "Prev", &number) || !objects_.ReadNumberOf(number, &value)) {
      return Status::Failed();
    }
    *prev = value;
  } else if (FindNumber(text, "Prev", &value)) {
    *prev = value;
  }
  if (*prev == entered) *prev = 0;
  return Status::Ok();
}

}  // namespace sorrelin
