// Documents of every form that pages are added to: what they had is still there, and their pages
// look as before.
#include "tests/tools/append_fixture.h"

namespace test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

// Everything that a catalog and its pages commonly hold. Objects 5 and 6 are the pages' contents.
constexpr char kCatalog[] =
    "<</Type/Catalog /Pages 2 0 R /Outlines 10 0 R /PageLabels <</Nums [0 <</S /r>>]>> "
    "/AcroForm <</Fields [12 0 R] /DA (/Helv 0 Tf 0 g)>> /Metadata 13 0 R /Lang (en) "
    "/Names <</Dests <</Names [(chapter) [3 0 R /Fit]]>> "
    "/EmbeddedFiles <</Names [(note.txt) 20 0 R]>> >> /Dests <</old [3 0 R /Fit]>> "
    "/StructTreeRoot 15 0 R /MarkInfo <</Marked true>> "
    "/OCProperties <</OCGs [18 0 R] /D <</ON [18 0 R] /Order [18 0 R]>> >> "
    "/ViewerPreferences <</DisplayDocTitle true>> /PageMode /UseOutlines>>";
constexpr std::pair<DWORD, char const*> kPlainObjects[] = {
    {2, "<</Type/Pages /Kids [3 0 R 4 0 R] /Count 2>>"},
    {3,
     "<</Type/Page /Parent 2 0 R /MediaBox [0 0 200 100] /Contents 5 0 R /Annots [12 0 R] "
     "/StructParents 0 /Resources <</Properties <</oc1 18 0 R>> >> >>"},
    {4,
     "<</Type/Page /Parent 2 0 R /MediaBox [0 0 200 100] /Contents 6 0 R /Rotate 90 "
     "/Resources <<>> >>"},
    {12,
     "<</Type/Annot /Subtype/Widget /FT /Tx /T (field) /V (value) /Rect [10 70 60 90] /P 3 0 R>>"},
    {20, "<</Type/Filespec /F (note.txt) /EF <</F 21 0 R>> >>"},
    {22, "<</Title (Old title)>>"}};
// Those that the hybrid document keeps in an object stream.
constexpr std::pair<DWORD, char const*> kHiddenObjects[] = {
    {10, "<</Type/Outlines /First 11 0 R /Last 11 0 R /Count 1>>"},
    {11, "<</Title (Mark) /Parent 10 0 R /Dest (chapter)>>"},
    {15, "<</Type/StructTreeRoot /K 16 0 R /ParentTree <</Nums [0 [16 0 R]]>> >>"},
    {16, "<</Type/StructElem /S /P /P 15 0 R /Pg 3 0 R /K 0 /ActualText (spoken)>>"},
    {18, "<</Type/OCG /Name (Layer)>>"}};
constexpr char const* kTraces[] = {
    "u:Mark",          "u:field",     "u:value",       "/PageLabels",  "u:en",
    "/Metadata",       "u:chapter",   "\"/old\"",      "u:spoken",     "u:Layer",
    "/StructTreeRoot", "/MarkInfo",   "/OCProperties", "/UseOutlines", "/DisplayDocTitle",
    "u:Old title",     "/ParentTree", "/StructParents"};

class AppendKeeps : public AppendTest {
 protected:
  static void AddObjects(PdfBuilder& pdf, std::string const& catalog = kCatalog) {
    pdf.Object(1, catalog);
    for (auto const& [number, body] : kPlainObjects) pdf.Object(number, body);
    pdf.Stream(5, "", "/P <</MCID 0>> BDC 1 0 0 rg 10 10 50 50 re f EMC");
    pdf.Stream(6, "", "0 1 0 rg 20 20 60 30 re f");
    pdf.Stream(13, "/Type/Metadata /Subtype/XML", "<x:xmpmeta xmlns:x='adobe:ns:meta/'/>");
    pdf.Stream(21, "/Type/EmbeddedFile", "attached");
  }
  static void AddHiddenObjects(PdfBuilder& pdf) {
    for (auto const& [number, body] : kHiddenObjects) pdf.Object(number, body);
  }
  void WriteDocumentWith(PdfBuilder& pdf, ClassicOptions options = {}) const {
    options.keys = "/Root 1 0 R /Info 22 0 R" + options.keys;
    pdf.Classic(options);
    WriteAll(Path("in.pdf"), pdf.Document());
  }
  void WriteRich() const {
    PdfBuilder pdf("%PDF-1.6");
    AddObjects(pdf);
    AddHiddenObjects(pdf);
    WriteDocumentWith(pdf, {.keys = ""});
  }
  void RewriteBy(std::vector<std::string> options) const {
    std::filesystem::rename(Path("in.pdf"), Path("before.pdf"));
    options.insert(options.begin(), "qpdf");
    options.insert(options.end(), {Path("before.pdf"), Path("in.pdf")});
    ASSERT_EQ(RunProgram(options).exit_code, 0);
  }

  // What a viewer shows of a page.
  Bytes Look(int page) const {
    std::string const number = std::to_string(page);
    std::filesystem::remove(Path("look.ppm"));
    RunProgram({"pdftoppm", "-r", "72", "-singlefile", "-f", number, "-l", number, Path("in.pdf"),
                Path("look")});
    return ReadAll(Path("look.ppm"));
  }

  // A page of 24 x 8 points goes after the two of in.pdf, which `reason` makes be rewritten.
  void ExpectKept(std::string const& reason) const {
    Bytes const old[] = {Look(1), Look(2)};
    ASSERT_NE(old[0], old[1]);
    WritePix("new.png", Noise(48, 16, 8));
    EXPECT_THAT(WhatAppendSays("in.pdf", {"new.png"}),
                HasSubstr("was rewritten for the new pages: it " + reason));
    EXPECT_EQ(CountPages("in.pdf"), "3\n");
    EXPECT_EQ(RunProgram({"qpdf", "--warning-exit-0", "--check", Path("in.pdf")}).exit_code, 0);
    for (int page = 1; page <= 2; ++page) EXPECT_EQ(Look(page), old[page - 1]) << page;
    EXPECT_EQ(ToText(Look(3)).substr(0, 12), "P6\n24 8\n255\n");
    std::string const json = RunProgram({"qpdf", "--json=2", Path("in.pdf")}).out;
    for (char const* const trace : kTraces) EXPECT_THAT(json, HasSubstr(trace));
    EXPECT_EQ(RunProgram({"qpdf", "--show-attachment=note.txt", Path("in.pdf")}).out, "attached");
  }
};

constexpr char kCatalogReason[] = "has what an added page would take from its catalog";

TEST_F(AppendKeeps, WhatADocumentWithATableHas) {
  WriteRich();
  ExpectKept(kCatalogReason);
}

TEST_F(AppendKeeps, WhatADocumentWithObjectStreamsHas) {
  WriteRich();
  RewriteBy({"--object-streams=generate"});
  ExpectKept("keeps objects in object streams");
}

TEST_F(AppendKeeps, WhatALinearisedDocumentHas) {
  WriteRich();
  RewriteBy({"--linearize", "--object-streams=disable"});
  ExpectKept(kCatalogReason);
}

TEST_F(AppendKeeps, WhatADocumentOfPdf2Has) {
  WriteRich();
  RewriteBy({"--force-version=2.0"});
  ExpectKept("is of PDF 2.0");
}

TEST_F(AppendKeeps, WhatADocumentWithBothKindsOfCrossReferenceHas) {
  PdfBuilder pdf("%PDF-1.6");
  pdf.ObjectStream(30, {std::begin(kHiddenObjects), std::end(kHiddenObjects)});
  pdf.XrefStream(31);
  size_t const section = pdf.LastSection();
  AddObjects(pdf);
  WriteDocumentWith(pdf, {.keys = " /XRefStm " + std::to_string(section)});
  ExpectKept("keeps objects in object streams");
}

TEST_F(AppendKeeps, WhatADocumentWithWrongOffsetsHas) {
  PdfBuilder pdf("%PDF-1.6");
  AddObjects(pdf);
  AddHiddenObjects(pdf);
  WriteDocumentWith(pdf, {.keys = "", .start_xref = 1});
  ExpectKept("is damaged");
}

TEST_F(AppendKeeps, WhatADocumentWithBytesInFrontHas) {
  WriteRich();
  Bytes bytes = ToBytes("bytes in front\n");
  Bytes const document = ReadAll(Path("in.pdf"));
  bytes.insert(bytes.end(), document.begin(), document.end());
  WriteAll(Path("in.pdf"), bytes);
  ExpectKept(kCatalogReason);
}

TEST_F(AppendKeeps, OutlinesThatAreInTheCatalogItself) {
  PdfBuilder pdf("%PDF-1.6");
  std::string catalog = kCatalog;
  std::string const reference = "/Outlines 10 0 R";
  catalog.replace(catalog.find(reference), reference.size(),
                  "/Outlines <</First 11 0 R /Last 11 0 R /Count 1>>");
  AddObjects(pdf, catalog);
  AddHiddenObjects(pdf);
  WriteDocumentWith(pdf, {.keys = ""});
  ExpectKept(kCatalogReason);
}

// Two pages that take how they are shown from the root of the tree, and one from a node below it.
TEST_F(AppendKeeps, AddedPageIsNeitherTurnedNorCroppedAsTheOthersAre) {
  PdfBuilder pdf;
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R>>");
  pdf.Object(2, "<</Type/Pages /Kids [3 0 R 7 0 R] /Count 3 /Rotate 90 /CropBox [0 0 50 90]>>");
  pdf.Object(3, "<</Type/Page /Parent 2 0 R /MediaBox [0 0 200 100] /Contents 5 0 R>>");
  pdf.Object(7, "<</Type/Pages /Parent 2 0 R /Kids [4 0 R 8 0 R] /Count 2 /Rotate 180>>");
  pdf.Object(4, "<</Type/Page /Parent 7 0 R /MediaBox [0 0 200 100] /Contents 5 0 R>>");
  pdf.Object(8, "<</Type/Page /Parent 7 0 R /MediaBox [0 0 99 99] /Contents 5 0 R /Rotate 0>>");
  pdf.Stream(5, "", "1 0 0 rg 10 10 50 50 re f");
  WriteDocument("in.pdf", pdf);
  Bytes const old[] = {Look(1), Look(2), Look(3)};
  WritePix("new.png", Noise(48, 16, 8));
  EXPECT_THAT(WhatAppendSays("in.pdf", {"new.png"}),
              HasSubstr("it has a page tree that would turn or crop added pages"));
  for (int page = 1; page <= 3; ++page) EXPECT_EQ(Look(page), old[page - 1]) << page;
  EXPECT_EQ(ToText(Look(4)).substr(0, 12), "P6\n24 8\n255\n");
  EXPECT_EQ(CountPages("in.pdf"), "4\n");
}

// Such trees take no pages from the library.
TEST_F(AppendKeeps, PagesWhoseKidsAreAnObjectOrComeLast) {
  WritePix("new.png", Noise(48, 16, 8));
  for (std::string const keys : {"/Kids 4 0 R", "/MediaBox [0 0 9 9] /Kids [3 0 R]"}) {
    PdfBuilder pdf;
    AddPageTree(pdf, 1);
    pdf.Object(2, "<</Type/Pages /Count 1 " + keys + ">>");
    pdf.Object(4, "[3 0 R]");
    WriteDocument("in.pdf", pdf);
    EXPECT_THAT(WhatAppendSays("in.pdf", {"new.png"}), HasSubstr("was rewritten")) << keys;
    EXPECT_EQ(CountPages("in.pdf"), "2\n") << keys;
    EXPECT_EQ(ToText(Look(2)).substr(0, 12), "P6\n24 8\n255\n") << keys;
  }
}

// A field of a signature may have its type from its parent.
TEST_F(AppendKeeps, SignatureWhoseTypeIsThatOfItsParentIsRefused) {
  PdfBuilder pdf;
  AddPageTree(pdf, 1);
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R /AcroForm <</Fields [10 0 R]>> >>");
  pdf.Object(10, "<</FT /Sig /T (parent) /Kids [11 0 R]>>");
  pdf.Object(11, "<</Parent 10 0 R /V <</Type/Sig /Contents <00> >> >>");
  WriteDocument("signed.pdf", pdf);
  ExpectRefused("signed.pdf", "is signed, and a change would void the signature");
}

}  // namespace
}  // namespace test
