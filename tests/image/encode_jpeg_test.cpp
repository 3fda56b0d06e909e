// The JPEG encoders against mock siblings.
#include <gtest/gtest.h>
#include <sorrelin/image/codecs/sibling.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/wide_string.h>

#include <filesystem>
#include <memory>
#include <thread>

#include "tests/image/mocks/mock_siblings.h"
#include "tests/support/dib.h"
#include "tests/support/dib_content.h"
#include "tests/support/document.h"
#include "tests/support/environment.h"
#include "tests/support/golden.h"
#include "tests/support/preloaded_sibling.h"
#include "tests/support/session_probe.h"
#include "tests/support/temp_dir.h"

namespace {

using test::Block;
using test::Bytes;
using test::MakeDib;

std::string PathOf(std::string const& variant) {
  return std::string(MOCKS_DIR) + "/" + variant + "/Rennick.dll";
}

Block Picture(WORD bits = 24) {
  return MakeDib(
      {.width = 0x1234, .height = 2, .bits = bits, .x_per_metre = 0x01020304, .y_per_metre = 11811},
      [](LONG, LONG) { return 0u; });
}

class EncodeJpeg : public testing::Test {
 protected:
  std::unique_ptr<CCreatePDF> session_ = std::make_unique<CCreatePDF>();
  DWORD size_ = 0;
  test::TempDir temp_;
  test::EnvironmentValue temp_value_{test::kTempFolderVariable, temp_.path().string()};

  void* Encode(HDIB dib, std::string const& path, int quality = 0) {
    return session_->ConvertDIB2DctJpegPDFImage(dib, size_, path.c_str(), quality, 7);
  }
  void* EncodeInFile(HDIB dib, std::string const& path) {
    return session_->ConvertDIB2DctJpegPDFImageFileW(dib, size_,
                                                     sorrelin::ToWide(path.c_str()).c_str(), 75, 7);
  }
  DWORD Code() { return session_->PDF_GetLastError(); }
};

TEST_F(EncodeJpeg, SiblingGetsTheBitmapAndItsRecord) {
  test::PreloadedSibling<MockRennick> const mock(PathOf("full"));
  Block const dib = Picture();
  Block const jpeg(Encode(dib, PathOf("full"), 0x1FFFE));
  EXPECT_EQ(jpeg.Content(), (Bytes{'J', 'F', 'I', 'F', 0x34}));
  EXPECT_EQ(size_, 5u);
  EXPECT_EQ(mock->bitmap, dib.get());
  Bytes expected = {0x34, 0x12, 2, 0, 4, 3, 2, 1, 0x23, 0x2E, 0, 0, 0xFE, 0xFF,
                    3,    0,    0, 0, 0, 0, 2, 0, 2,    0,    0, 0, 0,    0};
  expected.resize(JPEG_RECORD_BYTES, 0);
  EXPECT_EQ(Bytes(mock->record, mock->record + JPEG_RECORD_BYTES), expected);
}

TEST_F(EncodeJpeg, FileRouteGivesTheSameBytesAndDeletesItsFile) {
  Block const jpeg(EncodeInFile(Picture(8), PathOf("full")));
  EXPECT_EQ(jpeg.Content(), (Bytes{'J', 'F', 'I', 'F', 0x34}));
  EXPECT_TRUE(test::NamesIn(temp_.path()).empty());
}

TEST_F(EncodeJpeg, BilevelBitmapIs5BeforeAnyLibraryIsTouched) {
  EXPECT_EQ(session_->ConvertDIB2DctJpegPDFImageW(Picture(1), size_, nullptr, 75, 7),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(Code(), 5u);
  session_->PDF_SetLastError(0);
  EXPECT_EQ(session_->ConvertDIB2DctJpegPDFImageFileW(Picture(1), size_, nullptr, 75, 7),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(Code(), 5u);
}

TEST_F(EncodeJpeg, HandleThatCannotBeLockedGivesMinus1WithoutACode) {
  for (HDIB const bad : {HDIB{nullptr}, HDIB{INVALID_HANDLE_VALUE}}) {
    EXPECT_EQ(Encode(bad, PathOf("full")), INVALID_HANDLE_VALUE);
    EXPECT_EQ(EncodeInFile(bad, PathOf("full")), INVALID_HANDLE_VALUE);
  }
  EXPECT_EQ(Code(), 32u);
}

TEST_F(EncodeJpeg, LibraryThatCannotBeLoadedIs21) {
  EXPECT_EQ(session_->ConvertDIB2DctJpegPDFImageW(Picture(), size_, nullptr, 0, 7),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(Code(), 21u);
  for (char const* const name : {"", "nowhere.dll"}) {
    session_->PDF_SetLastError(0);
    EXPECT_EQ(Encode(Picture(), name), INVALID_HANDLE_VALUE);
    EXPECT_EQ(Code(), 21u);
    session_->PDF_SetLastError(0);
    EXPECT_EQ(EncodeInFile(Picture(), name), INVALID_HANDLE_VALUE);
    EXPECT_EQ(Code(), 21u);
  }
}

TEST_F(EncodeJpeg, MissingFileEntryPointIs19) {
  EXPECT_EQ(EncodeInFile(Picture(), PathOf("no_file_save")), INVALID_HANDLE_VALUE);
  EXPECT_EQ(Code(), 19u);
}

// The size is that of the step that failed, or the caller's where none was taken before.
TEST_F(EncodeJpeg, FailedCodingLeavesTheSizeThatWasTakenLast) {
  test::PreloadedSibling<MockRennick> const mock(PathOf("full"));
  size_ = 77;
  mock->status = 1;
  Encode(Picture(), PathOf("full"));
  EXPECT_EQ(size_, 77u);
  mock->status = 0;
  mock->save_fails = 1;
  EncodeInFile(Picture(), PathOf("full"));
  EXPECT_EQ(size_, 77u);
  mock->save_fails = 0;
  mock->encode_empty = 1;
  Encode(Picture(), PathOf("full"));
  EXPECT_EQ(size_, 0u);
  size_ = 77;
  EncodeInFile(Picture(), PathOf("full"));
  EXPECT_EQ(size_, 0u);
}

TEST_F(EncodeJpeg, StatusNullOrNoBytesAre20) {
  test::PreloadedSibling<MockRennick> const mock(PathOf("full"));
  for (int32_t MockRennick::*const failure :
       {&MockRennick::status, &MockRennick::encode_null, &MockRennick::encode_empty}) {
    session_->PDF_SetLastError(0);
    (*mock.operator->()).*failure = 1;
    EXPECT_EQ(Encode(Picture(), PathOf("full")), INVALID_HANDLE_VALUE);
    EXPECT_EQ(Code(), 20u);
    (*mock.operator->()).*failure = 0;
  }
}

TEST_F(EncodeJpeg, FailedSaveIs18AndLeavesItsFile) {
  test::PreloadedSibling<MockRennick> const mock(PathOf("full"));
  mock->save_fails = 1;
  EXPECT_EQ(EncodeInFile(Picture(), PathOf("full")), INVALID_HANDLE_VALUE);
  EXPECT_EQ(Code(), 18u);
  ASSERT_EQ(test::NamesIn(temp_.path()).size(), 1u);
  EXPECT_EQ(test::NamesIn(temp_.path())[0].substr(0, 3), "~tm");
}

// Unlike the fax coder's file, that of a failure is closed; both stay.
TEST_F(EncodeJpeg, EmptyFileIs10AndStaysButClosed) {
  test::PreloadedSibling<MockRennick> const mock(PathOf("full"));
  mock->encode_empty = 1;
  size_t const open = test::OpenHandles();
  EXPECT_EQ(EncodeInFile(Picture(), PathOf("full")), INVALID_HANDLE_VALUE);
  EXPECT_EQ(Code(), 10u);
  EXPECT_EQ(test::OpenHandles(), open);
  EXPECT_EQ(test::NamesIn(temp_.path()).size(), 1u);
}

TEST_F(EncodeJpeg, BitmapIsUnlockedAfterEveryFailure) {
  Block const bilevel = Picture(1);
  Encode(bilevel, PathOf("full"));
  EncodeInFile(bilevel, PathOf("full"));
  EXPECT_EQ(test::TakeLocks(bilevel), 0);
  Block const dib = Picture();
  Encode(dib, "nowhere.dll");
  EncodeInFile(dib, "nowhere.dll");
  EncodeInFile(dib, PathOf("no_file_save"));
  EXPECT_EQ(test::TakeLocks(dib), 0);
  test::PreloadedSibling<MockRennick> const mock(PathOf("full"));
  for (int32_t MockRennick::*const failure :
       {&MockRennick::status, &MockRennick::encode_null, &MockRennick::encode_empty}) {
    (*mock.operator->()).*failure = 1;
    EXPECT_EQ(Encode(dib, PathOf("full")), INVALID_HANDLE_VALUE);
    EXPECT_EQ(test::TakeLocks(dib), 0);
    (*mock.operator->()).*failure = 0;
  }
  for (int32_t MockRennick::*const failure :
       {&MockRennick::save_fails, &MockRennick::encode_empty}) {
    (*mock.operator->()).*failure = 1;
    EXPECT_EQ(EncodeInFile(dib, PathOf("full")), INVALID_HANDLE_VALUE);
    EXPECT_EQ(test::TakeLocks(dib), 0);
    (*mock.operator->()).*failure = 0;
  }
}

TEST_F(EncodeJpeg, MissingTempDirectoryIs18) {
  test::EnvironmentValue const missing(test::kTempFolderVariable, (temp_ / "none").string());
  EXPECT_EQ(EncodeInFile(Picture(), PathOf("full")), INVALID_HANDLE_VALUE);
  EXPECT_EQ(Code(), 18u);
}

// The call begins again while the entry point is missing, and comes back once it is there.
TEST_F(EncodeJpeg, WithoutTheMemoryEntryPointTheCallWaitsForIt) {
  std::filesystem::path const path = temp_ / test::LibraryFile("rennick");
  auto const copy = [](std::string const& variant, std::filesystem::path const& to) {
    std::filesystem::copy_file(
        std::filesystem::path(MOCKS_DIR) / variant / test::LibraryFile("rennick"), to);
  };
  copy("no_memory_save", path);
  std::thread replace([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    copy("full", temp_ / "new");
    // Windows may keep a library's file while it is loaded.
    std::error_code failed;
    do {
      std::filesystem::rename(temp_ / "new", path, failed);
    } while (failed);
  });
  Block const dib = Picture();
  Block const jpeg(Encode(dib, path.string()));
  replace.join();
  EXPECT_EQ(jpeg.Content(), (Bytes{'J', 'F', 'I', 'F', 0x34}));
  EXPECT_EQ(GlobalUnlock(dib), 0);
  EXPECT_EQ(GetLastError(), ERROR_NOT_LOCKED);
}

// The whole file of the sibling is the stream; 2 by 2 pixels at 72 dots per inch.
TEST_F(EncodeJpeg, PageHoldsTheSiblingsFile) {
  Block const dib = MakeDib({.width = 2, .height = 2, .bits = 24, .x_per_metre = 2835},
                            [](LONG, LONG) { return 0u; });
  test::MemoryDocument document;
  document.Create();
  EXPECT_EQ(document->SaveDIBAsColorPDFPage(dib, PathOf("full").c_str(), PDF_COMPRESSION_JPEG, 50),
            1);
  EXPECT_EQ(
      test::WithoutDate(document.Finish()),
      test::GoldenDocument(
          {test::kGoldenInfo, test::kGoldenOutlines, "4 0 obj\n[/PDF /ImageC ] \nendobj\n",
           "5 0 obj\n<<\n/Type /XObject\n/Subtype /Image\n/Width 2\n/Height 2\n"
           "/BitsPerComponent 8\n/ColorSpace /DeviceRGB\n/Length 6 0 R \n/Filter /DCTDecode\n"
           ">>\nstream\nJFIF\x02>\nendstream\nendobj\n",
           "6 0 obj\n7\nendobj\n",
           "7 0 obj\n<<\n/Type /Page\n/Parent 3 0 R\n/MediaBox [0 0 2 2]\n/Resources <<\n"
           "/XObject << /Im5 5 0 R >> \n/ProcSet 4 0 R\n>>\n/Contents 8 0 R\n>>\nendobj\n",
           "8 0 obj\n<< /Length 9 0 R >>\nstream\n1.0000 0.0000 0.0000 1.0000 0.0000 0.0000 cm\n"
           "2.0000 0.0000 0.0000  2.0000 0.0000 0.0000 cm\n/Im5 Do\nendstream\nendobj\n",
           "9 0 obj\n99\nendobj\n",
           "3 0 obj\n<<\n/Type /Pages\n/Count 1\n/Kids [ \n7 0 R \n]\n>>\nendobj\n",
           "10 0 obj\n<<\n/Type /Catalog\n/Pages 3 0 R\n/Outlines 2 0 R\n>>\nendobj\n"}));
}

}  // namespace
