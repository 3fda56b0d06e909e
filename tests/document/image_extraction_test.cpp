// The way from a page to its image: which objects and values are looked at, and which are not.
#include <gtest/gtest.h>
#include <tests/support/page_document.h>
#include <tests/support/session_probe.h>

#include <string>

namespace test {
namespace {

std::string const kBilevel = "/Subtype/Image /Width 8 /Height 2 /BitsPerComponent 1 ";
std::string const kFlip = "q 100 0 0 -100 0 100 cm /Im0 Do Q ";
std::string const kUpright = "q 100 0 0 100 0 0 cm /Im0 Do Q ";

// The image of the page, which must be there.
DibContent Extract(OnePage const& page) {
  PdfBuilder pdf = page.Build();
  PageDocument document(pdf);
  return ReadDib(document.Load());
}

// The code that the page's load leaves; the load must give null.
DWORD Failure(OnePage const& page) {
  PdfBuilder pdf = page.Build();
  PageDocument document(pdf);
  EXPECT_EQ(document.Load().get(), nullptr);
  return document->PDF_GetLastError();
}

bool IsFlipped(OnePage const& page) { return Extract(page).rows[0][0] == 'B'; }

TEST(ImageExtraction, FirstRowOfTheStreamIsTheTopOfThePicture) {
  DibContent const dib = Extract({});
  EXPECT_EQ(dib.header.biWidth, 8);
  EXPECT_EQ(dib.rows, (std::vector<Bytes>{{'A', 0, 0, 0}, {'B', 0, 0, 0}}));
}

TEST(ImageExtraction, PagesCountFromZero) {
  PdfBuilder pdf;
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Type/Pages /Kids [3 0 R 4 0 R ] /Count 2 >>");
  pdf.Object(3, "<</Resources <</XObject <</Im0 5 0 R >> >> >>");
  pdf.Object(4, "<</Resources <</XObject <</Im0 6 0 R >> >> >>");
  pdf.Stream(5, kBilevel, "AB");
  pdf.Stream(6, kBilevel, "CD");
  PageDocument document(pdf);
  EXPECT_EQ(ReadDib(document.Load(0)).rows[0][0], 'A');
  EXPECT_EQ(ReadDib(document.Load(1)).rows[0][0], 'C');
  EXPECT_EQ(ReadDib(document.Load(0)).rows[0][0], 'A');
}

TEST(ImageExtraction, PageBehindTheLastIsCode31) {
  PdfBuilder pdf = OnePage{}.Build();
  PageDocument document(pdf);
  for (DWORD const page : {1u, 2u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
    document->PDF_SetLastError(0);
    EXPECT_EQ(document.Load(page).get(), nullptr);
    EXPECT_EQ(document->PDF_GetLastError(), 31u) << page;
  }
}

TEST(ImageExtraction, PageThatTheTreeLacksGivesNullWithoutACode) {
  PdfBuilder pdf;
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Type/Pages /Kids [] /Count 1 >>");
  PageDocument document(pdf);
  EXPECT_EQ(document->GetNumberOfPages(), 1u);
  EXPECT_EQ(document->GetPageObjectNumber(0), 0u);
  EXPECT_EQ(document.Load().get(), nullptr);
  EXPECT_EQ(document->PDF_GetLastError(), 0u);
}

TEST(ImageExtraction, PagesThatTheRootCountsAndTheTreeLacksFailAtTheLoad) {
  PdfBuilder pdf;
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Type/Pages /Kids [3 0 R 3 0 R 3 0 R ] /Count 5 >>");
  pdf.Object(3, "<</Resources <</XObject <</Im0 4 0 R >> >> >>");
  pdf.Stream(4, kBilevel, "AB");
  PageDocument document(pdf);
  EXPECT_EQ(document->GetNumberOfPages(), 5u);
  EXPECT_NE(document.Load(2).get(), nullptr);
  for (DWORD const page : {3u, 4u}) {
    EXPECT_EQ(document.Load(page).get(), nullptr);
    EXPECT_EQ(document->PDF_GetLastError(), 0u) << page;
  }
  EXPECT_EQ(document.Load(5).get(), nullptr);
  EXPECT_EQ(document->PDF_GetLastError(), 31u);
}

TEST(ImageExtraction, PageBeyondTheCountOfTheRootIsOutOfReach) {
  PdfBuilder pdf;
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Type/Pages /Kids [3 0 R 3 0 R 3 0 R ] /Count 2 >>");
  pdf.Object(3, "<</Resources <</XObject <</Im0 4 0 R >> >> >>");
  pdf.Stream(4, kBilevel, "AB");
  PageDocument document(pdf);
  EXPECT_EQ(document->GetPageObjectNumber(2), 3u);
  EXPECT_NE(document.Load(1).get(), nullptr);
  EXPECT_EQ(document.Load(2).get(), nullptr);
  EXPECT_EQ(document->PDF_GetLastError(), 31u);
}

TEST(ImageExtraction, RotationIsNotRead) {
  EXPECT_EQ(Extract({.page = OnePage{}.page + " /Rotate 180"}).rows, Extract({}).rows);
}

// Resolution

TEST(ImageExtraction, ResolutionIsPixelsTimes2834ByPoints) {
  BITMAPINFOHEADER const header =
      Extract({.page = "/MediaBox [0 0 200 50] /Resources <</XObject <</Im0 4 0 R >> >>",
               .image = "/Subtype/Image /Width 1700 /Height 3 /BitsPerComponent 1 "})
          .header;
  EXPECT_EQ(header.biXPelsPerMeter, 24089);  // 1700 * 2834 / 200
  EXPECT_EQ(header.biYPelsPerMeter, 170);    // 3 * 2834 / 50 is 170.04
}

std::string PageWithBox(std::string const& box) {
  return "/MediaBox " + box + " /Resources <</XObject <</Im0 4 0 R >> >>";
}

// 8 * 2834 / 612 is 37.05, and 2 * 2834 / 792 is 7.16.
TEST(ImageExtraction, PageWithoutAReadableMediaBoxIs612By792) {
  std::string const boxes[] = {"[-10 -10 612 792]", "[-10 -10 100 100]", "[0 0]"};
  for (std::string const& box : boxes) {
    BITMAPINFOHEADER const header = Extract({.page = PageWithBox(box)}).header;
    EXPECT_EQ(header.biXPelsPerMeter, 37) << box;
    EXPECT_EQ(header.biYPelsPerMeter, 7) << box;
  }
}

// Ten pixels a point.
TEST(ImageExtraction, PageWithoutAMediaBoxIs612By792) {
  BITMAPINFOHEADER const header =
      Extract({.page = "/Resources <</XObject <</Im0 4 0 R >> >>",
               .image = "/Subtype/Image /Width 6120 /Height 7920 /BitsPerComponent 1 "})
          .header;
  EXPECT_EQ(header.biXPelsPerMeter, 28340);
  EXPECT_EQ(header.biYPelsPerMeter, 28340);
}

// 8 * 2834 / 100 is 226.72, and 2 * 2834 / 100 is 56.68; 225.6 and 56.4 with the fractions.
TEST(ImageExtraction, FractionsOfTheMediaBoxAreCut) {
  BITMAPINFOHEADER const header = Extract({.page = PageWithBox("[0 0 100.5 100.5]")}).header;
  EXPECT_EQ(header.biXPelsPerMeter, 226);
  EXPECT_EQ(header.biYPelsPerMeter, 56);
  BITMAPINFOHEADER const letter =
      Extract({.page = PageWithBox("[0 0 612.5 792.5]"),
               .image = "/Subtype/Image /Width 6120 /Height 7920 /BitsPerComponent 1 "})
          .header;
  EXPECT_EQ(letter.biXPelsPerMeter, 28340);
  EXPECT_EQ(letter.biYPelsPerMeter, 28340);
}

// Kept: the origin is not subtracted: 8 * 2834 / 300, 2 * 2834 / 400.
TEST(ImageExtraction, OriginOfTheMediaBoxIsNotSubtracted) {
  BITMAPINFOHEADER const header = Extract({.page = PageWithBox("[100 100 300 400]")}).header;
  EXPECT_EQ(header.biXPelsPerMeter, 75);
  EXPECT_EQ(header.biYPelsPerMeter, 14);
}

TEST(ImageExtraction, MediaBoxWithAZeroSideLeavesTheResolutionOpen) {
  for (char const* const box : {"[0 0 0 100]", "[0 0 100 0]", "[0 0 100]"}) {
    BITMAPINFOHEADER const header = Extract({.page = PageWithBox(box)}).header;
    EXPECT_EQ(header.biXPelsPerMeter, 0) << box;
    EXPECT_EQ(header.biYPelsPerMeter, 0) << box;
  }
}

// Objects

TEST(ImageExtraction, ResourcesMayBeAnObject) {
  PdfBuilder pdf = OnePage{.page = "/Resources 7 0 R"}.Build();
  pdf.Object(7, "<</XObject <</Im0 4 0 R >> >>");
  PageDocument document(pdf);
  EXPECT_EQ(ReadDib(document.Load()).rows[0][0], 'A');
}

TEST(ImageExtraction, XObjectsMayBeAnObject) {
  PdfBuilder pdf = OnePage{.page = "/Resources <</XObject 15 0 R >>"}.Build();
  pdf.Object(15, "<</Im0 4 0 R >>");
  PageDocument document(pdf);
  EXPECT_EQ(ReadDib(document.Load()).rows[0][0], 'A');
}

TEST(ImageExtraction, SecondIndirectionIsNotFollowed) {
  PdfBuilder pdf = OnePage{.page = "/Resources <</XObject 15 0 R >>"}.Build();
  pdf.Object(15, "<</Im0 16 0 R >>");
  pdf.Object(16, "<</Im0 4 0 R >>");
  PageDocument document(pdf);
  EXPECT_EQ(document.Load().get(), nullptr);
  EXPECT_EQ(document->PDF_GetLastError(), 0u);
}

TEST(ImageExtraction, ObjectOfXObjectsThatMentionsImageIsTakenForTheImage) {
  PdfBuilder pdf = OnePage{.page = "/Resources <</XObject 15 0 R >>"}.Build();
  pdf.Object(15, "<</Image0 4 0 R >>");
  PageDocument document(pdf);
  EXPECT_EQ(document.Load().get(), nullptr);
  EXPECT_EQ(document->PDF_GetLastError(), 0u);
}

TEST(ImageExtraction, FirstOfSeveralImagesIsTakenWhateverThePageDraws) {
  PdfBuilder pdf =
      OnePage{.page = "/Resources <</XObject <</Im1 7 0 R /Im0 4 0 R >> >>", .content = kUpright}
          .Build();
  pdf.Stream(7, kBilevel, "CD");
  PageDocument document(pdf);
  EXPECT_EQ(ReadDib(document.Load()).rows[0][0], 'C');
}

TEST(ImageExtraction, PageWithoutResourcesGivesNullWithoutACode) {
  EXPECT_EQ(Failure({.page = "/MediaBox [0 0 100 100]"}), 0u);
}

TEST(ImageExtraction, ResourcesOfThePagesRootAreNotInherited) {
  PdfBuilder pdf;
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Kids [3 0 R ] /Count 1 /Resources <</XObject <</Im0 4 0 R >> >> >>");
  pdf.Object(3, "<</Type/Page /Parent 2 0 R >>");
  pdf.Stream(4, kBilevel, "AB");
  PageDocument document(pdf);
  EXPECT_EQ(document.Load().get(), nullptr);
  EXPECT_EQ(document->PDF_GetLastError(), 0u);
}

TEST(ImageExtraction, PageWithoutXObjectGivesNullWithoutACode) {
  EXPECT_EQ(Failure({.page = "/Resources <</Font <</F1 4 0 R >> >>"}), 0u);
}

TEST(ImageExtraction, ResourcesThatAreNoReferenceGiveNullWithoutACode) {
  EXPECT_EQ(Failure({.page = "/Resources null"}), 0u);
}

TEST(ImageExtraction, ResourcesObjectThatIsMissingGivesNullWithoutACode) {
  EXPECT_EQ(Failure({.page = "/Resources 0 0 R"}), 0u);
}

TEST(ImageExtraction, ResourcesObjectWithoutXObjectGivesNullWithoutACode) {
  EXPECT_EQ(Failure({.page = "/Resources 5 0 R", .content = "nothing"}), 0u);
}

// The scanner gets the missing object as it is and reports it.
TEST(ImageExtraction, XObjectThatIsMissingIsCode2) {
  EXPECT_EQ(Failure({.page = "/Resources <</XObject <</Im0 0 0 R >> >>"}), 2u);
}

TEST(ImageExtraction, ImageInAnObjectOfXObjectsThatIsMissingGivesNullWithoutACode) {
  PdfBuilder pdf = OnePage{.page = "/Resources <</XObject 15 0 R >>"}.Build();
  pdf.Object(15, "<</Im0 0 0 R >>");
  PageDocument document(pdf);
  EXPECT_EQ(document.Load().get(), nullptr);
  EXPECT_EQ(document->PDF_GetLastError(), 0u);
}

// The number is read, and given up with the one that lacks.
TEST(ImageExtraction, ObjectOfXObjectsWithoutAWholeReferenceGivesNullWithoutACode) {
  PdfBuilder pdf = OnePage{.page = "/Resources <</XObject 15 0 R >>"}.Build();
  pdf.Object(15, "<</Im0 4 R >>");
  PageDocument document(pdf);
  EXPECT_EQ(document.Load().get(), nullptr);
  EXPECT_EQ(document->PDF_GetLastError(), 0u);
}

TEST(ImageExtraction, FormXObjectIsNotEntered) {
  EXPECT_EQ(Failure({.image = "/Subtype/Form /Resources <</XObject <</Im1 4 0 R >> >>"}), 0u);
}

// Numbers of the image

TEST(ImageExtraction, NumbersOfTheImageMayBeReferences) {
  PdfBuilder pdf = OnePage{.image =
                               "/Subtype/Image /Width 7 0 R /Height 8 0 R "
                               "/BitsPerComponent 9 0 R",
                           .length = "10 0 R"}
                       .Build();
  pdf.Object(7, "8");
  pdf.Object(8, "2");
  pdf.Object(9, "1");
  pdf.Object(10, "2");
  PageDocument document(pdf);
  EXPECT_EQ(ReadDib(document.Load()).rows, (std::vector<Bytes>{{'A', 0, 0, 0}, {'B', 0, 0, 0}}));
}

TEST(ImageExtraction, ImageThatLacksANumberGivesNullWithoutACode) {
  for (char const* const keys : {"/Subtype/Image /Height 2 /BitsPerComponent 1",
                                 "/Subtype/Image /Width 8 /BitsPerComponent 1",
                                 "/Subtype/Image /Width 8 /Height 2 /ImageMask true"}) {
    EXPECT_EQ(Failure({.image = keys}), 0u) << keys;
  }
  EXPECT_EQ(Failure({.length = "(none)"}), 0u);
}

TEST(ImageExtraction, ImageMaskWithBitsIsBilevel) {
  EXPECT_EQ(Extract({.image = kBilevel + "/ImageMask true"}).header.biBitCount, 1);
}

// Decode and colours

BYTE FirstColour(std::string const& keys) { return Extract({.image = kBilevel + keys}).table[0]; }

TEST(ImageExtraction, DecodeThatInvertsReversesTheColours) {
  EXPECT_EQ(FirstColour(""), 0);
  EXPECT_EQ(FirstColour("/Decode [0 1]"), 0);
  EXPECT_EQ(FirstColour("/Decode [1 0]"), 255);
  EXPECT_EQ(FirstColour("/Decode [1 1]"), 0);
  EXPECT_EQ(FirstColour("/Decode [0 0]"), 0);
  EXPECT_EQ(FirstColour("/Decode[1 0]"), 255);
}

// Real numbers are none to the scan; the first clean ones after them are taken, /Length among
// them.
TEST(ImageExtraction, DecodeWithRealNumbersIsNormal) {
  EXPECT_EQ(FirstColour("/Decode [1.0 0.0]"), 0);
}

TEST(ImageExtraction, DecodeParmsAreNoDecode) { EXPECT_EQ(FirstColour("/DecodeParms [1 0]"), 0); }

TEST(ImageExtraction, DecodeOfOneLoadDoesNotReachTheNext) {
  PdfBuilder pdf = OnePage{.image = kBilevel + "/Decode [1 0]"}.Build();
  PageDocument document(pdf);
  document.Load();
  EXPECT_EQ(SessionProbe::DecodeNormal(*document), 0u);
  SessionProbe::BlackIs1(*document) = 1;
  document.Load(7);
  EXPECT_EQ(SessionProbe::DecodeNormal(*document), 1u);
  EXPECT_EQ(SessionProbe::BlackIs1(*document), 0u);
}

OnePage Indexed(std::string const& colour_space, int bits = 8) {
  return {.image = "/Subtype/Image /Width 3 /Height 1 /BitsPerComponent " + std::to_string(bits) +
                   " /ColorSpace " + colour_space,
          .data = "ABC"};
}

TEST(ImageExtraction, IndexedImageHasThePaletteOfItsLookupStream) {
  PdfBuilder pdf = Indexed("[/Indexed /DeviceRGB 255 6 0 R]").Build();
  std::string lookup;
  for (int i = 0; i < 256; ++i) lookup += {char(i + 1), char(i + 2), char(i + 3)};
  pdf.Stream(6, "", lookup);
  PageDocument document(pdf);
  DibContent const dib = ReadDib(document.Load());
  EXPECT_EQ(dib.header.biBitCount, 8);
  EXPECT_EQ(dib.Row(0, 3), (Bytes{'A', 'B', 'C'}));
  for (size_t i = 0; i < 256; ++i) {
    EXPECT_EQ(dib.table[4 * i], BYTE(i + 3));
    EXPECT_EQ(dib.table[4 * i + 1], BYTE(i + 2));
    EXPECT_EQ(dib.table[4 * i + 2], BYTE(i + 1));
    EXPECT_EQ(dib.table[4 * i + 3], 0);
  }
}

TEST(ImageExtraction, IndexedImageWithoutLookupStreamGivesNullWithoutACode) {
  for (char const* const space :
       {"[/Indexed /DeviceRGB 1 <000000FFFFFF>]", "[/Indexed /DeviceGray 255 6 0 R]",
        "[/Indexed 6 0 R 255 6 0 R]"}) {
    EXPECT_EQ(Failure(Indexed(space)), 0u) << space;
  }
}

TEST(ImageExtraction, OtherColoursOf8BitsAreTakenForRgb) {
  for (char const* const space : {"/DeviceRGB", "/DeviceGray", "/DeviceCMYK", "7 0 R"}) {
    DibContent const dib =
        Extract({.image = "/Subtype/Image /Width 1 /Height 1 /BitsPerComponent 8 /ColorSpace " +
                          std::string(space),
                 .data = "RGB"});
    EXPECT_EQ(dib.rows[0], (Bytes{'B', 'G', 'R', 0})) << space;
  }
}

// The polarity comes from the palette: its first colour is not black.
TEST(ImageExtraction, IndexedImageOfOneBitTakesItsPolarityFromThePalette) {
  for (bool const white_first : {false, true}) {
    PdfBuilder pdf = Indexed("[/Indexed /DeviceRGB 1 6 0 R]", 1).Build();
    pdf.Stream(6, "",
               white_first ? std::string(3, '\xFF') + std::string(3, '\0')
                           : std::string(3, '\0') + std::string(3, '\xFF'));
    PageDocument document(pdf);
    DibContent const dib = ReadDib(document.Load());
    EXPECT_EQ(dib.header.biBitCount, 1);
    EXPECT_EQ(dib.table[0], white_first ? 255 : 0);
  }
}

// Orientation

TEST(ImageExtraction, ContentThatFlipsKeepsTheOrderOfTheRows) {
  EXPECT_FALSE(IsFlipped({.content = kUpright}));
  EXPECT_TRUE(IsFlipped({.content = kFlip}));
}

// The page whose content, object 7, has these keys and data.
bool IsFlippedBy(std::string const& keys, std::string const& data, std::string const& length = {},
                 std::string const& eol = "\n") {
  OnePage page;
  page.page += " /Contents 7 0 R";
  page.eol = eol;
  PdfBuilder pdf = page.Build();
  pdf.Stream(7, keys, data, length);
  PageDocument document(pdf);
  return ReadDib(document.Load()).rows[0][0] == 'B';
}

TEST(ImageExtraction, FlateContentIsInflated) {
  EXPECT_TRUE(IsFlippedBy("/Filter/FlateDecode", Deflate(kFlip)));
  EXPECT_TRUE(IsFlippedBy("/Filter/FlateDecode", Deflate(kFlip), {}, "\r\n"));
  EXPECT_FALSE(IsFlippedBy("/Filter/FlateDecode", Deflate(kUpright)));
}

TEST(ImageExtraction, PlainContentMayHaveEitherLineEnd) {
  EXPECT_TRUE(IsFlippedBy("", kFlip, {}, "\r\n"));
  EXPECT_TRUE(IsFlippedBy("", " \r\n[ " + kFlip));
}

TEST(ImageExtraction, ContentOfOtherFiltersIsReadAsItIs) {
  EXPECT_TRUE(IsFlippedBy("/Filter/ASCIIHexDecode", kFlip));
}

TEST(ImageExtraction, ContentIsInflatedToTenTimesItsSize) {
  for (int const blanks : {100, 20000}) {
    std::string const packed = Deflate(std::string(static_cast<size_t>(blanks), ' ') + kFlip);
    bool const within = packed.size() * 10 >= static_cast<size_t>(blanks) + kFlip.size();
    EXPECT_EQ(IsFlippedBy("/Filter/FlateDecode", packed), within);
    EXPECT_EQ(within, blanks == 100);
  }
}

// The room is ten times /Length, whatever the object holds of it.
TEST(ImageExtraction, LengthBeyondTheContentMakesRoomForWhatItInflatesTo) {
  std::string const packed = Deflate(std::string(20000, ' ') + kFlip);
  EXPECT_FALSE(IsFlippedBy("/Filter/FlateDecode", packed));
  EXPECT_TRUE(IsFlippedBy("/Filter/FlateDecode", packed, "2005"));
  EXPECT_FALSE(IsFlippedBy("/Filter/FlateDecode", packed, "2000"));
}

TEST(ImageExtraction, LengthZeroOfFlateContentIsUpright) {
  EXPECT_FALSE(IsFlippedBy("/Filter/FlateDecode", Deflate(kFlip), "0"));
}

TEST(ImageExtraction, DamagedFlateContentIsTestedAsFarAsItCame) {
  std::string packed = Deflate(kFlip);
  packed.back() = static_cast<char>(packed.back() + 1);
  EXPECT_TRUE(IsFlippedBy("/Filter/FlateDecode", packed));
  EXPECT_FALSE(IsFlippedBy("/Filter/FlateDecode", "no Flate data at all"));
}

TEST(ImageExtraction, FlateContentWithoutLengthGivesNullWithoutACode) {
  PdfBuilder pdf = OnePage{.page = OnePage{}.page + " /Contents 7 0 R"}.Build();
  pdf.Stream(7, "/Filter/FlateDecode", "no number here", "(none)");
  PageDocument document(pdf);
  EXPECT_EQ(document.Load().get(), nullptr);
  EXPECT_EQ(document->PDF_GetLastError(), 0u);
}

TEST(ImageExtraction, ContentWithoutStreamIsUpright) {
  PdfBuilder pdf = OnePage{.page = OnePage{}.page + " /Contents 7 0 R"}.Build();
  pdf.Object(7, "<</Filter/FlateDecode /Length 10 >> " + kFlip);
  PageDocument document(pdf);
  EXPECT_EQ(ReadDib(document.Load()).rows[0][0], 'A');
}

TEST(ImageExtraction, ContentThatIsMissingIsUpright) {
  EXPECT_FALSE(IsFlipped({.page = OnePage{}.page + " /Contents 0 0 R"}));
  EXPECT_FALSE(IsFlipped({.page = OnePage{}.page + " /Contents null"}));
}

TEST(ImageExtraction, OfContentInAnArrayTheFirstElementCounts) {
  for (bool const first_flips : {false, true}) {
    PdfBuilder pdf = OnePage{.page = OnePage{}.page + " /Contents [7 0 R 8 0 R ]"}.Build();
    pdf.Stream(7, "", first_flips ? kFlip : kUpright);
    pdf.Stream(8, "", first_flips ? kUpright : kFlip);
    PageDocument document(pdf);
    EXPECT_EQ(ReadDib(document.Load()).rows[0][0], first_flips ? 'B' : 'A');
  }
}

// Data

// Nothing is decrypted: the bytes of the stream are those of the picture.
TEST(ImageExtraction, ImageOfAnEncryptedDocumentComesOutAsStored) {
  PdfBuilder pdf = OnePage{.data = "\x9C\x31"}.Build();
  pdf.Object(9, "<</Filter/Standard /V 1 /R 2 >>");
  PageDocument document(pdf, {.keys = "/Root 1 0 R /Encrypt 9 0 R"});
  DibContent const dib = ReadDib(document.Load());
  EXPECT_EQ(dib.rows, (std::vector<Bytes>{{0x9C, 0, 0, 0}, {0x31, 0, 0, 0}}));
  EXPECT_EQ(document->PDF_GetLastError(), 0u);
}

TEST(ImageExtraction, DataThatBeginWithDelimitersLoseThem) {
  DibContent const dib = Extract({.data = " [AB"});
  EXPECT_EQ(dib.rows, (std::vector<Bytes>{{'A', 0, 0, 0}, {'B', 0, 0, 0}}));
}

// Kept: the byte after the keyword goes whatever it is; a tab is no delimiter.
TEST(ImageExtraction, ByteBehindTheKeywordIsTakenForTheLineEnd) {
  PdfBuilder pdf = OnePage{.page = "/Resources <</XObject <</Im0 7 0 R >> >>"}.Build();
  pdf.Object(7, "<<" + kBilevel + "/Length 2 >>\nstream\tAB\nendstream");
  PageDocument document(pdf);
  EXPECT_EQ(ReadDib(document.Load()).rows, (std::vector<Bytes>{{'A', 0, 0, 0}, {'B', 0, 0, 0}}));
}

TEST(ImageExtraction, LineFeedOfACrLfLineEndIsSteppedOver) {
  EXPECT_EQ(Extract({.eol = "\r\n"}).rows[0], (Bytes{'A', 0, 0, 0}));
}

// What follows the object's last byte is 0; "\nendstream\nendobj\n" still belongs to it.
TEST(ImageExtraction, LengthPastTheObjectIsFilledUpWithZero) {
  DibContent const dib =
      Extract({.image = "/Subtype/Image /Width 320 /Height 2 /BitsPerComponent 1", .length = "80"});
  EXPECT_EQ(dib.Row(0, 3), (Bytes{'A', 'B', '\n'}));
  EXPECT_EQ(dib.Row(1, 40), Bytes(40));
}

TEST(ImageExtraction, GiganticLengthTakesWhatIsThere) {
  DibContent const dib = Extract({.length = "4000000000"});
  EXPECT_EQ(dib.rows[1], (Bytes{'B', 0, 0, 0}));
}

TEST(ImageExtraction, LengthZeroGivesNullWithoutACode) { EXPECT_EQ(Failure({.length = "0"}), 0u); }

TEST(ImageExtraction, ImageWithoutStreamIsCode24) {
  PdfBuilder pdf = OnePage{.page = "/Resources <</XObject <</Im0 7 0 R >> >>"}.Build();
  pdf.Object(7, "<<" + kBilevel + "/Length 2 >>");
  PageDocument document(pdf);
  EXPECT_EQ(document.Load().get(), nullptr);
  EXPECT_EQ(document->PDF_GetLastError(), 24u);
}

TEST(ImageExtraction, PolarityAndKindStandWhereTheDataAreNotFound) {
  PdfBuilder pdf = OnePage{.page = "/Resources <</XObject <</Im0 7 0 R >> >>"}.Build();
  pdf.Object(7, "<<" + kBilevel + "/Decode [1 0] /Filter /CCITTFaxDecode /BlackIs1 true >>");
  PageDocument document(pdf);
  EXPECT_EQ(document.Load().get(), nullptr);
  EXPECT_EQ(SessionProbe::DecodeNormal(*document), 0u);
  EXPECT_EQ(SessionProbe::BlackIs1(*document), 1u);
  EXPECT_EQ(SessionProbe::ProcSetFlags(*document), 1u);
}

TEST(ImageExtraction, KeywordAtTheEndOfTheObjectLeavesNoData) {
  PdfBuilder pdf = OnePage{.page = "/Resources <</XObject <</Im0 7 0 R >> >>"}.Build();
  pdf.Text("7 0 obj <<" + kBilevel + "/Length 2 >> stream\n").Row(7, {1, pdf.Size(), 0});
  size_t const start = pdf.Content().rfind("7 0 obj");
  pdf.Row(7, {1, start, 0});
  PageDocument document(pdf);
  DibContent const dib = ReadDib(document.Load());
  EXPECT_EQ(dib.rows.size(), 2u);
}

TEST(ImageExtraction, PictureTooLargeIsCode10) {
  OnePage page{.image =
                   "/Subtype/Image /Width 2000000000 /Height 2000000000 "
                   "/BitsPerComponent 8 /Filter/FlateDecode"};
  EXPECT_EQ(Failure(page), 10u);
}

TEST(ImageExtraction, RawPictureTooLargeIsMinusOneWithCode10) {
  PdfBuilder pdf =
      OnePage{.image = "/Subtype/Image /Width 2000000000 /Height 2000000000 /BitsPerComponent 8"}
          .Build();
  PageDocument document(pdf);
  DWORD compression = 77;
  DWORD kind = 77;
  EXPECT_EQ(document->LoadImageAndInfoFromPDF(0, &compression, &kind), INVALID_HANDLE_VALUE);
  EXPECT_EQ(document->PDF_GetLastError(), 10u);
  EXPECT_EQ(compression, 32u);
  EXPECT_EQ(kind, 4u);
}

}  // namespace
}  // namespace test
