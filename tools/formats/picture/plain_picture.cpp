// Converts rows of samples into rows of words.
#include "tools/formats/picture/plain_picture.h"

#include <utility>
#include <vector>

#include "tools/formats/jpeg/jpeg_file.h"
#include "tools/formats/picture/colour_conversion.h"

namespace sorrelin::tool {
namespace {

void StoreRow(BYTE const* row, int width, int components, l_uint32* line) {
  for (int x = 0; x < width; ++x, row += components) {
    if (components == 1) {
      SET_DATA_BYTE(line, x, row[0]);
    } else {
      composeRGBPixel(row[0], row[1], row[2], line + x);
    }
  }
}

// Samples of 8 or 16 bits without a palette. Null when memory is short.
PixPtr PixOf(Samples const& samples, ColourConversion const& conversion) {
  PixPtr pix(pixCreate(samples.width, samples.height, conversion.Components() == 1 ? 8 : 32));
  if (pix == nullptr) return nullptr;
  size_t const row_samples =
      static_cast<size_t>(samples.width) * static_cast<size_t>(samples.Components());
  size_t const step = static_cast<size_t>(samples.bits) / 8;
  std::vector<BYTE> row(row_samples), converted(3 * static_cast<size_t>(samples.width));
  for (int y = 0; y < samples.height; ++y) {
    BYTE const* const from = samples.bytes.data() + static_cast<size_t>(y) * samples.RowBytes();
    for (size_t i = 0; i < row_samples; ++i) row[i] = from[i * step];
    conversion.Convert(row.data(), converted.data(), samples.width);
    StoreRow(converted.data(), samples.width, conversion.Components(),
             pixGetData(pix.get()) + static_cast<ptrdiff_t>(y) * pixGetWpl(pix.get()));
  }
  return pix;
}

std::span<BYTE const> BytesOf(ProfileBytes const& profile) {
  return profile == nullptr ? std::span<BYTE const>{} : std::span<BYTE const>(*profile);
}

void ConvertMap(PixColormap* map, ColourConversion const& conversion) {
  for (int i = 0; i < pixcmapGetCount(map); ++i) {
    int red = 0, green = 0, blue = 0, alpha = 0;
    pixcmapGetRGBA(map, i, &red, &green, &blue, &alpha);
    BYTE const from[3] = {static_cast<BYTE>(red), static_cast<BYTE>(green),
                          static_cast<BYTE>(blue)};
    BYTE to[3];
    conversion.Convert(from, to, 1);
    pixcmapResetColor(map, i, to[0], to[1], to[2]);
  }
}

void ConvertRow(l_uint32* line, int width, int components, ColourConversion const& conversion,
                std::vector<BYTE>& row) {
  for (int x = 0; x < width; ++x) {
    BYTE* const pixel = row.data() + static_cast<size_t>(x * components);
    if (components == 1) {
      pixel[0] = static_cast<BYTE>(GET_DATA_BYTE(line, x));
    } else {
      l_int32 red = 0, green = 0, blue = 0;
      extractRGBValues(line[x], &red, &green, &blue);
      pixel[0] = static_cast<BYTE>(red);
      pixel[1] = static_cast<BYTE>(green);
      pixel[2] = static_cast<BYTE>(blue);
    }
  }
  std::vector<BYTE> const from = row;
  conversion.Convert(from.data(), row.data(), width);
  StoreRow(row.data(), width, components, line);
}

// Converts a pix of 8 bits of grey, a palette or colours. Other depths have too few tones for it.
bool ConvertPix(Pix* pix, ProfileBytes const& profile) {
  PixColormap* const map = pixGetColormap(pix);
  bool const colours = pixGetDepth(pix) == 32 || map != nullptr;
  if (!colours && pixGetDepth(pix) != 8) return false;
  int const components = colours ? 3 : 1;
  ColourConversion const conversion(BytesOf(profile), components);
  if (!conversion.Changes()) return false;
  if (map != nullptr) return ConvertMap(map, conversion), true;
  std::vector<BYTE> row(static_cast<size_t>(pixGetWidth(pix) * components));
  for (int y = 0; y < pixGetHeight(pix); ++y) {
    ConvertRow(pixGetData(pix) + static_cast<ptrdiff_t>(y) * pixGetWpl(pix), pixGetWidth(pix),
               components, conversion, row);
  }
  return true;
}

// Turned by moving its coded blocks. False where that is not possible.
bool TurnJpeg(StoredImage& image) {
  auto const facts = ReadJpegFacts(image.bytes);
  auto const upright = facts ? TurnedJpeg(image.bytes, *facts) : nullptr;
  if (upright == nullptr) return false;
  image.bytes = *upright;
  image.owner = upright;
  if (LiesOnItsSide(image.orientation)) {
    std::swap(image.width, image.height);
    std::swap(image.dpi.x, image.dpi.y);
  }
  image.orientation = 1;
  image.changes.Add(Change::kTurned);
  return true;
}

}  // namespace

bool GiveUpSamples(Picture& picture) {
  if (!picture.samples) return true;
  Samples const& samples = *picture.samples;
  bool const inks = samples.colours == ImageColours::kCmyk;
  ColourConversion const conversion(inks ? BytesOf(picture.profile) : std::span<BYTE const>{},
                                    samples.Components());
  picture.pix = PixOf(samples, conversion);
  if (picture.pix != nullptr) picture.pix = Upright(std::move(picture.pix), picture.orientation);
  if (picture.pix == nullptr) return false;
  if (LiesOnItsSide(picture.orientation)) std::swap(picture.dpi.x, picture.dpi.y);
  if (samples.bits == 16) picture.changes.Add(Change::kDepth);
  if (inks) picture.changes.Add(Change::kColours);
  if (inks) picture.profile = nullptr;
  picture.orientation = 1;
  picture.samples.reset();
  return true;
}

bool MakePlain(Picture& picture) {
  if (!GiveUpSamples(picture)) return false;
  if (pixGetDepth(picture.pix.get()) == 16) {
    picture.pix.reset(pixConvert16To8(picture.pix.get(), L_MS_BYTE));
    picture.changes.Add(Change::kDepth);
    if (picture.pix == nullptr) return false;
  }
  if (picture.profile == nullptr) return true;
  bool const converted = ConvertPix(picture.pix.get(), picture.profile);
  picture.changes.Add(converted ? Change::kColours : Change::kProfile);
  picture.profile = nullptr;
  return true;
}

std::optional<StoredImage> PlainStored(StoredImage image) {
  if (image.profile != nullptr) {
    if (!IsSrgb(*image.profile)) return std::nullopt;
    image.profile = nullptr;
    image.changes.Add(Change::kProfile);
  }
  ImageForm const& form = image.form;
  bool const jpeg = form.filter == ImageFilter::kJpeg && form.colours != ImageColours::kCmyk &&
                    !form.inverted && !form.jpeg_is_ycbcr;
  if (jpeg && image.orientation != 1 && !TurnJpeg(image)) return std::nullopt;
  bool const plain = jpeg || form.filter == ImageFilter::kGroup4;
  if (!plain || image.orientation != 1) return std::nullopt;
  return image;
}

}  // namespace sorrelin::tool
