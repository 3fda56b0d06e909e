// Documents of several pages, and pages that show their picture turned.
#include "tests/foreign/foreign_fixture.h"
#include "tests/support/page_document.h"
#include "tests/support/random_ids.h"

namespace test {
namespace {

using ::testing::HasSubstr;

constexpr char kThreeDocuments[] =
    "img2pdf g4.tif -o 1.pdf && img2pdf colour.jpg -o 2.pdf && tiff2pdf -n -o 3.pdf colour.tif";

class ForeignPages : public ForeignTest {
 protected:
  // A page of one picture that is upside down.
  void CreateUpsideDown(std::string const& picture) const {
    Shell("printf '%%%%MediaBox 0 0 203 57\\n%%%%Image Im0 " + picture +
          "\\nq 203 0 0 -57 0 57 cm /Im0 Do Q\\n' >page.txt && mutool create -o out.pdf page.txt");
  }

  void ExtractPnm() const {
    ProgramResult const result = Tool({"extract", Path("out.pdf"), "--output", Path("t%d.pnm")});
    EXPECT_EQ(result.exit_code, 0) << result.err;
  }

  // Each page of out.pdf is right by the library and by the program.
  void ExpectAllPages(size_t pages) const {
    auto const witness = Witness();
    ASSERT_EQ(witness.size(), pages);
    EXPECT_EQ(Tool({"count", Path("out.pdf")}).out, std::to_string(pages) + "\n");
    ExtractPnm();
    for (size_t i = 0; i < pages; ++i) {
      EXPECT_LE(Difference(Load("out.pdf", static_cast<DWORD>(i)).pixels, witness[i]), 2) << i;
      EXPECT_LE(Difference(Extracted("t" + std::to_string(i + 1) + ".pnm"), witness[i]), 2) << i;
    }
  }
};

TEST_F(ForeignPages, JoinedByPopplerKeepTheirOrder) {
  Shell(std::string(kThreeDocuments) +
        " && " UNTIL_IDENTIFIER_IS_PLAIN("pdfunite 1.pdf 2.pdf 1.pdf 3.pdf"));
  ExpectAllPages(4);
}

TEST_F(ForeignPages, JoinedByQpdfInObjectStreamsKeepTheirOrder) {
  Shell(std::string(kThreeDocuments) +
        " && qpdf --empty --object-streams=generate --pages 3.pdf 1.pdf 2.pdf -- out.pdf");
  ExpectAllPages(3);
}

TEST_F(ForeignPages, JoinedByMutoolKeepTheirOrder) {
  Shell(std::string(kThreeDocuments) + " && mutool merge -o out.pdf 2.pdf 3.pdf 1.pdf");
  ExpectAllPages(3);
}

// Some programs write the identifier as the bytes that it is. The search for /Root ends at a NUL.
TEST_F(ForeignPages, IdentifierWithANulByteHidesTheCatalog) {
  for (char const byte : {'x', '\0'}) {
    PdfBuilder pdf = OnePage{}.Build();
    pdf.Classic({.keys = std::string("/ID [(a") + byte + "b) (ab)] /Root 1 0 R"});
    WriteAll(Path("out.pdf"), pdf.Document());
    EXPECT_EQ(Load("out.pdf", 0).opened, byte != '\0');
    EXPECT_EQ(Tool({"count", Path("out.pdf")}).out, "1\n");
    EXPECT_EQ(Tool({"info", Path("out.pdf")}).exit_code, 0);
  }
}

TEST_F(ForeignPages, PictureOnItsHeadIsTurnedByBoth) {
  CreateUpsideDown("colour.png");
  Pixels const shown = UpsideDown(Witness().at(0));
  EXPECT_EQ(Difference(Load("out.pdf", 0).pixels, shown), 0);
  ExtractPnm();
  EXPECT_EQ(Difference(Extracted("t1.pnm"), shown), 0);
}

// The library turns neither JPEG nor Group 4 pictures.
TEST_F(ForeignPages, JpegPictureOnItsHeadIsTurnedByTheTool) {
  CreateUpsideDown("colour.jpg");
  Pixels const stored = Witness().at(0);
  EXPECT_LE(Difference(Load("out.pdf", 0).pixels, stored), 2);
  ExtractPnm();
  EXPECT_LE(Difference(Extracted("t1.pnm"), UpsideDown(stored)), 2);
}

TEST_F(ForeignPages, RotatedPageGivesItsPictureAsItIsShown) {
  Shell("img2pdf --imgsize 72dpi g4.tif -o a.pdf && qpdf --rotate=90 a.pdf out.pdf");
  EXPECT_EQ(Difference(Load("out.pdf", 0).pixels, Witness().at(0)), 0);
  EXPECT_THAT(Tool({"info", Path("out.pdf")}).out, HasSubstr("shown turned by 90 degrees"));
  EXPECT_THAT(Tool({"info", "--json", Path("out.pdf")}).out, HasSubstr("\"rotate\": 90"));
  ExtractPnm();
  Shell("convert g4.tif -rotate 90 -depth 8 -type truecolor shown-1.ppm");
  EXPECT_EQ(Difference(Extracted("t1.pnm"), Extracted("shown-1.ppm")), 0);
  EXPECT_EQ(
      Tool({"extract", Path("out.pdf"), "--output", Path("s%d.pnm"), "--as-stored"}).exit_code, 0);
  EXPECT_EQ(Difference(Extracted("s1.pnm"), Source("g4.tif")), 0);
}

// 203 pixels on a page of 146.16 points: the library reads 146.
TEST_F(ForeignPages, ResolutionIsThatOfThePage) {
  Shell("img2pdf --imgsize 100dpi g4.tif -o out.pdf");
  EXPECT_EQ(Load("out.pdf", 0).x_per_metre, kWidth * 2834 / 146);
  EXPECT_THAT(Tool({"info", Path("out.pdf")}).out, HasSubstr("100x100"));
}

TEST_F(ForeignPages, EncryptedDocumentsOfEveryKindComeBack) {
  Shell("img2pdf g4.tif -o a.pdf");
  for (std::string const kind : {"40", "128", "128 --use-aes=y", "256"}) {
    Shell("qpdf --allow-weak-crypto --encrypt '' owner " + kind + " -- a.pdf out.pdf");
    ProgramResult const result =
        Tool({"extract", Path("out.pdf"), "--output", Path("t%d.pnm"), "--force"});
    EXPECT_EQ(result.exit_code, 0) << kind << result.err;
    EXPECT_EQ(Difference(Extracted("t1.pnm"), Source("g4.tif")), 0) << kind;
  }
}

TEST_F(ForeignPages, TransparencyComesBackWhereTheFormatHasIt) {
  Shell("mutool convert -o out.pdf alpha.png");
  EXPECT_EQ(Tool({"extract", Path("out.pdf"), "--output", Path("t%d.png")}).exit_code, 0);
  Shell(
      "pdfimages out.pdf w && convert w-000.ppm w-001.p?m -alpha off -compose CopyOpacity "
      "-composite w.png && test $(identify -format '%[channels]' t1.png) = srgba && "
      "test $(compare -metric AE w.png t1.png null: 2>&1) = 0");
}

// Bytes of a kept file are those that pdfimages takes out.
TEST_F(ForeignPages, KeptJpegAndJpeg2000AreTheDocuments) {
  Shell(
      "opj_compress -i colour.png -o c.jp2 >/dev/null && img2pdf c.jp2 -o 1.pdf && "
      "img2pdf colour.jpg -o 2.pdf && qpdf --empty --pages 1.pdf 2.pdf -- out.pdf && "
      "pdfimages -all out.pdf w");
  ProgramResult const result =
      Tool({"extract", Path("out.pdf"), "--format", "keep", "--output", Path("t%d")});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(ReadAll(Path("t1.jp2")), ReadAll(Path("w-000.jp2")));
  EXPECT_EQ(ReadAll(Path("t2.jpg")), ReadAll(Path("w-001.jpg")));
  ExtractPnm();
  EXPECT_EQ(Difference(Extracted("t1.pnm"), Source("colour.png")), 0);
}

// Segments of JBIG2 (ITU-T T.88): the number, the type, the segment that is referred to, the page,
// and the data with their length.
std::string Segment(char number, char type, std::string const& refers, char page,
                    std::string const& data) {
  return std::string("\0\0\0", 3) + number + type + static_cast<char>(refers.size() << 5) + refers +
         page + std::string("\0\0\0", 3) + static_cast<char>(data.size()) + data;
}

// A dictionary of two symbols of 5 by 4 pixels, an A and an L, in Huffman codes (6.5): their height
// 4 as 1110 000, their widths as 1110 010 and 0, the end 111111, the bytes of the bitmap 0 0000,
// which stands for one that is not coded, its rows, and the exported symbols as 0 0000 and 0 0010.
std::string SymbolDictionary() {
  return Segment(0, 0, "", 0,
                 std::string("\0\1\0\0\0\2\0\0\0\2\xE1\xC9\xF8\0", 14) +
                     std::string("\x8C\0\x54\0\x24\0\xFF\0\0\x80", 10));
}

// A page of 20 by 9 pixels, and a text region (6.4) that places A at 2, 0, L at 10, 0 and L at
// 8, 3: codes of 1 bit for both symbols, and then 0 0 00 0000010 0, 100 0000 1 01, 10 1 00 0000110
// 1 01.
std::string TextPage() {
  std::string const size("\0\0\0\x14\0\0\0\x09\0\0\0\0\0\0\0\0\0", 17);
  return Segment(1, 0x30, "", 1, size + std::string(2, '\0')) +
         Segment(2, 6, std::string(1, '\0'), 1,
                 size + std::string("\0\x11\0\0\0\0\0\3\x01\x10", 10) + std::string(17, '\0') +
                     "\x48\x16\x81\xA8");
}

constexpr char kText[] =
    "..#...#...#........."
    "...#.#....#........."
    "....#.....#........."
    "..#####.#.###......."
    "........#..........."
    "........#..........."
    "........###........."
    "...................."
    "....................";

// jbig2dec reads the file that the document's segments make.
TEST_F(ForeignPages, Jbig2WithSymbolsInItsGlobalsComesBack) {
  PdfBuilder pdf = OnePage{.image =
                               "/Subtype/Image /Width 20 /Height 9 /BitsPerComponent 1 "
                               "/ColorSpace /DeviceGray /Filter /JBIG2Decode "
                               "/DecodeParms <</JBIG2Globals 7 0 R>>",
                           .data = TextPage(),
                           .content = "q 20 0 0 9 0 0 cm /Im0 Do Q"}
                       .Build();
  pdf.Stream(7, "", SymbolDictionary());
  pdf.Classic({});
  WriteAll(Path("out.pdf"), pdf.Document());
  Pixels expected = {20, 9, {}};
  for (char const pixel : std::string(kText)) {
    expected.colours.push_back(pixel == '#' ? 0 : 0xFFFFFF);
  }
  ExtractPnm();
  EXPECT_EQ(Difference(Extracted("t1.pnm"), expected), 0);
  EXPECT_EQ(Difference(Witness().at(0), expected), 0);
  EXPECT_EQ(
      Tool({"extract", Path("out.pdf"), "--format", "keep", "--output", Path("t%d")}).exit_code, 0);
  Shell("jbig2dec -t pbm -o shown.pbm t1.jb2");
  EXPECT_EQ(Difference(Extracted("shown.pbm"), expected), 0);
}

TEST_F(ForeignPages, Jbig2WithoutItsSymbolsIsNamed) {
  PdfBuilder pdf = OnePage{.image =
                               "/Subtype/Image /Width 20 /Height 9 /BitsPerComponent 1 "
                               "/ColorSpace /DeviceGray /Filter /JBIG2Decode",
                           .data = TextPage()}
                       .Build();
  pdf.Classic({});
  WriteAll(Path("out.pdf"), pdf.Document());
  ProgramResult const result = Tool({"extract", Path("out.pdf"), "--output", Path("t%d.pnm")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("its JBIG2 data are damaged"));
}

struct Shape {
  char const* name;
  char const* command;  // makes out.pdf
  char const* shown;    // makes shown.ppm of it, or of the picture
  int tolerance = 0;
};

void PrintTo(Shape const& shape, std::ostream* out) { *out << shape.command; }

#define GS "gs -q -dBATCH -dNOPAUSE -sDEVICE="
#define PAGE_BY_PDFIMAGES "pdfimages out.pdf w && mv w-000.p?m shown.ppm"

// What other programs make without a picture file of their own, and shapes of documents.
constexpr Shape kShapes[] = {
    // Its grey JPEG data are said to be of colours, which viewers show in several ways.
    {"ScanimageGrey",
     "scanimage -d test --mode Gray --test-picture 'Color pattern' --format=pdf >out.pdf",
     "pdfimages -j out.pdf w && convert w-000.jpg -depth 8 -colorspace gray shown.pgm && "
     "mv shown.pgm shown.ppm",
     2},
    {"ScanimageColour",
     "scanimage -d test --mode Color --test-picture 'Color pattern' --format=pdf >out.pdf",
     PAGE_BY_PDFIMAGES, 2},
    {"OcrmypdfKeepsThePicture",
     "img2pdf --imgsize 72dpi colour.png -o a.pdf && ocrmypdf --tesseract-timeout 0 "
     "--output-type pdf a.pdf out.pdf",
     PAGE_BY_PDFIMAGES},
    {"JunkInFront", "img2pdf colour.png -o a.pdf && (printf 'junk\\n'; cat a.pdf) >out.pdf",
     PAGE_BY_PDFIMAGES},
    {"JunkAfterwards",
     "img2pdf colour.png -o a.pdf && (cat a.pdf; head -c 3000 /dev/zero) >out.pdf",
     PAGE_BY_PDFIMAGES},
    {"WrongTable", "img2pdf colour.png -o a.pdf && sed 's/^startxref$/startxref 9/' a.pdf >out.pdf",
     PAGE_BY_PDFIMAGES},
    {"Version2WithObjectStreams",
     "img2pdf colour.png -o a.pdf && qpdf --object-streams=generate --force-version=2.0 a.pdf "
     "out.pdf",
     PAGE_BY_PDFIMAGES},
    {"EncryptedByAes256", "img2pdf colour.png -o a.pdf && qpdf --encrypt '' x 256 -- a.pdf out.pdf",
     PAGE_BY_PDFIMAGES},
    {"UpdatedByMutool",
     "img2pdf colour.png -o out.pdf && mutool clean -i out.pdf b.pdf && mv b.pdf "
     "out.pdf",
     PAGE_BY_PDFIMAGES},
    {"JoinedByPdfunite", "img2pdf colour.png -o a.pdf && pdfunite a.pdf a.pdf out.pdf",
     PAGE_BY_PDFIMAGES},
    {"GreyBandsOfGhostscript",
     "img2pdf --imgsize 72dpi grey.png -o a.pdf && " GS "pclm8 -r72 -o out.pdf a.pdf",
     "pdfimages out.pdf w && convert w-*.p?m -append -depth 8 shown.ppm"},
    {"LzwOfGhostscript",
     "img2pdf --imgsize 72dpi colour.png -o a.pdf && " GS
     "pdfimage24 -sCompression=LZW -r72 -o out.pdf a.pdf",
     PAGE_BY_PDFIMAGES},
    {"Ascii85OfGhostscript",
     "img2pdf colour.png -o a.pdf && " GS
     "pdfwrite -dASCII85EncodePages=true -dMaxInlineImageSize=0 -dAutoFilterColorImages=false "
     "-dColorImageFilter=/FlateEncode -o out.pdf a.pdf",
     PAGE_BY_PDFIMAGES},
    {"PostScriptAndBack",
     "img2pdf colour.jpg -o a.pdf && " GS "ps2write -o a.ps a.pdf && ps2pdf a.ps out.pdf",
     PAGE_BY_PDFIMAGES, 2},
    {"HexadecimalOfMupdf",
     "img2pdf colour.png -o a.pdf && mutool convert -O ascii -o out.pdf a.pdf", PAGE_BY_PDFIMAGES},
    {"InksOfTiff", "convert colour.png -colorspace CMYK k.tif && tiff2pdf -z -o out.pdf k.tif",
     PAGE_BY_PDFIMAGES, 2},
};

class ForeignShape : public ForeignTest, public ::testing::WithParamInterface<Shape> {};

TEST_P(ForeignShape, ComesBack) {
  Shape const& shape = GetParam();
  Shell(shape.command);
  Shell(shape.shown);
  ProgramResult const result =
      Tool({"extract", Path("out.pdf"), "--pages", "1", "--output", Path("t%d.pnm")});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_LE(Difference(Extracted("t1.pnm"), Extracted("shown.ppm")), shape.tolerance);
}

INSTANTIATE_TEST_SUITE_P(All, ForeignShape, ::testing::ValuesIn(kShapes),
                         [](auto const& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace test
