// The image of a page, as its objects describe it.
#include <sorrelin/document/document_file.h>
#include <sorrelin/document/loaded_object.h>
#include <sorrelin/document/object_loader.h>
#include <sorrelin/document/page_content.h>
#include <sorrelin/document/page_image.h>
#include <sorrelin/document/page_list.h>
#include <sorrelin/document/palette.h>
#include <sorrelin/document/stream_object.h>
#include <sorrelin/image/rebuilt_dib.h>
#include <sorrelin/platform/codes.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/units.h>
#include <sorrelin/syntax/scanner.h>
#include <sorrelin/syntax/value_scan.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <span>
#include <string_view>

namespace sorrelin {

namespace {

using Text = std::span<BYTE>;

struct Page {
  DWORD media_width = 612;  // points
  DWORD media_height = 792;
  bool flipped = false;
  DWORD xobject = 0;
};

// The first number after "XObject" in the resources, which are a part of the page or an object of
// their own; those of the page's ancestors are not looked for.
bool ReadXObjectNumber(ObjectLoader& objects, Text page, DWORD* number) {
  std::optional<bool> const is_dictionary = IsDictionaryAfter(page, "Resources");
  if (!is_dictionary) return false;
  DWORD generation = 0;
  if (*is_dictionary) return FindPair(page, "XObject", number, &generation);
  DWORD resources_number = 0;
  if (!FindPair(page, "Resources", &resources_number, &generation)) return false;
  LoadedObject const resources = objects.Open(resources_number);
  return resources && FindPair(resources.text(), "XObject", number, &generation);
}

bool ReadPage(ObjectLoader& objects, DWORD number, Page& page) {
  LoadedObject const object = objects.Open(number);
  if (!object) return false;
  DWORD box[4] = {};
  if (GetNumericArray(object.data(), object.size(), "MediaBox", box, 4) != 0) {
    // Kept: the origin is not subtracted; resolutions of such pages have always come out so.
    page.media_width = box[2];
    page.media_height = box[3];
  }
  if (!ReadXObjectNumber(objects, object.text(), &page.xobject)) return false;
  std::optional<bool> const flipped = IsPageFlipped(objects, object.text());
  page.flipped = flipped.value_or(false);
  return flipped.has_value();
}

// The object that the page names, or the first one that it names if it is a dictionary of XObjects.
// Kept: whatever mentions "Image" anywhere is the image, and one indirection is followed; tools
// that read further choose other images of the same page.
Status OpenImage(ObjectLoader& objects, DWORD number, std::optional<LoadedObject>& object) {
  object.emplace(objects.Fetch(number));
  if (!*object) return Status::Failed(PDF_ERROR_INVALID_HANDLE);
  if (HoldsKey(object->text(), "Image")) return Status::Ok();
  DWORD first = 0;
  DWORD generation = 0;
  if (!FindPairAfterName(object->text(), &first, &generation)) return Status::Failed();
  object.emplace(objects.Fetch(first));
  return *object ? Status::Ok() : Status::Failed();
}

bool ReadShape(ObjectLoader& objects, Text text, PageImage& image) {
  if (!objects.ReadNumber(text, "Width", &image.width) ||
      !objects.ReadNumber(text, "Height", &image.height) ||
      !objects.ReadNumber(text, "BitsPerComponent", &image.bits)) {
    return false;
  }
  DWORD low = 0;
  DWORD high = 0;
  if (FindArrayPair(text, "Decode", &low, &high)) image.decode_normal = low == 0 || high != 0;
  return true;
}

// Kept: what is neither bilevel nor indexed is taken for RGB, grey images too.
void ReadKind(ObjectLoader& objects, Text text, PageImage& image) {
  bool const indexed = HoldsKey(text, "Indexed");
  image.kind = image.bits == 1 ? kKindBilevel : indexed ? kKindIndexed : kKindRgb;
  DWORD high = 0;
  DWORD lookup = 0;
  if (!indexed || !FindPair(text, "DeviceRGB", &high, &lookup)) return;
  Palette palette = ReadPalette(objects, image.bits, high, lookup);
  image.palette = std::move(palette.block);
  image.black_is_1 = palette.black_is_1.value_or(image.black_is_1);
}

bool EqualsIgnoringCase(std::string_view value, std::string_view lower) {
  return std::equal(value.begin(), value.end(), lower.begin(), lower.end(),
                    [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; });
}

void ReadBlackIs1(Text text, PageImage& image) {
  std::string_view const value = FindToken(text, "BlackIs1").value_or(std::string_view());
  if (EqualsIgnoringCase(value, "true")) image.black_is_1 = true;
  if (EqualsIgnoringCase(value, "false")) image.black_is_1 = false;
}

// Filters are found anywhere in the text, in any order.
void ReadCompression(Text text, PageImage& image) {
  struct Filter {
    char const* name;
    DWORD flag;
  };
  static constexpr Filter kFilters[] = {{"DCTDecode", PDF_COMPRESSION_FLAG_JPEG},
                                        {"CCITTFaxDecode", PDF_COMPRESSION_FLAG_CCITT},
                                        {"RunLengthDecode", PDF_COMPRESSION_FLAG_RUN_LENGTH},
                                        {"FlateDecode", PDF_COMPRESSION_FLAG_FLATE},
                                        {"ASCII85Decode", PDF_COMPRESSION_FLAG_ASCII_85}};
  if (!HoldsKey(text, "Filter")) image.compression = PDF_COMPRESSION_FLAG_NONE;
  for (Filter const& filter : kFilters) {
    if (HoldsKey(text, filter.name)) image.compression |= filter.flag;
  }
  if ((image.compression & PDF_COMPRESSION_FLAG_CCITT) != 0) ReadBlackIs1(text, image);
}

// Takes /Length bytes into a block; what the object lacks of them is 0.
Status CopyData(ObjectLoader& objects, Text text, PageImage& image) {
  DWORD length = 0;
  if (!objects.ReadNumber(text, "Length", &length) || length == 0) return Status::Failed();
  auto const found = FindImageData(text);
  if (!found) return Status::Failed(PDF_ERROR_NOT_PDF);
  std::span<BYTE const> bytes = *found;
  // Kept: data that begin with a separator lose it; so does every image that the reader has met.
  while (!bytes.empty() && IsSeparator(bytes.front())) bytes = bytes.subspan(1);
  size_t const block_bytes = std::min<size_t>(length, bytes.size() + kMostMissingBytes);
  image.data = OwnedBlock(GlobalAlloc(GHND, block_bytes));
  LockedBlock const data(image.data.get());
  if (!data) throw std::bad_alloc();
  std::memcpy(data.bytes().data(), bytes.data(), std::min(bytes.size(), block_bytes));
  return Status::Ok();
}

LONG PixelsPerMetre(DWORD pixels, DWORD points) {
  constexpr float kTooLarge = 4294967296.0F;
  float const value = static_cast<float>(pixels) * kPointsPerMetre / static_cast<float>(points);
  return static_cast<LONG>(value < kTooLarge ? static_cast<DWORD>(value) : UINT32_MAX);
}

}  // namespace

Status ReadPageImage(ObjectLoader& objects, PageList const& pages, DWORD page_index,
                     PageImage& image) {
  if (page_index == UINT32_MAX || page_index + 1 > pages.count()) {
    return Status::Failed(PDF_ERROR_PAGE_NUMBER);
  }
  Page page;
  if (!ReadPage(objects, pages[page_index], page)) return Status::Failed();
  image.flipped = page.flipped;
  std::optional<LoadedObject> object;
  Status const opened = OpenImage(objects, page.xobject, object);
  if (!opened.ok()) return opened;
  if (!ReadShape(objects, object->text(), image)) return Status::Failed();
  ReadKind(objects, object->text(), image);
  ReadCompression(object->text(), image);
  if (page.media_width != 0 && page.media_height != 0) {
    image.resolution = PageImage::Resolution{PixelsPerMetre(image.width, page.media_width),
                                             PixelsPerMetre(image.height, page.media_height)};
  }
  return CopyData(objects, object->text(), image);
}

}  // namespace sorrelin
