// JPEG image data become a bitmap, through mock siblings.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>
#include <tests/image/mocks/mock_siblings.h>
#include <tests/support/dib_content.h>
#include <tests/support/environment.h>
#include <tests/support/preloaded_sibling.h>
#include <tests/support/temp_dir.h>

#include <memory>

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

std::string MockPath(std::string const& variant) {
  return std::string(MOCKS_DIR) + "/" + variant + "/Rennick.dll";
}

std::string Narrow(WCHAR const* text) {
  std::string narrow;
  for (; *text != 0; ++text) narrow += static_cast<char>(*text);
  return narrow;
}

class DecodeJpeg : public testing::Test {
 protected:
  TempDir temp_;
  EnvironmentValue temp_variable_{kTempFolderVariable, temp_.path().string()};
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
  EXPECT_EQ(WithoutLibraries([&] { return session.CreateDIBFromJPEGData(block); }), nullptr);
  EXPECT_EQ(session.PDF_GetLastError(), 21u);
  session.PDF_SetLastError(0);
  EXPECT_EQ(WithoutLibraries([&] { return session.CreateDIBFromJPEGDataFile(block); }), nullptr);
  EXPECT_EQ(session.PDF_GetLastError(), 21u);
}

TEST_F(DecodeJpeg, TempDirectoryWhosePathIsTooLongIsCode17) {
  PreloadedSibling<MockRennick> const mock(MockPath("no_memory"));
  EnvironmentValue const too_long(kTempFolderVariable, "/" + std::string(300, 'x'));
  EXPECT_EQ(session_->CreateDIBFromJPEGData(data_), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 17u);
}

TEST_F(DecodeJpeg, TempDirectoryThatDoesNotExistIsCode18) {
  PreloadedSibling<MockRennick> const mock(MockPath("no_memory"));
  EnvironmentValue const missing(kTempFolderVariable, (temp_ / "missing").string());
  EXPECT_EQ(session_->CreateDIBFromJPEGData(data_), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 18u);
}

}  // namespace
}  // namespace test
