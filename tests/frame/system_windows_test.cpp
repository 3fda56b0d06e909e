// The description of the system and the password prompt.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/frame/password_prompt_windows.h>
#include <sorrelin/frame/system_info_windows.h>

#include <cwchar>
#include <string>
#include <thread>

namespace {

using sorrelin::PromptForPassword;
using sorrelin::SystemInfo;

// The prompt's edit control, once it is there.
HWND EditControl() {
  for (int i = 0; i < 500; ++i) {
    HWND const edit = GetDlgItem(FindWindowW(nullptr, L"PDF Password"), 1000);
    if (edit != nullptr) return edit;
    Sleep(20);
  }
  return nullptr;
}

// Types a password into the prompt and presses a button.
std::thread User(WCHAR const* password, WPARAM button) {
  return std::thread([=] {
    HWND const edit = EditControl();
    SendMessageW(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(password));
    PostMessageW(GetParent(edit), WM_COMMAND, button, 0);
  });
}

TEST(SystemInfo, KnowsTheVersion) {
  SystemInfo const info;
  EXPECT_TRUE(info.is_extended());
  EXPECT_EQ(info.version().dwOSVersionInfoSize, sizeof(OSVERSIONINFOEXW));
  EXPECT_GE(info.version().dwMajorVersion, 5u);
  EXPECT_EQ(info.version_code() >> 24, info.version().dwMajorVersion);
  EXPECT_EQ(info.version_code() >> 16 & 0xFF, info.version().dwMinorVersion);
}

TEST(SystemInfo, KnowsTheProcessor) {
  SystemInfo const info;
  EXPECT_GE(info.system().dwNumberOfProcessors, 1u);
  EXPECT_NE(info.system().dwPageSize, 0u);
}

TEST(SystemInfo, KnowsItsProduct) {
  EXPECT_NE(SystemInfo().product_type(), SystemInfo::kProductUnknown);
}

TEST(SystemInfo, ServicePackLineEndsWithTheBuild) {
  SystemInfo const info;
  std::wstring const expected = std::wstring(info.version().szCSDVersion) + L" (Build " +
                                std::to_wstring(info.version().dwBuildNumber) + L")\n";
  EXPECT_EQ(info.service_pack(), expected);
}

TEST(PromptForPassword, NeedsABuffer) {
  WCHAR buffer[4] = L"old";
  EXPECT_EQ(PromptForPassword(nullptr, nullptr, nullptr, 4), 0);
  EXPECT_EQ(PromptForPassword(nullptr, nullptr, buffer, 0), 0);
  EXPECT_EQ(std::wstring(buffer), L"old");
}

TEST(PromptForPassword, OkGivesTheText) {
  WCHAR buffer[16] = L"old";
  std::thread user = User(L"secret", IDOK);
  EXPECT_EQ(PromptForPassword(GetModuleHandleW(nullptr), nullptr, buffer, 16), 1);
  user.join();
  EXPECT_EQ(std::wstring(buffer), L"secret");
}

TEST(PromptForPassword, TextIsCutToTheBuffer) {
  WCHAR buffer[4] = {};
  std::thread user = User(L"secret", IDOK);
  EXPECT_EQ(PromptForPassword(GetModuleHandleW(nullptr), nullptr, buffer, 4), 1);
  user.join();
  EXPECT_EQ(std::wstring(buffer), L"sec");
}

TEST(PromptForPassword, CancelGivesNothing) {
  WCHAR buffer[16] = L"old";
  std::thread user = User(L"secret", IDCANCEL);
  EXPECT_EQ(PromptForPassword(GetModuleHandleW(nullptr), nullptr, buffer, 16), 2);
  user.join();
  EXPECT_EQ(std::wstring(buffer), L"");
}

}  // namespace
