// Which colour profiles an image of a document can have.
#include "tools/formats/picture/icc_profile.h"

#include <gtest/gtest.h>

#include "tests/support/pictures.h"

namespace sorrelin::tool {
namespace {

using test::MakeProfile;

TEST(IccProfile, ComponentsAreThoseOfItsColourSpace) {
  for (int const components : {1, 3, 4}) {
    EXPECT_EQ(ProfileComponents(MakeProfile(components)), components);
  }
}

TEST(IccProfile, ProfileIsUsableForItsOwnComponentsOnly) {
  std::vector<BYTE> const profile = MakeProfile(3);
  EXPECT_EQ(UsableProfile(profile, 1), nullptr);
  EXPECT_EQ(UsableProfile(profile, 4), nullptr);
  EXPECT_EQ(UsableProfile(profile, 0), nullptr);
  ASSERT_NE(UsableProfile(profile, 3), nullptr);
  EXPECT_EQ(*UsableProfile(profile, 3), profile);
}

TEST(IccProfile, BytesAfterItsEndAreLeftOut) {
  std::vector<BYTE> const profile = MakeProfile(3);
  std::vector<BYTE> longer = profile;
  longer.push_back(7);
  EXPECT_EQ(*UsableProfile(longer, 3), profile);
}

TEST(IccProfile, CutShortOrWithoutSignatureIsNone) {
  std::vector<BYTE> profile = MakeProfile(3);
  EXPECT_EQ(ProfileComponents(std::span(profile).first(profile.size() - 1)), 0);
  EXPECT_EQ(ProfileComponents(std::span(profile).first(20)), 0);
  EXPECT_EQ(ProfileComponents({}), 0);
  profile[36] = 'x';
  EXPECT_EQ(ProfileComponents(profile), 0);
}

// ISO 32000 knows profiles up to version 4, of devices and colour spaces.
TEST(IccProfile, LaterVersionsAndLinksAreNone) {
  std::vector<BYTE> later = MakeProfile(3), link = MakeProfile(3);
  later[8] = 5;
  EXPECT_EQ(ProfileComponents(later), 0);
  std::copy_n("link", 4, link.begin() + 12);
  EXPECT_EQ(ProfileComponents(link), 0);
}

}  // namespace
}  // namespace sorrelin::tool
