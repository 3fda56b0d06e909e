// One decoded object stream: its dictionary, its data, and the header that lists its objects.
#include <sorrelin/document/cxref.h>
#include <sorrelin/document/decode_parms.h>
#include <sorrelin/document/inflate_buffer.h>
#include <sorrelin/document/object_stream.h>
#include <sorrelin/document/stream_object.h>
#include <sorrelin/document/typed_lookup.h>
#include <sorrelin/frame/string_error.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/decimal.h>
#include <sorrelin/syntax/scanner.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace sorrelin {

namespace {

constexpr std::string_view kObjectEnd = "\nendobj";

// The next token of a header. Kept: only blanks and LF separate, a CR stays at its token's end.
std::string_view TakeToken(std::string_view& text) {
  constexpr std::string_view kSeparators = " \n";
  text.remove_prefix(std::min(text.find_first_not_of(kSeparators), text.size()));
  std::string_view const token = text.substr(0, text.find_first_of(kSeparators));
  text.remove_prefix(token.size());
  return token;
}

}  // namespace

ObjectStreamReader::ObjectStreamReader(ReaderState* state, uint64_t stream_offset)
    : state_(state),
      stream_offset_(stream_offset),
      decode_parms_(std::make_unique<CDecodeParms>(state)) {
  auto text = ReadThroughEndobj(*state, stream_offset);
  if (!text) return;
  if (!state->Spend(text->size())) return;
  ReadDictionary(*text);
  Decode(*text);
  ReadIndex();
}

ObjectStreamReader::~ObjectStreamReader() = default;

void ObjectStreamReader::ReadDictionary(std::span<BYTE> text) {
  std::pair<char const*, DWORD*> const numbers[] = {
      {"/N", &object_count_}, {"/First", &first_offset_}, {"/Length", &length_}};
  for (auto const& [key, target] : numbers) {
    auto const number = FindTypedNumber(state_, text, key, kTypeInteger);
    if (!number) return;
    *target = static_cast<DWORD>(*number);
  }
  filter_names_ = FindFilterNames(state_, text);
  std::pair<DWORD, DWORD> extends;
  if (GetIntPairAfterKey(text.data(), text.size(), "Extends", &extends.first, &extends.second) &&
      extends.first != 0) {
    extends_ = extends;
  }
}

// A stream without a filter has no source for its decoded data, and so no objects.
void ObjectStreamReader::Decode(std::span<BYTE> text) {
  auto const data = FindStreamData(text);
  if (!data || !StartsWithTwoIntegers(text) || filter_names_.empty()) return;
  if (!Inflate(*data)) return;
  if (auto parms = FindTypedText(state_, text, "/DecodeParms", kTypeDictionary)) {
    decode_parms_->ParseDecodeParms(reinterpret_cast<BYTE*>(parms->data()), parms->size());
  }
  if (decode_parms_->HasPredictor()) decode_parms_->ApplyPredictor(decoded_);
}

// Kept: every name is taken for Flate, and each pass takes /Length for the size of what goes in.
bool ObjectStreamReader::Inflate(std::span<BYTE const> raw) {
  decoded_.assign(raw.begin(),
                  raw.begin() + static_cast<ptrdiff_t>(std::min<size_t>(raw.size(), length_)));
  for (size_t pass = 0; pass < filter_names_.size(); ++pass) {
    std::vector<BYTE> output;
    if (InflateBuffer(decoded_, length_, output, state_->m_nWorkLeft) != kInflated) {
      decoded_ = {};
      return false;
    }
    decoded_ = std::move(output);
  }
  decoded_.shrink_to_fit();
  return true;
}

// The header's pairs of object number and offset, whatever /N says; an odd last token is dropped. A
// stream holds no more objects than the object table has rows.
void ObjectStreamReader::ReadIndex() {
  ByteView const header{decoded_.data(), std::min<uint64_t>(decoded_.size(), first_offset_)};
  std::string_view rest = header.Text();
  while (places_.size() < kIndexRows) {
    std::string_view const number = TakeToken(rest);
    std::string_view const offset = TakeToken(rest);
    if (offset.empty()) break;
    places_.push_back(
        {static_cast<DWORD>(DecimalValue(offset)), static_cast<DWORD>(DecimalValue(number))});
  }
  KeepLastOfEachOffset();
  for (size_t i = 0; i < places_.size(); ++i) {
    by_number_.push_back({places_[i].nNumber, static_cast<DWORD>(i)});
  }
  std::sort(by_number_.begin(), by_number_.end());
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

// Kept: the generation is always 0.
void ObjectStreamReader::Serve(DWORD number, ObjectBytes* out) const {
  auto const extent = ExtentOf(number);
  if (!extent) return;
  ByteView const rest = ByteView{decoded_.data(), decoded_.size()}.From(extent->begin);
  std::string_view const held = rest.Chars().substr(0, static_cast<size_t>(extent->bytes));
  size_t const body_bytes = static_cast<size_t>(extent->bytes);
  char head[32];
  size_t const head_bytes = static_cast<size_t>(
      std::snprintf(head, sizeof head, "%i %i obj\n", static_cast<int>(number), 0));
  size_t const size = head_bytes + body_bytes + kObjectEnd.size() + 1;
  char* const text = static_cast<char*>(std::malloc(size));
  if (text == nullptr) throw SorrelinStringError(SorrelinStringError::kFailed);
  std::memcpy(text, head, head_bytes);
  std::memset(text + head_bytes, ' ', body_bytes);
  std::replace_copy(held.begin(), held.end(), text + head_bytes, '\0', ' ');
  std::memcpy(text + head_bytes + body_bytes, kObjectEnd.data(), kObjectEnd.size());
  text[size - 1] = '\0';
  *out = {reinterpret_cast<BYTE*>(text), static_cast<DWORD>(size), 1};
}

uint64_t ObjectStreamReader::HeldBytes() const {
  return decoded_.capacity() + places_.capacity() * sizeof(Place) +
         by_number_.capacity() * sizeof(by_number_[0]);
}

}  // namespace sorrelin
