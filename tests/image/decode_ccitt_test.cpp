// CCITT image data become a bitmap, through mock siblings whose coded data are the rows themselves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/image/codecs/sibling_library.h>
#include <tests/image/mocks/mock_siblings.h>
#include <tests/support/dib_content.h>
#include <tests/support/environment.h>
#include <tests/support/preloaded_sibling.h>
#include <tests/support/session_probe.h>
#include <tests/support/temp_dir.h>

#include <memory>
#include <numeric>

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

std::string MockPath(std::string const& variant) {
  return std::string(MOCKS_DIR) + "/" + variant + "/Cadwick.dll";
}

Bytes Counting(size_t size) {
  Bytes bytes(size);
  std::iota(bytes.begin(), bytes.end(), BYTE{1});
  return bytes;
}

class DecodeCcitt : public testing::Test {
 protected:
  Block Decode(Bytes const& data, DWORD width, DWORD height) {
    data_ = MakeBlock(data);
    return Block(session_->CreateDIBFromCCITTData(data_, width, height));
  }
  void ExpectFailure(Bytes const& data, DWORD width, DWORD height, DWORD error) {
    session_->PDF_SetLastError(0);
    EXPECT_EQ(Decode(data, width, height).get(), nullptr);
    EXPECT_EQ(session_->PDF_GetLastError(), error);
    EXPECT_EQ(TakeLocks(data_), 0);
  }

  TempDir temp_;
  EnvironmentValue temp_variable_{kTempFolderVariable, temp_.path().string()};
  std::unique_ptr<CCreatePDF> session_ = std::make_unique<CCreatePDF>();
  Block data_;
};

struct Polarity {
  DWORD black_is_1;
  DWORD decode_normal;
  BYTE first;
  BYTE second;
};

class DecodeCcittPolarity : public DecodeCcitt, public testing::WithParamInterface<Polarity> {};

TEST_P(DecodeCcittPolarity, GivesAllFourBytesOfBothEntries) {
  PreloadedSibling<MockCadwick> const mock(MockPath("full"));
  Polarity const& p = GetParam();
  SessionProbe::BlackIs1(*session_) = p.black_is_1;
  SessionProbe::DecodeNormal(*session_) = p.decode_normal;
  EXPECT_EQ(ReadDib(Decode({1}, 8, 1)).table,
            (Bytes{p.first, p.first, p.first, p.first, p.second, p.second, p.second, p.second}));
}

INSTANTIATE_TEST_SUITE_P(Matrix, DecodeCcittPolarity,
                         testing::Values(Polarity{0, 1, 255, 0}, Polarity{0, 0, 0, 255},
                                         Polarity{1, 1, 0, 255}, Polarity{1, 0, 255, 0}));

TEST_F(DecodeCcitt, RowsTakeTheirPlacesFromTheTopWithoutInversion) {
  PreloadedSibling<MockCadwick> const mock(MockPath("full"));
  DibContent const dib = ReadDib(Decode(Counting(6), 16, 3));
  EXPECT_EQ(dib.header.biBitCount, 1);
  EXPECT_EQ(dib.header.biSizeImage, 12u);
  EXPECT_EQ(dib.rows, (std::vector<Bytes>{{1, 2, 0, 0}, {3, 4, 0, 0}, {5, 6, 0, 0}}));
}

TEST_F(DecodeCcitt, MemoryRouteOpensTheDataOnceAndClosesThem) {
  PreloadedSibling<MockCadwick> const mock(MockPath("full"));
  Block const dib = Decode(Counting(7), 16, 3);
  EXPECT_EQ(mock->opened, 1);
  EXPECT_EQ(mock->opened_bytes, 7u);
  EXPECT_EQ(mock->closed, 1);
  EXPECT_EQ(mock->decodes, 1);
  EXPECT_EQ(mock->last_compression, 4);
  EXPECT_EQ(mock->last_user, dib.get());
  EXPECT_EQ(TakeLocks(data_), 0);
  EXPECT_EQ(TakeLocks(dib), 0);
  EXPECT_THAT(NamesIn(temp_.path()), IsEmpty());
}

TEST_F(DecodeCcitt, NinetyRowsUnderHeight100TakeTenExtraDecodes) {
  PreloadedSibling<MockCadwick> const mock(MockPath("full"));
  DibContent const dib = ReadDib(Decode(Counting(90), 8, 100));
  EXPECT_EQ(mock->decodes, 11);
  EXPECT_EQ(mock->rewound, 10);
  EXPECT_EQ(mock->last_height, 90);
  EXPECT_EQ(dib.header.biHeight, 100);
  for (size_t y = 0; y < 100; ++y) {
    EXPECT_EQ(dib.rows[y], (Bytes{static_cast<BYTE>(y < 90 ? y + 1 : 0), 0, 0, 0})) << y;
  }
}

TEST_F(DecodeCcitt, SiblingThatCountsItsRowsIsAskedForThatHeightAtOnce) {
  PreloadedSibling<MockCadwick> const mock(MockPath("rows"));
  DibContent const dib = ReadDib(Decode(Counting(90), 8, 100));
  EXPECT_EQ(mock->decodes, 2);
  EXPECT_EQ(mock->last_height, 90);
  EXPECT_EQ(dib.header.biHeight, 100);
  EXPECT_EQ(dib.rows[89], (Bytes{90, 0, 0, 0}));
  EXPECT_EQ(dib.rows[90], Bytes(4));
}

TEST_F(DecodeCcitt, DataWithoutAWholeRowEndAtHeight1WithCode30) {
  PreloadedSibling<MockCadwick> const mock(MockPath("full"));
  ExpectFailure({1}, 16, 5, 30);
  EXPECT_EQ(mock->decodes, 5);
  EXPECT_EQ(mock->last_height, 1);
  EXPECT_EQ(mock->closed, 1);
}

TEST_F(DecodeCcitt, DataWithoutAWholeRowUnderAHugeHeightEndQuickly) {
  PreloadedSibling<MockCadwick> const mock(MockPath("rows"));
  // The bitmap has room in 32 bits too.
  ExpectFailure({1}, 16, sizeof(void*) == 8 ? 0x10000000 : 0x1000000, 30);
  EXPECT_EQ(mock->decodes, 2);
}

TEST_F(DecodeCcitt, OtherErrorsAreNotTriedAgain) {
  PreloadedSibling<MockCadwick> const mock(MockPath("full"));
  mock->error = 4;
  ExpectFailure({1}, 16, 5, 30);
  EXPECT_EQ(mock->decodes, 1);
  EXPECT_EQ(mock->closed, 1);
}

TEST_F(DecodeCcitt, MemoryFileThatCannotBeOpenedIsCode19) {
  PreloadedSibling<MockCadwick> const mock(MockPath("full"));
  mock->open_fails = 1;
  ExpectFailure({1}, 8, 1, 19);
  EXPECT_EQ(mock->decodes, 0);
}

// Kept: the encoder takes 0 for failure; here the decode goes on with it and fails by itself.
TEST_F(DecodeCcitt, MemoryFileOf0IsDecodedAndClosedLikeAnyOther) {
  PreloadedSibling<MockCadwick> const mock(MockPath("full"));
  mock->open_null = 1;
  ExpectFailure({1}, 8, 1, 30);
  EXPECT_EQ(mock->decodes, 1);
  EXPECT_EQ(mock->closed, 1);
}

TEST_F(DecodeCcitt, CallbackStopsANullRowAndANullBitmap) {
  PreloadedSibling<MockCadwick> const mock(MockPath("full"));
  for (int32_t MockCadwick::*const fault : {&MockCadwick::null_rows, &MockCadwick::no_bitmap}) {
    *mock.operator->() = {};
    mock->error = 4;
    (*mock.operator->()).*fault = 1;
    ExpectFailure({1}, 8, 1, 30);
    EXPECT_EQ(mock->last_callback, 1);
  }
}

TEST_F(DecodeCcitt, RowsMayComeFromAThreadOfTheSiblings) {
  PreloadedSibling<MockCadwick> const mock(MockPath("full"));
  mock->own_thread = 1;
  Block const dib = Decode(Counting(6), 16, 3);
  EXPECT_EQ(ReadDib(dib).rows, (std::vector<Bytes>{{1, 2, 0, 0}, {3, 4, 0, 0}, {5, 6, 0, 0}}));
  EXPECT_EQ(TakeLocks(dib), 0);
}

TEST_F(DecodeCcitt, RowsOutsideThePictureAreDropped) {
  PreloadedSibling<MockCadwick> const mock(MockPath("full"));
  for (int32_t const first : {-1, 1, 2, 0x7FFFFF00, -0x7FFFFFFF}) {
    mock->first_row = first;
    DibContent const dib = ReadDib(Decode({7, 8}, 8, 2));
    EXPECT_EQ(dib.rows[0][0], first == -1 ? 8 : 0);
    EXPECT_EQ(dib.rows[1][0], first == 1 ? 7 : 0);
  }
}

TEST_F(DecodeCcitt, NullHandleGivesNullWithoutACode) {
  EXPECT_EQ(session_->CreateDIBFromCCITTData(nullptr, 1, 1), nullptr);
  EXPECT_EQ(session_->CreateDIBFromCCITTDataFile(nullptr, 1, 1), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 32u);
}

TEST_F(DecodeCcitt, BitmapPast4GiBIsCode10BeforeTheSiblingIsLookedFor) {
  CCreatePDF& session = *session_;
  Block const data = MakeBlock({1});
  HGLOBAL const block = data.get();
  struct {
    DWORD width, height;
  } const sizes[] = {{0xFFFFFFFF, 1}, {1, 0xFFFFFFFF}, {0x7FFFFFFF, 100}};
  for (auto const& size : sizes) {
    for (auto const create :
         {&CCreatePDF::CreateDIBFromCCITTData, &CCreatePDF::CreateDIBFromCCITTDataFile}) {
      session.PDF_SetLastError(0);
      EXPECT_EQ(WithoutLibraries([&] { return (session.*create)(block, size.width, size.height); }),
                nullptr);
      EXPECT_EQ(session.PDF_GetLastError(), 10u);
    }
  }
}

TEST_F(DecodeCcitt, SiblingThatCannotBeLoadedIsCode19) {
  CCreatePDF& session = *session_;
  Block const data = MakeBlock({1});
  HGLOBAL const block = data.get();
  EXPECT_EQ(WithoutLibraries([&] { return session.CreateDIBFromCCITTData(block, 8, 1); }), nullptr);
  EXPECT_EQ(session.PDF_GetLastError(), 19u);
  session.PDF_SetLastError(0);
  EXPECT_EQ(WithoutLibraries([&] { return session.CreateDIBFromCCITTDataFile(block, 8, 1); }),
            nullptr);
  EXPECT_EQ(session.PDF_GetLastError(), 19u);
}

class DecodeCcittLacking : public DecodeCcitt, public testing::WithParamInterface<char const*> {};

TEST_P(DecodeCcittLacking, IsCode19) {
  PreloadedSibling<MockCadwick> const mock(MockPath(GetParam()));
  ExpectFailure({1}, 8, 1, 19);
  EXPECT_EQ(mock->opened, 0);
  EXPECT_THAT(NamesIn(temp_.path()), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(EntryPoint, DecodeCcittLacking,
                         testing::Values("no_mclose", "no_mseek", "no_decode", "no_tifferror",
                                         "no_mopen_no_decode", "no_mopen_no_tifferror", "none"),
                         [](auto const& variant) { return std::string(variant.param); });

TEST_F(DecodeCcitt, SiblingWithoutMemoryFilesIsGivenATemporaryFile) {
  PreloadedSibling<MockCadwick> const mock(MockPath("no_mopen"));
  DibContent const dib = ReadDib(Decode(Counting(6), 16, 3));
  EXPECT_EQ(dib.rows, (std::vector<Bytes>{{1, 2, 0, 0}, {3, 4, 0, 0}, {5, 6, 0, 0}}));
  EXPECT_EQ(mock->decodes, 1);
  EXPECT_EQ(TakeLocks(data_), 0);
  EXPECT_THAT(NamesIn(temp_.path()), IsEmpty());
}

TEST_F(DecodeCcitt, FileRouteLowersTheHeightFromTheStartOfTheFile) {
  PreloadedSibling<MockCadwick> const mock(MockPath("no_mopen"));
  DibContent const dib = ReadDib(Decode(Counting(90), 8, 100));
  EXPECT_EQ(mock->decodes, 11);
  EXPECT_EQ(dib.header.biHeight, 100);
  EXPECT_EQ(dib.rows[89], (Bytes{90, 0, 0, 0}));
  EXPECT_EQ(dib.rows[90], Bytes(4));
}

// Kept: the temporary file is cleaned up after a success only.
TEST_F(DecodeCcitt, FileRouteThatFailsLeavesItsTemporaryFile) {
  PreloadedSibling<MockCadwick> const mock(MockPath("no_mopen"));
  ExpectFailure({1}, 16, 2, 30);
  EXPECT_THAT(NamesIn(temp_.path()), ElementsAre(StartsWith("~tm")));
}

TEST_F(DecodeCcitt, TempDirectoryWhosePathIsTooLongIsCode17) {
  PreloadedSibling<MockCadwick> const mock(MockPath("no_mopen"));
  EnvironmentValue const too_long(kTempFolderVariable, "/" + std::string(300, 'x'));
  ExpectFailure({1}, 8, 1, 17);
}

TEST_F(DecodeCcitt, TempDirectoryThatDoesNotExistIsCode18) {
  PreloadedSibling<MockCadwick> const mock(MockPath("no_mopen"));
  EnvironmentValue const missing(kTempFolderVariable, (temp_ / "missing").string());
  ExpectFailure({1}, 8, 1, 18);
}

TEST_F(DecodeCcitt, DataThatCannotBeLockedAreCode18OnTheFileRoute) {
  PreloadedSibling<MockCadwick> const mock(MockPath("no_mopen"));
  EXPECT_EQ(session_->CreateDIBFromCCITTDataFile(INVALID_HANDLE_VALUE, 8, 1), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 18u);
}

}  // namespace
}  // namespace test
