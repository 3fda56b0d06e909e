// Sources of pages for picture files in memory: JPEG, PNG and others by their own decoders,
// everything else through Leptonica.
#include "tools/formats/image_source.h"

#include <utility>
#include <vector>

#include "tools/formats/bmp_file.h"
#include "tools/formats/ends/file_end.h"
#include "tools/formats/gif_file.h"
#include "tools/formats/heif/heif_file.h"
#include "tools/formats/jpeg/jpeg_check.h"
#include "tools/formats/jpeg/jpeg_file.h"
#include "tools/formats/jpeg2000/jp2_file.h"
#include "tools/formats/jpeg2000/jpeg2000_file.h"
#include "tools/formats/png/png_chunks.h"
#include "tools/formats/png/png_file.h"
#include "tools/formats/tiff/tiff_source.h"
#include "tools/formats/webp_file.h"

namespace sorrelin::tool {
namespace {

constexpr char kUnknownFormat[] =
    "is not a picture of a known format (convert it to PNG, TIFF or JPEG)";

// Samples stay as they are, since the page can turn them. False if memory is short.
bool TurnUpright(Picture& picture, int orientation) {
  if (picture.samples) return picture.orientation = orientation, true;
  picture.pix = Upright(std::move(picture.pix), orientation);
  if (LiesOnItsSide(orientation)) std::swap(picture.dpi.x, picture.dpi.y);
  if (orientation != 1) picture.changes.Add(Change::kTurned);
  return picture.pix != nullptr;
}

class JpegSource : public ImageSource {
 public:
  JpegSource(std::vector<BYTE> bytes, JpegFacts const& facts)
      : bytes_(std::make_shared<std::vector<BYTE> const>(std::move(bytes))), facts_(facts) {}

  int PageCount() const override { return 1; }

  std::optional<StoredImage> Stored(int) override {
    if (!facts_.common || JpegEnd(*bytes_) == 0 || !JpegDamage(*bytes_).empty()) {
      return std::nullopt;
    }
    StoredImage image;
    image.bytes = *bytes_;
    image.owner = bytes_;
    image.width = facts_.width;
    image.height = facts_.height;
    image.form = FormOfJpeg(facts_);
    image.profile = facts_.profile;
    image.orientation = facts_.orientation;
    image.dpi = facts_.dpi;
    if (facts_.profile_unusable) image.changes.Add(Change::kProfile);
    return image;
  }

  std::optional<Picture> Decode(int, std::string& problem) override {
    problem = kCannotDecode;
    auto picture = DecodePixels();
    if (!picture) return std::nullopt;
    picture->from_jpeg = true;
    picture->damage = JpegDamage(*bytes_);
    picture->profile = facts_.profile;
    if (facts_.profile_unusable) picture->changes.Add(Change::kProfile);
    return picture;
  }

 private:
  std::optional<Picture> DecodePixels() const {
    Picture picture;
    if (facts_.components == 4) {
      picture.samples = DecodeJpegInks(*bytes_);
    } else {
      picture.pix = DecodeJpeg(*bytes_);
    }
    picture.dpi = facts_.dpi;
    bool const decoded = picture.samples || picture.pix != nullptr;
    if (!decoded || !TurnUpright(picture, facts_.orientation)) return std::nullopt;
    return picture;
  }

  std::shared_ptr<std::vector<BYTE> const> bytes_;
  JpegFacts facts_;
};

class PngSource : public ImageSource {
 public:
  explicit PngSource(std::vector<BYTE> bytes)
      : bytes_(std::move(bytes)), chunks_(ReadPngChunks(bytes_)) {
    if (chunks_ && chunks_->animated) AddChange(Change::kFirstPicture);
  }

  int PageCount() const override { return 1; }

  std::optional<StoredImage> Stored(int) override {
    auto image = chunks_ ? StoredPng(*chunks_) : std::nullopt;
    if (image && chunks_->profile_unusable) image->changes.Add(Change::kProfile);
    return image;
  }

  std::optional<Picture> Decode(int, std::string& problem) override {
    problem = chunks_ ? kCannotDecode : DamagedHeader("PNG");
    auto picture = DecodePng(bytes_);
    if (!picture || !chunks_) return picture;
    if (!TurnUpright(*picture, chunks_->orientation)) return problem = kMemoryText, std::nullopt;
    picture->profile = chunks_->profile;
    if (chunks_->profile_unusable) picture->changes.Add(Change::kProfile);
    return picture;
  }

 private:
  std::vector<BYTE> bytes_;
  std::optional<PngChunks> chunks_;  // nothing if they are damaged
};

std::optional<Picture> DecodeGeneral(std::span<BYTE const> file) {
  PixPtr pix(pixReadMem(file.data(), file.size()));
  if (pix == nullptr) return std::nullopt;
  Resolution const dpi = {WholeDots(pixGetXRes(pix.get())), WholeDots(pixGetYRes(pix.get()))};
  bool const blended = BlendOnWhite(pix.get(), false);
  Picture picture{std::move(pix), dpi, false};
  if (blended) picture.changes.Add(Change::kTransparency);
  return picture;
}

struct Decoder {
  std::optional<Picture> (*decode)(std::span<BYTE const> file);
  std::string problem;                                  // with files that it does not decode
  size_t (*end)(std::span<BYTE const> file) = nullptr;  // null: decoding finds it
};

// A file with one picture that always has to be decoded.
class DecodedSource : public ImageSource {
 public:
  DecodedSource(std::vector<BYTE> bytes, Decoder decoder)
      : bytes_(std::move(bytes)), decoder_(std::move(decoder)) {}

  int PageCount() const override { return 1; }
  std::string Damage() const override {
    bool const goes_on = decoder_.end != nullptr && HasBytesAfter(bytes_, decoder_.end(bytes_));
    return goes_on ? kGoesOn : std::string();
  }
  std::optional<StoredImage> Stored(int) override { return std::nullopt; }
  std::optional<Picture> Decode(int, std::string& problem) override {
    problem = decoder_.problem;
    return decoder_.decode(bytes_);
  }

 private:
  std::vector<BYTE> bytes_;
  Decoder decoder_;
};

class Jpeg2000Source : public ImageSource {
 public:
  explicit Jpeg2000Source(std::vector<BYTE> bytes)
      : bytes_(std::make_shared<std::vector<BYTE> const>(std::move(bytes))) {}

  int PageCount() const override { return 1; }

  // What follows the last box of a file is found by its decoder.
  std::string Damage() const override {
    constexpr BYTE kStartOfCodestream = 0xFF;
    bool const bare = bytes_->front() == kStartOfCodestream;
    return bare && HasBytesAfter(*bytes_, CodestreamEnd(*bytes_)) ? kGoesOn : std::string();
  }

  std::optional<StoredImage> Stored(int) override {
    if (!Jpeg2000Damage(*bytes_).empty()) return std::nullopt;
    auto image = StoredJp2(*bytes_);
    if (image && image->owner == nullptr) image->owner = bytes_;
    return image;
  }

  std::optional<Picture> Decode(int, std::string& problem) override {
    return DecodeJpeg2000(*bytes_, problem);
  }

 private:
  std::shared_ptr<std::vector<BYTE> const> bytes_;
};

Decoder DecoderOf(int format) {
  switch (format) {
    case IFF_BMP:
      return {DecodeBmp, kCannotDecode, BmpEnd};
    case IFF_GIF:
      return {DecodeGif, DamagedHeader("GIF")};
    case IFF_WEBP:
      return {DecodeWebp, DamagedHeader("WebP"), WebpEnd};
    default:
      return {DecodeGeneral, kCannotDecode};
  }
}

// What the image library takes the first bytes for. It knows documents too, and does not read them.
int FormatOf(std::span<BYTE const> bytes) {
  int format = IFF_UNKNOWN;
  if (bytes.size() >= kFormatBytes) findFileFormatBuffer(bytes.data(), &format);
  return format == IFF_PS || format == IFF_LPDF ? IFF_UNKNOWN : format;
}

}  // namespace

std::unique_ptr<ImageSource> SourceOfBytes(std::vector<BYTE> bytes, std::string& problem) {
  if (IsHeif(bytes)) return OpenHeif(std::move(bytes), problem);
  int const format = FormatOf(bytes);
  if (format == IFF_JFIF_JPEG) {
    auto const facts = ReadJpegFacts(bytes);
    if (!facts) {
      problem = IsJpegOfOtherKind(bytes) ? kCannotDecode : DamagedHeader("JPEG");
      return nullptr;
    }
    return std::make_unique<JpegSource>(std::move(bytes), *facts);
  }
  if (format == IFF_UNKNOWN) return problem = kUnknownFormat, nullptr;
  if (format == IFF_PNG) return std::make_unique<PngSource>(std::move(bytes));
  if (format == IFF_JP2) return std::make_unique<Jpeg2000Source>(std::move(bytes));
  return std::make_unique<DecodedSource>(std::move(bytes), DecoderOf(format));
}

bool IsPicture(std::span<BYTE const> start) {
  return IsTiff(start) || IsHeif(start) || FormatOf(start) != IFF_UNKNOWN;
}

std::string DamageText(std::string const& damage) {
  return "cannot be decoded whole, it is damaged: " + damage +
         " (scan or save it again, or take what is left: --keep-damaged)";
}

std::string DamagedHeader(char const* format) {
  return std::string("is a damaged ") + format +
         " file: its header cannot be read (scan or save it again)";
}

}  // namespace sorrelin::tool
