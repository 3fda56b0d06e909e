// The image of a page: the way from the page object to its image object, the stream's bytes, and
// the decoder that the filter asks for.
#include <sorrelin/document/loaded_object.h>
#include <sorrelin/document/number_value.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/image/inflate_stream.h>
#include <sorrelin/image/page_flip.h>
#include <sorrelin/image/rebuilt_dib.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/syntax/scanner.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>

using sorrelin::LoadedObject;
using sorrelin::OwnedBlock;
using sorrelin::ReadNumber;

namespace {

struct Page {
  DWORD media_width = 612;  // points
  DWORD media_height = 792;
  bool flipped = false;
  DWORD xobject = 0;
};

struct Image {
  DWORD width = 0;   // pixels
  DWORD height = 0;  // rows
  DWORD bits = 0;    // per component
  bool decode_normal = true;
  DWORD kind = 0;
  DWORD compression = 0;  // PDF_COMPRESSION_FLAG_*, any number of them
  std::optional<DWORD> black_is_1;
  OwnedBlock palette;
  OwnedBlock data;
};

// Content is inflated up to this many times its /Length, and tested as far as it came.
constexpr uint64_t kMostContentGrowth = 10;
constexpr size_t kContentPieceBytes = 16384;

// Zeros that stand for the data which a /Length promises beyond its object: decoders see the end of
// the data far before them, and a /Length of gigabytes costs nothing.
constexpr size_t kMostMissingBytes = size_t{16} << 20;

constexpr std::string_view kStream = "stream";
// The keyword and one byte of its line end.
constexpr size_t kDataBehindKeyword = 7;

constexpr float kPointsPerMetre = 2834.0F;

std::string_view BytesOf(LoadedObject const& object) {
  return {reinterpret_cast<char const*>(object.data()), object.size()};
}

// Up to the first NUL.
std::string_view TextOf(LoadedObject const& object) {
  std::string_view const bytes = BytesOf(object);
  return bytes.substr(0, bytes.find('\0'));
}

// Where the data begin whose keyword ends at `at`: CR LF counts as two bytes, anything else as the
// run of delimiters.
size_t SkipLineEnd(sorrelin::SessionState& session, std::string_view text, size_t at) {
  if (text.substr(at).starts_with("\r\n")) return at + 2;
  while (at < text.size() && session.IsDelimiter(text[at]) != 0) ++at;
  return at;
}

int IsInflatedFlipped(std::span<BYTE const> data, uint64_t room) {
  sorrelin::InflateStream stream(data);
  sorrelin::PageFlipTest test;
  std::array<BYTE, kContentPieceBytes> piece;
  while (room != 0) {
    size_t const wanted = static_cast<size_t>(std::min<uint64_t>(room, piece.size()));
    size_t const count = stream.Read({piece.data(), wanted});
    if (!test.Feed({piece.data(), count}) || count < wanted) break;
    room -= count;
  }
  return test.Finish();
}

bool IsFlateContentFlipped(sorrelin::SessionState& session, LoadedObject const& content,
                           DWORD length) {
  std::string_view const all = BytesOf(content);
  size_t const at = TextOf(content).find(kStream);
  if (at == all.npos) return false;
  size_t const start = SkipLineEnd(session, all, at + kStream.size());
  size_t const bytes = std::min<size_t>(length, all.size() - start);
  // Kept: /Length makes the room, also where the object holds less; content of a wrong length is
  // tested as far as that.
  uint64_t const promised = std::min<uint64_t>(length, bytes + kMostMissingBytes);
  return IsInflatedFlipped({content.data() + start, bytes}, promised * kMostContentGrowth) != 0;
}

// Bytes of other filters are tokenized as they are.
bool IsPlainContentFlipped(sorrelin::SessionState& session, LoadedObject const& content) {
  std::string_view const text = TextOf(content);
  size_t const at = text.find(kStream);
  size_t const end = text.find("endstream");
  if (at == text.npos || end == text.npos) return false;
  size_t const start = SkipLineEnd(session, text, at + kStream.size());
  if (start >= end) return false;
  sorrelin::PageFlipTest test;
  test.Feed({content.data() + start, end - start});
  return test.Finish() != 0;
}

// Looks at the first content stream only. False if its /Length cannot be read.
bool ReadFlip(sorrelin::SessionState& session, LoadedObject const& object, Page& page) {
  DWORD number = 0;
  DWORD generation = 0;
  if (session.GetValue(object.data(), object.size(), "Contents", &number, &generation) == 0) {
    return true;
  }
  LoadedObject const content(session.LoadObject(number));
  if (content.data() == nullptr) return true;
  if (session.IsFlagSet(content.data(), content.size(), "FlateDecode") == 0) {
    page.flipped = IsPlainContentFlipped(session, content);
    return true;
  }
  DWORD length = 0;
  if (!ReadNumber(session, content, "Length", &length)) return false;
  page.flipped = IsFlateContentFlipped(session, content, length);
  return true;
}

// The first number behind "XObject" in the resources, which are a part of the page or an object of
// their own; those of the page's ancestors are not looked for.
bool ReadXObjectNumber(sorrelin::SessionState& session, LoadedObject const& object, DWORD* number) {
  int is_dictionary = 0;
  if (session.IsDictionary(object.data(), object.size(), is_dictionary, "Resources") == 0) {
    return false;
  }
  DWORD generation = 0;
  if (is_dictionary != 0) {
    return session.GetValue(object.data(), object.size(), "XObject", number, &generation) != 0;
  }
  DWORD resources_number = 0;
  if (session.GetValue(object.data(), object.size(), "Resources", &resources_number, &generation) ==
      0) {
    return false;
  }
  LoadedObject const resources(session.LoadObject(resources_number));
  return resources.data() != nullptr &&
         session.GetValue(resources.data(), resources.size(), "XObject", number, &generation) != 0;
}

bool ReadPage(sorrelin::SessionState& session, DWORD number, Page& page) {
  LoadedObject const object(session.LoadObject(number));
  if (object.data() == nullptr) return false;
  DWORD box[4] = {};
  if (sorrelin::GetNumericArray(object.data(), object.size(), "MediaBox", box, 4) != 0) {
    // Kept: the origin is not subtracted; resolutions of such pages have always come out so.
    page.media_width = box[2];
    page.media_height = box[3];
  }
  return ReadXObjectNumber(session, object, &page.xobject) && ReadFlip(session, object, page);
}

// The object that the page names, or the first one that it names if it is a dictionary of XObjects.
// Kept: whatever mentions "Image" anywhere is the image, and one indirection is followed; tools
// that read further choose other images of the same page.
void LoadImageObject(sorrelin::SessionState& session, DWORD number,
                     std::optional<LoadedObject>& object) {
  object.emplace(session.LoadObject(number));
  if (session.IsFlagSet(object->data(), object->size(), "Image") != 0) return;
  DWORD first = 0;
  DWORD generation = 0;
  if (session.GetFirstValue(object->data(), object->size(), &first, &generation) == 0) first = 0;
  object.emplace(session.LoadObject(first));
}

bool ReadShape(sorrelin::SessionState& session, LoadedObject const& object, Image& image) {
  if (!ReadNumber(session, object, "Width", &image.width) ||
      !ReadNumber(session, object, "Height", &image.height) ||
      !ReadNumber(session, object, "BitsPerComponent", &image.bits)) {
    return false;
  }
  DWORD low = 0;
  DWORD high = 0;
  if (session.GetValueFromArray(object.data(), object.size(), "Decode", &low, &high) != 0) {
    image.decode_normal = low == 0 || high != 0;
  }
  return true;
}

// Kept: what is neither bilevel nor indexed is taken for RGB, grey images too.
void ReadKind(sorrelin::SessionState& session, LoadedObject const& object, Image& image) {
  bool const indexed = session.IsFlagSet(object.data(), object.size(), "Indexed") != 0;
  image.kind = image.bits == 1 ? sorrelin::kKindBilevel
               : indexed       ? sorrelin::kKindIndexed
                               : sorrelin::kKindRgb;
  if (!indexed) return;
  DWORD high = 0;
  DWORD lookup = 0;
  if (session.GetValue(object.data(), object.size(), "DeviceRGB", &high, &lookup) == 0) return;
  image.palette = OwnedBlock(session.LoadPalette(image.bits, high, lookup));
}

bool EqualsIgnoringCase(char const* text, std::string_view lower) {
  std::string_view const value(text);
  return std::equal(value.begin(), value.end(), lower.begin(), lower.end(),
                    [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; });
}

void ReadBlackIs1(sorrelin::SessionState& session, LoadedObject const& object, Image& image) {
  constexpr uint64_t kScratchBytes = 10;
  char value[kScratchBytes + 1] = {};
  uint64_t size = kScratchBytes;
  if (session.GetStringValue(object.data(), object.size(), "BlackIs1", value, &size) == 0) return;
  if (EqualsIgnoringCase(value, "true")) image.black_is_1 = 1;
  if (EqualsIgnoringCase(value, "false")) image.black_is_1 = 0;
}

// Filters are found anywhere in the text, in any order.
void ReadCompression(sorrelin::SessionState& session, LoadedObject const& object, Image& image) {
  struct Filter {
    char const* name;
    DWORD flag;
  };
  static constexpr Filter kFilters[] = {{"DCTDecode", PDF_COMPRESSION_FLAG_JPEG},
                                        {"CCITTFaxDecode", PDF_COMPRESSION_FLAG_CCITT},
                                        {"RunLengthDecode", PDF_COMPRESSION_FLAG_RUN_LENGTH},
                                        {"FlateDecode", PDF_COMPRESSION_FLAG_FLATE},
                                        {"ASCII85Decode", PDF_COMPRESSION_FLAG_ASCII_85}};
  if (session.IsFlagSet(object.data(), object.size(), "Filter") == 0) {
    image.compression = PDF_COMPRESSION_FLAG_NONE;
  }
  for (Filter const& filter : kFilters) {
    if (session.IsFlagSet(object.data(), object.size(), filter.name) != 0) {
      image.compression |= filter.flag;
    }
  }
  if ((image.compression & PDF_COMPRESSION_FLAG_CCITT) != 0) ReadBlackIs1(session, object, image);
}

// A block of /Length bytes; what the object lacks of them is 0.
bool CopyData(sorrelin::SessionState& session, LoadedObject const& object, Image& image) {
  DWORD length = 0;
  if (!ReadNumber(session, object, "Length", &length) || length == 0) return false;
  BYTE const* const key = session.GetKeyBeginning(object.data(), object.size(), "stream");
  if (key == nullptr) {
    session.PDF_SetLastError(PDF_ERROR_NOT_PDF);
    return false;
  }
  std::span<BYTE const> bytes(object.data(), object.size());
  size_t const at = static_cast<size_t>(key - bytes.data()) + kDataBehindKeyword;
  bytes = bytes.subspan(std::min(at, bytes.size()));
  // Kept: data that begin with a delimiter lose it; so does every image that the reader has met.
  while (!bytes.empty() && session.IsDelimiter(static_cast<char>(bytes.front())) != 0) {
    bytes = bytes.subspan(1);
  }
  size_t const block_bytes = std::min<size_t>(length, bytes.size() + kMostMissingBytes);
  image.data = OwnedBlock(GlobalAlloc(GHND, block_bytes));
  void* const data = GlobalLock(image.data.get());
  if (data == nullptr) return false;
  std::memcpy(data, bytes.data(), std::min(bytes.size(), block_bytes));
  GlobalUnlock(image.data.get());
  return true;
}

bool ReadImage(sorrelin::SessionState& session, LoadedObject const& object, Image& image) {
  if (object.data() == nullptr || !ReadShape(session, object, image)) return false;
  ReadKind(session, object, image);
  ReadCompression(session, object, image);
  return true;
}

// The order settles what becomes of several filters. False with the code of a filter that no
// decoder takes.
bool Decode(sorrelin::SessionState& session, Image const& image, bool flipped, void** bitmap) {
  DWORD const filters = image.compression;
  DWORD const signed_height = flipped ? 0 - image.height : image.height;
  HGLOBAL const data = image.data.get();
  HGLOBAL const palette = image.palette.get();
  if ((filters & PDF_COMPRESSION_FLAG_ASCII_85) != 0) {
    session.PDF_SetLastError(PDF_ERROR_UNSUPPORTED_COMPRESSION);
    return false;
  }
  if ((filters & PDF_COMPRESSION_FLAG_NONE) != 0) {
    *bitmap = session.CreateDIBFromUncompressedData(data, image.width, signed_height,
                                                    static_cast<int>(image.kind), palette);
  } else if ((filters & PDF_COMPRESSION_FLAG_FLATE) != 0) {
    *bitmap = session.CreateDIBFromFLATEData(data, image.width, signed_height, image.kind, palette);
  } else if ((filters & PDF_COMPRESSION_FLAG_JPEG) != 0) {
    *bitmap = session.CreateDIBFromJPEGData(data);
  } else if ((filters & PDF_COMPRESSION_FLAG_CCITT) != 0) {
    *bitmap = session.CreateDIBFromCCITTData(data, image.width, image.height);
  } else if ((filters & PDF_COMPRESSION_FLAG_RUN_LENGTH) != 0) {
    *bitmap = session.CreateDIBFromRLEData(data, image.width, image.height, image.kind, palette);
  } else {
    session.PDF_SetLastError(PDF_ERROR_UNSUPPORTED_COMPRESSION);
    return false;
  }
  return true;
}

// Pixels per metre of a picture that fills the media box.
LONG PixelsPerMetre(DWORD pixels, DWORD points) {
  constexpr float kTooLarge = 4294967296.0F;
  float const value = static_cast<float>(pixels) * kPointsPerMetre / static_cast<float>(points);
  return static_cast<LONG>(value < kTooLarge ? static_cast<DWORD>(value) : UINT32_MAX);
}

// Kept: the page decides, also over the resolution that a JPEG file brought with it.
void SetResolution(void* bitmap, Image const& image, Page const& page) {
  if (page.media_width == 0 || page.media_height == 0) return;
  BYTE* const bytes = static_cast<BYTE*>(GlobalLock(bitmap));
  if (bytes == nullptr) return;
  BITMAPINFOHEADER header;
  if (GlobalSize(bitmap) >= sizeof header) {
    std::memcpy(&header, bytes, sizeof header);
    header.biXPelsPerMeter = PixelsPerMetre(image.width, page.media_width);
    header.biYPelsPerMeter = PixelsPerMetre(image.height, page.media_height);
    std::memcpy(bytes, &header, sizeof header);
  }
  GlobalUnlock(bitmap);
}

}  // namespace

void* sorrelin::SessionState::LoadImageFromPDF(DWORD nPage) {
  return LoadImageAndInfoFromPDF(nPage, nullptr, nullptr);
}

void* sorrelin::SessionState::LoadImageAndInfoFromPDF(DWORD nPage, DWORD* pnCompression,
                                                      DWORD* pnKind) {
  m_bBlackIs1 = 0;
  m_bDecodeNormal = 1;
  if (nPage == UINT32_MAX || nPage + 1 > GetNumberOfPages()) {
    PDF_SetLastError(PDF_ERROR_PAGE_NUMBER);
    return nullptr;
  }
  Page page;
  if (!ReadPage(*this, GetPageObjectNumber(nPage), page)) return nullptr;
  Image image;
  std::optional<LoadedObject> object;
  LoadImageObject(*this, page.xobject, object);
  if (!ReadImage(*this, *object, image)) return nullptr;
  m_bDecodeNormal = image.decode_normal ? 1 : 0;
  m_nProcSetFlags = image.kind;
  m_bBlackIs1 = image.black_is_1.value_or(m_bBlackIs1);
  // What the image says of itself stands for later decodes also where its data are not found.
  if (!CopyData(*this, *object, image)) return nullptr;
  object.reset();

  void* bitmap = nullptr;
  if (!Decode(*this, image, page.flipped, &bitmap)) return nullptr;
  SetResolution(bitmap, image, page);
  if (pnCompression != nullptr) *pnCompression = image.compression;
  if (pnKind != nullptr) *pnKind = m_nProcSetFlags;
  return bitmap;
}
