// Values of a page's image and content that are held by other objects, by either route.
#include <gtest/gtest.h>
#include <tests/support/page_document.h>

#include <memory>
#include <string>

namespace test {
namespace {

std::string const kFlip = "q 100 0 0 -100 0 100 cm /Im0 Do Q ";
std::vector<Bytes> const kUprightRows{{'A', 0, 0, 0}, {'B', 0, 0, 0}};
std::vector<Bytes> const kFlippedRows{{'B', 0, 0, 0}, {'A', 0, 0, 0}};

// A page whose content is object 7, which is to be added.
PdfBuilder WithContentIn7() { return OnePage{.page = OnePage{}.page + " /Contents 7 0 R"}.Build(); }

TEST(ImageValues, LengthOfFlateContentMayBeAReference) {
  std::string const packed = Deflate(kFlip);
  PdfBuilder pdf = WithContentIn7();
  pdf.Stream(7, "/Filter/FlateDecode", packed, "9 0 R");
  pdf.Object(9, std::to_string(packed.size()));
  PageDocument document(pdf);
  EXPECT_EQ(ReadDib(document.Load()).rows, kFlippedRows);
}

// The NUL hides "endstream".
TEST(ImageValues, PlainContentWithANulIsUpright) {
  for (bool const nul : {false, true}) {
    PdfBuilder pdf = WithContentIn7();
    pdf.Stream(7, "", kFlip + (nul ? std::string(1, '\0') : " "));
    PageDocument document(pdf);
    EXPECT_EQ(ReadDib(document.Load()).rows, nul ? kUprightRows : kFlippedRows) << nul;
  }
}

// The image of a page by these values; those that are not given are right.
struct Values {
  std::string width = "8";
  std::string height = "2";
  std::string bits = "1";
  std::string length = {};
};
PdfBuilder With(Values const& values) {
  return OnePage{.image = "/Subtype/Image /Width " + values.width + " /Height " + values.height +
                          " /BitsPerComponent " + values.bits,
                 .length = values.length}
      .Build();
}

TEST(ImageValues, ReferenceToAnObjectWithoutANumberGivesNullWithoutACode) {
  for (Values const& values : {Values{.width = "9 0 R"}, Values{.height = "9 0 R"},
                               Values{.bits = "9 0 R"}, Values{.length = "9 0 R"}}) {
    PdfBuilder pdf = With(values);
    pdf.Object(9, "/None");
    PageDocument document(pdf);
    EXPECT_EQ(document.Load().get(), nullptr) << values.width << values.height << values.bits;
    EXPECT_EQ(document->PDF_GetLastError(), 0u);
  }
}

TEST(ImageValues, MayBeInAnObjectStream) {
  PdfBuilder pdf("%PDF-1.5");
  pdf.Stream(4, "/Subtype/Image /Width 7 0 R /Height 2 /BitsPerComponent 1", "AB", "8 0 R");
  pdf.ObjectStream(10,
                   {{1, "<</Type/Catalog /Pages 2 0 R >>"},
                    {2, "<</Type/Pages /Kids [3 0 R ] /Count 1 >>"},
                    {3, "<</Type/Page /Parent 2 0 R /Resources <</XObject <</Im0 4 0 R >> >> >>"},
                    {7, "8"},
                    {8, "2"}});
  pdf.XrefStream(11);
  Bytes const bytes = pdf.Document();
  auto const session = std::make_unique<CCreatePDF>();
  ASSERT_EQ(session->OpenPDFFileInMemory(reinterpret_cast<int64_t>(bytes.data()),
                                         static_cast<DWORD>(bytes.size())),
            1);
  DibContent const dib = ReadDib(Block(session->LoadImageFromPDF(0)));
  EXPECT_EQ(dib.header.biWidth, 8);
  EXPECT_EQ(dib.rows, kUprightRows);
  session->ClosePDFFile();
}

}  // namespace
}  // namespace test
