/* A user of the flat functions whose memory is short: short_memory CADWICK RENNICK DIRECTORY.
 *
 * What fails must fail with a code that a lack of memory may have; then, with memory there again,
 * the same call must succeed, and what comes out must be a whole document. */
#include <sorrelin/frame/pdf.h>
#include <sorrelin/platform/memory.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/interface/failing_runs.h"

static WCHAR cadwick[512];
static WCHAR rennick[512];
static WCHAR file_name[512];
static char file_path[512];

static void ToWide(char const* text, WCHAR* wide) {
  size_t i = 0;
  do {
    wide[i] = (unsigned char)text[i];
  } while (text[i++] != 0);
}

/* Calls once with memory as it is, and again with enough of it if that failed. */
#define TRY(call)                                               \
  do {                                                          \
    step = #call;                                               \
    DWORD code_ = (call);                                       \
    if (code_ == 0) break;                                      \
    Require(IsShortage(code_), "unexpected code", (long)code_); \
    GiveMemory();                                               \
    code_ = (call);                                             \
    Require(code_ == 0, "fails with memory", (long)code_);      \
  } while (0)

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
    GiveMemory();
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
  GiveMemory();
  step = "check";
  hPDF const pdf = NewSession();
  DWORD const code = pdf_OpenPDFFile(pdf, file_path);
  Require(code == 0, "the document does not open", (long)code);
  LoadPages(pdf, pages);
  pdf_Release_PDF(pdf);
}

static void CheckMemory(void const* data, DWORD size, DWORD pages) {
  GiveMemory();
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

static void const* document;
static DWORD document_size;

static void WriteToMemory(void) {
  void* written = NULL;
  DWORD size = 0;
  hPDF const pdf = NewSession();
  SetStrings(pdf);
  TRY(pdf_CreatePDFInMemory(pdf, NULL, 100));
  AddPages(pdf);
  TRY(pdf_FinishPDFInMemory(pdf, &written, &size));
  pdf_Release_PDF(pdf);
  CheckMemory(written, size, kPages);
  pdf_FreePDFInMemory(written);
}

static void UpdateMemory(void) {
  hPDF const pdf = NewSession();
  void* updated = NULL;
  DWORD size = 0;
  TRY(pdf_CreatePDFInMemory(pdf, document, document_size));
  AddPages(pdf);
  TRY(pdf_FinishPDFInMemory(pdf, &updated, &size));
  pdf_Release_PDF(pdf);
  GiveMemory();
  pdf_FreePDFInMemory(updated);
}

static void ReadFromMemory(void) {
  hPDF const pdf = NewSession();
  TRY(pdf_OpenPDFInMemory(pdf, document, document_size));
  LoadPages(pdf, kPages);
  TRY(pdf_ClosePDFInMemory(pdf));
  pdf_Release_PDF(pdf);
}

static void StoreFile(void) {
  FILE* const file = fopen(file_path, "wb");
  Require(file != NULL, "no file", 0);
  Require(fwrite(document, 1, document_size, file) == document_size, "no bytes", 0);
  fclose(file);
}

static void RemoveFile(void) { unlink(file_path); }

/* An image or, where memory is short, none. */
static void FreeImage(HDIB bitmap) {
  if (bitmap != NULL && bitmap != INVALID_HANDLE_VALUE) GlobalFree(bitmap);
}

static void RequireOnePage(DWORD pages) {
  Require(pages == 1 || pages == 0xFFFFFFFF, "page count", (long)pages);
}

static void OneCallInMemory(void) {
  void* data = NULL;
  DWORD size = 0;
  TRY(pdf_SaveDIBToPDFInMemory(&data, &size, bilevel, cadwick, PDF_COMPRESSION_CCITT, 0));
  step = "one call";
  RequireOnePage(GetNumberOfPagesInPDFInMemory(data, size));
  FreeImage(pdf_LoadPDFIntoDIBInMemory(data, size, 0));
  CheckMemory(data, size, 1);
  pdf_FreePDFInMemory(data);
}

/* The same for a call that failed half-way, which leaves a part of the document: `repair` makes the
 * file what it was. That the call can be made again shows that it has closed the file. */
#define TRY_ON_FILE(call, repair)                               \
  do {                                                          \
    step = #call;                                               \
    DWORD code_ = (call);                                       \
    if (code_ == 0) break;                                      \
    Require(IsShortage(code_), "unexpected code", (long)code_); \
    GiveMemory();                                               \
    repair();                                                   \
    code_ = (call);                                             \
    Require(code_ == 0, "fails with memory", (long)code_);      \
  } while (0)

static void OneCallForFile(void) {
  TRY_ON_FILE(pdf_SaveDIBToPDFW(file_name, bilevel, cadwick, PDF_COMPRESSION_CCITT, 0), RemoveFile);
  step = "one call";
  RequireOnePage(GetNumberOfPagesInPDFFileW(file_name));
  FreeImage(pdf_LoadPDFIntoDIBW(file_name, 0));
  CheckFile(1);
}

static void OneCallForUpdate(void) {
  TRY_ON_FILE(pdf_SaveDIBToPDF(file_path, indexed, "", PDF_COMPRESSION_FLATE, 6), StoreFile);
  FreeImage(pdf_LoadPDFIntoDIB(file_path, kPages));
  CheckFile(kPages + 1);
}

/* Names and strings in the code page of the system, and what is said of them. */
static void NarrowNames(void) {
  char text[200];
  DWORD size = sizeof text;
  hPDF const pdf = NewSession();
  TRY(pdf_SetTitleA(pdf, "A title that needs memory of its own"));
  TRY(pdf_GetTitleA(pdf, text, &size));
  TRY(pdf_CreatePDF(pdf, file_path));
  TRY(pdf_SaveDIBAsColorPDFPage(pdf, indexed, "a library that is not needed", PDF_COMPRESSION_FLATE,
                                6));
  TRY(pdf_FinishPDF(pdf));
  TRY(pdf_OpenPDFFile(pdf, file_path));
  LoadPages(pdf, 1);
  pdf_GetLastPDFErrorText(pdf, text);
  pdf_Release_PDF(pdf);
}

/* The document of the other scenarios, written by a child, so that each of their runs is of a
 * process in which no sibling was loaded before. */
static int MakeDocument(void) {
  static BYTE bytes[1 << 20];
  pid_t const child = fork();
  if (child == 0) {
    WriteFileDocument();
    _exit(0);
  }
  if (waitpid(child, NULL, 0) != child) return 0;
  FILE* const file = fopen(file_path, "rb");
  if (file == NULL) return 0;
  document = bytes;
  document_size = (DWORD)fread(bytes, 1, sizeof bytes, file);
  fclose(file);
  return document_size != 0 && document_size < sizeof bytes;
}

int main(int argc, char** argv) {
  if (argc != 4 || !FindAllocator()) {
    fprintf(stderr, "usage: LD_PRELOAD=failing_allocator short_memory CADWICK RENNICK DIRECTORY\n");
    return 2;
  }
  ToWide(argv[1], cadwick);
  ToWide(argv[2], rennick);
  snprintf(file_path, sizeof file_path, "%s/short_memory_%ld.pdf", argv[3], (long)getpid());
  ToWide(file_path, file_name);
  MakeBitmaps();
  int passed = MakeDocument();
  passed &= RunScenario("write a file", RemoveFile, WriteToFile);
  passed &= RunScenario("update a file", StoreFile, UpdateFile);
  passed &= RunScenario("read a file", StoreFile, ReadFromFile);
  passed &= RunScenario("write in memory", NULL, WriteToMemory);
  passed &= RunScenario("update in memory", NULL, UpdateMemory);
  passed &= RunScenario("read in memory", NULL, ReadFromMemory);
  passed &= RunScenario("one call in memory", NULL, OneCallInMemory);
  passed &= RunScenario("one call for a file", RemoveFile, OneCallForFile);
  passed &= RunScenario("one call for an update", StoreFile, OneCallForUpdate);
  passed &= RunScenario("narrow names", RemoveFile, NarrowNames);
  RemoveFile();
  return passed ? 0 : 1;
}
