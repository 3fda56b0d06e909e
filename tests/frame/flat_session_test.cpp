// The flat functions of the session itself, and the session's start values.
#include <gtest/gtest.h>
#include <sorrelin/frame/dll_main.h>

#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "tests/support/session_probe.h"

namespace {

TEST(FlatSession, InitWithNullIs2) { EXPECT_EQ(pdf_Init_PDF(nullptr), 2u); }

TEST(FlatSession, FreshSessionReports32) {
  hPDF pdf = 0;
  ASSERT_EQ(pdf_Init_PDF(&pdf), 0u);
  EXPECT_NE(pdf, 0);
  EXPECT_EQ(pdf_PDF_GetLastError(pdf), 32u);
  char text[64];
  EXPECT_EQ(pdf_GetLastPDFErrorText(pdf, text), 1u);
  EXPECT_STREQ(text, "PDF Object not initialized");
  EXPECT_EQ(pdf_GetLastPDFErrorText(pdf, nullptr), 0u);
  EXPECT_EQ(pdf_Release_PDF(pdf), 0u);
}

TEST(FlatSession, BadHandlesAre2AndWriteNothing) {
  for (hPDF const bad : {hPDF{0}, hPDF{-1}}) {
    char text[4] = "abc";
    EXPECT_EQ(pdf_GetLastPDFErrorText(bad, text), 2u);
    EXPECT_STREQ(text, "abc");
    EXPECT_EQ(pdf_PDF_GetLastError(bad), 2u);
    EXPECT_EQ(pdf_Release_PDF(bad), 2u);
  }
}

TEST(FlatSession, ReleaseClosesWhatIsOpen) {
  hPDF pdf = 0;
  pdf_Init_PDF(&pdf);
  EXPECT_EQ(pdf_CreatePDFInMemory(pdf, nullptr, 1000), 0u);
  EXPECT_EQ(pdf_Release_PDF(pdf), 0u);  // the block would show as a leak
}

TEST(FlatSession, ExportTableKeepsItsTwoFixedParts) {
  EXPECT_EQ(fnCreatePDF(), 42);
  EXPECT_EQ(nCreatePDF, 0);
}

TEST(Session, StartsWithItsLayoutDefaultsAndNoChannel) {
  auto const session = std::make_unique<CCreatePDF>();
  DWORD defaults[6];
  SessionProbe::LayoutDefaults(*session, defaults);
  EXPECT_EQ(std::vector<DWORD>(defaults, defaults + 6),
            (std::vector<DWORD>{10, 792, 612, 12, 1, 40}));
  EXPECT_EQ(SessionProbe::Channel(*session), sorrelin::InvalidChannel());
  EXPECT_EQ(session->GetNumberOfPages(), 0u);
  EXPECT_EQ(session->UseChar13(), 0);
  EXPECT_EQ(SessionProbe::DecodeNormal(*session), 1u);
}

TEST(Session, MembersWithoutAStartValueAreZero) {
  void* const memory = ::operator new(sizeof(CCreatePDF));
  std::memset(memory, 0xCD, sizeof(CCreatePDF));
  CCreatePDF* const session = new (memory) CCreatePDF;
  EXPECT_EQ(session->GetPageObjectNumber(0), 0u);
  EXPECT_EQ(session->GetPageObjectNumber(29999), 0u);
  EXPECT_EQ(SessionProbe::ObjectsInFile(*session), 0u);
  EXPECT_EQ(SessionProbe::TrailerId(*session)[127], 0);
  EXPECT_EQ(SessionProbe::Row(*session, SessionProbe::kObjectRows - 1).nOffset, 0u);
  session->~CCreatePDF();
  ::operator delete(memory);
}

TEST(Session, AssignmentCopiesTheStateAndSharesTheSideRecord) {
  auto const first = std::make_unique<CCreatePDF>();
  auto const second = std::make_unique<CCreatePDF>();
  first->SetTitleW(SORRELIN_TEXT("shared"));
  first->SetCurrentObject(7);
  *second = *first;
  EXPECT_EQ(second->GetCurrentObject(), 7u);
  EXPECT_EQ(&SessionProbe::Reader(*second), &SessionProbe::Reader(*first));
  first->SetCurrentObject(8);
  EXPECT_EQ(second->GetCurrentObject(), 7u);
}

// Detach and attach of the process, attach and detach of a thread.
constexpr DWORD kReasons[] = {DLL_PROCESS_DETACH, DLL_PROCESS_ATTACH, 2, 3};

// The address of anything will do.
HMODULE AsModule(int& thing) { return reinterpret_cast<HMODULE>(&thing); }

TEST(DllMain, StoresTheInstanceAtProcessAttachOnlyAndReturns1) {
  testing::internal::CaptureStdout();
  int instances[4] = {};
  for (DWORD const reason : kReasons) {
    EXPECT_EQ(DllMain(AsModule(instances[reason]), reason, nullptr), 1) << reason;
  }
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(sorrelin::ModuleInstance(), AsModule(instances[DLL_PROCESS_ATTACH]));
}

TEST(DllMain, WritesItsLineOnceForEachCallWithoutALineEnd) {
#if defined(SORRELIN_LOAD_LINE)
  std::string const line = "Sorrelin DLLMain end";
#else
  std::string const line;
#endif
  std::string expected;
  testing::internal::CaptureStdout();
  for (DWORD const reason : kReasons) {
    DllMain(nullptr, reason, nullptr);
    expected += line;
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), expected);
}

}  // namespace
