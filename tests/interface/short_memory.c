/* A user of the flat functions whose memory is short: short_memory CADWICK RENNICK DIRECTORY.
 *
 * Each scenario runs in a child of its own for every allocation N in it, which fails once, and then
 * again with all later ones failing too. A child must end by itself: no signal, no exception. What
 * fails must fail with a code that a lack of memory may have; then, with memory there again, the
 * same call must succeed, and what comes out must be a whole document. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <sorrelin/frame/pdf.h>
#include <sorrelin/platform/memory.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

static void (*fail_allocations)(long number, int and_later);
static int (*has_allocation_failed)(void);

static WCHAR cadwick[512];
static WCHAR rennick[512];
static WCHAR file_name[512];
static char file_path[512];

static long fail_at;   /* the allocation that fails */
static int fail_later; /* and all after it */
static char const* step = "";

static void Give(void) { fail_allocations(0, 0); }

static void Require(int holds, char const* what, long value) {
  if (holds) return;
  Give();
  fprintf(stderr, "step %s, allocation %ld%s: %s (%ld)\n", step, fail_at,
          fail_later ? " and later" : "", what, value);
  _exit(3);
}

static void ToWide(char const* text, WCHAR* wide) {
  size_t i = 0;
  do {
    wide[i] = (unsigned char)text[i];
  } while (text[i++] != 0);
}

/* What a lack of memory may be reported as: by itself, by the channel, by a sibling that cannot be
 * loaded or that fails, or where a temporary file or a document cannot be opened. */
static int IsShortage(DWORD code) {
  switch (code) {
    case PDF_ERROR_SYSTEM:
    case PDF_ERROR_MEMORY:
    case PDF_ERROR_TEMP_DIRECTORY:
    case PDF_ERROR_TEMP_FILE:
    case PDF_ERROR_CCITT_LIBRARY:
    case PDF_ERROR_ENCODING:
    case PDF_ERROR_JPEG_LIBRARY:
    case PDF_ERROR_OPEN:
    case PDF_ERROR_DECOMPRESSION:
    case PDF_ERROR_CCITT_CODING:
      return 1;
    default:
      return 0;
  }
}

/* Calls once with memory as it is, and again with enough of it if that failed. */
#define TRY(call)                                               \
  do {                                                          \
    step = #call;                                               \
    DWORD code_ = (call);                                       \
    if (code_ == 0) break;                                      \
    Require(IsShortage(code_), "unexpected code", (long)code_); \
    Give();                                                     \
    code_ = (call);                                             \
    Require(code_ == 0, "fails with memory", (long)code_);      \
  } while (0)

static HDIB NewBitmap(int bits) {
  enum { kWidth = 40, kHeight = 9 };
  DWORD const stride = (DWORD)((kWidth * bits + 31) / 32 * 4);
  DWORD const colours = bits == 1 ? 2 : bits == 8 ? 256 : 0;
  HDIB const bitmap = GlobalAlloc(GHND, 40 + colours * 4 + stride * kHeight);
  BYTE* const bytes = GlobalLock(bitmap);
  BITMAPINFOHEADER header = {40, kWidth, kHeight, 1, (WORD)bits, 0, 0, 3780, 3780, 0, 0};
  memcpy(bytes, &header, sizeof header);
  for (DWORD i = 0; i < colours * 4; ++i) bytes[40 + i] = (BYTE)(i / 4 * (bits == 1 ? 255 : 1));
  for (DWORD i = 0; i < stride * kHeight; ++i) bytes[40 + colours * 4 + i] = (BYTE)(i * 7);
  GlobalUnlock(bitmap);
  return bitmap;
}

static HDIB bilevel;
static HDIB indexed;
static HDIB rgb;

static void MakeBitmaps(void) {
  bilevel = NewBitmap(1);
  indexed = NewBitmap(8);
  rgb = NewBitmap(24);
}

static void AddPages(hPDF pdf) {
  TRY(pdf_SaveDIBAsPDFPageW(pdf, bilevel, cadwick));
  TRY(pdf_SaveDIBAsColorPDFPageW(pdf, indexed, rennick, PDF_COMPRESSION_RUN_LENGTH, 0));
  TRY(pdf_SaveDIBAsColorPDFPageW(pdf, indexed, rennick, PDF_COMPRESSION_FLATE, 6));
  TRY(pdf_SaveDIBAsColorPDFPageW(pdf, rgb, rennick, PDF_COMPRESSION_JPEG, 75));
  TRY(pdf_SaveDIBAsColorPDFPageW(pdf, rgb, rennick, PDF_COMPRESSION_NONE, 0));
}

enum { kPages = 5 };

static hPDF NewSession(void) {
  hPDF pdf = 0;
  TRY(pdf_Init_PDF(&pdf));
  return pdf;
}

static void SetStrings(hPDF pdf) {
  TRY(pdf_SetTitleA(pdf, "A title that needs memory of its own"));
  TRY(pdf_SetAuthorW(pdf, SORRELIN_TEXT("An author who needs memory of its own")));
}

/* The page's image, where memory is short null, and then again with memory. */
static void LoadPage(hPDF pdf, DWORD page) {
  step = "pdf_LoadImageFromPDF";
  HDIB bitmap = pdf_LoadImageFromPDF(pdf, page);
  if (bitmap == NULL || bitmap == INVALID_HANDLE_VALUE) {
    DWORD const code = pdf_PDF_GetLastError(pdf);
    Require(IsShortage(code) || code == 0 || code == PDF_ERROR_NOT_PDF, "unexpected code",
            (long)code);
    Give();
    bitmap = pdf_LoadImageFromPDF(pdf, page);
    Require(bitmap != NULL && bitmap != INVALID_HANDLE_VALUE, "no image with memory", page);
  }
  GlobalFree(bitmap);
}

static void LoadPages(hPDF pdf, DWORD pages) {
  Require(pdf_GetNumberOfPages(pdf) == pages, "page count", (long)pdf_GetNumberOfPages(pdf));
  for (DWORD page = 0; page < pages; ++page) LoadPage(pdf, page);
}

/* With all memory, whether the document is whole. */
static void CheckFile(DWORD pages) {
  Give();
  step = "check";
  hPDF const pdf = NewSession();
  DWORD const code = pdf_OpenPDFFile(pdf, file_path);
  Require(code == 0, "the document does not open", (long)code);
  LoadPages(pdf, pages);
  pdf_Release_PDF(pdf);
}

static void CheckMemory(void const* data, DWORD size, DWORD pages) {
  Give();
  step = "check";
  hPDF const pdf = NewSession();
  DWORD const code = pdf_OpenPDFInMemory(pdf, data, size);
  Require(code == 0, "the document does not open", (long)code);
  LoadPages(pdf, pages);
  pdf_Release_PDF(pdf);
}

static void WriteFileDocument(void) {
  hPDF const pdf = NewSession();
  SetStrings(pdf);
  TRY(pdf_CreatePDFW(pdf, file_name));
  AddPages(pdf);
  TRY(pdf_FinishPDF(pdf));
  pdf_Release_PDF(pdf);
}

static void WriteToFile(void) {
  WriteFileDocument();
  CheckFile(kPages);
}

static void UpdateFile(void) {
  hPDF const pdf = NewSession();
  TRY(pdf_CreatePDFW(pdf, file_name));
  AddPages(pdf);
  TRY(pdf_FinishPDF(pdf));
  pdf_Release_PDF(pdf);
  CheckFile(2 * kPages);
}

static void ReadFromFile(void) {
  hPDF const pdf = NewSession();
  TRY(pdf_OpenPDFFileW(pdf, file_name));
  LoadPages(pdf, kPages);
  pdf_ClosePDFFile(pdf);
  pdf_Release_PDF(pdf);
}

static void* document;
static DWORD document_size;

static void WriteToMemory(void) {
  hPDF const pdf = NewSession();
  SetStrings(pdf);
  TRY(pdf_CreatePDFInMemory(pdf, NULL, 100));
  AddPages(pdf);
  TRY(pdf_FinishPDFInMemory(pdf, &document, &document_size));
  pdf_Release_PDF(pdf);
  CheckMemory(document, document_size, kPages);
  pdf_FreePDFInMemory(document);
}

static void UpdateMemory(void) {
  hPDF const pdf = NewSession();
  void* updated = NULL;
  DWORD size = 0;
  TRY(pdf_CreatePDFInMemory(pdf, document, document_size));
  AddPages(pdf);
  TRY(pdf_FinishPDFInMemory(pdf, &updated, &size));
  pdf_Release_PDF(pdf);
  Give();
  pdf_FreePDFInMemory(updated);
}

static void ReadFromMemory(void) {
  hPDF const pdf = NewSession();
  TRY(pdf_OpenPDFInMemory(pdf, document, document_size));
  LoadPages(pdf, kPages);
  TRY(pdf_ClosePDFInMemory(pdf));
  pdf_Release_PDF(pdf);
}

static void OneCall(void) {
  void* data = NULL;
  DWORD size = 0;
  step = "pdf_SaveDIBToPDFInMemory";
  DWORD code = pdf_SaveDIBToPDFInMemory(&data, &size, bilevel, cadwick, PDF_COMPRESSION_CCITT, 0);
  if (code != 0) {
    Require(IsShortage(code), "unexpected code", (long)code);
    Give();
    data = NULL;
    size = 0;
    code = pdf_SaveDIBToPDFInMemory(&data, &size, bilevel, cadwick, PDF_COMPRESSION_CCITT, 0);
    Require(code == 0, "fails with memory", (long)code);
  }
  DWORD const pages = GetNumberOfPagesInPDFInMemory(data, size);
  Require(pages == 1 || pages == 0xFFFFFFFF, "page count", (long)pages);
  HDIB const bitmap = pdf_LoadPDFIntoDIBInMemory(data, size, 0);
  Give();
  if (bitmap != NULL && bitmap != INVALID_HANDLE_VALUE) GlobalFree(bitmap);
  pdf_FreePDFInMemory(data);
}

static void MakeMemoryDocument(void) {
  hPDF const pdf = NewSession();
  TRY(pdf_CreatePDFInMemory(pdf, NULL, 100));
  AddPages(pdf);
  TRY(pdf_FinishPDFInMemory(pdf, &document, &document_size));
  pdf_Release_PDF(pdf);
}

/* What became of a child. */
enum Outcome { kNothingFailed, kRecovered, kBroken };

static enum Outcome RunChild(void (*prepare)(void), void (*scenario)(void), long number,
                             int later) {
  pid_t const child = fork();
  if (child == 0) {
    alarm(10);
    fail_at = number;
    fail_later = later;
    MakeBitmaps();
    unlink(file_path);
    if (prepare != NULL) prepare();
    fail_allocations(number, later);
    scenario();
    _exit(has_allocation_failed() ? kRecovered : kNothingFailed);
  }
  int status = 0;
  if (waitpid(child, &status, 0) != child) return kBroken;
  if (WIFSIGNALED(status)) {
    fprintf(stderr, "allocation %ld%s: signal %d\n", number, later ? " and later" : "",
            WTERMSIG(status));
  }
  return WIFEXITED(status) && WEXITSTATUS(status) <= kRecovered ? WEXITSTATUS(status) : kBroken;
}

/* The scenario for every allocation in it; whether all came through. */
static int RunScenario(char const* name, void (*prepare)(void), void (*scenario)(void)) {
  enum { kMostBroken = 20 };
  long runs = 0;
  int broken = 0;
  for (int later = 0; later <= 1; ++later) {
    for (long number = 1; broken < kMostBroken; ++number) {
      enum Outcome const outcome = RunChild(prepare, scenario, number, later);
      if (outcome == kNothingFailed) break;
      ++runs;
      broken += outcome == kBroken;
    }
  }
  printf("%s: %ld runs, %d broken\n", name, runs, broken);
  fflush(stdout);
  return broken == 0 && runs > 0;
}

int main(int argc, char** argv) {
  *(void**)&fail_allocations = dlsym(RTLD_DEFAULT, "FailAllocations");
  *(void**)&has_allocation_failed = dlsym(RTLD_DEFAULT, "HasAllocationFailed");
  if (argc != 4 || fail_allocations == NULL || has_allocation_failed == NULL) {
    fprintf(stderr, "usage: LD_PRELOAD=failing_allocator short_memory CADWICK RENNICK DIRECTORY\n");
    return 2;
  }
  ToWide(argv[1], cadwick);
  ToWide(argv[2], rennick);
  snprintf(file_path, sizeof file_path, "%s/short_memory_%ld.pdf", argv[3], (long)getpid());
  ToWide(file_path, file_name);
  int passed = 1;
  passed &= RunScenario("write a file", NULL, WriteToFile);
  passed &= RunScenario("update a file", WriteFileDocument, UpdateFile);
  passed &= RunScenario("read a file", WriteFileDocument, ReadFromFile);
  passed &= RunScenario("write in memory", NULL, WriteToMemory);
  passed &= RunScenario("update in memory", MakeMemoryDocument, UpdateMemory);
  passed &= RunScenario("read in memory", MakeMemoryDocument, ReadFromMemory);
  passed &= RunScenario("one call", NULL, OneCall);
  unlink(file_path);
  return passed ? 0 : 1;
}
