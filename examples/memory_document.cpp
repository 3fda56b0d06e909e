// Makes a document of two bilevel pages in memory, coded with Group 4, and writes it to a file.
// memory_document FILE
#include <sorrelin/frame/session.h>
#include <sorrelin/platform/memory.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>

namespace {

constexpr LONG kSize = 800;
constexpr LONG kPixelsPerMetre = 11811;  // 300 dpi

// A disc, black on white: bit 0 is the table's first colour, which is black.
HDIB MakeDisc(LONG radius) {
  size_t const stride = (kSize + 31) / 32 * 4;
  size_t const rows_at = sizeof(BITMAPINFOHEADER) + 2 * sizeof(RGBQUAD);
  HGLOBAL const bitmap = GlobalAlloc(GHND, rows_at + stride * kSize);
  BYTE* const bytes = static_cast<BYTE*>(GlobalLock(bitmap));
  if (bytes == nullptr) return nullptr;
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = header.biHeight = kSize;
  header.biPlanes = 1;
  header.biBitCount = 1;
  header.biXPelsPerMeter = header.biYPelsPerMeter = kPixelsPerMetre;
  std::memcpy(bytes, &header, sizeof header);
  RGBQUAD const white{255, 255, 255, 0};
  std::memcpy(bytes + sizeof header + sizeof(RGBQUAD), &white, sizeof white);
  for (LONG y = 0; y < kSize; ++y) {
    BYTE* const row = bytes + rows_at + stride * static_cast<size_t>(y);
    for (LONG x = 0; x < kSize; ++x) {
      LONG const dx = x - kSize / 2;
      LONG const dy = y - kSize / 2;
      if (dx * dx + dy * dy > radius * radius) row[x / 8] |= static_cast<BYTE>(0x80 >> (x % 8));
    }
  }
  GlobalUnlock(bitmap);
  return bitmap;
}

bool SaveDiscs(CCreatePDF& session) {
  for (LONG const radius : {100, 300}) {
    HDIB const disc = MakeDisc(radius);
    int const saved = session.SaveDIBAsPDFPage(disc, "Cadwick.dll");
    GlobalFree(disc);
    if (saved == 0) return false;
  }
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: memory_document FILE\n");
    return 2;
  }
  auto const session = std::make_unique<CCreatePDF>();
  int64_t data = 0;
  DWORD size = 0;
  if (session->CreatePDFInMemory(0, 64 * 1024) == 0 || !SaveDiscs(*session) ||
      session->FinishPDFInMemory(&data, &size) == 0) {
    char text[1024];
    session->GetLastPDFErrorText(text);
    std::fprintf(stderr, "%s\n", text);
    session->ClosePDFFile();
    return 1;
  }
  std::ofstream(arguments[1], std::ios::binary).write(reinterpret_cast<char const*>(data), size);
  pdf_FreePDFInMemory(reinterpret_cast<void*>(data));
  return 0;
}
