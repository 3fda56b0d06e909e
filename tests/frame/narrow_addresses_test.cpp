// What addresses of 32 bits change: handles keep 64 bits, and what cannot be in memory fails with
// the code for short memory.
#include <gtest/gtest.h>
#include <sorrelin/channel/memory_buffer.h>
#include <sorrelin/frame/flat.h>
#include <sorrelin/frame/string_error.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/memory_size.h>
#include <tests/support/open_document.h>

#include <cstdlib>
#include <new>

namespace {

static_assert(sizeof(void*) == 4 && sizeof(hPDF) == 8);

TEST(NarrowAddresses, HandlesWiderThanAnAddressAreInvalid) {
  hPDF pdf = 0;
  ASSERT_EQ(pdf_Init_PDF(&pdf), 0u);
  EXPECT_EQ(pdf >> 32, 0);
  hPDF const one = hPDF{1} << 32;
  for (hPDF const bad : {one, pdf + one, pdf - 2 * one, hPDF{0xFFFFFFFF}, -one}) {
    EXPECT_EQ(pdf_PDF_GetLastError(bad), 2u) << bad;
    EXPECT_EQ(pdf_Release_PDF(bad), 2u) << bad;
  }
  EXPECT_EQ(pdf_PDF_GetLastError(pdf), 32u);
  EXPECT_EQ(pdf_Release_PDF(pdf), 0u);
}

TEST(NarrowAddresses, AddressWidenedWithItsSignIsTheSameSession) {
  uintptr_t const address = 0x87654320;
  auto* const session = reinterpret_cast<CCreatePDF*>(address);
  EXPECT_EQ(sorrelin::HandleOf(session), 0x87654320);
  EXPECT_EQ(sorrelin::SessionOf(0x87654320), session);
  EXPECT_EQ(sorrelin::SessionOf(static_cast<int32_t>(address)), session);
}

TEST(NarrowAddresses, SizesInMemoryEndAt2GiB) {
  EXPECT_EQ(sorrelin::MemorySize(0x7FFFFFFF), 0x7FFFFFFFu);
  EXPECT_THROW(sorrelin::MemorySize(0x80000000), std::bad_alloc);
  EXPECT_THROW(sorrelin::MemorySize(uint64_t{1} << 32), std::bad_alloc);
}

TEST(NarrowAddresses, BlockOfMoreThanAddressesCountIsNone) {
  EXPECT_FALSE(sorrelin::NewOwnedBlock(GHND, (uint64_t{1} << 32) + 16).IsValid());
  EXPECT_TRUE(sorrelin::NewOwnedBlock(GHND, 16).IsValid());
}

// 30,000 rows of 120,000 bytes are 3.6 GB.
TEST(NarrowAddresses, BitmapOf3GBIs10) {
  CCreatePDF session;
  HGLOBAL const data = GlobalAlloc(GHND, 16);
  EXPECT_EQ(session.CreateDIBFromRLEData(data, 40000, 30000, 4, nullptr), nullptr);
  EXPECT_EQ(session.PDF_GetLastError(), 10u);
  GlobalFree(data);
}

TEST(NarrowAddresses, DocumentInMemoryOf3GBIs1) {
  hPDF pdf = 0;
  ASSERT_EQ(pdf_Init_PDF(&pdf), 0u);
  EXPECT_EQ(pdf_CreatePDFInMemory(pdf, nullptr, 3'000'000'000), 1u);
  EXPECT_EQ(pdf_CreatePDFInMemory(pdf, nullptr, 1000), 0u);
  EXPECT_EQ(pdf_Release_PDF(pdf), 0u);
}

// A write of so much touches neither the source nor the block.
TEST(NarrowAddresses, WritePast2GiBFailsWith8) {
  sorrelin::MemoryBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(16));
  BYTE const byte = 7;
  for (DWORD const bytes : {0x80000000, 0xFFFFFFFF}) {
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(buffer.Write(&byte, bytes), 0u);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NOT_ENOUGH_MEMORY});
  }
  buffer.Seek(0x7FFFFFFF, FILE_BEGIN);
  EXPECT_EQ(buffer.Write(&byte, 1), 0u);
  EXPECT_EQ(buffer.nSize, 0u);
  EXPECT_EQ(buffer.nCapacity, 16u);
  std::free(buffer.Take());
}

// An offset of -5 lets an object end 5 bytes before 4 GiB, which passes them with what a fetch
// adds. The document is as large as such a fetch needs it to be.
TEST(NarrowAddresses, ObjectOfAlmost4GiBInAStreamIsNotServed) {
  test::PdfBuilder pdf("%PDF-1.5");
  test::AddPageTree(pdf, 1);
  pdf.ObjectStream(10, {{4, "<</A 1>>"}}, {.header = "4 0 5 -5 "});
  pdf.Object(12, std::string(66'000'000, ' '));
  pdf.XrefStream(11);
  test::OpenDocument document(pdf);
  ASSERT_NE(document.Build(), 0u);
  EXPECT_THROW(document.Fetch(4), SorrelinStringError);
}

}  // namespace
