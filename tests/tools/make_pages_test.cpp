// Sizes of pages and places of pictures, orientations, and the report.
#include <png.h>

#include <tiffio.h>

#include "tests/tools/make_fixture.h"

namespace test {
namespace {

using ::testing::HasSubstr;

constexpr int kWidth = 72;
constexpr int kHeight = 36;

class MakePages : public MakeTest {
 protected:
  // A colour picture of 72 by 36 pixels; 0: without a resolution.
  void WriteColour(int per_metre, ColourAt const& colour = Motley) {
    PngForm form;
    form.type = PNG_COLOR_TYPE_RGB;
    form.x_per_metre = form.y_per_metre = per_metre;
    WritePng(Path("a.png"), form,
             [&](int x, int y, int s) { return colour(x, y) >> (16 - 8 * s) & 0xFF; });
  }
  void ExpectUsage(std::vector<std::string> const& options, std::string const& reason) {
    std::vector<std::string> arguments = {Out(), Path("a.png")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    ProgramResult const result = Make(arguments);
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_THAT(result.err, HasSubstr(reason));
    EXPECT_FALSE(std::filesystem::exists(Out()));
  }
};

TEST_F(MakePages, DefaultDpiIsForPicturesWithoutTheirOwn) {
  WriteColour(0);
  MakeFrom("a.png", {"--default-dpi", "144"});
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 36 18]"));
  MakeFrom("a.png", {"--default-dpi", "144x36", "--force"});
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 36 72]"));
  WriteColour(2835);
  MakeFrom("a.png", {"--default-dpi", "144", "--force"});
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 72 36]"));
}

// Pixels are points here, so that the page can be compared pixel by pixel.
TEST_F(MakePages, ShrunkPictureStandsInTheMiddleOfThePage) {
  WriteColour(2835);
  MakeFrom("a.png", {"--page", "100x60pt", "--fit", "shrink"});
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 100 60]"));
  ExpectPage(100, 60, [](int x, int y) {
    bool const inside = x >= 14 && x < 14 + kWidth && y >= 12 && y < 12 + kHeight;
    return inside ? Motley(x - 14, y - 12) : 0xFFFFFFu;
  });
}

// Of one colour, since viewers smooth what they enlarge.
TEST_F(MakePages, PictureWithinThePageIsAsLargeAsGoes) {
  WriteColour(0, [](int, int) { return 0x204060u; });
  MakeFrom("a.png", {"--page", "144x100pt"});
  EXPECT_TRUE(DocumentHas("144.0000 0.0000 0.0000  72.0000 0.0000 14.0000 cm"));
  ExpectPage(144, 100, [](int, int y) { return y >= 14 && y < 86 ? 0x204060u : 0xFFFFFFu; });
}

TEST_F(MakePages, FillingPictureIsCutOffByThePage) {
  WriteColour(0);
  MakeFrom("a.png", {"--page", "36x36pt", "--fit", "fill"});
  EXPECT_TRUE(DocumentHas("72.0000 0.0000 0.0000  36.0000 -18.0000 0.0000 cm"));
  ExpectPage(36, 36, [](int x, int y) { return Motley(x + 18, y); });
}

TEST_F(MakePages, StretchedPictureTakesThePagesShape) {
  WriteColour(0, [](int, int) { return 0x204060u; });
  MakeFrom("a.png", {"--page", "72x72pt", "--fit", "stretch"});
  EXPECT_TRUE(DocumentHas("72.0000 0.0000 0.0000  72.0000 0.0000 0.0000 cm"));
  ExpectPage(72, 72, [](int, int) { return 0x204060u; });
}

TEST_F(MakePages, NamedPageLiesAsThePictureDoes) {
  WriteColour(2835);
  MakeFrom("a.png", {"--page", "a4"});
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 842 595]"));
  MakeFrom("a.png", {"--page", "letter", "--force"});
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 792 612]"));
}

TEST_F(MakePages, CodedPicturesAreKeptOnAPageOfAnySize) {
  std::vector<BYTE> const jpeg = MakeJpeg({}, [](int x, int, int) { return unsigned(x); });
  WriteAll(Path("a.jpg"), jpeg);
  MakeFrom("a.jpg", {"--page", "a5"});
  EXPECT_TRUE(HoldsStream(jpeg));
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 595 420]"));
}

// A picture of one pixel would be too small for a page of its own.
TEST_F(MakePages, TinyPictureHasItsPlaceOnAGivenPage) {
  PngForm form;
  form.width = form.height = 1;
  form.x_per_metre = form.y_per_metre = 11811;  // 300 dots per inch
  WritePng(Path("a.png"), form, [](int, int, int) { return 0u; });
  MakeFrom("a.png", {"--page", "10x10pt", "--fit", "shrink"});
  EXPECT_TRUE(DocumentHas("0.2400 0.0000 0.0000  0.2400 4.8800 4.8800 cm"));
}

TEST_F(MakePages, DocumentWithGivenPagesIsSound) {
  WriteColour(0);
  MakeFrom("a.png", {"--page", "a4", "--fit", "fill"});
  EXPECT_EQ(RunProgram({"qpdf", "--check", Out()}).exit_code, 0);
}

TEST_F(MakePages, WrongSizesAndFitsAreUsageErrors) {
  WriteColour(0);
  ExpectUsage({"--page", "210x297"}, "--page: takes a3, a4");
  ExpectUsage({"--page", "a4", "--fit", "big"}, "--fit: takes within");
  ExpectUsage({"--fit", "fill"}, "--page");
  ExpectUsage({"--default-dpi", "0"}, "--default-dpi: takes a number");
}

// Noise at a low quality: coding it a second time would change it by far more than decoding does.
TEST_F(MakePages, JpegOfWholeBlocksIsTurnedWithoutLoss) {
  JpegForm form;
  form.width = 64;
  form.height = 48;
  form.quality = 20;
  auto const noise = [](int x, int y, int s) {
    return static_cast<unsigned>((x / 3 * 97 + y / 2 * 61 + s * 40) * (x + 3 * y)) & 0xFF;
  };
  WriteAll(Path("lying.jpg"), MakeJpeg(form, noise));
  MakeFrom("lying.jpg");
  PixPtr const lying = Render(64, 48);
  form.exif = MakeExif(6);
  WriteAll(Path("a.jpg"), MakeJpeg(form, noise));
  MakeFrom("a.jpg", {"--force"});
  EXPECT_TRUE(DocumentHas("/MediaBox [0 0 48 64]"));
  ExpectPage(
      48, 64,
      [&](int x, int y) {
        l_uint32 colour = 0;
        pixGetPixel(lying.get(), y, 47 - x, &colour);
        return static_cast<DWORD>(colour >> 8);
      },
      4);
}

TEST_F(MakePages, ReportTellsWhatCameOut) {
  WriteColour(0);
  ProgramResult const result = Make({Out(), Path("a.png"), "--json"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_THAT(result.out,
              ::testing::StartsWith("{\n  \"document\": \"" + Out() +
                                    "\",\n  \"written\": true,\n  \"pages\": 1,\n  \"bytes\": " +
                                    std::to_string(Document().size()) +
                                    ",\n  \"problem\": [],\n  \"page\": [\n    {\n"));
  EXPECT_THAT(result.out, HasSubstr("\"file\": \"" + Path("a.png") + "\",\n      \"page\": 1,"));
  EXPECT_THAT(result.out, HasSubstr("\"dpi_from\": \""));
  EXPECT_THAT(result.out, ::testing::EndsWith("\n  ],\n  \"ignored\": []\n}\n"));
}

TEST_F(MakePages, ChangesAreSaidOnceAtTheEndUnlessTheRunIsQuiet) {
  PngForm form;
  WritePng(Path("b.png"), form, [](int x, int, int) { return static_cast<unsigned>(x); });
  ProgramResult const result = Make({Out(), Path("b.png"), Path("b.png"), "--default-dpi", "100"});
  EXPECT_EQ(result.err, "sorrelin: resolution assumed: pages 1, 2\n");
  ProgramResult const quiet = Make({Out(), Path("b.png"), "--force", "--quiet"});
  EXPECT_EQ(quiet.err, "");
  ProgramResult const given = Make({Out(), Path("b.png"), "--force", "--dpi", "72"});
  EXPECT_EQ(given.err, "");
}

TEST_F(MakePages, DensityOf1x1IsTakenAsNoneAndThatIsSaid) {
  for (int const unit : {1, 2}) {
    JpegForm form;
    form.unit = unit;
    form.x_density = form.y_density = 1;
    WriteAll(Path("b.jpg"), MakeJpeg(form, [](int x, int, int) { return 3u * unsigned(x); }));
    ProgramResult const result = Make({Out(), Path("b.jpg"), "--force"});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.err,
              "sorrelin: resolution of 1 x 1 taken as none: page 1\n"
              "sorrelin: resolution assumed: page 1\n");
    EXPECT_TRUE(DocumentHas("/MediaBox [0 0 54 27]"));
  }
}

TEST_F(MakePages, ReducedCopiesOfTiffPagesAreNoPages) {
  TIFF* tiff = TIFFOpen(Path("r.tif").c_str(), "w");
  for (uint32_t const kind : {0u, 1u, 2u}) {
    TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, kind);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 8);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 8);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 8);
    std::vector<BYTE> rows(64, BYTE(kind));
    TIFFWriteEncodedStrip(tiff, 0, rows.data(), 64);
    TIFFWriteDirectory(tiff);
  }
  TIFFClose(tiff);
  MakeFrom("r.tif", {"--dpi", "72"});
  EXPECT_EQ(PageCount(), 2);
}

TEST_F(MakePages, VerboseRunPrintsALineForEachPage) {
  JpegForm form;
  form.x_density = form.y_density = 300;
  std::vector<BYTE> const file = MakeJpeg(form, [](int x, int, int) { return 3u * unsigned(x); });
  WriteAll(Path("b.jpg"), file);
  ProgramResult const result = Make({Out(), Path("b.jpg"), "--verbose"});
  EXPECT_EQ(result.err, "sorrelin: " + Path("b.jpg") + ": page 1: jpeg, passed, " +
                            std::to_string(file.size()) +
                            " bytes, 300 x 300 dots per inch (file)\n");
}

TEST_F(MakePages, VerboseRunNamesStandardInput) {
  std::string const pgm = "P5 9 9 255\n" + std::string(81, 'x');
  ProgramResult const result = Make({Out(), "-", "--verbose"}, {pgm.begin(), pgm.end()});
  EXPECT_THAT(result.err,
              ::testing::StartsWith("sorrelin: standard input: page 1: flate, coded, "));
}

TEST_F(MakePages, ReportNamesWhatFailed) {
  TiffPage page;
  page.bits = 12;  // not read
  page.compression = 1;
  WriteTiff(Path("b.tif"), {page, page}, [](int, int, int, int) { return 0u; });
  ProgramResult const result = Make({Out(), Path("a.png"), Path("b.tif"), "--json"});
  EXPECT_EQ(result.exit_code, 1);
  auto const problem = [&](std::string const& name, std::string const& number) {
    return "    {\n      \"file\": \"" + Path(name) + "\",\n      \"page\": " + number +
           ",\n      \"problem\": \"";
  };
  EXPECT_THAT(result.out, HasSubstr("\"written\": false,\n  \"pages\": 0,\n  \"bytes\": 0,\n"));
  EXPECT_THAT(result.out, HasSubstr("\"problem\": [\n" + problem("a.png", "null") + "No such"));
  EXPECT_THAT(result.out, HasSubstr(",\n" + problem("b.tif", "2") + "cannot be decoded"));
  EXPECT_THAT(result.out, HasSubstr(",\n" + problem("out.pdf", "null") + "is not written"));
  EXPECT_THAT(result.out, HasSubstr("\"\n    }\n  ],\n  \"page\": []"));
}

TEST_F(MakePages, ReportAndDocumentCannotShareStandardOutput) {
  WriteColour(0);
  ProgramResult const result = Make({"-", Path("a.png"), "--json"});
  EXPECT_EQ(result.exit_code, 2);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr("--json: standard output takes the document"));
}

}  // namespace
}  // namespace test
