// Decodes the pictures of pages and finds where documents draw them.
#include "tools/ocr/page_scan.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <optional>
#include <utility>

#include "tools/cli/messages.h"
#include "tools/documents/qpdf_document.h"
#include "tools/extract/output/picture_builder.h"
#include "tools/extract/page/page_judge.h"
#include "tools/formats/image_file.h"
#include "tools/formats/picture/plain_picture.h"
#include "tools/ocr/changeable_document.h"
#include "tools/ocr/ocr_engine.h"

namespace sorrelin::tool {
namespace {

class DocumentScanner : public PageScanner {
 public:
  DocumentScanner(std::unique_ptr<QpdfDocument> pictures,
                  std::unique_ptr<ChangeableDocument> places)
      : pictures_(std::move(pictures)), places_(std::move(places)) {}

  std::vector<ScannedPicture> Scan(unsigned page, std::string& problem) override {
    PageFacts const facts = JudgePage(*pictures_, page);
    PictureBuilder builder;
    problem = facts.problem;
    if (!problem.empty()) return {};
    PagePicture const& picture = facts.whole.at(0);
    if (!FitsEngine(picture.Width(), picture.Height(), problem)) return {};
    if (!DecodePagePicture(picture, kUpright, builder, problem)) return {};
    std::optional<Matrix> place;
    int rotation = 0;
    auto const find = [&] {
      QPDFObjectHandle object = places_->Page(page);
      place = FirstPicturePlace(object);
      rotation = RotationOf(object);
    };
    if (!CatchDamage(find, problem)) return {};
    problem = kMemoryText;
    PixPtr pix = builder.Take();
    if (pix == nullptr || !place) return {};
    int const orientation = OrientationOf(*place, rotation);
    pix = Upright(std::move(pix), orientation);
    if (pix == nullptr) return {};
    SheetSize const size = SizeOf(pix.get());
    std::vector<ScannedPicture> scanned;
    scanned.push_back({{std::move(pix), picture.dpi}, UprightPlace(*place, orientation), size});
    return scanned;
  }

 private:
  std::unique_ptr<QpdfDocument> pictures_;
  std::unique_ptr<ChangeableDocument> places_;
};

std::unique_ptr<PageScanner> OpenDocument(std::string const& name, std::string& problem) {
  auto places = ChangeableDocument::Open(name, problem);
  if (places == nullptr) return nullptr;
  auto pictures = QpdfDocument::Open(name, "", problem);
  if (pictures == nullptr) return nullptr;
  return std::make_unique<DocumentScanner>(std::move(pictures), std::move(places));
}

std::vector<ScannedPicture> ScanSource(ImageSource& source, int page, std::string& problem) {
  auto picture = source.Decode(page, problem);
  if (picture && !picture->damage.empty()) problem = DamageText(picture->damage);
  if (!picture || !picture->damage.empty()) return {};
  if (!GiveUpSamples(*picture)) return problem = kMemoryText, std::vector<ScannedPicture>();
  Pix* const pix = picture->pix.get();
  SheetSize const size = SizeOf(pix);
  bool const fits = FitsEngine(static_cast<uint64_t>(pixGetWidth(pix)),
                               static_cast<uint64_t>(pixGetHeight(pix)), problem);
  if (!fits) return {};
  std::vector<ScannedPicture> scanned;
  scanned.push_back({std::move(*picture), PixelPlace(size), size});
  return scanned;
}

class SourceScanner : public PageScanner {
 public:
  explicit SourceScanner(ImageSource& source) : source_(source) {}

  std::vector<ScannedPicture> Scan(unsigned page, std::string& problem) override {
    return ScanSource(source_, static_cast<int>(page), problem);
  }

 private:
  ImageSource& source_;
};

// Empty when it fails.
std::vector<l_uint32> Serialised(Pix* pix) {
  l_uint32* words = nullptr;
  size_t bytes = 0;
  pixSerializeToMemory(pix, &words, &bytes);
  std::unique_ptr<l_uint32, decltype(&std::free)> const owner(words, std::free);
  return words == nullptr ? std::vector<l_uint32>()
                          : std::vector<l_uint32>(words, words + bytes / sizeof(l_uint32));
}

DecodedPage DecodeFrom(ImageSource& source, unsigned page) {
  DecodedPage decoded{page, {}, {}, {}};
  try {
    auto const scanned = ScanSource(source, static_cast<int>(page), decoded.problem);
    if (scanned.empty()) return decoded;
    decoded.picture = Serialised(scanned.front().picture.pix.get());
    decoded.dpi = scanned.front().picture.dpi;
    decoded.problem = decoded.picture.empty() ? kTooLargeText : "";
  } catch (std::bad_alloc const&) {
    decoded.problem = kMemoryText;
  }
  return decoded;
}

class DecodedScanner : public PageScanner {
 public:
  explicit DecodedScanner(std::vector<DecodedPage> const& pages) : pages_(pages) {}

  std::vector<ScannedPicture> Scan(unsigned page, std::string& problem) override {
    auto const decoded =
        std::find_if(pages_.begin(), pages_.end(),
                     [page](DecodedPage const& each) { return each.page == page; });
    if (decoded == pages_.end()) return problem = kCannotDecode, std::vector<ScannedPicture>();
    problem = decoded->problem;
    if (!problem.empty()) return {};
    std::vector<l_uint32> const& words = decoded->picture;
    PixPtr pix(pixDeserializeFromMemory(words.data(), words.size() * sizeof(l_uint32)));
    if (pix == nullptr) return problem = kTooLargeText, std::vector<ScannedPicture>();
    SheetSize const size = SizeOf(pix.get());
    std::vector<ScannedPicture> scanned;
    scanned.push_back({{std::move(pix), decoded->dpi}, PixelPlace(size), size});
    return scanned;
  }

 private:
  std::vector<DecodedPage> const& pages_;
};

// Keeps the source of the last page open, and reads on from there.
class FileScanner : public PageScanner {
 public:
  explicit FileScanner(std::vector<FilePage> const& pages) : pages_(pages) {}

  std::vector<ScannedPicture> Scan(unsigned page, std::string& problem) override {
    FilePage const& wanted = pages_.at(page);
    if (!Find(wanted, problem)) return {};
    return ScanSource(*source_, wanted.page, problem);
  }

 private:
  bool Find(FilePage const& wanted, std::string& problem) {
    if (name_ != wanted.file || number_ > wanted.source) {
      file_ = ImageFile::Open(wanted.file, problem);
      name_ = wanted.file;
      number_ = -1;
    }
    while (file_ != nullptr && number_ < wanted.source) {
      source_ = file_->Next(problem);
      if (source_ == nullptr) file_.reset();
      ++number_;
    }
    if (file_ != nullptr && wanted.page < source_->PageCount()) return true;
    if (problem.empty()) problem = kCannotDecode;
    return name_.clear(), false;
  }

  std::vector<FilePage> const& pages_;
  std::string name_;
  std::unique_ptr<ImageFile> file_;
  std::unique_ptr<ImageSource> source_;
  int number_ = -1;  // of the source
};

}  // namespace

std::unique_ptr<PageScanner> OpenScanner(ScannedPages const& pages, std::string& problem) {
  if (!pages.document.empty()) return OpenDocument(pages.document, problem);
  if (pages.source != nullptr) return std::make_unique<SourceScanner>(*pages.source);
  if (!pages.decoded.empty()) return std::make_unique<DecodedScanner>(pages.decoded);
  return std::make_unique<FileScanner>(pages.files);
}

ScannedPages Decoded(ImageSource& source, std::span<unsigned const> pages, size_t enough) {
  ScannedPages scanned;
  size_t bytes = 0;
  for (size_t i = 0; i < pages.size() && (i == 0 || bytes < enough); ++i) {
    scanned.decoded.push_back(DecodeFrom(source, pages[i]));
    bytes += scanned.decoded.back().picture.size() * sizeof(l_uint32);
  }
  return scanned;
}

SheetSize SizeOf(Pix* pix) {
  return {static_cast<double>(pixGetWidth(pix)), static_cast<double>(pixGetHeight(pix))};
}

bool TurnQuarters(ScannedPicture& scanned, int quarters) {
  scanned.picture.pix.reset(pixRotateOrth(scanned.picture.pix.get(), quarters));
  scanned.place = TurnedPlace(scanned.place, quarters);
  return scanned.picture.pix != nullptr;
}

}  // namespace sorrelin::tool
