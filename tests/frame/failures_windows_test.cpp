// What goes wrong on Windows: codecs that cannot be used, folders, long paths and lost handles.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/frame/pdf.h>
#include <sorrelin/frame/session.h>

#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include "tests/support/dib.h"
#include "tests/support/environment.h"
#include "tests/support/temp_dir.h"

namespace test {
namespace {

constexpr WORD kMachine32 = 0x014C, kMachine64 = 0x8664;

// The codec as a build for the other width of addresses would have it: its header says so (PE/COFF
// specification, "COFF File Header").
Bytes OfOtherWidth(Bytes library) {
  DWORD header = 0;
  std::memcpy(&header, library.data() + 0x3C, sizeof header);
  WORD const machine = sizeof(void*) == 8 ? kMachine32 : kMachine64;
  std::memcpy(library.data() + header + 4, &machine, sizeof machine);
  return library;
}

// The handle of a file that this process has open.
HANDLE HandleOf(std::wstring const& name) {
  for (uintptr_t value = 4; value < 0x10000; value += 4) {
    HANDLE const file = reinterpret_cast<HANDLE>(value);
    WCHAR path[1024] = L"";
    if (GetFileType(file) != FILE_TYPE_DISK) continue;
    GetFinalPathNameByHandleW(file, path, std::size(path), FILE_NAME_NORMALIZED);
    if (std::wstring(path).ends_with(L"\\" + name)) return file;
  }
  return INVALID_HANDLE_VALUE;
}

class WindowsFailures : public testing::Test {
 protected:
  static Block Stairs() {
    return MakeDib({.width = 16, .height = 4}, [](LONG x, LONG y) -> DWORD { return x > y * 3; });
  }
  HGLOBAL Coded(std::wstring const& codec) {
    DWORD size = 0;
    session_->PDF_SetLastError(PDF_ERROR_NONE);
    return session_->ConvertDIB2CcittPDFImageW(Stairs(), size, codec.c_str());
  }
  bool AddPage() {
    return session_->SaveDIBAsColorPDFPageW(Stairs(), nullptr, PDF_COMPRESSION_FLATE, 0) != 0;
  }

  TempDir temp_;
  std::unique_ptr<CCreatePDF> session_ = std::make_unique<CCreatePDF>();
};

TEST_F(WindowsFailures, CodecThatCannotBeUsedIs19) {
  WriteAll(temp_ / "text.dll", {'t', 'e', 'x', 't'});
  WriteAll(temp_ / "other.dll", OfOtherWidth(ReadAll(CADWICK)));
  for (std::wstring const& codec :
       {std::wstring(L"nowhere.dll"), (temp_ / "text.dll").wstring(),
        (temp_ / "other.dll").wstring(), std::wstring(L"kernel32.dll")}) {
    EXPECT_EQ(Coded(codec), INVALID_HANDLE_VALUE);
    EXPECT_EQ(session_->PDF_GetLastError(), 19u) << std::filesystem::path(codec).string();
  }
  Block const coded(Coded(std::filesystem::path(CADWICK).wstring()));
  EXPECT_NE(coded.get(), INVALID_HANDLE_VALUE);
}

TEST_F(WindowsFailures, FolderThatIsNotThereOrIsAFileTakesNoDocument) {
  WriteAll(temp_ / "file", {'x'});
  for (char const* const folder : {"none", "file"}) {
    session_->PDF_SetLastError(PDF_ERROR_NONE);
    EXPECT_EQ(session_->CreatePDFW((temp_ / folder / "a.pdf").c_str()), 0);
    EXPECT_NE(session_->PDF_GetLastError(), 0u);
  }
}

TEST_F(WindowsFailures, DocumentOnAPathOf300CharactersComesBack) {
  std::filesystem::path const folder =
      L"\\\\?\\" + (temp_ / std::string(150, 'a') / std::string(150, 'b')).wstring();
  std::filesystem::create_directories(folder);
  std::filesystem::path const path = folder / "a.pdf";
  ASSERT_EQ(session_->CreatePDFW(path.c_str()), 1);
  EXPECT_TRUE(AddPage());
  EXPECT_EQ(session_->FinishPDF(), 1);
  ASSERT_NE(session_->OpenPDFFileW(path.c_str()), 0);
  EXPECT_EQ(session_->GetNumberOfPages(), 1u);
  session_->ClosePDFFile();
  EXPECT_TRUE(DeleteFileW(path.c_str()));
  EXPECT_TRUE(RemoveDirectoryW(folder.c_str()));
}

TEST_F(WindowsFailures, HandleClosedUnderTheSessionFailsTheFinishWithCode1) {
  ASSERT_EQ(session_->CreatePDFW((temp_ / "lost.pdf").c_str()), 1);
  EXPECT_TRUE(AddPage());
  HANDLE const file = HandleOf(L"lost.pdf");
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  CloseHandle(file);
  EXPECT_EQ(session_->FinishPDF(), 0);
  EXPECT_EQ(session_->PDF_GetLastError(), 1u);
  session_->ClosePDFFile();
}

// The picture is longer than what reading takes ahead.
TEST_F(WindowsFailures, HandleClosedUnderAReadingSessionFailsThePictureWithCode1) {
  std::filesystem::path const path = temp_ / "lost.pdf";
  Block const picture =
      MakeDib({.width = 2000, .height = 2000}, [](LONG, LONG) -> DWORD { return 1; });
  ASSERT_EQ(pdf_SaveDIBToPDFW(path.c_str(), picture, L"", PDF_COMPRESSION_NONE, 0), 0u);
  ASSERT_NE(session_->OpenPDFFileW(path.c_str()), 0);
  HANDLE const file = HandleOf(L"lost.pdf");
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  CloseHandle(file);
  session_->PDF_SetLastError(PDF_ERROR_NONE);
  EXPECT_EQ(session_->LoadImageFromPDF(0), nullptr);
  EXPECT_EQ(session_->PDF_GetLastError(), 1u);
  session_->ClosePDFFile();
}

TEST_F(WindowsFailures, FullDriveFailsThePageAndTheFinish) {
  std::filesystem::path const path = temp_ / "full.pdf";
  ASSERT_EQ(session_->CreatePDFW(path.c_str()), 1);
  {
    FileSizeLimit const full(std::filesystem::file_size(path) + 100);
    EXPECT_FALSE(AddPage());
    EXPECT_EQ(session_->PDF_GetLastError(), 1u);
    EXPECT_EQ(session_->FinishPDF(), 0);
  }
  session_->ClosePDFFile();
}

TEST_F(WindowsFailures, UpdateOnAFullDriveLeavesTheOldBytes) {
  std::filesystem::path const path = temp_ / "full.pdf";
  ASSERT_EQ(pdf_SaveDIBToPDFW(path.c_str(), Stairs(), L"", PDF_COMPRESSION_FLATE, 0), 0u);
  std::vector<BYTE> const before = ReadAll(path);
  {
    FileSizeLimit const full(before.size() + 100);
    ASSERT_EQ(session_->CreatePDFW(path.c_str()), 1);
    EXPECT_FALSE(AddPage());
    EXPECT_EQ(session_->FinishPDF(), 0);
    session_->ClosePDFFile();
  }
  std::vector<BYTE> after = ReadAll(path);
  ASSERT_GE(after.size(), before.size());
  after.resize(before.size());
  EXPECT_EQ(after, before);
}

}  // namespace
}  // namespace test
