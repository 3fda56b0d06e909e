// Decodes the pictures of a page and finds where they are drawn.
#include "tools/ocr/page_scan.h"

#include <optional>
#include <utility>

#include "tools/cli/messages.h"
#include "tools/documents/qpdf_document.h"
#include "tools/extract/output/picture_builder.h"
#include "tools/extract/page/page_judge.h"
#include "tools/formats/image_source.h"
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

}  // namespace

std::unique_ptr<PageScanner> PageScanner::Open(std::string const& name, std::string& problem) {
  auto places = ChangeableDocument::Open(name, problem);
  if (places == nullptr) return nullptr;
  auto pictures = QpdfDocument::Open(name, "", problem);
  if (pictures == nullptr) return nullptr;
  return std::make_unique<DocumentScanner>(std::move(pictures), std::move(places));
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
