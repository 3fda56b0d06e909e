// The Group 4 encoders against mock siblings, whose coded data are the rows that they were given.
#include <gtest/gtest.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/wide_string.h>

#include <memory>

#include "tests/image/mocks/mock_siblings.h"
#include "tests/support/dib.h"
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
  return std::string(MOCKS_DIR) + "/" + variant + "/Cadwick.dll";
}

Block Stairs(std::vector<RGBQUAD> const& palette = {}, bool inverse = false) {
  return MakeDib({.width = 10, .height = 3, .bits = 1, .palette = palette},
                 [=](LONG x, LONG y) { return (x <= y) != inverse ? 1u : 0u; });
}

class EncodeCcitt : public testing::Test {
 protected:
  std::unique_ptr<CCreatePDF> session_ = std::make_unique<CCreatePDF>();
  DWORD size_ = 0;
  test::TempDir temp_;
  test::LeftOpen left_open_{temp_.path()};
  test::EnvironmentValue temp_value_{test::kTempFolderVariable, temp_.path().string()};

  Block Encode(HDIB dib, std::string const& variant) {
    return Block(session_->ConvertDIB2CcittPDFImage(dib, size_, PathOf(variant).c_str()));
  }
  Block EncodeInFile(HDIB dib, std::string const& variant) {
    return Block(session_->ConvertDIB2CcittPDFImageFileW(
        dib, size_, sorrelin::ToWide(PathOf(variant).c_str()).c_str()));
  }
  DWORD Code() { return session_->PDF_GetLastError(); }
};

// Rows 1.., 11.., 111.., inverted, the padding too.
Bytes const kInvertedStairs = {0x7F, 0xFF, 0x3F, 0xFF, 0x1F, 0xFF};

TEST_F(EncodeCcitt, RowsComeFromTheTopInverted) {
  test::PreloadedSibling<MockCadwick> const mock(PathOf("full"));
  EXPECT_EQ(Encode(Stairs(), "full").Content(), kInvertedStairs);
  EXPECT_EQ(size_, 6u);
  EXPECT_EQ(mock->width, 10);
  EXPECT_EQ(mock->height, 3);
  EXPECT_EQ(mock->last_compression, 4);
  EXPECT_EQ(mock->last_callback, 0);
  EXPECT_EQ(mock->past_end, 3);
  EXPECT_EQ(mock->opened_bytes, 1u);
  EXPECT_EQ(mock->opened_block_bytes, 1u);
  EXPECT_EQ(mock->closed, 1);
}

TEST_F(EncodeCcitt, WhiteFirstColourGivesTheStreamOfTheInverseBitmap) {
  Bytes const white_first = Encode(Stairs({test::kWhite, test::kBlack}), "full").Content();
  EXPECT_EQ(white_first, Encode(Stairs(), "full").Content());
  EXPECT_NE(white_first, Encode(Stairs({}, true), "full").Content());
}

TEST_F(EncodeCcitt, RowsAreSoughtBehindTwoColoursAndMissingBytesAreBlack) {
  Block const dib = Stairs();
  GlobalReAlloc(dib, 48 + 9, GMEM_MOVEABLE);  // the top row keeps one byte
  EXPECT_EQ(Encode(dib, "full").Content(), kInvertedStairs);
  GlobalReAlloc(dib, 48 + 8, GMEM_MOVEABLE);
  EXPECT_EQ(Encode(dib, "full").Content(), (Bytes{0xFF, 0xFF, 0x3F, 0xFF, 0x1F, 0xFF}));
}

TEST_F(EncodeCcitt, WithoutMOpenTheFileRouteRunsAndItsFileIsGoneAfterwards) {
  EXPECT_EQ(Encode(Stairs(), "no_mopen").Content(), kInvertedStairs);
  EXPECT_TRUE(test::NamesIn(temp_.path()).empty());
}

TEST_F(EncodeCcitt, BothRoutesGiveTheSameBytes) {
  EXPECT_EQ(EncodeInFile(Stairs(), "full").Content(), kInvertedStairs);
  EXPECT_EQ(size_, 6u);
}

TEST_F(EncodeCcitt, DepthOtherThan1Is5BeforeAnyLibraryIsTouched) {
  for (WORD const bits : std::initializer_list<WORD>{8, 24}) {
    Block const dib = MakeDib({.bits = bits}, [](LONG, LONG) { return 0u; });
    EXPECT_EQ(session_->ConvertDIB2CcittPDFImageW(dib, size_, nullptr), INVALID_HANDLE_VALUE);
    EXPECT_EQ(Code(), 5u);
    EXPECT_EQ(session_->ConvertDIB2CcittPDFImageFileW(dib, size_, nullptr), INVALID_HANDLE_VALUE);
    EXPECT_EQ(Code(), 5u);
  }
}

TEST_F(EncodeCcitt, HandleThatCannotBeLockedGivesMinus1WithoutACode) {
  for (HDIB const bad : {HDIB{nullptr}, HDIB{INVALID_HANDLE_VALUE}}) {
    EXPECT_EQ(session_->ConvertDIB2CcittPDFImageW(bad, size_, nullptr), INVALID_HANDLE_VALUE);
    EXPECT_EQ(session_->ConvertDIB2CcittPDFImageFileW(bad, size_, nullptr), INVALID_HANDLE_VALUE);
  }
  EXPECT_EQ(Code(), 32u);
}

TEST_F(EncodeCcitt, LibraryThatCannotBeUsedIs19) {
  Block const dib = Stairs();
  EXPECT_EQ(session_->ConvertDIB2CcittPDFImageW(dib, size_, nullptr), INVALID_HANDLE_VALUE);
  EXPECT_EQ(Code(), 19u);
  std::filesystem::path const text = temp_ / test::LibraryFile("text");
  test::WriteAll(text, {'t', 'e', 'x', 't'});
  for (std::string const& name :
       {std::string(), std::string("nowhere.dll"), text.string(), PathOf("no_mclose"),
        PathOf("no_encode"), PathOf("no_mopen_no_encode"), PathOf("none")}) {
    session_->PDF_SetLastError(0);
    EXPECT_EQ(session_->ConvertDIB2CcittPDFImage(dib, size_, name.c_str()), INVALID_HANDLE_VALUE);
    EXPECT_EQ(Code(), 19u) << name;
  }
}

TEST_F(EncodeCcitt, MemoryFileThatCannotBeOpenedIs10) {
  test::PreloadedSibling<MockCadwick> const mock(PathOf("full"));
  mock->open_null = 1;
  EXPECT_EQ(session_->ConvertDIB2CcittPDFImage(Stairs(), size_, PathOf("full").c_str()),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(Code(), 10u);
}

TEST_F(EncodeCcitt, FailedOrEmptyCodingIs20) {
  test::PreloadedSibling<MockCadwick> const mock(PathOf("full"));
  for (int32_t MockCadwick::*const failure :
       {&MockCadwick::encode_fails, &MockCadwick::writes_nothing}) {
    session_->PDF_SetLastError(0);
    (*mock.operator->()).*failure = 1;
    EXPECT_EQ(session_->ConvertDIB2CcittPDFImage(Stairs(), size_, PathOf("full").c_str()),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(Code(), 20u);
    (*mock.operator->()).*failure = 0;
  }
  EXPECT_EQ(mock->closed, 2);
}

// The size is that of the step that failed, or the caller's where none was taken before.
TEST_F(EncodeCcitt, FailedCodingLeavesTheSizeThatWasTakenLast) {
  test::PreloadedSibling<MockCadwick> const memory(PathOf("full"));
  size_ = 77;
  memory->encode_fails = 1;
  session_->ConvertDIB2CcittPDFImage(Stairs(), size_, PathOf("full").c_str());
  EXPECT_EQ(size_, 77u);
  memory->encode_fails = 0;
  memory->writes_nothing = 1;
  session_->ConvertDIB2CcittPDFImage(Stairs(), size_, PathOf("full").c_str());
  EXPECT_EQ(size_, 0u);
  test::PreloadedSibling<MockCadwick> const file(PathOf("no_mopen"));
  size_ = 77;
  file->encode_fails = 1;
  session_->ConvertDIB2CcittPDFImage(Stairs(), size_, PathOf("no_mopen").c_str());
  EXPECT_EQ(size_, 77u);
  file->encode_fails = 0;
  file->writes_nothing = 1;
  session_->ConvertDIB2CcittPDFImage(Stairs(), size_, PathOf("no_mopen").c_str());
  EXPECT_EQ(size_, 0u);
}

TEST_F(EncodeCcitt, FailedFileRouteLeavesItsFile) {
  test::PreloadedSibling<MockCadwick> const mock(PathOf("no_mopen"));
  mock->encode_fails = 1;
  EXPECT_EQ(session_->ConvertDIB2CcittPDFImage(Stairs(), size_, PathOf("no_mopen").c_str()),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(Code(), 20u);
  ASSERT_EQ(test::NamesIn(temp_.path()).size(), 1u);
  EXPECT_EQ(test::NamesIn(temp_.path())[0].substr(0, 3), "raw");
}

// Kept: the handle of the file stays open with it.
TEST_F(EncodeCcitt, FailedFileRouteLeavesItsHandleOpen) {
  test::PreloadedSibling<MockCadwick> const mock(PathOf("no_mopen"));
  size_t const open = test::OpenHandles();
  EXPECT_EQ(EncodeInFile(Stairs(), "no_mopen").Content(), kInvertedStairs);
  EXPECT_EQ(test::OpenHandles(), open);
  mock->encode_fails = 1;
  EXPECT_EQ(EncodeInFile(Stairs(), "no_mopen").get(), INVALID_HANDLE_VALUE);
  EXPECT_EQ(test::OpenHandles(), open + 1);
}

TEST_F(EncodeCcitt, EmptyFileIs10) {
  test::PreloadedSibling<MockCadwick> const mock(PathOf("no_mopen"));
  mock->writes_nothing = 1;
  EXPECT_EQ(session_->ConvertDIB2CcittPDFImage(Stairs(), size_, PathOf("no_mopen").c_str()),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(Code(), 10u);
}

TEST_F(EncodeCcitt, MissingTempDirectoryIs18) {
  test::EnvironmentValue const missing(test::kTempFolderVariable, (temp_ / "none").string());
  EXPECT_EQ(session_->ConvertDIB2CcittPDFImage(Stairs(), size_, PathOf("no_mopen").c_str()),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(Code(), 18u);
}

TEST_F(EncodeCcitt, TempDirectoryThatIsAFileIs18) {
  test::WriteAll(temp_ / "file", {'x'});
  test::EnvironmentValue const file(test::kTempFolderVariable, (temp_ / "file").string());
  EXPECT_EQ(session_->ConvertDIB2CcittPDFImage(Stairs(), size_, PathOf("no_mopen").c_str()),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(Code(), 18u);
}

TEST_F(EncodeCcitt, TempDirectoryThatTakesNoFilesIs18) {
  if (!std::filesystem::is_directory(test::kFolderThatTakesNoFiles)) GTEST_SKIP();
  test::EnvironmentValue const folder(test::kTempFolderVariable, test::kFolderThatTakesNoFiles);
  EXPECT_EQ(session_->ConvertDIB2CcittPDFImage(Stairs(), size_, PathOf("no_mopen").c_str()),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(Code(), 18u);
}

TEST_F(EncodeCcitt, TempDirectoryWithoutRoomForItsNameIs17) {
  test::EnvironmentValue const endless(test::kTempFolderVariable, "/" + std::string(300, 'x'));
  EXPECT_EQ(session_->ConvertDIB2CcittPDFImage(Stairs(), size_, PathOf("no_mopen").c_str()),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(Code(), 17u);
}

TEST_F(EncodeCcitt, BitmapIsUnlockedOnEveryWay) {
  Block const dib = Stairs();
  Encode(dib, "full");
  Encode(dib, "no_mopen");
  session_->ConvertDIB2CcittPDFImage(dib, size_, "nowhere.dll");
  session_->ConvertDIB2CcittPDFImage(dib, size_, PathOf("no_encode").c_str());
  EXPECT_EQ(GlobalUnlock(dib), 0);
  EXPECT_EQ(GetLastError(), ERROR_NOT_LOCKED);
}

// The page of the stairs at 96 dots per inch: 10 by 3 pixels are 7.5 by 2.25 points, rounded.
std::string PageOf(std::vector<RGBQUAD> const& palette) {
  test::MemoryDocument document;
  document.Create();
  EXPECT_EQ(document->SaveDIBAsColorPDFPage(Stairs(palette), PathOf("full").c_str(),
                                            PDF_COMPRESSION_CCITT, 0),
            1);
  return test::WithoutDate(document.Finish());
}

std::string GoldenPage(std::string const& decode) {
  std::string const data(kInvertedStairs.begin(), kInvertedStairs.end());
  return test::GoldenDocument(
      {test::kGoldenInfo, test::kGoldenOutlines, "4 0 obj\n[/PDF /ImageB ] \nendobj\n",
       "5 0 obj\n<<\n/Type /XObject\n/Subtype /Image\n/Width 10\n/Height 3\n"
       "/BitsPerComponent 1\n/Decode " +
           decode +
           "\n/ColorSpace /DeviceGray\n/Length 6 0 R \n/Filter /CCITTFaxDecode\n/DecodeParms\n<<\n"
           "/K -1\n/BlackIs1 false\n/Columns 10\n/Rows 3\n/EndOfLine false\n"
           "/EncodedByteAlign false\n/Columns 10\n/EndOfBlock true\n/DamagedRowsBeforeError 0\n"
           ">>\n/ImageMask false\n>>\nstream\n" +
           data + ">\nendstream\nendobj\n",
       "6 0 obj\n8\nendobj\n",
       "7 0 obj\n<<\n/Type /Page\n/Parent 3 0 R\n/MediaBox [0 0 8 2]\n/Resources <<\n"
       "/XObject << /Im5 5 0 R >> \n/ProcSet 4 0 R\n>>\n/Contents 8 0 R\n>>\nendobj\n",
       "8 0 obj\n<< /Length 9 0 R >>\nstream\n1.0000 0.0000 0.0000 1.0000 0.0000 0.0000 cm\n"
       "8.0000 0.0000 0.0000  2.0000 0.0000 0.0000 cm\n/Im5 Do\nendstream\nendobj\n",
       "9 0 obj\n99\nendobj\n",
       "3 0 obj\n<<\n/Type /Pages\n/Count 1\n/Kids [ \n7 0 R \n]\n>>\nendobj\n",
       "10 0 obj\n<<\n/Type /Catalog\n/Pages 3 0 R\n/Outlines 2 0 R\n>>\nendobj\n"});
}

TEST_F(EncodeCcitt, PageHasTheParametersOfGroup4) { EXPECT_EQ(PageOf({}), GoldenPage("[0 1]")); }

TEST_F(EncodeCcitt, WhiteFirstColourIsToldByDecodeAlone) {
  EXPECT_EQ(PageOf({test::kWhite, test::kBlack}), GoldenPage("[1 0]"));
}

}  // namespace
