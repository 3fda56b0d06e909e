// Pages from coded images, and the room that a page needs.
#include <gtest/gtest.h>
#include <sorrelin/writer/encoded_page.h>

#include <cstring>

#include "tests/support/dib.h"
#include "tests/support/document.h"

namespace {

using sorrelin::EncodedPage;
using sorrelin::WriteEncodedPage;
using test::MemoryDocument;

BYTE const kJpeg[] = {'j', 'p', 'e', 'g'};

EncodedPage Jpeg(int bits) {
  EncodedPage page;
  page.width = 100;
  page.height = 50;
  page.bits_per_pixel = bits;
  page.compression = PDF_COMPRESSION_JPEG;
  page.dpi = {72, 36};
  page.data = kJpeg;
  page.size = sizeof kJpeg;
  return page;
}

TEST(EncodedPage, DataGoIntoTheDocumentAsTheyAre) {
  MemoryDocument document;
  document.Create();
  EXPECT_TRUE(WriteEncodedPage(document.session(), Jpeg(24)));
  EXPECT_NE(document.Text().find("/Filter /DCTDecode\n>>\nstream\njpeg>\nendstream\n"),
            std::string::npos);
  EXPECT_NE(document.Text().find("/MediaBox [0 0 100 100]\n"), std::string::npos);
  EXPECT_EQ(document->GetNumberOfPages(), 1u);
}

TEST(EncodedPage, PaletteFollowsAnIndexedImage) {
  MemoryDocument document;
  document.Create();
  test::Block const palette(GlobalAlloc(GHND, 3));
  std::memcpy(GlobalLock(palette), "RGB", 3);
  GlobalUnlock(palette);
  EncodedPage page = Jpeg(8);
  page.palette = palette;
  EXPECT_TRUE(WriteEncodedPage(document.session(), page));
  EXPECT_NE(document.Text().find("255 7 0 R ]"), std::string::npos);
  EXPECT_NE(document.Text().find("7 0 obj\n<<\n/Length 8 0 R \n>>\nstream\nRGB>\n"),
            std::string::npos);
}

TEST(EncodedPage, CcittDataAreDescribedAsGroup4) {
  MemoryDocument document;
  document.Create();
  EncodedPage page = Jpeg(1);
  page.compression = PDF_COMPRESSION_CCITT;
  page.decode_normal = false;
  EXPECT_TRUE(WriteEncodedPage(document.session(), page));
  EXPECT_NE(document.Text().find("/Decode [1 0]\n"), std::string::npos);
  EXPECT_NE(document.Text().find("/K -1\n/BlackIs1 false\n/Columns 100\n/Rows 50\n"),
            std::string::npos);
}

TEST(EncodedPage, PictureOfLessThanHalfAPointHasAnImageAndNoPage) {
  MemoryDocument document;
  document.Create();
  EncodedPage page = Jpeg(24);
  page.width = 1;
  page.dpi = {200, 200};
  EXPECT_TRUE(WriteEncodedPage(document.session(), page));
  EXPECT_EQ(document->PDF_GetLastError(), 0u);
  EXPECT_NE(document.Text().find("/Subtype /Image"), std::string::npos);
  EXPECT_EQ(document->GetNumberOfPages(), 0u);
}

TEST(EncodedPage, PageAfter30000IsError12WithItsImageInTheFile) {
  MemoryDocument document;
  document.Create();
  SessionProbe::TotalPages(document.session()) = SessionProbe::kPageSlots;
  EXPECT_FALSE(WriteEncodedPage(document.session(), Jpeg(24)));
  EXPECT_EQ(document->PDF_GetLastError(), 12u);
  EXPECT_NE(document.Text().find("/Subtype /Image"), std::string::npos);
}

struct Room {
  int bits;
  DWORD objects;
};

class EncodedPageRoom : public testing::TestWithParam<Room> {};

INSTANTIATE_TEST_SUITE_P(Depths, EncodedPageRoom, testing::Values(Room{24, 6}, Room{8, 8}));

// The page's objects, the catalog and the table's own row must fit.
TEST_P(EncodedPageRoom, LastPageThatFitsLeavesAFinishableDocument) {
  MemoryDocument document;
  document.Create();
  test::Block const palette(GlobalAlloc(GHND, 3));
  EncodedPage page = Jpeg(GetParam().bits);
  page.palette = palette;
  document->SetCurrentObject(SessionProbe::kObjectRows - 1 - GetParam().objects - 2);
  EXPECT_TRUE(WriteEncodedPage(document.session(), page));
  EXPECT_NE(document.Finish().find("/Size 90049\n"), std::string::npos);
}

TEST_P(EncodedPageRoom, PageThatNoLongerFitsIsError40BeforeItsFirstByte) {
  MemoryDocument document;
  document.Create();
  document->SetCurrentObject(SessionProbe::kObjectRows - GetParam().objects - 2);
  size_t const before = document.Text().size();
  EXPECT_FALSE(WriteEncodedPage(document.session(), Jpeg(GetParam().bits)));
  EXPECT_EQ(document->PDF_GetLastError(), 40u);
  EXPECT_EQ(document.Text().size(), before);
  EXPECT_NE(document.Finish().find("%%EOF"), std::string::npos);
}

TEST(PageSize, IsWholePointsRoundedAtHalf) {
  MemoryDocument document;
  struct Row {
    LONG width, height;
    DWORD x, y;
    POINT size;
  };
  for (Row const& row : {Row{1700, 2200, 200, 200, {612, 792}}, Row{1, 1, 200, 200, {0, 0}},
                         Row{1, 2, 144, 144, {1, 1}}, Row{2480, 3508, 300, 300, {595, 842}},
                         Row{1, 1, 0, 0, {0, 0}}}) {
    POINT const size =
        document->CalculatePageSizeFromPixelsAndDPI(row.width, row.height, row.x, row.y);
    EXPECT_EQ(size.x, row.size.x) << row.width;
    EXPECT_EQ(size.y, row.size.y) << row.height;
  }
}

// 2147483647 * 72 is 72 below 36 * 2^32; an unsigned resolution of 2^32 - 1 halves it to 36 points.
TEST(PageSize, IsTakenModulo32BitsAndTowardsZero) {
  MemoryDocument document;
  POINT const wide = document->CalculatePageSizeFromPixelsAndDPI(0x7FFFFFFF, 1, 1, 1);
  EXPECT_EQ(wide.x, -72);
  EXPECT_EQ(wide.y, 72);
  EXPECT_EQ(document->CalculatePageSizeFromPixelsAndDPI(-100, 1, 72, 72).x, -99);
  POINT const fine =
      document->CalculatePageSizeFromPixelsAndDPI(1, 0x7FFFFFFF, 0xFFFFFFFFu, 0xFFFFFFFFu);
  EXPECT_EQ(fine.x, 0);
  EXPECT_EQ(fine.y, 36);
}

}  // namespace
