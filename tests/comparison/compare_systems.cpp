// Prints what the library writes and reads from a seed, line by line, for a comparison of systems.
// compare_systems COUNT SEED
#include <sorrelin/frame/pdf.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/string_error.h>
#include <tests/comparison/foreign.h>
#include <tests/comparison/written.h>
#include <tests/support/temp_dir.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <utility>

namespace comparison {
namespace {

constexpr DWORD kSystemError = 1;
constexpr DWORD kMostPages = 6;

// FNV-1a.
uint64_t Hash(std::span<BYTE const> bytes) {
  uint64_t hash = 0xCBF29CE484222325;
  for (BYTE const byte : bytes) hash = (hash ^ byte) * 0x100000001B3;
  return hash;
}

void PrintWritten(uint32_t number, Written const& written) {
  std::printf("written %" PRIu32 ": %s%zu bytes, %016" PRIx64 "\n", number, written.codes.c_str(),
              written.document.size(), Hash(written.document));
}

// The text of code 1 is the system's own.
void PrintError(hPDF pdf) {
  char text[1024] = {};
  DWORD const code = pdf_PDF_GetLastError(pdf);
  pdf_GetLastPDFErrorText(pdf, text);
  std::printf(" error %u \"%s\"", static_cast<unsigned>(code),
              code == kSystemError ? "of the system" : text);
}

void PrintBitmap(hPDF pdf, DWORD page) {
  HDIB const bitmap = pdf_LoadImageFromPDF(pdf, page);
  if (bitmap == nullptr) return PrintError(pdf);
  size_t const size = GlobalSize(bitmap);
  std::span<BYTE const> const bytes(static_cast<BYTE const*>(GlobalLock(bitmap)), size);
  std::printf(" bitmap %zu %016" PRIx64, size, Hash(bytes));
  GlobalUnlock(bitmap);
  GlobalFree(bitmap);
}

using GetText = DWORD (*)(hPDF, WCHAR*, DWORD*);

void PrintText(hPDF pdf, GetText get) {
  WCHAR text[512] = {};
  DWORD size = 512;
  DWORD const code = get(pdf, text, &size);
  std::printf(" text %u:", static_cast<unsigned>(code));
  for (WCHAR const* at = text; *at != 0; ++at) std::printf("%x.", static_cast<unsigned>(*at));
}

void PrintOpened(hPDF pdf) {
  DWORD const pages = pdf_GetNumberOfPages(pdf);
  std::printf(" pages %u", static_cast<unsigned>(pages));
  for (GetText const get : {pdf_GetTitleW, pdf_GetAuthorW, pdf_GetSubjectW, pdf_GetKeywordsW}) {
    PrintText(pdf, get);
  }
  for (DWORD page = 0; page <= pages && page < kMostPages; ++page) PrintBitmap(pdf, page);
}

// Some damage ends as an exception.
void PrintDocument(hPDF pdf, Bytes const& document) try {
  DWORD const opened =
      pdf_OpenPDFInMemory(pdf, document.data(), static_cast<DWORD>(document.size()));
  std::printf(" open %u", static_cast<unsigned>(opened));
  if (opened == 0) {
    PrintOpened(pdf);
  } else {
    PrintError(pdf);
  }
} catch (SorrelinStringError const& error) {
  std::printf(" exception %lx", static_cast<unsigned long>(error.code()));
}

void PrintRead(Bytes const& document) {
  hPDF pdf = 0;
  pdf_Init_PDF(&pdf);
  PrintDocument(pdf, document);
  std::printf("\n");
  pdf_ClosePDFInMemory(pdf);
  pdf_Release_PDF(pdf);
}

int Run(uint32_t count, uint32_t seed) {
  test::TempDir const folder;
  for (uint32_t number = 0; number < count; ++number) {
    Dice dice(seed + number);
    Written written = WriteDocument(dice, folder.path());
    PrintWritten(number, written);
    bool const foreign = written.document.empty() || dice.OneIn(2);
    Bytes document = foreign ? ForeignDocument(dice) : std::move(written.document);
    bool const damaged = !dice.OneIn(4);
    if (damaged) Damage(dice, document);
    std::printf("read %" PRIu32 " (%s, %s):", number, foreign ? "foreign" : "own",
                damaged ? "damaged" : "whole");
    PrintRead(document);
  }
  std::printf("end\n");
  return 0;
}

}  // namespace
}  // namespace comparison

int main(int count, char** arguments) {
  if (count != 3) {
    std::fprintf(stderr, "usage: compare_systems COUNT SEED\n");
    return 2;
  }
  return comparison::Run(static_cast<uint32_t>(std::strtoul(arguments[1], nullptr, 10)),
                         static_cast<uint32_t>(std::strtoul(arguments[2], nullptr, 10)));
}
