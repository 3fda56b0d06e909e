// Chooses how a picture goes into a document: as it is stored, by the library's coders, or with all
// its samples by Flate.
#include "tools/make/pages/page_coder.h"

#include <sorrelin/platform/memory.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "tools/formats/jpeg/jpeg_file.h"
#include "tools/formats/picture/plain_picture.h"

namespace sorrelin::tool {
namespace {

constexpr double kPointsPerInch = 72;
constexpr double kRounding = 0.5;  // points; sizes of pages are whole
constexpr size_t kGreyTones = 256;
// Flate is tried where an estimate from some rows is below this share of what Group 4 took, and in
// any case where Group 4 took little of the raw bits, as Flate is quick there.
constexpr double kWorthTrying = 1.25;
constexpr size_t kLittleShare = 64;

Compression CompressionOf(ImageFilter filter) {
  return filter == ImageFilter::kGroup4 ? Compression::kGroup4
         : filter == ImageFilter::kJpeg ? Compression::kJpeg
                                        : Compression::kFlate;
}

char const* NameOf(Compression compression) {
  switch (compression) {
    case Compression::kGroup4:
      return "g4";
    case Compression::kFlate:
      return "flate";
    case Compression::kRunLength:
      return "runlength";
    case Compression::kJpeg:
      return "jpeg";
    default:
      return "none";
  }
}

Compression ChosenFor(Picture const& picture, Compression asked) {
  if (asked != Compression::kAuto) return asked;
  if (picture.pix == nullptr) return Compression::kFlate;
  if (PackedDepth(picture.pix.get()) == 1) return Compression::kGroup4;
  return picture.from_jpeg ? Compression::kJpeg : Compression::kFlate;
}

char const* DepthName(int depth) {
  return depth == 1 ? "black and white" : depth == 8 ? "of 8 bits" : "of 24 bits";
}

// Why pictures of a depth cannot be coded so; empty if they can.
std::string Objection(Compression compression, int depth) {
  std::string const is = std::string("is ") + DepthName(depth);
  if (compression == Compression::kGroup4 && depth != 1) {
    return is + ", and Group 4 codes black and white only (--compression auto)";
  }
  if (compression == Compression::kRunLength && depth != 8) {
    return is + ", and run-length coding takes 8 bits only (--compression flate)";
  }
  if (compression == Compression::kJpeg && depth == 1) {
    return is + ", and JPEG codes grey and colour only (--compression g4)";
  }
  return {};
}

// The same of a picture's size.
std::string SizeObjection(Compression compression, Pix* pix) {
  int const longest = std::max(pixGetWidth(pix), pixGetHeight(pix));
  if (compression != Compression::kJpeg || longest <= kMaxJpegSide) return {};
  return "is " + std::to_string(longest) + " pixels long, and JPEG ends at " +
         std::to_string(kMaxJpegSide) + " (--compression flate)";
}

std::string ObjectionTo(Compression compression, Pix* pix) {
  std::string const objection = Objection(compression, PackedDepth(pix));
  return objection.empty() ? SizeObjection(compression, pix) : objection;
}

// Puts the resolution of the page into its record, and where it comes from.
void SetResolution(Resolution own, PageStyle const& style, PageRecord& record) {
  // Writers that know none store this.
  if (own == Resolution{1, 1}) {
    own = {};
    if (!style.dpi) record.changes.Add(Change::kUnitDensity);
  }
  Resolution dpi = style.dpi.value_or(own);
  if (dpi.x == 0) dpi.x = dpi.y;
  if (dpi.y == 0) dpi.y = dpi.x;
  record.origin = style.dpi ? DpiOrigin::kOption : DpiOrigin::kFile;
  if (dpi.x == 0) {
    dpi = style.default_dpi;
    record.origin = DpiOrigin::kDefault;
    record.changes.Add(Change::kAssumedResolution);
  }
  record.dpi = dpi;
}

PagePlacement FillingPage(POINT size) {
  constexpr int64_t kUnits = PagePlacement::kUnitsPerPoint;
  return {size, 0, 0, size.x * kUnits, size.y * kUnits, 1};
}

// The palette in which each value is its own tone.
OwnedBlock GreyPalette() {
  OwnedBlock block(GlobalAlloc(GHND, 3 * kGreyTones));
  if (!block.IsValid()) return block;
  BYTE* const entries = static_cast<BYTE*>(GlobalLock(block.get()));
  for (size_t i = 0; i < 3 * kGreyTones; ++i) entries[i] = static_cast<BYTE>(i / 3);
  GlobalUnlock(block.get());
  return block;
}

// The form of what the library's coders make; nothing where only its own form will do.
std::optional<ImageForm> FormOf(Compression compression, int depth) {
  ImageForm form;
  if (compression == Compression::kGroup4) {
    form.filter = ImageFilter::kGroup4;
    form.bits_per_component = 1;
    return form;
  }
  if (compression != Compression::kJpeg) return std::nullopt;
  form.filter = ImageFilter::kJpeg;
  form.colours = depth == 8 ? ImageColours::kGrey : ImageColours::kRgb;
  return form;
}

ImageForm FormOf(Samples const& samples, bool predicted) {
  ImageForm form;
  form.filter = ImageFilter::kFlate;
  form.colours = samples.colours;
  form.bits_per_component = samples.bits;
  form.palette = samples.palette;
  form.predicted = predicted;
  return form;
}

// The orientation, as in EXIF, of a picture that is turned clockwise after its own is heeded.
int Turned(int orientation, int degrees) {
  constexpr std::array<int, 9> kQuarterTurned = {0, 6, 7, 8, 5, 2, 3, 4, 1};
  for (; degrees > 0; degrees -= 90) orientation = kQuarterTurned[static_cast<size_t>(orientation)];
  return orientation;
}

std::nullptr_t Refuse(std::string& problem, std::string reason) {
  problem = std::move(reason);
  return nullptr;
}

}  // namespace

bool Accepts(Compression compression, StoredImage const& image) {
  if (compression == Compression::kAuto) return true;
  return image.form.filter != ImageFilter::kJpeg2000 &&
         compression == CompressionOf(image.form.filter);
}

std::unique_ptr<CodedPage> PageCoder::Code(ImageSource& source, int page, std::string& problem) {
  if (style_.scan.skip_blank) {
    if (auto blank = BlankPage(source, page)) return blank;
  }
  auto coded = CodeStored(source, page, problem);
  if (coded == nullptr && problem.empty()) coded = CodeDecoded(source, page, problem);
  if (coded != nullptr && page == 0) coded->record_.changes.Add(source.changes());
  return coded;
}

// nullptr if the page is not blank, or cannot be looked at.
std::unique_ptr<CodedPage> PageCoder::BlankPage(ImageSource& source, int page) {
  std::string ignored;
  auto picture = source.Decode(page, ignored);
  if (!picture || !picture->damage.empty() || !GiveUpSamples(*picture)) return nullptr;
  double const ink = InkPercent(*picture);
  if (ink > kBlankPercent) return nullptr;
  auto blank = std::make_unique<CodedPage>();
  blank->is_blank_ = true;
  blank->record_.ink_percent = ink;
  return blank;
}

// nullptr without a problem if the page has to be decoded.
std::unique_ptr<CodedPage> PageCoder::CodeStored(ImageSource& source, int page,
                                                 std::string& problem) {
  if (style_.scan.ChangesPixels()) return nullptr;
  auto stored = source.Stored(page);
  if (stored && style_.plain) stored = PlainStored(std::move(*stored));
  return stored && Accepts(style_.compression, *stored) ? Code(*stored, problem) : nullptr;
}

std::unique_ptr<CodedPage> PageCoder::CodeDecoded(ImageSource& source, int page,
                                                  std::string& problem) {
  auto picture = source.Decode(page, problem);
  if (!picture) return nullptr;
  std::string damage = std::move(picture->damage);
  if (!damage.empty() && !style_.keep_damaged) return Refuse(problem, DamageText(damage));
  bool const cleaned =
      !style_.scan.ChangesPixels() || (GiveUpSamples(*picture) && CleanScan(style_.scan, *picture));
  if (!cleaned) return Refuse(problem, kMemoryText);
  auto coded = Code(std::move(*picture), problem);
  if (coded != nullptr) coded->record_.damage = std::move(damage);
  return coded;
}

std::unique_ptr<CodedPage> PageCoder::Code(StoredImage const& image, std::string& problem) {
  if (image.bytes.size() > std::numeric_limits<DWORD>::max()) {
    return Refuse(problem, "is larger than a document can be (cut it into parts)");
  }
  auto coded = std::make_unique<CodedPage>();
  EncodedPage& page = coded->page_;
  coded->record_.changes = image.changes;
  Shape const shape = {image.width, image.height, image.dpi, image.orientation, image.frame};
  if (!Place(shape, *coded, problem)) return nullptr;
  ImageForm const& form = image.form;
  if (!style_.plain) {
    SetForm(form, image.profile, *coded);
  } else {
    page.bits_per_pixel = form.Components() * form.bits_per_component;
    page.compression = IdentifierOf(CompressionOf(form.filter));
    page.decode_normal = !form.inverted;
    if (page.bits_per_pixel == 8) {
      coded->grey_palette_ = GreyPalette();
      if (!coded->grey_palette_.IsValid()) return Refuse(problem, kMemoryText);
      page.palette = coded->grey_palette_.get();
    }
  }
  page.data = image.bytes.data();
  page.size = static_cast<DWORD>(image.bytes.size());
  coded->stored_ = image.owner;
  coded->record_.coding =
      form.filter == ImageFilter::kJpeg2000 ? "jpx" : NameOf(CompressionOf(form.filter));
  coded->record_.passed = true;
  coded->record_.bytes = page.size;
  return coded;
}

std::unique_ptr<CodedPage> PageCoder::Code(Picture picture, std::string& problem) {
  if (style_.plain && !MakePlain(picture)) return Refuse(problem, kMemoryText);
  Compression const compression = ChosenFor(picture, style_.compression);
  bool const keeps_samples = compression == Compression::kFlate && !style_.plain;
  if (!keeps_samples && !GiveUpSamples(picture)) return Refuse(problem, kMemoryText);
  if (picture.pix != nullptr) {
    std::string objection = ObjectionTo(compression, picture.pix.get());
    if (!objection.empty()) return Refuse(problem, std::move(objection));
  }
  auto coded = std::make_unique<CodedPage>();
  coded->record_.changes = picture.changes;
  Shape shape;
  shape.width = picture.pix == nullptr ? picture.samples->width : pixGetWidth(picture.pix.get());
  shape.height = picture.pix == nullptr ? picture.samples->height : pixGetHeight(picture.pix.get());
  shape.dpi = picture.dpi;
  shape.orientation = picture.orientation;
  shape.frame = picture.frame;
  if (!Place(shape, *coded, problem)) return nullptr;
  bool const may_choose =
      style_.compression == Compression::kAuto && compression == Compression::kGroup4;
  bool const done = keeps_samples ? CodeSamples(std::move(picture), *coded, problem)
                    : may_choose  ? CodeBilevel(std::move(picture), *coded, problem)
                                  : CodeBitmap(std::move(picture), compression, *coded, problem);
  return done ? std::move(coded) : nullptr;
}

// By the library's coders.
bool PageCoder::CodeBitmap(Picture picture, Compression compression, CodedPage& coded,
                           std::string& problem) {
  bool const jpeg = compression == Compression::kJpeg;
  if (jpeg && picture.from_jpeg) coded.record_.changes.Add(Change::kRecodedJpeg);
  if (jpeg) picture.pix = WithoutPalette(picture.pix.get());
  problem = kMemoryText;
  if (picture.pix == nullptr) return false;
  int const depth = PackedDepth(picture.pix.get());
  if (pixGetDepth(picture.pix.get()) == 16) coded.record_.changes.Add(Change::kDepth);
  OwnedBlock const dib = PackedDib(picture.pix.get(), {coded.page_.dpi.x, coded.page_.dpi.y});
  picture.pix.reset();
  if (!dib.IsValid()) return false;
  CodedBitmap bitmap;
  if (!bitmap_coder_.Code(dib, depth, compression, style_.quality, bitmap, problem)) return false;
  SetBitmap(std::move(bitmap), depth, compression, coded);
  SetBitmapForm(depth, compression, std::move(picture.profile), coded);
  return true;
}

void PageCoder::SetBitmap(CodedBitmap bitmap, int depth, Compression compression,
                          CodedPage& coded) {
  EncodedPage& page = coded.page_;
  coded.bitmap_ = std::move(bitmap);
  page.bits_per_pixel = depth;
  page.compression = IdentifierOf(compression);
  page.palette = coded.bitmap_.palette.get();
  page.data = coded.bitmap_.data.bytes().data();
  page.size = static_cast<DWORD>(coded.bitmap_.data.bytes().size());
  coded.record_.coding = NameOf(compression);
  coded.record_.bytes = page.size;
}

// The library's own form will do, except for profiles and for greys without a palette.
void PageCoder::SetBitmapForm(int depth, Compression compression, ProfileBytes profile,
                              CodedPage& coded) {
  auto const form = style_.plain ? std::nullopt : FormOf(compression, depth);
  if (form && (compression == Compression::kJpeg || profile != nullptr)) {
    SetForm(*form, std::move(profile), coded);
  } else if (profile != nullptr) {
    coded.record_.changes.Add(Change::kProfile);
  }
}

// With all bits that the picture has.
bool PageCoder::CodeSamples(Picture picture, CodedPage& coded, std::string& problem) {
  Samples const samples =
      picture.samples ? std::move(*picture.samples) : SamplesOf(picture.pix.get());
  picture.pix.reset();
  FlateData data = flate_coder_.Code(samples);
  if (data.stream.empty()) return problem = kMemoryText, false;
  SetForm(FormOf(samples, data.predicted), std::move(picture.profile), coded);
  SetStream(std::move(data.stream), coded);
  return true;
}

// By Group 4, or by Flate where that is smaller: of halftones, Group 4 makes more than there was.
bool PageCoder::CodeBilevel(Picture picture, CodedPage& coded, std::string& problem) {
  problem = kMemoryText;
  OwnedBlock const dib = PackedDib(picture.pix.get(), {coded.page_.dpi.x, coded.page_.dpi.y});
  if (!dib.IsValid()) return false;
  CodedBitmap group_4;
  if (!bitmap_coder_.Code(dib, 1, Compression::kGroup4, 0, group_4, problem)) return false;
  size_t const bytes = group_4.data.bytes().size();
  SetBitmap(std::move(group_4), 1, Compression::kGroup4, coded);
  Samples const samples = SamplesOf(picture.pix.get());
  bool const worth_trying = bytes <= samples.bytes.size() / kLittleShare ||
                            static_cast<double>(flate_coder_.EstimatedBytes(samples)) <=
                                kWorthTrying * static_cast<double>(bytes);
  bool const done = worth_trying && (style_.plain ? FlateIfSmaller(dib, coded, problem)
                                                  : FlateIfSmaller(samples, picture, coded));
  if (!done) SetBitmapForm(1, Compression::kGroup4, std::move(picture.profile), coded);
  return true;
}

bool PageCoder::FlateIfSmaller(OwnedBlock const& dib, CodedPage& coded, std::string& problem) {
  CodedBitmap flate;
  if (!bitmap_coder_.Code(dib, 1, Compression::kFlate, 0, flate, problem)) return false;
  if (flate.data.bytes().size() >= coded.record_.bytes) return false;
  SetBitmap(std::move(flate), 1, Compression::kFlate, coded);
  return true;
}

bool PageCoder::FlateIfSmaller(Samples const& samples, Picture& picture, CodedPage& coded) {
  FlateData data = flate_coder_.Code(samples);
  if (data.stream.empty() || data.stream.size() >= coded.record_.bytes) return false;
  coded.page_.compression = PDF_COMPRESSION_FLATE;
  SetForm(FormOf(samples, data.predicted), std::move(picture.profile), coded);
  SetStream(std::move(data.stream), coded);
  return true;
}

// A profile goes with the form if it describes its colours.
void PageCoder::SetForm(ImageForm form, ProfileBytes profile, CodedPage& coded) {
  coded.form_ = std::move(form);
  coded.page_.form = &coded.form_;
  coded.profile_ = std::move(profile);
  if (coded.profile_ == nullptr) return;
  if (ProfileComponents(*coded.profile_) == ComponentsOf(coded.form_.colours)) return;
  coded.profile_ = nullptr;
  coded.record_.changes.Add(Change::kProfile);
}

void PageCoder::SetStream(std::vector<BYTE> stream, CodedPage& coded) {
  coded.stream_ = std::move(stream);
  coded.page_.data = coded.stream_.data();
  coded.page_.size = static_cast<DWORD>(coded.stream_.size());
  coded.record_.coding = NameOf(Compression::kFlate);
  coded.record_.bytes = coded.page_.size;
}

// Size and resolution of the page; false if it would be too small to be one.
bool PageCoder::Place(Shape shape, CodedPage& coded, std::string& problem) {
  EncodedPage& page = coded.page_;
  shape.orientation = Turned(shape.orientation, style_.rotate);
  page.width = shape.width;
  page.height = shape.height;
  bool const lies = LiesOnItsSide(shape.orientation);
  if (lies) std::swap(shape.width, shape.height);
  if (lies) std::swap(shape.dpi.x, shape.dpi.y);
  if (shape.orientation != 1) coded.record_.changes.Add(Change::kTurned);
  SetResolution(shape.dpi, style_, coded.record_);
  Resolution const dpi = coded.record_.dpi;
  page.dpi = {lies ? dpi.y : dpi.x, lies ? dpi.x : dpi.y};
  POINT const points = bitmap_coder_.PageSize(shape.width, shape.height, dpi);
  double const own_width = shape.width * kPointsPerInch / dpi.x;
  double const own_height = shape.height * kPointsPerInch / dpi.y;
  if (style_.paper) {
    page.placement = PlaceOn(*style_.paper, style_.fit, style_.border, own_width, own_height);
  } else if (style_.border > 0) {
    page.placement = PlaceWithBorder(style_.border, own_width, own_height);
  } else if (shape.frame && !style_.dpi && shape.orientation == 1) {
    page.placement = PlaceInFrame(*shape.frame, own_width, own_height);
  } else if (shape.orientation != 1) {
    page.placement = FillingPage(points);
  }
  if (page.placement) page.placement->orientation = shape.orientation;
  if (!style_.paper && !FitsAPage(own_width, own_height, dpi, problem)) return false;
  if (style_.paper || (points.x > 0 && points.y > 0)) return true;
  problem = "would be a page of less than half a point at " + std::to_string(dpi.x) + " by " +
            std::to_string(dpi.y) + " dots per inch (--dpi)";
  return false;
}

// Whether the picture and its border are no larger than pages can be.
bool PageCoder::FitsAPage(double width, double height, Resolution dpi, std::string& problem) const {
  if (std::max(width, height) + 2 * style_.border <= kMostPoints + kRounding) return true;
  problem = "would be a page of " + std::to_string(std::llround(width)) + " by " +
            std::to_string(std::llround(height)) + " points at " + std::to_string(dpi.x) + " by " +
            std::to_string(dpi.y) +
            " dots per inch, and pages end at 14400 (more --dpi, or --page a4)";
  return false;
}

}  // namespace sorrelin::tool
