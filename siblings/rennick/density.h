// Conversion of a bitmap's pixels per metre to and from the density of a JFIF header.
#ifndef SIBLINGS_RENNICK_DENSITY_H_
#define SIBLINGS_RENNICK_DENSITY_H_

#include <sorrelin/platform/types.h>

#include <cstdint>

namespace sorrelin::rennick {

struct PixelsPerMetre {
  LONG x;
  LONG y;
};

// As the header holds it: dots per inch (unit 1) or centimetre (unit 2), or, with unit 0, the shape
// of a pixel alone.
struct Density {
  uint8_t unit;
  uint16_t x;
  uint16_t y;
};

// The unit that brings back the nearer values; {0, 1, 1} for a resolution that is unknown (both
// values 0 or less) or that fits in neither.
Density DensityOf(PixelsPerMetre resolution);

// {0, 0} for unit 0.
PixelsPerMetre ResolutionOf(Density density);

}  // namespace sorrelin::rennick

#endif  // SIBLINGS_RENNICK_DENSITY_H_
