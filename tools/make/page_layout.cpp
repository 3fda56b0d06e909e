// Paper sizes (ISO 216, ANSI/ASME Y14.1) and the arithmetic of fitting.
#include "tools/make/page_layout.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

namespace sorrelin::tool {
namespace {

constexpr double kPointsPerInch = 72;
constexpr double kPointsPerMillimetre = kPointsPerInch / 25.4;
constexpr double kPointsPerCentimetre = kPointsPerInch / 2.54;

// What viewers hold to be a page (ISO 32000-1, annex C).
constexpr double kLeastPoints = 3;
constexpr double kMostPoints = 14400;

struct NamedPaper {
  std::string_view name;
  double width;
  double height;
  double unit;
};

constexpr NamedPaper kPapers[] = {
    {"a3", 297, 420, kPointsPerMillimetre}, {"a4", 210, 297, kPointsPerMillimetre},
    {"a5", 148, 210, kPointsPerMillimetre}, {"a6", 105, 148, kPointsPerMillimetre},
    {"letter", 8.5, 11, kPointsPerInch},    {"legal", 8.5, 14, kPointsPerInch},
    {"tabloid", 11, 17, kPointsPerInch}};

// Points of a unit; 0 if it is none.
double PointsOf(std::string_view unit) {
  if (unit == "mm") return kPointsPerMillimetre;
  if (unit == "cm") return kPointsPerCentimetre;
  if (unit == "in") return kPointsPerInch;
  return unit == "pt" ? 1 : 0;
}

// Takes a number off the front; 0 if there is none.
double TakeNumber(std::string_view& text) {
  double value = 0;
  auto const [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
  if (error != std::errc{}) return 0;
  text.remove_prefix(static_cast<size_t>(end - text.data()));
  return value;
}

bool IsSide(double points) { return points >= kLeastPoints && points <= kMostPoints; }

int64_t Fixed(double points) { return std::llround(points * PagePlacement::kUnitsPerPoint); }

}  // namespace

std::optional<Paper> ParsePaper(std::string_view text) {
  for (NamedPaper const& row : kPapers) {
    if (row.name == text) return Paper{row.width * row.unit, row.height * row.unit, true};
  }
  double const width = TakeNumber(text);
  if (!text.starts_with('x')) return std::nullopt;
  text.remove_prefix(1);
  double const height = TakeNumber(text);
  double const unit = PointsOf(text);
  Paper const paper = {width * unit, height * unit, false};
  if (!IsSide(paper.width) || !IsSide(paper.height)) return std::nullopt;
  return paper;
}

PagePlacement PlaceOn(Paper paper, Fit fit, double width, double height) {
  if (paper.turns && (width > height) != (paper.width > paper.height)) {
    std::swap(paper.width, paper.height);
  }
  // The page is of whole points, and the picture is fitted to that.
  double const page_width = std::round(paper.width), page_height = std::round(paper.height);
  double x_scale = page_width / width, y_scale = page_height / height;
  if (fit == Fit::kWithin) x_scale = y_scale = std::min(x_scale, y_scale);
  if (fit == Fit::kShrink) x_scale = y_scale = std::min({x_scale, y_scale, 1.0});
  if (fit == Fit::kFill) x_scale = y_scale = std::max(x_scale, y_scale);
  PagePlacement placement;
  placement.page = {static_cast<LONG>(page_width), static_cast<LONG>(page_height)};
  placement.width = Fixed(width * x_scale);
  placement.height = Fixed(height * y_scale);
  placement.x = Fixed((page_width - width * x_scale) / 2);
  placement.y = Fixed((page_height - height * y_scale) / 2);
  return placement;
}

}  // namespace sorrelin::tool
