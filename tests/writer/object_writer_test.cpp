// Numbers, offsets, marks and codes of the object writer.
#include <gtest/gtest.h>
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/wide_string.h>

#include <cstring>
#include <filesystem>
#include <memory>

#include "tests/support/dib.h"
#include "tests/support/document.h"
#include "tests/support/short_file.h"
#include "tests/support/temp_dir.h"

namespace {

using test::MemoryDocument;

DWORD ErrorOf(CCreatePDF& session) { return session.PDF_GetLastError(); }

TEST(ObjectWriter, FreshSessionHasHandedOutNoNumber) {
  MemoryDocument document;
  EXPECT_EQ(document->GetCurrentObject(), 0u);
  EXPECT_EQ(document->GetNextObject(), 1u);
  EXPECT_EQ(document->ObjectExistsAlready(0), 0);
}

TEST(ObjectWriter, FirstObjectAfterTheHeaderIsNumber2) {
  MemoryDocument document;
  document.OpenBare();
  document->WritePDFHeader(nullptr, "x");
  EXPECT_EQ(document->ObjectStart(1, 1), 2u);
}

TEST(ObjectWriter, ObjectIsHeaderBracketsAndEnd) {
  MemoryDocument document;
  document.OpenBare();
  document->SetCurrentObject(6);
  EXPECT_EQ(document->ObjectStart(1, 1), 7u);
  EXPECT_EQ(document->ObjectEnd(1), 1);
  EXPECT_EQ(document.Text(), "7 0 obj\n<<\n>>\nendobj\n");
}

TEST(ObjectWriter, RowHoldsOffsetGenerationAndUse) {
  MemoryDocument document;
  document.OpenBare();
  document->WriteToPDFFile("abc", 1);
  DWORD const object = document->ObjectStart(0, 1);
  sorrelin::ObjectEntry const& row = SessionProbe::Row(document.session(), object);
  EXPECT_EQ(row.nOffset, 4u);
  EXPECT_EQ(row.nGeneration, 0u);
  EXPECT_EQ(row.bInUse, 1u);
}

TEST(ObjectWriter, TakenNumberIsRefusedAndTheAutomaticFormStillConsumesOne) {
  MemoryDocument document;
  document.OpenBare();
  SessionProbe::Row(document.session(), 1).nOffset = 99;
  EXPECT_EQ(document->ObjectStart(1, 1), 0u);
  EXPECT_EQ(ErrorOf(document.session()), 11u);
  EXPECT_EQ(document.Text(), "");
  EXPECT_EQ(document->GetCurrentObject(), 1u);
}

TEST(ObjectWriter, TakenNumberOfTheCallersIsRefusedWithNothingWrittenOrConsumed) {
  MemoryDocument document;
  document.OpenBare();
  document->WriteToPDFFile("x", 1);
  ASSERT_EQ(document->ObjectStart(0, 1), 1u);
  EXPECT_EQ(document.Added([](CCreatePDF& s) { EXPECT_EQ(s.ObjectStart(1, 1, 1), 0u); }), "");
  EXPECT_EQ(ErrorOf(document.session()), 11u);
  EXPECT_EQ(document->GetCurrentObject(), 1u);
  EXPECT_EQ(SessionProbe::Row(document.session(), 1).nOffset, 2u);
}

TEST(ObjectWriter, ReservedNumberOpensExactlyOnce) {
  MemoryDocument document;
  document.OpenBare();
  document->WriteToPDFFile("x", 1);
  DWORD const object = document->ReserveOneObject();
  EXPECT_EQ(document->ObjectStart(object, 0, 1), object);
  EXPECT_EQ(document->ObjectStart(object, 0, 1), 0u);
  EXPECT_EQ(ErrorOf(document.session()), 11u);
}

TEST(ObjectWriter, NewGenerationRewritesAnObject) {
  MemoryDocument document;
  document.OpenBare();
  document->WriteToPDFFile("x", 1);
  document->ObjectStart(0, 1);
  EXPECT_EQ(document.Added([](CCreatePDF& s) { s.ObjectStartNewGen(1, 0, 1, 1); }), "1 1 obj\n");
  EXPECT_EQ(document.Added([](CCreatePDF& s) { s.ObjectStartNewGen(1, 0, 0, 0); }), "1 1 obj");
  EXPECT_EQ(SessionProbe::Row(document.session(), 1).nOffset, 18u);
}

TEST(ObjectWriter, NewGenerationPutsTheRowInUse) {
  MemoryDocument document;
  document.OpenBare();
  SessionProbe::Row(document.session(), 4) = {99, 65535, 2};
  EXPECT_EQ(document.Added([](CCreatePDF& s) { s.ObjectStartNewGen(4, 1, 1, 0); }),
            "4 65535 obj\n<<\n");
  EXPECT_EQ(SessionProbe::Row(document.session(), 4).bInUse, 1u);
  EXPECT_EQ(SessionProbe::Row(document.session(), 4).nOffset, 0u);
  EXPECT_EQ(document->GetCurrentObject(), 0u);
}

TEST(ObjectWriter, NewGenerationOfAMissingObjectIsError11) {
  MemoryDocument document;
  document.OpenBare();
  EXPECT_EQ(document->ObjectStartNewGen(5, 0, 1, 1), 0u);
  EXPECT_EQ(ErrorOf(document.session()), 11u);
  EXPECT_EQ(document->ObjectStartNewGen(SessionProbe::kObjectRows, 0, 1, 1), 0u);
}

TEST(ObjectWriter, EmptyTextIsError8AndNullIsError7) {
  MemoryDocument document;
  document.OpenBare();
  EXPECT_EQ(document->WriteToPDFFile("", 1), 0);
  EXPECT_EQ(ErrorOf(document.session()), 8u);
  EXPECT_EQ(document->WriteToPDFFile(nullptr, 1), 0);
  EXPECT_EQ(ErrorOf(document.session()), 7u);
  EXPECT_EQ(document->WriteRawDataToPDFFile(nullptr, 4), 0u);
  EXPECT_EQ(ErrorOf(document.session()), 7u);
}

TEST(ObjectWriter, NullIsToldBeforeNoBytesAndNoBytesBeforeNoChannel) {
  MemoryDocument document;
  BYTE const byte = 1;
  EXPECT_EQ(document->WriteRawDataToPDFFile(nullptr, 0), 0u);
  EXPECT_EQ(ErrorOf(document.session()), 7u);
  EXPECT_EQ(document->WriteRawDataToPDFFile(&byte, 0), 0u);
  EXPECT_EQ(ErrorOf(document.session()), 8u);
  EXPECT_EQ(document->WriteRawDataToPDFFile(&byte, 1), 0u);
  EXPECT_EQ(ErrorOf(document.session()), 2u);
}

TEST(ObjectWriter, WithoutAChannelWritesAreError2AndMoveNothing) {
  MemoryDocument document;
  EXPECT_EQ(document->WriteToPDFFile("x", 1), 0);
  EXPECT_EQ(ErrorOf(document.session()), 2u);
  EXPECT_EQ(document->WriteEolToPDFFile(), 0u);
  SessionProbe::Channel(document.session()) = nullptr;
  EXPECT_EQ(document->WriteToPDFFile("x", 0), 0);
  EXPECT_EQ(ErrorOf(document.session()), 2u);
  EXPECT_EQ(SessionProbe::FilePos(document.session()), 0u);
  SessionProbe::Channel(document.session()) = sorrelin::InvalidChannel();
}

TEST(ObjectWriter, FailedWriteIsError1AndTheOffsetStaysAdvanced) {
  MemoryDocument document;
  document.OpenBare();
  SessionProbe::Channel(document.session())->buffer.bReadOnly = 1;
  EXPECT_EQ(document->WriteToPDFFile("abc", 1), 0);
  EXPECT_EQ(ErrorOf(document.session()), 1u);
  EXPECT_EQ(SessionProbe::FilePos(document.session()), 3u);
  SessionProbe::Channel(document.session())->buffer.bReadOnly = 0;
}

TEST(ObjectWriter, ResultsTellTheLineEndAndTheLastWrite) {
  MemoryDocument document;
  document.OpenBare();
  EXPECT_EQ(document->WriteToPDFFile("abc", 0), 1);
  EXPECT_EQ(document->WriteEolToPDFFile(), 1u);
  document->SetChar13(1);
  EXPECT_EQ(document->UseChar13(), 1);
  EXPECT_EQ(document->WriteToPDFFile("abc", 1), 2);
  EXPECT_EQ(document->WriteEolToPDFFile(), 1u);
  EXPECT_EQ(document.Text(), "abc\nabc\r\n\r\n");
  EXPECT_EQ(SessionProbe::FilePos(document.session()), document.Text().size());
}

TEST(ObjectWriter, StreamIsFramedWithAnIndirectLength) {
  MemoryDocument document;
  document.OpenBare();
  EXPECT_EQ(document->BeginStream(), 1u);
  document->WriteToPDFFile("12345", 1);
  EXPECT_EQ(document->EndStream(), 1);
  EXPECT_EQ(document->WriteStreamLengthObject(), 2u);
  EXPECT_EQ(document.Text(),
            "1 0 obj\n<< /Length 2 0 R >>\nstream\n12345\nendstream\nendobj\n"
            "2 0 obj\n6\nendobj\n");
}

TEST(ObjectWriter, StreamLengthCountsTheLineEndAsWritten) {
  for (int const char13 : {0, 1}) {
    MemoryDocument document;
    document.OpenBare();
    document->SetChar13(char13);
    document->BeginStream();
    document->WriteToPDFFile("12345", 1);
    document->EndStream();
    EXPECT_EQ(document->GetStreamLength(), char13 != 0 ? 7u : 6u);
  }
}

TEST(ObjectWriter, EqualMarksLeaveAnOpenLengthObjectAndError14) {
  MemoryDocument document;
  document.OpenBare();
  EXPECT_EQ(document->WriteStreamLengthObject(), 0u);
  EXPECT_EQ(ErrorOf(document.session()), 14u);
  EXPECT_EQ(document.Text(), "1 0 obj\n");
}

test::Block BlockOf(char const* text) {
  test::Block block(GlobalAlloc(GHND, std::strlen(text)));
  std::memcpy(GlobalLock(block), text, std::strlen(text));
  GlobalUnlock(block);
  return block;
}

TEST(ObjectWriter, DataStreamEndsWithABracketThatCounts) {
  MemoryDocument document;
  document.OpenBare();
  test::Block const block = BlockOf("RGB");
  EXPECT_EQ(document->WriteDataStreamObject(block, 0), 1u);
  EXPECT_EQ(document.Text(),
            "1 0 obj\n<<\n/Length 2 0 R \n>>\nstream\nRGB>\nendstream\nendobj\n"
            "2 0 obj\n5\nendobj\n");
}

TEST(ObjectWriter, DataStreamTakesTheGivenSizeAndZeroesWhatTheBlockLacks) {
  MemoryDocument document;
  document.OpenBare();
  test::Block const block = BlockOf("RGB");
  document->WriteDataStreamObject(block, 2);
  EXPECT_NE(document.Text().find("stream\nRG>\n"), std::string::npos);
  std::string const longer =
      document.Added([&](CCreatePDF& s) { s.WriteDataStreamObject(block, 5); });
  EXPECT_NE(longer.find(std::string("stream\nRGB\0\0>\n", 14)), std::string::npos);
  // A fixed block can be locked without holding anything.
  test::Block const empty(GlobalAlloc(GPTR, 0));
  std::string const zeros =
      document.Added([&](CCreatePDF& s) { EXPECT_NE(s.WriteDataStreamObject(empty, 2), 0u); });
  EXPECT_NE(zeros.find(std::string("stream\n\0\0>\n", 11)), std::string::npos);
}

TEST(ObjectWriter, DataStreamWithoutAHandleFailsWithoutACode) {
  MemoryDocument document;
  document.OpenBare();
  EXPECT_EQ(document->WriteDataStreamObject(nullptr, 0), 0u);
  EXPECT_EQ(document->WriteDataStreamObject(INVALID_HANDLE_VALUE, 0), 0u);
  EXPECT_EQ(ErrorOf(document.session()), 0u);
  EXPECT_EQ(document.Text(), "");
}

TEST(ObjectWriter, DataStreamOfAnEmptyBlockIsError14) {
  MemoryDocument document;
  document.OpenBare();
  test::Block const empty(GlobalAlloc(GHND, 0));
  EXPECT_EQ(document->WriteDataStreamObject(empty, 0), 0u);
  EXPECT_EQ(ErrorOf(document.session()), 14u);
}

TEST(ObjectWriter, WriteThatFailsAnywhereFailsTheStream) {
  test::ExpectEveryWriteToCount([](CCreatePDF& s) {
    bool const written = s.BeginStream() != 0 && s.WriteToPDFFile("12345", 1) != 0 &&
                         s.EndStream() != 0 && s.WriteStreamLengthObject() != 0;
    return DWORD{written};
  });
  test::ExpectEveryWriteToCount([](CCreatePDF& s) {
    test::Block const block = BlockOf("RGB");
    return s.WriteDataStreamObject(block, 0);
  });
}

TEST(ObjectWriter, NumbersPastTheTableAreError40) {
  MemoryDocument document;
  document.OpenBare();
  document->WriteToPDFFile("x", 1);
  document->SetCurrentObject(SessionProbe::kObjectRows - 2);
  EXPECT_EQ(document->ObjectStart(0, 1), SessionProbe::kObjectRows - 1);
  EXPECT_EQ(document->ObjectStart(0, 1), 0u);
  EXPECT_EQ(ErrorOf(document.session()), 40u);
  document->PDF_SetLastError(0);
  EXPECT_EQ(document->ReserveOneObject(), 0u);
  EXPECT_EQ(ErrorOf(document.session()), 40u);
}

TEST(ObjectWriter, PageListIsClearedOnRequestOnly) {
  MemoryDocument document;
  document.OpenBare();
  document->WriteToPDFFile("x", 1);
  document->CreatePageObject(3, 1, 1, 1, "", {1, 1});
  EXPECT_EQ(document->GetPageObjectNumber(1), 1u);
  document->InitPageObjectsList();
  EXPECT_EQ(document->GetPageObjectNumber(1), 0u);
  EXPECT_EQ(document->GetNumberOfPages(), 1u);
}

TEST(ObjectWriter, PageListOfSlot30000IsThePageCount) {
  MemoryDocument document;
  SessionProbe::TotalPages(document.session()) = 77;
  EXPECT_EQ(document->GetPageObjectNumber(SessionProbe::kPageSlots), 77u);
  EXPECT_EQ(document->GetPageObjectNumber(SessionProbe::kPageSlots + 1), 0u);
  EXPECT_EQ(document->GetPageObjectNumber(0xFFFFFFFFu), 0u);
}

TEST(ObjectWriterDeathTest, LineOf1024BytesEndsTheProcess) {
  MemoryDocument document;
  document.OpenBare();
  std::string const fits(1023 - std::strlen("/Title ()"), 'x');
  document->WritePDFHeader(fits.c_str(), "c");
  EXPECT_NE(document.Text().find("/Title (" + fits + ")\n"), std::string::npos);
  EXPECT_DEATH(document->WritePDFHeader((fits + "x").c_str(), "c"), "1024 bytes");
}

// What "abc" and its end of line leave where the file has room for so many bytes.
struct CutLine {
  int result;
  DWORD error;
  DWORD file_pos;
};

CutLine WriteLineInto(std::string const& name, size_t room) {
  test::FileSizeLimit const limit(room);
  auto const session = std::make_unique<CCreatePDF>();
  SessionProbe::Channel(*session) = sorrelin::ChannelOpenFile(
      sorrelin::ToWide(name.c_str()).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  int const result = session->WriteToPDFFile("abc", 1);
  CutLine const line = {result, ErrorOf(*session), SessionProbe::FilePos(*session)};
  session->ClosePDFFile();
  return line;
}

TEST(ObjectWriter, OffsetOfACutLineMovesForWhatWasTried) {
  test::TempDir const dir;
  std::string const name = (dir / "cut").string();
  for (size_t room = 0; room <= 4; ++room) {
    CutLine const line = WriteLineInto(name, room);
    bool const whole = room == 4;
    EXPECT_EQ(line.result, whole ? 1 : 0) << room;
    EXPECT_EQ(line.error, whole ? 32u : 1u) << room;
    EXPECT_EQ(line.file_pos, room < 3 ? 3u : 4u) << room;
    std::vector<BYTE> const bytes = test::ReadAll(name);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), std::string("abc\n").substr(0, room));
  }
}

TEST(ObjectWriter, OffsetMovesByBothBytesOfALineEndThatFails) {
  test::TempDir const dir;
  std::string const name = (dir / "a").string();
  for (size_t bytes = 0; bytes < 2; ++bytes) {
    std::filesystem::remove(name);
    auto const session = std::make_unique<CCreatePDF>();
    ASSERT_EQ(session->CreatePDFFile(name.c_str()), 1);
    session->SetChar13(1);
    test::FileSizeLimit const limit(bytes);
    EXPECT_EQ(session->WriteEolToPDFFile(), 0u) << bytes;
    EXPECT_EQ(ErrorOf(*session), 1u) << bytes;
    EXPECT_EQ(SessionProbe::FilePos(*session), 2u) << bytes;
    session->ClosePDFFile();
    std::vector<BYTE> const content = test::ReadAll(name);
    EXPECT_EQ(std::string(content.begin(), content.end()), std::string("\r").substr(0, bytes));
  }
}

TEST(ObjectWriter, DataStreamClearsAnOlderCode) {
  MemoryDocument document;
  document.OpenBare();
  document->PDF_SetLastError(20);
  EXPECT_EQ(document->WriteDataStreamObject(BlockOf("RGB"), 0), 1u);
  EXPECT_EQ(ErrorOf(document.session()), 0u);
}

TEST(ObjectWriter, DataStreamOfAFreedBlockIsError14InAnObjectBegun) {
  MemoryDocument document;
  document.OpenBare();
  HGLOBAL const freed = GlobalAlloc(GHND, 3);
  GlobalFree(freed);
  EXPECT_EQ(document->WriteDataStreamObject(freed, 3), 0u);
  EXPECT_EQ(ErrorOf(document.session()), 14u);
  EXPECT_EQ(document.Text(), "1 0 obj\n<<\n/Length 2 0 R \n>>\nstream\n");
}

TEST(ObjectWriter, ClearedObjectListHasNoObjectFromItsFirstToItsLastRow) {
  MemoryDocument document;
  for (DWORD const object : {1u, 90049u}) {
    SessionProbe::Row(document.session(), object).nOffset = 99;
    EXPECT_EQ(document->ObjectExistsAlready(object), 1) << object;
  }
  document->InitObjectList();
  EXPECT_EQ(document->ObjectExistsAlready(1), 0);
  EXPECT_EQ(document->ObjectExistsAlready(90049), 0);
}

TEST(ObjectWriter, GenerationAfterTheHighestIs0) {
  MemoryDocument document;
  document.OpenBare();
  SessionProbe::Row(document.session(), 1) = {99, 0xFFFFFFFFu, 1};
  EXPECT_EQ(document.Added([](CCreatePDF& s) { s.ObjectStartNewGen(1, 0, 1, 1); }), "1 0 obj\n");
  EXPECT_EQ(SessionProbe::Row(document.session(), 1).nGeneration, 0u);
}

}  // namespace
