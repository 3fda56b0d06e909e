// What messages on Windows advise: files beside the program instead of packages.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/ocr/languages.h"

namespace sorrelin::tool {
namespace {

using ::testing::HasSubstr;

TEST(WindowsRemedies, LanguageIsAFileInTheFolderBesideTheProgram) {
  EXPECT_THAT(MissingLanguage("chi_sim_vert"),
              HasSubstr("(put chi_sim_vert.traineddata into the folder tessdata"));
  EXPECT_THAT(DamagedLanguage("deu"), HasSubstr("(put a whole deu.traineddata into the folder"));
}

}  // namespace
}  // namespace sorrelin::tool
