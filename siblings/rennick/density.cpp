// Conversion of resolutions to densities and back.
#include <siblings/rennick/density.h>

#include <cmath>
#include <cstdlib>
#include <optional>

namespace sorrelin::rennick {
namespace {

constexpr uint8_t kPixelShape = 0;
constexpr uint8_t kPerInch = 1;
constexpr uint8_t kPerCentimetre = 2;

// Units of the density in a metre.
double UnitsInMetre(uint8_t unit) { return unit == kPerInch ? 1 / 0.0254 : 100.0; }

LONG PerMetre(uint8_t unit, uint16_t density) {
  return static_cast<LONG>(std::lround(density * UnitsInMetre(unit)));
}

std::optional<uint16_t> PerUnit(uint8_t unit, LONG per_metre) {
  double const density = std::round(per_metre / UnitsInMetre(unit));
  if (density < 1 || density > UINT16_MAX) return std::nullopt;
  return static_cast<uint16_t>(density);
}

std::optional<Density> InUnit(uint8_t unit, PixelsPerMetre resolution) {
  auto const x = PerUnit(unit, resolution.x);
  auto const y = PerUnit(unit, resolution.y);
  if (!x || !y) return std::nullopt;
  return Density{unit, *x, *y};
}

int64_t Error(Density density, PixelsPerMetre resolution) {
  PixelsPerMetre const back = ResolutionOf(density);
  return std::llabs(int64_t{back.x} - resolution.x) + std::llabs(int64_t{back.y} - resolution.y);
}

}  // namespace

Density DensityOf(PixelsPerMetre resolution) {
  if (resolution.x <= 0) resolution.x = resolution.y;
  if (resolution.y <= 0) resolution.y = resolution.x;
  auto const inch = InUnit(kPerInch, resolution);
  auto const centimetre = InUnit(kPerCentimetre, resolution);
  if (inch && centimetre) {
    return Error(*inch, resolution) <= Error(*centimetre, resolution) ? *inch : *centimetre;
  }
  return inch.value_or(centimetre.value_or(Density{kPixelShape, 1, 1}));
}

PixelsPerMetre ResolutionOf(Density density) {
  if (density.unit != kPerInch && density.unit != kPerCentimetre) return {0, 0};
  return {PerMetre(density.unit, density.x), PerMetre(density.unit, density.y)};
}

}  // namespace sorrelin::rennick
