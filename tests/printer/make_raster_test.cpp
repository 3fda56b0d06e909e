// Documents made of print rasters.
#include "tests/support/raster_builder.h"
#include "tests/tools/make_fixture.h"

namespace {

using namespace std::string_literals;
using ::testing::HasSubstr;

class MakeRasterTest : public test::MakeTest {
 protected:
  static std::vector<BYTE> Bytes(std::string const& text) { return {text.begin(), text.end()}; }

  void Write(std::string const& name, std::string const& text) const {
    test::WriteAll(Path(name), Bytes(text));
  }

  static std::string BilevelPage() {
    test::RasterHeaderForm form;
    form.width = form.height = 64;
    form.bits_per_colour = form.bits_per_pixel = 1;
    form.line_bytes = 8;
    form.colour_space = 3;
    std::string page = test::RasterHeaderBytes(form);
    for (int row = 0; row < 32; ++row) page += "\1\7"s + (row % 2 == 0 ? '\xFF' : '\0');
    return page;
  }
};

TEST_F(MakeRasterTest, PagesOfAStreamBecomePagesOfTheirSize) {
  std::string const stream =
      "RaS2" + test::PackedGreyPage(72, 'a') + test::PackedGreyPage(144, 'b');
  auto const result = Make({Out(), "-", "--quiet"}, Bytes(stream));
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(PageCount(), 2);
  EXPECT_TRUE(DocumentHas("[0 0 72 72]"));
  EXPECT_TRUE(DocumentHas("[0 0 144 144]"));
}

TEST_F(MakeRasterTest, AllEndingsAreTakenFromADirectory) {
  std::filesystem::create_directory(Path("d"));
  for (std::string const name : {"d/a.pwg", "d/b.ras", "d/c.urf"}) {
    Write(name, "RaS2" + test::PackedGreyPage(72, 'a'));
  }
  MakeFrom("d");
  EXPECT_EQ(PageCount(), 3);
}

TEST_F(MakeRasterTest, BilevelPagesAreGroup4AndShowInkAsBlack) {
  Write("a.ras", "RaS2" + BilevelPage());
  MakeFrom("a.ras", {"--compression", "g4"});
  EXPECT_TRUE(DocumentHas("CCITTFaxDecode"));
  auto const page = Render(64, 64);
  l_uint32 black = 1, white = 0;
  pixGetPixel(page.get(), 5, 0, &black);
  pixGetPixel(page.get(), 5, 2, &white);
  EXPECT_EQ(black >> 8, 0u);
  EXPECT_EQ(white >> 8, 0xFFFFFFu);
}

TEST_F(MakeRasterTest, MarginsOfAJobAreKept) {
  test::RasterHeaderForm form;
  form.page[0] = form.page[1] = 100;
  form.corner[0] = form.corner[1] = 14;
  Write("a.ras", "RaS2" + test::PackedGreyPage(72, 'a', form));
  MakeFrom("a.ras");
  EXPECT_TRUE(DocumentHas("[0 0 100 100]"));
}

TEST_F(MakeRasterTest, StreamThatIsCutIsNamedAndPagesBeforeStay) {
  std::string const page = test::PackedGreyPage(72, 'a');
  Write("a.ras", "RaS2" + page + page.substr(0, page.size() - 10));
  auto const result = Make({Out(), Path("a.ras")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("in row 69 of 72"));
  EXPECT_EQ(PageCount(), 1);
}

TEST_F(MakeRasterTest, DamagedPageIsTakenOnRequest) {
  std::string const page = test::PackedGreyPage(72, 'a');
  Write("a.ras", "RaS2" + page.substr(0, page.size() - 10));
  auto const result = Make({Out(), Path("a.ras"), "--keep-damaged"});
  EXPECT_EQ(PageCount(), 1) << result.err;
}

TEST_F(MakeRasterTest, StreamWithoutPagesIsNamed) {
  Write("a.ras", "RaS2........");
  EXPECT_THAT(Make({Out(), Path("a.ras")}).err, HasSubstr("ends within the header"));
}

}  // namespace
