// JPEG image data become a bitmap, through mock siblings and through the real one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>
#include <tests/image/mocks/mock_siblings.h>
#include <tests/support/dib_content.h>
#include <tests/support/environment.h>
#include <tests/support/preloaded_sibling.h>
#include <tests/support/temp_dir.h>

#include <cstdlib>
#include <memory>

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

std::string MockPath(std::string const& variant) {
  return std::string(MOCKS_DIR) + "/" + variant + "/librennick.so";
}

std::string Narrow(WCHAR const* text) {
  std::string narrow;
  for (; *text != 0; ++text) narrow += static_cast<char>(*text);
  return narrow;
}

class DecodeJpeg : public testing::Test {
 protected:
  TempDir temp_;
  EnvironmentValue temp_variable_{"TMPDIR", temp_.path().string()};
  std::unique_ptr<CCreatePDF> session_ = std::make_unique<CCreatePDF>();
  Block const data_ = MakeBlock({42, 2, 3});
};

TEST_F(DecodeJpeg, MemoryRouteGivesTheSiblingsBitmapAsItIs) {
  PreloadedSibling<MockRennick> const mock(MockPath("full"));
  DibContent const dib = ReadDib(Block(session_->CreateDIBFromJPEGData(data_)));
  EXPECT_EQ(dib.header.biXPelsPerMeter, 1234);
  EXPECT_EQ(dib.Pixel(0, 0), 42u);
  EXPECT_EQ(mock->bytes, 3u);
  EXPECT_EQ(mock->path[0], 0);
  EXPECT_EQ(TakeLocks(data_), 0);
}

TEST_F(DecodeJpeg, NullResultOnTheMemoryRouteIsCode27) {
  PreloadedSibling<MockRennick> const mock(MockPath("full"));
  mock->fails = 1;
  EXPECT_EQ(session_->CreateDIBFromJPEGData(data_), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 27u);
  EXPECT_EQ(TakeLocks(data_), 0);
}

TEST_F(DecodeJpeg, DataThatCannotBeLockedGiveNullWithoutACode) {
  PreloadedSibling<MockRennick> const mock(MockPath("full"));
  for (HGLOBAL const handle : {HGLOBAL{nullptr}, INVALID_HANDLE_VALUE}) {
    EXPECT_EQ(session_->CreateDIBFromJPEGData(handle), nullptr);
    EXPECT_EQ(session_->CreateDIBFromJPEGDataFile(handle), nullptr);
  }
  EXPECT_EQ(session_->PDF_GetLastError(), 32u);
  EXPECT_EQ(mock->loads, 0);
}

TEST_F(DecodeJpeg, SiblingWithoutTheMemoryEntryIsGivenATemporaryFile) {
  PreloadedSibling<MockRennick> const mock(MockPath("no_memory"));
  DibContent const dib = ReadDib(Block(session_->CreateDIBFromJPEGData(data_)));
  EXPECT_EQ(dib.Pixel(0, 0), 42u);
  EXPECT_EQ(mock->bytes, 3u);
  EXPECT_THAT(Narrow(mock->path), StartsWith((temp_ / "~tm").string()));
  EXPECT_THAT(NamesIn(temp_.path()), IsEmpty());
  EXPECT_EQ(TakeLocks(data_), 0);
}

TEST_F(DecodeJpeg, NullResultOnTheFileRouteSetsNoCodeAndDeletesTheFile) {
  PreloadedSibling<MockRennick> const mock(MockPath("no_memory"));
  mock->fails = 1;
  EXPECT_EQ(session_->CreateDIBFromJPEGData(data_), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 32u);
  EXPECT_THAT(NamesIn(temp_.path()), IsEmpty());
}

TEST_F(DecodeJpeg, SiblingWithoutEntriesIsCode21) {
  PreloadedSibling<MockRennick> const mock(MockPath("none"));
  EXPECT_EQ(session_->CreateDIBFromJPEGData(data_), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 21u);
}

TEST_F(DecodeJpeg, SiblingThatCannotBeLoadedIsCode21) {
  CCreatePDF& session = *session_;
  HGLOBAL const block = data_.get();
  EXPECT_EQ(WithoutFiles([&] { return session.CreateDIBFromJPEGData(block); }), nullptr);
  EXPECT_EQ(session.PDF_GetLastError(), 21u);
  session.PDF_SetLastError(0);
  EXPECT_EQ(WithoutFiles([&] { return session.CreateDIBFromJPEGDataFile(block); }), nullptr);
  EXPECT_EQ(session.PDF_GetLastError(), 21u);
}

TEST_F(DecodeJpeg, TempDirectoryWhosePathIsTooLongIsCode17) {
  PreloadedSibling<MockRennick> const mock(MockPath("no_memory"));
  EnvironmentValue const too_long("TMPDIR", "/" + std::string(300, 'x'));
  EXPECT_EQ(session_->CreateDIBFromJPEGData(data_), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 17u);
}

TEST_F(DecodeJpeg, TempDirectoryThatDoesNotExistIsCode18) {
  PreloadedSibling<MockRennick> const mock(MockPath("no_memory"));
  EnvironmentValue const missing("TMPDIR", (temp_ / "missing").string());
  EXPECT_EQ(session_->CreateDIBFromJPEGData(data_), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 18u);
}

TEST_F(DecodeJpeg, RealSiblingGivesBackWhatItCodedWithinItsLoss) {
  Block const original = MakeDib({.width = 40, .height = 30, .bits = 24}, [](LONG x, LONG y) {
    return static_cast<DWORD>(x * 6 << 16 | y * 8 << 8 | 100);
  });
  DWORD size = 0;
  Block const coded(
      session_->ConvertDIB2DctJpegPDFImageW(original, size, SORRELIN_TEXT("Rennick.dll"), 95, 0));
  DibContent const dib = ReadDib(Block(session_->CreateDIBFromJPEGData(coded)));
  ASSERT_EQ(dib.header.biBitCount, 24);
  for (size_t y = 0; y < 30; ++y) {
    for (size_t x = 0; x < 40 * 3; ++x) {
      EXPECT_LE(std::abs(dib.rows[y][x] - ReadDib(original).rows[y][x]), 12) << x << ' ' << y;
    }
  }
}

TEST_F(DecodeJpeg, DamagedFileOnTheRealSiblingIsCode27) {
  EXPECT_EQ(session_->CreateDIBFromJPEGData(data_), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 27u);
}

}  // namespace
}  // namespace test
