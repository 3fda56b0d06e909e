// One decoded object stream: its dictionary, its data, and the header that lists its objects.
#include <sorrelin/document/decode_parms.h>
#include <sorrelin/document/object_stream.h>
#include <sorrelin/document/stream_object.h>
#include <sorrelin/image/inflate_buffer.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/string_error.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/decimal.h>
#include <sorrelin/syntax/scanner.h>
#include <sorrelin/syntax/typed_lookup.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace sorrelin {

namespace {

constexpr std::string_view kObjectEnd = "\nendobj";

// The next token of a header. Kept: only blanks and LF separate, a CR stays at its token's end.
std::string_view TakeToken(std::string_view& text) {
  auto const separates = [](char c) { return c == ' ' || c == '\n'; };
  auto const begin = std::find_if_not(text.begin(), text.end(), separates);
  auto const end = std::find_if(begin, text.end(), separates);
  text.remove_prefix(static_cast<size_t>(end - text.begin()));
  return {begin, end};
}

}  // namespace

ObjectStreamReader::ObjectStreamReader(DocumentFile& file, ObjectSource& objects,
                                       uint64_t stream_offset) {
  auto text = file.ReadThroughEndobj(stream_offset);
  if (!text || !file.work().Spend(text->size())) return;
  ReadDictionary(objects, *text);
  Decode(objects, *text, file.work().left());
  ReadIndex(file.work());
}

void ObjectStreamReader::ReadDictionary(ObjectSource& objects, std::span<BYTE> text) {
  std::pair<char const*, DWORD*> const numbers[] = {
      {"/N", &object_count_}, {"/First", &first_offset_}, {"/Length", &length_}};
  for (auto const& [key, target] : numbers) {
    auto const number = FindTypedNumber(&objects, text, key, kTypeInteger);
    if (!number) return;
    *target = static_cast<DWORD>(*number);
  }
  filter_names_ = FindFilterNames(&objects, text);
  std::pair<DWORD, DWORD> extends;
  if (GetIntPairAfterKey(text.data(), text.size(), "Extends", &extends.first, &extends.second) &&
      extends.first != 0) {
    extends_ = extends;
  }
}

// A stream without a filter has no source for its decoded data, and so no objects.
void ObjectStreamReader::Decode(ObjectSource& objects, std::span<BYTE> text, uint64_t& work) {
  auto const data = FindStreamData(text);
  if (!data || !StartsWithTwoIntegers(text) || filter_names_.empty()) return;
  if (!Inflate(*data, work)) return;
  CDecodeParms parms(&objects);
  if (auto found = FindTypedText(&objects, text, "/DecodeParms", kTypeDictionary)) {
    parms.ParseDecodeParms(reinterpret_cast<BYTE*>(found->data()), found->size());
  }
  if (parms.HasPredictor()) parms.ApplyPredictor(decoded_);
}

// Kept: every name is taken for Flate, and each pass takes /Length for the size of what goes in.
bool ObjectStreamReader::Inflate(std::span<BYTE const> raw, uint64_t& work) {
  decoded_.assign(raw.begin(),
                  raw.begin() + static_cast<ptrdiff_t>(std::min<size_t>(raw.size(), length_)));
  for (size_t pass = 0; pass < filter_names_.size(); ++pass) {
    std::vector<BYTE> output;
    if (InflateBuffer(decoded_, length_, output, work) != kInflated) {
      decoded_ = {};
      return false;
    }
    decoded_ = std::move(output);
  }
  decoded_.shrink_to_fit();
  return true;
}

// The header's pairs of object number and offset, whatever /N says; an odd last token is dropped.
void ObjectStreamReader::ReadIndex(WorkBudget& work) {
  ByteView const header{decoded_.data(), std::min<uint64_t>(decoded_.size(), first_offset_)};
  std::string_view rest = header.Text();
  for (;;) {
    std::string_view const number = TakeToken(rest);
    std::string_view const offset = TakeToken(rest);
    if (offset.empty()) break;
    if (!work.Spend(sizeof(Place) + sizeof by_number_[0])) return;
    places_.push_back(
        {static_cast<DWORD>(DecimalValue(offset)), static_cast<DWORD>(DecimalValue(number))});
  }
  KeepLastOfEachOffset();
  by_number_.reserve(places_.size());
  for (size_t i = 0; i < places_.size(); ++i) {
    by_number_.push_back({places_[i].nNumber, static_cast<DWORD>(i)});
  }
  if (!std::is_sorted(by_number_.begin(), by_number_.end())) {
    std::sort(by_number_.begin(), by_number_.end());
  }
}

void ObjectStreamReader::KeepLastOfEachOffset() {
  std::stable_sort(places_.begin(), places_.end(),
                   [](Place const& a, Place const& b) { return a.nOffset < b.nOffset; });
  size_t kept = 0;
  for (Place const& place : places_) {
    bool const repeats = kept > 0 && places_[kept - 1].nOffset == place.nOffset;
    places_[repeats ? kept - 1 : kept++] = place;
  }
  places_.resize(kept);
  places_.shrink_to_fit();
}

// Kept: an object that is listed twice is taken from the lower offset.
std::optional<ObjectStreamReader::Extent> ObjectStreamReader::ExtentOf(DWORD number) const {
  auto const entry =
      std::lower_bound(by_number_.begin(), by_number_.end(), std::pair<DWORD, DWORD>{number, 0});
  if (entry == by_number_.end() || entry->first != number) return std::nullopt;
  size_t const place = entry->second;
  uint64_t const begin = uint64_t{places_[place].nOffset} + first_offset_;
  if (place + 1 < places_.size()) {
    return Extent{begin, uint64_t{places_[place + 1].nOffset} - places_[place].nOffset};
  }
  return Extent{begin, decoded_.size() - std::min<uint64_t>(begin, decoded_.size())};
}

std::string_view ObjectStreamReader::HeldOf(Extent extent) const {
  ByteView const rest = ByteView{decoded_.data(), decoded_.size()}.From(extent.begin);
  return rest.Chars().substr(0, static_cast<size_t>(extent.bytes));
}

bool ObjectStreamReader::Lacks(DWORD number, std::string_view text) const {
  auto const extent = ExtentOf(number);
  return extent && HeldOf(*extent).find(text) == std::string_view::npos;
}

// Kept: the generation is always 0.
ObjectBytes ObjectStreamReader::Serve(DWORD number) const {
  auto const extent = ExtentOf(number);
  if (!extent) return {};
  std::string_view const held = HeldOf(*extent);
  std::string const head = std::to_string(static_cast<int>(number)) + " 0 obj\n";
  OwnedBlock block = NewOwnedBlock(GHND, head.size() + extent->bytes + kObjectEnd.size() + 1);
  LockedBlock const lock(block.get());
  if (!lock) throw SorrelinStringError(SorrelinStringError::kFailed);
  BYTE* const body = std::copy(head.begin(), head.end(), lock.bytes().data());
  BYTE* const lacking = std::replace_copy(held.begin(), held.end(), body, '\0', ' ');
  std::fill(lacking, body + extent->bytes, BYTE{' '});
  std::copy(kObjectEnd.begin(), kObjectEnd.end(), body + extent->bytes);
  return {std::move(block), true};
}

uint64_t ObjectStreamReader::HeldBytes() const {
  return decoded_.capacity() + places_.capacity() * sizeof(Place) +
         by_number_.capacity() * sizeof(by_number_[0]);
}

}  // namespace sorrelin
