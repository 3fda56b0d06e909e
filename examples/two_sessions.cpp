// Writes two documents at the same time, each by a session of its own on a thread of its own.
// two_sessions FILE FILE
#include <sorrelin/frame/pdf.h>
#include <sorrelin/platform/memory.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>

namespace {

constexpr LONG kSize = 400;
constexpr LONG kPixelsPerMetre = 3937;  // 100 dpi
constexpr int kPages = 20;

// 8 bits a pixel in grey: every pixel has the value `grey`.
HDIB MakeGrey(BYTE grey) {
  size_t const rows_at = sizeof(BITMAPINFOHEADER) + 256 * sizeof(RGBQUAD);
  HGLOBAL const bitmap = GlobalAlloc(GHND, rows_at + size_t{kSize} * kSize);
  BYTE* const bytes = static_cast<BYTE*>(GlobalLock(bitmap));
  if (bytes == nullptr) return nullptr;
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = header.biHeight = kSize;
  header.biPlanes = 1;
  header.biBitCount = 8;
  header.biXPelsPerMeter = header.biYPelsPerMeter = kPixelsPerMetre;
  std::memcpy(bytes, &header, sizeof header);
  for (int i = 0; i < 256; ++i) std::memset(bytes + sizeof header + 4 * i, i, 3);
  std::memset(bytes + rows_at, grey, size_t{kSize} * kSize);
  GlobalUnlock(bitmap);
  return bitmap;
}

DWORD AddPages(hPDF pdf, BYTE first_grey) {
  DWORD error = PDF_ERROR_NONE;
  for (int page = 0; page < kPages && error == PDF_ERROR_NONE; ++page) {
    HDIB const bitmap = MakeGrey(static_cast<BYTE>(first_grey + page));
    error = pdf_SaveDIBAsColorPDFPage(pdf, bitmap, "", PDF_COMPRESSION_RUN_LENGTH, 0);
    GlobalFree(bitmap);
  }
  return error;
}

// What went wrong, or nothing. The text is asked for on the thread that failed: that of a system
// error is the thread's own.
std::string WriteDocument(char const* file, BYTE first_grey) {
  hPDF pdf = 0;
  if (pdf_Init_PDF(&pdf) != PDF_ERROR_NONE) return "no session";
  DWORD error = pdf_CreatePDF(pdf, file);
  if (error == PDF_ERROR_NONE) error = AddPages(pdf, first_grey);
  if (error == PDF_ERROR_NONE) error = pdf_FinishPDF(pdf);
  char text[1024] = "";
  if (error != PDF_ERROR_NONE) pdf_GetLastPDFErrorText(pdf, text);
  pdf_Release_PDF(pdf);
  return text;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) {
    std::fprintf(stderr, "usage: two_sessions FILE FILE\n");
    return 2;
  }
  std::array<std::string, 2> failures;
  std::thread other([&] { failures[1] = WriteDocument(arguments[2], 200); });
  failures[0] = WriteDocument(arguments[1], 20);
  other.join();
  for (size_t i = 0; i < failures.size(); ++i) {
    if (!failures[i].empty())
      std::fprintf(stderr, "%s: %s\n", arguments[1 + i], failures[i].c_str());
  }
  return failures[0].empty() && failures[1].empty() ? 0 : 1;
}
