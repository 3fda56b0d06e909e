// The choice of the decoder by the filters that an image object mentions, and what comes back
// beside the bitmap.
#include <gtest/gtest.h>
#include <tests/image/mocks/mock_siblings.h>
#include <tests/support/page_document.h>
#include <tests/support/preloaded_sibling.h>
#include <tests/support/session_probe.h>

#include <string>

namespace test {
namespace {

std::string const kBilevel = "/Subtype/Image /Width 8 /Height 2 /BitsPerComponent 1 ";
std::string const kFlip = "q 100 0 0 -100 0 100 cm /Im0 Do Q ";

std::string MockPath(std::string const& sibling) {
  return std::string(MOCKS_DIR) + "/full/" + sibling + ".dll";
}

struct Loaded {
  Block bitmap;
  DWORD error = 0;
  DWORD compression = 77;
  DWORD kind = 77;
};

Loaded LoadFrom(PdfBuilder& pdf, DWORD page = 0) {
  PageDocument document(pdf);
  Loaded loaded;
  loaded.bitmap = Block(document->LoadImageAndInfoFromPDF(page, &loaded.compression, &loaded.kind));
  loaded.error = document->PDF_GetLastError();
  return loaded;
}

Loaded Load(OnePage const& page) {
  PdfBuilder pdf = page.Build();
  return LoadFrom(pdf);
}

TEST(ImageFilter, ImageWithoutFilterIsRaw) {
  Loaded const loaded = Load({.image = kBilevel});
  EXPECT_EQ(loaded.compression, 32u);
  EXPECT_EQ(loaded.kind, 1u);
  EXPECT_EQ(ReadDib(loaded.bitmap).rows[0][0], 'A');
}

TEST(ImageFilter, ImageMaskOfOneBitWithoutColourSpaceIsBilevel) {
  Loaded const loaded = Load({.image = kBilevel + "/ImageMask true"});
  EXPECT_EQ(loaded.kind, 1u);
  EXPECT_EQ(ReadDib(loaded.bitmap).header.biBitCount, 1);
}

TEST(ImageFilter, FlateImageIsInflated) {
  Loaded const loaded = Load({.image = kBilevel + "/Filter/FlateDecode", .data = Deflate("AB")});
  EXPECT_EQ(loaded.compression, 512u);
  EXPECT_EQ(ReadDib(loaded.bitmap).rows[1][0], 'B');
}

TEST(ImageFilter, DecodeThatInvertsGivesAFlateImageTheEntries255And0) {
  Loaded const loaded =
      Load({.image = kBilevel + "/Decode [1 0] /Filter/FlateDecode", .data = Deflate("AB")});
  EXPECT_EQ(ReadDib(loaded.bitmap).table, (Bytes{255, 255, 255, 255, 0, 0, 0, 0}));
}

TEST(ImageFilter, FlippedFlateImageKeepsTheOrderOfTheRows) {
  Loaded const loaded =
      Load({.image = kBilevel + "/Filter/FlateDecode", .data = Deflate("AB"), .content = kFlip});
  EXPECT_EQ(ReadDib(loaded.bitmap).rows[0][0], 'B');
}

TEST(ImageFilter, RunLengthImageIsNeverFlipped) {
  std::string const keys =
      "/Subtype/Image /Width 2 /Height 2 /BitsPerComponent 8 /Filter/RunLengthDecode";
  for (std::string const& content : {std::string(), kFlip}) {
    Loaded const loaded = Load({.image = keys,
                                .data = "\xFF"
                                        "A\xFF"
                                        "B",
                                .content = content});
    EXPECT_EQ(loaded.compression, 1024u);
    EXPECT_EQ(loaded.kind, 4u);
    EXPECT_EQ(ReadDib(loaded.bitmap).Row(0, 2), (Bytes{'A', 'A'}));
  }
}

TEST(ImageFilter, CcittImageIsNeverFlipped) {
  PreloadedSibling<MockCadwick> const mock(MockPath("Cadwick"));
  Loaded const loaded = Load({.image = kBilevel + "/Filter/CCITTFaxDecode", .content = kFlip});
  EXPECT_EQ(loaded.compression, 2048u);
  EXPECT_EQ(ReadDib(loaded.bitmap).rows[0][0], 'A');
  EXPECT_EQ(mock->opened_bytes, 2u);
  EXPECT_EQ(mock->last_height, 2);
}

TEST(ImageFilter, JpegImageTakesTheResolutionOfThePage) {
  PreloadedSibling<MockRennick> const mock(MockPath("Rennick"));
  Loaded const loaded = Load({.image = kBilevel + "/Filter/DCTDecode", .content = kFlip});
  EXPECT_EQ(loaded.compression, 4096u);
  DibContent const dib = ReadDib(loaded.bitmap);
  EXPECT_EQ(dib.header.biBitCount, 8);         // the sibling's
  EXPECT_EQ(dib.header.biXPelsPerMeter, 226);  // 8 * 2834 / 100, over the sibling's 1234
  EXPECT_EQ(dib.header.biYPelsPerMeter, 56);   // 2 * 2834 / 100
  EXPECT_EQ(mock->bytes, 2u);
}

TEST(ImageFilter, BitmapOfTheJpegSiblingWithoutAHeaderIsLeftAlone) {
  PreloadedSibling<MockRennick> const mock(MockPath("Rennick"));
  mock->fails = 1;
  Loaded const loaded = Load({.image = kBilevel + "/Filter/DCTDecode"});
  EXPECT_EQ(loaded.bitmap.get(), nullptr);
  EXPECT_EQ(loaded.error, 27u);
  // The null of a decoder is a result too.
  EXPECT_EQ(loaded.compression, 4096u);
  EXPECT_EQ(loaded.kind, 1u);
}

struct BlackIs1 {
  char const* parms;
  BYTE first;  // of the colour table; 255 is what data without the key have
};

class ImageBlackIs1 : public testing::TestWithParam<BlackIs1> {};

TEST_P(ImageBlackIs1, OfACcittImageSetsItsColours) {
  PreloadedSibling<MockCadwick> const mock(MockPath("Cadwick"));
  Loaded const loaded = Load(
      {.image = kBilevel + "/Filter/CCITTFaxDecode /DecodeParms <<" + GetParam().parms + " >>"});
  EXPECT_EQ(ReadDib(loaded.bitmap).table[0], GetParam().first);
}

INSTANTIATE_TEST_SUITE_P(Value, ImageBlackIs1,
                         testing::Values(BlackIs1{"/K -1", 255}, BlackIs1{"/BlackIs1 true", 0},
                                         BlackIs1{"/BlackIs1 false", 255},
                                         BlackIs1{"/BlackIs1 TrUe", 0},
                                         BlackIs1{"/BlackIs1 truer", 255},
                                         BlackIs1{"/BlackIs1 tru", 255},
                                         BlackIs1{"/BlackIs1 abcdefghijkl", 255}));

TEST(ImageFilter, BlackIs1OfOtherImagesIsNotRead) {
  Loaded const loaded = Load({.image = kBilevel + "/DecodeParms <</BlackIs1 true >>"});
  EXPECT_EQ(ReadDib(loaded.bitmap).table[0], 0);
}

// "false" sets the state back that the palette has set.
TEST(ImageFilter, BlackIs1StandsOverThePalette) {
  PreloadedSibling<MockCadwick> const mock(MockPath("Cadwick"));
  for (char const* const parms : {"", "/BlackIs1 false "}) {
    PdfBuilder pdf = OnePage{.image = kBilevel + "/Filter/CCITTFaxDecode " + parms +
                                      "/ColorSpace [/Indexed /DeviceRGB 1 6 0 R]"}
                         .Build();
    pdf.Stream(6, "", "\xFF\xFF\xFF___");
    PageDocument document(pdf);
    document.Load();
    EXPECT_EQ(SessionProbe::BlackIs1(*document), *parms == 0 ? 1u : 0u);
  }
}

TEST(ImageFilter, FiltersThatNobodyDecodesAreCode29) {
  for (char const* const filter :
       {"/LZWDecode", "/ASCIIHexDecode", "/JPXDecode", "/JBIG2Decode",
        "[/ASCII85Decode /DCTDecode]", "[/ASCII85Decode /FlateDecode]", "/ASCII85Decode"}) {
    Loaded const loaded = Load({.image = kBilevel + "/Filter " + filter});
    EXPECT_EQ(loaded.bitmap.get(), nullptr) << filter;
    EXPECT_EQ(loaded.error, 29u) << filter;
    EXPECT_EQ(loaded.compression, 77u) << filter;
    EXPECT_EQ(loaded.kind, 77u) << filter;
  }
}

TEST(ImageFilter, OfFlateAndJpegFlateIsUndone) {
  Loaded const loaded =
      Load({.image = kBilevel + "/Filter [/FlateDecode /DCTDecode]", .data = Deflate("AB")});
  EXPECT_EQ(loaded.compression, 512u + 4096u);
  EXPECT_EQ(ReadDib(loaded.bitmap).rows[0][0], 'A');
}

TEST(ImageFilter, OfRunLengthAndCcittCcittIsUndone) {
  PreloadedSibling<MockCadwick> const mock(MockPath("Cadwick"));
  Loaded const loaded = Load({.image = kBilevel + "/Filter [/RunLengthDecode /CCITTFaxDecode]"});
  EXPECT_EQ(loaded.compression, 1024u + 2048u);
  EXPECT_EQ(mock->decodes, 1);
}

TEST(ImageFilter, OfJpegAndCcittJpegIsUndone) {
  PreloadedSibling<MockRennick> const mock(MockPath("Rennick"));
  Load({.image = kBilevel + "/Filter [/CCITTFaxDecode /DCTDecode]"});
  EXPECT_EQ(mock->loads, 1);
}

// Without the word Filter the image is raw, whatever else it mentions.
TEST(ImageFilter, FilterNameWithoutTheKeyIsRaw) {
  Loaded const loaded = Load({.image = kBilevel + "/F /FlateDecode"});
  EXPECT_EQ(loaded.compression, 32u + 512u);
  EXPECT_EQ(ReadDib(loaded.bitmap).rows[0][0], 'A');
}

TEST(ImageFilter, OutValuesAreNotWrittenWhenTheImageIsNotFound) {
  Loaded const loaded = Load({.image = "/Subtype/Image /Width 8 /Height 2"});
  EXPECT_EQ(loaded.bitmap.get(), nullptr);
  EXPECT_EQ(loaded.compression, 77u);
  EXPECT_EQ(loaded.kind, 77u);
}

TEST(ImageFilter, OutValuesAreNotWrittenForALengthOfZero) {
  for (char const* const filter : {"", "/Filter/FlateDecode", "/Filter/RunLengthDecode"}) {
    Loaded const loaded = Load({.image = kBilevel + filter, .length = "0"});
    EXPECT_EQ(loaded.bitmap.get(), nullptr) << filter;
    EXPECT_EQ(loaded.error, 0u) << filter;
    EXPECT_EQ(loaded.compression, 77u) << filter;
    EXPECT_EQ(loaded.kind, 77u) << filter;
  }
}

// The data are looked for before the decoder is chosen.
TEST(ImageFilter, ImageWithoutStreamIsCode24WhateverItsFilter) {
  PdfBuilder pdf = OnePage{.page = "/Resources <</XObject <</Im0 7 0 R >> >>"}.Build();
  pdf.Object(7, "<<" + kBilevel + "/Filter/ASCII85Decode /Length 2 >>");
  Loaded const loaded = LoadFrom(pdf);
  EXPECT_EQ(loaded.bitmap.get(), nullptr);
  EXPECT_EQ(loaded.error, 24u);
  EXPECT_EQ(loaded.compression, 77u);
  EXPECT_EQ(loaded.kind, 77u);
}

TEST(ImageFilter, OutValuesAreNotWrittenForAPageOutOfRange) {
  PdfBuilder pdf = OnePage{.image = kBilevel}.Build();
  Loaded const loaded = LoadFrom(pdf, 1);
  EXPECT_EQ(loaded.bitmap.get(), nullptr);
  EXPECT_EQ(loaded.error, 31u);
  EXPECT_EQ(loaded.compression, 77u);
  EXPECT_EQ(loaded.kind, 77u);
}

TEST(ImageFilter, IndexedImageOf8BitsIsOfKindTwo) {
  PdfBuilder pdf = OnePage{.image =
                               "/Subtype/Image /Width 2 /Height 1 /BitsPerComponent 8 "
                               "/ColorSpace [/Indexed /DeviceRGB 255 6 0 R]"}
                       .Build();
  pdf.Stream(6, "", std::string(768, 'x'));
  Loaded const loaded = LoadFrom(pdf);
  EXPECT_EQ(ReadDib(loaded.bitmap).header.biBitCount, 8);
  EXPECT_EQ(loaded.compression, 32u);
  EXPECT_EQ(loaded.kind, 2u);
}

// Its lookup is a string, which is no palette.
TEST(ImageFilter, IndexedImageOfOneBitNeedsNoPalette) {
  Loaded const loaded =
      Load({.image = kBilevel + "/ColorSpace [/Indexed /DeviceRGB 1 <FFFFFF000000>]"});
  DibContent const dib = ReadDib(loaded.bitmap);
  EXPECT_EQ(loaded.kind, 1u);
  EXPECT_EQ(dib.rows, (std::vector<Bytes>{{'A', 0, 0, 0}, {'B', 0, 0, 0}}));
  EXPECT_EQ(dib.table, (Bytes{0, 0, 0, 0, 255, 255, 255, 255}));
}

TEST(ImageFilter, KindOfTheLoadStaysInTheSession) {
  PdfBuilder pdf = OnePage{.image = kBilevel}.Build();
  PageDocument document(pdf);
  document.Load();
  EXPECT_EQ(SessionProbe::ProcSetFlags(*document), 1u);
}

}  // namespace
}  // namespace test
