// Whole documents, byte for byte.
#include <gtest/gtest.h>
#include <zlib.h>

#include "tests/support/dib.h"
#include "tests/support/document.h"
#include "tests/support/golden.h"

namespace {

using test::DibSpec;
using test::GoldenDocument;
using test::kGoldenInfo;
using test::kGoldenOutlines;
using test::MakeDib;
using test::MemoryDocument;
using test::WithoutDate;

constexpr LONG k72Dpi = 2835;  // pixels per metre

// 10 by 2 pixels: a black frame on the left, one black pixel on the right; 10 by 2 points.
test::Block Bilevel(std::vector<RGBQUAD> palette = {}) {
  return MakeDib({.width = 10, .height = 2, .bits = 1, .x_per_metre = k72Dpi, .palette = palette},
                 [](LONG x, LONG y) { return x == 0 || (x == 9 && y == 1) ? 0u : 1u; });
}

// 3 by 2 pixels, the top row 1 1 2, the lower one 3 3 3; a palette of three colours and black.
test::Block Indexed() {
  std::vector<RGBQUAD> palette(256, RGBQUAD{0, 0, 0, 0});
  palette[1] = {0x30, 0x20, 0x10, 0};
  palette[2] = {0x60, 0x50, 0x40, 0};
  palette[3] = {0x90, 0x80, 0x70, 0};
  return MakeDib({.width = 3, .height = 2, .bits = 8, .x_per_metre = k72Dpi, .palette = palette},
                 [](LONG x, LONG y) { return y == 1 ? 3u : (x == 2 ? 2u : 1u); });
}

// 2 by 2 pixels: red, green over blue, and "abc".
test::Block Color() {
  return MakeDib({.width = 2, .height = 2, .bits = 24, .x_per_metre = k72Dpi}, [](LONG x, LONG y) {
    if (y == 0) return x == 0 ? 0xFF0000u : 0x00FF00u;
    return x == 0 ? 0x0000FFu : 0x616263u;
  });
}

std::string PagesRoot(std::string const& kids, int count) {
  return "3 0 obj\n<<\n/Type /Pages\n/Count " + std::to_string(count) + "\n/Kids [ \n" + kids +
         "]\n>>\nendobj\n";
}

std::string Catalog(int number) {
  return std::to_string(number) +
         " 0 obj\n<<\n/Type /Catalog\n/Pages 3 0 R\n/Outlines 2 0 R\n>>\nendobj\n";
}

std::string Saved(test::Block const& dib, DWORD compression, int quality = 0) {
  MemoryDocument document;
  document.Create();
  EXPECT_EQ(document->SaveDIBAsColorPDFPageW(dib, test::kNoLibrary, compression, quality), 1);
  return WithoutDate(document.Finish());
}

TEST(GoldenDocument, WithoutPages) {
  MemoryDocument document;
  document.Create();
  // Header 9 + 7 = 16; Info 8 + 3 + 33 + 65 + 45 + 28 + 3 + 7 = 192; Outlines 8 + 3 + 16 + 9 + 10
  // = 46; pages root 8 + 3 + 13 + 9 + 9 + 2 + 10 = 54; catalog 8 + 3 + 15 + 13 + 16 + 10 = 65.
  EXPECT_EQ(WithoutDate(document.Finish()),
            std::string(test::kGoldenHeader) + kGoldenInfo + kGoldenOutlines +
                "3 0 obj\n<<\n/Type /Pages\n/Count 0\n/Kids [ \n]\n>>\nendobj\n"
                "4 0 obj\n<<\n/Type /Catalog\n/Pages 3 0 R\n/Outlines 2 0 R\n>>\nendobj\n"
                "xref\n0 5\n"
                "0000000000 65535 f \n"
                "0000000016 00000 n \n"
                "0000000208 00000 n \n"
                "0000000254 00000 n \n"
                "0000000308 00000 n \n"
                "trailer\n<<\n/Size 5\n/Root 4 0 R\n/Info 1 0 R\n>>\n"
                "startxref\n373\n%%EOF\n");
}

std::vector<std::string> BilevelPage(std::string const& decode, std::string const& data) {
  return {kGoldenInfo, kGoldenOutlines, "4 0 obj\n[/PDF /ImageB ] \nendobj\n",
          "5 0 obj\n<<\n/Type /XObject\n/Subtype /Image\n/Width 10\n/Height 2\n"
          "/BitsPerComponent 1\n/Decode " +
              decode + "\n/ColorSpace /DeviceGray\n/Length 6 0 R \n/ImageMask false\n>>\nstream\n" +
              data + ">\nendstream\nendobj\n",
          "6 0 obj\n6\nendobj\n",
          "7 0 obj\n<<\n/Type /Page\n/Parent 3 0 R\n/MediaBox [0 0 10 2]\n/Resources <<\n"
          "/XObject << /Im5 5 0 R >> \n/ProcSet 4 0 R\n>>\n/Contents 8 0 R\n>>\nendobj\n",
          "8 0 obj\n<< /Length 9 0 R >>\nstream\n"
          "1.0000 0.0000 0.0000 1.0000 0.0000 0.0000 cm\n"
          "10.0000 0.0000 0.0000  2.0000 0.0000 0.0000 cm\n"
          "/Im5 Do\nendstream\nendobj\n",
          // 45 + 47 + 8 bytes
          "9 0 obj\n100\nendobj\n", PagesRoot("7 0 R \n", 1), Catalog(10)};
}

TEST(GoldenDocument, RawBilevelPage) {
  // Top row 0111111111, below 0111111110, each padded to two bytes.
  EXPECT_EQ(Saved(Bilevel(), PDF_COMPRESSION_NONE),
            GoldenDocument(BilevelPage("[0 1]", "\x7F\xC0\x7F\x80")));
}

TEST(GoldenDocument, RawBilevelPageWithAWhiteFirstColourIsToldByDecode) {
  EXPECT_EQ(Saved(Bilevel({test::kWhite, test::kBlack}), PDF_COMPRESSION_FLAG_NONE),
            GoldenDocument(BilevelPage("[1 0]", "\x7F\xC0\x7F\x80")));
}

std::vector<std::string> IndexedPage(std::string const& filter, std::string const& data,
                                     int length) {
  std::string palette(3 * 256, '\0');
  palette.replace(3, 9, "\x10\x20\x30\x40\x50\x60\x70\x80\x90");
  return {kGoldenInfo,
          kGoldenOutlines,
          "4 0 obj\n[/PDF /ImageI] \nendobj\n",
          "5 0 obj\n<<\n/Type /XObject\n/Subtype /Image\n/Width 3\n/Height 2\n"
          "/BitsPerComponent 8\n/ColorSpace [/Indexed /DeviceRGB 255 7 0 R ]\n/Length 6 0 R \n" +
              filter + ">>\nstream\n" + data + ">\nendstream\nendobj\n",
          "6 0 obj\n" + std::to_string(length) + "\nendobj\n",
          "7 0 obj\n<<\n/Length 8 0 R \n>>\nstream\n" + palette + ">\nendstream\nendobj\n",
          "8 0 obj\n770\nendobj\n",
          "9 0 obj\n<<\n/Type /Page\n/Parent 3 0 R\n/MediaBox [0 0 3 2]\n/Resources <<\n"
          "/XObject << /Im5 5 0 R >> \n/ProcSet 4 0 R\n>>\n/Contents 10 0 R\n>>\nendobj\n",
          "10 0 obj\n<< /Length 11 0 R >>\nstream\n"
          "1.0000 0.0000 0.0000 1.0000 0.0000 0.0000 cm\n"
          "3.0000 0.0000 0.0000  2.0000 0.0000 0.0000 cm\n"
          "/Im5 Do\nendstream\nendobj\n",
          "11 0 obj\n99\nendobj\n",
          PagesRoot("9 0 R \n", 1),
          Catalog(12)};
}

TEST(GoldenDocument, RawIndexedPage) {
  EXPECT_EQ(Saved(Indexed(), PDF_COMPRESSION_NONE),
            GoldenDocument(IndexedPage("", "\x01\x01\x02\x03\x03\x03", 8)));
}

TEST(GoldenDocument, RunLengthIndexedPage) {
  // Runs of 2, 1 and, in the next row, 3; one unset byte; no end marker.
  std::string const pairs("\xFF\x01\x00\x02\xFE\x03\x00", 7);
  EXPECT_EQ(Saved(Indexed(), PDF_COMPRESSION_RUN_LENGTH),
            GoldenDocument(IndexedPage("/Filter /RunLengthDecode\n", pairs, 9)));
}

std::vector<std::string> ColorPage(std::string const& filter, std::string const& data,
                                   size_t length) {
  return {kGoldenInfo,
          kGoldenOutlines,
          "4 0 obj\n[/PDF /ImageC ] \nendobj\n",
          "5 0 obj\n<<\n/Type /XObject\n/Subtype /Image\n/Width 2\n/Height 2\n"
          "/BitsPerComponent 8\n/ColorSpace /DeviceRGB\n/Length 6 0 R \n" +
              filter + ">>\nstream\n" + data + ">\nendstream\nendobj\n",
          "6 0 obj\n" + std::to_string(length) + "\nendobj\n",
          "7 0 obj\n<<\n/Type /Page\n/Parent 3 0 R\n/MediaBox [0 0 2 2]\n/Resources <<\n"
          "/XObject << /Im5 5 0 R >> \n/ProcSet 4 0 R\n>>\n/Contents 8 0 R\n>>\nendobj\n",
          "8 0 obj\n<< /Length 9 0 R >>\nstream\n"
          "1.0000 0.0000 0.0000 1.0000 0.0000 0.0000 cm\n"
          "2.0000 0.0000 0.0000  2.0000 0.0000 0.0000 cm\n"
          "/Im5 Do\nendstream\nendobj\n",
          "9 0 obj\n99\nendobj\n",
          PagesRoot("7 0 R \n", 1),
          Catalog(10)};
}

constexpr size_t kColorBytes = 12;
std::string const kColorRows(
    "\xFF\x00\x00\x00\xFF\x00\x00\x00\xFF"
    "abc",
    kColorBytes);

TEST(GoldenDocument, RawColorPage) {
  EXPECT_EQ(Saved(Color(), PDF_COMPRESSION_NONE), GoldenDocument(ColorPage("", kColorRows, 14)));
}

TEST(GoldenDocument, StoredFlateColorPage) {
  // RFC 1950: header 78 01, one final stored block of 12 bytes, Adler-32. At level 0 every byte is
  // fixed by the format.
  std::string flate = std::string("\x78\x01\x01\x0C\x00\xF3\xFF", 7) + kColorRows;
  uLong const adler = adler32(adler32(0, nullptr, 0),
                              reinterpret_cast<Bytef const*>(kColorRows.data()), kColorBytes);
  for (int shift = 24; shift >= 0; shift -= 8) flate += static_cast<char>(adler >> shift);
  EXPECT_EQ(Saved(Color(), PDF_COMPRESSION_FLATE, 0),
            GoldenDocument(ColorPage("/Filter /FlateDecode\n", flate, flate.size() + 2)));
}

TEST(GoldenDocument, CrLfLineEndsCountInLengthsAndOffsets) {
  MemoryDocument document;
  document->SetChar13(1);
  document.Create();
  document->SaveDIBAsColorPDFPageW(Color(), test::kNoLibrary, PDF_COMPRESSION_NONE, 0);
  std::vector<std::string> objects = ColorPage("", kColorRows, 15);
  objects[7] = "9 0 obj\n102\nendobj\n";
  EXPECT_EQ(WithoutDate(document.Finish()), GoldenDocument(objects, "\r\n"));
}

TEST(GoldenDocument, CrLfLineEndsCountInThePaletteToo) {
  MemoryDocument document;
  document->SetChar13(1);
  document.Create();
  document->SaveDIBAsColorPDFPageW(Indexed(), test::kNoLibrary, PDF_COMPRESSION_NONE, 0);
  // Data, bracket and two bytes; each line of the contents has a byte more.
  std::vector<std::string> objects = IndexedPage("", "\x01\x01\x02\x03\x03\x03", 9);
  objects[6] = "8 0 obj\n771\nendobj\n";
  objects[9] = "11 0 obj\n102\nendobj\n";
  EXPECT_EQ(WithoutDate(document.Finish()), GoldenDocument(objects, "\r\n"));
}

TEST(GoldenDocument, SeveralPagesContinueTheNumbersWithoutAGap) {
  MemoryDocument document;
  document.Create();
  document->SaveDIBAsColorPDFPageW(Bilevel(), test::kNoLibrary, PDF_COMPRESSION_NONE, 0);
  document->SaveDIBAsColorPDFPageW(Color(), test::kNoLibrary, PDF_COMPRESSION_NONE, 0);
  std::vector<std::string> objects = BilevelPage("[0 1]", "\x7F\xC0\x7F\x80");
  objects.resize(objects.size() - 2);
  objects.insert(
      objects.end(),
      {"10 0 obj\n[/PDF /ImageC ] \nendobj\n",
       "11 0 obj\n<<\n/Type /XObject\n/Subtype /Image\n/Width 2\n/Height 2\n/BitsPerComponent 8\n"
       "/ColorSpace /DeviceRGB\n/Length 12 0 R \n>>\nstream\n" +
           kColorRows + ">\nendstream\nendobj\n",
       "12 0 obj\n14\nendobj\n",
       "13 0 obj\n<<\n/Type /Page\n/Parent 3 0 R\n/MediaBox [0 0 2 2]\n/Resources <<\n"
       "/XObject << /Im11 11 0 R >> \n/ProcSet 10 0 R\n>>\n/Contents 14 0 R\n>>\nendobj\n",
       "14 0 obj\n<< /Length 15 0 R >>\nstream\n1.0000 0.0000 0.0000 1.0000 0.0000 0.0000 cm\n"
       "2.0000 0.0000 0.0000  2.0000 0.0000 0.0000 cm\n/Im11 Do\nendstream\nendobj\n",
       "15 0 obj\n100\nendobj\n", PagesRoot("7 0 R \n13 0 R \n", 2), Catalog(16)});
  EXPECT_EQ(WithoutDate(document.Finish()), GoldenDocument(objects));
}

TEST(GoldenDocument, InformationStringsStandInTheInfoObject) {
  MemoryDocument document;
  document->SetTitleW(SORRELIN_TEXT("Ab"));
  document->SetKeywordsW(SORRELIN_TEXT("k"));
  document.Create();
  std::string info = kGoldenInfo;
  info.replace(info.find("/Title"), std::strlen("/Title (Converted Document)"),
               "/Title <FEFF00410062>\n/Keywords <FEFF006B>");
  EXPECT_EQ(WithoutDate(document.Finish()),
            GoldenDocument({info, kGoldenOutlines, PagesRoot("", 0), Catalog(4)}));
}

}  // namespace
