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
  // A page of one picture that stands on its head.
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
        " && " UNTIL_WITHOUT_NUL("pdfunite 1.pdf 2.pdf 1.pdf 3.pdf"));
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
    EXPECT_EQ(Tool({"count", Path("out.pdf")}).out, byte != '\0' ? "1\n" : "");
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

TEST_F(ForeignPages, RotatedPageGivesItsPictureAsItIsStored) {
  Shell("img2pdf g4.tif -o a.pdf && qpdf --rotate=90 a.pdf out.pdf");
  ExpectAllPages(1);
  EXPECT_THAT(Tool({"info", Path("out.pdf")}).out, HasSubstr("shown turned by 90 degrees"));
  EXPECT_THAT(Tool({"info", "--json", Path("out.pdf")}).out, HasSubstr("\"rotate\": 90"));
}

// 203 pixels on a page of 146.16 points: the library reads 146.
TEST_F(ForeignPages, ResolutionIsThatOfThePage) {
  Shell("img2pdf --imgsize 100dpi g4.tif -o out.pdf");
  EXPECT_EQ(Load("out.pdf", 0).x_per_metre, kWidth * 2834 / 146);
  EXPECT_THAT(Tool({"info", Path("out.pdf")}).out, HasSubstr("100x100"));
}

TEST_F(ForeignPages, EncryptedDocumentIsNamed) {
  Shell("img2pdf g4.tif -o a.pdf && qpdf --encrypt '' '' 256 -- a.pdf out.pdf");
  ProgramResult const result = Tool({"extract", Path("out.pdf"), "--output", Path("t%d.pnm")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("is encrypted, which is not read"));
  EXPECT_FALSE(std::filesystem::exists(Path("t1.pnm")));
}

}  // namespace
}  // namespace test
