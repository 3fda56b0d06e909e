// The pictures that a page draws, and whether they make one whole.
#include "tools/extract/page/page_judge.h"

#include <algorithm>
#include <cmath>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <set>

#include "tools/extract/codings/sample_decoder.h"
#include "tools/extract/page/picture_turner.h"
#include "tools/extract/page/pixel_maker.h"

namespace sorrelin::tool {
namespace {

constexpr double kPointsPerInch = 72;
constexpr double kMaxSide = 0x7FFFFFFF;
constexpr char kTooMuchWork[] = "is left out: the document takes too much work to read";
// Strips may be apart, or overlap, by this share of a row's height.
constexpr double kSeamRows = 1.0;

double NumberIn(QPDFObjectHandle array, int place) {
  QPDFObjectHandle item = array.getArrayItem(place);
  return item.isNumber() ? item.getNumericValue() : 0;
}

void ReadBox(QPDFObjectHandle box, PageFacts& facts) {
  if (!box.isArray() || box.getArrayNItems() < 4) return;
  facts.width = std::abs(NumberIn(box, 2) - NumberIn(box, 0));
  facts.height = std::abs(NumberIn(box, 3) - NumberIn(box, 1));
}

// Turns are whole quarters; anything else is none.
int RotationOf(QPDFObjectHandle rotate) {
  constexpr int kQuarter = 90, kFull = 360;
  double const angle = rotate.isNumber() ? rotate.getNumericValue() : 0;
  if (std::abs(angle) > kMaxSide) return 0;
  int const whole = static_cast<int>(angle);
  return whole == angle && whole % kQuarter == 0 ? (whole % kFull + kFull) % kFull : 0;
}

int DotsOver(DWORD pixels, double points) {
  return points > 0 ? WholeDots(pixels * kPointsPerInch / points) : 0;
}

PagePicture PictureOf(DrawnPicture const& drawn, int rotation) {
  PagePicture picture;
  PictureFacts const facts = ReadPictureShape(drawn.image, drawn.resources);
  picture.strips.push_back(facts.shape);
  picture.problem = facts.problem;
  picture.compression = facts.compression;
  picture.orientation = OrientationOf(drawn.matrix, rotation);
  picture.dpi = {DotsOver(facts.shape.width, drawn.matrix.Width()),
                 DotsOver(facts.shape.height, drawn.matrix.Height())};
  return picture;
}

// Each picture once, where it is drawn first.
std::vector<DrawnPicture> Distinct(std::vector<DrawnPicture> const& drawn) {
  std::set<QPDFObjGen> seen;
  std::vector<DrawnPicture> distinct;
  for (DrawnPicture const& picture : drawn) {
    QPDFObjectHandle image = picture.image;
    if (seen.insert(image.getObjGen()).second) distinct.push_back(picture);
  }
  return distinct;
}

// The only picture among a page's resources, taken to fill the page: some pages draw theirs in ways
// that cannot be followed.
std::vector<DrawnPicture> OnlyResource(QPDFObjectHandle resources, PageFacts const& facts) {
  std::vector<DrawnPicture> images;
  QPDFObjectHandle xobjects = resources.getKeyIfDict("/XObject");
  if (!xobjects.isDictionary()) return {};
  for (auto& [name, object] : xobjects.getDictAsMap()) {
    QPDFObjectHandle image = object;
    if (!image.isStream() || !image.getDict().getKey("/Subtype").isNameAndEquals("/Image"))
      continue;
    images.push_back({image, resources, Matrix{facts.width, 0, 0, facts.height, 0, 0}, false});
    if (images.size() > 1) return {};
  }
  return images;
}

// Strips of one picture: equally wide, and each where the one above ends.
bool IsNextStrip(DrawnPicture const& above, PictureShape const& upper, DrawnPicture const& below,
                 PictureShape const& lower) {
  Matrix const& a = above.matrix;
  Matrix const& b = below.matrix;
  if (a.b != 0 || a.c != 0 || b.b != 0 || b.c != 0 || a.a <= 0 || a.d <= 0 || b.d <= 0)
    return false;
  if (upper.width != lower.width || upper.height == 0 || lower.height == 0) return false;
  double const row = a.d / upper.height;
  double const seam = std::max(row, b.d / lower.height) * kSeamRows;
  return std::abs(a.e - b.e) <= seam && std::abs(a.a - b.a) <= seam &&
         std::abs(b.f + b.d - a.f) <= seam;
}

class Judge {
 public:
  Judge(QpdfDocument& document, PageFacts& facts) : document_(document), facts_(facts) {}

  void Run(QPDFObjectHandle page) {
    QPDFPageObjectHelper helper(page);
    ReadBox(helper.getAttribute("/MediaBox", false), facts_);
    facts_.rotation = RotationOf(helper.getAttribute("/Rotate", false));
    if (document_.budget().IsExhausted()) return Leave();
    PageDrawing const drawing = ScanPage(document_, page);
    drawn_ = Distinct(drawing.pictures);
    if (drawn_.empty()) drawn_ = OnlyResource(helper.getAttribute("/Resources", false), facts_);
    if (document_.budget().IsExhausted()) return Leave();
    for (DrawnPicture const& drawn : drawn_) {
      facts_.pictures.push_back(PictureOf(drawn, facts_.rotation));
    }
    SettleWhole();
  }

 private:
  void Leave() { facts_.problem = kTooMuchWork; }

  void SettleWhole() {
    if (facts_.pictures.empty()) {
      facts_.problem = "has no picture of its own";
    } else if (facts_.pictures.size() == 1) {
      facts_.whole = facts_.pictures;
    } else if (!JoinStrips()) {
      facts_.problem = "is made of several pictures";
    }
    if (facts_.whole.empty() || facts_.whole[0].problem.empty()) return;
    facts_.problem = facts_.whole[0].problem;
  }

  bool JoinStrips() {
    std::vector<size_t> order;
    for (size_t i = 0; i < drawn_.size(); ++i) order.push_back(i);
    std::stable_sort(order.begin(), order.end(), [this](size_t a, size_t b) {
      return drawn_[a].matrix.f > drawn_[b].matrix.f;
    });
    PagePicture joined = facts_.pictures[order[0]];
    double height = drawn_[order[0]].matrix.d;
    for (size_t i = 1; i < order.size(); ++i) {
      PagePicture const& next = facts_.pictures[order[i]];
      bool const follows =
          IsNextStrip(drawn_[order[i - 1]], joined.strips.back(), drawn_[order[i]], next.strips[0]);
      if (!follows || next.Depth() != joined.Depth()) return false;
      if (joined.problem.empty()) joined.problem = next.problem;
      joined.strips.push_back(next.strips[0]);
      height += drawn_[order[i]].matrix.d;
    }
    joined.dpi.y = DotsOver(joined.Height(), height);
    facts_.whole.push_back(std::move(joined));
    return true;
  }

  QpdfDocument& document_;
  PageFacts& facts_;
  std::vector<DrawnPicture> drawn_;
};

// Rows of the strips of a picture as those of one.
class StripJoiner : public PictureSink {
 public:
  StripJoiner(PagePicture const& picture, PictureSink& sink) : picture_(picture), sink_(sink) {}

  bool Begin(PictureForm const& form) override {
    if (begun_) return form.depth == depth_ && form.palette.size() == palette_;
    begun_ = true;
    depth_ = form.depth;
    palette_ = form.palette.size();
    PictureForm whole = form;
    whole.height = picture_.Height();
    return sink_.Begin(whole);
  }
  bool Row(std::span<BYTE const> row) override { return sink_.Row(row); }
  bool TakesProfile() const override { return sink_.TakesProfile(); }

 private:
  PagePicture const& picture_;
  PictureSink& sink_;
  bool begun_ = false;
  int depth_ = 0;
  size_t palette_ = 0;
};

}  // namespace

DWORD PagePicture::Height() const {
  uint64_t rows = 0;
  for (PictureShape const& strip : strips) rows += strip.height;
  return static_cast<DWORD>(std::min<uint64_t>(rows, 0xFFFFFFFF));
}

int PagePicture::Depth() const {
  if (strips.empty() || strips[0].space == nullptr) return 0;
  return static_cast<int>(strips[0].BitsPerPixel());
}

PageFacts JudgePage(QpdfDocument& document, DWORD page) {
  PageFacts facts;
  bool const judged =
      CatchDamage([&] { Judge(document, facts).Run(document.Page(page)); }, facts.problem);
  if (!judged) {
    facts.pictures.clear();
    facts.whole.clear();
  }
  return facts;
}

bool DecodePagePicture(PagePicture const& picture, Orientation orientation, PictureSink& sink,
                       std::string& problem) {
  bool decoded = true;
  PictureTurner turner(orientation, sink);
  StripJoiner joiner(picture, turner);
  bool const caught = CatchDamage(
      [&] {
        for (PictureShape const& strip : picture.strips) {
          decoded = decoded && DecodePicture(strip, picture.dpi, joiner, problem);
        }
        if (decoded && !turner.Finish()) {
          decoded = false;
          problem = kShortData;
        }
      },
      problem);
  if (caught && decoded) problem.clear();
  return caught && decoded;
}

}  // namespace sorrelin::tool
