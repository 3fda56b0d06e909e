// Follows the transformation matrix and its stack through a content stream, and nothing else.
#include "tools/ocr/picture_place.h"

#include <cmath>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <vector>

namespace sorrelin::tool {
namespace {

constexpr int kQuarter = 90;
constexpr int kFullTurn = 360;
constexpr size_t kMaxSaved = 1 << 16;
constexpr size_t kMatrixNumbers = 6;

// From a picture that was turned by a quarter clockwise to the picture before, in the unit square.
constexpr Matrix kQuarterBack = {0, 1, -1, 0, 1, 0};
constexpr Matrix kMirror = {-1, 0, 0, 1, 1, 0};

class PictureFinder : public QPDFObjectHandle::ParserCallbacks {
 public:
  explicit PictureFinder(QPDFObjectHandle pictures) : pictures_(pictures) {}

  void handleObject(QPDFObjectHandle object) override {
    if (!object.isOperator()) return operands_.push_back(object);
    std::string const word = object.getOperatorValue();
    if (word == "q" && saved_.size() < kMaxSaved) saved_.push_back(matrix_);
    if (word == "Q" && !saved_.empty()) {
      matrix_ = saved_.back();
      saved_.pop_back();
    }
    if (word == "cm") Concatenate();
    if (word == "Do") Draw();
    operands_.clear();
  }
  void handleEOF() override {}

  std::optional<Matrix> place;

 private:
  void Concatenate() {
    if (operands_.size() < kMatrixNumbers) return;
    auto const number = [&](size_t i) {
      return operands_[operands_.size() - kMatrixNumbers + i].getNumericValue();
    };
    Matrix const added = {number(0), number(1), number(2), number(3), number(4), number(5)};
    matrix_ = added.Then(matrix_);
  }

  void Draw() {
    if (operands_.empty() || !operands_.back().isName()) return;
    QPDFObjectHandle object = pictures_.getKeyIfDict(operands_.back().getName());
    if (!object.isImage(false)) return;
    place = matrix_;
    terminateParsing();
  }

  QPDFObjectHandle pictures_;
  std::vector<QPDFObjectHandle> operands_;
  Matrix matrix_;
  std::vector<Matrix> saved_;
};

// The clockwise quarter turns of an orientation, after its mirroring.
int QuartersOf(int orientation) {
  constexpr int kQuarters[] = {0, 0, 0, 2, 2, 3, 1, 1, 3};
  return kQuarters[orientation];
}

bool IsMirrored(int orientation) {
  return orientation == 2 || orientation == 4 || orientation == 5 || orientation == 7;
}

}  // namespace

Matrix PixelPlace(SheetSize const& picture) {
  return {picture.width, 0, 0, -picture.height, 0, picture.height};
}

Matrix UprightPlace(Matrix const& place, int orientation) {
  Matrix const mirrored = IsMirrored(orientation) ? kMirror.Then(place) : place;
  return TurnedPlace(mirrored, QuartersOf(orientation));
}

Matrix TurnedPlace(Matrix const& place, int quarters) {
  Matrix turned = place;
  for (int i = 0; i < quarters; ++i) turned = kQuarterBack.Then(turned);
  return turned;
}

int RotationOf(QPDFObjectHandle page) {
  QPDFObjectHandle rotate = QPDFPageObjectHelper(page).getAttribute("/Rotate", false);
  if (!rotate.isInteger()) return 0;
  int const degrees = static_cast<int>(rotate.getIntValue() % kFullTurn);
  return (degrees + kFullTurn) % kFullTurn / kQuarter * kQuarter;
}

std::optional<Matrix> FirstPicturePlace(QPDFObjectHandle page) {
  QPDFObjectHandle resources = QPDFPageObjectHelper(page).getAttribute("/Resources", false);
  PictureFinder finder(resources.getKeyIfDict("/XObject"));
  page.parsePageContents(&finder);
  return finder.place;
}

}  // namespace sorrelin::tool
