// sorrelin extract: what make put in comes out.
#include "tests/tools/read_fixture.h"

namespace test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

// Dots per inch of a picture at 144 whose page is rounded to whole points (1/72 inch).
int DotsOfWholePoints(int pixels) {
  int const points = (pixels + 1) / 2;
  return (pixels * 72 * 2 + points) / (points * 2);
}

struct Way {
  int depth;
  bool palette;
  char const* compression;
};

class ExtractRoundTrip : public ReadTest, public ::testing::WithParamInterface<Way> {};

TEST_P(ExtractRoundTrip, PixelsAndResolutionAreEqual) {
  Way const way = GetParam();
  std::vector<std::string> make = {"make", Out(), "--compression", way.compression};
  std::vector<int> const widths = {1, 7, 8, 33, 64};
  std::vector<PixPtr> pictures;
  for (int const width : widths) {
    pictures.push_back(Noise(width, 10, way.depth, way.palette));
    make.push_back(Path("in" + std::to_string(width) + ".png"));
    WritePix("in" + std::to_string(width) + ".png", pictures.back());
  }
  EXPECT_EQ(Run(make).exit_code, 0);
  ExtractAll({"--output", Path("p%d.png")});
  for (size_t i = 0; i < widths.size(); ++i) {
    std::string const name = "p" + std::to_string(i + 1) + ".png";
    EXPECT_TRUE(Shows(name, pictures[i])) << widths[i];
    EXPECT_EQ(pixGetXRes(ReadPix(name).get()), DotsOfWholePoints(widths[i]));
    EXPECT_EQ(pixGetYRes(ReadPix(name).get()), 144);
  }
}

INSTANTIATE_TEST_SUITE_P(All, ExtractRoundTrip,
                         ::testing::Values(Way{1, false, "g4"}, Way{1, false, "flate"},
                                           Way{1, false, "none"}, Way{8, false, "flate"},
                                           Way{8, false, "runlength"}, Way{8, false, "none"},
                                           Way{8, true, "flate"}, Way{8, true, "runlength"},
                                           Way{8, true, "none"}, Way{32, false, "flate"},
                                           Way{32, false, "none"}));

class Extract : public ReadTest {
 protected:
  // Pages of 1, 8 (palette) and 24 bits.
  void MakeThree() const {
    WritePix("1.png", Noise(40, 10, 1));
    WritePix("2.png", Noise(41, 10, 8, true));
    WritePix("3.png", Noise(42, 10, 32));
    EXPECT_EQ(Make({Out(), Path("1.png"), Path("2.png"), Path("3.png")}).exit_code, 0);
  }

  // Pages of grey, the second with data that end early.
  void WriteMixed(std::string const& name) const {
    std::string const image =
        "/Subtype/Image /Width 2 /Height 2 /BitsPerComponent 8 /ColorSpace /DeviceGray";
    PdfBuilder pdf;
    pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
    pdf.Object(2, "<</Type/Pages /Kids [3 0 R 4 0 R 5 0 R ] /Count 3 >>");
    for (DWORD i = 0; i < 3; ++i) {
      pdf.Object(3 + i,
                 "<</Type/Page /Parent 2 0 R /MediaBox [0 0 2 2] /Resources <</XObject "
                 "<</A " +
                     std::to_string(6 + i) + " 0 R >> >> >>");
    }
    for (DWORD i = 0; i < 3; ++i) {
      pdf.Stream(6 + i, image, i == 1 ? "\n[" : "\n[ d");
    }
    WriteDocument(name, pdf);
  }
};

TEST_F(Extract, JpegPagesComeBackWithinItsLoss) {
  PixPtr const pix = MakeColourPix(32, 32, [](int x, int y) { return DWORD(x * 4 << 16 | y * 4); });
  WritePix("in.png", pix);
  MakeFrom("in.png", {"--compression", "jpeg", "--quality", "95"});
  ExtractAll({"--output", Path("p%d.png")});
  PixPtr const read = ReadPix("p1.png");
  ASSERT_NE(read, nullptr);
  l_float32 difference = 255;
  pixCompareRGB(read.get(), pix.get(), L_COMPARE_ABS_DIFF, 0, nullptr, &difference, nullptr,
                nullptr);
  EXPECT_LT(difference, 4);
}

TEST_F(Extract, TiffWithoutANumberTakesAllPages) {
  MakeThree();
  ExtractAll({"--format", "tiff", "--output", Path("all.tif")});
  PIXA* pages = pixaReadMultipageTiff(Path("all.tif").c_str());
  ASSERT_EQ(pixaGetCount(pages), 3);
  for (int i = 0; i < 3; ++i) {
    PixPtr const page(pixaGetPix(pages, i, L_CLONE));
    l_int32 same = 0;
    pixEqual(page.get(), ReadPix(std::to_string(i + 1) + ".png").get(), &same);
    EXPECT_EQ(same, 1) << i;
    EXPECT_EQ(pixGetYRes(page.get()), 144) << i;
  }
  PixPtr const first(pixaGetPix(pages, 0, L_CLONE));
  EXPECT_EQ(pixGetDepth(first.get()), 1);
  EXPECT_EQ(pixGetInputFormat(first.get()), IFF_TIFF_G4);
  PixPtr const second(pixaGetPix(pages, 1, L_CLONE));
  EXPECT_NE(pixGetColormap(second.get()), nullptr);
  pixaDestroy(&pages);
}

TEST_F(Extract, EveryFormatShowsThePixels) {
  MakeThree();
  for (char const* const extension : {".png", ".tif", ".bmp", ".pnm"}) {
    ExtractAll({"--output", Path(std::string("p%d") + extension)});
    for (char const* const page : {"1", "2", "3"}) {
      EXPECT_TRUE(Shows(std::string("p") + page + extension, ReadPix(page + std::string(".png"))))
          << page << extension;
    }
  }
  EXPECT_EQ(pixGetDepth(ReadPix("p1.png").get()), 1);
  EXPECT_NE(pixGetColormap(ReadPix("p2.png").get()), nullptr);
  EXPECT_EQ(pixGetDepth(ReadPix("p1.pnm").get()), 1);
}

TEST_F(Extract, JpegFilesAreGreyOrColour) {
  MakeThree();
  ExtractAll({"--output", Path("p%d"), "--format", "jpeg"});
  EXPECT_EQ(pixGetDepth(ReadPix("p1").get()), 8);
  EXPECT_EQ(pixGetDepth(ReadPix("p2").get()), 32);
  EXPECT_EQ(pixGetDepth(ReadPix("p3").get()), 32);
  EXPECT_EQ(pixGetXRes(ReadPix("p1").get()), 144);
}

TEST_F(Extract, JpegPagesAreWrittenAsTheFilesThatTheyAre) {
  JpegForm form;
  WriteAll(Path("1.jpg"), MakeJpeg(form, [](int x, int y, int s) { return unsigned(x + y * s); }));
  form.components = 1;
  form.progressive = true;
  WriteAll(Path("2.jpg"), MakeJpeg(form, [](int x, int y, int) { return unsigned(x + y); }));
  WritePix("3.png", Noise(40, 10, 1));
  EXPECT_EQ(Make({Out(), Path("1.jpg"), Path("3.png"), Path("2.jpg")}).exit_code, 0);
  ExtractAll({"--output", Path("p%d.jpg")});
  EXPECT_EQ(ReadAll(Path("p1.jpg")), ReadAll(Path("1.jpg")));
  EXPECT_EQ(ReadAll(Path("p3.jpg")), ReadAll(Path("2.jpg")));
  EXPECT_EQ(pixGetDepth(ReadPix("p2.jpg").get()), 8);
}

// What the page shows is another picture than the file.
TEST_F(Extract, TurnedAndInvertedJpegPicturesAreCodedAnew) {
  std::vector<BYTE> const file = MakeJpeg({.width = 8, .height = 8, .components = 1},
                                          [](int, int y, int) { return y < 4 ? 40u : 200u; });
  std::string const data(file.begin(), file.end());
  std::string const image =
      "/Subtype/Image /Width 8 /Height 8 /BitsPerComponent 8 /ColorSpace /DeviceGray "
      "/Filter /DCTDecode";
  WriteDocument(
      "1.pdf", OnePage{.image = image, .data = data, .content = "8 0 0 -8 0 8 cm /Im0 Do"}.Build());
  WriteDocument("2.pdf", OnePage{.image = image + " /Decode [1 0]", .data = data}.Build());
  struct Shown {
    char const* document;
    l_uint32 top;
  };
  for (auto const& [document, top] : {Shown{"1.pdf", 200}, Shown{"2.pdf", 215}}) {
    EXPECT_EQ(Run({"extract", Path(document), "--output", Path("p.jpg"), "--force"}).exit_code, 0);
    l_uint32 pixel = 0;
    pixGetPixel(ReadPix("p.jpg").get(), 1, 1, &pixel);
    EXPECT_NEAR(pixel, top, 3) << document;
  }
}

TEST_F(Extract, OnlyThePagesThatAreAskedFor) {
  MakeThree();
  ExtractAll({"--pages", "3,1", "--output", Path("p%02d.png")});
  EXPECT_THAT(Names(), ElementsAre("1.png", "2.png", "3.png", "out.pdf", "p01.png", "p03.png"));
}

TEST_F(Extract, PageBeyondTheLastIsNamedAndTheOthersAreWritten) {
  MakeThree();
  ProgramResult const result =
      Run({"extract", Out(), "--pages", "3-9", "--output", Path("p%d.png")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.err,
            "sorrelin: " + Out() + ": has no more than 3 pages to read (choose among them)\n");
  EXPECT_TRUE(Shows("p3.png", ReadPix("3.png")));
}

TEST_F(Extract, NothingIsOverwrittenWithoutForce) {
  MakeThree();
  WriteAll(Path("p2.png"), {'x'});
  ProgramResult const result = Run({"extract", Out(), "--output", Path("p%d.png")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.err, "sorrelin: " + Path("p2.png") + ": exists already (--force replaces it)\n");
  EXPECT_EQ(ReadAll(Path("p2.png")), std::vector<BYTE>{'x'});
  EXPECT_TRUE(Shows("p3.png", ReadPix("3.png")));
  ExtractAll({"--output", Path("p%d.png"), "--force"});
  EXPECT_TRUE(Shows("p2.png", ReadPix("2.png")));
}

TEST_F(Extract, DocumentItselfIsNeverReplaced) {
  MakeThree();
  auto const before = Document();
  ProgramResult const result =
      Run({"extract", Out(), "--output", Out(), "--format", "tiff", "--force"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("is the document itself"));
  EXPECT_EQ(Document(), before);
}

TEST_F(Extract, PageThatCannotBeReadIsNamedAndTheOthersAreWritten) {
  WriteMixed("in.pdf");
  ProgramResult const result =
      Run({"extract", Path("in.pdf"), "--output", Path("p%d.png"), "--quiet"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.err, "sorrelin: " + Path("in.pdf") +
                            ": page 2: its data end before its picture does (pdftoppm -png draws "
                            "such pages)\n");
  EXPECT_THAT(Names(), ElementsAre("in.pdf", "p1.png", "p3.png"));
  l_uint32 pixel = 0;
  pixGetPixel(ReadPix("p3.png").get(), 0, 0, &pixel);
  EXPECT_EQ(pixel, 10u);  // LF is a sample
}

TEST_F(Extract, TiffWithoutAnyPageIsNotWritten) {
  WriteMixed("in.pdf");
  ProgramResult const result =
      Run({"extract", Path("in.pdf"), "--pages", "2", "--output", Path("a.tif")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("a.tif: is not written: it would have no pages"));
  EXPECT_THAT(Names(), ElementsAre("in.pdf"));
}

TEST_F(Extract, EncryptedDocumentsComeBack) {
  MakeThree();
  // qpdf warns of a key that is there twice in documents of the library.
  RunProgram({"qpdf", "--warning-exit-0", "--encrypt", "", "", "128", "--use-aes=y", "--", Out(),
              Path("e.pdf")});
  RunProgram(
      {"qpdf", "--warning-exit-0", "--object-streams=generate", Path("e.pdf"), Path("es.pdf")});
  RunProgram({"qpdf", "--warning-exit-0", "--encrypt", "secret", "owner", "256", "--", Out(),
              Path("p.pdf")});
  WriteAll(Path("password"), {'s', 'e', 'c', 'r', 'e', 't', '\r', '\n'});
  for (std::string const name : {"e", "es", "p"}) {
    ProgramResult const result = Run({"extract", Path(name + ".pdf"), "--output",
                                      Path(name + "%d.png"), "--password-file", Path("password")});
    EXPECT_EQ(result.exit_code, name == "p" ? 0 : 1) << result.err;
    EXPECT_EQ(std::filesystem::exists(Path(name + "1.png")), name == "p");
  }
  for (std::string const name : {"e", "es"}) {
    EXPECT_EQ(Run({"extract", Path(name + ".pdf"), "--output", Path(name + "%d.png")}).exit_code,
              0);
  }
  for (std::string const name : {"e", "es", "p"}) {
    EXPECT_TRUE(Shows(name + "3.png", ReadPix("3.png")));
  }
}

TEST_F(Extract, ObjectStreamsAndLinearisedDocumentsComeBack) {
  MakeThree();
  RunProgram({"qpdf", "--warning-exit-0", "--object-streams=generate", Out(), Path("o.pdf")});
  RunProgram({"qpdf", "--warning-exit-0", "--linearize", Out(), Path("l.pdf")});
  for (std::string const name : {"o", "l"}) {
    ProgramResult const result =
        Run({"extract", Path(name + ".pdf"), "--output", Path(name + "%d.png")});
    EXPECT_EQ(result.exit_code, 0) << result.err;
    for (std::string const page : {"1", "2", "3"}) {
      EXPECT_TRUE(Shows(name + page + ".png", ReadPix(page + ".png"))) << name << page;
    }
  }
}

TEST_F(Extract, DocumentBeyondRepairIsNamed) {
  WriteDeadly("in.pdf");
  ProgramResult const result = Run({"extract", Path("in.pdf"), "--output", Path("p%d.png")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.err, "sorrelin: " + Path("in.pdf") +
                            ": cannot be opened: it is damaged beyond repair (qpdf in.pdf out.pdf "
                            "may mend it)\n");
}

TEST_F(Extract, OneNameForSeveralPagesIsAUsageError) {
  MakeThree();
  ProgramResult const result = Run({"extract", Out(), "--output", Path("p.png")});
  EXPECT_EQ(result.exit_code, 2);
  EXPECT_THAT(result.err, HasSubstr("%d"));
  ExtractAll({"--output", Path("p.png"), "--pages", "2"});
  EXPECT_TRUE(Shows("p.png", ReadPix("2.png")));
}

TEST_F(Extract, WrongOptionsAreUsageErrors) {
  for (std::vector<std::string> const& options :
       std::vector<std::vector<std::string>>{{"--pages", "0"},
                                             {"--pages", "3-1"},
                                             {"--format", "gif"},
                                             {"--output", "a%x"},
                                             {"--output", ""},
                                             {"--output", "-"},
                                             {"--output", "p%d.gif"},
                                             {"--all", "--output", "p%d.png"},
                                             {"--password-file", "/nowhere"},
                                             {"more.pdf"},
                                             {"--nonsense"}}) {
    std::vector<std::string> arguments = {"extract", Out()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    ProgramResult const result = Run(arguments);
    EXPECT_EQ(result.exit_code, 2) << options[0];
    EXPECT_THAT(result.err, HasSubstr("sorrelin: "));
  }
}

TEST_F(Extract, UsualNamesAreTheDocumentsInTheCurrentDirectory) {
  MakeThree();
  std::string const go = "cd '" + directory_.path().string() + "' && '" +
                         ProgramUnderTest(SORRELIN_TOOL) + "' extract ";
  EXPECT_EQ(RunProgram({"sh", "-c", go + "out.pdf --pages 1"}).exit_code, 0);
  EXPECT_EQ(RunProgram({"sh", "-c", go + "out.pdf --format tiff"}).exit_code, 0);
  EXPECT_THAT(Names(), ElementsAre("1.png", "2.png", "3.png", "out-1.png", "out.pdf", "out.tif"));
}

// Rows of 10 and 200, top first, on a page whose content draws a form besides.
PdfBuilder TwoRowsDrawnBy(std::string const& content) {
  PdfBuilder pdf;
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Type/Pages /Kids [3 0 R ] /Count 1 >>");
  pdf.Object(3,
             "<</Type/Page /Parent 2 0 R /MediaBox [0 0 612 792] /Contents 4 0 R /Resources "
             "<</XObject <</Fm0 5 0 R /Im0 6 0 R >> >> >>");
  pdf.Stream(4, "", content);
  pdf.Stream(5, "/Subtype/Form /BBox [0 0 9 9]", "0 0 9 9 re f");
  pdf.Stream(6,
             "/Subtype/Image /Width 1 /Height 2 /BitsPerComponent 8 /ColorSpace /DeviceGray "
             "/Filter /FlateDecode",
             Deflate("\x0A\xC8"));
  return pdf;
}

TEST_F(Extract, MatrixOfThePictureItselfTurnsItOver) {
  struct {
    char const* content;
    DWORD top;
  } const pages[] = {
      {"q /Fm0 Do Q q 612 0 0 792 0 0 cm /Im0 Do Q", 10},
      {"q /Fm0 Do Q q 612 0 0 -792 0 792 cm /Im0 Do Q", 200},
      {"q 1 0 0 -1 0 792 cm /Fm0 Do Q q 612 0 0 792 0 0 cm /Im0 Do Q", 10},
      {"q 1 0 0 -1 0 792 cm /Fm0 Do Q q 612 0 0 -792 0 792 cm /Im0 Do Q", 200},
      {"1 0 0 -1 0 792 cm /Fm0 Do 612 0 0 -792 0 792 cm /Im0 Do", 10},
  };
  for (auto const& page : pages) {
    WriteDocument("out.pdf", TwoRowsDrawnBy(page.content));
    ExtractAll({"--output", Path("p%d.png"), "--force"});
    PixPtr const read = ReadPix("p1.png");
    ASSERT_NE(read, nullptr) << page.content;
    l_uint32 top = 0;
    pixGetPixel(read.get(), 0, 0, &top);
    EXPECT_EQ(top, page.top) << page.content;
  }
}

// What documents store comes back as it is.
class ExtractKept : public Extract {
 protected:
  void Keep(std::string const& name, std::vector<std::string> options = {}) const {
    options.insert(options.begin(),
                   {"extract", Path(name), "--format", "keep", "--output", Path("k%d"), "--force"});
    ProgramResult const result = Run(options);
    EXPECT_EQ(result.exit_code, 0) << result.err;
  }
};

TEST_F(ExtractKept, Group4BecomesTiffWithTheSameData) {
  WritePix("1.png", Noise(40, 10, 1));
  MakeFrom("1.png", {"--compression", "g4"});
  Keep("out.pdf");
  EXPECT_TRUE(Shows("k1.tif", ReadPix("1.png")));
  PixPtr const read = ReadPix("k1.tif");
  EXPECT_EQ(pixGetInputFormat(read.get()), IFF_TIFF_G4);
  EXPECT_EQ(pixGetYRes(read.get()), 144);
  RunProgram({"sh", "-c", "pdfimages -ccitt '" + Out() + "' '" + Path("w") + "'"});
  auto const data = ReadAll(Path("w-000.ccitt"));
  auto const file = ReadAll(Path("k1.tif"));
  EXPECT_FALSE(data.empty());
  EXPECT_NE(std::search(file.begin(), file.end(), data.begin(), data.end()), file.end());
}

TEST_F(ExtractKept, TiffOfGroup4HasTheSameDataTooAndOneOfATurnedPageItsPixels) {
  WritePix("1.png", Noise(40, 10, 1));
  MakeFrom("1.png", {"--compression", "g4"});
  Keep("out.pdf");
  ExtractAll({"--output", Path("t%d.tif")});
  EXPECT_EQ(ReadAll(Path("t1.tif")), ReadAll(Path("k1.tif")));
  RunProgram({"qpdf", "--rotate=+90", Out(), Path("turned.pdf")});
  EXPECT_EQ(Run({"extract", Path("turned.pdf"), "--output", Path("r.tif")}).exit_code, 0);
  EXPECT_TRUE(Shows("r.tif", PixPtr(pixRotate90(ReadPix("1.png").get(), 1))));
  std::string const tags = RunProgram({"tiffinfo", Path("r.tif")}).out;
  EXPECT_THAT(tags, Not(HasSubstr("Orientation: row 0 rhs")));
}

// Readers of TIFF look for the mark before each row: 1011 white 4, 011 black 4 (ITU-T T.4).
TEST_F(ExtractKept, Group3BecomesTiffIfItsRowsHaveMarksAndPngElsewhere) {
  std::string const image =
      "/Subtype/Image /Width 8 /Height 2 /ColorSpace /DeviceGray /BitsPerComponent 1 "
      "/Filter /CCITTFaxDecode /DecodeParms <</Columns 8";
  WriteDocument("in.pdf", OnePage{.image = image + " /EndOfLine true>>",
                                  .data = std::string("\x00\x1B\x60\x01\xB6", 5)}
                              .Build());
  Keep("in.pdf");
  WriteDocument("in.pdf", OnePage{.image = image + ">>", .data = "\xB7\x6C"}.Build());
  Keep("in.pdf");
  PixPtr const marked = ReadPix("k1.tif");
  EXPECT_EQ(pixGetInputFormat(marked.get()), IFF_TIFF_G3);
  PixPtr const plain = ReadPix("k1.png");
  for (int x = 0; x < 16; ++x) {
    for (Pix* const pix : {marked.get(), plain.get()}) {
      l_uint32 black = 0;
      pixGetPixel(pix, x % 8, x / 8, &black);
      EXPECT_EQ(black, x % 8 < 4 ? 0u : 1u) << x;
    }
  }
}

// The filter's own word on the colours, of a file without one.
TEST_F(ExtractKept, ColourTransformOfTheFilterCounts) {
  JpegForm const form = {.width = 16, .height = 8, .rgb = true, .jfif = false};
  auto const jpeg = MakeJpeg(form, [](int, int, int s) { return 40u + 80u * unsigned(s); });
  std::string const image =
      "/Subtype/Image /Width 16 /Height 8 /ColorSpace /DeviceRGB /BitsPerComponent 8 "
      "/Filter /DCTDecode /DecodeParms <</ColorTransform ";
  // Y 40, Cb 120 and Cr 200 are 141, 0 and 26 (ITU-T T.871).
  struct {
    char const* transform;
    int red, green, blue;
  } constexpr kShown[] = {{"0", 40, 120, 200}, {"1", 141, 0, 26}};
  for (auto const& shown : kShown) {
    WriteDocument("in.pdf",
                  OnePage{.image = image + shown.transform + ">>", .data = ToText(jpeg)}.Build());
    EXPECT_EQ(Run({"extract", Path("in.pdf"), "--force", "--output", Path("x.png")}).exit_code, 0);
    l_int32 red = 0, green = 0, blue = 0;
    pixGetRGBPixel(ReadPix("x.png").get(), 8, 4, &red, &green, &blue);
    EXPECT_NEAR(red, shown.red, 6);
    EXPECT_NEAR(green, shown.green, 6);
    EXPECT_NEAR(blue, shown.blue, 6);
  }
}

TEST_F(ExtractKept, JpegIsTheFileThatItIs) {
  WriteAll(Path("1.jpg"), MakeJpeg({}, [](int x, int y, int s) { return unsigned(x + y * s); }));
  MakeFrom("1.jpg");
  Keep("out.pdf");
  EXPECT_EQ(ReadAll(Path("k1.jpg")), ReadAll(Path("1.jpg")));
}

// The rows of the document's stream are those of the file.
TEST_F(ExtractKept, PredictedFlateGoesIntoPngAsItIs) {
  WritePix("1.png", Noise(40, 10, 32));
  RunProgram({"img2pdf", Path("1.png"), "-o", Path("in.pdf")});
  Keep("in.pdf");
  EXPECT_TRUE(Shows("k1.png", ReadPix("1.png")));
  auto const file = ReadAll(Path("k1.png"));
  std::string const found =
      RunProgram({"sh", "-c",
                  "qpdf --show-object=$(pdfimages -list '" + Path("in.pdf") +
                      "' | awk 'NR==3{print $11}') --raw-stream-data '" + Path("in.pdf") + "'"})
          .out;
  ASSERT_FALSE(found.empty());
  EXPECT_NE(std::search(file.begin(), file.end(), found.begin(), found.end(),
                        [](BYTE a, char b) { return a == static_cast<BYTE>(b); }),
            file.end());
}

TEST_F(ExtractKept, ExtensionOfThePatternGivesWayToThatOfTheFile) {
  WritePix("1.png", Noise(40, 10, 1));
  MakeFrom("1.png", {"--compression", "g4"});
  EXPECT_EQ(Run({"extract", Out(), "--format", "keep", "--output", Path("k.png")}).exit_code, 0);
  EXPECT_THAT(Names(), ElementsAre("1.png", "k.tif", "out.pdf"));
}

TEST_F(ExtractKept, DamagedDataAreNotKept) {
  WritePix("1.png", Noise(400, 100, 1));
  MakeFrom("1.png", {"--compression", "g4"});
  auto document = Document();
  std::string const text(document.begin(), document.end());
  size_t const at = text.find("stream\n") + 500;
  for (size_t i = 0; i < 40; ++i) document[at + i] = 0;
  WriteAll(Path("in.pdf"), document);
  ProgramResult const result =
      Run({"extract", Path("in.pdf"), "--output", Path("k%d"), "--format", "keep"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("its data"));
  EXPECT_THAT(Names(), ElementsAre("1.png", "in.pdf", "out.pdf"));
}

TEST_F(ExtractKept, TurnedJpegLosesNothing) {
  JpegForm form = {.width = 16, .height = 8, .components = 1};
  auto const tone = [](int x, int, int) { return x < 8 ? 40u : 200u; };
  WriteAll(Path("1.jpg"), MakeJpeg(form, tone));
  form.height = 13;
  WriteAll(Path("2.jpg"), MakeJpeg(form, tone));
  for (std::string const name : {"1", "2"}) {
    RunProgram({"img2pdf", Path(name + ".jpg"), "-o", Path("a.pdf")});
    RunProgram({"qpdf", "--rotate=90", Path("a.pdf"), Path("in.pdf")});
    Keep("in.pdf");
    std::filesystem::rename(Path("k1.jpg"), Path("t" + name + ".jpg"));
  }
  // Whole blocks were turned: the left is the top now.
  PixPtr const turned = ReadPix("t1.jpg");
  EXPECT_EQ(pixGetWidth(turned.get()), 8);
  l_uint32 pixel = 0;
  pixGetPixel(turned.get(), 4, 2, &pixel);
  EXPECT_NEAR(pixel, 40, 2);
  // Others are marked: APP1 of EXIF, orientation 6.
  auto const marked = ReadAll(Path("t2.jpg"));
  std::string const text(marked.begin(), marked.end());
  EXPECT_NE(text.find(std::string("Exif\0\0MM", 8)), text.npos);
  EXPECT_NE(text.find(std::string("\x01\x12\0\3\0\0\0\1\0\6", 10)), text.npos);
  Keep("in.pdf", {"--as-stored"});
  EXPECT_EQ(ReadAll(Path("k1.jpg")), ReadAll(Path("2.jpg")));
}

TEST_F(Extract, AllPicturesOfPagesGetNumbers) {
  std::string const image =
      "/Subtype/Image /Width 2 /Height 2 /BitsPerComponent 8 /ColorSpace /DeviceGray";
  auto pdf = OnePage{.page = "/MediaBox [0 0 9 9] /Resources <</XObject <</A 4 0 R /B 7 0 R>> >>",
                     .image = image,
                     .data = "abcd",
                     .content = "/A Do q 1 0 0 1 5 5 cm /B Do Q BI /W 1 /H 1 /BPC 8 /CS /G ID x EI"}
                 .Build();
  pdf.Stream(7, image, "ef");
  WriteDocument("in.pdf", pdf);
  ProgramResult const several = Run({"extract", Path("in.pdf"), "--output", Path("p%d.png")});
  EXPECT_EQ(several.exit_code, 1);
  EXPECT_THAT(several.err, HasSubstr("page 1: is made of several pictures (--all writes each"));
  ProgramResult const all =
      Run({"extract", Path("in.pdf"), "--all", "--output", Path("p%d-%i.png")});
  EXPECT_EQ(all.exit_code, 1);
  EXPECT_THAT(all.err, HasSubstr("page 1: picture 2: its data end before its picture does"));
  EXPECT_THAT(Names(), ElementsAre("in.pdf", "p1-1.png", "p1-3.png"));
}

TEST_F(Extract, ReportListsTheFiles) {
  MakeThree();
  ProgramResult const result = Run({"extract", Out(), "--pages", "1-2", "--json", "--format",
                                    "keep", "--output", Path("k%d"), "--jobs", "2"});
  EXPECT_EQ(result.exit_code, 0);
  auto const size = [&](char const* name) {
    return std::to_string(std::filesystem::file_size(Path(name)));
  };
  EXPECT_EQ(result.out,
            "{\n  \"document\": \"" + Out() +
                "\",\n  \"written\": 2,\n  \"files\": [\n    {\n      \"file\": \"" +
                Path("k1.png") +
                "\",\n      \"page\": 1,\n      \"picture\": 1,\n      \"coding\": \"flate\",\n"
                "      \"width_pixels\": 40,\n      \"height_pixels\": 10,\n      \"bytes\": " +
                size("k1.png") + "\n    },\n    {\n      \"file\": \"" + Path("k2.png") +
                "\",\n      \"page\": 2,\n      \"picture\": 1,\n      \"coding\": \"flate\",\n"
                "      \"width_pixels\": 41,\n      \"height_pixels\": 10,\n      \"bytes\": " +
                size("k2.png") + "\n    }\n  ],\n  \"problems\": []\n}\n");
}

TEST_F(Extract, AnyNumberOfJobsWritesTheSameFiles) {
  MakeThree();
  for (std::string const jobs : {"1", "3"}) {
    ExtractAll({"--output", Path("j" + jobs + "-%d.png"), "--jobs", jobs});
  }
  for (std::string const page : {"1", "2", "3"}) {
    auto const file = ReadAll(Path("j1-" + page + ".png"));
    EXPECT_FALSE(file.empty());
    EXPECT_EQ(file, ReadAll(Path("j3-" + page + ".png")));
  }
}

}  // namespace
}  // namespace test
