// TIFF pages: undecoded where a document can hold their coding, otherwise decoded, by Leptonica
// unless they are in tiles or planes or of more bits than it keeps.
#include "tools/formats/tiff/tiff_source.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>
#include <optional>
#include <utility>

#include "tools/formats/ends/tiff_end.h"
#include "tools/formats/jpeg/jpeg_check.h"
#include "tools/formats/tiff/group4_check.h"
#include "tools/formats/tiff/tiff_bilevel.h"
#include "tools/formats/tiff/tiff_colours.h"
#include "tools/formats/tiff/tiff_fields.h"
#include "tools/formats/tiff/tiff_lab.h"
#include "tools/formats/tiff/tiff_messages.h"
#include "tools/formats/tiff/tiff_samples.h"
#include "tools/formats/tiff/tiff_stored.h"

namespace sorrelin::tool {
namespace {

struct TiffCloser {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffPtr = std::unique_ptr<TIFF, TiffCloser>;

// Without mapping: a file that another process cuts short must not end this one.
constexpr char kReadUnmapped[] = "rm";

constexpr char kCameraRaw[] =
    "is a raw photograph, which is not read (develop it, and save it as TIFF or JPEG)";

// Whether the colours of a page with alpha come out of the decoder scaled by it. The image library
// has colours of three samples read by libtiff's own converter, which scales them.
bool IsPremultiplied(TIFF* tiff) {
  uint16_t count = 0;
  uint16_t* kinds = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds) != 1) count = 0;
  bool const associated = count > 0 && kinds[0] == EXTRASAMPLE_ASSOCALPHA;
  return associated || FieldOf<uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1) > 3;
}

// Whether the page has samples of an unknown kind, which no reader of colours takes.
bool HasUnknownSamples(TIFF* tiff) {
  uint16_t count = 0;
  uint16_t* kinds = nullptr;
  return TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds) == 1 &&
         std::find(kinds, kinds + count, EXTRASAMPLE_UNSPECIFIED) != kinds + count;
}

// Whether the coded data can be decoded to the last row.
bool IsWhole(StoredImage const& image) {
  if (image.form.filter == ImageFilter::kJpeg) return JpegDamage(image.bytes).empty();
  return image.form.filter != ImageFilter::kGroup4 ||
         IsWholeGroup4(image.bytes, image.width, image.height);
}

bool IsStoredWithLoss(TIFF* tiff) {
  uint16_t const compression = CompressionOf(tiff);
  return compression == COMPRESSION_JPEG || compression == COMPRESSION_OJPEG;
}

class TiffSource : public ImageSource {
 public:
  TiffSource(std::string name, std::shared_ptr<void const> owner)
      : name_(std::move(name)), owner_(std::move(owner)) {}

  bool Open() {
    KeepTiffQuiet();
    tiff_.reset(TIFFOpen(name_.c_str(), kReadUnmapped));
    if (tiff_ == nullptr) return false;
    AddPage();
    void* version = nullptr;
    is_camera_raw_ = TIFFGetField(tiff_.get(), TIFFTAG_DNGVERSION, &version) == 1;
    while (TIFFLastDirectory(tiff_.get()) == 0) {
      broken_ = TIFFReadDirectory(tiff_.get()) == 0;
      if (broken_) break;
      AddPage();
    }
    if (offsets_.empty()) offsets_.swap(reduced_);
    return true;
  }

  // Its pages are small copies of the photograph.
  bool IsCameraRaw() const { return is_camera_raw_; }

  int PageCount() const override { return static_cast<int>(offsets_.size()); }

  std::string Damage() const override {
    if (!broken_) {
      auto const end = TiffEnd(name_);
      return end && HasBytesAfter(name_, *end) ? kGoesOn : std::string();
    }
    return "is damaged: only the first " + std::to_string(offsets_.size()) +
           " of its pages can be found (scan or save it again)";
  }

  std::optional<StoredImage> Stored(int page) override {
    auto image = StoredHere(page);
    return image && IsWhole(*image) ? image : std::nullopt;
  }

  // What is done with tiff_ is for one thread at a time; the picture library opens the file anew
  // for each page.
  std::optional<Picture> Decode(int page, std::string& problem) override {
    problem = kCannotDecode;
    auto const facts = FactsOf(page);
    if (!facts) return std::nullopt;
    TiffMessages const messages;
    auto picture = facts->deep ? ReadDeep(page) : ReadPix(page, *facts);
    if (!picture && !messages.damage().empty()) {
      problem = DamageText(messages.damage());
      picture = Salvage(page, *facts);
    }
    if (!picture) return std::nullopt;
    picture->changes.Add(facts->changes);
    bool const lost_profile = facts->has_profile && picture->profile == nullptr;
    if (lost_profile) picture->changes.Add(Change::kProfile);
    picture->damage = messages.damage();
    return picture;
  }

 private:
  // What decoding takes from a page's directory; nothing if libtiff does not know its coding.
  struct PageFacts {
    uint16_t photometric = 0;
    bool premultiplied = false;
    bool lossy = false;
    bool by_libtiff = false;  // and not by the picture library
    bool bilevel_strips = false;
    bool deep = false;     // more than the picture library keeps
    Resolution dpi;        // upright
    ProfileBytes profile;  // null: none that fits
    bool has_profile = false;
    Changes changes;
  };

  // Whether decoding makes RGB of other colours. Those of JPEG data are a part of their coding.
  static bool BecomesRgb(PageFacts const& facts) {
    switch (facts.photometric) {
      case PHOTOMETRIC_MINISWHITE:
      case PHOTOMETRIC_MINISBLACK:
      case PHOTOMETRIC_RGB:
      case PHOTOMETRIC_PALETTE:
        return false;
      case PHOTOMETRIC_YCBCR:
        return !facts.lossy;
      default:
        return !facts.deep;
    }
  }

  // Smaller copies of pages, and masks of their shape, are no pages.
  void AddPage() {
    uint32_t const kind = FieldOf<uint32_t>(tiff_.get(), TIFFTAG_SUBFILETYPE, 0);
    uint16_t const old_kind = FieldOf<uint16_t>(tiff_.get(), TIFFTAG_OSUBFILETYPE, 0);
    bool const reduced =
        (kind & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) != 0 || old_kind == OFILETYPE_REDUCEDIMAGE;
    (reduced ? reduced_ : offsets_).push_back(TIFFCurrentDirOffset(tiff_.get()));
  }

  toff_t OffsetOf(int page) const { return offsets_[static_cast<size_t>(page)]; }

  bool GoTo(int page) { return TIFFSetSubDirectory(tiff_.get(), OffsetOf(page)) == 1; }

  std::optional<PageFacts> FactsOf(int page) {
    std::lock_guard const lock(mutex_);
    if (!GoTo(page) || TIFFIsCODECConfigured(CompressionOf(tiff_.get())) == 0) return std::nullopt;
    PageFacts facts;
    facts.photometric = FieldOf<uint16_t>(tiff_.get(), TIFFTAG_PHOTOMETRIC, 0);
    facts.premultiplied = IsPremultiplied(tiff_.get());
    facts.lossy = IsStoredWithLoss(tiff_.get());
    facts.by_libtiff = IsTiledOrPlanar(tiff_.get()) || IsColourFromLeftBottom(tiff_.get());
    facts.bilevel_strips = HasBilevelStrips(tiff_.get());
    facts.deep = HasDeepSamples(tiff_.get());
    facts.dpi = ResolutionOf(tiff_.get());
    int const orientation = OrientationOf(tiff_.get());
    if (LiesOnItsSide(orientation)) std::swap(facts.dpi.x, facts.dpi.y);
    if (orientation != ORIENTATION_TOPLEFT) facts.changes.Add(Change::kTurned);
    bool const drops = !facts.deep && HasUnknownSamples(tiff_.get());
    if (drops) facts.changes.Add(Change::kExtraSamples);
    bool const grey = facts.photometric <= PHOTOMETRIC_MINISBLACK;
    facts.profile = ProfileOf(tiff_.get(), grey ? 1 : 3);
    facts.has_profile = HasProfile(tiff_.get());
    if (BecomesRgb(facts)) facts.changes.Add(Change::kColours);
    return facts;
  }

  std::optional<StoredImage> StoredHere(int page) {
    std::lock_guard const lock(mutex_);
    if (!GoTo(page)) return std::nullopt;
    auto image = StoredTiffPage(tiff_.get());
    if (image && image->profile == nullptr && HasProfile(tiff_.get())) {
      image->changes.Add(Change::kProfile);
    }
    return image;
  }

  // The picture library would map the file into memory.
  PixPtr ReadBilevel(int page) const {
    TiffPtr const tiff(TIFFOpen(name_.c_str(), kReadUnmapped));
    bool const found = tiff != nullptr && TIFFSetSubDirectory(tiff.get(), OffsetOf(page)) == 1;
    return found ? ReadBilevelStrips(tiff.get()) : nullptr;
  }

  std::optional<Picture> ReadPix(int page, PageFacts const& facts) {
    Changes changes;
    PixPtr pix = facts.by_libtiff ? ReadHere(page, changes) : nullptr;
    if (facts.bilevel_strips) pix = ReadBilevel(page);
    bool const general = pix == nullptr && !facts.by_libtiff;
    if (general) pix = Read(OffsetOf(page));
    if (pix != nullptr && general) pix = Repaired(std::move(pix), facts, changes);
    if (pix == nullptr) return std::nullopt;
    Picture picture{std::move(pix), facts.dpi, facts.lossy, changes};
    picture.profile = facts.profile;
    return picture;
  }

  // What libtiff itself makes of a damaged page.
  std::optional<Picture> Salvage(int page, PageFacts const& facts) {
    Changes changes;
    PixPtr pix = ReadHere(page, changes);
    if (pix == nullptr) return std::nullopt;
    return Picture{std::move(pix), facts.dpi, facts.lossy, changes};
  }

  std::optional<Picture> ReadDeep(int page) {
    std::lock_guard const lock(mutex_);
    if (!GoTo(page)) return std::nullopt;
    Picture picture;
    picture.samples = ReadTiffSamples(tiff_.get(), picture.changes);
    if (!picture.samples) return std::nullopt;
    picture.orientation = OrientationOf(tiff_.get());
    picture.dpi = ResolutionOf(tiff_.get());
    picture.from_jpeg = IsStoredWithLoss(tiff_.get());
    if (IsLab(tiff_.get())) return picture;
    picture.profile = ProfileOf(tiff_.get(), picture.samples->Components());
    return picture;
  }

  PixPtr ReadHere(int page, Changes& changes) {
    std::lock_guard const lock(mutex_);
    return GoTo(page) ? ReadByLibtiff(tiff_.get(), changes) : nullptr;
  }

  // Leptonica turns the page upright by its orientation.
  PixPtr Read(toff_t offset) const {
    size_t at = static_cast<size_t>(offset);
    return PixPtr(pixReadFromMultipageTiff(name_.c_str(), &at));
  }

  // Leptonica leaves the greys of these depths as they are where 0 is white, spreads bilevel
  // palettes to colours, and does not blend alpha.
  static PixPtr Repaired(PixPtr pix, PageFacts const& facts, Changes& changes) {
    int const depth = pixGetDepth(pix.get());
    bool const untouched = depth == 2 || depth == 4 || depth == 16;
    if (facts.photometric == PHOTOMETRIC_MINISWHITE && untouched) pixInvert(pix.get(), pix.get());
    if (BlendOnWhite(pix.get(), facts.premultiplied)) changes.Add(Change::kTransparency);
    return facts.photometric == PHOTOMETRIC_PALETTE ? Reindexed(std::move(pix)) : std::move(pix);
  }

  std::string name_;
  std::shared_ptr<void const> owner_;  // of the file
  std::mutex mutex_;                   // of tiff_
  TiffPtr tiff_;
  std::vector<toff_t> offsets_;
  std::vector<toff_t> reduced_;  // directories that are no pages
  bool broken_ = false;
  bool is_camera_raw_ = false;
};

}  // namespace

bool IsTiff(std::span<BYTE const> start) {
  constexpr std::array<char const*, 4> kMarks = {"II*\0", "MM\0*", "II+\0", "MM\0+"};
  return start.size() >= kTiffHeaderBytes &&
         std::any_of(kMarks.begin(), kMarks.end(), [&](char const* mark) {
           return std::memcmp(start.data(), mark, kTiffHeaderBytes) == 0;
         });
}

std::unique_ptr<ImageSource> OpenTiff(std::string const& name, std::shared_ptr<void const> owner,
                                      std::string& problem) {
  auto source = std::make_unique<TiffSource>(name, std::move(owner));
  if (!source->Open()) return problem = "is a damaged TIFF file (scan or save it again)", nullptr;
  if (source->IsCameraRaw()) return problem = kCameraRaw, nullptr;
  return source;
}

}  // namespace sorrelin::tool
