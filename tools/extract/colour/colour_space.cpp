// Colour spaces. Profiles and Lab are converted by Little CMS.
#include "tools/extract/colour/colour_space.h"

#include <lcms2.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "tools/documents/stream_reader.h"
#include "tools/extract/colour/pdf_function.h"

namespace sorrelin::tool {
namespace {

constexpr int kMaxDepth = 8;  // spaces in spaces
constexpr size_t kMaxProfileBytes = size_t{16} << 20;
constexpr int kMaxPaletteHigh = 255;
constexpr int kMaxColorants = 32;

BYTE ByteOf(double share) {
  return static_cast<BYTE>(std::lround(std::clamp(share, 0.0, 1.0) * 255));
}

class GreySpace : public ColourSpace {
 public:
  GreySpace() : ColourSpace(SpaceFamily::kGrey, 1) {}
  void ToRgb(std::span<double const> values, std::span<BYTE> rgb) const override {
    for (size_t i = 0; i < values.size(); ++i) std::fill_n(&rgb[3 * i], 3, ByteOf(values[i]));
  }
};

class RgbSpace : public ColourSpace {
 public:
  RgbSpace() : ColourSpace(SpaceFamily::kRgb, 3) {}
  void ToRgb(std::span<double const> values, std::span<BYTE> rgb) const override {
    std::transform(values.begin(), values.end(), rgb.begin(), ByteOf);
  }
};

// What pure inks look like on paper, one over the other: cyan is the lowest bit of the place, then
// magenta, yellow and black. Between them colours are interpolated along each ink.
constexpr std::array<std::array<double, 3>, 16> kInks = {{{1, 1, 1},
                                                          {0, .6784, .9373},
                                                          {.9255, 0, .5490},
                                                          {.1804, .1922, .5725},
                                                          {1, .9490, 0},
                                                          {0, .6510, .3137},
                                                          {.9294, .1098, .1412},
                                                          {.2118, .2119, .2235},
                                                          {.1373, .1216, .1255},
                                                          {0, .0588, .1412},
                                                          {.1412, 0, 0},
                                                          {0, 0, .0078},
                                                          {.1098, .1020, 0},
                                                          {0, .0745, 0},
                                                          {.1333, 0, 0},
                                                          {0, 0, 0}}};

class InkSpace : public ColourSpace {
 public:
  InkSpace() : ColourSpace(SpaceFamily::kOther, 4) {}
  void ToRgb(std::span<double const> values, std::span<BYTE> rgb) const override {
    for (size_t i = 0; i < rgb.size() / 3; ++i) Convert(&values[4 * i], &rgb[3 * i]);
  }

 private:
  static void Convert(double const* inks, BYTE* rgb) {
    std::array<double, 3> mixed{};
    for (size_t place = 0; place < kInks.size(); ++place) {
      double weight = 1;
      for (size_t ink = 0; ink < 4; ++ink) {
        double const share = std::clamp(inks[ink], 0.0, 1.0);
        weight *= (place >> ink & 1) != 0 ? share : 1 - share;
      }
      for (size_t channel = 0; channel < 3; ++channel) {
        mixed[channel] += weight * kInks[place][channel];
      }
    }
    std::transform(mixed.begin(), mixed.end(), rgb, ByteOf);
  }
};

struct ProfileCloser {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, ProfileCloser>;
struct TransformCloser {
  void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
using Transform = std::unique_ptr<void, TransformCloser>;

Transform TransformFrom(Profile const& from, cmsUInt32Number format) {
  Profile const srgb(cmsCreate_sRGBProfile());
  return Transform(cmsCreateTransform(from.get(), format, srgb.get(), TYPE_RGB_8,
                                      INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOCACHE));
}

class LabSpace : public ColourSpace {
 public:
  LabSpace() : ColourSpace(SpaceFamily::kOther, 3) {}

  bool ReadKeys(QPDFObjectHandle keys) {
    ranges_[0] = {0, 100};
    ranges_[1] = ranges_[2] = {-100, 100};
    QPDFObjectHandle range = keys.getKeyIfDict("/Range");
    for (int i = 0; range.isArray() && range.getArrayNItems() == 4 && i < 2; ++i) {
      ranges_[static_cast<size_t>(i) + 1] = {range.getArrayItem(2 * i).getNumericValue(),
                                             range.getArrayItem(2 * i + 1).getNumericValue()};
    }
    cmsCIExyY const white = WhiteOf(keys.getKeyIfDict("/WhitePoint"));
    Profile const lab(cmsCreateLab4Profile(&white));
    if (lab != nullptr) transform_ = TransformFrom(lab, TYPE_Lab_DBL);
    return transform_ != nullptr;
  }

  void ToRgb(std::span<double const> values, std::span<BYTE> rgb) const override {
    cmsDoTransform(transform_.get(), values.data(), rgb.data(),
                   static_cast<cmsUInt32Number>(rgb.size() / 3));
  }

 private:
  static cmsCIExyY WhiteOf(QPDFObjectHandle white) {
    cmsCIEXYZ point = *cmsD50_XYZ();
    if (white.isArray() && white.getArrayNItems() == 3) {
      point = {white.getArrayItem(0).getNumericValue(), white.getArrayItem(1).getNumericValue(),
               white.getArrayItem(2).getNumericValue()};
    }
    cmsCIExyY place{};
    cmsXYZ2xyY(&place, &point);
    return place;
  }

  Transform transform_;
};

class IccSpace : public ColourSpace {
 public:
  explicit IccSpace(size_t components) : ColourSpace(SpaceFamily::kOther, components) {}

  bool ReadProfile(std::string const& bytes) {
    Profile const profile(
        cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size())));
    if (profile == nullptr) return false;
    cmsColorSpaceSignature const space = cmsGetColorSpace(profile.get());
    if (cmsChannelsOf(space) != components()) return false;
    if (space != cmsSigGrayData && space != cmsSigRgbData && space != cmsSigCmykData) return false;
    cmsUInt32Number const format = components() == 1   ? TYPE_GRAY_16
                                   : components() == 3 ? TYPE_RGB_16
                                                       : TYPE_CMYK_16;
    transform_ = TransformFrom(profile, format);
    if (components() != 4) profile_ = bytes;
    return transform_ != nullptr;
  }

  // Whether colours come out as they go in, but for rounding.
  bool IsPlain() const {
    constexpr double kTones[] = {0, 0.1, 0.25, 0.5, 0.75, 0.9, 1};
    if (components() == 4) return false;
    for (size_t channel = 0; channel < components(); ++channel) {
      for (double const tone : kTones) {
        std::vector<double> const values = Probe(channel, tone);
        BYTE rgb[3];
        ToRgb(values, rgb);
        for (size_t i = 0; i < 3; ++i) {
          if (std::abs(rgb[i] - 255 * values[components() == 1 ? 0 : i]) > kPlainTolerance) {
            return false;
          }
        }
      }
    }
    return true;
  }

  void ToRgb(std::span<double const> values, std::span<BYTE> rgb) const override {
    std::vector<uint16_t> samples(values.size());
    std::transform(values.begin(), values.end(), samples.begin(), [](double value) {
      return static_cast<uint16_t>(std::lround(std::clamp(value, 0.0, 1.0) * 65535));
    });
    cmsDoTransform(transform_.get(), samples.data(), rgb.data(),
                   static_cast<cmsUInt32Number>(rgb.size() / 3));
  }

 private:
  static constexpr double kPlainTolerance = 1.6;

  std::vector<double> Probe(size_t channel, double tone) const {
    std::vector<double> values(components(), 0.5);
    values[channel] = tone;
    return values;
  }

  Transform transform_;
};

// An indexed space; its palette is converted once.
class IndexedSpace : public ColourSpace {
 public:
  IndexedSpace() : ColourSpace(SpaceFamily::kIndexed, 1) {}

  // Entries that the table lacks are black.
  void SetPalette(ColourSpace const& base, std::string table, size_t entries) {
    ranges_[0] = {0, static_cast<double>(entries - 1)};
    table.resize(entries * base.components());
    std::vector<double> values(table.size());
    for (size_t i = 0; i < values.size(); ++i) {
      ComponentRange const range = base.ranges()[i % base.components()];
      double const share = static_cast<unsigned char>(table[i]) / 255.0;
      values[i] = range.low + share * (range.high - range.low);
    }
    std::vector<BYTE> rgb(entries * 3);
    base.ToRgb(values, rgb);
    for (size_t i = 0; i < entries; ++i) {
      palette_.push_back({rgb[3 * i + 2], rgb[3 * i + 1], rgb[3 * i], 0});
    }
  }

  void ToRgb(std::span<double const> values, std::span<BYTE> rgb) const override {
    for (size_t i = 0; i < values.size(); ++i) {
      double const inside = std::clamp(values[i], 0.0, ranges_[0].high);
      RGBQUAD const& entry = palette_[static_cast<size_t>(std::lround(inside))];
      rgb[3 * i] = entry.rgbRed;
      rgb[3 * i + 1] = entry.rgbGreen;
      rgb[3 * i + 2] = entry.rgbBlue;
    }
  }
};

// Separation and DeviceN: a function gives the colour in another space.
class TintSpace : public ColourSpace {
 public:
  TintSpace(size_t components, std::unique_ptr<ColourSpace> alternate,
            std::unique_ptr<PdfFunction> function)
      : ColourSpace(SpaceFamily::kOther, components),
        alternate_(std::move(alternate)),
        function_(std::move(function)) {}

  void ToRgb(std::span<double const> values, std::span<BYTE> rgb) const override {
    size_t const pixels = rgb.size() / 3;
    std::vector<double> converted;
    for (size_t i = 0; i < pixels; ++i) {
      std::vector<double> colour = (*function_)(values.subspan(i * components(), components()));
      colour.resize(alternate_->components());
      converted.insert(converted.end(), colour.begin(), colour.end());
    }
    alternate_->ToRgb(converted, rgb);
  }

 private:
  std::unique_ptr<ColourSpace> alternate_;
  std::unique_ptr<PdfFunction> function_;
};

class SpaceReader {
 public:
  SpaceReader(QPDFObjectHandle resources, std::string& problem)
      : resources_(resources), problem_(problem) {}

  std::unique_ptr<ColourSpace> Read(QPDFObjectHandle object, int depth) {
    problem_ = "its colour space cannot be read";
    if (depth > kMaxDepth) return nullptr;
    if (object.isName()) return ReadNamed(object.getName(), depth);
    if (!object.isArray() || object.getArrayNItems() == 0) return nullptr;
    QPDFObjectHandle family = object.getArrayItem(0);
    if (!family.isName()) return nullptr;
    if (object.getArrayNItems() == 1) return ReadNamed(family.getName(), depth);
    return ReadArray(family.getName(), object, depth);
  }

 private:
  std::unique_ptr<ColourSpace> Refuse(std::string const& family) {
    problem_ = "its colours are in a space that is not read (" + family.substr(1) + ")";
    return nullptr;
  }

  static std::unique_ptr<ColourSpace> Plain(int components) {
    if (components == 1) return std::make_unique<GreySpace>();
    if (components == 3) return std::make_unique<RgbSpace>();
    if (components == 4) return std::make_unique<InkSpace>();
    return nullptr;
  }

  std::unique_ptr<ColourSpace> ReadNamed(std::string const& name, int depth) {
    if (name == "/DeviceGray" || name == "/CalGray" || name == "/G") return Plain(1);
    if (name == "/DeviceRGB" || name == "/CalRGB" || name == "/RGB") return Plain(3);
    if (name == "/DeviceCMYK" || name == "/CMYK") return Plain(4);
    QPDFObjectHandle own = resources_.getKeyIfDict("/ColorSpace").getKeyIfDict(name);
    return own.isNull() ? Refuse(name) : Read(own, depth + 1);
  }

  std::unique_ptr<ColourSpace> ReadArray(std::string const& family, QPDFObjectHandle array,
                                         int depth) {
    if (family == "/CalGray") return Plain(1);
    if (family == "/CalRGB") return Plain(3);
    if (family == "/ICCBased") return ReadIcc(array.getArrayItem(1));
    if (family == "/Lab") return ReadLab(array.getArrayItem(1));
    if (family == "/Indexed" || family == "/I") return ReadIndexed(array, depth);
    if (family == "/Separation") return ReadTint(1, array, depth);
    if (family == "/DeviceN") {
      QPDFObjectHandle names = array.getArrayItem(1);
      return ReadTint(names.isArray() ? names.getArrayNItems() : 0, array, depth);
    }
    return Refuse(family);
  }

  std::unique_ptr<ColourSpace> ReadIcc(QPDFObjectHandle stream) {
    QPDFObjectHandle count =
        stream.isStream() ? stream.getDict().getKey("/N") : QPDFObjectHandle::newNull();
    int const components = count.isInteger() ? count.getIntValueAsInt() : 0;
    auto plain = Plain(components);
    if (plain == nullptr) return Refuse("/ICCBased");
    auto const bytes = StreamText(stream, kMaxProfileBytes);
    if (!bytes || IsKnownAsPlain(*bytes, components)) return plain;
    auto space = std::make_unique<IccSpace>(static_cast<size_t>(components));
    if (space->ReadProfile(*bytes) && !space->IsPlain()) return space;
    known_plain_ = {*bytes, components};
    return plain;
  }

  // To test a profile takes longer than to copy a picture, and the pages of a document share
  // theirs.
  static bool IsKnownAsPlain(std::string const& bytes, int components) {
    return known_plain_.second == components && known_plain_.first == bytes;
  }

  std::unique_ptr<ColourSpace> ReadLab(QPDFObjectHandle keys) {
    auto space = std::make_unique<LabSpace>();
    if (!space->ReadKeys(keys)) return Refuse("/Lab");
    return space;
  }

  static std::optional<std::string> TableOf(QPDFObjectHandle lookup, size_t bytes) {
    if (lookup.isString()) return lookup.getStringValue();
    return StreamText(lookup, bytes);
  }

  std::unique_ptr<ColourSpace> ReadIndexed(QPDFObjectHandle array, int depth) {
    bool const complete = array.getArrayNItems() >= 4;
    auto const base = complete ? Read(array.getArrayItem(1), depth + 1) : nullptr;
    problem_ = "its palette cannot be read";
    if (base == nullptr || base->family() == SpaceFamily::kIndexed) return nullptr;
    QPDFObjectHandle high = array.getArrayItem(2);
    if (!high.isInteger() || high.getIntValue() < 0 || high.getIntValue() > kMaxPaletteHigh) {
      return nullptr;
    }
    size_t const entries = static_cast<size_t>(high.getIntValue()) + 1;
    auto const table = TableOf(array.getArrayItem(3), entries * base->components());
    if (!table) return nullptr;
    auto space = std::make_unique<IndexedSpace>();
    space->SetPalette(*base, *table, entries);
    return space;
  }

  std::unique_ptr<ColourSpace> ReadTint(int components, QPDFObjectHandle array, int depth) {
    std::string const family = array.getArrayItem(0).getName();
    if (components < 1 || components > kMaxColorants || array.getArrayNItems() < 4) {
      return Refuse(family);
    }
    auto alternate = Read(array.getArrayItem(2), depth + 1);
    auto function = PdfFunction::Read(array.getArrayItem(3));
    if (alternate == nullptr || function == nullptr) return Refuse(family);
    return std::make_unique<TintSpace>(static_cast<size_t>(components), std::move(alternate),
                                       std::move(function));
  }

  // The last profile that changes no colours, with the number of its components.
  static inline thread_local std::pair<std::string, int> known_plain_;

  QPDFObjectHandle resources_;
  std::string& problem_;
};

}  // namespace

std::unique_ptr<ColourSpace> ColourSpace::Read(QPDFObjectHandle object, QPDFObjectHandle resources,
                                               std::string& problem) {
  auto space = SpaceReader(resources, problem).Read(object, 0);
  if (space != nullptr) problem.clear();
  return space;
}

}  // namespace sorrelin::tool
