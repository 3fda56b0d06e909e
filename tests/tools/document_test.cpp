// Pages, limits and resolutions of a document.
#include "tools/make/document.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/platform/error.h>

#include "tests/support/pictures.h"
#include "tests/support/temp_dir.h"
#include "tools/cli/text.h"

namespace sorrelin::tool {
namespace {

using ::testing::HasSubstr;

class DocumentLimits : public ::testing::Test {
 protected:
  DocumentLimits() : jpeg_(test::MakeJpeg({}, [](int, int, int) { return 0u; })) {
    std::string problem;
    EXPECT_TRUE(document_.Create(path_, {}, problem)) << problem;
  }

  PageResult Add(StoredImage const& image) {
    PageCoder coder(style_);
    auto const page = coder.Code(image, problem_);
    EXPECT_NE(page, nullptr) << problem_;
    return page == nullptr ? PageResult::kBroken : document_.Add(*page, problem_);
  }

  StoredImage Image(size_t size) const {
    StoredImage image;
    image.bytes = std::span(jpeg_).first(size);
    image.width = image.height = 72;
    image.form.filter = ImageFilter::kJpeg;
    image.form.colours = ImageColours::kRgb;
    image.dpi = {72, 72};
    return image;
  }

  test::TempDir directory_;
  std::filesystem::path path_ = directory_ / "a.pdf";
  std::vector<BYTE> jpeg_;
  PageStyle style_;
  Document document_;
  std::string problem_;
};

// The file is made as long as its offsets can tell, less the megabytes that are kept free to close
// it, without taking that much of the disk.
TEST_F(DocumentLimits, PageThatWouldPassTheLastOffsetIsRefused) {
  std::filesystem::resize_file(path_, (uint64_t{1} << 31) - (uint64_t{1} << 21));
  EXPECT_EQ(Add(Image(10)), PageResult::kFull);
  EXPECT_THAT(problem_, HasSubstr("ends at 2 GiB"));
  EXPECT_EQ(document_.PageCount(), 0u);
}

TEST_F(DocumentLimits, PageThatStillFitsIsWritten) {
  std::filesystem::resize_file(path_, (uint64_t{1} << 31) - (uint64_t{1} << 22));
  EXPECT_EQ(Add(Image(10)), PageResult::kWritten) << problem_;
  EXPECT_EQ(document_.PageCount(), 1u);
}

TEST_F(DocumentLimits, ResolutionsThatAreAbsentComeFromTheOtherAxisOrAre96) {
  StoredImage image = Image(10);
  for (Resolution const dpi : {Resolution{36, 0}, Resolution{0, 36}, Resolution{0, 0}}) {
    image.dpi = dpi;
    EXPECT_EQ(Add(image), PageResult::kWritten) << problem_;
  }
  EXPECT_TRUE(document_.Finish(problem_)) << problem_;
  std::vector<BYTE> const bytes = test::ReadAll(path_);
  std::string const text(bytes.begin(), bytes.end());
  size_t const first = text.find("/MediaBox [0 0 144 144]");
  EXPECT_NE(first, std::string::npos);
  EXPECT_NE(text.find("/MediaBox [0 0 144 144]", first + 1), std::string::npos);
  EXPECT_THAT(text, HasSubstr("/MediaBox [0 0 54 54]"));
}

TEST_F(DocumentLimits, PathThatCannotBeWrittenIsReported) {
  Document other;
  EXPECT_FALSE(other.Create(directory_ / "no/such.pdf", {}, problem_));
  SetLastError(ERROR_PATH_NOT_FOUND);
  EXPECT_THAT(problem_, HasSubstr("cannot be created: " + LastSystemError() + " (see "));
}

TEST(Accepts, AutoTakesAllAndOtherCompressionsTheirOwn) {
  StoredImage jpeg, group4;
  jpeg.form.filter = ImageFilter::kJpeg;
  group4.form.filter = ImageFilter::kGroup4;
  EXPECT_TRUE(Accepts(Compression::kAuto, jpeg));
  EXPECT_TRUE(Accepts(Compression::kAuto, group4));
  EXPECT_TRUE(Accepts(Compression::kJpeg, jpeg));
  EXPECT_FALSE(Accepts(Compression::kJpeg, group4));
  EXPECT_TRUE(Accepts(Compression::kGroup4, group4));
  EXPECT_FALSE(Accepts(Compression::kGroup4, jpeg));
  EXPECT_FALSE(Accepts(Compression::kFlate, jpeg));
  EXPECT_FALSE(Accepts(Compression::kNone, group4));
}

}  // namespace
}  // namespace sorrelin::tool
