// Languages of locales.
#include <gtest/gtest.h>

#include "tools/ocr/languages.h"

namespace {

using sorrelin::tool::LanguagesFor;
using sorrelin::tool::MissingLanguage;

TEST(Languages, LocaleGivesTheNameOfTesseract) {
  EXPECT_EQ(LanguagesFor("de_AT.UTF-8"), "deu");
  EXPECT_EQ(LanguagesFor("en"), "eng");
  EXPECT_EQ(LanguagesFor("fil_PH"), "fil");
  EXPECT_EQ(LanguagesFor("ca_ES.UTF-8@valencia"), "cat");
}

TEST(Languages, CountryAndScriptCount) {
  EXPECT_EQ(LanguagesFor("zh_CN.UTF-8"), "chi_sim");
  EXPECT_EQ(LanguagesFor("zh_TW.UTF-8"), "chi_tra");
  EXPECT_EQ(LanguagesFor("sr_RS.UTF-8@latin"), "srp_latn");
  EXPECT_EQ(LanguagesFor("sr_RS"), "srp");
}

TEST(Languages, ListHasEachOnceInItsOrder) {
  EXPECT_EQ(LanguagesFor("nb_NO:nn:de:en_GB:en"), "nor+deu+eng");
}

TEST(Languages, UnknownOnesAreLeftOut) {
  EXPECT_EQ(LanguagesFor("C"), "");
  EXPECT_EQ(LanguagesFor("POSIX"), "");
  EXPECT_EQ(LanguagesFor(""), "");
  EXPECT_EQ(LanguagesFor("xx:fr"), "fra");
}

TEST(Languages, PackageIsNamedAsDebianNamesIt) {
  EXPECT_NE(MissingLanguage("chi_sim_vert").find("apt install tesseract-ocr-chi-sim-vert"),
            std::string::npos);
}

}  // namespace
