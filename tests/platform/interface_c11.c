/* A C11 program that names every operation of the platform headers. */
#include <sorrelin/platform/child.h>
#include <sorrelin/platform/console.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/module.h>
#include <sorrelin/platform/process.h>
#include <sorrelin/platform/text.h>

_Static_assert(sizeof(BITMAPINFOHEADER) == 40, "head of a packed bitmap");
_Static_assert(sizeof(RGBQUAD) == 4, "colour table entry");
_Static_assert(sizeof(POINT) == 8, "pair of 32-bit numbers");
_Static_assert(sizeof(SYSTEMTIME) == 16, "eight 16-bit numbers");
_Static_assert(sizeof(WCHAR) == 2, "UTF-16 unit");
_Static_assert(sizeof(DWORD) == 4 && sizeof(LONG) == 4 && sizeof(WORD) == 2, "Windows sizes");

typedef void (*Operation)(void);

static Operation const kOperations[] = {
    (Operation)CloseHandle,
    (Operation)CreateFileW,
    (Operation)DeleteFileW,
    (Operation)EndProcess,
    (Operation)FailOnClosedPipe,
    (Operation)FailPastFileSizeLimit,
    (Operation)FlushFileBuffers,
    (Operation)FormatMessageA,
    (Operation)FreeLibrary,
    (Operation)GetFileAttributesW,
    (Operation)GetFileSize,
    (Operation)GetLastError,
    (Operation)GetLocalTime,
    (Operation)GetModuleFileNameW,
    (Operation)GetModuleHandleW,
    (Operation)GetProcAddress,
    (Operation)GetTempFileNameW,
    (Operation)GetTempPathW,
    (Operation)GlobalAlloc,
    (Operation)GlobalCompact,
    (Operation)GlobalFree,
    (Operation)GlobalLock,
    (Operation)GlobalReAlloc,
    (Operation)GlobalSize,
    (Operation)GlobalUnlock,
    (Operation)KeepFreedMemory,
    (Operation)LoadLibraryW,
    (Operation)LocalFree,
    (Operation)MoveFileExW,
    (Operation)MultiByteToWideChar,
    (Operation)MuteStandardError,
    (Operation)ReadFile,
    (Operation)ReadFileAt,
    (Operation)ReplaceFileW,
    (Operation)RestoreStandardError,
    (Operation)RunInChildProcess,
    (Operation)SendToParent,
    (Operation)SetConsoleCtrlHandler,
    (Operation)SetEndOfFile,
    (Operation)SetFilePointer,
    (Operation)SetLastError,
    (Operation)StandardErrorColumns,
    (Operation)StandardErrorIsTerminal,
    (Operation)StandardOutputIsTerminal,
    (Operation)WideCharToMultiByte,
    (Operation)WriteFile,
};

int main(void) {
  for (size_t i = 0; i < sizeof kOperations / sizeof *kOperations; ++i) {
    if (kOperations[i] == NULL) return 1;
  }
  HGLOBAL const block = GlobalAlloc(GHND, 40);
  if (GlobalLock(block) == NULL || GlobalUnlock(block) != 0) return 2;
  if (GlobalFree(INVALID_HANDLE_VALUE) != INVALID_HANDLE_VALUE) return 3;
  return GlobalFree(block) == NULL ? 0 : 4;
}
