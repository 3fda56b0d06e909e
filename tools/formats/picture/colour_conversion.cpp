// One transform a picture, with the intent that pictures usually have.
#include "tools/formats/picture/colour_conversion.h"

#include <lcms2.h>

#include <array>
#include <cstring>
#include <string_view>

namespace sorrelin::tool {
namespace {

struct ProfileCloser {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, ProfileCloser>;

cmsUInt32Number FormatOf(int components) {
  return components == 1 ? TYPE_GRAY_8 : components == 3 ? TYPE_RGB_8 : TYPE_CMYK_8;
}

// Greys with the tones of sRGB, or sRGB itself.
Profile TargetOf(int components) {
  Profile srgb(cmsCreate_sRGBProfile());
  if (components != 1 || srgb == nullptr) return srgb;
  auto const* const curve =
      static_cast<cmsToneCurve const*>(cmsReadTag(srgb.get(), cmsSigGreenTRCTag));
  return curve == nullptr ? Profile() : Profile(cmsCreateGrayProfile(cmsD50_xyY(), curve));
}

Profile Opened(std::span<BYTE const> bytes) {
  return Profile(cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size())));
}

bool IsNamedSrgb(cmsHPROFILE profile) {
  std::array<char, 256> name{};
  cmsGetProfileInfoASCII(profile, cmsInfoDescription, "en", "US", name.data(),
                         static_cast<cmsUInt32Number>(name.size()) - 1);
  return std::string_view(name.data()).find("sRGB") != std::string_view::npos;
}

BYTE ToneOf(int ink, int black) {
  return static_cast<BYTE>(((255 - ink) * (255 - black) + 127) / 255);
}

}  // namespace

bool IsSrgb(std::span<BYTE const> profile) {
  Profile const opened = Opened(profile);
  return opened != nullptr && IsNamedSrgb(opened.get());
}

ColourConversion::ColourConversion(std::span<BYTE const> profile, int components)
    : components_(components) {
  if (profile.empty()) return;
  Profile const source = Opened(profile);
  Profile const target = TargetOf(Components());
  if (source == nullptr || target == nullptr || IsNamedSrgb(source.get())) return;
  transform_ = cmsCreateTransform(source.get(), FormatOf(components), target.get(),
                                  FormatOf(Components()), INTENT_PERCEPTUAL, 0);
}

ColourConversion::~ColourConversion() {
  if (transform_ != nullptr) cmsDeleteTransform(transform_);
}

void ColourConversion::Convert(BYTE const* from, BYTE* to, int pixels) const {
  size_t const count = static_cast<size_t>(pixels);
  if (transform_ != nullptr) {
    cmsDoTransform(transform_, from, to, static_cast<cmsUInt32Number>(count));
  } else if (components_ != 4) {
    std::memcpy(to, from, count * static_cast<size_t>(components_));
  } else {
    for (size_t i = 0; i < count; ++i, from += 4, to += 3) {
      for (size_t ink = 0; ink < 3; ++ink) to[ink] = ToneOf(from[ink], from[3]);
    }
  }
}

}  // namespace sorrelin::tool
