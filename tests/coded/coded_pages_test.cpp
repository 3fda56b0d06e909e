// Pages of JPEG files and Group 4 data, by the shared libraries as callers link them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/coded/coded_pages.h>
#include <sorrelin/platform/memory.h>
#include <tests/support/pictures.h>
#include <tests/support/temp_dir.h>

#include <string>
#include <vector>

namespace {

using ::testing::Each;
using ::testing::HasSubstr;
using Bytes = std::vector<BYTE>;

// Rows equal to the white row above the picture are one bit 1 each (V0); then EOFB, twice eleven
// zeros and a one: 16 rows are FF FF, the end is 00 10 01.
Bytes const kSixteenWhiteRows = {0xFF, 0xFF, 0x00, 0x10, 0x01};

unsigned Shade(int x, int y, int s) { return static_cast<unsigned>(x * 3 + y + s * 20) & 0xFF; }

Bytes Jpeg(int components) { return test::MakeJpeg({.components = components}, Shade); }

class CodedPages : public ::testing::Test {
 protected:
  CodedPages() {
    pdf_Init_PDF(&pdf_);
    pdf_CreatePDFInMemory(pdf_, nullptr, 1 << 16);
  }
  ~CodedPages() override { pdf_Release_PDF(pdf_); }

  DWORD AddJpeg(Bytes const& file, DWORD dpi = 0) {
    return pdf_AddJPEGPage(pdf_, file.data(), static_cast<DWORD>(file.size()), dpi, dpi);
  }
  DWORD AddGroup4(Bytes const& data, LONG width, LONG height, int invert = 0) {
    return pdf_AddGroup4Page(pdf_, data.data(), static_cast<DWORD>(data.size()), width, height, 72,
                             72, invert);
  }
  std::string Finish() {
    void* data = nullptr;
    DWORD size = 0;
    EXPECT_EQ(pdf_FinishPDFInMemory(pdf_, &data, &size), 0u);
    std::string const document(static_cast<char const*>(data), size);
    pdf_FreePDFInMemory(data);
    return document;
  }

  hPDF pdf_ = 0;
};

// The picture of a document's first page as a packed bitmap.
Bytes FirstPicture(std::string const& document) {
  hPDF pdf = 0;
  pdf_Init_PDF(&pdf);
  EXPECT_EQ(pdf_OpenPDFInMemory(pdf, document.data(), static_cast<DWORD>(document.size())), 0u);
  HDIB const block = pdf_LoadImageFromPDF(pdf, 0);
  auto const* const bytes = static_cast<BYTE const*>(GlobalLock(block));
  Bytes const picture(bytes, bytes == nullptr ? bytes : bytes + GlobalSize(block));
  GlobalUnlock(block);
  GlobalFree(block);
  pdf_Release_PDF(pdf);
  return picture;
}

TEST_F(CodedPages, JpegFileIsInTheDocumentByteForByte) {
  for (int const components : {1, 3}) ASSERT_EQ(AddJpeg(Jpeg(components)), 0u);
  std::string const document = Finish();
  for (int const components : {1, 3}) {
    Bytes const file = Jpeg(components);
    EXPECT_THAT(document, HasSubstr(std::string(file.begin(), file.end())));
  }
  EXPECT_THAT(document, HasSubstr("/Count 2"));
}

TEST_F(CodedPages, ProgressiveJpegIsAPageToo) {
  EXPECT_EQ(AddJpeg(test::MakeJpeg({.progressive = true}, Shade)), 0u);
}

// 72 x 36 pixels: 36 x 18 points at the file's 144 dots per inch, 72 x 36 at the caller's 72.
TEST_F(CodedPages, ResolutionIsTheCallersOrTheFiles) {
  Bytes const file = test::MakeJpeg({.x_density = 144, .y_density = 144}, Shade);
  ASSERT_EQ(AddJpeg(file), 0u);
  ASSERT_EQ(AddJpeg(file, 72), 0u);
  std::string const document = Finish();
  EXPECT_THAT(document, HasSubstr("36.0000 0.0000 0.0000  18.0000 0.0000 0.0000 cm"));
  EXPECT_THAT(document, HasSubstr("72.0000 0.0000 0.0000  36.0000 0.0000 0.0000 cm"));
}

TEST_F(CodedPages, GreyJpegComesBackWithARampOfGreys) {
  ASSERT_EQ(AddJpeg(Jpeg(1)), 0u);
  Bytes const picture = FirstPicture(Finish());
  ASSERT_GT(picture.size(), 40u + 1024u);
  EXPECT_EQ(picture[14], 8);  // biBitCount
  for (size_t i = 0; i < 256; ++i) EXPECT_EQ(picture[40 + 4 * i], i);
}

TEST_F(CodedPages, WhiteGroup4RowsComeBackWhite) {
  ASSERT_EQ(AddGroup4(kSixteenWhiteRows, 32, 16), 0u);
  std::string const document = Finish();
  EXPECT_THAT(document, HasSubstr("/Decode [0 1]"));
  EXPECT_THAT(document, HasSubstr("/Columns 32"));
  Bytes const picture = FirstPicture(document);
  ASSERT_EQ(picture.size(), 40u + 8u + 16u * 4u);
  for (size_t i = 48; i < picture.size(); ++i) {
    ASSERT_TRUE(picture[i] == 0x00 || picture[i] == 0xFF);
    size_t const colour = 40 + (picture[i] == 0xFF ? 4 : 0);
    EXPECT_THAT(Bytes(picture.data() + colour, picture.data() + colour + 3), Each(255));
  }
}

TEST_F(CodedPages, InvertedGroup4SaysSoInItsDecodeArray) {
  ASSERT_EQ(AddGroup4(kSixteenWhiteRows, 32, 16, 1), 0u);
  EXPECT_THAT(Finish(), HasSubstr("/Decode [1 0]"));
}

TEST_F(CodedPages, RefusedPicturesLeaveTheDocumentAsItWas) {
  Bytes const cut = {0xFF, 0xD8, 0xFF, 0xC0, 0x00};
  EXPECT_EQ(AddJpeg(cut), DWORD{PDF_ERROR_DECOMPRESSION});
  EXPECT_EQ(AddJpeg(Jpeg(4)), DWORD{PDF_ERROR_DECOMPRESSION});
  EXPECT_EQ(AddJpeg(test::MakeJpeg({.arithmetic = true}, Shade)), DWORD{PDF_ERROR_DECOMPRESSION});
  EXPECT_EQ(AddJpeg(test::MakeJpeg({.rgb = true, .jfif = false}, Shade)),
            DWORD{PDF_ERROR_DECOMPRESSION});
  EXPECT_EQ(AddGroup4(kSixteenWhiteRows, 0, 16), DWORD{PDF_ERROR_INVALID_IMAGE_SIZE});
  EXPECT_EQ(pdf_AddJPEGPage(pdf_, nullptr, 5, 0, 0), DWORD{PDF_ERROR_NULL_POINTER});
  EXPECT_EQ(AddJpeg(Jpeg(3), 100000), DWORD{PDF_ERROR_INVALID_IMAGE_SIZE});
  ASSERT_EQ(AddJpeg(Jpeg(3)), 0u);
  EXPECT_THAT(Finish(), HasSubstr("/Count 1"));
}

TEST_F(CodedPages, BadHandlesAreRefused) {
  for (hPDF const bad : {hPDF{0}, hPDF{-1}}) {
    EXPECT_EQ(pdf_AddJPEGPage(bad, "x", 1, 0, 0), DWORD{PDF_ERROR_INVALID_HANDLE});
    EXPECT_EQ(pdf_AddGroup4Page(bad, "x", 1, 1, 1, 0, 0, 0), DWORD{PDF_ERROR_INVALID_HANDLE});
  }
}

TEST_F(CodedPages, UpdatesAreRefused) {
  test::TempDir const dir;
  std::string const path = (dir / "document.pdf").string();
  Bytes const file = Jpeg(3);
  for (DWORD const expected : {DWORD{PDF_ERROR_NONE}, DWORD{PDF_ERROR_OBJECT_EXISTS}}) {
    hPDF pdf = 0;
    pdf_Init_PDF(&pdf);
    ASSERT_EQ(pdf_CreatePDF(pdf, path.c_str()), 0u);
    EXPECT_EQ(pdf_AddJPEGPage(pdf, file.data(), static_cast<DWORD>(file.size()), 0, 0), expected);
    if (expected == 0) {
      EXPECT_EQ(pdf_FinishPDF(pdf), 0u);
    }
    pdf_Release_PDF(pdf);
  }
}

}  // namespace
