// The first content stream of a page, tested for the direction of its image.
#include <sorrelin/document/loaded_object.h>
#include <sorrelin/document/object_loader.h>
#include <sorrelin/document/page_content.h>
#include <sorrelin/image/inflate_stream.h>
#include <sorrelin/syntax/page_flip.h>
#include <sorrelin/syntax/value_scan.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace sorrelin {

namespace {

// Content is inflated up to this many times its /Length, and tested as far as it came.
constexpr uint64_t kMostGrowth = 10;
constexpr size_t kPieceBytes = 16384;

constexpr std::string_view kStream = "stream";

// Where the data begin whose keyword ends at `at`: CR LF counts as two bytes, anything else as the
// run of separators.
size_t SkipLineEnd(std::string_view text, size_t at) {
  if (text.substr(at).starts_with("\r\n")) return at + 2;
  while (at < text.size() && IsSeparator(static_cast<BYTE>(text[at]))) ++at;
  return at;
}

bool IsInflatedFlipped(std::span<BYTE const> data, uint64_t room) {
  InflateStream stream(data);
  PageFlipTest test;
  std::array<BYTE, kPieceBytes> piece;
  while (room != 0) {
    size_t const wanted = static_cast<size_t>(std::min<uint64_t>(room, piece.size()));
    size_t const count = stream.Read({piece.data(), wanted});
    if (!test.Feed({piece.data(), count}) || count < wanted) break;
    room -= count;
  }
  return test.Finish() != 0;
}

bool IsFlateFlipped(LoadedObject const& content, DWORD length) {
  size_t const at = content.Front().find(kStream);
  if (at == std::string_view::npos) return false;
  size_t const start = SkipLineEnd(content.Chars(), at + kStream.size());
  size_t const bytes = std::min<size_t>(length, content.size() - start);
  // Kept: /Length makes the room, also where the object holds less; content of a wrong length is
  // tested as far as that.
  uint64_t const promised = std::min<uint64_t>(length, bytes + kMostMissingBytes);
  return IsInflatedFlipped(content.text().subspan(start, bytes), promised * kMostGrowth);
}

// Bytes of other filters are tokenized as they are.
bool IsPlainFlipped(LoadedObject const& content) {
  std::string_view const text = content.Front();
  size_t const at = text.find(kStream);
  size_t const end = text.find("endstream");
  if (at == std::string_view::npos || end == std::string_view::npos) return false;
  size_t const start = SkipLineEnd(text, at + kStream.size());
  if (start >= end) return false;
  PageFlipTest test;
  test.Feed(content.text().subspan(start, end - start));
  return test.Finish() != 0;
}

}  // namespace

std::optional<bool> IsPageFlipped(ObjectLoader& objects, std::span<BYTE> page) {
  DWORD number = 0;
  DWORD generation = 0;
  if (!FindPair(page, "Contents", &number, &generation)) return false;
  LoadedObject const content = objects.Open(number);
  if (!content) return false;
  if (!HoldsKey(content.text(), "FlateDecode")) return IsPlainFlipped(content);
  DWORD length = 0;
  if (!objects.ReadNumber(content.text(), "Length", &length)) return std::nullopt;
  return IsFlateFlipped(content, length);
}

}  // namespace sorrelin
