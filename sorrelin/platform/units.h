// The units of pages and bitmaps: points, inches and metres.
#ifndef SORRELIN_PLATFORM_UNITS_H_
#define SORRELIN_PLATFORM_UNITS_H_

namespace sorrelin {

inline constexpr double kPointsPerInch = 72.0;
inline constexpr double kMetresPerInch = 0.0254;

// Kept: conversions that the reader and the DIB toolbox round in their own way; resolutions that
// callers compare depend on each.
inline constexpr float kPointsPerMetre = 2834.0F;
inline constexpr double kInchesPerMetreOfNewBitmaps = 39.37;
inline constexpr double kInchesPerMetreOfReadBitmaps = 39.3701;

}  // namespace sorrelin

#endif  // SORRELIN_PLATFORM_UNITS_H_
