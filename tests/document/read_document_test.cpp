// The components that read a document, made and used without a session.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/document/classic_route.h>
#include <sorrelin/document/opening.h>
#include <sorrelin/document/page_image.h>
#include <sorrelin/document/page_tree.h>
#include <sorrelin/document/palette.h>
#include <sorrelin/document/proc_set.h>
#include <sorrelin/platform/codes.h>
#include <tests/support/read_document.h>

#include <string>
#include <vector>

namespace {

using sorrelin::Opening;
using sorrelin::PageImage;
using sorrelin::Status;
using test::PdfBuilder;
using test::ReadDocument;

Status Open(ReadDocument& document) {
  return Opening(document.reader, *document.table, *document.pages, document.facts).Run();
}

// Objects 4 and 5 are a page of 300 x 600 points and its image of 3 x 2 pixels.
void AddImagePage(PdfBuilder& pdf, std::string const& image_keys) {
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Type/Pages /Count 1 /Kids[4 0 R ]>>");
  pdf.Object(4, "<</Type/Page /MediaBox [0 0 300 600 ] /Resources <</XObject 5 0 R >> >>");
  pdf.Stream(5, "/Subtype/Image /Width 3 /Height 2 " + image_keys + " ", "abcdef");
}

TEST(Opening, FillsTableFactsPagesAndStrings) {
  PdfBuilder pdf;
  AddImagePage(pdf, "/BitsPerComponent 8");
  pdf.Object(6, "<</Title (A title)>>");
  pdf.Classic({.keys = "/Root 1 0 R /Info 6 0 R"});
  ReadDocument document(pdf);
  ASSERT_TRUE(Open(document).ok());
  EXPECT_EQ(document.table->rows_in_document(), 7u);
  EXPECT_EQ((*document.table)[5].nOffset, pdf.OffsetOf(5));
  EXPECT_EQ(document.facts.catalog, 1u);
  EXPECT_EQ(document.facts.pages_root, 2u);
  EXPECT_EQ(document.facts.max_section_offset, pdf.LastSection());
  EXPECT_EQ(document.pages->count(), 1u);
  EXPECT_EQ((*document.pages)[0], 4u);
  EXPECT_EQ(document.reader.m_Title, sorrelin::WideString(SORRELIN_TEXT("A title")));
}

TEST(Opening, ReportsCode24WithoutStartxref) {
  ReadDocument document(test::ToBytes("%PDF-1.4" + std::string(60, ' ')));
  EXPECT_EQ(Open(document).code(), PDF_ERROR_NOT_PDF);
}

TEST(Opening, MissingRootFailsWithoutACode) {
  PdfBuilder pdf;
  pdf.Object(2, "<<>>");
  pdf.Classic({.keys = "/Root 0 0 R"});
  ReadDocument document(pdf);
  Status const status = Open(document);
  EXPECT_FALSE(status.ok());
  EXPECT_EQ(status.code(), std::nullopt);
}

TEST(ClassicRoute, RowThatLeadsToNoObjectIsNotedAndReadingGoesOn) {
  PdfBuilder pdf;
  AddImagePage(pdf, "/BitsPerComponent 8");
  pdf.Classic({.keys = "/Root 1 0 R"});
  std::string text = pdf.Content();
  text.replace(text.find("5 0 obj"), 7, "5 0 xxx");
  ReadDocument document(test::ToBytes(text));
  ASSERT_TRUE(Open(document).ok());
  EXPECT_EQ(document.reader.file.TakeNote(), PDF_ERROR_NOT_PDF);
  EXPECT_EQ(document.reader.file.TakeNote(), std::nullopt);
  EXPECT_EQ((*document.table)[0].nOffset, pdf.OffsetOf(5));
}

TEST(ObjectLoader, ServesRowsOfTheTableWithoutAnIndex) {
  ReadDocument document(test::ToBytes("%PDF-1.4 3 0 obj (a) endobj 4 0 obj 5 endobj "));
  document.table->Change(3).nOffset = 9;
  document.table->Change(4).nOffset = 28;
  document.table->SetRowsInDocument(5);
  EXPECT_EQ(document.Text(3), "3 0 obj (a) endobj ");
  EXPECT_EQ(document.objects.SizeOf(3), 19u);
  DWORD value = 0;
  EXPECT_TRUE(document.objects.ReadNumberOf(4, &value));
  EXPECT_EQ(value, 5u);
  EXPECT_EQ(document.Text(0), std::nullopt);
}

TEST(ObjectLoader, NotesCode1WithoutAChannel) {
  ReadDocument document(test::ToBytes("x"));
  document.reader.file.SetChannel(nullptr, sorrelin::DocumentFile::Growth::kFixed);
  document.table->Change(3).nOffset = 9;
  EXPECT_EQ(document.Text(3), std::nullopt);
  EXPECT_EQ(document.reader.file.TakeNote(), PDF_ERROR_SYSTEM);
}

TEST(ReadPageImage, DescribesTheImageAndTakesItsBytes) {
  PdfBuilder pdf;
  AddImagePage(pdf, "/BitsPerComponent 8");
  pdf.Classic({.keys = "/Root 1 0 R"});
  ReadDocument document(pdf);
  ASSERT_TRUE(Open(document).ok());
  PageImage image;
  ASSERT_TRUE(sorrelin::ReadPageImage(document.objects, *document.pages, 0, image).ok());
  EXPECT_EQ(image.width, 3u);
  EXPECT_EQ(image.height, 2u);
  EXPECT_EQ(image.compression, PDF_COMPRESSION_FLAG_NONE);
  EXPECT_EQ(image.resolution->x, 3 * 2834 / 300);
  EXPECT_EQ(image.resolution->y, 2 * 2834 / 600);
  sorrelin::LockedBlock const data(image.data.get());
  EXPECT_EQ(std::string(data.bytes().begin(), data.bytes().end()), "abcdef");
}

TEST(ReadPageImage, ReportsCode31PastTheLastPage) {
  ReadDocument document(test::ToBytes("x"));
  document.pages->count() = 1;
  PageImage image;
  EXPECT_EQ(sorrelin::ReadPageImage(document.objects, *document.pages, 1, image).code(),
            PDF_ERROR_PAGE_NUMBER);
}

TEST(ReadPageImage, KeepsTheDescriptionOfAnImageWithoutData) {
  PdfBuilder pdf;
  pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
  pdf.Object(2, "<</Type/Pages /Count 1 /Kids[4 0 R ]>>");
  pdf.Object(4, "<</Type/Page /Resources <</XObject 5 0 R >> >>");
  pdf.Object(5,
             "<</Subtype/Image /Width 3 /Height 2 /BitsPerComponent 1 /Decode [1 0 ] /Length 6 >>");
  pdf.Classic({.keys = "/Root 1 0 R"});
  ReadDocument document(pdf);
  ASSERT_TRUE(Open(document).ok());
  PageImage image;
  EXPECT_EQ(sorrelin::ReadPageImage(document.objects, *document.pages, 0, image).code(),
            PDF_ERROR_NOT_PDF);
  EXPECT_EQ(image.kind, 1u);
  EXPECT_FALSE(image.decode_normal);
}

TEST(WorkBudget, EndsAnOpeningButNotTheFetchesAfterIt) {
  sorrelin::WorkBudget work;
  {
    sorrelin::WorkBudget::Opening const opening(work, 10);
    EXPECT_EQ(work.left(), 128u * 1024 * 1024 + 640);
    EXPECT_FALSE(work.Spend(uint64_t{1} << 40));
    EXPECT_TRUE(work.IsUsedUp());
    sorrelin::WorkBudget::Fetch const fetch(work, 10);
    EXPECT_TRUE(work.IsUsedUp());
  }
  sorrelin::WorkBudget::Fetch const fetch(work, 10);
  EXPECT_EQ(work.left(), 128u * 1024 * 1024 + 640);
}

}  // namespace
