// Leptonica's search for the tilt of text lines.
#include "tools/ocr/straightening.h"

#include <cmath>
#include <numbers>
#include <utility>

namespace sorrelin::tool {
namespace {

constexpr int kInkBelow = 130;       // of 256 tones
constexpr float kLeastTilt = 0.3F;   // degrees; the engine follows lines that are tilted less
constexpr float kSureOfTilt = 3.0F;  // Leptonica's own bound
constexpr double kHalfTurn = 180;

// Degrees by which the picture is to be turned clockwise; 0 where no lines are seen to be tilted.
float TiltOf(Pix* pix) {
  PixPtr const ink(pixConvertTo1(pix, kInkBelow));
  float degrees = 0;
  float confidence = 0;
  bool const is_sure = ink != nullptr && pixFindSkew(ink.get(), &degrees, &confidence) == 0 &&
                       confidence >= kSureOfTilt;
  return is_sure && std::abs(degrees) >= kLeastTilt ? degrees : 0;
}

double RadiansOf(double degrees) { return degrees * std::numbers::pi / kHalfTurn; }

// In grey, with paper of one tone whatever the light on it: where it is darker than the corners
// that a turn adds, the engine takes it for a picture. Null when memory is short.
PixPtr EvenGrey(Pix* pix) {
  PixPtr grey(pixConvertTo8(pix, 0));
  if (grey == nullptr) return nullptr;
  constexpr int kPaper = 250;  // the other numbers are those that Leptonica advises
  PixPtr even(pixBackgroundNorm(grey.get(), nullptr, nullptr, 10, 15, 60, 40, kPaper, 2, 1));
  return even != nullptr ? std::move(even) : std::move(grey);
}

// Null when memory is short.
PixPtr Turned(Pix* pix, float degrees) {
  PixPtr const soft = EvenGrey(pix);
  if (soft == nullptr) return nullptr;
  return PixPtr(pixRotate(soft.get(), static_cast<float>(RadiansOf(degrees)), L_ROTATE_AREA_MAP,
                          L_BRING_IN_WHITE, pixGetWidth(soft.get()), pixGetHeight(soft.get())));
}

}  // namespace

Matrix StraightPlace(Matrix const& place, SheetSize picture, SheetSize copy, double degrees) {
  double const cosine = std::cos(RadiansOf(degrees)), sine = std::sin(RadiansOf(degrees));
  Matrix const from_middle = {copy.width, 0, 0, copy.height, -copy.width / 2, -copy.height / 2};
  Matrix const back = {cosine, sine, -sine, cosine, 0, 0};
  Matrix const to_unit = {1 / picture.width, 0, 0, 1 / picture.height, 0.5, 0.5};
  return from_middle.Then(back).Then(to_unit).Then(place);
}

bool Straighten(ScannedPicture& scanned) {
  PixPtr& pix = scanned.picture.pix;
  float const degrees = TiltOf(pix.get());
  if (degrees == 0) return true;
  SheetSize const size = SizeOf(pix.get());
  pix = Turned(pix.get(), degrees);
  if (pix == nullptr) return false;
  scanned.place = StraightPlace(scanned.place, size, SizeOf(pix.get()), degrees);
  return true;
}

}  // namespace sorrelin::tool
