// Profile headers (ICC.1:2022, 7.2): size at byte 0, version at 8, class at 12, colour space at 16,
// "acsp" at 36; numbers have their highest byte first.
#include "tools/formats/picture/icc_profile.h"

#include <string_view>

namespace sorrelin::tool {
namespace {

constexpr size_t kHeaderBytes = 128;
constexpr size_t kVersionAt = 8;
constexpr size_t kClassAt = 12;
constexpr size_t kSpaceAt = 16;
constexpr size_t kSignatureAt = 36;
constexpr BYTE kLastVersion = 4;  // that ISO 32000 knows

std::string_view TextAt(std::span<BYTE const> profile, size_t at) {
  return {reinterpret_cast<char const*>(profile.data()) + at, 4};
}

size_t StatedSize(std::span<BYTE const> profile) {
  return size_t{profile[0]} << 24 | size_t{profile[1]} << 16 | size_t{profile[2]} << 8 | profile[3];
}

// Profiles of devices and colour spaces, but not links between two of them and the like.
bool DescribesColours(std::string_view kind) {
  return kind == "scnr" || kind == "mntr" || kind == "prtr" || kind == "spac";
}

}  // namespace

int ProfileComponents(std::span<BYTE const> profile) {
  if (profile.size() <= kHeaderBytes || StatedSize(profile) > profile.size() ||
      StatedSize(profile) <= kHeaderBytes || TextAt(profile, kSignatureAt) != "acsp" ||
      profile[kVersionAt] > kLastVersion || !DescribesColours(TextAt(profile, kClassAt))) {
    return 0;
  }
  std::string_view const space = TextAt(profile, kSpaceAt);
  return space == "GRAY" ? 1 : space == "RGB " ? 3 : space == "CMYK" ? 4 : 0;
}

ProfileBytes UsableProfile(std::span<BYTE const> profile, int components) {
  if (components == 0 || ProfileComponents(profile) != components) return nullptr;
  auto const used = profile.first(StatedSize(profile));
  return std::make_shared<std::vector<BYTE> const>(used.begin(), used.end());
}

}  // namespace sorrelin::tool
