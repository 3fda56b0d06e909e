// HEIC and AVIF through the module that is loaded for them. A file starts with a box: its length of
// 4 bytes, "ftyp", and the brand (ISO/IEC 14496-12, 4.3).
#include "tools/formats/heif/heif_file.h"

#include <sorrelin/image/codecs/sibling_library.h>
#include <sorrelin/platform/module.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include "tools/formats/ends/file_end.h"
#include "tools/formats/heif/heif_module.h"
#include "tools/formats/picture/blend.h"
#include "tools/system/remedies.h"

namespace sorrelin::tool {
namespace {

constexpr WCHAR const* kModule = SORRELIN_TEXT("sorrelin-heif.dll");
constexpr char kDamaged[] = "is a damaged HEIC or AVIF file (save it again)";
constexpr size_t kBoxHeaderBytes = 8;

// The module, loaded once and kept.
struct Module {
  SorrelinHeifCountFunction* count = nullptr;
  SorrelinHeifDecodeFunction* decode = nullptr;
  SorrelinHeifFreeFunction* free = nullptr;

  bool IsWhole() const { return count != nullptr && decode != nullptr && free != nullptr; }
};

Module const& LoadedModule() {
  static Module const module = [] {
    HMODULE const library = LoadLibraryW(kModule);
    if (library == nullptr) return Module{};
    return Module{EntryPoint<SorrelinHeifCountFunction*>(library, "SorrelinHeifCount"),
                  EntryPoint<SorrelinHeifDecodeFunction*>(library, "SorrelinHeifDecode"),
                  EntryPoint<SorrelinHeifFreeFunction*>(library, "SorrelinHeifFree")};
  }();
  return module;
}

std::string MissingModule() {
  return "is HEIC or AVIF, and " + LibraryFile("sorrelin-heif.dll") + " is not there to read it (" +
         InstallRemedy("sorrelin-heif") + ", or convert the file to JPEG)";
}

PixPtr PixOf(SorrelinHeifPicture const& picture) {
  PixPtr pix(pixCreate(picture.width, picture.height, 32));
  for (int y = 0; pix != nullptr && y < picture.height; ++y) {
    uint8_t const* pixel = picture.rows + static_cast<size_t>(y) * picture.row_bytes;
    l_uint32* const line = pixGetData(pix.get()) + static_cast<ptrdiff_t>(y) * pixGetWpl(pix.get());
    for (int x = 0; x < picture.width; ++x, pixel += 4) {
      composeRGBPixel(pixel[0], pixel[1], pixel[2], line + x);
      line[x] |= l_uint32{pixel[3]} << L_ALPHA_SHIFT;
    }
  }
  return pix;
}

// With samples of 16 bits, alpha laid on white.
Samples DeepSamplesOf(SorrelinHeifPicture const& picture, Changes& changes) {
  constexpr size_t kPixelSamples = 4;
  size_t const row_samples = kPixelSamples * static_cast<size_t>(picture.width);
  std::vector<BYTE> pixels(row_samples * sizeof(uint16_t) * static_cast<size_t>(picture.height));
  uint32_t const top = (uint32_t{1} << picture.bits) - 1;
  BYTE* out = pixels.data();
  for (int y = 0; y < picture.height; ++y) {
    uint8_t const* in = picture.rows + static_cast<size_t>(y) * picture.row_bytes;
    for (size_t i = 0; i < row_samples; ++i, in += sizeof(uint16_t), out += sizeof(uint16_t)) {
      uint16_t value = 0;
      std::memcpy(&value, in, sizeof value);
      value = static_cast<uint16_t>((std::min<uint32_t>(value, top) * 0xFFFF + top / 2) / top);
      std::memcpy(out, &value, sizeof value);
    }
  }
  DeepPixels form;
  form.colours = ImageColours::kRgb;
  form.samples = kPixelSamples;
  if (picture.has_alpha != 0)
    form.alpha = picture.premultiplied != 0 ? Alpha::kPremultiplied : Alpha::kStraight;
  if (HasTransparency(form, pixels)) changes.Add(Change::kTransparency);
  return SamplesOf(form, picture.width, picture.height, pixels);
}

// Without alpha. Null if memory is short.
PixPtr OpaquePixOf(SorrelinHeifPicture const& decoded, Changes& changes) {
  PixPtr pix = PixOf(decoded);
  if (pix == nullptr || decoded.has_alpha == 0) return pix;
  pixSetSpp(pix.get(), 4);
  bool const blended = BlendOnWhite(pix.get(), decoded.premultiplied != 0);
  if (blended) changes.Add(Change::kTransparency);
  return pix;
}

Picture PictureOf(SorrelinHeifPicture const& decoded) {
  Picture picture;
  if (decoded.bits > 8) {
    picture.samples = DeepSamplesOf(decoded, picture.changes);
  } else {
    picture.pix = OpaquePixOf(decoded, picture.changes);
  }
  if (decoded.profile_bytes == 0) return picture;
  picture.profile = UsableProfile({decoded.profile, decoded.profile_bytes}, 3);
  if (picture.profile == nullptr) picture.changes.Add(Change::kProfile);
  return picture;
}

uint64_t BigEndian(std::span<BYTE const> bytes) {
  uint64_t value = 0;
  for (BYTE const byte : bytes) value = value << 8 | byte;
  return value;
}

// The length of the box that `file` starts with (ISO/IEC 14496-12, 4.2): of 4 bytes, or 1 and the
// length of 8 bytes follows the name. 0, which is all that is left, or a length that cannot be: 0.
size_t BoxBytes(std::span<BYTE const> file) {
  bool const is_long = BigEndian(file.first(4)) == 1;
  size_t const header = is_long ? 2 * kBoxHeaderBytes : kBoxHeaderBytes;
  if (file.size() < header) return 0;
  uint64_t const bytes = BigEndian(is_long ? file.subspan(8, 8) : file.first(4));
  return bytes < header || bytes > file.size() ? 0 : static_cast<size_t>(bytes);
}

// Whether a box of the file describes a film (ISO/IEC 14496-12, 8.2.1). Its pictures are not read.
bool HasFilm(std::span<BYTE const> file) {
  while (file.size() >= kBoxHeaderBytes) {
    if (std::memcmp(file.data() + 4, "moov", 4) == 0) return true;
    size_t const bytes = BoxBytes(file);
    if (bytes == 0) return false;
    file = file.subspan(bytes);
  }
  return false;
}

class HeifSource : public ImageSource {
 public:
  HeifSource(std::vector<BYTE> bytes, int pages) : bytes_(std::move(bytes)), pages_(pages) {
    if (HasFilm(bytes_)) AddChange(Change::kFirstPicture);
  }

  int PageCount() const override { return pages_; }
  std::string Damage() const override {
    return HasBytesAfter(bytes_, BoxesEnd(bytes_)) ? kGoesOn : std::string();
  }
  std::optional<StoredImage> Stored(int) override { return std::nullopt; }

  std::optional<Picture> Decode(int page, std::string& problem) override {
    SorrelinHeifPicture decoded{};
    char reason[200] = "its coded data cannot be decoded";
    if (LoadedModule().decode(bytes_.data(), bytes_.size(), page, &decoded, reason,
                              sizeof reason) != 0) {
      problem = DamageText(reason);
      return std::nullopt;
    }
    std::unique_ptr<SorrelinHeifPicture, SorrelinHeifFreeFunction*> const owner(
        &decoded, LoadedModule().free);
    Picture picture = PictureOf(decoded);
    picture.damage = reason;
    problem = kMemoryText;
    if (!picture.samples && picture.pix == nullptr) return std::nullopt;
    return picture;
  }

 private:
  std::vector<BYTE> bytes_;
  int pages_;
};

}  // namespace

bool IsHeif(std::span<BYTE const> start) {
  constexpr std::string_view kBrands[] = {"avif", "avis", "heic", "heim", "heis",
                                          "heix", "hevc", "hevx", "mif1", "msf1"};
  if (start.size() < kFormatBytes || std::memcmp(start.data() + 4, "ftyp", 4) != 0) return false;
  std::string_view const brand(reinterpret_cast<char const*>(start.data()) + 8, 4);
  return std::find(std::begin(kBrands), std::end(kBrands), brand) != std::end(kBrands);
}

std::unique_ptr<ImageSource> OpenHeif(std::vector<BYTE> bytes, std::string& problem) {
  if (!LoadedModule().IsWhole()) return problem = MissingModule(), nullptr;
  int const pages = LoadedModule().count(bytes.data(), bytes.size());
  if (pages < 1) return problem = kDamaged, nullptr;
  return std::make_unique<HeifSource>(std::move(bytes), pages);
}

}  // namespace sorrelin::tool
