// The C++ owners over the flat interface, as programs outside use them; built as C++17 and C++20.
#include <gtest/gtest.h>
#include <tests/support/system_text.h>
#include <tests/support/temp_dir.h>
#include <sorrelin/session.hpp>

#include <algorithm>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using sorrelin::Bitmap;
using sorrelin::Error;
using sorrelin::MemoryDocument;
using sorrelin::PageCoding;
using sorrelin::Session;
using sorrelin::View;

namespace {

// The code that `work` fails with, or -1.
template <typename Work>
int64_t CodeOf(Work work) {
  try {
    work();
  } catch (Error const& error) {
    return error.code();
  }
  return -1;
}

// 9 pixels in 2 bytes a row; the top row is white, the next one has a white pixel at the left.
Bitmap TwoRows() {
  Bitmap picture(9, 2, 1, 72);
  picture.Row(0)[0] = 0xFF;
  picture.Row(0)[1] = 0x80;
  picture.Row(1)[0] = 0x80;
  return picture;
}

MemoryDocument DocumentOf(Bitmap const& picture, PageCoding const& coding = {}) {
  Session session;
  session.CreateInMemory();
  session.AddPage(picture, coding);
  return session.FinishInMemory();
}

TEST(Owners, MoveAndDoNotCopy) {
  for (bool const moves :
       {std::is_nothrow_move_constructible_v<Session>, std::is_nothrow_move_assignable_v<Session>,
        std::is_nothrow_move_constructible_v<Bitmap>, std::is_nothrow_move_assignable_v<Bitmap>,
        std::is_nothrow_move_constructible_v<MemoryDocument>,
        std::is_nothrow_move_assignable_v<MemoryDocument>}) {
    EXPECT_TRUE(moves);
  }
  EXPECT_FALSE(std::is_copy_constructible_v<Session>);
  EXPECT_FALSE(std::is_copy_constructible_v<Bitmap>);
  EXPECT_FALSE(std::is_copy_constructible_v<MemoryDocument>);
}

TEST(BitmapOwner, NewBitmapHasItsColoursAndBlackPixels) {
  Bitmap const bilevel(9, 2, 1);
  ASSERT_EQ(bilevel.Colours().size(), 2u);
  EXPECT_EQ(bilevel.Colours()[0].rgbRed, 0);
  EXPECT_EQ(bilevel.Colours()[1].rgbRed, 255);
  Bitmap const grey(3, 2, 8, 150);
  ASSERT_EQ(grey.Colours().size(), 256u);
  for (size_t i = 0; i < 256; ++i) EXPECT_EQ(grey.Colours()[i].rgbGreen, i);
  EXPECT_EQ(grey.Row(1).size(), 3u);
  EXPECT_TRUE(std::all_of(grey.Row(1).begin(), grey.Row(1).end(), [](BYTE b) { return b == 0; }));
  EXPECT_NEAR(grey.DpiX(), 150, 0.02);
  EXPECT_TRUE(Bitmap(3, 2, 24).Colours().empty());
}

// Rows of 3 x 24 bits take 12 bytes, of which 9 are pixels; the top row is the last of the block.
TEST(BitmapOwner, RowZeroIsTheTopOne) {
  Bitmap picture(3, 2, 24);
  picture.Row(0)[0] = 7;
  EXPECT_EQ(picture.Row(0).size(), 9u);
  auto const* const bytes = static_cast<BYTE const*>(GlobalLock(picture.Handle()));
  EXPECT_EQ(bytes[40 + 12], 7);
  GlobalUnlock(picture.Handle());
}

TEST(BitmapOwner, RowsOutsideTheBlockAreEmpty) {
  Bitmap picture(3, 2, 8);
  EXPECT_TRUE(picture.Row(-1).empty());
  EXPECT_TRUE(picture.Row(2).empty());
  EXPECT_TRUE(Bitmap().Row(0).empty());
  Bitmap const header_alone(GlobalReAlloc(picture.Release(), 40, GMEM_MOVEABLE));
  EXPECT_EQ(header_alone.Width(), 3);
  EXPECT_TRUE(header_alone.Row(0).empty());
  EXPECT_TRUE(header_alone.Colours().empty());
}

// 178,956,971 pixels have 2^32 + 8 bits.
TEST(BitmapOwner, RowOfMoreBitsThan32CountIsOutsideASmallBlock) {
  Bitmap picture(3, 2, 24);
  auto* const bytes = static_cast<BYTE*>(GlobalLock(picture.Handle()));
  LONG const width = 178956971;
  std::memcpy(bytes + 4, &width, sizeof width);
  GlobalUnlock(picture.Handle());
  EXPECT_EQ(picture.Width(), width);
  EXPECT_TRUE(picture.Row(1).empty());
}

TEST(BitmapOwner, ShapesThatCannotBeAreRefused) {
  EXPECT_EQ(CodeOf([] { Bitmap(0, 1, 8); }), PDF_ERROR_INVALID_IMAGE_SIZE);
  EXPECT_EQ(CodeOf([] { Bitmap(1, -1, 8); }), PDF_ERROR_INVALID_IMAGE_SIZE);
  EXPECT_EQ(CodeOf([] { Bitmap(1, 1, 4); }), PDF_ERROR_INVALID_BITS_PER_PIXEL);
  EXPECT_EQ(CodeOf([] { Bitmap(2147483647, 2147483647, 24); }), PDF_ERROR_MEMORY);
}

TEST(BitmapOwner, BlockIsFreedOnceAndByTheLastOwner) {
  Bitmap first(3, 2, 8);
  HDIB const block = first.Handle();
  Bitmap second(std::move(first));
  EXPECT_EQ(first.Handle(), nullptr);
  EXPECT_FALSE(first);
  EXPECT_EQ(second.Handle(), block);
  second = Bitmap(1, 1, 1);
  EXPECT_EQ(GlobalSize(block), 0u);  // no handle any more
  HDIB const released = second.Release();
  EXPECT_GT(GlobalSize(released), 0u);
  EXPECT_EQ(GlobalUnlock(released), 0);
  EXPECT_EQ(GlobalFree(released), nullptr);
}

TEST(SessionOwner, PictureComesBackFromMemory) {
  for (PageCoding const& coding : {PageCoding::Raw(), PageCoding::Flate(9), PageCoding::Group4()}) {
    MemoryDocument const document = DocumentOf(TwoRows(), coding);
    Session session;
    session.OpenInMemory(document);
    ASSERT_EQ(session.PageCount(), 1u);
    Bitmap const read = session.ReadImage(0);
    ASSERT_EQ(read.Row(0).size(), 2u);
    bool const first_is_black = read.Colours()[0].rgbRed == 0;
    EXPECT_EQ(read.Row(0)[0], first_is_black ? 0xFF : 0x00);
    EXPECT_EQ(read.Row(1)[0], first_is_black ? 0x80 : 0x7F);
  }
}

TEST(SessionOwner, EveryCodingMakesAPage) {
  EXPECT_FALSE(DocumentOf(Bitmap(16, 16, 8), PageCoding::RunLength()).empty());
  EXPECT_FALSE(DocumentOf(Bitmap(16, 16, 24), PageCoding::Jpeg(90)).empty());
}

TEST(SessionOwner, UpdateAddsPagesToAFile) {
  test::TempDir const dir;
  std::string const file = (dir / "scan.pdf").string();
  for (DWORD const pages : {1u, 2u}) {
    Session session;
    session.Create(file);
    session.AddPage(TwoRows());
    session.Finish();
    session.Open(file);
    EXPECT_EQ(session.PageCount(), pages);
  }
}

TEST(SessionOwner, UpdateWithoutAPageLeavesTheFileAsItWas) {
  test::TempDir const dir;
  std::string const file = (dir / "scan.pdf").string();
  MemoryDocument const document = DocumentOf(TwoRows());
  std::vector<BYTE> const bytes(document.begin(), document.end());
  test::WriteAll(file, bytes);
  {
    Session session;
    session.Create(file);
    EXPECT_EQ(CodeOf([&] { session.Finish(); }), PDF_ERROR_ZERO_BYTES);
  }
  EXPECT_EQ(test::ReadAll(file), bytes);
}

TEST(SessionOwner, FailureHasTheCodeAndTheTextOfTheLibrary) {
  Session session;
  try {
    session.Open("no such file");
    FAIL();
  } catch (Error const& error) {
    EXPECT_EQ(error.code(), DWORD{PDF_ERROR_OPEN});
    EXPECT_STREQ(error.what(), "Error opening file");
  }
}

TEST(SessionOwner, FailureOfTheSystemHasItsText) {
  Session session;
  try {
    session.Create("no/such/folder/scan.pdf");
    FAIL();
  } catch (Error const& error) {
    EXPECT_EQ(error.code(), DWORD{PDF_ERROR_SYSTEM});
    EXPECT_EQ(error.what(), test::SystemText(ERROR_PATH_NOT_FOUND));
  }
}

TEST(SessionOwner, DocumentGoesOnAfterARefusedPage) {
  Session session;
  session.CreateInMemory();
  EXPECT_EQ(CodeOf([&] { session.AddPage(Bitmap(9, 2, 8), PageCoding::Group4()); }),
            PDF_ERROR_COMPRESSION);
  EXPECT_EQ(CodeOf([&] { session.AddPage(Bitmap()); }), PDF_ERROR_INVALID_HANDLE);
  session.AddPage(TwoRows());
  MemoryDocument const document = session.FinishInMemory();
  session.OpenInMemory(document);
  EXPECT_EQ(session.PageCount(), 1u);
}

TEST(SessionOwner, PageThatIsNotThereIsAnError) {
  MemoryDocument const document = DocumentOf(TwoRows());
  Session session;
  session.OpenInMemory(document);
  EXPECT_EQ(CodeOf([&] { session.ReadImage(1); }), PDF_ERROR_PAGE_NUMBER);
}

TEST(SessionOwner, MovedSessionGoesOnAndTheOldOneIsEmpty) {
  Session first;
  first.CreateInMemory();
  Session second(std::move(first));
  EXPECT_EQ(first.Handle(), 0);
  EXPECT_EQ(CodeOf([&] { first.CreateInMemory(); }), PDF_ERROR_INVALID_HANDLE);
  EXPECT_EQ(CodeOf([&] { first.ReadImage(0); }), PDF_ERROR_INVALID_HANDLE);
  first.Close();
  second.AddPage(TwoRows());
  first = std::move(second);
  EXPECT_FALSE(first.FinishInMemory().empty());
}

TEST(SessionOwner, DocumentOutlivesItsSessionAndMoves) {
  MemoryDocument document = DocumentOf(TwoRows());
  size_t const size = document.size();
  MemoryDocument moved(std::move(document));
  EXPECT_TRUE(document.empty());
  EXPECT_EQ(moved.size(), size);
  EXPECT_EQ(std::string(moved.begin(), moved.begin() + 5), "%PDF-");
  moved = MemoryDocument();
  EXPECT_EQ(moved.data(), nullptr);
}

TEST(SessionOwner, StringsAreWrittenAndRead) {
  Session session;
  session.SetTitle("Brief \xC3\xA4");
  session.SetAuthor("Ana");
  session.SetSubject("");
  session.SetKeywords("a, b");
  session.CreateInMemory();
  session.AddPage(TwoRows());
  MemoryDocument const document = session.FinishInMemory();
  Session reading;
  reading.OpenInMemory(document);
  EXPECT_EQ(reading.Title(), "Brief \xC3\xA4");
  EXPECT_EQ(reading.Author(), "Ana");
  EXPECT_EQ(reading.Subject(), "");
  EXPECT_EQ(reading.Keywords(), "a, b");
}

// The library ends the process where such a string is written.
TEST(SessionOwner, StringsThatAreTooLongAreRefused) {
  Session session;
  session.SetTitle(std::string(252, 't'));
  EXPECT_EQ(CodeOf([&] { session.SetTitle(std::string(253, 't')); }), PDF_ERROR_INVALID_STRING);
  EXPECT_EQ(CodeOf([&] { session.SetKeywords(std::string(252, 'k')); }), PDF_ERROR_INVALID_STRING);
  session.CreateInMemory();
  session.AddPage(TwoRows());
  EXPECT_FALSE(session.FinishInMemory().empty());
}

TEST(Views, AreMadeFromContainersOfBytes) {
  std::vector<BYTE> bytes = {1, 2, 3};
  View<BYTE const> const view = bytes;
  EXPECT_EQ(view.data(), bytes.data());
  EXPECT_EQ(view.size(), 3u);
  EXPECT_FALSE((std::is_convertible_v<std::string&, View<BYTE const>>));
  EXPECT_FALSE((std::is_convertible_v<std::vector<BYTE> const&, View<BYTE>>));
}

#if defined(__cpp_lib_span)
TEST(Views, ConvertFromAndToSpan) {
  Bitmap picture(3, 2, 8);
  std::span<BYTE> const row = picture.Row(1);
  row[2] = 9;
  EXPECT_EQ(picture.Row(1)[2], 9);
  View<BYTE const> const view = std::span<BYTE const>(row);
  EXPECT_EQ(view.data(), row.data());
  MemoryDocument const document = DocumentOf(picture);
  EXPECT_EQ(std::span<BYTE const>(document).size(), document.size());
}
#else
static_assert(__cplusplus < 202002L, "C++20 has std::span");
#endif

}  // namespace
