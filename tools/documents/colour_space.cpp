// Calibrated spaces count as the device's of as many components: readers differ by shades there.
#include "tools/documents/colour_space.h"

#include "tools/documents/stream_filters.h"

namespace sorrelin::tool {
namespace {

using Kind = PdfValue::Kind;

constexpr size_t kMaxPaletteEntries = 256;

// The family's name, or empty if the value is no colour space.
std::string FamilyOf(PdfObjects const& objects, PdfValue const& value) {
  PdfValue const name =
      value.Is(Kind::kArray) && !value.items.empty() ? objects.Resolve(value.items[0]) : value;
  return name.Is(Kind::kName) ? name.text : "";
}

// 1 or 3 of a plain space; 0 for others.
int PlainComponents(PdfObjects const& objects, PdfValue const& value) {
  std::string const family = FamilyOf(objects, value);
  if (family == "DeviceGray" || family == "CalGray") return 1;
  if (family == "DeviceRGB" || family == "CalRGB") return 3;
  if (family != "ICCBased" || value.items.size() < 2) return 0;
  PdfValue const count = objects.Resolve(objects.Resolve(value.items[1])["N"]);
  return count.number == 1 || count.number == 3 ? static_cast<int>(count.number) : 0;
}

std::optional<std::string> LookupBytes(PdfObjects const& objects, PdfValue const& value) {
  PdfObject const lookup = objects.Follow(value);
  if (lookup.value.Is(Kind::kString)) return lookup.value.text;
  return DecodedText(objects, lookup, kMaxPaletteEntries * 3);
}

// Entries that the lookup lacks are black.
std::vector<RGBQUAD> PaletteOf(std::string const& bytes, size_t entries, size_t components) {
  std::vector<RGBQUAD> palette(entries);
  auto const at = [&](size_t i) { return static_cast<BYTE>(i < bytes.size() ? bytes[i] : 0); };
  for (size_t i = 0; i < entries; ++i) {
    size_t const first = i * components;
    BYTE const red = at(first);
    palette[i] = {components == 3 ? at(first + 2) : red, components == 3 ? at(first + 1) : red, red,
                  0};
  }
  return palette;
}

std::optional<ColourSpace> ReadIndexed(PdfObjects const& objects, PdfValue const& space,
                                       std::string& problem) {
  problem = "its palette cannot be read";
  if (space.items.size() < 4) return std::nullopt;
  int const components = PlainComponents(objects, objects.Resolve(space.items[1]));
  PdfValue const high = objects.Resolve(space.items[2]);
  auto const bytes = LookupBytes(objects, space.items[3]);
  bool const sane = high.Is(Kind::kNumber) && high.number >= 0 && high.number < kMaxPaletteEntries;
  if (components == 0 || !sane || !bytes) return std::nullopt;
  problem.clear();
  return ColourSpace{
      1, PaletteOf(*bytes, static_cast<size_t>(high.number) + 1, static_cast<size_t>(components))};
}

}  // namespace

std::optional<ColourSpace> ReadColourSpace(PdfObjects const& objects, PdfValue const& value,
                                           std::string& problem) {
  PdfValue const space = objects.Resolve(value);
  std::string const family = FamilyOf(objects, space);
  if (family == "Indexed") return ReadIndexed(objects, space, problem);
  int const components = PlainComponents(objects, space);
  if (components != 0) return ColourSpace{components, {}};
  problem = family.empty() ? "its colour space cannot be read"
                           : "its colours are in a space that is not read (" + family + ")";
  return std::nullopt;
}

}  // namespace sorrelin::tool
