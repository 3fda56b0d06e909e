// Makes and reads a document in memory with the session class. class_caller
#include <sorrelin/frame/session.h>

#include <cstdio>
#include <memory>

namespace {

HGLOBAL MakeStripes() {
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = 32;
  header.biHeight = 8;
  header.biPlanes = 1;
  header.biBitCount = 24;
  HGLOBAL const block = GlobalAlloc(GHND, sizeof header + 96 * 8);
  auto* const bytes = static_cast<BYTE*>(GlobalLock(block));
  *reinterpret_cast<BITMAPINFOHEADER*>(bytes) = header;
  for (int i = 0; i < 96 * 8; ++i) bytes[sizeof header + i] = static_cast<BYTE>(i);
  GlobalUnlock(block);
  return block;
}

bool Run() {
  auto const session = std::make_unique<CCreatePDF>();
  HGLOBAL const stripes = MakeStripes();
  int64_t address = 0;
  DWORD size = 0;
  if (session->CreatePDFInMemory(0, 4096) == 0) return false;
  if (session->SaveDIBAsColorPDFPage(stripes, "", PDF_COMPRESSION_FLATE, 6) == 0) return false;
  if (session->FinishPDFInMemory(&address, &size) == 0) return false;
  if (session->OpenPDFFileInMemory(address, size) == 0) return false;
  HDIB const back = session->LoadImageFromPDF(0);
  if (back == nullptr) return false;
  auto const* const bytes = static_cast<BYTE const*>(GlobalLock(back));
  return bytes[sizeof(BITMAPINFOHEADER) + 100] == 100 && session->GetNumberOfPages() == 1;
}

}  // namespace

int main() {
  bool const done = Run();
  std::puts(done ? "passed" : "failed");
  return done ? 0 : 1;
}
