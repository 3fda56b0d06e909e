// The objects of a page whose picture is coded already, by the session's public methods, in the
// order of the library's own pages: ProcSet, image, its length, for greys the palette and its
// length, page, contents, their length.
#include <sorrelin/coded/coded_pages.h>
#include <sorrelin/coded/jpeg_header.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/platform/memory.h>

#include <cstdio>

namespace {

constexpr DWORD kDefaultDpi = 96;
constexpr DWORD kObjectRows = 90050;
constexpr DWORD kRowsOfAPage = 10;  // eight objects at most, the catalog and the table's own row
constexpr int kImageResource = 2;
constexpr _CCITT_ENCODE_TYPE kGroup4{-1};
constexpr UINT kZeroedBlock = 66;
constexpr DWORD kPaletteBytes = 768;

struct CodedPicture {
  BYTE const* data;
  DWORD size;
  _IMAGE_PARAMETERS image;
  _FILTER filter;
  DWORD dpi_x;  // 0 is the default
  DWORD dpi_y;
};

CCreatePDF* SessionOf(hPDF handle) {
  return handle == 0 || handle == -1 ? nullptr : reinterpret_cast<CCreatePDF*>(handle);
}

DWORD Refuse(CCreatePDF& session, DWORD code) {
  session.PDF_SetLastError(code);
  return code;
}

// JPEG data of one component are indices into a colour table, here a ramp of greys.
bool WriteGreys(CCreatePDF& session) {
  HGLOBAL const palette = GlobalAlloc(kZeroedBlock, kPaletteBytes);
  auto* const bytes = static_cast<BYTE*>(GlobalLock(palette));
  if (bytes == nullptr) {
    GlobalFree(palette);
    session.PDF_SetLastError(PDF_ERROR_MEMORY);
    return false;
  }
  for (DWORD i = 0; i < kPaletteBytes; ++i) bytes[i] = static_cast<BYTE>(i / 3);
  GlobalUnlock(palette);
  DWORD const object = session.WriteDataStreamObject(palette, 0);
  GlobalFree(palette);
  return object != 0;
}

void WriteContents(CCreatePDF& session, char const* name, POINT size) {
  char line[96];
  if (session.BeginStream() == 0) return;
  session.WriteToPDFFile("1.0000 0.0000 0.0000 1.0000 0.0000 0.0000 cm", 1);
  std::snprintf(line, sizeof line, "%d.0000 0.0000 0.0000  %d.0000 0.0000 0.0000 cm",
                static_cast<int>(size.x), static_cast<int>(size.y));
  session.WriteToPDFFile(line, 1);
  std::snprintf(line, sizeof line, "/%s Do", name);
  session.WriteToPDFFile(line, 1);
  if (session.EndStream() != 0) session.WriteStreamLengthObject();
}

void WriteObjects(CCreatePDF& session, CodedPicture const& picture, POINT size) {
  constexpr int kBilevel = 0;
  constexpr int kColour = 1;
  constexpr int kIndexed = 2;
  int const bits = picture.image.BitsPerPixel;
  DWORD const proc_set = session.CreateProcSetObject(bits == 1   ? kBilevel
                                                     : bits == 8 ? kIndexed
                                                                 : kColour,
                                                     0);
  if (proc_set == 0) return;
  DWORD const image =
      session.CreateImageXObject(picture.image, picture.data, picture.size, picture.filter);
  if (image == 0 || (bits == 8 && !WriteGreys(session))) return;
  char name[16];
  std::snprintf(name, sizeof name, "Im%u", static_cast<unsigned>(image));
  if (session.CreatePageObject(session.GetPagesRootObjectNr(), kImageResource, image, proc_set,
                               name, size) != 0) {
    WriteContents(session, name, size);
  }
}

DWORD AddPage(CCreatePDF& session, CodedPicture const& picture) {
  // The catalog has its number when a document is opened, updated or finished, and not before.
  if (session.GetCatalogObjectNr() != 0) return Refuse(session, PDF_ERROR_OBJECT_EXISTS);
  if (session.GetCurrentObject() + kRowsOfAPage > kObjectRows) {
    return Refuse(session, PDF_ERROR_NEW_PAGE_OBJECT);
  }
  POINT const size = session.CalculatePageSizeFromPixelsAndDPI(
      picture.image.Width, picture.image.Height, picture.dpi_x != 0 ? picture.dpi_x : kDefaultDpi,
      picture.dpi_y != 0 ? picture.dpi_y : kDefaultDpi);
  if (size.x <= 0 || size.y <= 0) return Refuse(session, PDF_ERROR_INVALID_IMAGE_SIZE);
  session.PDF_SetLastError(PDF_ERROR_NONE);
  WriteObjects(session, picture, size);
  return session.PDF_GetLastError();
}

}  // namespace

DWORD pdf_AddJPEGPage(hPDF hPdf, void const* pData, DWORD nSize, DWORD nDpiX, DWORD nDpiY) {
  CCreatePDF* const session = SessionOf(hPdf);
  if (session == nullptr) return PDF_ERROR_INVALID_HANDLE;
  if (pData == nullptr || nSize == 0) return Refuse(*session, PDF_ERROR_NULL_POINTER);
  auto const* const data = static_cast<BYTE const*>(pData);
  auto const header = sorrelin::coded::ReadJpegHeader({data, nSize});
  if (!header) return Refuse(*session, PDF_ERROR_DECOMPRESSION);
  int32_t const bits = header->components == 1 ? 8 : 24;
  return AddPage(*session, {data,
                            nSize,
                            {header->width, header->height, bits, 1, 0},
                            {PDF_COMPRESSION_JPEG, {}},
                            nDpiX != 0 ? nDpiX : header->dpi_x,
                            nDpiY != 0 ? nDpiY : header->dpi_y});
}

DWORD pdf_AddGroup4Page(hPDF hPdf, void const* pData, DWORD nSize, LONG nWidth, LONG nHeight,
                        DWORD nDpiX, DWORD nDpiY, int bInvert) {
  CCreatePDF* const session = SessionOf(hPdf);
  if (session == nullptr) return PDF_ERROR_INVALID_HANDLE;
  if (pData == nullptr || nSize == 0) return Refuse(*session, PDF_ERROR_NULL_POINTER);
  if (nWidth <= 0 || nHeight <= 0) return Refuse(*session, PDF_ERROR_INVALID_IMAGE_SIZE);
  CodedPicture picture{
      static_cast<BYTE const*>(pData), nSize, {nWidth, nHeight, 1, bInvert == 0 ? 1 : 0, 0},
      {PDF_COMPRESSION_CCITT, {}},     nDpiX, nDpiY};
  session->SetCCITTFilterParams(&picture.filter.CcittParams, nWidth, nHeight, kGroup4, 0, 0, 0, 1,
                                0);
  return AddPage(*session, picture);
}
