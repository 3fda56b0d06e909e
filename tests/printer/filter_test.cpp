// The filter as the scheduler runs it.
#include <filesystem>

#include "tests/support/raster_builder.h"
#include "tests/tools/make_fixture.h"

namespace {

using namespace std::string_literals;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class FilterTest : public test::MakeTest {
 protected:
  FilterTest() { std::filesystem::create_directory(Path("spool")); }

  // rastertosorrelin 1 user TITLE COPIES OPTIONS [FILE], its output being the document.
  test::ProgramResult Filter(std::string const& input, std::vector<std::string> arguments = {},
                             std::string const& title = "Title", std::string const& copies = "1",
                             std::string const& options = "") const {
    std::vector<std::string> all = {SORRELIN_FILTER, "1", "user", title, copies, options};
    all.insert(all.end(), arguments.begin(), arguments.end());
    auto const result = test::RunProgram(all, {input.begin(), input.end()}, Environment());
    test::WriteAll(Out(), {result.out.begin(), result.out.end()});
    EXPECT_TRUE(std::filesystem::is_empty(Path("spool")));
    return result;
  }

  std::vector<std::string> Environment() const { return {"TMPDIR=" + Path("spool")}; }

  static std::string Raster(int pages = 1, test::RasterHeaderForm const& form = {}) {
    std::string raster = "RaS2";
    for (int i = 0; i < pages; ++i) raster += test::PackedGreyPage(72, 'a', form);
    return raster;
  }

  static std::string BilevelRaster() {
    test::RasterHeaderForm form;
    form.bits_per_colour = form.bits_per_pixel = form.line_bytes = 1;
    form.colour_space = 3;
    return "RaS3" + test::RasterHeaderBytes(form) + "\xFF\x0F"s;
  }
};

TEST_F(FilterTest, RasterBecomesADocumentWithTheTitleOfTheJob) {
  auto const result = Filter(Raster(2));
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(PageCount(), 2);
  EXPECT_TRUE(DocumentHas("[0 0 72 72]"));
  EXPECT_TRUE(DocumentHas("Title"));
  EXPECT_EQ(result.err, "PAGE: 1 1\nPAGE: 2 1\n");
}

TEST_F(FilterTest, RowsAreTheSameInTheDocument) {
  Filter(Raster());
  l_uint32 value = 0;
  pixGetPixel(Render(72, 72).get(), 70, 70, &value);
  EXPECT_EQ(value >> 8, 0x616161u);
}

TEST_F(FilterTest, BilevelPagesAreGroup4) {
  Filter(BilevelRaster());
  EXPECT_TRUE(DocumentHas("CCITTFaxDecode"));
  l_uint32 black = 1, white = 0;
  auto const page = Render(8, 2);
  pixGetPixel(page.get(), 0, 0, &black);
  pixGetPixel(page.get(), 0, 1, &white);
  EXPECT_EQ(black >> 8, 0u);
  EXPECT_EQ(white >> 8, 0xFFFFFFu);
}

TEST_F(FilterTest, CodingIsThatOfTheHeaderOrOfTheOptions) {
  Filter(Raster());
  EXPECT_TRUE(DocumentHas("FlateDecode"));
  test::RasterHeaderForm form;
  form.compression = 2;
  Filter(Raster(1, form));
  EXPECT_TRUE(DocumentHas("DCTDecode"));
  Filter(Raster(), {}, "t", "1", "media=a4 SorrelinCoding=JPEG SorrelinQuality=30");
  EXPECT_TRUE(DocumentHas("DCTDecode"));
}

TEST_F(FilterTest, OptionsThatMakeNoSenseAreIgnored) {
  EXPECT_EQ(
      Filter(Raster(), {}, "t", "1", "SorrelinCoding SorrelinQuality=9999999999 =  '").exit_code,
      0);
  EXPECT_EQ(PageCount(), 1);
}

TEST_F(FilterTest, CopiesAreMadeOfAFileAlone) {
  std::string const raster = Raster(2);
  test::WriteAll(Path("a.ras"), {raster.begin(), raster.end()});
  Filter("", {Path("a.ras")}, "t", "3");
  EXPECT_EQ(PageCount(), 6);
  Filter(raster, {}, "t", "3");
  EXPECT_EQ(PageCount(), 2);
}

TEST_F(FilterTest, DamagedJobsLeaveNoDocument) {
  std::string const whole = Raster(2);
  for (std::string const& input :
       {std::string(), "RaS2"s, "hello"s, whole.substr(0, whole.size() - 1), whole + "x"}) {
    auto const result = Filter(input);
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr("ERROR: The job "));
  }
}

TEST_F(FilterTest, HostileHeadersAreRefusedAtOnce) {
  test::RasterHeaderForm form;
  form.width = form.height = 0xFFFFFFFF;
  auto const result = Filter("RaS3" + test::RasterHeaderBytes(form));
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, StartsWith("ERROR: The job has a page of 4294967295 by 4294967295"));
}

TEST_F(FilterTest, WrongArgumentsAreNamed) {
  auto const result = test::RunProgram({SORRELIN_FILTER, "1"}, {});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, StartsWith("ERROR: usage: rastertosorrelin"));
  EXPECT_EQ(Filter(Raster(), {}, "t", "-1").exit_code, 1);
}

TEST_F(FilterTest, TitlesOfAnyBytesAreTaken) {
  for (std::string const& title : {"\xFF\xFE"s, std::string(5000, 'x'), "a\nERROR: b"s, ""s}) {
    EXPECT_EQ(Filter(Raster(), {}, title).exit_code, 0);
  }
}

TEST_F(FilterTest, EndOfTheJobLeavesNothing) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  std::string const start = Raster().substr(0, 2000);
  ASSERT_EQ(write(ends[1], start.data(), start.size()), 2000);
  test::RunningProgram program({SORRELIN_FILTER, "1", "user", "t", "1", ""}, Environment(),
                               ends[0]);
  while (std::filesystem::is_empty(Path("spool"))) usleep(10000);
  program.Signal(SIGTERM);
  EXPECT_EQ(program.Wait().signal, SIGTERM);
  EXPECT_TRUE(std::filesystem::is_empty(Path("spool")));
  close(ends[0]);
  close(ends[1]);
}

}  // namespace
