// Pages through the library's session: coding, limits, and what its error codes mean to a user.
#include "tools/document.h"

#include <sorrelin/platform/memory.h>
#include <sorrelin/writer/encoded_page.h>

#include <limits>
#include <system_error>

#include "tools/jpeg_file.h"

namespace sorrelin::tool {
namespace {

constexpr WCHAR const* kGroup4Library = u"Cadwick.dll";
constexpr WCHAR const* kJpegLibrary = u"Rennick.dll";

// Bitmaps and pictures without a resolution are taken to have this one.
constexpr int kUsualDotsPerInch = 96;

// Offsets in the cross-reference table are signed numbers of 32 bits; the table itself, with 20
// bytes for each of 90,050 objects, and what else closes a document fit into what is left below.
constexpr uint64_t kMaxDocumentBytes = (uint64_t{1} << 31) - (uint64_t{1} << 21);
// Everything of a page but its image and palette, generously.
constexpr uint64_t kPageFrameBytes = 1 << 14;

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

Resolution PageResolution(Resolution own, PageStyle const& style) {
  Resolution dpi = style.dpi.value_or(own);
  if (dpi.x == 0) dpi.x = dpi.y;
  if (dpi.y == 0) dpi.y = dpi.x;
  return dpi.x == 0 ? Resolution{kUsualDotsPerInch, kUsualDotsPerInch} : dpi;
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

// Keeps a block locked.
class Lock {
 public:
  explicit Lock(HGLOBAL block)
      : block_(block), data_(static_cast<BYTE const*>(GlobalLock(block))) {}
  ~Lock() {
    if (data_ != nullptr) GlobalUnlock(block_);
  }
  Lock(Lock const&) = delete;
  Lock& operator=(Lock const&) = delete;
  BYTE const* data() const { return data_; }

 private:
  HGLOBAL block_;
  BYTE const* data_;
};

PageResult Refuse(std::string& problem, std::string reason) {
  problem = std::move(reason);
  return PageResult::kRefused;
}

constexpr char kMemoryText[] = "is too large for the memory there is";

}  // namespace

bool Accepts(Compression compression, StoredImage const& image) {
  return compression == Compression::kAuto || IdentifierOf(compression) == image.compression;
}

bool Document::Create(std::filesystem::path const& path, Description const& description,
                      std::string& problem) {
  path_ = path;
  session_->SetTitleW(description.title.c_str());
  session_->SetAuthorW(description.author.c_str());
  session_->SetSubjectW(description.subject.c_str());
  session_->SetKeywordsW(description.keywords.c_str());
  if (session_->CreatePDFW(path.u16string().c_str()) != 0) return true;
  problem = "cannot be created: " + SessionText();
  return false;
}

bool Document::Update(std::filesystem::path const& path, std::string& problem) {
  path_ = path;
  if (session_->CreatePDFW(path.u16string().c_str()) != 0) return true;
  if (session_->PDF_GetLastError() == PDF_ERROR_VERSION) {
    problem = std::string("keeps objects in object streams, and takes no pages") + kRewriteHint;
  } else {
    problem = "cannot be updated: " + SessionText();
  }
  return false;
}

PageResult Document::Add(StoredImage const& image, PageStyle const& style, std::string& problem) {
  if (image.bytes.size() > std::numeric_limits<DWORD>::max()) {
    return Refuse(problem, "is larger than a document can be");
  }
  Resolution const dpi = PageResolution(image.dpi, style);
  OwnedBlock const palette = image.bits_per_pixel == 8 ? GreyPalette() : OwnedBlock{};
  EncodedPage page;
  page.width = image.width;
  page.height = image.height;
  page.bits_per_pixel = image.bits_per_pixel;
  page.compression = image.compression;
  page.decode_normal = image.zero_is_black;
  page.dpi = {dpi.x, dpi.y};
  page.data = image.bytes.data();
  page.size = static_cast<DWORD>(image.bytes.size());
  page.palette = palette.get();
  return Write(page, problem);
}

PageResult Document::Add(Picture picture, PageStyle const& style, std::string& problem) {
  Compression compression = style.compression;
  if (compression == Compression::kAuto) {
    compression = ForDepth(PackedDepth(picture.pix.get()), picture.from_jpeg);
  }
  std::string objection = Objection(compression, PackedDepth(picture.pix.get()));
  if (!objection.empty()) return Refuse(problem, std::move(objection));
  bool const jpeg = compression == Compression::kJpeg;
  int const longest = std::max(pixGetWidth(picture.pix.get()), pixGetHeight(picture.pix.get()));
  if (jpeg && longest > kMaxJpegSide) {
    return Refuse(problem, "is " + std::to_string(longest) + " pixels long, and JPEG ends at " +
                               std::to_string(kMaxJpegSide) + " (--compression flate)");
  }
  if (jpeg) picture.pix = WithoutPalette(picture.pix.get());
  if (picture.pix == nullptr) return Refuse(problem, kMemoryText);
  return Encode(std::move(picture), compression, style, problem);
}

PageResult Document::Encode(Picture picture, Compression compression, PageStyle const& style,
                            std::string& problem) {
  bool const jpeg = compression == Compression::kJpeg;
  Resolution const dpi = PageResolution(picture.dpi, style);
  EncodedPage page;
  page.width = pixGetWidth(picture.pix.get());
  page.height = pixGetHeight(picture.pix.get());
  page.bits_per_pixel = PackedDepth(picture.pix.get());
  page.compression = IdentifierOf(compression);
  page.dpi = {dpi.x, dpi.y};
  OwnedBlock dib = PackedDib(picture.pix.get(), dpi);
  picture.pix.reset();
  if (!dib.IsValid()) return Refuse(problem, kMemoryText);

  session_->PDF_SetLastError(PDF_ERROR_MEMORY);
  DWORD palette_bytes = 0;
  OwnedBlock const palette(page.bits_per_pixel == 8
                               ? session_->ExtractPaletteFromDIB(dib.get(), &palette_bytes)
                               : nullptr);
  if (page.bits_per_pixel == 8 && !palette.IsValid()) return Failure(problem);
  OwnedBlock const encoded(session_->ConvertDIB2PDFImageW(dib.get(), page.size, page.compression,
                                                          jpeg ? kJpegLibrary : kGroup4Library,
                                                          jpeg ? style.quality : kUsualFlateLevel));
  if (!encoded.IsValid()) return Failure(problem);
  dib = OwnedBlock{};
  Lock const lock(encoded.get());
  page.data = lock.data();
  page.palette = palette.get();
  return Write(page, problem);
}

PageResult Document::Write(EncodedPage const& page, std::string& problem) {
  POINT const points = session_->CalculatePageSizeFromPixelsAndDPI(
      page.width, page.height, static_cast<DWORD>(page.dpi.x), static_cast<DWORD>(page.dpi.y));
  if (points.x <= 0 || points.y <= 0) {
    return Refuse(problem, "would be a page of less than half a point at " +
                               std::to_string(page.dpi.x) + " by " + std::to_string(page.dpi.y) +
                               " dots per inch (--dpi)");
  }
  std::error_code error;
  uint64_t const written = std::filesystem::file_size(path_, error);
  if (!error && written + page.size + kPageFrameBytes > kMaxDocumentBytes) {
    problem = "does not fit: a document ends at 2 GiB (put the rest into another one)";
    return PageResult::kFull;
  }
  unsigned const pages = PageCount();
  if (!WriteEncodedPage(*session_, page)) return Failure(problem);
  if (PageCount() > pages) return PageResult::kWritten;
  return Refuse(problem, "is too small for a page of its own (--dpi)");
}

bool Document::Finish(std::string& problem) {
  if (session_->FinishPDF() != 0) return true;
  problem = "cannot be written: " + SessionText();
  return false;
}

PageResult Document::Failure(std::string& problem) {
  switch (session_->PDF_GetLastError()) {
    case PDF_ERROR_MEMORY:
      return Refuse(problem, kMemoryText);
    case PDF_ERROR_CCITT_LIBRARY:
      return Refuse(problem,
                    "the Group 4 coder libcadwick.so is missing or unusable: it belongs beside "
                    "libsorrelin-platform.so (or use --compression flate)");
    case PDF_ERROR_JPEG_LIBRARY:
      return Refuse(problem,
                    "the JPEG coder librennick.so is missing or unusable: it belongs beside "
                    "libsorrelin-platform.so (or use --compression flate)");
    case PDF_ERROR_ENCODING:
      return Refuse(problem, "cannot be coded (--compression flate)");
    case PDF_ERROR_TOO_MANY_PAGES:
    case PDF_ERROR_NEW_PAGE_OBJECT:
      problem = "does not fit: the document is full at " + std::to_string(PageCount()) +
                " pages (put the rest into another one)";
      return PageResult::kFull;
    default:
      problem = "cannot be written: " + SessionText();
      return PageResult::kBroken;
  }
}

std::string Document::SessionText() {
  char text[1024] = "";
  session_->GetLastPDFErrorText(text);
  return text;
}

}  // namespace sorrelin::tool
