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
  for (int const width : {1, 7, 8, 33, 64}) {
    PixPtr const pix = Noise(width, 10, way.depth, way.palette);
    WritePix("in.png", pix);
    MakeFrom("in.png", {"--force", "--compression", way.compression});
    ExtractAll({"--output", Path("p%d.png"), "--force"});
    EXPECT_TRUE(Shows("p1.png", pix)) << width;
    EXPECT_EQ(pixGetXRes(ReadPix("p1.png").get()), DotsOfWholePoints(width));
    EXPECT_EQ(pixGetYRes(ReadPix("p1.png").get()), 144);
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

  // Pages of grey, the second with a soft mask.
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
      pdf.Stream(6 + i, image + (i == 1 ? " /SMask 6 0 R" : ""), "\n[ d");
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
                            ": page 2: its picture has a soft mask, which is not read (pdftoppm "
                            "-png draws such pages)\n");
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

TEST_F(Extract, EncryptedDocumentIsNamed) {
  MakeThree();
  // qpdf warns of the key that stands twice in documents of the library.
  RunProgram({"qpdf", "--warning-exit-0", "--encrypt", "", "", "128", "--use-aes=y", "--", Out(),
              Path("e.pdf")});
  RunProgram(
      {"qpdf", "--warning-exit-0", "--object-streams=generate", Path("e.pdf"), Path("es.pdf")});
  for (char const* const name : {"e.pdf", "es.pdf"}) {
    ProgramResult const result = Run({"extract", Path(name), "--output", Path("p%d.png")});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, HasSubstr(name)) << result.err;
  }
  EXPECT_THAT(Names(), ElementsAre("1.png", "2.png", "3.png", "e.pdf", "es.pdf", "out.pdf"));
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

TEST_F(Extract, DocumentThatEndsItsReaderIsNamed) {
  WriteDeadly("in.pdf");
  ProgramResult const result = Run({"extract", Path("in.pdf"), "--output", Path("p%d.png")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.err,
            "sorrelin: " + Path("in.pdf") +
                ": is damaged in a way that ends its reader (qpdf in.pdf out.pdf may mend it)\n");
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
  std::string const go = "cd '" + directory_.path().string() + "' && '" SORRELIN_TOOL "' extract ";
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

}  // namespace
}  // namespace test
