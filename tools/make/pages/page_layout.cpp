// Paper sizes (ISO 216, ANSI/ASME Y14.1), and the arithmetic of fitting.
#include "tools/make/pages/page_layout.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <utility>

namespace sorrelin::tool {
namespace {

constexpr double kPointsPerInch = 72;
constexpr double kPointsPerMillimetre = kPointsPerInch / 25.4;
constexpr double kPointsPerCentimetre = kPointsPerInch / 2.54;

// What viewers hold to be a page (ISO 32000-1, annex C).
constexpr double kLeastPoints = 3;

struct NamedPaper {
  std::string_view name;
  double width;
  double height;
  double unit;
};

constexpr NamedPaper kPapers[] = {{"letter", 8.5, 11, kPointsPerInch},
                                  {"legal", 8.5, 14, kPointsPerInch},
                                  {"executive", 7.25, 10.5, kPointsPerInch},
                                  {"tabloid", 11, 17, kPointsPerInch}};

// Millimetres of the series of ISO 216, from number 0 on.
struct Size {
  double width;
  double height;
};
constexpr Size kSeriesA[] = {{841, 1189}, {594, 841}, {420, 594}, {297, 420},
                             {210, 297},  {148, 210}, {105, 148}, {74, 105},
                             {52, 74},    {37, 52},   {26, 37}};
constexpr Size kSeriesB[] = {{1000, 1414}, {707, 1000}, {500, 707}, {353, 500},
                             {250, 353},   {176, 250},  {125, 176}, {88, 125},
                             {62, 88},     {44, 62},    {31, 44}};

// "a0" to "b10".
std::optional<Paper> PaperOfSeries(std::string_view name) {
  if (name.size() < 2 || (name[0] != 'a' && name[0] != 'b')) return std::nullopt;
  size_t number = 0;
  char const* const last = name.data() + name.size();
  auto const [end, error] = std::from_chars(name.data() + 1, last, number);
  bool const plain = name[1] != '0' || name.size() == 2;
  if (error != std::errc{} || end != last || !plain || number >= std::size(kSeriesA)) {
    return std::nullopt;
  }
  Size const size = name[0] == 'a' ? kSeriesA[number] : kSeriesB[number];
  return Paper{size.width * kPointsPerMillimetre, size.height * kPointsPerMillimetre, true};
}

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

// Points of a unit; 0 if it is none.
double PointsOf(std::string_view unit) {
  if (unit == "mm") return kPointsPerMillimetre;
  if (unit == "cm") return kPointsPerCentimetre;
  if (unit == "in") return kPointsPerInch;
  return unit == "pt" ? 1 : 0;
}

// Takes a unit off the front and returns its points; 0 if there is none.
double TakeUnit(std::string_view& text) {
  double const points = PointsOf(text.substr(0, 2));
  if (points != 0) text.remove_prefix(2);
  return points;
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

// The page is of whole points.
PagePlacement InTheMiddle(double page_width, double page_height, double width, double height) {
  PagePlacement placement;
  placement.page = {static_cast<LONG>(page_width), static_cast<LONG>(page_height)};
  placement.width = Fixed(width);
  placement.height = Fixed(height);
  placement.x = Fixed((page_width - width) / 2);
  placement.y = Fixed((page_height - height) / 2);
  return placement;
}

}  // namespace

std::optional<Paper> ParsePaper(std::string_view size) {
  std::string const lower = Lower(size);
  std::string_view text = lower;
  for (NamedPaper const& row : kPapers) {
    if (row.name == text) return Paper{row.width * row.unit, row.height * row.unit, true};
  }
  if (auto const paper = PaperOfSeries(text)) return paper;
  double const width = TakeNumber(text);
  double width_unit = TakeUnit(text);
  if (!text.starts_with('x')) return std::nullopt;
  text.remove_prefix(1);
  double const height = TakeNumber(text);
  double height_unit = TakeUnit(text);
  if (width_unit == 0) width_unit = height_unit;
  if (height_unit == 0) height_unit = width_unit;
  Paper const paper = {width * width_unit, height * height_unit, false};
  if (!text.empty() || !IsSide(paper.width) || !IsSide(paper.height)) return std::nullopt;
  return paper;
}

std::optional<double> ParseLength(std::string_view length) {
  std::string const lower = Lower(length);
  std::string_view text = lower;
  if (text == "0") return 0;
  bool const digit = !text.empty() && (text[0] == '.' || (text[0] >= '0' && text[0] <= '9'));
  double const number = TakeNumber(text);
  double const unit = TakeUnit(text);
  if (!digit || unit == 0 || !text.empty() || number * unit > kMostPoints / 2) return std::nullopt;
  return number * unit;
}

PagePlacement PlaceOn(Paper paper, Fit fit, double border, double width, double height) {
  if (paper.turns && (width > height) != (paper.width > paper.height)) {
    std::swap(paper.width, paper.height);
  }
  // The page is of whole points, and the picture is fitted to that.
  double const page_width = std::round(paper.width), page_height = std::round(paper.height);
  double x_scale = (page_width - 2 * border) / width, y_scale = (page_height - 2 * border) / height;
  if (fit == Fit::kWithin) x_scale = y_scale = std::min(x_scale, y_scale);
  if (fit == Fit::kShrink) x_scale = y_scale = std::min({x_scale, y_scale, 1.0});
  if (fit == Fit::kFill) x_scale = y_scale = std::max(x_scale, y_scale);
  return InTheMiddle(page_width, page_height, width * x_scale, height * y_scale);
}

PagePlacement PlaceInFrame(PageFrame const& frame, double width, double height) {
  PagePlacement placement =
      InTheMiddle(std::round(frame.width), std::round(frame.height), width, height);
  placement.x = Fixed(frame.left);
  placement.y = Fixed(frame.bottom);
  return placement;
}

PagePlacement PlaceWithBorder(double border, double width, double height) {
  return InTheMiddle(std::round(width + 2 * border), std::round(height + 2 * border), width,
                     height);
}

}  // namespace sorrelin::tool
