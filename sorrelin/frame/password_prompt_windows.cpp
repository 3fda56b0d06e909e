// The password dialog: template 103 of the module's resources, with edit control 1000.
#include <sorrelin/frame/dll_main.h>
#include <sorrelin/frame/password_prompt_windows.h>

namespace sorrelin {
namespace {

constexpr WORD kTemplate = 103;
constexpr int kEdit = 1000;
constexpr INT_PTR kAccepted = 1;
constexpr INT_PTR kCancelled = 2;

// What the dialog needs to know.
struct PromptRecord {
  HINSTANCE instance;
  WCHAR* buffer;
  int capacity;
};

void OnCommand(HWND dialog, WORD control) {
  if (control == IDOK) {
    auto const* const record =
        reinterpret_cast<PromptRecord const*>(GetWindowLongPtrW(dialog, GWLP_USERDATA));
    GetDlgItemTextW(dialog, kEdit, record->buffer, record->capacity);
    EndDialog(dialog, kAccepted);
  } else if (control == IDCANCEL) {
    EndDialog(dialog, kCancelled);
  }
}

// Kept: every message is answered with 0, so the system sets the focus; users type at once.
INT_PTR CALLBACK PromptProcedure(HWND dialog, UINT message, WPARAM parameter, LPARAM record) {
  if (message == WM_INITDIALOG) SetWindowLongPtrW(dialog, GWLP_USERDATA, record);
  if (message == WM_COMMAND) OnCommand(dialog, LOWORD(parameter));
  return 0;
}

}  // namespace

INT_PTR PromptForPassword(HINSTANCE instance, HWND parent, WCHAR* buffer, int capacity) {
  if (buffer == nullptr || capacity <= 0) return 0;
  buffer[0] = 0;
  PromptRecord const record{instance != nullptr ? instance : ModuleInstance(), buffer, capacity};
  return DialogBoxParamW(record.instance, MAKEINTRESOURCEW(kTemplate), parent, PromptProcedure,
                         reinterpret_cast<LPARAM>(&record));
}

}  // namespace sorrelin
