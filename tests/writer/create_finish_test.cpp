// Opening and ending targets: states, codes, and what stays.
#include <gtest/gtest.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/wide_string.h>

#include <filesystem>

#include "tests/support/dib.h"
#include "tests/support/document.h"
#include "tests/support/short_file.h"
#include "tests/support/system_text.h"
#include "tests/support/temp_dir.h"

namespace {

using test::MemoryDocument;
using test::TempDir;

std::string TextOf(std::filesystem::path const& path) {
  std::vector<BYTE> const bytes = test::ReadAll(path);
  return {bytes.begin(), bytes.end()};
}

test::Block SmallPage() {
  return test::MakeDib({.width = 8, .height = 8, .bits = 1, .x_per_metre = 2835},
                       [](LONG, LONG) { return 1u; });
}

TEST(CreateFinish, DocumentWithoutPagesHasFourRowsInUse) {
  MemoryDocument document;
  document.Create();
  std::string const text = document.Finish();
  EXPECT_NE(text.find("/Size 5\n"), std::string::npos);
  for (DWORD object = 1; object <= 4; ++object) {
    EXPECT_EQ(SessionProbe::Row(document.session(), object).bInUse, 1u) << object;
  }
  EXPECT_EQ(document->GetCatalogObjectNr(), 4u);
  EXPECT_EQ(document->GetPagesRootObjectNr(), 3u);
}

TEST(CreateFinish, DocumentWithoutANumberForItsPagesRootCannotBeFinished) {
  MemoryDocument document;
  document.OpenBare();
  document->PDF_SetLastError(0);
  for (int attempt = 0; attempt < 2; ++attempt) {
    EXPECT_EQ(document->FinishPDF(), 0);
    EXPECT_EQ(document->PDF_GetLastError(), 0u);
    EXPECT_EQ(document.Text().find("xref"), std::string::npos);
  }
}

TEST(CreateFinish, NewDocumentWhosePagesRootGetsNoNumberIsError40) {
  MemoryDocument document;
  document->SetCurrentObject(SessionProbe::kObjectRows - 3);
  EXPECT_EQ(document->CreatePDFInMemory(0, 0), 0);
  EXPECT_EQ(document->PDF_GetLastError(), 40u);
}

TEST(CreateFinish, StartxrefIsTheOffsetOfXrefWithBothLineEnds) {
  for (int const char13 : {0, 1}) {
    MemoryDocument document;
    document->SetChar13(char13);
    document.Create();
    std::string const text = document.Finish();
    size_t const digits = text.find_first_of("0123456789", text.find("startxref"));
    EXPECT_EQ(text.compare(std::stoul(text.substr(digits)), 5, char13 != 0 ? "xref\r" : "xref\n"),
              0);
  }
}

TEST(CreateFinish, EntriesAre20BytesWithLfAnd21WithCrLf) {
  for (int const char13 : {0, 1}) {
    MemoryDocument document;
    document->SetChar13(char13);
    document.Create();
    std::string const text = document.Finish();
    size_t const first = text.find("0000000000 65535 f ");
    EXPECT_EQ(text.find("trailer") - first, 5u * (char13 != 0 ? 21 : 20));
  }
}

TEST(CreateFinish, WriteThatFailsAnywhereFailsTheSection) {
  test::ExpectEveryWriteToCount([](CCreatePDF& s) { return static_cast<DWORD>(s.WriteXref()); });
}

TEST(CreateFinish, SubsectionCountEqualsSize) {
  MemoryDocument document;
  document.Create();
  document->SaveDIBAsColorPDFPageW(SmallPage(), test::kNoLibrary, PDF_COMPRESSION_NONE, 0);
  std::string const text = document.Finish();
  EXPECT_NE(text.find("xref\n0 11\n"), std::string::npos);
  EXPECT_NE(text.find("/Size 11\n"), std::string::npos);
}

TEST(CreateFinish, InfoIsObject1WhateverItHolds) {
  MemoryDocument document;
  document.OpenBare();
  document->WriteToPDFFile("no header", 1);
  document->CreateOutlinesObject(0);
  document->ReservePagesRootObject();
  EXPECT_NE(document.Finish().find("/Info 1 0 R\n"), std::string::npos);
}

TEST(CreateFinish, ReservedNumberThatStaysUnwrittenIsAFreeEntry) {
  MemoryDocument document;
  document.Create();
  EXPECT_EQ(document->ReserveOneObject(), 4u);
  EXPECT_NE(document.Finish().find(" 00000 n \n0000000000 00000 f \n"), std::string::npos);
}

TEST(CreateFinish, EntriesTellTheGeneration) {
  MemoryDocument document;
  document.Create();
  document->ObjectStartNewGen(2, 0, 1, 1);
  EXPECT_NE(document.Finish().find(" 00000 n \n0000000254 00001 n \n"), std::string::npos);
}

TEST(CreateFinish, RowOfTheTableHoldsItsOffsetAndStaysFree) {
  MemoryDocument document;
  document.Create();
  std::string const text = document.Finish();
  EXPECT_EQ(document->GetCurrentObject(), 5u);
  EXPECT_EQ(SessionProbe::Row(document.session(), 5).nOffset, text.find("xref\n"));
  EXPECT_EQ(SessionProbe::Row(document.session(), 5).bInUse, 0u);
}

TEST(CreateFinish, OffsetsOf2GiBPrintAsSignedNumbers) {
  MemoryDocument document;
  document.Create();
  SessionProbe::Row(document.session(), 2).nOffset = 0x80000000u;
  EXPECT_NE(document.Finish().find("\n-2147483648 00000 n \n"), std::string::npos);
}

TEST(CreateFinish, FileHoldsTheSameBytesAsMemory) {
  TempDir const dir;
  std::string const name = (dir / "a.pdf").string();
  auto const session = std::make_unique<CCreatePDF>();
  ASSERT_EQ(session->CreatePDF(name.c_str()), 1);
  EXPECT_EQ(session->SaveDIBAsColorPDFPageW(SmallPage(), test::kNoLibrary, 0, 0), 1);
  EXPECT_EQ(session->FinishPDF(), 1);
  MemoryDocument document;
  document.Create();
  document->SaveDIBAsColorPDFPageW(SmallPage(), test::kNoLibrary, 0, 0);
  EXPECT_EQ(test::WithoutDate(TextOf(name)), test::WithoutDate(document.Finish()));
}

TEST(CreateFinish, MissingDirectoryIsError1WithTheSystemsText) {
  TempDir const dir;
  auto const session = std::make_unique<CCreatePDF>();
  EXPECT_EQ(session->CreatePDF((dir / "none/a.pdf").string().c_str()), 0);
  EXPECT_EQ(session->PDF_GetLastError(), 1u);
  char text[512] = {};
  EXPECT_EQ(session->GetLastPDFErrorText(text), 1);
  EXPECT_EQ(text, test::SystemText(ERROR_PATH_NOT_FOUND));
}

TEST(CreateFinish, FailedOpenLeavesNoChannelInTheSideRecordEither) {
  TempDir const dir;
  auto const session = std::make_unique<CCreatePDF>();
  EXPECT_EQ(session->CreatePDFFile((dir / "none/a.pdf").string().c_str()), 0);
  EXPECT_EQ(SessionProbe::Channel(*session), sorrelin::InvalidChannel());
  EXPECT_EQ(SessionProbe::Reader(*session).file.channel(), sorrelin::InvalidChannel());
}

TEST(CreateFinish, NameDecidesBetweenANewDocumentAndAnUpdate) {
  TempDir const dir;
  std::string const name = (dir / "a.pdf").string();
  auto const session = std::make_unique<CCreatePDF>();
  for (DWORD const update : {0u, 1u}) {
    ASSERT_EQ(session->CreatePDFFile(name.c_str()), 1);
    EXPECT_EQ(SessionProbe::AppendMode(*session), update);
    EXPECT_EQ(SessionProbe::FirstAppendedPage(*session), update);
  }
  ASSERT_EQ(session->CreatePDFFile((dir / "b.pdf").string().c_str()), 1);
  EXPECT_EQ(SessionProbe::AppendMode(*session), 0u);
  session->ClosePDFFile();
}

TEST(CreateFinish, TargetHeldByAnotherSessionIsError1AndStaysAsItIs) {
  TempDir const dir;
  std::string const name = (dir / "a.pdf").string();
  auto const first = std::make_unique<CCreatePDF>();
  auto const second = std::make_unique<CCreatePDF>();
  ASSERT_EQ(first->CreatePDF(name.c_str()), 1);
  EXPECT_EQ(second->CreatePDF(name.c_str()), 0);
  EXPECT_EQ(second->PDF_GetLastError(), 1u);
  EXPECT_EQ(first->FinishPDF(), 1);
  EXPECT_NE(TextOf(name).find("%%EOF\n"), std::string::npos);
}

TEST(CreateFinish, MemoryDocumentOfNoCapacityGrowsAsNeeded) {
  MemoryDocument document;
  EXPECT_EQ(document->CreatePDFInMemory(0, 0), 1);
  EXPECT_EQ(document.Finish().substr(0, 8), "%PDF-1.7");
}

TEST(CreateFinish, CapacityDoesNotShowInTheDocument) {
  MemoryDocument document;
  EXPECT_EQ(document->CreatePDFInMemory(0, 100000), 1);
  std::string const text = document.Finish();
  EXPECT_LT(text.size(), 1000u);
  EXPECT_EQ(text.substr(text.size() - 6), "%%EOF\n");
}

TEST(CreateFinish, FinishWithoutAChannelIsError2) {
  auto const session = std::make_unique<CCreatePDF>();
  EXPECT_EQ(session->FinishPDF(), 0);
  EXPECT_EQ(session->PDF_GetLastError(), 2u);
}

TEST(CreateFinish, SecondFinishIsError11) {
  MemoryDocument document;
  document.Create();
  document.Finish();
  EXPECT_EQ(document->FinishPDF(), 0);
  EXPECT_EQ(document->PDF_GetLastError(), 11u);
}

// Kept: a session serves one document; a second one goes on with the numbers and offsets of the
// first, which ends with the number 5 of its table.
TEST(CreateFinish, SecondDocumentOfASessionContinuesItsCounters) {
  MemoryDocument document;
  document.Create();
  size_t const first = document.Finish().size();
  document.Create();
  EXPECT_EQ(document.Text().substr(16, 8), "6 0 obj\n");
  EXPECT_EQ(SessionProbe::Row(document.session(), 6).nOffset, first + 16);
  EXPECT_EQ(document->GetOutlinesObjectNr(), 7u);
  EXPECT_EQ(document->GetPagesRootObjectNr(), 8u);
}

void ExpectNoChannel(CCreatePDF& session) {
  EXPECT_EQ(SessionProbe::Channel(session), sorrelin::InvalidChannel());
  EXPECT_EQ(SessionProbe::Reader(session).file.channel(), sorrelin::InvalidChannel());
}

TEST(CreateFinish, CloseTwiceDoesNoHarm) {
  MemoryDocument document;
  document.Create();
  document->ClosePDFFile();
  ExpectNoChannel(document.session());
  SetLastError(4711);
  document->ClosePDFFile();
  int64_t data = 99;
  DWORD size = 99;
  document->ClosePDFFileInMemory(&data, &size);
  ExpectNoChannel(document.session());
  EXPECT_EQ(GetLastError(), 4711u);
  EXPECT_EQ(data, 99);
  EXPECT_EQ(size, 99u);
}

TEST(CreateFinish, CreateOnAnOpenSessionClosesTheFirstTarget) {
  TempDir const dir;
  auto const session = std::make_unique<CCreatePDF>();
  ASSERT_EQ(session->CreatePDF((dir / "a.pdf").string().c_str()), 1);
  ASSERT_EQ(session->CreatePDF((dir / "b.pdf").string().c_str()), 1);
  std::filesystem::rename(dir / "a.pdf", dir / "c.pdf");
  sorrelin::WideString const moved = sorrelin::ToWide((dir / "c.pdf").string().c_str());
  sorrelin::FileChannel* const channel =
      sorrelin::ChannelOpenFile(moved.c_str(), 0x40000000u, 1, nullptr, 3, 0, nullptr);
  EXPECT_NE(channel, sorrelin::InvalidChannel());
  sorrelin::ChannelClose(channel);
  session->ClosePDFFile();
}

TEST(CreateFinish, FinishOnAFileStoresNoMemoryDocument) {
  TempDir const dir;
  auto const session = std::make_unique<CCreatePDF>();
  session->CreatePDF((dir / "a.pdf").string().c_str());
  int64_t data = 99;
  DWORD size = 99;
  EXPECT_EQ(session->FinishPDFInMemory(&data, &size), 1);
  EXPECT_EQ(data, 0);
  EXPECT_EQ(size, 0u);
}

TEST(CreateFinish, ClearsAnOlderError) {
  MemoryDocument document;
  document->PDF_SetLastError(20);
  document.Create();
  EXPECT_EQ(document->PDF_GetLastError(), 0u);
  TempDir const dir;
  auto const session = std::make_unique<CCreatePDF>();
  EXPECT_EQ(session->CreatePDF((dir / "a.pdf").string().c_str()), 1);
  EXPECT_EQ(session->PDF_GetLastError(), 0u);
  session->ClosePDFFile();
}

TEST(CreateFinish, NamesBeyondAsciiReachTheDisk) {
  TempDir const dir;
  auto const session = std::make_unique<CCreatePDF>();
  ASSERT_EQ(session->CreatePDF((dir / "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80.pdf").string().c_str()),
            1);
  session->FinishPDF();
  EXPECT_TRUE(std::filesystem::exists(dir / "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80.pdf"));
}

struct EndOfAFile {
  size_t begin;
  size_t end;
};

EndOfAFile EndOf(std::string const& name) {
  auto const session = std::make_unique<CCreatePDF>();
  session->CreatePDF(name.c_str());
  size_t const begin = SessionProbe::FilePos(*session);
  EXPECT_EQ(session->FinishPDF(), 1);
  return {begin, std::filesystem::file_size(name)};
}

TEST(CreateFinish, EndThatWasCutAnywhereCanNeverBeFinished) {
  TempDir const dir;
  std::string const name = (dir / "a.pdf").string();
  EndOfAFile const whole = EndOf(name);
  ASSERT_LT(whole.begin, whole.end);
  for (size_t bytes = whole.begin; bytes < whole.end; ++bytes) {
    std::filesystem::remove(name);
    auto const session = std::make_unique<CCreatePDF>();
    ASSERT_EQ(session->CreatePDF(name.c_str()), 1);
    {
      test::FileSizeLimit const limit(bytes);
      ASSERT_EQ(session->FinishPDF(), 0) << bytes;
      ASSERT_EQ(session->PDF_GetLastError(), 1u) << bytes;
    }
    for (int attempt = 0; attempt < 3; ++attempt) {
      ASSERT_EQ(session->FinishPDF(), 0) << bytes;
      ASSERT_NE(SessionProbe::Channel(*session), sorrelin::InvalidChannel()) << bytes;
    }
    session->ClosePDFFile();
  }
}

TEST(CreateFinish, FailedFinishInMemoryStoresNothing) {
  int64_t data = 99;
  DWORD size = 77;
  auto const closed = std::make_unique<CCreatePDF>();
  EXPECT_EQ(closed->FinishPDFInMemory(&data, &size), 0);
  EXPECT_EQ(closed->PDF_GetLastError(), 2u);
  MemoryDocument finished;
  finished.Create();
  finished.Finish();
  EXPECT_EQ(finished->FinishPDFInMemory(&data, &size), 0);
  EXPECT_EQ(finished->PDF_GetLastError(), 11u);
  EXPECT_EQ(data, 99);
  EXPECT_EQ(size, 77u);
}

TEST(CreateFinish, OpeningATargetAloneKeepsAnOlderCode) {
  TempDir const dir;
  std::string const name = (dir / "a.pdf").string();
  auto const session = std::make_unique<CCreatePDF>();
  session->PDF_SetLastError(20);
  for (DWORD const update : {0u, 1u}) {
    EXPECT_EQ(session->CreatePDFFile(name.c_str()), 1);
    EXPECT_EQ(SessionProbe::AppendMode(*session), update);
    EXPECT_EQ(session->PDF_GetLastError(), 20u);
    session->ClosePDFFile();
  }
  MemoryDocument memory;
  memory->PDF_SetLastError(20);
  EXPECT_EQ(memory->CreatePDFFileInMemory(0, 0), 1);
  EXPECT_EQ(memory->PDF_GetLastError(), 20u);
}

}  // namespace
