// Pages through the library's coders, and what the coders' error codes mean to a user.
#include "tools/make/page_coder.h"

#include <sorrelin/platform/memory.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "tools/formats/jpeg_file.h"

namespace sorrelin::tool {
namespace {

constexpr WCHAR const* kGroup4Library = u"Cadwick.dll";
constexpr WCHAR const* kJpegLibrary = u"Rennick.dll";

constexpr double kPointsPerInch = 72;
constexpr size_t kGreyTones = 256;
constexpr int kUsualFlateLevel = -1;

DWORD IdentifierOf(Compression compression) {
  switch (compression) {
    case Compression::kGroup4:
      return PDF_COMPRESSION_CCITT;
    case Compression::kFlate:
      return PDF_COMPRESSION_FLATE;
    case Compression::kRunLength:
      return PDF_COMPRESSION_RUN_LENGTH;
    case Compression::kJpeg:
      return PDF_COMPRESSION_JPEG;
    default:
      return PDF_COMPRESSION_NONE;
  }
}

Compression ForDepth(int depth, bool from_jpeg) {
  if (depth == 1) return Compression::kGroup4;
  return from_jpeg ? Compression::kJpeg : Compression::kFlate;
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

// Puts the resolution of the page into its record, and where it comes from.
void SetResolution(Resolution own, PageStyle const& style, PageRecord& record) {
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

char const* NameOf(DWORD compression) {
  switch (compression) {
    case PDF_COMPRESSION_CCITT:
      return "g4";
    case PDF_COMPRESSION_FLATE:
      return "flate";
    case PDF_COMPRESSION_RUN_LENGTH:
      return "runlength";
    case PDF_COMPRESSION_JPEG:
      return "jpeg";
    default:
      return "none";
  }
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

std::nullptr_t Refuse(std::string& problem, std::string reason) {
  problem = std::move(reason);
  return nullptr;
}

}  // namespace

bool Accepts(Compression compression, StoredImage const& image) {
  return compression == Compression::kAuto || IdentifierOf(compression) == image.compression;
}

CodedPage::~CodedPage() {
  if (encoded_.IsValid()) GlobalUnlock(encoded_.get());
}

PageCoder::PageCoder(PageStyle const& style)
    : style_(style), session_(std::make_unique<CCreatePDF>()) {}

PageCoder::~PageCoder() = default;

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
  auto const picture = source.Decode(page, ignored);
  if (!picture || !picture->damage.empty()) return nullptr;
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
  if (style_.recode || style_.scan.ChangesPixels()) return nullptr;
  auto const stored = source.Stored(page);
  return stored && Accepts(style_.compression, *stored) ? Code(*stored, problem) : nullptr;
}

std::unique_ptr<CodedPage> PageCoder::CodeDecoded(ImageSource& source, int page,
                                                  std::string& problem) {
  auto picture = source.Decode(page, problem);
  if (!picture) return nullptr;
  std::string damage = std::move(picture->damage);
  if (!damage.empty() && !style_.keep_damaged) return Refuse(problem, DamageText(damage));
  if (!CleanScan(style_.scan, *picture)) return Refuse(problem, kMemoryText);
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
  if (!Place(image.width, image.height, image.dpi, *coded, problem)) return nullptr;
  if (image.bits_per_pixel == 8) {
    coded->palette_ = GreyPalette();
    if (!coded->palette_.IsValid()) return Refuse(problem, kMemoryText);
  }
  page.bits_per_pixel = image.bits_per_pixel;
  page.compression = image.compression;
  page.decode_normal = image.zero_is_black;
  page.data = image.bytes.data();
  page.size = static_cast<DWORD>(image.bytes.size());
  page.palette = coded->palette_.get();
  coded->stored_ = image.owner;
  coded->record_.coding = NameOf(page.compression);
  coded->record_.passed = true;
  coded->record_.bytes = page.size;
  return coded;
}

std::unique_ptr<CodedPage> PageCoder::Code(Picture picture, std::string& problem) {
  int const depth = PackedDepth(picture.pix.get());
  Compression compression = style_.compression;
  if (compression == Compression::kAuto) compression = ForDepth(depth, picture.from_jpeg);
  std::string objection = Objection(compression, depth);
  if (objection.empty()) objection = SizeObjection(compression, picture.pix.get());
  if (!objection.empty()) return Refuse(problem, std::move(objection));
  auto coded = std::make_unique<CodedPage>();
  EncodedPage& page = coded->page_;
  int const width = pixGetWidth(picture.pix.get()), height = pixGetHeight(picture.pix.get());
  coded->record_.changes = picture.changes;
  if (!Place(width, height, picture.dpi, *coded, problem)) return nullptr;
  bool const jpeg = compression == Compression::kJpeg;
  if (jpeg && picture.from_jpeg) coded->record_.changes.Add(Change::kRecodedJpeg);
  if (jpeg) picture.pix = WithoutPalette(picture.pix.get());
  if (picture.pix == nullptr) return Refuse(problem, kMemoryText);
  page.bits_per_pixel = PackedDepth(picture.pix.get());
  if (pixGetDepth(picture.pix.get()) == 16) coded->record_.changes.Add(Change::kDepth);
  page.compression = IdentifierOf(compression);
  OwnedBlock dib = PackedDib(picture.pix.get(), {page.dpi.x, page.dpi.y});
  picture.pix.reset();
  if (!dib.IsValid()) return Refuse(problem, kMemoryText);
  if (!Encode(std::move(dib), jpeg, *coded, problem)) return nullptr;
  coded->record_.coding = NameOf(page.compression);
  coded->record_.bytes = page.size;
  return coded;
}

// Size and resolution of the page; false if it would be too small to be one.
bool PageCoder::Place(int width, int height, Resolution own, CodedPage& coded,
                      std::string& problem) {
  SetResolution(own, style_, coded.record_);
  Resolution const dpi = coded.record_.dpi;
  EncodedPage& page = coded.page_;
  page.width = width;
  page.height = height;
  page.dpi = {dpi.x, dpi.y};
  if (style_.paper) {
    page.placement = PlaceOn(*style_.paper, style_.fit, width * kPointsPerInch / dpi.x,
                             height * kPointsPerInch / dpi.y);
    return true;
  }
  POINT const points = session_->CalculatePageSizeFromPixelsAndDPI(
      width, height, static_cast<DWORD>(dpi.x), static_cast<DWORD>(dpi.y));
  if (points.x > 0 && points.y > 0) return true;
  problem = "would be a page of less than half a point at " + std::to_string(dpi.x) + " by " +
            std::to_string(dpi.y) + " dots per inch (--dpi)";
  return false;
}

bool PageCoder::Encode(OwnedBlock dib, bool jpeg, CodedPage& coded, std::string& problem) {
  EncodedPage& page = coded.page_;
  session_->PDF_SetLastError(PDF_ERROR_MEMORY);
  if (page.bits_per_pixel == 8) {
    DWORD palette_bytes = 0;
    coded.palette_ = OwnedBlock(session_->ExtractPaletteFromDIB(dib.get(), &palette_bytes));
    if (!coded.palette_.IsValid()) return problem = Reason(), false;
  }
  OwnedBlock encoded(session_->ConvertDIB2PDFImageW(dib.get(), page.size, page.compression,
                                                    jpeg ? kJpegLibrary : kGroup4Library,
                                                    jpeg ? style_.quality : kUsualFlateLevel));
  if (!encoded.IsValid()) return problem = Reason(), false;
  page.data = static_cast<BYTE const*>(GlobalLock(encoded.get()));
  if (page.data == nullptr) return problem = kMemoryText, false;
  coded.encoded_ = std::move(encoded);
  page.palette = coded.palette_.get();
  return true;
}

std::string PageCoder::Reason() {
  switch (session_->PDF_GetLastError()) {
    case PDF_ERROR_MEMORY:
      return kMemoryText;
    case PDF_ERROR_CCITT_LIBRARY:
      return "the Group 4 coder libcadwick.so is missing or unusable: install the package "
             "sorrelin-codecs (or use --compression flate)";
    case PDF_ERROR_JPEG_LIBRARY:
      return "the JPEG coder librennick.so is missing or unusable: install the package "
             "sorrelin-codecs (or use --compression flate)";
    default:
      return "cannot be coded (--compression flate)";
  }
}

}  // namespace sorrelin::tool
