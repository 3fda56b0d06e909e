// Opening of documents from files and memory, and what an open leaves in the session.
#include <gtest/gtest.h>
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/wide_string.h>
#include <tests/support/page_document.h>
#include <tests/support/session_probe.h>
#include <tests/support/temp_dir.h>

#include <filesystem>
#include <memory>

namespace test {
namespace {

using sorrelin::InvalidChannel;
using sorrelin::ToWide;

Bytes OnePageDocument(char data = 'A') {
  PdfBuilder pdf = OnePage{.data = std::string(1, data) + "B"}.Build();
  pdf.Classic();
  return pdf.Document();
}

class Open : public testing::Test {
 protected:
  Open() { session_->PDF_SetLastError(PDF_ERROR_NONE); }
  ~Open() override { session_->ClosePDFFile(); }

  std::filesystem::path Write(Bytes const& bytes, std::string const& name = "a.pdf") {
    WriteAll(temp_ / name, bytes);
    return temp_ / name;
  }
  int OpenFile(std::filesystem::path const& path) {
    return session_->OpenPDFFileW(ToWide(path.string().c_str()).c_str());
  }
  int OpenMemory(Bytes const& bytes) {
    return session_->OpenPDFFileInMemory(reinterpret_cast<int64_t>(bytes.data()),
                                         static_cast<DWORD>(bytes.size()));
  }
  DWORD Error() { return session_->PDF_GetLastError(); }
  void ExpectRejected(DWORD error) {
    EXPECT_EQ(Error(), error);
    EXPECT_EQ(SessionProbe::Channel(*session_), nullptr);
    EXPECT_EQ(SessionProbe::Reader(*session_).file.channel(), nullptr);
  }

  TempDir temp_;
  std::unique_ptr<CCreatePDF> session_ = std::make_unique<CCreatePDF>();
};

TEST_F(Open, FileAnswersForPagesAndImages) {
  ASSERT_EQ(OpenFile(Write(OnePageDocument())), 1);
  EXPECT_EQ(session_->GetNumberOfPages(), 1u);
  EXPECT_EQ(ReadDib(Block(session_->LoadImageFromPDF(0))).rows[0][0], 'A');
  EXPECT_EQ(SessionProbe::Reader(*session_).file.channel(), SessionProbe::Channel(*session_));
  EXPECT_EQ(Error(), 0u);
}

TEST_F(Open, NarrowNameIsConverted) {
  std::filesystem::path const path = Write(OnePageDocument(), "\xC3\xA4.pdf");
  EXPECT_EQ(session_->OpenPDFFile(path.string().c_str()), 1);
}

TEST_F(Open, NullNameIsCode22) {
  EXPECT_EQ(session_->OpenPDFFileW(nullptr), 0);
  EXPECT_EQ(Error(), 22u);
  EXPECT_EQ(SessionProbe::Channel(*session_), InvalidChannel());
}

TEST_F(Open, NullDataOrNoBytesAreCode22) {
  EXPECT_EQ(session_->OpenPDFFileInMemory(0, 5), 0);
  EXPECT_EQ(Error(), 22u);
  session_->PDF_SetLastError(0);
  Bytes const bytes(1);
  EXPECT_EQ(session_->OpenPDFFileInMemory(reinterpret_cast<int64_t>(bytes.data()), 0), 0);
  EXPECT_EQ(Error(), 22u);
}

TEST_F(Open, MissingFileIsCode23AndLeavesNoChannel) {
  EXPECT_EQ(OpenFile(temp_ / "missing.pdf"), 0);
  EXPECT_EQ(Error(), 23u);
  EXPECT_EQ(SessionProbe::Channel(*session_), nullptr);
  EXPECT_EQ(SessionProbe::Reader(*session_).file.channel(), InvalidChannel());
}

TEST_F(Open, SevenBytesAreCode24) {
  Bytes const bytes = ToBytes("%PDF-1.");
  EXPECT_EQ(OpenFile(Write(bytes)), 0);
  ExpectRejected(24);
  session_->PDF_SetLastError(0);
  EXPECT_EQ(OpenMemory(bytes), 0);
  ExpectRejected(24);
  session_->PDF_SetLastError(0);
  EXPECT_EQ(OpenFile(Write({})), 0);
  ExpectRejected(24);
}

// The last 50 bytes cannot be read.
TEST_F(Open, EightBytesWithAGoodHeaderFailBehindItWithCode1) {
  Bytes const bytes = ToBytes("%PDF-1.4");
  EXPECT_EQ(OpenFile(Write(bytes)), 0);
  EXPECT_EQ(Error(), 1u);
  EXPECT_NE(SessionProbe::Channel(*session_), nullptr);
  EXPECT_NE(SessionProbe::Channel(*session_), InvalidChannel());
}

TEST_F(Open, HeadersFrom10To18AreAccepted) {
  for (char version = '0'; version <= '8'; ++version) {
    Bytes bytes = OnePageDocument();
    bytes[7] = static_cast<BYTE>(version);
    EXPECT_EQ(OpenMemory(bytes), 1) << version;
    session_->ClosePDFFile();
  }
}

TEST_F(Open, OtherHeadersAreCode25) {
  for (char const* const header : {"%PDF-1.9", "%PDF-2.0", "%pdf-1.4", "%PDF-1./",
                                   "%PDF-1.:", "%PDF-0.4", " %PDF-1.", "%PDF-14 "}) {
    Bytes bytes = OnePageDocument();
    std::copy_n(header, 8, bytes.begin());
    session_->PDF_SetLastError(0);
    EXPECT_EQ(OpenMemory(bytes), 0) << header;
    ExpectRejected(25);
  }
}

TEST_F(Open, UpdateTakesADocumentOfAnyHeader) {
  Bytes bytes = OnePageDocument();
  bytes[7] = '9';
  ASSERT_EQ(OpenMemory(bytes), 0);
  EXPECT_EQ(session_->CreatePDFInMemory(reinterpret_cast<int64_t>(bytes.data()),
                                        static_cast<DWORD>(bytes.size())),
            1);
  EXPECT_EQ(session_->GetNumberOfPages(), 1u);
}

// A reader that stayed open would keep the writer out.
TEST_F(Open, RejectedFileIsClosed) {
  std::filesystem::path const path = Write(ToBytes("%PDF-9.9 and more"));
  EXPECT_EQ(OpenFile(path), 0);
  HANDLE const file =
      CreateFileW(ToWide(path.string().c_str()).c_str(), GENERIC_READ | GENERIC_WRITE,
                  FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  EXPECT_NE(file, INVALID_HANDLE_VALUE);
  CloseHandle(file);
}

TEST_F(Open, CloseBehindARejectedHeaderIsHarmless) {
  EXPECT_EQ(OpenMemory(ToBytes("%PDF-9.9")), 0);
  session_->ClosePDFFile();
  EXPECT_EQ(SessionProbe::Channel(*session_), InvalidChannel());
  Bytes const good = OnePageDocument();
  EXPECT_EQ(OpenMemory(good), 1);
}

TEST_F(Open, SecondOpenClosesTheFirstDocument) {
  std::filesystem::path const first = Write(OnePageDocument('A'), "a.pdf");
  std::filesystem::path const second = Write(OnePageDocument('C'), "c.pdf");
  ASSERT_EQ(OpenFile(first), 1);
  sorrelin::FileChannel const* const channel = SessionProbe::Channel(*session_);
  ASSERT_EQ(OpenFile(second), 1);
  EXPECT_EQ(channel->hFile, nullptr);
  EXPECT_EQ(ReadDib(Block(session_->LoadImageFromPDF(0))).rows[0][0], 'C');
}

TEST_F(Open, MemoryDocumentIsReadInPlaceAndNeverChanged) {
  Bytes const document = OnePageDocument();
  Bytes copy = document;
  ASSERT_EQ(OpenMemory(copy), 1);
  Block(session_->LoadImageFromPDF(0));
  EXPECT_EQ(SessionProbe::Channel(*session_)->buffer.pData, copy.data());
  session_->ClosePDFFile();
  EXPECT_EQ(copy, document);
}

// The rows of the table are kept; only the channel is gone.
TEST_F(Open, LoadBehindACloseIsCode1) {
  Bytes const document = OnePageDocument();
  ASSERT_EQ(OpenMemory(document), 1);
  session_->ClosePDFFile();
  EXPECT_EQ(session_->GetNumberOfPages(), 1u);
  EXPECT_EQ(session_->LoadImageFromPDF(0), nullptr);
  EXPECT_EQ(Error(), 1u);
}

TEST_F(Open, LoadOfARowOf0BehindACloseSetsNoCode) {
  Bytes const document = OnePageDocument();
  ASSERT_EQ(OpenMemory(document), 1);
  session_->ClosePDFFile();
  SessionProbe::Row(*session_, 3).nOffset = 0;
  EXPECT_EQ(session_->LoadImageFromPDF(0), nullptr);
  EXPECT_EQ(Error(), 0u);
}

TEST_F(Open, CloseInMemoryHandsNothingOver) {
  Bytes const document = OnePageDocument();
  ASSERT_EQ(OpenMemory(document), 1);
  int64_t data = 7;
  DWORD size = 7;
  session_->ClosePDFFileInMemory(&data, &size);
  EXPECT_EQ(data, 0);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(SessionProbe::Channel(*session_), InvalidChannel());
}

TEST_F(Open, LoadIntoDibLeavesTheDocumentOpen) {
  std::filesystem::path const path = Write(OnePageDocument());
  Block const bitmap(session_->LoadPDFIntoDIB(path.string().c_str(), 0));
  EXPECT_EQ(ReadDib(bitmap).rows[0][0], 'A');
  EXPECT_EQ(ReadDib(Block(session_->LoadImageFromPDF(0))).rows[0][0], 'A');
}

TEST_F(Open, LoadIntoDibFailsWithTheCodeOfItsStep) {
  EXPECT_EQ(session_->LoadPDFIntoDIBW(nullptr, 0), nullptr);
  EXPECT_EQ(Error(), 2u);
  EXPECT_EQ(session_->LoadPDFIntoDIB((temp_ / "missing.pdf").string().c_str(), 0), nullptr);
  EXPECT_EQ(Error(), 23u);
  EXPECT_EQ(session_->LoadPDFIntoDIB(Write(OnePageDocument()).string().c_str(), 1), nullptr);
  EXPECT_EQ(Error(), 31u);
}

TEST_F(Open, LoadIntoDibTwiceReadsTheSecondFile) {
  std::filesystem::path const first = Write(OnePageDocument('A'), "a.pdf");
  std::filesystem::path const second = Write(OnePageDocument('C'), "c.pdf");
  Block(session_->LoadPDFIntoDIB(first.string().c_str(), 0));
  EXPECT_EQ(ReadDib(Block(session_->LoadPDFIntoDIB(second.string().c_str(), 0))).rows[0][0], 'C');
}

}  // namespace
}  // namespace test
